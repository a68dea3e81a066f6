#include "loc/unescapeString.h"

#include <string>

#include <gtest/gtest.h>

#include "plat/Exception.h"

namespace {

// Shown by number where a text has no printable name.
struct Row {
    const char* text;
    std::string result;
    const char* error = "";
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.text; }
};
class UnescapeString : public testing::TestWithParam<Row> {};

constexpr const char* preceding = "Junk preceding string data";
constexpr const char* following = "Junk following string data";
constexpr const char* unended = "Missing terminator";
constexpr const char* escapeAtEnd = "Invalid escape at end";
constexpr const char* hexAtEnd = "Invalid hex escape at end";
constexpr const char* badHex = "Invalid hex escape";
constexpr const char* badCode = "Invalid escape code";
constexpr const char* outOfRange = "Octal escape code out of range";

INSTANTIATE_TEST_SUITE_P(
    Quotes, UnescapeString,
    testing::Values(Row{R"("")", ""}, Row{R"("abc")", "abc"}, Row{R"(   "a b ")", "a b "},
                    Row{"\"\t\xC3\xA4\xFF\"", "\t\xC3\xA4\xFF"}, Row{"", "", following},
                    Row{" ", "", following}, Row{"   ", "", following}, Row{"abc", "", preceding},
                    Row{R"(x"abc")", "", preceding}, Row{R"(  x "abc")", "", preceding},
                    Row{"\t\"abc\"", "", preceding}, Row{R"('abc')", "", preceding},
                    Row{R"(\"abc")", "", preceding}, Row{R"(")", "", unended},
                    Row{R"("abc)", "abc", unended}, Row{R"("abc\")", "abc\"", unended},
                    Row{R"("abc" )", "abc", following}, Row{R"("abc""def")", "abc", following},
                    Row{"\"abc\"\r", "abc", following}, Row{R"("abc"")", "abc", following}));
INSTANTIATE_TEST_SUITE_P(
    Letters, UnescapeString,
    testing::Values(Row{R"("\"")", "\""}, Row{R"("\'\?\\")", "'?\\"},
                    Row{R"("\a\b\f\n\r\t\v")", "\a\b\f\n\r\t\v"}, Row{R"("1\n\n2")", "1\n\n2"},
                    Row{R"("\N00")", "", badCode}, Row{R"("ab\qcd")", "ab", badCode},
                    Row{R"("ab\q)", "ab", escapeAtEnd}, Row{R"("ab\qc)", "ab", escapeAtEnd},
                    Row{R"("ab\qcd)", "ab", badCode}, Row{R"("ab\q"x)", "ab", badCode},
                    Row{R"("ab\)", "ab", escapeAtEnd}, Row{R"("ab\\)", "ab\\", unended},
                    Row{R"("\ 12")", std::string("\x0A", 1)}));
INSTANTIATE_TEST_SUITE_P(
    Hex, UnescapeString,
    testing::Values(Row{R"("\x41\x7e\xFf")", "A~\xFF"}, Row{R"("\x414")", "A4"},
                    Row{R"("a\x)", "a", hexAtEnd}, Row{R"("a\x4)", "a", hexAtEnd},
                    Row{R"("a\x")", "a", hexAtEnd}, Row{R"("a\x4")", "a", badHex},
                    Row{R"("a\xg0")", "a", badHex}, Row{R"("a\x0g")", "a", badHex},
                    Row{R"("a\x0x")", "a", badHex}, Row{R"("a\x  ")", "a", badHex},
                    Row{R"("\x+5")", "\x05"}, Row{R"("\x 5")", "\x05"}, Row{R"("\x-5")", "\xFB"},
                    Row{R"("a\X41")", "a", badCode}));
INSTANTIATE_TEST_SUITE_P(
    Octal, UnescapeString,
    testing::Values(Row{R"("\101")", "A"}, Row{R"("\1018")", "A8"}, Row{R"("\377")", "\xFF"},
                    Row{R"("a\400")", "a", outOfRange}, Row{R"("a\777")", "a", outOfRange},
                    Row{R"("a\08x")", "a", badCode}, Row{R"("a\128")", "a", badCode},
                    Row{R"("a\7")", "a", escapeAtEnd}, Row{R"("a\12")", "a", badCode},
                    Row{R"("a\7"")", "a", badCode}, Row{R"("a\12)", "a", escapeAtEnd},
                    Row{R"("\+12")", "\n"}, Row{R"("\  7")", "\x07"}, Row{R"("\-12")", "\xF6"},
                    Row{R"("a\   ")", "a", badCode}));
INSTANTIATE_TEST_SUITE_P(ZeroBytes, UnescapeString,
                         testing::Values(Row{R"("a\000b")", std::string("a\0b", 3)},
                                         Row{R"("\x00")", std::string(1, '\0')},
                                         Row{R"("a\x00b\q)", std::string("a\0b", 3), escapeAtEnd}));

TEST_P(UnescapeString, AppendsTheContentOrSaysWhatIsWrong) {
    rdr::MemOutStream out;
    out.writeBytes(">", 1);
    std::string error;
    try {
        loc::unescapeString(GetParam().text, &out);
    } catch (const plat::Exception& e) {
        error = e.message.get();
    }
    EXPECT_EQ(error, GetParam().error);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(out.data()), std::size_t(out.length())),
              ">" + GetParam().result);
}

TEST_P(UnescapeString, AppendsToATextUpToAZeroByte) {
    plat::DString text;
    text.append(">");
    std::string error;
    try {
        loc::unescapeString(GetParam().text, &text);
    } catch (const plat::Exception& e) {
        error = e.message.get();
    }
    EXPECT_EQ(error, GetParam().error);
    EXPECT_EQ(std::string(text.str()), std::string((">" + GetParam().result).c_str()));
}

TEST(UnescapeStrings, TakeNullAsEmpty) {
    plat::DString text;
    EXPECT_THROW(loc::unescapeString(nullptr, &text), plat::Exception);
    EXPECT_STREQ(text.str(), "");
}

TEST(UnescapeStrings, MakeAnEmptyText) {
    plat::DString text;
    loc::unescapeString("\"\"", &text);
    EXPECT_STREQ(text.get(), "");
}

TEST(UnescapeStrings, TakeLongContents) {
    std::string content;
    for (int i = 0; i < 50000; ++i)
        content += R"(ab\n\101)";
    plat::DString text;
    loc::unescapeString(('"' + content + '"').c_str(), &text);
    EXPECT_EQ(std::string(text.str()).size(), 200000U);
}

} // namespace
