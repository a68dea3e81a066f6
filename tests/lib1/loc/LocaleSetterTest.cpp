#include "loc/LocaleSetter.h"

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/loc/LocalesInForce.h"
#include "lib1/loc/TestLocales.h"
#include "lib1/plat/RecordingLogger.h"
#include "loc/LString.h"
#include "loc/Localize.h"

namespace {

using loc::LocaleSetter;
using testing::ElementsAre;
using testing::IsEmpty;
using Line = RecordingLogger::Line;

RecordingLogger recorder("recorder");

std::string decimalPoint() {
    return std::localeconv()->decimal_point;
}

std::string usageLabel() {
    return loc::localize("plat_usage_label", nullptr, 0, false);
}

// The process's locale is "C" before each test and after it.
struct LocaleSetterTest : testing::Test {
    ~LocaleSetterTest() override { LocaleSetter::setProcessLocale({}); }
};

TEST_F(LocaleSetterTest, GivesTheThreadTextsAndALocale) {
    const std::string labelBefore = usageLabel();
    {
        const LocaleSetter setter("de_DE");
        EXPECT_EQ(usageLabel(), "Nutzung:");
        EXPECT_EQ(decimalPoint(), ",");
        EXPECT_STREQ(LocaleSetter::getThreadLibcLocale().name.get(), "de_DE.UTF-8");
        EXPECT_EQ(LocaleSetter::getThreadLibcLocale().encType, loc::LibcLocale::utf8Enc);
    }
    EXPECT_EQ(usageLabel(), labelBefore);
    EXPECT_EQ(decimalPoint(), ".");
}

TEST_F(LocaleSetterTest, TakesTheFirstLocaleThatTheSystemHas) {
    const LocaleSetter setter("xx:fr:de");
    EXPECT_STREQ(LocaleSetter::getThreadLibcLocale().name.get(), "fr_FR.UTF-8");
    EXPECT_EQ(usageLabel(), "Syntaxe :");
}

TEST_F(LocaleSetterTest, LogsWhatItDoes) {
    const LogSetting setting("Localize:recorder:100");
    {
        const LocaleSetter setter("xx:de_DE");
    }
    EXPECT_THAT(recorder.take(),
                ElementsAre(Line{100, "Localize", "setting locale xx:de_DE"},
                            Line{30, "Localize", "No OS support for locale \"xx\""},
                            Line{100, "Localize", "Updating thread TransMap with locales:"},
                            Line{100, "Localize", " xx"}, Line{100, "Localize", " de_DE"},
                            Line{100, "Localize", " de"}, Line{100, "Localize", " en_US"},
                            Line{100, "Localize", " en"},
                            Line{100, "Localize", "restoring locale"}));
}

TEST_F(LocaleSetterTest, LogsEmptyTextWithoutAList) {
    const LogSetting setting("Localize:recorder:100");
    {
        const LocaleSetter setter(nullptr);
    }
    {
        const LocaleSetter setter("");
    }
    EXPECT_THAT(recorder.takeTexts(), ElementsAre("setting locale ", "restoring locale",
                                                  "setting locale ", "restoring locale"));
}

TEST_F(LocaleSetterTest, OnlyUnknownCodesEndInC) {
    const LogSetting setting("Localize:recorder:30");
    const LocaleSetter outer("de_DE");
    recorder.take();
    const LocaleSetter setter("xx:yy_YY");
    EXPECT_THAT(recorder.takeTexts(), ElementsAre("No OS support for locale \"xx\"",
                                                  "No OS support for locale \"yy_YY\""));
    EXPECT_STREQ(LocaleSetter::getThreadLibcLocale().name.get(), "C");
    EXPECT_EQ(decimalPoint(), ".");
    EXPECT_EQ(usageLabel(), "Usage:");
}

TEST_F(LocaleSetterTest, NestedOnesRestoreTheOuter) {
    const LocaleSetter outer("de_DE");
    {
        const LocaleSetter inner("fr_FR");
        EXPECT_EQ(usageLabel(), "Syntaxe :");
    }
    EXPECT_EQ(usageLabel(), "Nutzung:");
    EXPECT_EQ(decimalPoint(), ",");
    EXPECT_STREQ(LocaleSetter::getThreadLibcLocale().name.get(), "de_DE.UTF-8");
}

TEST_F(LocaleSetterTest, WithoutAListTheOuterLocaleStaysInForce) {
    LocaleSetter::setProcessLocale(LocalesInForce::strings({"en_US"}));
    const LocaleSetter outer("de_DE");
    const LocaleSetter inner(nullptr);
    EXPECT_EQ(decimalPoint(), ",");
    EXPECT_EQ(usageLabel(), "Nutzung:");
    const LocaleSetter innermost("");
    EXPECT_EQ(decimalPoint(), ",");
}

TEST_F(LocaleSetterTest, WithoutAListTheProcessesLocaleIsInForce) {
    LocaleSetter::setProcessLocale(LocalesInForce::strings({"xx", "de_DE"}));
    EXPECT_EQ(decimalPoint(), "."); // no thread changes by that
    const LocaleSetter setter(nullptr);
    EXPECT_EQ(decimalPoint(), ",");
}

TEST_F(LocaleSetterTest, ProcessLocaleLogsWhatTheSystemLacks) {
    const LogSetting setting("Localize:recorder:30");
    LocaleSetter::setProcessLocale(LocalesInForce::strings({"xx", "yy", "de_DE", "zz"}));
    EXPECT_THAT(recorder.take(),
                ElementsAre(Line{30, "Localize", "No OS support for locale \"xx\""},
                            Line{30, "Localize", "No OS support for locale \"yy\""}));
}

TEST_F(LocaleSetterTest, ProcessLocaleIsCWhereTheSystemHasNone) {
    LocaleSetter::setProcessLocale(LocalesInForce::strings({"de_DE"}));
    LocaleSetter::setProcessLocale(LocalesInForce::strings({"xx"}));
    const LocaleSetter setter(nullptr);
    EXPECT_EQ(decimalPoint(), ".");
}

TEST_F(LocaleSetterTest, ProcessLocaleMayBeTheUsers) {
    ::setenv("LANG", "de_DE.UTF-8", 1);
    std::vector<plat::String> locales;
    LocaleSetter::useOsProcessLocale(&locales);
    ::unsetenv("LANG");
    ASSERT_EQ(locales.size(), 1U);
    EXPECT_STREQ(locales[0].get(), "de_DE");
    const LocaleSetter setter(nullptr);
    EXPECT_EQ(decimalPoint(), ",");
}

TEST_F(LocaleSetterTest, LibcLocaleOfAListIsFoundInSilence) {
    const LogSetting setting("Localize:recorder:100");
    loc::LibcLocale result;
    LocaleSetter::getLibcLocale(LocalesInForce::strings({"xx", "fr_FR"}), &result);
    EXPECT_STREQ(result.name.get(), "fr_FR.UTF-8");
    LocaleSetter::getLibcLocale(LocalesInForce::strings({"xx"}), &result);
    EXPECT_STREQ(result.name.get(), "C");
    EXPECT_EQ(result.encType, 0);
    LocaleSetter::getLibcLocale({}, &result);
    EXPECT_STREQ(result.name.get(), "C");
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_F(LocaleSetterTest, ThreadsLibcLocaleIsCWithoutAList) {
    LocaleSetter::setProcessLocale(LocalesInForce::strings({"de_DE"}));
    EXPECT_STREQ(LocaleSetter::getThreadLibcLocale().name.get(), "C");
    const LocaleSetter outer("de_DE");
    const LocaleSetter inner(nullptr);
    EXPECT_STREQ(LocaleSetter::getThreadLibcLocale().name.get(), "C");
    EXPECT_EQ(LocaleSetter::getThreadLibcLocale().encType, 0);
}

TEST_F(LocaleSetterTest, ThreadsLocalesAreTheInnermostList) {
    EXPECT_EQ(LocaleSetter::getThreadLocales(), loc::Localize::inst().getLocales());
    const LocaleSetter plain(nullptr);
    EXPECT_EQ(LocaleSetter::getThreadLocales(), loc::Localize::inst().getLocales());
    const LocaleSetter outer("de");
    EXPECT_EQ(LocaleSetter::getThreadLocales(), "de"); // as it was asked for
    const LocaleSetter inner(nullptr);
    EXPECT_EQ(LocaleSetter::getThreadLocales(), "de");
    const LocaleSetter innermost("fr:xx");
    EXPECT_EQ(LocaleSetter::getThreadLocales(), "fr:xx");
}

TEST_F(LocaleSetterTest, IsTheThreadsAlone) {
    const LocaleSetter setter("de_DE");
    std::thread([] {
        EXPECT_EQ(decimalPoint(), ".");
        EXPECT_NE(usageLabel(), "Nutzung:");
        EXPECT_STREQ(LocaleSetter::getThreadLibcLocale().name.get(), "C");
    }).join();
}

TEST_F(LocaleSetterTest, FailureWhileItIsMadeChangesNothing) {
    const LocaleSetter outer("de_DE");
    const LogSetting setting("Localize:recorder:30");
    recorder.onWrite = [] { throw 1; };
    EXPECT_THROW(LocaleSetter("xx"), int);
    recorder.onWrite = nullptr;
    recorder.take();
    EXPECT_EQ(LocaleSetter::getThreadLocales(), "de_DE");
    EXPECT_EQ(usageLabel(), "Nutzung:");
    EXPECT_EQ(decimalPoint(), ",");
}

TEST_F(LocaleSetterTest, ThreadsSetLocalesSideBySide) {
    std::vector<std::thread> threads;
    for (const char* locale : {"de_DE", "fr_FR", "xx", "es_ES"}) {
        threads.emplace_back([locale] {
            for (int i = 0; i < 20; ++i) {
                const LocaleSetter setter(locale);
                EXPECT_EQ(LocaleSetter::getThreadLocales(), locale);
                EXPECT_NE(usageLabel(), "plat_usage_label");
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(LocaleSetterDeathTest, OnlyTheInnermostIsDestroyed) {
    EXPECT_EXIT(
        {
            auto outer = std::make_unique<LocaleSetter>("de_DE");
            const LocaleSetter inner("fr_FR");
            outer.reset();
        },
        testing::KilledBySignal(SIGABRT),
        "Assertion 'thrInst == this' failed at .*LocaleSetter.cpp");
}

TEST(LocaleSetterDeathTest, ExitWithinAScopeIsClean) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a process that has no map yet
    EXPECT_EXIT(
        {
            const LocaleSetter setter("de_DE");
            std::exit(3);
        },
        testing::ExitedWithCode(3), "^$");
}

TEST(LocaleSetterDeathTest, MayBeTheFirstOfAll) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            {
                const LocaleSetter setter("de_DE");
            }
            std::exit(4);
        },
        testing::ExitedWithCode(4), "^$");
}

TEST_F(LocaleSetterTest, LStringCountsColumnsInTheProcessesLocale) {
    const char* const text = "日本 日";
    loc::LString narrow;
    narrow.append(text);
    EXPECT_STREQ(narrow.wordWrap(5, 0).get(), text); // "C" cannot tell how wide they are
    LocaleSetter::setProcessLocale(LocalesInForce::strings({"de_DE"}));
    loc::LString wide;
    wide.append(text);
    EXPECT_STREQ(wide.wordWrap(5, 0).get(), "日本\n日");
}

TEST_F(LocaleSetterTest, LStringCountsColumnsInTheEnclosingSettersLocale) {
    const auto wrapped = [] {
        loc::LString text;
        text.append("日本 日");
        return std::string(text.wordWrap(5, 0).get());
    };
    const LocaleSetter german("de_DE");
    EXPECT_EQ(wrapped(), "日本\n日");
    LocaleSetter::setProcessLocale(LocalesInForce::strings({"de_DE"}));
    const LocaleSetter none("xx");
    EXPECT_EQ(wrapped(), "日本 日");
}

TEST(LocaleSetterDeathTest, FailureWhileWrappingEndsTheProcess) {
    EXPECT_DEATH(
        {
            const LogSetting setting("Localize:recorder:100");
            recorder.onWrite = [] { throw 1; };
            loc::LString().wordWrap(5, 0);
        },
        "");
}

} // namespace
