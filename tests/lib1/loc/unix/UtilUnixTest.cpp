#include "loc/OsLocale.h"

#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lib1/loc/TestLocales.h"

namespace {

using Strings = std::vector<std::string>;

struct Row {
    const char* name;
    std::vector<const char*> environment; // by name and value, in turn
    Strings locales;
    const char* libcLocale;
    int encType;
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};
class OsLocale : public testing::TestWithParam<Row> {
public:
    OsLocale() {
        for (std::size_t i = 0; i < GetParam().environment.size(); i += 2)
            ::setenv(GetParam().environment[i], GetParam().environment[i + 1], 1);
    }
    ~OsLocale() override {
        for (const char* variable : localeVariables)
            ::unsetenv(variable);
    }
};
TEST_P(OsLocale, IsWhatTheEnvironmentSays) {
    loc::LibcLocale result;
    std::vector<plat::String> locales;
    loc::getOsLibcLocale(&result, &locales);
    Strings texts;
    for (const plat::String& locale : locales)
        texts.emplace_back(locale.get());
    EXPECT_EQ(texts, GetParam().locales);
    EXPECT_STREQ(result.name.get(), GetParam().libcLocale);
    EXPECT_EQ(result.encType, GetParam().encType);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, OsLocale,
    testing::Values(
        Row{"Nothing", {}, {}, "C", 0},
        Row{"Lang", {"LANG", "de_DE.UTF-8"}, {"de_DE"}, "de_DE.UTF-8", 1},
        Row{"LangWithoutCountry", {"LANG", "fr"}, {"fr_FR"}, "fr_FR.UTF-8", 1},
        Row{"LangOfC", {"LANG", "C"}, {"C"}, "C.UTF-8", 1},
        Row{"MessagesBeforeLang",
            {"LANG", "de_DE", "LC_MESSAGES", "fr_FR"},
            {"fr_FR"},
            "fr_FR.UTF-8",
            1},
        Row{"AllBeforeMessages",
            {"LC_MESSAGES", "fr_FR", "LC_ALL", "es_ES.UTF-8"},
            {"es_ES"},
            "es_ES.UTF-8",
            1},
        Row{"EmptyCountsAsNotSet",
            {"LC_ALL", "", "LC_MESSAGES", "", "LANG", "fr_FR"},
            {"fr_FR"},
            "fr_FR.UTF-8",
            1},
        Row{"LanguageFirst",
            {"LANGUAGE", "fr:de", "LC_ALL", "es_ES.UTF-8"},
            {"fr_FR", "de_DE"},
            "fr_FR.UTF-8",
            1},
        Row{"LanguageTakesTheCountry",
            {"LANGUAGE", "de", "LANG", "de_CH.UTF-8"},
            {"de_CH"},
            "de_DE.UTF-8",
            1},
        Row{"EmptyLanguage", {"LANGUAGE", ":", "LANG", "de_DE"}, {"de_DE"}, "de_DE.UTF-8", 1},
        Row{"UsualCountryWhereThePreferredIsUnknown",
            {"LANG", "es_MX.UTF-8"},
            {"es_MX"},
            "es_ES.UTF-8",
            1},
        Row{"FirstThatTheSystemServes",
            {"LANGUAGE", "xx:tr_TR:pt_PT:de"},
            {"xx", "tr_TR", "pt_PT", "de_DE"},
            "pt_PT.ISO-8859-1",
            2},
        Row{"NoneServed", {"LANG", "xx_YY.UTF-8"}, {"xx_YY"}, "C", 0}),
    [](const auto& row) { return row.param.name; });

TEST(OsLocale, AppendsToTheList) {
    ::setenv("LANG", "de_DE", 1);
    loc::LibcLocale result;
    std::vector<plat::String> locales{plat::String("en_US")};
    loc::getOsLibcLocale(&result, &locales);
    ::unsetenv("LANG");
    ASSERT_EQ(locales.size(), 2U);
    EXPECT_STREQ(locales[1].get(), "de_DE");
}

TEST(SetUiLocale, ChangesNothing) {
    loc::setUiLocale({plat::String("de_DE")});
    EXPECT_EQ(std::getenv("LANGUAGE"), nullptr);
    EXPECT_EQ(std::getenv("LANG"), nullptr);
}

} // namespace
