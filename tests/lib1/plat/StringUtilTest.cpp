#include "plat/StringUtil.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "lib1/AllocationHook.h"
#include "plat/BadInt.h"

namespace {

using plat::strBegins;
using plat::strCpy;
using plat::strDup;
using plat::strEnds;
using plat::strLen;
using plat::strSplit;
using plat::strToInt;
using plat::strToUint;

using Array = std::unique_ptr<char[]>;

struct DupRow {
    const char* name;
    const char* text;
    int maxLen;
    const char* copy;
    friend void PrintTo(const DupRow& row, std::ostream* out) { *out << row.name; }
};
class StrDup : public testing::TestWithParam<DupRow> {};
TEST_P(StrDup, CopiesTheBytesAskedFor) {
    const Array copy(strDup(GetParam().text, GetParam().maxLen));
    EXPECT_STREQ(copy.get(), GetParam().copy);
    if (copy != nullptr) {
        EXPECT_EQ(AllocationHook::lastSize, std::strlen(GetParam().copy) + 1);
    }
}
INSTANTIATE_TEST_SUITE_P(Texts, StrDup,
                         testing::Values(DupRow{"All", "abc", -1, "abc"},
                                         DupRow{"AllForAnyNegative", "abc", INT_MIN, "abc"},
                                         DupRow{"NoneForZero", "abc", 0, ""},
                                         DupRow{"TwoOfThree", "abc", 2, "ab"},
                                         DupRow{"ExactlyThree", "abc", 3, "abc"},
                                         DupRow{"LimitBeyondTheEnd", "abc", 100, "abc"},
                                         DupRow{"Empty", "", -1, ""},
                                         DupRow{"NullForAll", nullptr, -1, nullptr},
                                         DupRow{"NullForZero", nullptr, 0, nullptr},
                                         DupRow{"NullForSome", nullptr, 2, nullptr}),
                         [](const auto& row) { return row.param.name; });

TEST(StrDup, ReadsNoByteBehindTheLimit) {
    const char unterminated[] = {'a', 'b'};
    EXPECT_STREQ(Array(strDup(unterminated, 2)).get(), "ab");
}

TEST(StrDup, CopiesAllByDefault) {
    EXPECT_STREQ(Array(strDup("abc")).get(), "abc");
}

TEST(StrLen, CountsTheBytesBeforeTheNul) {
    EXPECT_EQ(strLen("abc"), 3);
    EXPECT_EQ(strLen(""), 0);
    EXPECT_EQ(strLen(nullptr), 0);
}

struct LenRow {
    const char* name;
    const char* text;
    int maxLen;
    int length;
    friend void PrintTo(const LenRow& row, std::ostream* out) { *out << row.name; }
};
class StrLenUpTo : public testing::TestWithParam<LenRow> {};
TEST_P(StrLenUpTo, CountsNoMoreThanTheLimit) {
    EXPECT_EQ(strLen(GetParam().text, GetParam().maxLen), GetParam().length);
}
INSTANTIATE_TEST_SUITE_P(Texts, StrLenUpTo,
                         testing::Values(LenRow{"Below", "abc", 2, 2}, LenRow{"Equal", "abc", 3, 3},
                                         LenRow{"Above", "abc", 4, 3}, LenRow{"Zero", "abc", 0, 0},
                                         LenRow{"MinusOneIsNotAll", "abc", -1, 0},
                                         LenRow{"Null", nullptr, 5, 0}),
                         [](const auto& row) { return row.param.name; });

TEST(StrLen, ReadsNoByteBehindTheLimit) {
    const char unterminated[] = {'a', 'b'};
    EXPECT_EQ(strLen(unterminated, 2), 2);
}

struct CpyRow {
    const char* name;
    const char* source;
    int size;
    const char* copy;
    int result;
    friend void PrintTo(const CpyRow& row, std::ostream* out) { *out << row.name; }
};
class StrCpy : public testing::TestWithParam<CpyRow> {};
TEST_P(StrCpy, CutsTheCopyAndReturnsTheSourcesLength) {
    char copy[] = "########";
    EXPECT_EQ(strCpy(copy, GetParam().source, GetParam().size), GetParam().result);
    EXPECT_STREQ(copy, GetParam().copy);
    EXPECT_EQ(copy[std::strlen(GetParam().copy) + 1], '#') << "wrote behind the NUL";
}
INSTANTIATE_TEST_SUITE_P(
    Texts, StrCpy,
    testing::Values(CpyRow{"Cut", "hello", 3, "he", 5}, CpyRow{"ByOneByte", "hello", 5, "hell", 5},
                    CpyRow{"Fits", "hello", 6, "hello", 5}, CpyRow{"FitsEasily", "hi", 8, "hi", 2},
                    CpyRow{"OnlyTheNul", "hello", 1, "", 5}, CpyRow{"Empty", "", 4, "", 0},
                    CpyRow{"Null", nullptr, 4, "", 0}),
    [](const auto& row) { return row.param.name; });

struct SplitRow {
    const char* name;
    const char* text;
    bool fromEnd;
    bool found;
    const char* before;
    const char* after;
    friend void PrintTo(const SplitRow& row, std::ostream* out) { *out << row.name; }
};
class StrSplit : public testing::TestWithParam<SplitRow> {};
TEST_P(StrSplit, ReplacesBothArrays) {
    char* before = strDup("old before");
    char* after = strDup("old after");
    EXPECT_EQ(strSplit(GetParam().text, '=', &before, &after, GetParam().fromEnd),
              GetParam().found);
    EXPECT_STREQ(before, GetParam().before);
    EXPECT_STREQ(after, GetParam().after);
    delete[] before;
    delete[] after;
}
TEST_P(StrSplit, TellsWithoutArraysWhetherItFound) {
    EXPECT_EQ(strSplit(GetParam().text, '=', nullptr, nullptr, GetParam().fromEnd),
              GetParam().found);
}
TEST_P(StrSplit, TakesTheOldBeforeAsTheText) {
    char* before = strDup(GetParam().text);
    char* after = nullptr;
    strSplit(before, '=', &before, &after, GetParam().fromEnd);
    EXPECT_STREQ(before, GetParam().before);
    EXPECT_STREQ(after, GetParam().after);
    delete[] before;
    delete[] after;
}
TEST_P(StrSplit, TakesTheOldAfterAsTheText) {
    char* before = nullptr;
    char* after = strDup(GetParam().text);
    strSplit(after, '=', &before, &after, GetParam().fromEnd);
    EXPECT_STREQ(before, GetParam().before);
    EXPECT_STREQ(after, GetParam().after);
    delete[] before;
    delete[] after;
}
INSTANTIATE_TEST_SUITE_P(
    Texts, StrSplit,
    testing::Values(SplitRow{"AtTheFirst", "a=b=c", false, true, "a", "b=c"},
                    SplitRow{"AtTheLast", "a=b=c", true, true, "a=b", "c"},
                    SplitRow{"NotFound", "abc", false, false, "abc", nullptr},
                    SplitRow{"NotFoundFromTheEnd", "abc", true, false, "abc", nullptr},
                    SplitRow{"InFront", "=b", false, true, "", "b"},
                    SplitRow{"AtTheEnd", "a=", true, true, "a", ""},
                    SplitRow{"Alone", "=", false, true, "", ""},
                    SplitRow{"Empty", "", false, false, "", nullptr},
                    SplitRow{"Null", nullptr, false, false, nullptr, nullptr},
                    SplitRow{"NullFromTheEnd", nullptr, true, false, nullptr, nullptr}),
    [](const auto& row) { return row.param.name; });

TEST(StrSplitting, IgnoresOneNullOutPointer) {
    char* part = nullptr;
    EXPECT_TRUE(strSplit("a=b", '=', &part, nullptr));
    EXPECT_STREQ(part, "a");
    EXPECT_TRUE(strSplit("a=b", '=', nullptr, &part));
    EXPECT_STREQ(part, "b");
    delete[] part;
}

TEST(StrSplitting, FreesOneArrayHeldTwiceOnce) {
    char* before = strDup("a=b");
    char* after = before;
    EXPECT_TRUE(strSplit(before, '=', &before, &after));
    EXPECT_STREQ(before, "a");
    EXPECT_STREQ(after, "b");
    delete[] before;
    delete[] after;
}

TEST(StrSplitting, FindsNoNulInAText) {
    char* before = nullptr;
    char* after = nullptr;
    EXPECT_FALSE(strSplit("ab", '\0', &before, &after));
    EXPECT_STREQ(before, "ab");
    EXPECT_EQ(after, nullptr);
    delete[] before;
}

class StrSplitWithoutMemory : public testing::TestWithParam<int> {};
TEST_P(StrSplitWithoutMemory, FreesTheOldArraysAndDanglesNowhere) {
    char* before = strDup("old before"); // the leak checker sees whether they are freed
    char* after = strDup("old after");
    {
        const RemainingAllocations some(GetParam());
        EXPECT_THROW(strSplit("a=b", '=', &before, &after), std::bad_alloc);
    }
    EXPECT_STREQ(before, GetParam() == 0 ? nullptr : "a");
    EXPECT_EQ(after, nullptr);
    delete[] before;
}
INSTANTIATE_TEST_SUITE_P(GrantedAllocations, StrSplitWithoutMemory, testing::Values(0, 1));

struct EndsRow {
    const char* name;
    const char* text;
    const char* part;
    bool begins;
    bool ends;
    friend void PrintTo(const EndsRow& row, std::ostream* out) { *out << row.name; }
};
class StrBeginsAndEnds : public testing::TestWithParam<EndsRow> {};
TEST_P(StrBeginsAndEnds, ComparesBytes) {
    EXPECT_EQ(strBegins(GetParam().text, GetParam().part), GetParam().begins);
    EXPECT_EQ(strEnds(GetParam().text, GetParam().part), GetParam().ends);
}
INSTANTIATE_TEST_SUITE_P(Texts, StrBeginsAndEnds,
                         testing::Values(EndsRow{"InFront", "abc", "ab", true, false},
                                         EndsRow{"AtTheEnd", "abc", "bc", false, true},
                                         EndsRow{"InTheMiddle", "abc", "b", false, false},
                                         EndsRow{"Whole", "abc", "abc", true, true},
                                         EndsRow{"TooLong", "bc", "abc", false, false},
                                         EndsRow{"LongerPrefix", "ab", "abc", false, false},
                                         EndsRow{"OtherCase", "abc", "AB", false, false},
                                         EndsRow{"EmptyPart", "abc", "", true, true},
                                         EndsRow{"NullPart", "abc", nullptr, true, true},
                                         EndsRow{"EmptyText", "", "a", false, false},
                                         EndsRow{"NullText", nullptr, "a", false, false},
                                         EndsRow{"NullTextEmptyPart", nullptr, "", true, true},
                                         EndsRow{"NullTextNullPart", nullptr, nullptr, true, true}),
                         [](const auto& row) { return row.param.name; });

struct IntRow {
    const char* name;
    const char* text;
    int base;
    bool parses;      // a number stands in front
    long long value;  // 0 where none does
    const char* rest; // behind the number; the whole text where none stands there
    friend void PrintTo(const IntRow& row, std::ostream* out) { *out << row.name; }
};

class StrToInt : public testing::TestWithParam<IntRow> {};
TEST_P(StrToInt, MovesThePointerBehindTheNumber) {
    int value = 77;
    const char* text = GetParam().text;
    EXPECT_EQ(strToInt(&value, &text, GetParam().base), GetParam().parses);
    EXPECT_EQ(value, GetParam().value);
    EXPECT_STREQ(text, GetParam().rest);
}
TEST_P(StrToInt, WholeTextFormKeepsAPartialValue) {
    int value = 77;
    const bool isWhole = GetParam().parses && *GetParam().rest == '\0';
    EXPECT_EQ(strToInt(&value, GetParam().text, GetParam().base), isWhole);
    EXPECT_EQ(value, GetParam().value);
}
TEST_P(StrToInt, ThrowingFormReturnsTheValue) {
    const char* text = GetParam().text;
    if (GetParam().parses) {
        EXPECT_EQ(strToInt(&text, GetParam().base), GetParam().value);
        EXPECT_STREQ(text, GetParam().rest);
        return;
    }
    try {
        strToInt(&text, GetParam().base);
        ADD_FAILURE() << "nothing thrown";
    } catch (const plat::BadInt& e) {
        EXPECT_STREQ(e.message.get(), "Failed to parse integer");
        EXPECT_STREQ(e.typeName.get(), "");
    }
    EXPECT_STREQ(text, GetParam().rest);
}
TEST_P(StrToInt, LeavesErrnoAsItWas) {
    int value = 0;
    errno = ERANGE; // also no error of this conversion
    strToInt(&value, GetParam().text, GetParam().base);
    EXPECT_EQ(errno, ERANGE);
    EXPECT_EQ(value, GetParam().value);
    errno = 0;
    strToInt(&value, GetParam().text, GetParam().base);
    EXPECT_EQ(errno, 0);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, StrToInt,
    testing::Values(
        IntRow{"Plain", "123", 10, true, 123, ""}, IntRow{"Plus", "+5", 10, true, 5, ""},
        IntRow{"Minus", "-5", 10, true, -5, ""}, IntRow{"LeadingSpace", " \t\n5", 10, true, 5, ""},
        IntRow{"TrailingSpace", "5 ", 10, true, 5, " "},
        IntRow{"TrailingText", "12abc", 10, true, 12, "abc"},
        IntRow{"Hex", "0x10", 0, true, 16, ""}, IntRow{"Octal", "010", 0, true, 8, ""},
        IntRow{"DecimalInBaseZero", "10", 0, true, 10, ""},
        IntRow{"NoBinaryPrefix", "0b11", 0, true, 0, "b11"},
        IntRow{"NoBinaryPrefixBehindASign", " -0B11", 0, true, 0, "B11"},
        IntRow{"NoBinaryPrefixInBaseTwo", "0b11", 2, true, 0, "b11"},
        IntRow{"BaseTwo", "-0110", 2, true, -6, ""},
        IntRow{"HexDigitB", "0b11", 16, true, 0xb11, ""},
        IntRow{"ZeroAndTextInBaseTen", "0x10", 10, true, 0, "x10"},
        IntRow{"HexWithoutPrefix", "fF", 16, true, 255, ""}, IntRow{"Zero", "0", 10, true, 0, ""},
        IntRow{"Largest", "2147483647", 10, true, INT_MAX, ""},
        IntRow{"Smallest", "-2147483648", 10, true, INT_MIN, ""},
        IntRow{"AboveLargest", "2147483648", 10, false, 0, "2147483648"},
        IntRow{"BelowSmallest", "-2147483649", 10, false, 0, "-2147483649"},
        IntRow{"SmallAfterNarrowing", "4294967297", 10, false, 0, "4294967297"},
        IntRow{"BeyondSixtyFourBits", "99999999999999999999", 10, false, 0, "99999999999999999999"},
        IntRow{"BelowSixtyFourBits", "-99999999999999999999", 10, false, 0,
               "-99999999999999999999"},
        IntRow{"NoDigit", "abc", 10, false, 0, "abc"}, IntRow{"Empty", "", 10, false, 0, ""},
        IntRow{"OnlySign", "-", 10, false, 0, "-"}, IntRow{"OnlySpace", "  ", 10, false, 0, "  "},
        IntRow{"BadBase", "1", 1, false, 0, "1"}, IntRow{"Null", nullptr, 10, false, 0, nullptr}),
    [](const auto& row) { return row.param.name; });

class StrToUint : public testing::TestWithParam<IntRow> {};
TEST_P(StrToUint, MovesThePointerBehindTheNumber) {
    unsigned value = 77;
    const char* text = GetParam().text;
    EXPECT_EQ(strToUint(&value, &text, GetParam().base), GetParam().parses);
    EXPECT_EQ(value, GetParam().value);
    EXPECT_STREQ(text, GetParam().rest);
}
TEST_P(StrToUint, WholeTextFormHasZeroForAPartialValue) {
    unsigned value = 77;
    const bool isWhole = GetParam().parses && *GetParam().rest == '\0';
    EXPECT_EQ(strToUint(&value, GetParam().text, GetParam().base), isWhole);
    EXPECT_EQ(value, isWhole ? GetParam().value : 0);
}
TEST_P(StrToUint, LeavesErrnoAsItWas) {
    unsigned value = 0;
    const char* text = GetParam().text;
    errno = ERANGE; // also no error of this conversion
    strToUint(&value, &text, GetParam().base);
    EXPECT_EQ(errno, ERANGE);
    EXPECT_EQ(value, GetParam().value);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, StrToUint,
    testing::Values(
        IntRow{"Plain", "123", 10, true, 123, ""}, IntRow{"Plus", "+5", 10, true, 5, ""},
        IntRow{"LeadingSpace", "  5", 10, true, 5, ""}, IntRow{"Hex", "0x10", 0, true, 16, ""},
        IntRow{"NoBinaryPrefix", "+0b11", 0, true, 0, "b11"},
        IntRow{"TrailingText", "12abc", 10, true, 12, "abc"},
        IntRow{"TrailingSpace", "5 ", 10, true, 5, " "}, IntRow{"Zero", "0", 10, true, 0, ""},
        IntRow{"Largest", "4294967295", 10, true, 4294967295LL, ""},
        IntRow{"AboveLargest", "4294967296", 10, false, 0, "4294967296"},
        IntRow{"SmallAfterNarrowing", "4294967297", 10, false, 0, "4294967297"},
        IntRow{"BeyondSixtyFourBits", "99999999999999999999", 10, false, 0, "99999999999999999999"},
        IntRow{"Minus", "-1", 10, false, 0, "-1"}, IntRow{"MinusZero", "-0", 10, false, 0, "-0"},
        IntRow{"MinusBehindSpace", " -1", 10, false, 0, " -1"},
        IntRow{"MinusBehindTheNumber", "5-3", 10, true, 5, "-3"},
        IntRow{"NoDigit", "abc", 10, false, 0, "abc"}, IntRow{"Empty", "", 10, false, 0, ""},
        IntRow{"BadBase", "1", 99, false, 0, "1"}, IntRow{"Null", nullptr, 10, false, 0, nullptr}),
    [](const auto& row) { return row.param.name; });

} // namespace
