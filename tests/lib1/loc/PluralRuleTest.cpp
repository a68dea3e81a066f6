#include "loc/PluralRule.h"

#include <climits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using loc::getRuleForLocale;
using testing::ElementsAre;

// One locale for each of the rules 0 to 2.
const char* const localeOfRule[] = {"en", "fr", "ja"};

struct LocaleRow {
    const char* locale;
    int rule;
};
void PrintTo(const LocaleRow& row, std::ostream* out) {
    *out << row.locale;
}
class RuleOfLocale : public testing::TestWithParam<LocaleRow> {};
TEST_P(RuleOfLocale, DependsOnLanguageAndCountry) {
    EXPECT_EQ(getRuleForLocale(GetParam().locale), getRuleForLocale(localeOfRule[GetParam().rule]));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, RuleOfLocale,
    testing::Values(LocaleRow{"de", 0}, LocaleRow{"es", 0}, LocaleRow{"en_US", 0},
                    LocaleRow{"en-US", 0}, LocaleRow{"", 0}, LocaleRow{"xx", 0},
                    LocaleRow{"fr_CA", 1}, LocaleRow{"fr-CA", 1}, LocaleRow{"fr.UTF-8", 1},
                    LocaleRow{"fr@euro", 1}, LocaleRow{"fr_", 1}, LocaleRow{"FR", 0},
                    LocaleRow{"Fr", 0}, LocaleRow{"fra", 0}, LocaleRow{"_fr", 0},
                    LocaleRow{"pt", 0}, LocaleRow{"pt_BR", 1}, LocaleRow{"pt-BR", 1},
                    LocaleRow{"pt_BR.UTF-8", 1}, LocaleRow{"pt_BR@x", 1}, LocaleRow{"pt_PT", 0},
                    LocaleRow{"pt.BR", 0}, LocaleRow{"pt@BR", 0}, LocaleRow{"pt_br", 0},
                    LocaleRow{"pt_BRX", 0}, LocaleRow{"pt_BR_X", 0}, LocaleRow{"pt_B", 0},
                    LocaleRow{"ja", 2}, LocaleRow{"vi", 2}, LocaleRow{"ko_KR", 2},
                    LocaleRow{"zh_TW.UTF-8", 2}, LocaleRow{"zh-Hans", 2}, LocaleRow{"ZH", 0}));

TEST(RuleOfLocale, OfNullIsRule0) {
    EXPECT_EQ(getRuleForLocale(nullptr), getRuleForLocale("en"));
}

TEST(RuleOfLocale, IsOneOfThree) {
    EXPECT_NE(getRuleForLocale("en"), getRuleForLocale("fr"));
    EXPECT_NE(getRuleForLocale("en"), getRuleForLocale("ja"));
    EXPECT_NE(getRuleForLocale("fr"), getRuleForLocale("ja"));
}

struct SuffixRow {
    int rule;
    int count;
    const char* suffix;
};
void PrintTo(const SuffixRow& row, std::ostream* out) {
    *out << "rule " << row.rule << ", " << row.count;
}
class Suffix : public testing::TestWithParam<SuffixRow> {};
TEST_P(Suffix, NamesTheFormForACount) {
    EXPECT_STREQ(getRuleForLocale(localeOfRule[GetParam().rule])->suffix(GetParam().count),
                 GetParam().suffix);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Suffix,
    testing::Values(SuffixRow{0, INT_MIN, "zeromany"}, SuffixRow{0, -1, "zeromany"},
                    SuffixRow{0, 0, "zeromany"}, SuffixRow{0, 1, "sing"},
                    SuffixRow{0, 2, "zeromany"}, SuffixRow{0, INT_MAX, "zeromany"},
                    SuffixRow{1, INT_MIN, "many"}, SuffixRow{1, -1, "many"},
                    SuffixRow{1, 0, "zerosing"}, SuffixRow{1, 1, "zerosing"},
                    SuffixRow{1, 2, "many"}, SuffixRow{1, INT_MAX, "many"},
                    SuffixRow{2, -1, "singplural"}, SuffixRow{2, 0, "singplural"},
                    SuffixRow{2, 1, "singplural"}, SuffixRow{2, 2, "singplural"}));

std::vector<std::string> formsOf(const char* locale, const char* stem, int min, int max) {
    std::vector<plat::SString<256>> ids;
    getRuleForLocale(locale)->forms(stem, min, max, &ids);
    std::vector<std::string> texts;
    texts.reserve(ids.size());
    for (const auto& id : ids)
        texts.emplace_back(id.get());
    return texts;
}

struct FormsRow {
    int rule;
    int min;
    int max;
    std::vector<std::string> ids;
};
void PrintTo(const FormsRow& row, std::ostream* out) {
    *out << "rule " << row.rule << ", " << row.min << " to " << row.max;
}
class Forms : public testing::TestWithParam<FormsRow> {};
TEST_P(Forms, AreThoseThatARangeRequires) {
    EXPECT_EQ(formsOf(localeOfRule[GetParam().rule], "s", GetParam().min, GetParam().max),
              GetParam().ids);
}
const std::vector<std::string> none;
const std::vector<std::string> sing{"s_sing"};
const std::vector<std::string> zeromany{"s_zeromany"};
const std::vector<std::string> singAndZeromany{"s_sing", "s_zeromany"};
const std::vector<std::string> zerosing{"s_zerosing"};
const std::vector<std::string> many{"s_many"};
const std::vector<std::string> zerosingAndMany{"s_zerosing", "s_many"};
const std::vector<std::string> singplural{"s_singplural"};
INSTANTIATE_TEST_SUITE_P(
    Rows, Forms,
    testing::Values(FormsRow{0, 1, 1, sing}, FormsRow{0, 0, 0, zeromany},
                    FormsRow{0, 0, 1, singAndZeromany}, FormsRow{0, 1, 2, singAndZeromany},
                    FormsRow{0, 0, INT_MAX, singAndZeromany}, FormsRow{0, 2, 5, zeromany},
                    FormsRow{0, -5, 0, zeromany}, FormsRow{0, INT_MIN, INT_MAX, singAndZeromany},
                    FormsRow{0, 2, 1, zeromany}, FormsRow{1, 0, 1, none}, FormsRow{1, 1, 1, none},
                    FormsRow{1, 0, 0, none}, FormsRow{1, 0, 2, many}, FormsRow{1, 2, 9, many},
                    FormsRow{1, -1, 1, zerosing}, FormsRow{1, -1, 0, zerosing},
                    FormsRow{1, -1, -1, none}, FormsRow{1, -2, -1, many},
                    FormsRow{1, -2, 0, zerosingAndMany}, FormsRow{1, -1, 2, zerosingAndMany},
                    FormsRow{2, 0, 0, singplural}, FormsRow{2, -3, 1, singplural},
                    FormsRow{2, 1, INT_MAX, singplural}));

TEST(Forms, AreAppended) {
    std::vector<plat::SString<256>> ids;
    getRuleForLocale("ja")->forms("a", 0, 1, &ids);
    getRuleForLocale("en")->forms("b", 1, 1, &ids);
    ASSERT_EQ(ids.size(), 2U);
    EXPECT_STREQ(ids[0].get(), "a_singplural");
    EXPECT_STREQ(ids[1].get(), "b_sing");
}

TEST(Forms, OfALongStemAreCut) {
    const std::string stem(250, 'x');
    EXPECT_THAT(formsOf("ja", stem.c_str(), 0, 1), ElementsAre(stem + "_sing"));
}

} // namespace
