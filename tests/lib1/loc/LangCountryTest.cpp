#include "loc/LangCountry.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

using loc::LangCountry;

TEST(LangToCanonCountry, KnowsTheUsualCountries) {
    std::istringstream table(
        "af ZA be BY bg BG ca ES cs CZ da DK de DE dz BT el GR en US es ES et EE fa IR fi FI "
        "fo FO fr FR ga IE gu IN he IL hi IN hr HR hu HU hy AM is IS it IT iu CA ja JP ka GE "
        "ko KR lt LT lv LV mk MK mr IN mt MT nb NO ne NP nl NL nn NO pl PL pt BR ro RO ru RU "
        "sk SK sl SI sr RS sv SE th TH to TO tr TR uk UA ur PK uz UZ vi VN zh CN");
    int count = 0;
    for (std::string language, country; table >> language >> country; ++count) {
        EXPECT_STREQ(loc::langToCanonCountry(language.c_str()), country.c_str()) << language;
    }
    EXPECT_EQ(count, 54);
}

TEST(LangToCanonCountry, KnowsNoOthers) {
    for (const char* const language :
         {"", "a", "aa", "d", "DE", "De", "deu", "de_DE", "no", "zz", "zho", "\xFF"})
        EXPECT_EQ(loc::langToCanonCountry(language), nullptr) << language;
    EXPECT_EQ(loc::langToCanonCountry(nullptr), nullptr);
}

TEST(LangToCanonCountry, KnowsAsManyAsItSays) {
    int count = 0;
    for (char a = 'a'; a <= 'z'; ++a) {
        for (char b = 'a'; b <= 'z'; ++b) {
            const char language[] = {a, b, '\0'};
            count += loc::langToCanonCountry(language) != nullptr ? 1 : 0;
        }
    }
    EXPECT_EQ(count, 54);
}

struct Row {
    const char* name;
    const char* language;
    const char* country;
    const char* defaultLanguage;
    const char* defaultCountry;
    const char* code;
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};
class LangCountries : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(
    Table, LangCountries,
    testing::Values(Row{"Both", "de", "AT", nullptr, nullptr, "de_AT"},
                    Row{"BothBesideDefaults", "de", "AT", "de", "CH", "de_AT"},
                    Row{"AnyCase", "DE", "at", nullptr, nullptr, "DE_at"},
                    Row{"NoLanguage", nullptr, "AT", nullptr, nullptr, ""},
                    Row{"EmptyLanguage", "", "AT", "", "AT", ""},
                    Row{"EmptyCountry", "en", "", "en", "GB", "en"},
                    Row{"Completed", "pt", nullptr, nullptr, nullptr, "pt_BR"},
                    Row{"Unknown", "xx", nullptr, nullptr, nullptr, "xx"},
                    Row{"DefaultForItsLanguage", "de", nullptr, "de", "CH", "de_CH"},
                    Row{"DefaultForAnUnknownLanguage", "xx", nullptr, "xx", "YY", "xx_YY"},
                    Row{"DefaultForAnotherLanguage", "de", nullptr, "en", "GB", "de_DE"},
                    Row{"DefaultComparedExactly", "de", nullptr, "DE", "CH", "de_DE"},
                    Row{"DefaultWithoutCountry", "de", nullptr, "de", nullptr, "de_DE"},
                    Row{"DefaultWithoutLanguage", "de", nullptr, nullptr, "CH", "de_DE"},
                    Row{"DefaultWithEmptyCountry", "de", nullptr, "de", "", "de"}),
    [](const auto& row) { return row.param.name; });

TEST_P(LangCountries, MakeACode) {
    const Row& row = GetParam();
    const LangCountry code(row.language, row.country, row.defaultLanguage, row.defaultCountry, "_");
    EXPECT_STREQ(code.get(), row.code);
    EXPECT_EQ(code.isEmpty(), *row.code == '\0');
}

TEST(LangCountry, TakesAnySeparator) {
    EXPECT_STREQ(LangCountry("de", nullptr, nullptr, nullptr, "-").get(), "de-DE");
    EXPECT_STREQ(LangCountry("de", "AT", nullptr, nullptr, "").get(), "deAT");
    EXPECT_STREQ(LangCountry("xx", nullptr, nullptr, nullptr, "-").get(), "xx");
}

} // namespace
