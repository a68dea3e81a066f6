#include "plat/Latin1.h"

#include <cstring>
#include <memory>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "lib1/AllocationHook.h"
#include "lib1/plat/ReferenceUtf8.h"

namespace {

using plat::CBuf;
using plat::latin1ToUtf8;
using plat::MBuf;
using plat::utf8ToLatin1;

using Array = std::unique_ptr<char[]>;

struct Row {
    const char* name;
    std::string text;
    std::string converted;
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

class Utf8ToLatin1 : public testing::TestWithParam<Row> {};
TEST_P(Utf8ToLatin1, ConvertsARange) {
    const std::string& text = GetParam().text;
    char* end = nullptr;
    const Array latin1(utf8ToLatin1(text.data(), text.data() + text.size(), &end));
    EXPECT_EQ(latin1.get(), GetParam().converted);
    EXPECT_EQ(std::size_t(end - latin1.get()), GetParam().converted.size());
    EXPECT_EQ(AllocationHook::lastSize, GetParam().converted.size() + 1);
}
TEST_P(Utf8ToLatin1, ConvertsAViewIntoABuffer) {
    const std::string& text = GetParam().text;
    MBuf<char> latin1;
    latin1.replaceBuf(new char[3], 3);
    utf8ToLatin1(CBuf<char>(text.data(), int(text.size())), &latin1);
    EXPECT_EQ(std::string(latin1.get(), std::size_t(latin1.length())), GetParam().converted);
    EXPECT_EQ(latin1.get()[latin1.length()], '\0');
}
INSTANTIATE_TEST_SUITE_P(
    Texts, Utf8ToLatin1,
    testing::Values(Row{"Ascii", "abc", "abc"},
                    Row{"Euro", "a\u20ACb",
                        "a\x80"
                        "b"},
                    Row{"Accents", "\u00E9\u00FF\u00A0", "\xE9\xFF\xA0"},
                    Row{"C1Controls", "\u0080\u0081\u009F", "\x80\x81\x9F"},
                    Row{"FirstBeyond", "\u0100", "?"}, Row{"Japanese", "\u65E5", "?"},
                    Row{"Emoji", "a\U0001F600b", "a?b"},
                    Row{"BadByte",
                        "a\xFF"
                        "b",
                        "a?b"},
                    Row{"TwoContinuations", "\x80\x80", "??"}, Row{"Overlong", "\xC0\x80", "?"},
                    Row{"LeadAndAscii", "\xE2x", "?x"},
                    Row{"LeadContinuationAndAscii", "\xE2\x82x", "?x"},
                    Row{"LeadAndLead", "\xC3\xC3\xA9", "?\xE9"},
                    Row{"Surrogate", "\xED\xA0\x80", "?"}, Row{"CutByTheEnd", "a\xE2\x82", "a??"},
                    Row{"CutByANul", std::string("a\xE2\x82\0b", 5), "a?"},
                    Row{"NulEndsIt", std::string("a\0b", 3), "a"},
                    Row{"LeadOfTwoCutByTheEnd", "a\xC3", "a?"}, Row{"Empty", "", ""}),
    [](const auto& row) { return row.param.name; });

class Latin1ToUtf8 : public testing::TestWithParam<Row> {};
TEST_P(Latin1ToUtf8, ConvertsARange) {
    const std::string& text = GetParam().text;
    char* end = nullptr;
    const Array utf8(latin1ToUtf8(text.data(), text.data() + text.size(), &end));
    EXPECT_EQ(utf8.get(), GetParam().converted);
    EXPECT_EQ(std::size_t(end - utf8.get()), GetParam().converted.size());
}
TEST_P(Latin1ToUtf8, ConvertsAViewIntoABuffer) {
    const std::string& text = GetParam().text;
    MBuf<char> utf8;
    latin1ToUtf8(CBuf<char>(text.data(), int(text.size())), &utf8);
    EXPECT_EQ(std::string(utf8.get(), std::size_t(utf8.length())), GetParam().converted);
    EXPECT_EQ(utf8.get()[utf8.length()], '\0');
}
INSTANTIATE_TEST_SUITE_P(
    Texts, Latin1ToUtf8,
    testing::Values(Row{"Ascii", "abc", "abc"},
                    Row{"Euro",
                        "a\x80"
                        "b",
                        "a\u20ACb"},
                    Row{"Accents", "\xE9\xFF\xA0", "\u00E9\u00FF\u00A0"},
                    Row{"C1Controls", "\x81\x9F", "\u0081\u009F"},
                    Row{"NulEndsIt", std::string("a\0b", 3), "a"}, Row{"Empty", "", ""},
                    Row{"EurosOnly", std::string(5, '\x80'), "\u20AC\u20AC\u20AC\u20AC\u20AC"}),
    [](const auto& row) { return row.param.name; });

TEST(Latin1, TakesNulTerminatedTexts) {
    EXPECT_STREQ(Array(utf8ToLatin1("a\u00E9")).get(), "a\xE9");
    EXPECT_STREQ(Array(utf8ToLatin1("a\xE2\x82")).get(), "a?"); // a NUL cuts, no end does
    EXPECT_STREQ(Array(latin1ToUtf8("a\xE9")).get(), "a\u00E9");
}

TEST(Latin1, TakesEmptyViews) {
    MBuf<char> out;
    utf8ToLatin1(CBuf<char>(), &out);
    EXPECT_EQ(out.length(), 0);
    EXPECT_STREQ(out.get(), "");
    latin1ToUtf8(CBuf<char>(), &out);
    EXPECT_EQ(out.length(), 0);
    EXPECT_STREQ(out.get(), "");
}

TEST(Latin1, ConvertsAViewOfTheReceivingBuffer) {
    MBuf<char> buf;
    latin1ToUtf8(CBuf<char>("a\xE9", 2), &buf);
    utf8ToLatin1(buf.view(), &buf);
    EXPECT_STREQ(buf.get(), "a\xE9");
    latin1ToUtf8(buf.view(), &buf);
    EXPECT_STREQ(buf.get(), "a\u00E9");
}

TEST(Latin1, EveryByteSurvivesTheWayThereAndBack) {
    for (int byte = 1; byte < 256; ++byte) {
        const char text[] = {char(byte), '\0'};
        EXPECT_STREQ(Array(utf8ToLatin1(Array(latin1ToUtf8(text)).get())).get(), text);
    }
}

TEST(Latin1, AllocatesOnceForUsualText) {
    const std::string text = std::string(100, 'a') + std::string(30, '\xE9');
    const int before = AllocationHook::count;
    const Array utf8(latin1ToUtf8(text.c_str()));
    EXPECT_EQ(AllocationHook::count - before, 1);
    EXPECT_EQ(AllocationHook::lastSize, text.size() + text.size() / 2 + 1);
}

TEST(Latin1, GrowsForManyAccents) {
    for (const char byte : {'\xE9', '\x80'}) {
        const std::string text(1000, byte);
        EXPECT_EQ(Array(latin1ToUtf8(text.c_str())).get(),
                  reference::fromLatin1(text.c_str(), nullptr));
    }
}

class RandomLatin1 : public testing::TestWithParam<int> {
protected:
    std::mt19937 random{unsigned(GetParam())};

    std::string latin1Text(std::size_t length) {
        std::string text;
        const unsigned accents = 1 + random() % 30;
        while (text.size() < length)
            text +=
                random() % accents == 0 ? char(0x80 + random() % 128) : char('a' + random() % 26);
        if (random() % 8 == 0)
            text[random() % text.size()] = random() % 2 == 0 ? '\0' : '\x80';
        return text;
    }
};
TEST_P(RandomLatin1, BecomesUtf8AsByteByByte) {
    for (int i = 0; i < 500; ++i) {
        const std::string text = latin1Text(1 + random() % 300);
        const char* const end = text.data() + text.size();
        EXPECT_EQ(Array(latin1ToUtf8(text.data(), end)).get(),
                  reference::fromLatin1(text.data(), end));
    }
}
TEST_P(RandomLatin1, ComesFromUtf8AsCharacterByCharacter) {
    for (int i = 0; i < 500; ++i) {
        const std::string latin1 = latin1Text(1 + random() % 300);
        std::string text = reference::fromLatin1(latin1.c_str(), nullptr);
        for (unsigned j = random() % 3; j > 0 && !text.empty(); --j) // and some damage
            text[random() % text.size()] = char(random() % 256);
        const char* const end = text.data() + text.size();
        EXPECT_EQ(Array(utf8ToLatin1(text.data(), end)).get(),
                  reference::toLatin1(text.data(), end));
    }
}
INSTANTIATE_TEST_SUITE_P(Seeds, RandomLatin1, testing::Values(1, 2, 3));

} // namespace
