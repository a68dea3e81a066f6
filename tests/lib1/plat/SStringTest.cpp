#include "plat/SString.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "lib1/AllocationHook.h"
#include "lib1/SystemTexts.h"

namespace {

using plat::SString;
using plat::SString_append;
using plat::SString_appendChar;
using plat::SString_prf;

// A room of eight bytes with a guard behind it, and a text in it.
struct Room {
    explicit Room(const char* text) { std::strcpy(bytes, text); } // NOLINT: the rows fit
    char bytes[12] = {'#', '#', '#', '#', '#', '#', '#', '#', '#', '#', '#', '#'};
    static constexpr int size = 8;
    bool isGuardIntact() const { return std::memcmp(bytes + size, "####", 4) == 0; }
};

struct CutRow {
    const char* name;
    const char* before;
    const char* added;
    const char* after;
    friend void PrintTo(const CutRow& row, std::ostream* out) { *out << row.name; }
};
class SStringCutting : public testing::TestWithParam<CutRow> {};
TEST_P(SStringCutting, FormattingKeepsWholeCharacters) {
    Room room(GetParam().before);
    SString_prf(room.bytes, Room::size, "%s", GetParam().added);
    EXPECT_STREQ(room.bytes, GetParam().after);
    EXPECT_EQ(room.bytes[Room::size - 1], '\0');
    EXPECT_TRUE(room.isGuardIntact());
}
TEST_P(SStringCutting, AppendingKeepsWholeCharacters) {
    Room room(GetParam().before);
    SString_append(room.bytes, Room::size, GetParam().added, -1);
    EXPECT_STREQ(room.bytes, GetParam().after);
    EXPECT_TRUE(room.isGuardIntact());
}
INSTANTIATE_TEST_SUITE_P(
    Texts, SStringCutting,
    testing::Values(
        CutRow{"Fits", "abc", "def", "abcdef"}, CutRow{"FitsExactly", "abc", "defg", "abcdefg"},
        CutRow{"OneTooMany", "abc", "defgh", "abcdefg"},
        CutRow{"IntoNothing", "", "abcdefghijkl", "abcdefg"},
        CutRow{"IntoAFullOne", "abcdefg", "h", "abcdefg"},
        CutRow{"LeadByteAlone", "abcde", "x\u00E9", "abcdex"},
        CutRow{"TwoBytesFit", "abcde", "\u00E9z", "abcde\u00E9"},
        CutRow{"ThreeBytesFit", "abcd", "\u20ACz", "abcd\u20AC"},
        CutRow{"ThreeBytesLackOne", "abcde", "\u20AC", "abcde"},
        CutRow{"ThreeBytesLackTwo", "abcdef", "\u20AC", "abcdef"},
        CutRow{"FourBytesFit", "abc", "\U0001F600z", "abc\U0001F600"},
        CutRow{"FourBytesLackOne", "abcd", "\U0001F600", "abcd"},
        CutRow{"FourBytesLackTwo", "abcde", "\U0001F600", "abcde"},
        CutRow{"FourBytesLackThree", "abcdef", "\U0001F600", "abcdef"},
        CutRow{"OlderPartStays", "abcde\xE2", "\x82\xAC", "abcde\xE2\x82"},
        CutRow{"FullOneWithAnOlderPartStays", "abcdef\xC3", "\xA9", "abcdef\xC3"},
        CutRow{"BareContinuationsStay", "ab", "\x80\x80\x80\x80\x80\x80", "ab\x80\x80\x80\x80\x80"},
        CutRow{"NoMoreThanFourBytesAreSeen", "a", "\xE2\x80\x80\x80\x80\x80\x80\x80",
               "a\xE2\x80\x80\x80\x80\x80"},
        CutRow{"MalformedLeadStays", "abcde", "x\xFFy", "abcdex\xFF"},
        CutRow{"FiveByteLeadStays", "abcde", "x\xF8y", "abcdex\xF8"},
        CutRow{"WholeAsciiStays", "abcde", "xyz", "abcdexy"}, CutRow{"Nothing", "abc", "", "abc"}),
    [](const auto& row) { return row.param.name; });

TEST(SStringFormat, AppendsAndSaysNothingWhereItFits) {
    SString<256> string("x=");
    EXPECT_EQ(&string.prf("%d", 42).prf(", %s", "y"), &string);
    EXPECT_STREQ(string.get(), "x=42, y");
}

TEST(SStringFormat, PutsANulIntoTheLastByte) {
    char buf[8] = {'a', '\0', '#', '#', '#', '#', '#', '#'};
    SString_prf(buf, 8, "%s", "b");
    EXPECT_STREQ(buf, "ab");
    EXPECT_EQ(buf[7], '\0');
    EXPECT_EQ(buf[6], '#');
}

TEST(SStringFormat, TakesAnErrorOfTheFormatterForACut) {
    ASSERT_TRUE(setLocale("C"));
    char buf[8] = "ab\0defg";
    SString_prf(buf, 8, "%ls", L"\x20AC"); // the locale cannot write it
    EXPECT_EQ(std::memcmp(buf, "ab", 2), 0);
    EXPECT_EQ(buf[7], '\0');
}

TEST(SStringFormat, KeepsTextOfOneByteEmpty) {
    SString<1> string;
    string.prf("%s", "abc").append("abc").appendChar('a');
    EXPECT_STREQ(string.get(), "");
}

class TinySString : public testing::TestWithParam<int> {};
TEST_P(TinySString, HoldsWhatFitsBeforeTheNul) {
    const int size = GetParam();
    std::string buf(std::size_t(size) + 1, '#');
    buf[0] = '\0';
    SString_append(buf.data(), size, "a\u20AC\u20AC", -1);
    EXPECT_STREQ(buf.c_str(), size == 1 ? "" : size < 5 ? "a" : "a\u20AC");
    EXPECT_EQ(buf[std::size_t(size)], '#');
    buf[0] = '\0';
    SString_prf(buf.data(), size, "%s", "a\u20AC\u20AC");
    EXPECT_STREQ(buf.c_str(), size == 1 ? "" : size < 5 ? "a" : "a\u20AC");
    EXPECT_EQ(buf[std::size_t(size)], '#');
}
INSTANTIATE_TEST_SUITE_P(Sizes, TinySString, testing::Values(1, 2, 3, 4, 5, 6, 7));

struct AppendRow {
    const char* name;
    const char* text;
    int maxLen;
    const char* result;
    friend void PrintTo(const AppendRow& row, std::ostream* out) { *out << row.name; }
};
class SStringAppend : public testing::TestWithParam<AppendRow> {};
TEST_P(SStringAppend, AppendsWhatIsAskedFor) {
    SString<8> string("x");
    EXPECT_EQ(&string.append(GetParam().text, GetParam().maxLen), &string);
    EXPECT_STREQ(string.get(), GetParam().result);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, SStringAppend,
    testing::Values(AppendRow{"All", "abc", -1, "xabc"}, AppendRow{"Some", "abc", 2, "xab"},
                    AppendRow{"LimitBeyondTheEnd", "abc", 9, "xabc"},
                    AppendRow{"Nothing", "abc", 0, "x"}, AppendRow{"Null", nullptr, -1, "x"},
                    AppendRow{"HalfACharacterThatWasAskedFor", "\u00E9", 1, "x\xC3"},
                    AppendRow{"SixThatFit", "abcdefgh", 6, "xabcdef"},
                    AppendRow{"SevenThatDoNot", "abcdefgh", 7, "xabcdef"}),
    [](const auto& row) { return row.param.name; });

TEST(SStringAppendChar, AppendsAsOftenAsItFits) {
    SString<8> string("ab");
    EXPECT_STREQ(string.appendChar('x', 0).get(), "ab");
    EXPECT_STREQ(string.appendChar('x', -1).get(), "ab");
    EXPECT_STREQ(string.appendChar('x', 2).get(), "abxx");
    EXPECT_STREQ(string.appendChar('y').get(), "abxxy");
    EXPECT_STREQ(string.appendChar('z', 100).get(), "abxxyzz");
    EXPECT_STREQ(string.appendChar('z').get(), "abxxyzz");
}

TEST(SStringAppendChar, WritesNothingIntoAFullArray) {
    Room room("abcdefg");
    SString_appendChar(room.bytes, Room::size, 'x', 1);
    EXPECT_STREQ(room.bytes, "abcdefg");
    EXPECT_TRUE(room.isGuardIntact());
}

TEST(SString, HasTheArrayAndNothingElse) {
    EXPECT_EQ(sizeof(SString<256>), 256U);
    EXPECT_EQ(sizeof(SString<32>), 32U);
    EXPECT_EQ(SString<32>::size(), 32);
    SString<32> string;
    EXPECT_EQ(static_cast<void*>(string.data()), static_cast<void*>(&string));
}

TEST(SString, StartsEmptyOrWithAText) {
    EXPECT_STREQ(SString<8>().get(), "");
    EXPECT_STREQ(SString<8>("abc").get(), "abc");
    EXPECT_STREQ(SString<8>(nullptr).get(), "");
    EXPECT_STREQ(SString<8>("abcdefghij").get(), "abcdefg");
}

TEST(SString, IsEmptyWhenCleared) {
    SString<8> string("abcdefg");
    EXPECT_EQ(&string.clear(), &string);
    EXPECT_STREQ(string.get(), "");
    EXPECT_STREQ(string.append("xy").get(), "xy");
}

TEST(SString, IsCopiedByValue) {
    SString<8> first("abc");
    const SString<8> second = first;
    first.append("d");
    EXPECT_STREQ(second.get(), "abc");
}

TEST(SString, NeverAllocates) {
    const std::string longText(10000, 'x');
    const int before = AllocationHook::count;
    SString<256> string;
    string.prf("%s %d", longText.c_str(), 1).append(longText.c_str()).appendChar('x', 1000);
    EXPECT_EQ(AllocationHook::count, before);
}

} // namespace
