#include "loc/LibcLocaleSetter.h"

#include <clocale>
#include <cstring>
#include <ctime>
#include <string>
#include <thread>

#include <langinfo.h>

#include <gtest/gtest.h>

#include "lib1/loc/TestLocales.h"

namespace {

using loc::LibcLocaleSetter;

// Something of each category.
struct Sample {
    std::string codeset = ::nl_langinfo(CODESET);
    bool ignoresCaseFirst = std::strcoll("a", "B") < 0;
    std::string yes = ::nl_langinfo(YESEXPR);
    std::string currency = std::localeconv()->int_curr_symbol;
    std::string decimalPoint = std::localeconv()->decimal_point;
    std::string monday = ::nl_langinfo(DAY_2);

    bool operator==(const Sample&) const = default;
};

TEST(LibcLocaleSetter, ChangesSixCategories) {
    const LibcLocaleSetter setter("de_DE.UTF-8");
    const Sample german;
    EXPECT_EQ(german.codeset, "UTF-8");
    EXPECT_TRUE(german.ignoresCaseFirst);
    EXPECT_NE(german.yes.find('j'), std::string::npos);
    EXPECT_EQ(german.currency, "EUR ");
    EXPECT_EQ(german.decimalPoint, ",");
    EXPECT_EQ(german.monday, "Montag");
}

TEST(LibcLocaleSetter, RestoresTheThreadsLocale) {
    const Sample before;
    EXPECT_EQ(before.decimalPoint, ".");
    {
        const LibcLocaleSetter outer("de_DE.UTF-8");
        const Sample german;
        {
            const LibcLocaleSetter inner("fr_FR.UTF-8");
            EXPECT_EQ(Sample().monday, "lundi");
        }
        EXPECT_EQ(Sample(), german);
    }
    EXPECT_EQ(Sample(), before);
    EXPECT_EQ(::uselocale(locale_t()), LC_GLOBAL_LOCALE);
}

TEST(LibcLocaleSetter, UnknownNameChangesNothing) {
    const LibcLocaleSetter outer("de_DE.UTF-8");
    const locale_t before = ::uselocale(locale_t());
    {
        const LibcLocaleSetter inner("xx_XX.UTF-8");
        EXPECT_EQ(::uselocale(locale_t()), before);
    }
    EXPECT_EQ(::uselocale(locale_t()), before);
}

TEST(LibcLocaleSetter, TakesNullForTheEnvironmentsLocale) {
    ::setenv("LC_ALL", "fr_FR.UTF-8", 1);
    {
        const LibcLocaleSetter setter(nullptr);
        EXPECT_EQ(Sample().monday, "lundi");
    }
    ::unsetenv("LC_ALL");
}

TEST(LibcLocaleSetter, IsTheThreadsAlone) {
    const LibcLocaleSetter setter("de_DE.UTF-8");
    std::thread([] { EXPECT_EQ(Sample().decimalPoint, "."); }).join();
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

} // namespace
