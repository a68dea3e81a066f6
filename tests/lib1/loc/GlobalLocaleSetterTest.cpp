#include "loc/GlobalLocaleSetter.h"

#include <clocale>
#include <string>

#include <langinfo.h>

#include <gtest/gtest.h>

#include "lib1/loc/TestLocales.h"
#include "loc/LibcLocaleSetter.h"

namespace {

using loc::GlobalLocaleSetter;

TEST(GlobalLocaleSetter, TellsTheSystemsName) {
    EXPECT_STREQ(GlobalLocaleSetter("de_DE.UTF-8").accepted(), "de_DE.UTF-8");
    EXPECT_STREQ(GlobalLocaleSetter("POSIX").accepted(), "C");
}

TEST(GlobalLocaleSetter, TellsThatTheSystemHasNoSuchLocale) {
    const GlobalLocaleSetter setter("xx_XX.UTF-8");
    EXPECT_EQ(setter.accepted(), nullptr);
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
}

TEST(GlobalLocaleSetter, TakesNullForTheEnvironmentsLocale) {
    ::setenv("LC_ALL", "fr_FR.UTF-8", 1);
    EXPECT_STREQ(GlobalLocaleSetter(nullptr).accepted(), "fr_FR.UTF-8");
    ::unsetenv("LC_ALL");
}

TEST(GlobalLocaleSetter, RestoresAllCategories) {
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    std::setlocale(LC_CTYPE, "es_ES.UTF-8");
    const std::string before = std::setlocale(LC_ALL, nullptr);
    {
        const GlobalLocaleSetter setter("fr_FR.UTF-8");
        EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "fr_FR.UTF-8");
        std::setlocale(LC_TIME, "fr_FR.UTF-8");
    }
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
    std::setlocale(LC_ALL, "C");
}

TEST(GlobalLocaleSetter, ThreadsOwnLocaleIsOutOfTheWayMeanwhile) {
    const loc::LibcLocaleSetter own("de_DE.ISO-8859-1");
    {
        const GlobalLocaleSetter setter("fr_FR.UTF-8");
        EXPECT_STREQ(::nl_langinfo(CODESET), "UTF-8");
    }
    EXPECT_STREQ(::nl_langinfo(CODESET), "ISO-8859-1");
}

} // namespace
