#include "loc/StringsFile.h"

#include <cerrno>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/TempDir.h"
#include "lib1/Thrown.h"
#include "lib1/loc/LocalesInForce.h"
#include "lib1/plat/RecordingLogger.h"
#include "lib1/rdr/ScriptedInStream.h"
#include "loc/Localize.h"
#include "loc/Translation.h"
#include "plat/Exception.h"
#include "rdr/StringTooLongException.h"

namespace {

using loc::Localize;
using testing::ElementsAre;
using testing::IsEmpty;
using Line = RecordingLogger::Line;
using Texts = std::map<std::string, std::string>;
using Reports = std::vector<std::string>;

RecordingLogger recording("strings");

// The manager keeps every text, so that each file needs a locale of its own.
std::string newLocale() {
    static int count = 0;
    return "t" + std::to_string(++count);
}

// The texts of a locale for the given ids; those that are missing are left out.
Texts textsOf(const std::string& locale, const std::vector<std::string>& ids) {
    const LocalesInForce inForce({locale.c_str()});
    Texts found;
    for (const std::string& id : ids) {
        if (const loc::Translation* const text = inForce.map.get(id.c_str()))
            found[id] = text->get(true, id.c_str());
    }
    return found;
}

struct Row {
    const char* name;
    std::string content;
    Texts texts = {};
    Reports reports = {};
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};
class StringsFile : public testing::TestWithParam<Row> {
protected:
    // The ids that any row defines; those that it does not list must be missing.
    const std::vector<std::string> ids{"",        "id",       "a",     "b",  "x",  "one two",
                                       "q\"uote", "\xC3\xA4", "msgid", "ab", "id2"};
};

constexpr const char* expectedId = "Expected msgid";
constexpr const char* expectedStr = "Expected msgstr";
constexpr const char* badCommand = "Bad command or string";

// A text whose NULs are a part of it.
template <std::size_t Size>
std::string withNuls(const char (&text)[Size]) {
    return {text, Size - 1};
}

std::string at(int line, const std::string& message) {
    return "file.po:" + std::to_string(line) + " " + message;
}

INSTANTIATE_TEST_SUITE_P(
    Good, StringsFile,
    testing::Values(
        Row{"Nothing", ""}, Row{"OneEmptyLine", "\n"}, Row{"EmptyLines", "\n\n\n"},
        Row{"Comments", "# one\n#\n#, fuzzy\n#~ msgid \"id\"\n"},
        Row{"OneEntry", "msgid \"id\"\nmsgstr \"text\"\n\n", {{"id", "text"}}},
        Row{"NoEmptyLineAtTheEnd", "msgid \"id\"\nmsgstr \"text\"\n", {{"id", "text"}}},
        Row{"NoLineEndAtTheEnd", "msgid \"id\"\nmsgstr \"text\"", {{"id", "text"}}},
        Row{"ReturnsBeforeLineEnds",
            "msgid \"a\"\r\nmsgstr \"1\"\r\n\r\nmsgid \"b\"\r\nmsgstr \"2\"\r\n",
            {{"a", "1"}, {"b", "2"}}},
        Row{"TwoEntries",
            "msgid \"a\"\nmsgstr \"1\"\n\n\n\nmsgid \"b\"\nmsgstr \"2\"\n",
            {{"a", "1"}, {"b", "2"}}},
        Row{"CommentsAnywhere",
            "# x\nmsgid \"id\"\n# x\n\"2\"\n#x\nmsgstr \"te\"\n#\n\"xt\"\n# x\n",
            {{"id2", "text"}}},
        Row{"CommentsSeparateNothing",
            "msgid \"a\"\nmsgstr \"1\"\n#\nmsgid \"b\"\nmsgstr \"2\"\n",
            {{"a", "1"}},
            {at(4, badCommand), at(5, badCommand)}},
        Row{"Continuations",
            "msgid \"\"\n\"one\"\n\" two\"\nmsgstr \"\"\n\"te\"\n\"xt\\n\"\n",
            {{"one two", "text\n"}}},
        Row{"ManyBlanks", "msgid    \"id\"\nmsgstr   \"text\"\n", {{"id", "text"}}},
        Row{"Escapes",
            "msgid \"q\\\"uote\"\nmsgstr \"\\x41\\102\\t\\\\\"\n",
            {{"q\"uote", "AB\t\\"}}},
        Row{"Utf8",
            "msgid \"\xC3\xA4\"\nmsgstr \"\xC3\xB6\\xc3\\xbc\"\n",
            {{"\xC3\xA4", "\xC3\xB6\xC3\xBC"}}},
        Row{"HeaderEntry",
            "msgid \"\"\nmsgstr \"\"\n\"Language: de\\n\"\n\nmsgid \"id\"\nmsgstr \"text\"\n",
            {{"id", "text"}}},
        Row{"EmptyTranslation", "msgid \"id\"\nmsgstr \"\"\n", {{"id", ""}}},
        Row{"SecondOfTheSameId",
            "msgid \"id\"\nmsgstr \"1\"\n\nmsgid \"id\"\nmsgstr \"2\"\n",
            {{"id", "2"}}},
        Row{"KeywordAsId",
            "msgid \"msgid\"\nmsgstr \"msgid \\\"x\\\"\"\n",
            {{"msgid", "msgid \"x\""}}},
        Row{"ZeroByteEndsAString",
            "msgid \"a\\000x\"\n\"b\"\nmsgstr \"1\\x00x\"\n\"2\"\n",
            {{"ab", "12"}}},
        Row{"QuotedLineBeforeTheId", "\"un\"\nmsgid \"id\"\nmsgstr \"used\"\n", {{"id", "unused"}}},
        Row{"QuotedLineOfNoEntry", "\"un\"\n\nmsgid \"id\"\nmsgstr \"used\"\n", {{"id", "used"}}}),
    [](const auto& row) { return row.param.name; });
INSTANTIATE_TEST_SUITE_P(
    Bad, StringsFile,
    testing::Values(
        Row{"NoBlank",
            "msgid\nmsgid\"id\"\nmsgid\t\"id\"\nx\n",
            {},
            {at(1, badCommand), at(2, badCommand), at(3, badCommand), at(4, badCommand)}},
        Row{"NoBlankBeforeTheText",
            "msgid \"id\"\nmsgstr\nmsgstr\"x\"\nmsgstr \"text\"\n",
            {{"id", "text"}},
            {at(2, badCommand), at(3, badCommand)}},
        Row{"OtherKeyword",
            "msgctxt \"x\"\nMSGID \"x\"\nmsgstr \"x\"\nmsgidx \"x\"\n",
            {},
            {at(1, expectedId), at(2, expectedId), at(3, expectedId), at(4, expectedId)}},
        Row{"OtherKeywordForTheText",
            "msgid \"id\"\nmsgid_plural \"ids\"\nmsgstr[0] \"x\"\nmsgid \"x\"\nmsgstr \"text\"\n",
            {{"id", "text"}},
            {at(2, expectedStr), at(3, expectedStr), at(4, expectedStr)}},
        Row{"LeadingBlank",
            " msgid \"x\"\n  # x\n \"x\"\n",
            {},
            {at(1, expectedId), at(2, expectedId), at(3, expectedId)}},
        Row{"BlanksOnly",
            " \nmsgid \"id\"\n   \nmsgstr \"text\"\n  \n",
            {{"id", "text"}},
            {at(1, expectedId), at(3, expectedStr), at(5, badCommand)}},
        Row{"ByteOrderMark",
            "\xEF\xBB\xBFmsgid \"x\"\nmsgstr \"x\"\n\nmsgid \"id\"\nmsgstr \"text\"\n",
            {{"id", "text"}},
            {at(1, expectedId), at(2, expectedId)}},
        Row{"NoEmptyLineBetween",
            "msgid \"a\"\nmsgstr \"1\"\nmsgid \"b\"\n\"2\"\nmsgstr \"x\"\n\"3\"\n\nmsgid "
            "\"id\"\nmsgstr \"text\"\n",
            {{"a", "123"}, {"id", "text"}},
            {at(3, badCommand), at(5, badCommand)}},
        Row{"EmptyLineInAnEntry",
            "msgid \"id\"\n\nmsgstr \"text\"\n",
            {{"id", "text"}},
            {at(2, expectedStr)}},
        Row{"EmptyLinesInAnEntry",
            "msgid \"id\"\n\n\n\"2\"\nmsgstr \"text\"\n",
            {{"id2", "text"}},
            {at(2, expectedStr), at(3, expectedStr)}},
        Row{"NoText", "msgid \"id\"\n", {}, {at(2, expectedStr)}},
        Row{"NoTextAndNoLineEnd", "\nmsgid \"id\"", {}, {at(3, expectedStr)}},
        Row{"NoTextAndAnEmptyLine",
            "msgid \"id\"\n\n",
            {},
            {at(2, expectedStr), at(3, expectedStr)}},
        Row{"BadId",
            "msgid \"id\nmsgstr \"x\"\n\nmsgid \"a\"\nmsgstr \"1\"\n",
            {{"a", "1"}},
            {at(1, "Missing terminator")}},
        Row{"BadIdThatGoesOn",
            "msgid \"x\\q12\"\n\"id\"\nmsgstr \"text\"\n",
            {{"id", "text"}},
            {at(1, "Invalid escape code")}},
        Row{"BadText",
            "msgid \"id\"\nmsgstr \"x\" \n\"text\"\n",
            {{"id", "text"}},
            {at(2, "Junk following string data")}},
        Row{"BadTextOnly",
            "msgid \"id\"\nmsgstr x\"text\"\n",
            {{"id", ""}},
            {at(2, "Junk preceding string data")}},
        Row{"BadContinuation",
            "msgid \"id\"\nmsgstr \"te\"\n\"x\\400\"\n\"xt\"\n",
            {{"id", "text"}},
            {at(3, "Octal escape code out of range")}},
        Row{"NoString",
            "msgid \nmsgid  \nmsgid \"a\"\nmsgstr \"\"\n",
            {},
            {at(1, "Junk following string data"), at(2, expectedStr), at(3, expectedStr)}},
        Row{"AllFaultsOfStrings",
            "\"\\\n\"\\x4\n\"\\xg0\"\n\"\\12\n\"\\9x9\"\n\"\\777\"\n\"\n\"\"x\n",
            {},
            {at(1, "Invalid escape at end"), at(2, "Invalid hex escape at end"),
             at(3, "Invalid hex escape"), at(4, "Invalid escape at end"),
             at(5, "Invalid escape code"), at(6, "Octal escape code out of range"),
             at(7, "Missing terminator"), at(8, "Junk following string data")}},
        Row{"NulsInLines",
            withNuls("\0\nmsg\0id \"x\"\n\"x\0\"\nmsgid \"id\"\0x\nmsgstr \"text\"\n"),
            {{"id", "text"}},
            {at(1, badCommand), at(2, badCommand), at(3, "Missing terminator")}}),
    [](const auto& row) { return row.param.name; });

TEST_P(StringsFile, GivesItsTextsAndReportsBadLines) {
    const LogSetting setting("Localize:strings:0");
    const std::string locale = newLocale();
    ScriptedInStream in({bytes(GetParam().content)});
    loc::readStringsFile(&in, "file.po", locale.c_str(), &Localize::inst());
    EXPECT_EQ(recording.takeTexts(), GetParam().reports);
    EXPECT_EQ(textsOf(locale, ids), GetParam().texts);
}

TEST_P(StringsFile, IsTheSameFromADisk) {
    const LogSetting setting("Localize:strings:0");
    const TempDir dir;
    const std::string locale = newLocale();
    const std::string name = "strings." + locale + ".po";
    dir.write(name, GetParam().content);
    EXPECT_TRUE(loc::loadStringsFile(dir.get(), locale.c_str(), &Localize::inst()));
    Reports reports = GetParam().reports;
    for (std::string& report : reports)
        report.replace(0, std::string("file.po").size(), dir / name);
    EXPECT_EQ(recording.takeTexts(), reports);
    EXPECT_EQ(textsOf(locale, ids), GetParam().texts);
}

TEST(StringsFiles, EndWithAMessageToo) {
    const std::string locale = newLocale();
    ScriptedInStream in({bytes("msgid \"id\"\nmsgstr \"text\""), endsMessage, bytes("rest")});
    loc::readStringsFile(&in, "file.po", locale.c_str(), &Localize::inst());
    EXPECT_EQ(textsOf(locale, {"id"}), (Texts{{"id", "text"}})) << "the last line had no end";
    ScriptedInStream ended({bytes("msgid \"b\"\nmsgstr \"text\"\n"), endsMessage, bytes("rest")});
    loc::readStringsFile(&ended, "file.po", locale.c_str(), &Localize::inst());
    EXPECT_EQ(textsOf(locale, {"b"}), (Texts{{"b", "text"}}));
}

TEST(StringsFiles, PassAReadErrorOnAndKeepWhatWasRead) {
    const std::string locale = newLocale();
    ScriptedInStream in({bytes("msgid \"a\"\nmsgstr \"1\"\n\nmsgid \"b\"\nmsgstr \"2\"\n"), fails});
    EXPECT_EQ(
        thrown([&] { loc::readStringsFile(&in, "file.po", locale.c_str(), &Localize::inst()); }),
        ": broken");
    EXPECT_EQ(textsOf(locale, {"a", "b"}), (Texts{{"a", "1"}}));
}

TEST(StringsFiles, RepairBadUtf8) {
    const LogSetting setting("Localize:strings:0");
    const std::string locale = newLocale();
    ScriptedInStream in({bytes("msgid \"id\"\nmsgstr \"a\\xff\"\n\"b\"\n")});
    loc::readStringsFile(&in, "file.po", locale.c_str(), &Localize::inst());
    EXPECT_THAT(recording.takeTexts(),
                ElementsAre("Bad UTF-8 in id from file.po for '" + locale + "' locale"));
    EXPECT_EQ(textsOf(locale, {"id"}).size(), 1U);
    EXPECT_NE(textsOf(locale, {"id"})["id"], "a\xFF"
                                             "b");
}

// A log destination that throws when it is told of bad UTF-8 keeps that entry out, and only that
// one.
TEST(StringsFiles, StartAfreshAfterAnEntryThatCouldNotBeStored) {
    const LogSetting setting("Localize:strings:0");
    const std::string locale = newLocale();
    ScriptedInStream in(
        {bytes("msgid \"a\"\nmsgstr \"bad\xff\"\n\nmsgid \"b\"\nmsgstr \"fine\"\n")});
    bool isFull = true;
    recording.onWrite = [&isFull] {
        if (std::exchange(isFull, false))
            throw plat::Exception("the log is full");
    };
    loc::readStringsFile(&in, "file.po", locale.c_str(), &Localize::inst());
    recording.onWrite = nullptr;
    EXPECT_THAT(recording.takeTexts(),
                ElementsAre(testing::StartsWith("Bad UTF-8 in a"), at(3, "the log is full")));
    EXPECT_EQ(textsOf(locale, {"a", "b", "ab"}), (Texts{{"b", "fine"}}));
}

TEST(StringsFiles, TakeManyLines) {
    const std::string locale = newLocale();
    std::string content = "msgid \"id\"\nmsgstr \"\"\n";
    for (int i = 0; i < 100000; ++i)
        content += "\"x\"\n";
    ScriptedInStream in({bytes(content)});
    loc::readStringsFile(&in, "file.po", locale.c_str(), &Localize::inst());
    EXPECT_EQ(textsOf(locale, {"id"})["id"], std::string(100000, 'x'));
}

TEST(StringsFiles, EndAtALineThatIsTooLong) {
    const LogSetting setting("Localize:strings:30");
    const TempDir dir;
    const std::string locale = newLocale();
    const std::string entry = "msgid \"a\"\nmsgstr \"1\"\n\n";
    const std::string longest = "\"" + std::string(262142, 'x') + "\"\n";
    const std::string name = "strings." + locale + ".po";
    const std::string path = dir.write(name, entry + "msgid \"b\"\nmsgstr \"\"\n" + longest + "\n" +
                                                 "#" + longest + "\nmsgid \"x\"\nmsgstr \"3\"\n");
    EXPECT_FALSE(loc::loadStringsFile(dir.get(), locale.c_str(), &Localize::inst()));
    EXPECT_THAT(recording.take(), ElementsAre(Line{0, "Localize",
                                                   "Error loading strings from " + path +
                                                       " [String exceeds maximum length]"}));
    EXPECT_EQ(textsOf(locale, {"a", "b", "x"}),
              (Texts{{"a", "1"}, {"b", std::string(262142, 'x')}}));
}

TEST(LoadStringsFile, TellsThatItLoaded) {
    const LogSetting setting("Localize:strings:30");
    const TempDir dir;
    const std::string path = dir.write("strings.tt_TT.po", "msgid \"id\"\nmsgstr \"text\"\n");
    EXPECT_TRUE(loc::loadStringsFile(dir.get(), "tt_TT", &Localize::inst()));
    EXPECT_THAT(recording.take(), ElementsAre(Line{30, "Localize", "Loaded strings from " + path}));
    EXPECT_EQ(textsOf("tt_TT", {"id"}), (Texts{{"id", "text"}}));
}

TEST(LoadStringsFile, IsSilentWhereThereIsNone) {
    const LogSetting setting("Localize:strings:110");
    const TempDir dir;
    dir.write("strings.po", "x");
    EXPECT_FALSE(loc::loadStringsFile(dir.get(), "de_DE", &Localize::inst()));
    EXPECT_FALSE(loc::loadStringsFile((dir / "none").c_str(), "de", &Localize::inst()));
    EXPECT_FALSE(loc::loadStringsFile((dir / "strings.po").c_str(), "de", &Localize::inst()));
    EXPECT_THAT(recording.take(), IsEmpty());
}

TEST(LoadStringsFile, LogsWhatItCannotRead) {
    const LogSetting setting("Localize:strings:30");
    const TempDir dir;
    const std::string path = dir / "strings.de.po";
    std::filesystem::create_directory(path);
    EXPECT_FALSE(loc::loadStringsFile(dir.get(), "de", &Localize::inst()));
    EXPECT_THAT(recording.take(),
                ElementsAre(Line{
                    0, "Localize",
                    "Error loading strings from " + path + " [" +
                        systemFailure("reading from file failed", EISDIR, "").substr(2) + "]"}));
}

TEST(LoadStringsFile, PassesOtherExceptionsOn) {
    const LogSetting setting("Localize:strings:0");
    const TempDir dir;
    dir.write("strings.tt_OE.po", "msgid \"id\"\nmsgstr \"text\"\n\nbad\n");
    recording.onWrite = [] { throw 1; };
    EXPECT_THROW(loc::loadStringsFile(dir.get(), "tt_OE", &Localize::inst()), int);
    recording.onWrite = nullptr;
    EXPECT_EQ(recording.take().size(), 1U);
    EXPECT_EQ(textsOf("tt_OE", {"id"}), (Texts{{"id", "text"}}));
}

TEST(LoadStringsFile, LogsWhatItCannotOpen) {
    const LogSetting setting("Localize:strings:0");
    const TempDir dir;
    // A socket exists and cannot be opened, whoever asks.
    const std::string path = dir / "strings.de.po";
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_FALSE(loc::loadStringsFile(dir.get(), "de", &Localize::inst()));
    EXPECT_THAT(recording.takeTexts(),
                ElementsAre("Error loading strings from " + path + " [" +
                            systemFailure("fileOpen(" + path + ")", ENXIO, "").substr(2) + "]"));
    ::close(descriptor);
}

} // namespace
