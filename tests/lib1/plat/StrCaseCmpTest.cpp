#include "plat/StrCaseCmp.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

namespace {

using plat::strCaseCmp;

struct PairRow {
    const char* name;
    const char* a;
    const char* b;
    int sign;
    friend void PrintTo(const PairRow& row, std::ostream* out) { *out << row.name; }
};

class ComparedTexts : public testing::TestWithParam<PairRow> {};

int signOf(int number) {
    return (number > 0) - (number < 0);
}

TEST_P(ComparedTexts, AreOrdered) {
    EXPECT_EQ(signOf(strCaseCmp(GetParam().a, GetParam().b)), GetParam().sign);
    EXPECT_EQ(signOf(strCaseCmp(GetParam().b, GetParam().a)), -GetParam().sign);
}
INSTANTIATE_TEST_SUITE_P(
    Pairs, ComparedTexts,
    testing::Values(
        PairRow{"BothNull", nullptr, nullptr, 0}, PairRow{"NullIsEmpty", nullptr, "", 0},
        PairRow{"NullBeforeText", nullptr, "a", -1}, PairRow{"SameCase", "abc", "abc", 0},
        PairRow{"OtherCase", "aBcZ", "AbCz", 0}, PairRow{"Prefix", "abc", "ABCD", -1},
        PairRow{"FirstByte", "b", "Ab", 1}, PairRow{"LastByte", "abC", "aBd", -1},
        // As small letters: the signs between 'Z' and 'a' come before every letter.
        PairRow{"UnderscoreBeforeLetter", "a_b", "aAb", -1},
        PairRow{"AtSignIsNoLetter", "@", "`", -1}, PairRow{"BracketIsNoLetter", "[", "{", -1},
        PairRow{"HighBytesAreUnsigned", "\xC3\xA9", "z", 1},
        PairRow{"HighBytesHaveNoCase", "\xC3\x89", "\xC3\xA9", -1}),
    [](const auto& row) { return row.param.name; });

TEST(StrCaseCmp, HashesAreEqualForEqualTexts) {
    EXPECT_EQ(plat::strCaseHash(nullptr), plat::strCaseHash(""));
    EXPECT_EQ(plat::strCaseHash("aBcZ_1\xC3\xA9"), plat::strCaseHash("AbCz_1\xC3\xA9"));
    EXPECT_NE(plat::strCaseHash("parameter1"), plat::strCaseHash("parameter2"));
    EXPECT_NE(plat::strCaseHash("ab"), plat::strCaseHash("ba"));
    EXPECT_NE(plat::strCaseHash(""), plat::strCaseHash("a"));
}

TEST(StrCaseCmp, HashesTakeEveryByteOfATextIn) {
    for (std::size_t length = 1; length <= 33; ++length) {
        const std::string small(length, 'k');
        const std::string large(length, 'K');
        const std::uint16_t hash = plat::strCaseHash(small.c_str());
        EXPECT_EQ(plat::strCaseHash(large.c_str()), hash) << length;
        EXPECT_NE(plat::strCaseHash(std::string(length + 1, 'k').c_str()), hash) << length;
        for (std::size_t i = 0; i < length; ++i) {
            std::string other = small;
            other[i] = 'z';
            EXPECT_NE(plat::strCaseHash(other.c_str()), hash) << length << ' ' << i;
        }
    }
}

TEST_P(ComparedTexts, AreSameIfNoneIsLess) {
    EXPECT_EQ(plat::isSameCaseless(GetParam().a, GetParam().b), GetParam().sign == 0);
    EXPECT_EQ(plat::isSameCaseless(GetParam().b, GetParam().a), GetParam().sign == 0);
}

TEST(StrCaseCmp, OrdersTheKeysOfAMap) {
    std::map<plat::String, int, plat::strcasecmp_t> map;
    map[plat::String("b")] = 1;
    map[plat::String("A")] = 2;
    map[plat::String("B")] = 3;
    ASSERT_EQ(map.size(), 2U);
    EXPECT_STREQ(map.begin()->first.get(), "A");
    EXPECT_STREQ(map.rbegin()->first.get(), "b"); // the key stays as it was first written
    EXPECT_EQ(map.rbegin()->second, 3);
    EXPECT_EQ(map.find("a")->second, 2);
    EXPECT_EQ(map.find("c"), map.end());
}

} // namespace
