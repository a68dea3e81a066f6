#include "loc/Localize.h"

#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <malloc.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/loc/LocalesInForce.h"
#include "lib1/plat/RecordingLogger.h"
#include "loc/LString.h"
#include "loc/TransMap.h"

namespace {

using loc::Localize;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Line = RecordingLogger::Line;

RecordingLogger recorder("recorder");

TEST(LocalizeInst, IsOne) {
    EXPECT_EQ(&Localize::inst(), &Localize::inst());
}

// Runs first, as the process has no locales yet.
TEST(Localize, BeforeInitEveryTextIsMissing) {
    const LogSetting setting("Localize:recorder:0");
    EXPECT_EQ(Localize::inst().getLocales(), "");
    EXPECT_STREQ(loc::localize("plat_usage_label", nullptr, 0, false), "plat_usage_label");
    EXPECT_THAT(recorder.takeTexts(), ElementsAre("Missing translation for \"plat_usage_label\""));
}

TEST(Localize, MissingTextIsReportedAndItsIdReturned) {
    const LogSetting setting("Localize:recorder:0");
    static const char id[] = "own_missing";
    EXPECT_EQ(loc::localize(id, "some/File.cpp", 12, false), id);
    EXPECT_EQ(loc::localize(id, nullptr, 12, true), id);
    EXPECT_EQ(loc::localizePlural(id, 1, 0, 9, "some/File.cpp", 12), id);
    EXPECT_EQ(loc::localizePlural(id, 1, 0, 9, nullptr, 12), id);
    EXPECT_THAT(
        recorder.take(),
        ElementsAre(
            Line{0, "Localize", "Missing translation for \"own_missing\" (some/File.cpp:12)"},
            Line{0, "Localize", "Missing translation for \"own_missing\""},
            Line{0, "Localize",
                 "Missing plural translation for \"own_missing\" (some/File.cpp:12)"},
            Line{0, "Localize", "Missing plural translation for \"own_missing\""}));
}

TEST(Localize, NullIdIsMissing) {
    EXPECT_STREQ(loc::localize(nullptr, nullptr, 0, false), "");
    EXPECT_STREQ(loc::localizePlural(nullptr, 1, 0, 9, nullptr, 0), "");
}

TEST(LocalizeDeathTest, MissingTextAbortsIfErrorsAreFatal) {
    EXPECT_EXIT(
        {
            loc::abortOnError = true;
            loc::localize("own_missing", "File.cpp", 7, false);
        },
        testing::KilledBySignal(SIGABRT),
        "^Missing translation for \"own_missing\" \\(File.cpp:7\\)\nAborting\n$");
    EXPECT_EXIT(
        {
            loc::abortOnError = true;
            loc::localizePlural("own_missing", 1, 0, 9, nullptr, 7);
        },
        testing::KilledBySignal(SIGABRT),
        "^Missing plural translation for \"own_missing\"\nAborting\n$");
}

TEST(Localize, MacrosNameThePlaceThatAsks) {
    const LogSetting setting("Localize:recorder:0");
    LUMO_LOCALIZE("own_missing");
    LUMO_LOCALIZE_RAW("own_missing");
    LUMO_LOCALIZE_PLURAL("own_missing", 1, 0, 9);
    const std::vector<std::string> lines = recorder.takeTexts();
    ASSERT_EQ(lines.size(), 3U);
    for (const std::string& line : lines)
        EXPECT_THAT(line,
                    testing::ContainsRegex(
                        "translation for \"own_missing\" \\(.*LocalizeTest\\.cpp:[0-9]+\\)$"));
}

TEST(Localize, TextsAreTheThreadsOwn) {
    const LocalesInForce german{"de"};
    {
        const LocalesInForce french{"fr"};
        EXPECT_STREQ(LUMO_LOCALIZE("plat_usage_label"), "Syntaxe :");
    }
    EXPECT_STREQ(LUMO_LOCALIZE("plat_usage_label"), "Nutzung:");
    std::thread([] { EXPECT_STREQ(LUMO_LOCALIZE("plat_usage_label"), "plat_usage_label"); }).join();
}

TEST(Localize, PluralIsARawFormat) {
    Localize::inst().addString("p1", "own_mouse_sing", "%D mouse, 100 %%", "a file");
    Localize::inst().addString("p1", "own_mouse_zeromany", "%D mice, 100 %%", "a file");
    const LocalesInForce locales{"p1"};
    EXPECT_STREQ(LUMO_LOCALIZE_PLURAL("own_mouse", 1, 0, 9), "%D mouse, 100 %%");
    EXPECT_STREQ(loc::LString()
                     .xprintf(LUMO_LOCALIZE_PLURAL("own_mouse", 3, 0, 9), loc::PrintfArgs(3))
                     .get(),
                 "3 mice, 100 %");
}

TEST(LocalizeDeathTest, OneIdIsNotReadBothWays) {
    Localize::inst().addString("p2", "own_both", "text", "a file");
    const LocalesInForce locales{"p2"};
    LUMO_LOCALIZE("own_both");
    EXPECT_EXIT(LUMO_LOCALIZE_RAW("own_both"), testing::KilledBySignal(SIGABRT),
                "Can't use same string as both raw and formatted - own_both");
}

// What a text is read for belongs to the text of one locale.
TEST(Localize, OneIdMayBeReadBothWaysInTwoLanguages) {
    Localize::inst().addString("p6", "own_ways", "sixth %%", "a file");
    Localize::inst().addString("p7", "own_ways", "seventh %%", "a file");
    const LocalesInForce sixth{"p6"};
    EXPECT_STREQ(LUMO_LOCALIZE("own_ways"), "sixth %");
    const LocalesInForce seventh{"p7"};
    EXPECT_STREQ(LUMO_LOCALIZE_RAW("own_ways"), "seventh %%");
}

// As much memory as the program has allocated; 0 where a sanitizer allocates in its place.
std::size_t allocated() {
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

TEST(Localize, StaticIdsAreNotCopied) {
    static char id[1 << 20] = "";
    std::memset(id, 'x', sizeof id - 1);
    const std::size_t before = allocated();
    Localize::inst().addBuiltInString("p8", id, "text");
    const LocalesInForce locales{"p8"};
    EXPECT_LT(allocated(), before + sizeof id);
    EXPECT_STREQ(LUMO_LOCALIZE(static_cast<const char*>(id)), "text");
}

TEST(Localize, NullMapIsTheCurrentOne) {
    Localize::inst().addString("p3", "own_current", "text", "a file");
    const loc::TransMap map;
    Localize::inst().setTransMapLocales(LocalesInForce::strings({"p3"}), nullptr);
    EXPECT_NE(map.get("own_current"), nullptr);
    Localize::inst().addString("p3", "own_later", "text", "a file");
    EXPECT_EQ(map.get("own_later"), nullptr);
    Localize::inst().updateTransMap(nullptr);
    EXPECT_NE(map.get("own_later"), nullptr);
}

TEST(Localize, MapIsClearedBeforeItIsFilled) {
    Localize::inst().addString("p4", "own_first", "text", "a file");
    LocalesInForce locales{"p4"};
    Localize::inst().setTransMapLocales(LocalesInForce::strings({"p5"}), &locales.map);
    EXPECT_EQ(locales.map.get("own_first"), nullptr);
}

TEST(Localize, FillingAMapIsLogged) {
    const LogSetting setting("Localize:recorder:100");
    {
        loc::TransMap map;
        Localize::inst().updateTransMap(&map);
    }
    Localize::inst().updateTransMap(loc::TransMap::getProcessInst());
    EXPECT_THAT(recorder.take(),
                ElementsAre(Line{100, "Localize", "Updating thread TransMap with locales:"},
                            Line{100, "Localize", "Updating process TransMap with locales:"}));
}

TEST(Localize, LocalesOfAMapAreLoggedInOrder) {
    loc::TransMap map;
    const LogSetting setting("Localize:recorder:100");
    Localize::inst().setTransMapLocales(LocalesInForce::strings({"en_US", "en"}), &map);
    EXPECT_THAT(recorder.takeTexts(),
                ElementsAre("Updating thread TransMap with locales:", " en_US", " en"));
}

TEST(AddString, CopiesIdAndText) {
    std::string id = "own_copied";
    std::string text = "copied";
    Localize::inst().addString("s1", id.c_str(), text.c_str(), "a file");
    id[0] = text[0] = 'X';
    const LocalesInForce locales{"s1"};
    EXPECT_STREQ(LUMO_LOCALIZE("own_copied"), "copied");
}

TEST(AddString, LaterTextReplacesTheEarlier) {
    Localize::inst().addString("s2", "own_text", "first", "a file");
    Localize::inst().addString("s2", "own_text", "second", "another file");
    const LocalesInForce locales{"s2"};
    EXPECT_STREQ(LUMO_LOCALIZE("own_text"), "second");
}

// Each order has neighbours that are added one behind the other, and others that are not.
TEST(AddString, KeepsTextsOfWhateverOrder) {
    const std::vector<std::vector<const char*>> orders = {
        {"own_a", "own_b", "own_c", "own_d"}, {"own_d", "own_c", "own_b", "own_a"},
        {"own_b", "own_d", "own_a", "own_c"}, {"own_a", "own_c", "own_b", "own_d"},
        {"own_a", "own_d", "own_b", "own_c"}, {"own_c", "own_d", "own_a", "own_b"}};
    for (std::size_t i = 0; i < orders.size(); ++i) {
        const std::string locale = "s9" + std::to_string(i);
        for (const std::string text : {"first ", "second "}) {
            for (const char* id : orders[i])
                Localize::inst().addString(locale.c_str(), id, (text + id).c_str(), "a file");
            const LocalesInForce locales{locale.c_str()};
            for (const char* id : orders[i])
                EXPECT_EQ(loc::localize(id, nullptr, 0, false), text + id) << i;
        }
    }
}

TEST(AddString, KeepsTextsOfLocalesThatTakeTurns) {
    for (const char* id : {"own_a", "own_c", "own_b", "own_a"}) {
        Localize::inst().addString("s7", id, "one", "a file");
        Localize::inst().addString("s8", id, "other", "a file");
    }
    for (const auto& [locale, text] : {std::pair{"s7", "one"}, std::pair{"s8", "other"}}) {
        const LocalesInForce locales{locale};
        for (const char* id : {"own_a", "own_b", "own_c"})
            EXPECT_STREQ(loc::localize(id, nullptr, 0, false), text);
    }
}

TEST(AddString, ReplacesABuiltInText) {
    static const char text[] = "built in";
    Localize::inst().addBuiltInString("s3", "own_text", text);
    {
        const LocalesInForce locales{"s3"};
        EXPECT_EQ(LUMO_LOCALIZE("own_text"), text); // the very text: nothing is copied
    }
    Localize::inst().addString("s3", "own_text", "from a file", "a file");
    const LocalesInForce locales{"s3"};
    EXPECT_STREQ(LUMO_LOCALIZE("own_text"), "from a file");
}

TEST(AddString, EmptyTextIsAText) {
    Localize::inst().addString("s4", "own_empty", "", "a file");
    const LocalesInForce locales{"s4"};
    EXPECT_STREQ(LUMO_LOCALIZE("own_empty"), "");
}

TEST(AddString, BadUtf8IsLoggedAndRepaired) {
    const LogSetting setting("Localize:recorder:0");
    Localize::inst().addString("s5", "own_bad", "a\xFFz", "dir/strings.s5.po");
    EXPECT_THAT(recorder.take(),
                ElementsAre(Line{0, "Localize",
                                 "Bad UTF-8 in own_bad from dir/strings.s5.po for 's5' locale"}));
    const LocalesInForce locales{"s5"};
    EXPECT_STREQ(LUMO_LOCALIZE("own_bad"), "a\xEF\xBF\xBDz");
}

TEST(AddBuiltInStringDeathTest, BadUtf8IsFatal) {
    EXPECT_EXIT(Localize::inst().addBuiltInString("b1", "own_bad", "\xFF"),
                testing::KilledBySignal(SIGABRT),
                "Assertion 'isValidUtf8\\(str\\)' failed at .*Localize.cpp.*: "
                "Bad UTF-8 in own_bad");
    EXPECT_EXIT(Localize::inst().addBuiltInString("b1", "own_sign", "\xEF\xBF\xA0"),
                testing::KilledBySignal(SIGABRT), "Bad UTF-8 in own_sign")
        << "full-width signs are not taken";
}

// A text is looked up again and again by the same literal; each change shows at once.
TEST(LocalizeAgain, SeesTheMapOfTheMoment) {
    const auto label = [] { return std::string(LUMO_LOCALIZE("plat_usage_label")); };
    for (int i = 0; i < 3; ++i) {
        const LocalesInForce german{"de"};
        EXPECT_EQ(label(), "Nutzung:");
        EXPECT_EQ(label(), "Nutzung:");
        {
            const LocalesInForce french{"fr"};
            EXPECT_EQ(label(), "Syntaxe :");
        }
        EXPECT_EQ(label(), "Nutzung:");
        {
            const loc::TransMap empty; // perhaps where the last one was
            EXPECT_EQ(label(), "plat_usage_label");
        }
    }
    EXPECT_EQ(label(), "plat_usage_label");
}

TEST(LocalizeAgain, SeesReplacedTexts) {
    const LocalesInForce locales{"g1"};
    Localize::inst().addString("g1", "own_again", "first", "a file");
    Localize::inst().updateTransMap(nullptr);
    const auto text = [] { return std::string(LUMO_LOCALIZE("own_again")); };
    EXPECT_EQ(text(), "first");
    EXPECT_EQ(text(), "first");
    Localize::inst().addString("g1", "own_again", "second", "a file");
    EXPECT_EQ(text(), "second");
}

TEST(LocalizeAgain, MissingTextIsReportedEachTime) {
    const LogSetting setting("Localize:recorder:0");
    for (int i = 0; i < 2; ++i)
        loc::localize("own_missing", nullptr, 0, false);
    EXPECT_EQ(recorder.take().size(), 2U);
}

TEST(LocalizeAgain, PluralDependsOnCountAndRange) {
    const LocalesInForce french{"fr"};
    for (int i = 0; i < 2; ++i) {
        const auto text = [](int count, int min, int max) {
            return std::string(
                loc::localizePlural("loc_bytesize_unit", count, min, max, nullptr, 0));
        };
        EXPECT_EQ(text(0, 0, 9), "%D octet");
        EXPECT_EQ(text(1, 0, 9), "%D octet");
        EXPECT_EQ(text(2, 0, 9), "%D octets");
        EXPECT_EQ(text(-1, -1, 9), "%D octets");
        EXPECT_EQ(text(1, -1, 9), "%D octet");
    }
    const LocalesInForce german{"de"};
    for (int i = 0; i < 2; ++i) {
        EXPECT_STREQ(loc::localizePlural("loc_period_day", 3, 2, 9, nullptr, 0), "%D Tage");
        EXPECT_STREQ(loc::localizePlural("loc_period_day", 3, 0, 9, nullptr, 0), "loc_period_day");
    }
}

TEST(LocalizeAgain, TellsIdsApartByTheirBytes) {
    Localize::inst().addString("g3", "own_byte_a", "text of a", "a file");
    Localize::inst().addString("g3", "own_byte_b", "text of b", "a file");
    Localize::inst().addString("g3", "own_byte_a_sing", "form of a", "a file");
    Localize::inst().addString("g3", "own_byte_b_sing", "form of b", "a file");
    const LocalesInForce locales{"g3"};
    char id[] = "own_byte_?";
    for (int i = 0; i < 3; ++i) {
        id[9] = 'a';
        EXPECT_STREQ(LUMO_LOCALIZE(id), "text of a");
        EXPECT_STREQ(LUMO_LOCALIZE_PLURAL(id, 1, 1, 1), "form of a");
        id[9] = 'b';
        EXPECT_STREQ(LUMO_LOCALIZE(id), "text of b");
        EXPECT_STREQ(LUMO_LOCALIZE_PLURAL(id, 1, 1, 1), "form of b");
    }
}

// The report of a bad text is written while the text is being finished.
TEST(LocalizeAgain, ForgetsATextThatWasReadWhileItWasFinished) {
    Localize::inst().addString("g4", "own_unfinished", "%Q", "a file");
    const LocalesInForce locales{"g4"};
    const LogSetting setting("Localize:recorder:0");
    char sameId[] = "own_unfinished"; // elsewhere than the literal below
    std::string unfinished;
    recorder.onWrite = [&] { unfinished = LUMO_LOCALIZE(sameId); };
    const char* const finished = LUMO_LOCALIZE("own_unfinished");
    recorder.onWrite = nullptr;
    EXPECT_THAT(recorder.takeTexts(), ElementsAre("Bad loc string for args - %Q"));
    EXPECT_EQ(unfinished, "%Q");
    EXPECT_STREQ(finished, "%%Q");
    EXPECT_EQ(LUMO_LOCALIZE(sameId), finished);
}

// The locales of a map are logged while it is being filled.
TEST(LocalizeAgain, ForgetsAPluralThatWasFoundInHalfAMap) {
    Localize::inst().addString("fr_G5", "own_half_zerosing", "first", "a file");
    Localize::inst().addString("g6", "own_half_sing", "second", "a file");
    Localize::inst().addString("g6", "own_half_zeromany", "second", "a file");
    Localize::inst().addString("g7", "own_half_many", "third", "a file");
    const auto text = [] { return std::string(LUMO_LOCALIZE_PLURAL("own_half", 1, 0, 9)); };
    const LogSetting setting("Localize:recorder:100");
    std::vector<std::string> seen;
    bool isAsking = false; // a missing text is a line of its own
    recorder.onWrite = [&] {
        if (!std::exchange(isAsking, true)) {
            seen.push_back(text());
            isAsking = false;
        }
    };
    const LocalesInForce locales{"fr_G5", "g6", "g7"};
    recorder.onWrite = nullptr;
    recorder.take();
    // At "Updating ...", fr_G5, fr, g6, g7, en_US and en, each before its texts are there.
    EXPECT_THAT(seen, ElementsAre("own_half", "own_half", "own_half", "own_half", "second", "first",
                                  "first"));
    EXPECT_EQ(text(), "first");
}

TEST(LocalizeAgainDeathTest, ReadingTheOtherWayIsStillABug) {
    Localize::inst().addString("g2", "own_way", "text", "a file");
    const LocalesInForce locales{"g2"};
    LUMO_LOCALIZE_RAW("own_way");
    LUMO_LOCALIZE_RAW("own_way");
    EXPECT_EXIT(LUMO_LOCALIZE("own_way"), testing::KilledBySignal(SIGABRT),
                "Can't use same string as both raw and formatted - own_way");
}

// A destination that localises takes the lock again, on the thread that has it.
TEST(Localize, DestinationMayLocalise) {
    const LogSetting setting("Localize:recorder:100");
    std::string text;
    recorder.onWrite = [&text] {
        if (text.empty()) {
            text = "asked";
            text = LUMO_LOCALIZE("plat_usage_label");
        }
    };
    const LocalesInForce locales{"en"};
    recorder.onWrite = nullptr;
    recorder.take();
    EXPECT_EQ(text, "plat_usage_label"); // the map was being filled
}

TEST(Localize, ThreadsLookUpWhileOthersFillMaps) {
    std::atomic<bool> isDone = false;
    std::thread looking([&isDone] {
        while (!isDone) {
            const LocalesInForce french{"fr"};
            EXPECT_STREQ(LUMO_LOCALIZE("plat_usage_label"), "Syntaxe :");
        }
    });
    for (int i = 0; i < 200; ++i) {
        const LocalesInForce german{"de"};
        EXPECT_STREQ(LUMO_LOCALIZE("plat_usage_label"), "Nutzung:");
    }
    isDone = true;
    looking.join();
}

} // namespace
