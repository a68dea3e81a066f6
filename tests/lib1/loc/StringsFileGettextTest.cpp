// Strings files that gettext's tools have written.

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/TempDir.h"
#include "lib1/loc/LocalesInForce.h"
#include "lib1/plat/RecordingLogger.h"
#include "loc/Localize.h"
#include "loc/StringsFile.h"
#include "loc/Translation.h"

namespace {

using loc::Localize;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

RecordingLogger recording("gettext");

// A folder in which the tools write the file of a locale.
class GettextFile : public testing::TestWithParam<const char*> {
protected:
    // The manager keeps every text, so that each file needs a locale of its own.
    GettextFile() {
        static int count = 0;
        locale = "t" + std::to_string(++count);
        path = dir / ("strings." + locale + ".po");
    }

    // Makes a tool write the file, from one with this content.
    void writeWith(const std::string& command, const std::string& content) {
        dir.write("input", content);
        const std::string line =
            "LC_ALL=C " + command + " --output-file='" + path + "' 2>'" + dir / "messages" + "'";
        // NOLINTNEXTLINE(concurrency-mt-unsafe): there is no other thread
        ASSERT_EQ(std::system(line.c_str()), 0) << TempDir::read(dir / "messages");
    }

    // What is wrong with the file, by line.
    std::vector<std::string> load() {
        const LogSetting setting("Localize:gettext:0");
        EXPECT_TRUE(loc::loadStringsFile(dir.get(), locale.c_str(), &Localize::inst()));
        std::vector<std::string> reports = recording.takeTexts();
        for (std::string& report : reports) {
            EXPECT_THAT(report, StartsWith(path + ":"));
            report.erase(0, path.size() + 1);
        }
        return reports;
    }

    std::string textOf(const char* id) const {
        const LocalesInForce inForce({locale.c_str()});
        const loc::Translation* const text = inForce.map.get(id);
        return text == nullptr ? "(none)" : text->get(true, id);
    }

    const TempDir dir;
    const std::string input = " '" + dir / "input" + "'";
    std::string locale;
    std::string path;
};

// Every kind of comment, and texts that the tools break into lines.
constexpr const char* catalogue = R"(# Translations.
msgid ""
msgstr ""
"Content-Type: text/plain; charset=UTF-8\n"
"Content-Transfer-Encoding: 8bit\n"

# A translator's note.
#. A programmer's note.
#: main.cpp:10 main.cpp:20
#, fuzzy, c-format
#| msgid "gt_previous"
msgid "gt_short"
msgstr "kurz"

msgid "gt_wide"
msgstr "Ein Text, der auf einer Zeile von achtzig Zeichen keinen Platz hat und den man umbricht."

msgid "gt_lines"
msgstr "eins\nzwei\n\ndrei\n"

msgid "gt_escapes"
msgstr "\"quoted\" \\ \a\b\f\r\t\v ' ?"

msgid "gt_umlauts"
msgstr "Größenänderung – übergroß"

msgid "gt_an_id_that_is_as_long_as_no_id_should_be_and_longer_than_a_line_of_eighty_characters"
msgstr "lang"

#~ msgid "gt_obsolete"
#~ msgstr "x"
)";

INSTANTIATE_TEST_SUITE_P(Options, GettextFile,
                         testing::Values("", "--no-wrap", "--width=20", "--escape",
                                         "--sort-output"));

TEST_P(GettextFile, HasTheTextsThatWereWritten) {
    writeWith(std::string("msgcat ") + GetParam() + input, catalogue);
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_EQ(textOf("gt_short"), "kurz");
    EXPECT_EQ(
        textOf("gt_wide"),
        "Ein Text, der auf einer Zeile von achtzig Zeichen keinen Platz hat und den man umbricht.");
    EXPECT_EQ(textOf("gt_lines"), "eins\nzwei\n\ndrei\n");
    EXPECT_EQ(textOf("gt_escapes"), "\"quoted\" \\ \a\b\f\r\t\v ' ?");
    EXPECT_EQ(textOf("gt_umlauts"), "Größenänderung – übergroß");
    EXPECT_EQ(textOf("gt_an_id_that_is_as_long_as_no_id_should_be_and_longer_than_a_line_of_eighty_"
                     "characters"),
              "lang");
    EXPECT_EQ(textOf("gt_obsolete"), "(none)");
    EXPECT_EQ(textOf("gt_previous"), "(none)");
}

TEST_F(GettextFile, IsReadAsItsTranslatorGetsIt) {
    writeWith("msginit --no-translator --locale=de_DE.UTF-8 --input=" + input.substr(1),
              "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
              "#: main.cpp:10\nmsgid \"gt_untranslated\"\nmsgstr \"\"\n");
    EXPECT_THAT(TempDir::read(path),
                HasSubstr("\"Plural-Forms: nplurals=2; plural=(n != 1);\\n\""));
    EXPECT_THAT(load(), IsEmpty());
    EXPECT_EQ(textOf("gt_untranslated"), "") << "which does not mean that it is missing";
}

TEST_F(GettextFile, IsReportedByLineWhereItIsNotOurs) {
    const std::string content = "# Translations.\n"
                                "msgid \"\"\n"
                                "msgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n"
                                "\n"
                                "#. In the menu.\n"
                                "#: main.cpp:10\n"
                                "msgctxt \"menu\"\n"
                                "msgid \"gt_open\"\n"
                                "msgstr \"offen\"\n"
                                "\n"
                                "#, c-format\n"
                                "msgid \"gt_file\"\n"
                                "msgid_plural \"gt_files\"\n"
                                "msgstr[0] \"Datei\"\n"
                                "msgstr[1] \"Dateien\"\n"
                                "\n"
                                "msgid \"gt_next\"\n"
                                "msgstr \"weiter\"\n"
                                "\n"
                                "msgid \"gt_last\"\n"
                                "msgstr \"Ende\"\n";
    writeWith("msgcat" + input, content);
    ASSERT_EQ(TempDir::read(path), content) << "this is how the tool writes it";
    EXPECT_THAT(load(),
                ElementsAre("7 Expected msgid", "13 Expected msgstr", "14 Expected msgstr",
                            "15 Expected msgstr", "16 Expected msgstr", "17 Expected msgstr"));
    EXPECT_EQ(textOf("gt_open"), "offen") << "whatever its context";
    EXPECT_EQ(textOf("gt_file"), "weiter") << "the entry is open until it has a text";
    EXPECT_EQ(textOf("gt_files"), "(none)");
    EXPECT_EQ(textOf("gt_next"), "(none)");
    EXPECT_EQ(textOf("gt_last"), "Ende");
}

// Their lines of entries begin with blanks, or nothing but comments stands between the entries.
TEST_F(GettextFile, IsReportedByLineInOtherLayouts) {
    const std::string content = "msgid \"gt_layout\"\nmsgstr \"1\\n2\"\n\nmsgid \"gt_end\"\n"
                                "msgstr \"3\"\n";
    writeWith("msgcat --indent" + input, content);
    EXPECT_THAT(load(), ElementsAre("3 Bad command or string"));
    EXPECT_EQ(textOf("gt_layout"), "1\n") << "without the line that is bad";
    EXPECT_EQ(textOf("gt_end"), "3");
    writeWith("msgcat --strict" + input, content);
    EXPECT_THAT(load(), ElementsAre("6 Bad command or string", "7 Bad command or string"));
    EXPECT_EQ(textOf("gt_layout"), "1\n2");
}

} // namespace
