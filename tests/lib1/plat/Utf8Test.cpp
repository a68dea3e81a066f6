#include "plat/Utf8.h"

#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lib1/AllocationHook.h"
#include "lib1/SystemTexts.h"
#include "lib1/plat/ReferenceUtf8.h"
#include "plat/Exception.h"

namespace {

using plat::isValidUtf8;
using plat::readUtf8NonAscii;
using plat::sanitizeUtf8;
using plat::sanitizeUtf8Range;
using plat::strvisUtf8;
using plat::utf8Back1;
using plat::utf8NumColumns;
using plat::writeUtf8;

using Array = std::unique_ptr<char[]>;

std::string encoded(int codePoint) {
    char bytes[4];
    char* end = bytes;
    writeUtf8(codePoint, &end);
    return {bytes, end};
}

struct DecodeRow {
    const char* name;
    const char* bytes; // NUL-terminated
    int avail;
    int codePoint;
    int consumed; // behind the lead byte
    friend void PrintTo(const DecodeRow& row, std::ostream* out) { *out << row.name; }
};
class ReadUtf8NonAscii : public testing::TestWithParam<DecodeRow> {};
TEST_P(ReadUtf8NonAscii, DecodesOneCharacter) {
    const char* p = GetParam().bytes + 1;
    EXPECT_EQ(readUtf8NonAscii(static_cast<unsigned char>(*GetParam().bytes), &p, GetParam().avail),
              GetParam().codePoint);
    EXPECT_EQ(p - GetParam().bytes - 1, GetParam().consumed);
}
INSTANTIATE_TEST_SUITE_P(
    Sequences, ReadUtf8NonAscii,
    testing::Values(DecodeRow{"TwoBytes", "\xC3\xA9", 4, 0xE9, 1},
                    DecodeRow{"SmallestOfTwoBytes", "\xC2\x80", 4, 0x80, 1},
                    DecodeRow{"LargestOfTwoBytes", "\xDF\xBF", 4, 0x7FF, 1},
                    DecodeRow{"ThreeBytes", "\xE2\x82\xAC", 4, 0x20AC, 2},
                    DecodeRow{"SmallestOfThreeBytes", "\xE0\xA0\x80", 4, 0x800, 2},
                    DecodeRow{"LastBeforeTheSurrogates", "\xED\x9F\xBF", 4, 0xD7FF, 2},
                    DecodeRow{"FirstBehindTheSurrogates", "\xEE\x80\x80", 4, 0xE000, 2},
                    DecodeRow{"FourBytes", "\xF0\x9F\x98\x80", 4, 0x1F600, 3},
                    DecodeRow{"SmallestOfFourBytes", "\xF0\x90\x80\x80", 4, 0x10000, 3},
                    DecodeRow{"LargestAllowed", "\xF4\x8F\xBF\xBD", 4, 0x10FFFD, 3},
                    DecodeRow{"NothingButTheLeadIsTakenForAscii", "a\x80", 4, -1, 0},
                    DecodeRow{"BareContinuation", "\x80\x80", 4, -1, 0},
                    DecodeRow{"FiveByteLead", "\xF8\x88\x80\x80\x80", 5, -1, 0},
                    DecodeRow{"SixByteLead", "\xFC\x84\x80\x80\x80\x80", 6, -1, 0},
                    DecodeRow{"LeadFE", "\xFE\x80", 4, -1, 0},
                    DecodeRow{"LeadFF", "\xFF\x80", 4, -1, 0},
                    DecodeRow{"TooFewBytesForTwo", "\xC3\xA9", 1, -1, 0},
                    DecodeRow{"JustEnoughBytesForTwo", "\xC3\xA9", 2, 0xE9, 1},
                    DecodeRow{"TooFewBytesForThree", "\xE2\x82\xAC", 2, -1, 0},
                    DecodeRow{"JustEnoughBytesForThree", "\xE2\x82\xAC", 3, 0x20AC, 2},
                    DecodeRow{"TooFewBytesForFour", "\xF0\x9F\x98\x80", 3, -1, 0},
                    DecodeRow{"NoByteAvailable", "\xC3\xA9", 0, -1, 0},
                    DecodeRow{"AsciiInsteadOfTheSecond", "\xE2x", 4, -1, 0},
                    DecodeRow{"AsciiInsteadOfTheThird", "\xE2\x82x", 4, -1, 1},
                    DecodeRow{"LeadInsteadOfTheFourth", "\xF0\x9F\x98\xC3", 4, -1, 2},
                    DecodeRow{"NulInsteadOfTheSecond", "\xE2", 4, -1, 0},
                    DecodeRow{"NulInsteadOfTheThird", "\xE2\x82", 4, -1, 1},
                    DecodeRow{"OverlongNul", "\xC0\x80", 4, -1, 1},
                    DecodeRow{"OverlongOfTwoBytes", "\xC1\xBF", 4, -1, 1},
                    DecodeRow{"OverlongOfThreeBytes", "\xE0\x9F\xBF", 4, -1, 2},
                    DecodeRow{"OverlongAsciiOfThreeBytes", "\xE0\x80\x80", 4, -1, 2},
                    DecodeRow{"OverlongOfFourBytes", "\xF0\x8F\xBF\xBD", 4, -1, 3},
                    DecodeRow{"OverlongAsciiOfFourBytes", "\xF0\x80\x80\x80", 4, -1, 3},
                    DecodeRow{"FirstSurrogate", "\xED\xA0\x80", 4, -1, 2},
                    DecodeRow{"LastSurrogate", "\xED\xBF\xBF", 4, -1, 2},
                    DecodeRow{"FirstTooLarge", "\xF4\x90\x80\x80", 4, -1, 3},
                    DecodeRow{"LargestOfFourBytes", "\xF7\xBF\xBF\xBF", 4, -1, 3},
                    DecodeRow{"LastBeforeTheRefusedRows", "\xEF\xBF\x8F", 4, 0xFFCF, 2},
                    DecodeRow{"FirstOfTheRefusedRows", "\xEF\xBF\x90", 4, -1, 2},
                    DecodeRow{"LastOfTheFirstRefusedRow", "\xEF\xBF\x9F", 4, -1, 2},
                    DecodeRow{"FullwidthCent", "\xEF\xBF\xA0", 4, -1, 2},
                    DecodeRow{"LastOfTheRefusedRows", "\xEF\xBF\xAF", 4, -1, 2},
                    DecodeRow{"FirstBehindTheRefusedRows", "\xEF\xBF\xB0", 4, 0xFFF0, 2},
                    DecodeRow{"ReplacementCharacter", "\xEF\xBF\xBD", 4, 0xFFFD, 2},
                    DecodeRow{"FFFE", "\xEF\xBF\xBE", 4, -1, 2},
                    DecodeRow{"FFFF", "\xEF\xBF\xBF", 4, -1, 2},
                    DecodeRow{"SecondPlaneFFFE", "\xF0\x9F\xBF\xBE", 4, -1, 3},
                    DecodeRow{"SecondPlaneFFFF", "\xF0\x9F\xBF\xBF", 4, -1, 3},
                    DecodeRow{"SecondPlaneFFE0", "\xF0\x9F\xBF\xA0", 4, 0x1FFE0, 3},
                    DecodeRow{"LastPlaneFFFE", "\xF4\x8F\xBF\xBE", 4, -1, 3},
                    DecodeRow{"LastPlaneFFFF", "\xF4\x8F\xBF\xBF", 4, -1, 3},
                    DecodeRow{"FDD0", "\xEF\xB7\x90", 4, 0xFDD0, 2},
                    DecodeRow{"FDEF", "\xEF\xB7\xAF", 4, 0xFDEF, 2},
                    DecodeRow{"ThreeByteTailLikeAPlanes", "\xE4\xBF\xBE", 4, 0x4FFE, 2}),
    [](const auto& row) { return row.param.name; });

struct EncodeRow {
    int codePoint;
    const char* bytes;
};
class WriteUtf8 : public testing::TestWithParam<EncodeRow> {};
TEST_P(WriteUtf8, WritesTheShortestForm) {
    char bytes[8] = "#######";
    char* end = bytes;
    writeUtf8(GetParam().codePoint, &end);
    const std::size_t length = std::max<std::size_t>(std::strlen(GetParam().bytes), 1);
    EXPECT_EQ(std::string(bytes, end), std::string(GetParam().bytes, length));
    EXPECT_EQ(*end, '#');
}
INSTANTIATE_TEST_SUITE_P(
    CodePoints, WriteUtf8,
    testing::Values(EncodeRow{0, ""}, EncodeRow{'a', "a"}, EncodeRow{0x7F, "\x7F"},
                    EncodeRow{0x80, "\xC2\x80"}, EncodeRow{0x7FF, "\xDF\xBF"},
                    EncodeRow{0x800, "\xE0\xA0\x80"}, EncodeRow{0xD800, "\xED\xA0\x80"},
                    EncodeRow{0xDFFF, "\xED\xBF\xBF"}, EncodeRow{0xFFFF, "\xEF\xBF\xBF"},
                    EncodeRow{0x10000, "\xF0\x90\x80\x80"}, EncodeRow{0x10FFFF, "\xF4\x8F\xBF\xBF"},
                    EncodeRow{-1, "\xFF"}, EncodeRow{-2, "\xFE"}, EncodeRow{INT_MIN, ""}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

class WriteUtf8TooLarge : public testing::TestWithParam<int> {};
TEST_P(WriteUtf8TooLarge, ThrowsAndWritesNothing) {
    char bytes[8] = "#######";
    char* end = bytes;
    try {
        writeUtf8(GetParam(), &end);
        ADD_FAILURE() << "nothing thrown";
    } catch (const plat::Exception& e) {
        EXPECT_STREQ(e.message.get(), "Unicode out of range");
    }
    EXPECT_EQ(end, bytes);
    EXPECT_STREQ(bytes, "#######");
}
INSTANTIATE_TEST_SUITE_P(CodePoints, WriteUtf8TooLarge, testing::Values(0x110000, INT_MAX));

TEST(Utf8, EveryCodePointIsReadAsItIsWritten) {
    for (int codePoint = 0x80; codePoint <= 0x10FFFF; ++codePoint) {
        const std::string bytes = encoded(codePoint);
        const bool isRefused = (codePoint >= 0xD800 && codePoint <= 0xDFFF) ||
                               (codePoint >= 0xFFD0 && codePoint <= 0xFFEF) ||
                               (codePoint & 0xFFFF) == 0xFFFE || (codePoint & 0xFFFF) == 0xFFFF;
        const char* p = bytes.c_str() + 1;
        ASSERT_EQ(readUtf8NonAscii(static_cast<unsigned char>(bytes[0]), &p, 4),
                  isRefused ? -1 : codePoint);
        ASSERT_EQ(p, bytes.c_str() + bytes.size());
        ASSERT_EQ(isValidUtf8(bytes.c_str()), !isRefused) << codePoint;
    }
}

struct BackRow {
    const char* name;
    const char* text;
    int back;
    friend void PrintTo(const BackRow& row, std::ostream* out) { *out << row.name; }
};
class Utf8Back1 : public testing::TestWithParam<BackRow> {};
TEST_P(Utf8Back1, StepsOverOneCharacter) {
    const char* const end = GetParam().text + std::strlen(GetParam().text);
    const char* p = end;
    utf8Back1(&p);
    EXPECT_EQ(end - p, GetParam().back);
}
INSTANTIATE_TEST_SUITE_P(Texts, Utf8Back1,
                         testing::Values(BackRow{"OneByte", "....a", 1},
                                         BackRow{"TwoBytes", "....\u00E9", 2},
                                         BackRow{"ThreeBytes", "a\u20AC", 3},
                                         BackRow{"FourBytes", "....\U0001F600", 4},
                                         BackRow{"AsciiWithThreeBehindIt", "....a\x80\x80\x80", 4},
                                         BackRow{"FourContinuations", "a\x80\x80\x80\x80", 1},
                                         BackRow{"BadLead", "....\xFF\x80", 2}),
                         [](const auto& row) { return row.param.name; });

TEST(Utf8Back, LooksBeforeTheText) {
    const char text[] = "a\x80\x80\x80";
    const char* p = text + 4; // a caller may hold only the last byte to be its text
    utf8Back1(&p);
    EXPECT_EQ(p, text);
}

struct ColumnRow {
    const char* name;
    std::string text;
    int columns;
    friend void PrintTo(const ColumnRow& row, std::ostream* out) { *out << row.name; }
};
class Utf8NumColumns : public testing::TestWithParam<ColumnRow> {
protected:
    void SetUp() override { ASSERT_TRUE(setLocale("C.UTF-8")); }
};
TEST_P(Utf8NumColumns, CountsWidths) {
    const std::string& text = GetParam().text;
    EXPECT_EQ(utf8NumColumns(text.data(), text.data() + text.size()), GetParam().columns);
    EXPECT_EQ(utf8NumColumns(text.c_str()), GetParam().columns);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, Utf8NumColumns,
    testing::Values(ColumnRow{"Empty", "", 0}, ColumnRow{"Ascii", "abc", 3},
                    ColumnRow{"ControlCharactersCountOne", "a\n\t\x01\x7F", 5},
                    ColumnRow{"HighControlCharacterCountsOne", "\u0085", 1},
                    ColumnRow{"Accents", "\u00E9\u00E8", 2}, ColumnRow{"Wide", "\u65E5\u672C", 4},
                    ColumnRow{"Combining", "e\u0301", 1}, ColumnRow{"ZeroWidthSpace", "\u200B", 0},
                    ColumnRow{"Emoji", "\U0001F600", 2}, ColumnRow{"Unassigned", "\u0378", 1},
                    ColumnRow{"StopsAtABadByte",
                              "ab\xFF"
                              "cd",
                              2},
                    ColumnRow{"StopsAtAnOverlongForm",
                              "ab\xC0\x80"
                              "cd",
                              2},
                    ColumnRow{"StopsAtARefusedCharacter",
                              "ab\xEF\xBF\xA0"
                              "cd",
                              2},
                    ColumnRow{"StopsAtACutCharacter", "ab\xE2\x82", 2},
                    ColumnRow{"StopsAtANul", std::string("ab\0cd", 5), 2},
                    ColumnRow{"LongAscii", std::string(100, 'x'), 100},
                    ColumnRow{"LongMixed", std::string(17, 'x') + "\u65E5" + std::string(33, '\n'),
                              52}),
    [](const auto& row) { return row.param.name; });

TEST(Utf8Columns, CountOneForWhatTheLocaleCannotPrint) {
    ASSERT_TRUE(setLocale("C"));
    EXPECT_EQ(utf8NumColumns("a\u65E5\u0301"), 3);
}

TEST(Utf8Columns, EndMayCutACharacter) {
    const char text[] = "ab\u20AC";
    EXPECT_EQ(utf8NumColumns(text, text + 4), 2);
    EXPECT_EQ(utf8NumColumns(text, text), 0);
}

struct ValidRow {
    const char* name;
    std::string text;
    bool isValid;
    friend void PrintTo(const ValidRow& row, std::ostream* out) { *out << row.name; }
};
class IsValidUtf8 : public testing::TestWithParam<ValidRow> {};
TEST_P(IsValidUtf8, ChecksUpToTheEndOrANul) {
    const std::string& text = GetParam().text;
    EXPECT_EQ(isValidUtf8(text.data(), text.data() + text.size()), GetParam().isValid);
}
TEST_P(IsValidUtf8, ChecksUpToTheNul) {
    EXPECT_EQ(isValidUtf8(GetParam().text.c_str()), GetParam().isValid);
}
// Where vectors do the work, they look at it in blocks: at each place of a block, in long text.
TEST_P(IsValidUtf8, ChecksEveryPlaceOfALongText) {
    for (const std::size_t before : {std::size_t(0), std::size_t(512)}) {
        for (std::size_t i = 0; i < 140; ++i) {
            const std::string ascii =
                std::string(before + i, 'a') + GetParam().text + std::string(150, 'b');
            EXPECT_EQ(isValidUtf8(ascii.data(), ascii.data() + ascii.size()), GetParam().isValid)
                << i;
            std::string wide = std::string(i % 3, 'a');
            for (std::size_t j = 0; j < (before + i) / 3; ++j)
                wide += "\u65E5";
            wide += GetParam().text + "\u672C\u672C\u672C";
            EXPECT_EQ(isValidUtf8(wide.data(), wide.data() + wide.size()), GetParam().isValid) << i;
        }
    }
}
INSTANTIATE_TEST_SUITE_P(
    Texts, IsValidUtf8,
    testing::Values(
        ValidRow{"Empty", "", true}, ValidRow{"Ascii", "abc", true},
        ValidRow{"AllLengths", "a\u00E9\u20AC\U0001F600", true},
        ValidRow{"ControlCharacters", "\x01\x7F\u0080", true},
        ValidRow{"NulInside", std::string("abc\0def", 7), true},
        ValidRow{"BadBehindANul", std::string("abc\0\xFF", 5), true},
        ValidRow{"BadBeforeANul", std::string("\xFF\0abc", 5), false},
        ValidRow{"CutByANul", std::string("\xE2\x82\0", 3), false},
        ValidRow{"BareContinuation", "a\x80", false}, ValidRow{"Overlong", "\xC0\x80", false},
        ValidRow{"OverlongOfThree", "\xE0\x80\xAF", false},
        ValidRow{"Surrogate", "\xED\xA0\x80", false},
        ValidRow{"TooLarge", "\xF4\x90\x80\x80", false}, ValidRow{"FFFE", "\xEF\xBF\xBE", false},
        ValidRow{"FFFF", "\xEF\xBF\xBF", false},
        ValidRow{"ReplacementCharacter", "\xEF\xBF\xBD", true},
        ValidRow{"FullwidthCent", "\xEF\xBF\xA0", false}, ValidRow{"FDD0", "\xEF\xB7\x90", true},
        ValidRow{"SecondPlaneFFFE", "\xF0\x9F\xBF\xBE", false},
        ValidRow{"SecondPlaneFFFD", "\xF0\x9F\xBF\xBD", true},
        ValidRow{"ThreeByteTailLikeAPlanes", "\xE4\xBF\xBE", true},
        ValidRow{"FiveByteForm", "\xF8\x88\x80\x80\x80", false}),
    [](const auto& row) { return row.param.name; });

TEST(ValidUtf8, EndMayNotCutACharacter) {
    const std::string text = "ab\U0001F600";
    for (std::size_t length = 0; length <= text.size(); ++length)
        EXPECT_EQ(isValidUtf8(text.data(), text.data() + length), length <= 2 || length == 6);
    const std::string longText = std::string(61, 'x') + text;
    for (std::size_t length = 61; length <= longText.size(); ++length)
        EXPECT_EQ(isValidUtf8(longText.data(), longText.data() + length),
                  length <= 63 || length == 67);
}

TEST(ValidUtf8, ReadsNoByteBehindTheEnd) {
    for (std::size_t length = 0; length < 200; ++length) {
        const std::vector<char> exact(length, 'a'); // the sanitizer sees the rest
        EXPECT_TRUE(isValidUtf8(exact.data(), exact.data() + exact.size()));
    }
}

// Random texts of every mixture, against the plain decoder.
class RandomText : public testing::TestWithParam<int> {
protected:
    std::mt19937 random{unsigned(GetParam())};

    std::string piece(bool isValid) {
        static const int starts[] = {0x01,    0x20,     0x7F,     0x80,   0xE9,    0x7FF,
                                     0x800,   0xFFC0,   0xFFD0,   0xFFEF, 0xFFF0,  0xFFFD,
                                     0xFFFE,  0xD7F0,   0xDFFF,   0x4FFE, 0x10000, 0x1FFF0,
                                     0x1FFFE, 0x10FFF0, 0x10FFFD, 0xFDD0};
        if (isValid || random() % 4 != 0)
            return encoded(
                std::min(starts[random() % std::size(starts)] + int(random() % 16), 0x10FFFF));
        std::string bytes;
        for (int i = int(random() % 4); i >= 0; --i)
            bytes +=
                char("\x80\xBF\xBE\xEF\xF4\xC0\xED\xE0\xF0\xFF\x90\xA0\x8F\xC3"[random() % 14]);
        return bytes;
    }

    std::string text(std::size_t length, bool isMostlyValid) {
        std::string bytes;
        const unsigned badness = isMostlyValid ? 400 : 8;
        while (bytes.size() < length) {
            if (random() % 3 == 0)
                bytes.append(random() % 40, 'a');
            std::string next = piece(random() % badness != 0);
            if (isMostlyValid && !reference::isValid(next.data(), next.data() + next.size()) &&
                random() % 50 != 0)
                next = "\u65E5";
            bytes += next;
        }
        if (random() % 16 == 0)
            bytes[random() % bytes.size()] = '\0';
        return bytes;
    }
};
TEST_P(RandomText, IsJudgedAsByThePlainDecoder) {
    for (int i = 0; i < 400; ++i) {
        const std::string bytes = text(1 + random() % 400, i % 2 == 0);
        for (std::size_t cut = 0; cut < 5 && cut <= bytes.size(); ++cut) {
            const char* const begin = bytes.data() + cut;
            const char* const end = bytes.data() + bytes.size();
            EXPECT_EQ(isValidUtf8(begin, end), reference::isValid(begin, end));
            EXPECT_EQ(isValidUtf8(begin, end - cut < begin ? begin : end - cut),
                      reference::isValid(begin, end - cut < begin ? begin : end - cut));
        }
        EXPECT_EQ(isValidUtf8(bytes.c_str()), reference::isValid(bytes.c_str(), nullptr));
    }
}
TEST_P(RandomText, IsRepairedAsByThePlainDecoder) {
    for (int i = 0; i < 400; ++i) {
        const std::string bytes = text(1 + random() % 200, i % 2 == 0);
        const char* const end = bytes.data() + bytes.size();
        EXPECT_EQ(Array(sanitizeUtf8(bytes.data(), end)).get(),
                  reference::sanitize(bytes.data(), end, -1));
        EXPECT_EQ(Array(sanitizeUtf8(bytes.c_str())).get(),
                  reference::sanitize(bytes.c_str(), nullptr, -1));
        const int limit = int(random() % 250);
        EXPECT_EQ(Array(sanitizeUtf8(bytes.data(), end, limit)).get(),
                  reference::sanitize(bytes.data(), end, limit));
    }
}
TEST_P(RandomText, IsMeasuredAsByThePlainDecoder) {
    ASSERT_TRUE(setLocale("C.UTF-8"));
    for (int i = 0; i < 400; ++i) {
        const std::string bytes = text(1 + random() % 200, true);
        const char* const end = bytes.data() + bytes.size();
        EXPECT_EQ(utf8NumColumns(bytes.data(), end), reference::columns(bytes.data(), end));
    }
}
INSTANTIATE_TEST_SUITE_P(Seeds, RandomText, testing::Values(1, 2, 3, 4));

struct SanitizeRow {
    const char* name;
    std::string text;
    int maxBytes;
    const char* copy;
    friend void PrintTo(const SanitizeRow& row, std::ostream* out) { *out << row.name; }
};
class SanitizeUtf8 : public testing::TestWithParam<SanitizeRow> {};
TEST_P(SanitizeUtf8, CopiesWithReplacements) {
    const std::string& text = GetParam().text;
    EXPECT_STREQ(
        Array(sanitizeUtf8(text.data(), text.data() + text.size(), GetParam().maxBytes)).get(),
        GetParam().copy);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, SanitizeUtf8,
    testing::Values(SanitizeRow{"Valid", "a\u00E9\u20AC\U0001F600", -1, "a\u00E9\u20AC\U0001F600"},
                    SanitizeRow{"BadByte",
                                "a\xFF"
                                "b",
                                -1,
                                "a\uFFFD"
                                "b"},
                    SanitizeRow{"LoneContinuation", "\x80", -1, "\uFFFD"},
                    SanitizeRow{"TwoContinuations", "\x80\x80", -1, "\uFFFD\uFFFD"},
                    SanitizeRow{"LeadAndAscii", "\xE2x", -1, "\uFFFDx"},
                    SanitizeRow{"LeadContinuationAndAscii", "\xE2\x82x", -1, "\uFFFDx"},
                    SanitizeRow{"OverlongNul", "\xC0\x80", -1, "\uFFFD"},
                    SanitizeRow{"Surrogate", "\xED\xA0\x80", -1, "\uFFFD"},
                    SanitizeRow{"FullwidthCent", "\xEF\xBF\xA0", -1, "\uFFFD"},
                    SanitizeRow{"CutByTheEnd", "a\xE2\x82", -1, "a\uFFFD\uFFFD"},
                    SanitizeRow{"CutByANul", std::string("a\xE2\x82\0b", 5), -1, "a\uFFFD"},
                    SanitizeRow{"NulEndsIt", std::string("a\0b", 3), -1, "a"},
                    SanitizeRow{"Empty", "", -1, ""}, SanitizeRow{"Nothing", "abc", 0, ""},
                    SanitizeRow{"LimitCutsNoCharacter", "ab\u20AC", 3, "ab"},
                    SanitizeRow{"LimitOneShort", "ab\u20AC", 4, "ab"},
                    SanitizeRow{"LimitFits", "ab\u20AC", 5, "ab\u20AC"},
                    SanitizeRow{"NothingBehindWhatDoesNotFit", "ab\u20ACc", 3, "ab"},
                    SanitizeRow{"LimitCountsReplacements",
                                "a\xFF"
                                "b",
                                3, "a"},
                    SanitizeRow{"LimitFitsReplacements",
                                "a\xFF"
                                "b",
                                4, "a\uFFFD"},
                    SanitizeRow{"LimitInAscii", "abcdef", 3, "abc"},
                    SanitizeRow{"LargestLimit", "abc", INT_MAX, "abc"}),
    [](const auto& row) { return row.param.name; });

TEST(SanitizeUtf8, TakesANulTerminatedText) {
    EXPECT_STREQ(Array(sanitizeUtf8("a\xFF")).get(), "a\uFFFD");
    EXPECT_STREQ(Array(sanitizeUtf8("a\xE2\x82")).get(), "a\uFFFD"); // a NUL cuts, no end does
}

TEST(SanitizeUtf8, AllocatesOnceForText) {
    const std::string text(1000, 'a');
    const int before = AllocationHook::count;
    const Array copy(sanitizeUtf8(text.c_str()));
    EXPECT_EQ(AllocationHook::count - before, 1);
    EXPECT_EQ(AllocationHook::lastSize, 1010U);
}

TEST(SanitizeUtf8, GrowsForReplacements) {
    std::string repaired;
    for (int i = 0; i < 1000; ++i)
        repaired += "\uFFFD";
    EXPECT_EQ(Array(sanitizeUtf8(std::string(1000, '\xFF').c_str())).get(), repaired);
}

TEST(SanitizeUtf8, FreesWhatItHasWhenMemoryEnds) {
    const std::string text(100, '\xFF');
    const RemainingAllocations one(1); // the leak checker sees whether it is freed
    EXPECT_THROW(sanitizeUtf8(text.c_str()), std::bad_alloc);
}

struct RangeRow {
    const char* name;
    const char* text;
    int start;
    int length;
    int newStart;
    int newLength;
    friend void PrintTo(const RangeRow& row, std::ostream* out) { *out << row.name; }
};
class SanitizeUtf8Range : public testing::TestWithParam<RangeRow> {};
TEST_P(SanitizeUtf8Range, MovesToCharacters) {
    int start = GetParam().start;
    int length = GetParam().length;
    sanitizeUtf8Range(GetParam().text, &start, &length);
    EXPECT_EQ(start, GetParam().newStart);
    EXPECT_EQ(length, GetParam().newLength);
}
INSTANTIATE_TEST_SUITE_P(Ranges, SanitizeUtf8Range,
                         testing::Values(RangeRow{"StartInside", "a\u20ACb", 2, 1, 4, 0},
                                         RangeRow{"StartInsideAndLonger", "a\u20ACb", 2, 3, 4, 1},
                                         RangeRow{"EndInside", "a\u20ACb", 0, 2, 0, 4},
                                         RangeRow{"EndInsideByOne", "a\u20ACb", 1, 2, 1, 3},
                                         RangeRow{"WholeCharacters", "a\u20ACb", 1, 3, 1, 3},
                                         RangeRow{"Everything", "a\u20ACb", 0, -1, 0, 5},
                                         RangeRow{"EverythingFromTheMiddle", "a\u20ACb", 1, -1, 1,
                                                  4},
                                         RangeRow{"EverythingFromInside", "a\u20ACb", 2, -1, 4, 1},
                                         RangeRow{"SmallestLength", "abc", 0, INT_MIN, 0, 3},
                                         RangeRow{"NegativeStart", "abc", -2, 2, 0, 2},
                                         RangeRow{"StartBeyondTheEnd", "abc", 9, 2, 3, 0},
                                         RangeRow{"StartAtTheEnd", "abc", 3, -1, 3, 0},
                                         RangeRow{"LengthBeyondTheEnd", "abc", 1, 9, 1, 2},
                                         RangeRow{"LargestLength", "abc", 1, INT_MAX, 1, 2},
                                         RangeRow{"LargestStart", "abc", INT_MAX, INT_MAX, 3, 0},
                                         RangeRow{"NoLengthStaysSo", "a\u20ACb", 1, 0, 1, 0},
                                         RangeRow{"NoLengthInside", "a\u20ACb", 2, 0, 4, 0},
                                         RangeRow{"OnlyContinuations", "\x80\x80", 0, 2, 2, 0},
                                         RangeRow{"Empty", "", 0, 5, 0, 0}),
                         [](const auto& row) { return row.param.name; });

struct VisRow {
    const char* name;
    const char* text;
    char esc;
    const char* visible;
    friend void PrintTo(const VisRow& row, std::ostream* out) { *out << row.name; }
};
class StrvisUtf8 : public testing::TestWithParam<VisRow> {};
TEST_P(StrvisUtf8, EscapesWhatIsNotPrintable) {
    EXPECT_STREQ(Array(strvisUtf8(GetParam().text, GetParam().esc)).get(), GetParam().visible);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, StrvisUtf8,
    testing::Values(
        VisRow{"Plain", "abc ~", '\\', "abc ~"}, VisRow{"Tab", "tab\there", '\\', "tab\\^Ihere"},
        VisRow{"Newline", "a\n", '~', "a~^J"}, VisRow{"FirstControl", "\x01", '~', "~^A"},
        VisRow{"LastControl", "\x1F", '~', "~^_"}, VisRow{"Delete", "\x7F", '~', "~^?"},
        VisRow{"EscapeCharacter", "a~b", '~', "a~~b"},
        VisRow{"EscapeCharacterIsAControl", "a\nb\t", '\n', "a\n\nb\n^I"},
        VisRow{"EscapeCharacterIsALetter", "abc", 'b', "abbc"},
        VisRow{"EscapeCharacterIsHigh", "a\u00E9", '\xE9', "a\u00E9\u00E9"},
        VisRow{"EscapeCharacterIsNul", "a\xC3", '\0', "a"},
        VisRow{"NonAscii", "\u00E9\u20AC\U0001F600", '~', "\u00E9\u20AC\U0001F600"},
        VisRow{"HighControl", "\u0080\u009F", '~', "\u0080\u009F"},
        VisRow{"LoneLead", "\xC3", '~', "~M-C"}, VisRow{"LoneContinuation", "\x80", '~', "~M^@"},
        VisRow{"NoBreakByte", "\xA0", '~', "~M^`"}, VisRow{"ByteAboveIt", "\xA1", '~', "~M-!"},
        VisRow{"ByteFE", "\xFE", '~', "~M-~"}, VisRow{"ByteFF", "\xFF", '~', "~M^?"},
        VisRow{"CutCharacter", "\xE2\x82x", '~', "~M-b~M^Bx"},
        VisRow{"Overlong", "\xC0\x80", '~', "~M-@~M^@"},
        VisRow{"FullwidthCent", "\xEF\xBF\xA0", '~', "~M-o~M-?~M^`"}, VisRow{"Empty", "", '~', ""}),
    [](const auto& row) { return row.param.name; });

TEST(StrvisUtf8, AllocatesOnceForTheWorstCase) {
    const std::string text(100, '\xFF');
    const int before = AllocationHook::count;
    const Array visible(strvisUtf8(text.c_str(), '~'));
    EXPECT_EQ(AllocationHook::count - before, 1);
    EXPECT_EQ(AllocationHook::lastSize, 401U);
    EXPECT_EQ(std::strlen(visible.get()), 400U);
}

} // namespace
