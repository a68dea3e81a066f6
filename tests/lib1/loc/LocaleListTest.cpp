#include "loc/LocaleList.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

std::vector<plat::String> locales(std::initializer_list<const char*> codes) {
    std::vector<plat::String> made;
    for (const char* const code : codes)
        made.emplace_back(code);
    return made;
}

std::string joined(const std::vector<plat::String>& codes) {
    std::string text;
    for (const plat::String& code : codes)
        text += (text.empty() ? "" : ":") + std::string(code.str());
    return text;
}

std::string parsed(const char* list, const char* defaultLanguage = nullptr,
                   const char* defaultCountry = nullptr) {
    std::vector<plat::String> codes;
    loc::parseLocaleList(list, &codes, defaultLanguage, defaultCountry);
    return joined(codes);
}

struct ParseRow {
    const char* list;
    const char* codes;
    friend void PrintTo(const ParseRow& row, std::ostream* out) { *out << '"' << row.list << '"'; }
};
class ParseLocaleList : public testing::TestWithParam<ParseRow> {};
INSTANTIATE_TEST_SUITE_P(
    Table, ParseLocaleList,
    testing::Values(ParseRow{"", ""}, ParseRow{":", ""}, ParseRow{":::", ""},
                    ParseRow{"de:fr_CA", "de_DE:fr_CA"}, ParseRow{"pt", "pt_BR"},
                    ParseRow{"xx", "xx"}, ParseRow{"en-GB.UTF-8@euro", "en_GB"},
                    ParseRow{"en_GB.UTF-8", "en_GB"}, ParseRow{"en_GB@euro", "en_GB"},
                    ParseRow{"de.UTF-8", "de_DE"}, ParseRow{"de@euro", "de_DE"},
                    ParseRow{"de@euro_AT", "de_DE"}, ParseRow{"de.x_AT", "de_DE"},
                    ParseRow{"en_", "en"}, ParseRow{"en_.UTF-8", "en"}, ParseRow{"en-@x", "en"},
                    ParseRow{"_US:.UTF-8:@euro:-", ""}, ParseRow{"zh-Hant_TW", "zh_Hant_TW"},
                    ParseRow{"zh-Hant-TW", "zh_Hant-TW"}, ParseRow{"DE_de", "DE_de"},
                    ParseRow{"de:de_DE:de_AT:de-DE", "de_DE:de_AT"},
                    ParseRow{":de::en:", "de_DE:en_US"}, ParseRow{" de", " de"}, ParseRow{"C", "C"},
                    ParseRow{"POSIX", "POSIX"}, ParseRow{"\xFF\xFE_\x80", "\xFF\xFE_\x80"}));

TEST_P(ParseLocaleList, GivesCanonicalCodes) {
    EXPECT_EQ(parsed(GetParam().list), GetParam().codes);
}

TEST(ParseLocaleLists, TakeNullAsEmpty) {
    EXPECT_EQ(parsed(nullptr), "");
}

TEST(ParseLocaleLists, CompleteTheDefaultLanguage) {
    EXPECT_EQ(parsed("de:en:de_AT", "de", "CH"), "de_CH:en_US:de_AT");
    EXPECT_EQ(parsed("de_:xx", "de", "CH"), "de:xx");
}

TEST(ParseLocaleLists, AppendToWhatIsThere) {
    std::vector<plat::String> codes = locales({"fr_FR"});
    loc::parseLocaleList("de:fr:en", &codes, nullptr, nullptr);
    EXPECT_EQ(joined(codes), "fr_FR:de_DE:en_US");
}

TEST(ParseLocaleLists, TakeLongCodes) {
    const std::string code = std::string(100000, 'x') + "_" + std::string(100000, 'Y');
    EXPECT_EQ(parsed(code.c_str()), code);
}

std::string searched(std::initializer_list<const char*> codes) {
    std::vector<plat::String> found;
    loc::getStringLocales(locales(codes), &found);
    return joined(found);
}

TEST(GetStringLocales, GivesTheBareLanguagesToo) {
    EXPECT_EQ(searched({"de_DE", "en_US"}), "de_DE:de:en_US:en");
    EXPECT_EQ(searched({"de_DE", "de_AT"}), "de_DE:de:de_AT:en_US:en");
    EXPECT_EQ(searched({"en_GB", "fr-CA"}), "en_GB:en:fr-CA:fr:en_US");
    EXPECT_EQ(searched({"de"}), "de:en_US:en");
    EXPECT_EQ(searched({"en", "en_US"}), "en:en_US");
    EXPECT_EQ(searched({"pt_BR.UTF-8@x"}), "pt_BR.UTF-8@x:pt:en_US:en");
}

TEST(GetStringLocales, EndsInEnglish) {
    EXPECT_EQ(searched({}), "en_US:en");
}

TEST(GetStringLocales, TakesOnlyACountryForACountry) {
    EXPECT_EQ(searched({"fr.UTF-8"}), "fr.UTF-8:en_US:en");
    EXPECT_EQ(searched({"fr@x_CA"}), "fr@x_CA:en_US:en");
    EXPECT_EQ(searched({"fr_"}), "fr_:en_US:en");
    EXPECT_EQ(searched({"fr_.UTF-8"}), "fr_.UTF-8:en_US:en");
    EXPECT_EQ(searched({"_CA"}), "_CA:en_US:en");
}

TEST(GetStringLocales, AppendsToWhatIsThere) {
    std::vector<plat::String> found = locales({"de", "xx"});
    loc::getStringLocales(locales({"de_DE"}), &found);
    EXPECT_EQ(joined(found), "de:xx:de_DE:en_US:en");
}

} // namespace
