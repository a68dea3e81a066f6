#include "lumowatch/Texts.h"

#include "plat/Configuration.h"

#include <gtest/gtest.h>

namespace {

using lumowatch::counted;
using lumowatch::formatted;
using lumowatch::text;

class Texts : public testing::Test {
protected:
    static void SetUpTestSuite() {
        speak("en_US");
        loc::Localize::inst().init({plat::String(LUMOWATCH_STRINGS)});
    }
    void TearDown() override { speak("en_US"); }

    static void speak(const char* locale) {
        plat::Configuration::global()->set("Locale", locale, 50);
    }
};

TEST_F(Texts, AreThoseOfTheStringsFiles) {
    EXPECT_EQ(text("lumowatch_main_display"), "main");
}

TEST_F(Texts, FollowTheLocale) {
    speak("de_DE");
    EXPECT_EQ(text("lumowatch_main_display"), "Hauptbildschirm");
    EXPECT_EQ(formatted("lumowatch_no_such_display", 7),
              "es gibt keinen Bildschirm 7; -ListDisplays gibt sie aus");
    speak("en_US");
    EXPECT_EQ(text("lumowatch_main_display"), "main");
}

TEST_F(Texts, TakeArguments) {
    EXPECT_EQ(formatted("lumowatch_no_folder", "/a b/c"), "there is no folder '/a b/c'");
    EXPECT_EQ(formatted("lumowatch_and_more", "1x1+0+0", 5), "1x1+0+0 and 5 more");
    EXPECT_EQ(formatted("lumowatch_no_folder", "%S%D"), "there is no folder '%S%D'");
}

struct CountRow {
    const char* name;
    const char* locale;
    std::int64_t count;
    const char* text;
    friend void PrintTo(const CountRow& row, std::ostream* out) { *out << row.name; }
};

class Counted : public Texts, public testing::WithParamInterface<CountRow> {};

TEST_P(Counted, HasTheFormOfItsNumber) {
    speak(GetParam().locale);
    EXPECT_EQ(counted("lumowatch_grabs", GetParam().count), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, Counted,
    testing::Values(CountRow{"None", "en_US", 0, "0 grabs"}, CountRow{"One", "en_US", 1, "1 grab"},
                    CountRow{"Two", "en_US", 2, "2 grabs"},
                    CountRow{"IntMax", "en_US", 2147483647, "2147483647 grabs"},
                    CountRow{"MoreThanAnInt", "en_US", 2147483648, "2147483648 grabs"},
                    // Its lower half alone would be a one.
                    CountRow{"OneInTheLowerHalf", "en_US", 4294967297, "4294967297 grabs"},
                    CountRow{"GermanOne", "de_DE", 1, "1 Abholung"},
                    CountRow{"GermanMany", "de_DE", 12, "12 Abholungen"},
                    CountRow{"FrenchNone", "fr_FR", 0, "0 capture"}),
    [](const auto& row) { return row.param.name; });

} // namespace
