#include "plat/DString.h"

#include <climits>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "lib1/AllocationHook.h"
#include "lib1/SystemTexts.h"
#include "plat/DPrintf.h"
#include "plat/StringUtil.h"

namespace {

using plat::DString;

DString holding(const char* text) {
    DString string;
    string.append(text);
    return string;
}

// A string whose array has exactly the size of its text, as a stream hands it over.
DString handedOver(const char* text) {
    DString string;
    string.replaceBuf(plat::strDup(text), plat::strLen(text) + 1);
    return string;
}

struct SizeRow {
    int wanted;
    int size;
};
class BufSize : public testing::TestWithParam<SizeRow> {};
TEST_P(BufSize, IsTheNextPowerOfTwo) {
    EXPECT_EQ(DString::bufSize(GetParam().wanted), GetParam().size);
}
INSTANTIATE_TEST_SUITE_P(Sizes, BufSize,
                         testing::Values(SizeRow{INT_MIN, 8}, SizeRow{-1, 8}, SizeRow{0, 8},
                                         SizeRow{7, 8}, SizeRow{8, 8}, SizeRow{9, 16},
                                         SizeRow{16, 16}, SizeRow{17, 32}, SizeRow{100, 128},
                                         SizeRow{(1 << 30) - 1, 1 << 30},
                                         SizeRow{1 << 30, 1 << 30}),
                         [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST(BufSize, FailsAsAnAllocationWhereNoIntHoldsIt) {
    EXPECT_THROW(DString::bufSize((1 << 30) + 1), std::bad_alloc);
    EXPECT_THROW(DString::bufSize(INT_MAX), std::bad_alloc);
}

TEST(DString, StartsNull) {
    const DString string;
    EXPECT_EQ(string.get(), nullptr);
    EXPECT_STREQ(string.str(), "");
    EXPECT_EQ(string.capacity(), 0);
}

TEST(DString, MadeWithASizeHoldsAnEmptyText) {
    for (const int size : {-1, 0, 8, 9}) {
        const DString string(size);
        EXPECT_STREQ(string.get(), "");
        EXPECT_EQ(string.capacity(), size > 8 ? 16 : 8);
    }
}

TEST(DString, GrowingKeepsTheBytesBehindTheText) {
    DString string(8);
    std::memcpy(string.get(), "ab\0cdefg", 8);
    string.ensureCapacity(9);
    EXPECT_EQ(string.capacity(), 16);
    EXPECT_EQ(std::memcmp(string.get(), "ab\0cdefg\0", 9), 0);
}

TEST(DString, GrowsOnlyWhereItMust) {
    DString string(8);
    const char* const array = string.get();
    string.ensureCapacity(8);
    string.ensureCapacity(-5);
    EXPECT_EQ(string.get(), array);
    EXPECT_EQ(string.capacity(), 8);
}

TEST(DString, AsksForAnArrayEvenWithoutASize) {
    DString string;
    string.ensureCapacity(0);
    EXPECT_STREQ(string.get(), "");
    EXPECT_EQ(string.capacity(), 8);
}

TEST(DString, FailsAsAnAllocationBeyondTheLargestSize) {
    DString string = holding("abc");
    EXPECT_THROW(string.ensureCapacity((1 << 30) + 1), std::bad_alloc);
    EXPECT_THROW(string.appendChar_('x', INT_MAX), std::bad_alloc);
    EXPECT_STREQ(string.get(), "abc");
    EXPECT_EQ(string.capacity(), 8);
}

struct AppendRow {
    const char* name;
    const char* text;
    int maxLen;
    const char* result;
    friend void PrintTo(const AppendRow& row, std::ostream* out) { *out << row.name; }
};
class DStringAppend : public testing::TestWithParam<AppendRow> {};
TEST_P(DStringAppend, AppendsWhatIsAskedFor) {
    DString string = holding("x");
    EXPECT_EQ(&string.append_(GetParam().text, GetParam().maxLen), &string);
    EXPECT_STREQ(string.get(), GetParam().result);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, DStringAppend,
    testing::Values(AppendRow{"All", "abc", -1, "xabc"}, AppendRow{"Some", "abc", 2, "xab"},
                    AppendRow{"LimitBeyondTheEnd", "abc", 9, "xabc"},
                    AppendRow{"Nothing", "abc", 0, "x"}, AppendRow{"Empty", "", -1, "x"},
                    AppendRow{"Null", nullptr, -1, "x"}, AppendRow{"SomeOfNull", nullptr, 3, "x"}),
    [](const auto& row) { return row.param.name; });

TEST(DString, AppendingNothingMakesAnArray) {
    EXPECT_STREQ(DString().append_(nullptr, -1).get(), "");
    EXPECT_STREQ(DString().append("").get(), "");
}

TEST(DString, GrowsInPowersOfTwo) {
    DString string;
    EXPECT_EQ(string.append("1234567").capacity(), 8);
    EXPECT_EQ(string.append("8").capacity(), 16);
    EXPECT_EQ(string.append("9abcdef").capacity(), 16);
    EXPECT_EQ(string.append("0").capacity(), 32);
    EXPECT_STREQ(string.get(), "123456789abcdef0");
}

TEST(DString, AppendsItself) {
    for (const char* const text : {"abc", "abcd", "abcdefg"}) { // without and with growing
        DString string = handedOver(text);
        string.append(string.get());
        EXPECT_EQ(string.get(), std::string(text) + text);
        DString part = holding(text);
        part.append_(part.get() + 1, 1);
        EXPECT_EQ(part.get(), std::string(text) + text[1]);
    }
}

TEST(DString, AppendsCharacters) {
    DString string;
    EXPECT_EQ(&string.appendChar_('a', 0), &string);
    EXPECT_EQ(string.get(), nullptr);
    string.appendChar_('a', -1);
    EXPECT_EQ(string.get(), nullptr);
    EXPECT_STREQ(string.appendChar_('a', 7).get(), "aaaaaaa");
    EXPECT_EQ(string.capacity(), 8);
    EXPECT_STREQ(string.appendChar('b').get(), "aaaaaaab");
    EXPECT_EQ(string.capacity(), 16);
}

TEST(DStringFormat, AppendsFormattedText) {
    DString string = holding("x=");
    EXPECT_EQ(&string.prf("%d, %s", 42, "y"), &string);
    EXPECT_STREQ(string.get(), "x=42, y");
}

TEST(DStringFormat, StartsWithRoomForTheFormat) {
    const int before = AllocationHook::count;
    DString string;
    string.prf("%d%d%d%d%d", 1, 2, 3, 4, 5); // 10 bytes of format, 5 of text
    EXPECT_EQ(string.capacity(), 16);
    EXPECT_EQ(AllocationHook::count - before, 1);
}

TEST(DStringFormat, SecondAttemptHasExactlyEnoughRoom) {
    const std::string text(100, 'a');
    const int before = AllocationHook::count;
    DString string;
    string.prf("%s", text.c_str());
    EXPECT_EQ(AllocationHook::count - before, 2); // 8 bytes, then 128
    EXPECT_EQ(string.get(), text);
    EXPECT_EQ(string.capacity(), 128);
}

class DStringFormatLength : public testing::TestWithParam<int> {};
TEST_P(DStringFormatLength, TakesAnyLength) {
    const std::string text(std::size_t(GetParam()), 'a');
    DString string = holding("abc");
    string.prf("%s", text.c_str());
    EXPECT_EQ(string.get(), "abc" + text);
    EXPECT_EQ(string.capacity(), DString::bufSize(3 + GetParam() + 1));
}
INSTANTIATE_TEST_SUITE_P(Lengths, DStringFormatLength,
                         testing::Values(0, 1, 3, 4, 5, 11, 12, 13, 60, 61, 4092, 4093));

TEST(DStringFormat, EmptyFormatMakesAnArray) {
    DString string;
    const char* const empty = "";
    EXPECT_STREQ(string.prf("%s", empty).get(), "");
}

TEST(DStringFormat, GoesOnWithMoreRoomUntilMemoryEnds) {
    // A character that the locale cannot write is an error of the formatter, in any room.
    ASSERT_TRUE(setLocale("C"));
    DString string = holding("abc");
    const LargestAllocation limit(1 << 16);
    EXPECT_THROW(string.prf("%ls", L"\x20AC"), std::bad_alloc);
    EXPECT_STREQ(string.get(), "abc");
    EXPECT_EQ(string.capacity(), 1 << 16);
}

struct ReplaceRow {
    const char* name;
    const char* source;
    const char* find;
    const char* with;
    const char* result;
    friend void PrintTo(const ReplaceRow& row, std::ostream* out) { *out << row.name; }
};
class DStringReplace : public testing::TestWithParam<ReplaceRow> {};
TEST_P(DStringReplace, AppendsTheChangedSource) {
    DString string = holding("x");
    EXPECT_EQ(&string.replace(GetParam().source, GetParam().find, GetParam().with), &string);
    EXPECT_EQ(string.get(), std::string("x") + GetParam().result);
    EXPECT_EQ(string.capacity(), DString::bufSize(int(std::strlen(string.get())) + 1));
}
TEST_P(DStringReplace, ChangesTheContent) {
    DString string = holding(GetParam().source);
    EXPECT_EQ(&string.replace(GetParam().find, GetParam().with), &string);
    EXPECT_STREQ(string.get(), GetParam().source == nullptr ? "" : GetParam().result);
}
TEST_P(DStringReplace, TakesItsOwnContentAsTheSource) {
    for (const bool isTight : {true, false}) { // with and without growing
        const std::string source = GetParam().source == nullptr ? "" : GetParam().source;
        DString string = isTight ? handedOver(source.c_str()) : holding(source.c_str());
        string.ensureCapacity(isTight ? 0 : 64);
        string.replace(string.get(), GetParam().find, GetParam().with);
        EXPECT_EQ(string.get(), source + GetParam().result);
    }
}
INSTANTIATE_TEST_SUITE_P(
    Texts, DStringReplace,
    testing::Values(ReplaceRow{"WithoutOverlap", "aaa", "aa", "b", "ba"},
                    ReplaceRow{"Shorter", "one two one", "one", "1", "1 two 1"},
                    ReplaceRow{"Longer", "a.b.c", ".", " dot ", "a dot b dot c"},
                    ReplaceRow{"ByItself", "a.b", ".", ".", "a.b"},
                    ReplaceRow{"ByMoreOfItself", "aa", "a", "aa", "aaaa"},
                    ReplaceRow{"Removed", "a.b.c", ".", nullptr, "abc"},
                    ReplaceRow{"RemovedWithEmpty", "a.b.c", ".", "", "abc"},
                    ReplaceRow{"Whole", "abc", "abc", "x", "x"},
                    ReplaceRow{"NotFound", "abc", "x", "y", "abc"},
                    ReplaceRow{"LongerThanTheSource", "ab", "abc", "y", "ab"},
                    ReplaceRow{"PartAtTheEnd", "aab", "ab", "x", "ax"},
                    ReplaceRow{"Empty", "", "a", "b", ""},
                    ReplaceRow{"Null", nullptr, "a", "b", ""}),
    [](const auto& row) { return row.param.name; });

TEST(DStringReplacing, LeavesANullStringAlone) {
    DString string;
    string.replace("a", "b");
    EXPECT_EQ(string.get(), nullptr);
}

TEST(DStringReplacing, KeepsTheCapacityOfItsOwnContent) {
    DString string(100);
    string.append("abc").replace("b", "");
    EXPECT_STREQ(string.get(), "ac");
    EXPECT_EQ(string.capacity(), 128);
    DString tight = handedOver("abcdefghi"); // 10 bytes
    tight.replace("b", "");
    EXPECT_STREQ(tight.get(), "acdefghi");
    EXPECT_GE(tight.capacity(), 10);
}

TEST(DStringReplacing, TakesItsOwnBytesAsArguments) {
    DString string = handedOver("a.b");
    string.replace("x.y", string.get() + 1, string.get()); // ".b" is not in it
    EXPECT_STREQ(string.get(), "a.bx.y");
    DString other = handedOver("ab");
    other.replace("1b2", other.get() + 1, other.get());
    EXPECT_STREQ(other.get(), "ab1ab2");
    DString own = handedOver("aXb");
    own.replace(own.get() + 2, own.get()); // find "b", with "aXb", all of the same array
    EXPECT_STREQ(own.get(), "aXaXb");
}

TEST(DStringReplacingDeathTest, AssertsSomethingToFind) {
    DString string = holding("abc");
    EXPECT_DEATH(string.replace("abc", "", "x"),
                 "^Assertion 'findLen' failed at lib1/plat/DString.cpp:[0-9]+\n");
    EXPECT_DEATH(string.replace("abc", nullptr, "x"), "Assertion 'findLen' failed");
    EXPECT_DEATH(string.replace("", "x"), "Assertion 'findLen' failed");
}

struct StripRow {
    const char* name;
    const char* chars;
    const char* result;
    friend void PrintTo(const StripRow& row, std::ostream* out) { *out << row.name; }
};
class StripAnyOf : public testing::TestWithParam<StripRow> {};
TEST_P(StripAnyOf, RemovesTheBytesInPlace) {
    DString string = holding("banana\xE9");
    const char* const array = string.get();
    EXPECT_EQ(&string.stripAnyOf(GetParam().chars), &string);
    EXPECT_STREQ(string.get(), GetParam().result);
    EXPECT_EQ(string.get(), array);
}
INSTANTIATE_TEST_SUITE_P(
    Sets, StripAnyOf,
    testing::Values(StripRow{"One", "a", "bnn\xE9"}, StripRow{"Two", "nb", "aaa\xE9"},
                    StripRow{"HighByte", "\xE9", "banana"}, StripRow{"All", "\xE9nab", ""},
                    StripRow{"Others", "xyz", "banana\xE9"}, StripRow{"None", "", "banana\xE9"},
                    StripRow{"Null", nullptr, "banana\xE9"}),
    [](const auto& row) { return row.param.name; });

TEST(StripAnyOf, LeavesANullStringAlone) {
    EXPECT_EQ(DString().stripAnyOf("a").get(), nullptr);
}

struct WrapRow {
    const char* name;
    int width;
    int indent;
    const char* text;
    const char* result;
    friend void PrintTo(const WrapRow& row, std::ostream* out) { *out << row.name; }
};
class WordWrap : public testing::TestWithParam<WrapRow> {
protected:
    void SetUp() override { ASSERT_TRUE(setLocale("C.UTF-8")); }
};
TEST_P(WordWrap, BreaksBetweenWords) {
    DString string = holding(GetParam().text);
    EXPECT_EQ(&string.wordWrap(GetParam().width, GetParam().indent), &string);
    EXPECT_STREQ(string.get(), GetParam().result);
    EXPECT_EQ(string.capacity(), int(std::strlen(GetParam().result)) + 1);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, WordWrap,
    testing::Values(
        WrapRow{"IndentCounts", 10, 2, "one two three four", "one two\n  three\n  four"},
        WrapRow{"ExactFit", 7, 0, "one two six", "one two\nsix"},
        WrapRow{"OneColumnShort", 6, 0, "one two", "one\ntwo"},
        WrapRow{"Fits", 80, 4, "one two", "one two"},
        WrapRow{"WideWordStandsAlone", 4, 1, "a extraordinary b", "a\n extraordinary\n b"},
        WrapRow{"WideWordComesFirst", 4, 1, "extraordinary b", "extraordinary\n b"},
        WrapRow{"WideWordBehindLeadingSpaces", 4, 1, "  extraordinary", "  extraordinary"},
        WrapRow{"SeveralSpacesStay", 80, 0, "a   b", "a   b"},
        WrapRow{"SeveralSpacesCount", 4, 0, "a   b", "a\nb"},
        WrapRow{"LeadingSpacesStay", 10, 0, "  one two", "  one two"},
        WrapRow{"LeadingSpacesCount", 8, 0, "  one two", "  one\ntwo"},
        WrapRow{"TrailingSpacesGo", 80, 0, "one   ", "one"},
        WrapRow{"OnlySpacesGo", 80, 0, "    ", ""},
        WrapRow{"OwnLineEndsStay", 80, 2, "one\ntwo\n", "one\ntwo\n"},
        WrapRow{"EmptyLinesStay", 80, 2, "one\n\n\ntwo", "one\n\n\ntwo"},
        WrapRow{"IndentationOfOwnLinesStays", 80, 2, "one\n   two", "one\n   two"},
        WrapRow{"OwnLineEndStartsAnew", 7, 0, "one two\nthree", "one two\nthree"},
        WrapRow{"SpacesBeforeALineEndFit", 5, 2, "one  \ntwo", "one  \ntwo"},
        WrapRow{"SpacesBeforeALineEndDoNotFit", 4, 2, "one  \ntwo", "one\n  \ntwo"},
        WrapRow{"SpacesOfAnEmptyLineStay", 2, 0, "a\n     \nb", "a\n     \nb"},
        WrapRow{"WideCharactersCountTwo", 4, 0, "\u65E5 \u672C", "\u65E5\n\u672C"},
        WrapRow{"WideCharactersFit", 5, 0, "\u65E5 \u672C", "\u65E5 \u672C"},
        WrapRow{"CombiningMarksCountNone", 3, 0, "e\u0301 e", "e\u0301 e"},
        WrapRow{"TabsAreWordBytesOfOneColumn", 5, 0, "a\tb c", "a\tb c"},
        WrapRow{"BadBytesEndAWordsWidth", 3, 0, "a\xFFlong b", "a\xFFlong b"},
        WrapRow{"BadWordsCountNone", 1, 0, "a \xFF\xFF\xFF", "a\n\xFF\xFF\xFF"},
        WrapRow{"NegativeWidthIsNone", -5, 0, "a b", "a\nb"},
        WrapRow{"ZeroWidth", 0, 1, "a b", "a\n b"},
        WrapRow{"NegativeIndentIsNone", 1, -5, "a b", "a\nb"},
        WrapRow{"IndentBeyondTheWidth", 2, 5, "a b c", "a\n     b\n     c"},
        WrapRow{"Empty", 10, 2, "", ""}),
    [](const auto& row) { return row.param.name; });

TEST(WordWrapping, LeavesANullStringAlone) {
    EXPECT_EQ(DString().wordWrap(10, 2).get(), nullptr);
}

TEST(WordWrapping, LargestArgumentsDoNoHarm) {
    EXPECT_STREQ(holding("a b").wordWrap(INT_MAX, INT_MAX).get(), "a b");
    EXPECT_STREQ(holding("a b").wordWrap(INT_MIN, INT_MIN).get(), "a\nb");
}

TEST(DStringAssignment, CopiesTheWholeArray) {
    DString first(16);
    std::memcpy(first.get(), "abc\0defg", 9);
    DString second = holding("something else that is longer");
    second = first;
    EXPECT_EQ(second.capacity(), 16);
    EXPECT_EQ(std::memcmp(second.get(), "abc\0defg", 9), 0);
    first.get()[0] = 'x';
    EXPECT_STREQ(second.get(), "abc");
}

TEST(DStringAssignment, TakesOverNull) {
    DString string = holding("abc");
    const DString null;
    string = null;
    EXPECT_EQ(string.get(), nullptr);
    EXPECT_EQ(string.capacity(), 0);
}

TEST(DStringAssignment, OfItselfLeavesTheStringNull) {
    DString string = holding("abc");
    const DString& same = string;
    string = same;
    EXPECT_EQ(string.get(), nullptr);
    EXPECT_EQ(string.capacity(), 0);
}

TEST(DStringAssignment, ReadsNoByteBehindASmallArray) {
    const DString tight = handedOver("abc"); // 4 bytes; the copy has 8
    DString string;
    string = tight;
    EXPECT_STREQ(string.get(), "abc");
    EXPECT_EQ(string.capacity(), 8);
}

TEST(DStringCopy, IsItsOwn) {
    DString first = holding("abc");
    const DString second = first; // NOLINT(performance-unnecessary-copy-initialization)
    first.get()[0] = 'x';
    EXPECT_STREQ(second.get(), "abc");
    EXPECT_EQ(DString(DString()).get(), nullptr);
}

TEST(DStringMove, LeavesTheOtherNull) {
    DString first = holding("abc");
    const char* const array = first.get();
    DString second(std::move(first));
    EXPECT_EQ(second.get(), array);
    EXPECT_EQ(first.get(), nullptr); // NOLINT(bugprone-use-after-move):
                                     // a moved string is null
    EXPECT_EQ(first.capacity(), 0);
    DString third = holding("other");
    third = std::move(second);
    EXPECT_EQ(third.get(), array);
    EXPECT_EQ(third.capacity(), 8);
    EXPECT_EQ(second.get(), nullptr); // NOLINT(bugprone-use-after-move)
}

TEST(DString, HandsOverItsArray) {
    DString string = holding("abc");
    const std::unique_ptr<char[]> array(string.takeBuf());
    EXPECT_STREQ(array.get(), "abc");
    EXPECT_EQ(string.get(), nullptr);
    EXPECT_EQ(string.capacity(), 0);
}

TEST(DPrintf, IsMadeFromAFormat) {
    const plat::DPrintf path("%s/%s", "folder", "file");
    EXPECT_STREQ(path.get(), "folder/file");
    const std::string longText(10000, 'x');
    EXPECT_EQ(plat::DPrintf("%s", longText.c_str()).get(), longText);
}

} // namespace
