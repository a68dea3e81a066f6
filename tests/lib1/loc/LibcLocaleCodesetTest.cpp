// How the system spells encodings, whatever it is: this program answers in its place.

#include "loc/LibcLocale.h"

#include <algorithm>
#include <clocale>
#include <string>
#include <vector>

#include <langinfo.h>

#include <gtest/gtest.h>

namespace {

const char* codeset = "";

// Which of the names that were asked for the system has; the others it has not.
std::vector<std::string> known;
std::vector<std::string> asked;
std::string current = "C";

} // namespace

// Seen by the library in place of the system's.
extern "C" [[gnu::visibility("default")]] char* nl_langinfo(nl_item) noexcept {
    return const_cast<char*>(codeset);
}

extern "C" [[gnu::visibility("default")]] char* setlocale(int category, const char* name) noexcept {
    if (name != nullptr && category == LC_CTYPE) {
        asked.emplace_back(name);
        if (std::find(known.begin(), known.end(), name) == known.end())
            return nullptr;
        current = name;
    }
    return current.data();
}

namespace {

struct CodesetRow {
    const char* codeset;
    int encType;
    friend void PrintTo(const CodesetRow& row, std::ostream* out) { *out << row.codeset; }
};
class Codeset : public testing::TestWithParam<CodesetRow> {};
TEST_P(Codeset, IsRecognisedInAllItsSpellings) {
    codeset = GetParam().codeset;
    known = {"qq"};
    plat::String base;
    plat::String rest;
    EXPECT_EQ(loc::getEncType("qq", &base, &rest), GetParam().encType);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Codeset,
    testing::Values(CodesetRow{"UTF-8", 1}, CodesetRow{"utf8", 1}, CodesetRow{"Utf_8", 1},
                    CodesetRow{"UTF-8 ", 0}, CodesetRow{"xUTF-8", 0}, CodesetRow{"UTF-16", 0},
                    CodesetRow{"ISO-8859-1", 2}, CodesetRow{"ISO8859-1", 2},
                    CodesetRow{"iso88591", 2}, CodesetRow{"ISO_8859-15", 2},
                    CodesetRow{"ISO-8859-13", 2}, CodesetRow{"ISO-8859-2", 0},
                    CodesetRow{"US-ASCII", 3}, CodesetRow{"ascii", 3}, CodesetRow{"x-ASCII-y", 3},
                    CodesetRow{"ISO-IR-6", 3}, CodesetRow{"ISO-IR-66", 0}, CodesetRow{"646", 3},
                    CodesetRow{"6460", 0}, CodesetRow{"ISO646-US", 3},
                    CodesetRow{"ISO_646.irv:1991", 3}, CodesetRow{"ANSI_X3.4-1968", 3},
                    CodesetRow{"xANSI_X3.4", 0}, CodesetRow{"KOI8-R", 0}, CodesetRow{"", 0}));

TEST(Codeset, OfTheSystemReplacesTheNames) {
    codeset = "ISO-8859-1";
    known = {"qq.UTF-8"};
    plat::String base;
    plat::String rest;
    EXPECT_EQ(loc::getEncType("qq.UTF-8", &base, &rest), loc::LibcLocale::latin1Enc);
}

TEST(TagOrder, IsUtf8ThenLatin1ThenAscii) {
    known = {};
    asked.clear();
    loc::LibcLocale result;
    EXPECT_FALSE(loc::findLibcLocale("qq@m", &result));
    const std::vector<std::string> expected{"qq@m",
                                            "qq.UTF-8@m",
                                            "qq.utf-8@m",
                                            "qq.UTF8@m",
                                            "qq.utf8@m",
                                            "qq.ISO-8859-1@m",
                                            "qq.ISO8859-1@m",
                                            "qq.iso88591@m",
                                            "qq.ISO-8859-15@m",
                                            "qq.ISO8859-15@m",
                                            "qq.US-ASCII@m"};
    EXPECT_EQ(asked, expected);
}

TEST(TagOrder, OfALatin1LocaleEndsWithUtf8) {
    codeset = "ISO-8859-1";
    known = {"latin"};
    asked.clear();
    loc::LibcLocale result;
    EXPECT_TRUE(loc::findLibcLocale("latin", &result));
    EXPECT_STREQ(result.name.get(), "latin");
    EXPECT_EQ(asked.size(), 5U);
}

TEST(TagOrder, OfAUtf8LocaleIsItAlone) {
    codeset = "UTF-8";
    known = {"unicode"};
    asked.clear();
    loc::LibcLocale result;
    EXPECT_TRUE(loc::findLibcLocale("unicode", &result));
    EXPECT_TRUE(loc::findLibcLocale("unicode", &result));
    EXPECT_EQ(asked, std::vector<std::string>{"unicode"});
}

struct TagTypeRow {
    const char* name;
    int encType;
    friend void PrintTo(const TagTypeRow& row, std::ostream* out) { *out << row.name; }
};
class TagType : public testing::TestWithParam<TagTypeRow> {};
TEST_P(TagType, IsTheTagsOwn) {
    codeset = "";
    known = {std::string("tt.") + GetParam().name};
    loc::LibcLocale result;
    const bool isUtf8 = GetParam().encType == loc::LibcLocale::utf8Enc;
    const auto find = isUtf8 ? loc::findUtf8Locale : loc::findLatin1OrAsciiLocale;
    EXPECT_TRUE(find("tt", nullptr, &result));
    EXPECT_EQ(result.name.get(), known[0]);
    EXPECT_EQ(result.encType, GetParam().encType);
}
INSTANTIATE_TEST_SUITE_P(Rows, TagType,
                         testing::Values(TagTypeRow{"UTF-8", 1}, TagTypeRow{"utf-8", 1},
                                         TagTypeRow{"UTF8", 1}, TagTypeRow{"utf8", 1},
                                         TagTypeRow{"ISO-8859-1", 2}, TagTypeRow{"ISO8859-1", 2},
                                         TagTypeRow{"iso88591", 2}, TagTypeRow{"ISO-8859-15", 2},
                                         TagTypeRow{"ISO8859-15", 2}, TagTypeRow{"US-ASCII", 3}));

} // namespace
