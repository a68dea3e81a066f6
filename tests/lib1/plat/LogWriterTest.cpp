#include "plat/LogWriter.h"

#include <bit>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/loc/LocalesInForce.h"
#include "lib1/plat/ParameterListener.h"
#include "lib1/plat/RecordingLogger.h"
#include "plat/Configuration.h"
#include "plat/StringParameter.h"

namespace {

using plat::LogWriter;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Line = RecordingLogger::Line;

RecordingLogger recorder("recorder");
RecordingLogger second("Second");
LogWriter writer("LogWriterTest");
LogWriter other("OtherWriter");
LogWriter blankName(" b");
LogWriter displayUpper("DisplayStreamImpl");
LogWriter displayLower("displaystreamimpl");

struct LogWriterTest : testing::Test {
    LogWriterTest() { silence(); }
    ~LogWriterTest() override { silence(); }

    static void silence() {
        LogWriter::applyLogSetting("");
        recorder.take();
        second.take();
    }

    // What an element prints on standard error.
    static std::string complaints(const char* element) {
        testing::internal::CaptureStderr();
        LogWriter::setLogParamElement(element);
        return testing::internal::GetCapturedStderr();
    }

    static std::string listed(int width) {
        char* text = nullptr;
        std::size_t size = 0;
        std::FILE* const stream = open_memstream(&text, &size);
        LogWriter::listLogWriters(width, stream);
        std::fclose(stream);
        const std::unique_ptr<char, void (*)(void*)> owned(text, std::free);
        return {text, size};
    }
};

// The writer's own doing, whatever the level: the test that callers do first is not repeated.
[[gnu::format(printf, 2, 3)]] void vprf(int level, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    writer.vprf(level, fmt, args);
    va_end(args);
}

TEST_F(LogWriterTest, NewWriterIsSilent) {
    static const LogWriter fresh("Fresh"); // static, as all here: writers are listed for good
    EXPECT_EQ(fresh.getLevel(), 0);
    EXPECT_EQ(fresh.getLogger(), nullptr);
    EXPECT_STREQ(fresh.getName(), "Fresh");
    fresh.error("nothing hears this");
}

TEST_F(LogWriterTest, KeepsTheVeryNameItWasGiven) {
    static const char name[] = "NotCopied";
    static const LogWriter named(name);
    EXPECT_EQ(named.getName(), name);
}

TEST_F(LogWriterTest, ZeroBytesAreASilentWriter) {
    alignas(LogWriter) static unsigned char bytes[sizeof(LogWriter)] = {};
    const auto* const early = reinterpret_cast<const LogWriter*>(bytes);
    EXPECT_FALSE(early->isEnabled(LogWriter::errorLevel));
    early->error("%d", 1);
}

TEST_F(LogWriterTest, WriterMadeAfterTheSettingStaysSilentUntilTheNext) {
    LogWriter::applyLogSetting("*:recorder:30");
    static const LogWriter late("Late");
    late.error("unheard");
    EXPECT_THAT(recorder.take(), IsEmpty());
    LogWriter::applyLogSetting("*:recorder:30");
    late.error("heard");
    EXPECT_THAT(recorder.take(), ElementsAre(Line{0, "Late", "heard"}));
}

struct LevelRow {
    const char* level;
    int messages; // how many of error, info, debug, debugplus pass
};

class WriterLevel : public LogWriterTest, public testing::WithParamInterface<LevelRow> {};

TEST_P(WriterLevel, LetsThroughMessagesUpToIt) {
    LogWriter::setLogParamElement(
        (std::string("LogWriterTest:recorder:") + GetParam().level).c_str());
    writer.error("e%d", 1);
    writer.info("i%d", 2);
    writer.debug("d%d", 3);
    writer.debugplus("p%d", 4);
    std::vector<Line> expected{{0, "LogWriterTest", "e1"},
                               {30, "LogWriterTest", "i2"},
                               {100, "LogWriterTest", "d3"},
                               {110, "LogWriterTest", "p4"}};
    expected.resize(std::size_t(GetParam().messages));
    EXPECT_EQ(recorder.take(), expected);
}
INSTANTIATE_TEST_SUITE_P(Boundaries, WriterLevel,
                         testing::Values(LevelRow{"0", 1}, LevelRow{"29", 1}, LevelRow{"30", 2},
                                         LevelRow{"31", 2}, LevelRow{"99", 2}, LevelRow{"100", 3},
                                         LevelRow{"109", 3}, LevelRow{"110", 4},
                                         LevelRow{"2147483647", 4}),
                         [](const auto& row) { return std::string("Level") + row.param.level; });

TEST_F(LogWriterTest, DisabledMessageIsNotFormatted) {
    LogWriter::setLogParamElement("LogWriterTest:recorder:30");
    const auto* const noText = std::bit_cast<const char*>(std::uintptr_t(1));
    writer.debug("%s", noText);
    LogWriter::setLogParamElement("LogWriterTest::110");
    writer.error("%s", noText);
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_F(LogWriterTest, VprfWritesAnyLevelWithoutAsking) {
    LogWriter::setLogParamElement("LogWriterTest:recorder:0");
    vprf(5000, "%s", "loud");
    vprf(-7, "%s", "below");
    EXPECT_THAT(recorder.take(), ElementsAre(Line{5000, "LogWriterTest", "loud"},
                                             Line{-7, "LogWriterTest", "below"}));
}

TEST_F(LogWriterTest, ExceptionOfTheDestinationPassesOn) {
    LogWriter::setLogParamElement("LogWriterTest:recorder:0");
    recorder.onWrite = [] { throw 7; };
    EXPECT_THROW(writer.error("plain"), int);
    EXPECT_THROW(writer.error("to be escaped\n"), int); // the copy is freed: leak checkers watch
    recorder.onWrite = nullptr;
}

TEST_F(LogWriterTest, EmptySettingSilencesEveryWriter) {
    LogWriter::applyLogSetting("*:recorder:110");
    LogWriter::applyLogSetting("");
    EXPECT_EQ(writer.getLevel(), 0);
    EXPECT_EQ(writer.getLogger(), nullptr);
    EXPECT_EQ(other.getLogger(), nullptr);
}

TEST_F(LogWriterTest, NullSettingSilencesEveryWriter) {
    LogWriter::applyLogSetting("*:recorder:110");
    LogWriter::applyLogSetting(nullptr);
    EXPECT_EQ(writer.getLogger(), nullptr);
}

TEST_F(LogWriterTest, SettingForgetsTheOneBefore) {
    LogWriter::applyLogSetting("*:recorder:110");
    LogWriter::applyLogSetting("OtherWriter:second:30");
    EXPECT_EQ(writer.getLogger(), nullptr);
    EXPECT_EQ(writer.getLevel(), 0);
    EXPECT_EQ(other.getLogger(), &second);
    EXPECT_EQ(other.getLevel(), 30);
}

TEST_F(LogWriterTest, LaterElementsOverrideEarlierOnes) {
    LogWriter::applyLogSetting("*:recorder:0,OtherWriter:second:100");
    EXPECT_EQ(writer.getLogger(), &recorder);
    EXPECT_EQ(writer.getLevel(), 0);
    EXPECT_EQ(other.getLogger(), &second);
    EXPECT_EQ(other.getLevel(), 100);
    LogWriter::applyLogSetting("OtherWriter:second:100,*:recorder:0");
    EXPECT_EQ(other.getLogger(), &recorder);
    EXPECT_EQ(other.getLevel(), 0);
}

TEST_F(LogWriterTest, EmptyPiecesAreSkippedInSilence) {
    testing::internal::CaptureStderr();
    LogWriter::applyLogSetting(",,*:recorder:30,,");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(writer.getLevel(), 30);
}

TEST_F(LogWriterTest, RestOfTheSettingIsAppliedAfterABadElement) {
    testing::internal::CaptureStderr();
    LogWriter::applyLogSetting("bad,*:recorder:30,worse:,OtherWriter:second:5");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Failed to parse log param element: 'bad'\n"
              "Failed to parse log param element: 'worse:'\n");
    EXPECT_EQ(writer.getLevel(), 30);
    EXPECT_EQ(other.getLevel(), 5);
}

TEST_F(LogWriterTest, NothingInASettingIsTrimmed) {
    LogWriter::applyLogSetting("LogWriterTest:recorder:30, b:recorder:100");
    EXPECT_EQ(blankName.getLevel(), 100);
    testing::internal::CaptureStderr();
    LogWriter::applyLogSetting(" LogWriterTest:recorder:30,LogWriterTest: recorder:5");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "No logger found: ' recorder'\n");
    EXPECT_EQ(writer.getLevel(), 5);
    EXPECT_EQ(writer.getLogger(), nullptr);
}

TEST_F(LogWriterTest, NamesAreMatchedWithoutRegardToCase) {
    LogWriter::setLogParamElement("Display*:RECORDER:100");
    EXPECT_EQ(displayUpper.getLevel(), 100);
    EXPECT_EQ(displayLower.getLevel(), 100);
    EXPECT_EQ(displayUpper.getLogger(), &recorder);
    EXPECT_EQ(writer.getLevel(), 0);
}

TEST_F(LogWriterTest, PatternMatchesWholeNames) {
    LogWriter::setLogParamElement("Display:recorder:100");
    LogWriter::setLogParamElement(":recorder:100");
    LogWriter::setLogParamElement("?therWriter:recorder:100");
    EXPECT_EQ(displayUpper.getLevel(), 0);
    EXPECT_EQ(other.getLevel(), 0);
    LogWriter::setLogParamElement("*stream*:recorder:100");
    EXPECT_EQ(displayUpper.getLevel(), 100);
    EXPECT_EQ(writer.getLevel(), 0);
}

TEST_F(LogWriterTest, EmptyDestinationSilencesAndSetsTheLevel) {
    LogWriter::setLogParamElement("*:recorder:30");
    EXPECT_EQ(complaints("*::7"), "");
    EXPECT_EQ(writer.getLevel(), 7);
    EXPECT_EQ(writer.getLogger(), nullptr);
}

TEST_F(LogWriterTest, UnknownDestinationSilencesAndSetsTheLevel) {
    LogWriter::setLogParamElement("*:recorder:30");
    EXPECT_EQ(complaints("*:x:5"), "No logger found: 'x'\n");
    EXPECT_EQ(writer.getLevel(), 5);
    EXPECT_EQ(other.getLevel(), 5);
    EXPECT_EQ(writer.getLogger(), nullptr);
    EXPECT_EQ(other.getLogger(), nullptr);
}

TEST_F(LogWriterTest, EmptyOrNullElementIsIgnored) {
    LogWriter::setLogParamElement("*:recorder:30");
    EXPECT_EQ(complaints(""), "");
    EXPECT_EQ(complaints(nullptr), "");
    EXPECT_EQ(writer.getLevel(), 30);
}

struct ElementRow {
    const char* name;
    const char* element;
    friend void PrintTo(const ElementRow& row, std::ostream* out) { *out << row.element; }
};

class MalformedElement : public LogWriterTest, public testing::WithParamInterface<ElementRow> {};

TEST_P(MalformedElement, IsReportedAndChangesNothing) {
    LogWriter::setLogParamElement("*:recorder:30");
    EXPECT_EQ(complaints(GetParam().element),
              std::string("Failed to parse log param element: '") + GetParam().element + "'\n");
    EXPECT_EQ(writer.getLevel(), 30);
    EXPECT_EQ(writer.getLogger(), &recorder);
}
INSTANTIATE_TEST_SUITE_P(
    Elements, MalformedElement,
    testing::Values(
        ElementRow{"NoColon", "*"}, ElementRow{"OneColon", "*:second"},
        ElementRow{"ColonAlone", ":"}, ElementRow{"TwoColonsAlone", "::"},
        ElementRow{"NoLevel", "*:second:"}, ElementRow{"Negative", "*:second:-1"},
        ElementRow{"TrailingLetter", "*:second:3x"}, ElementRow{"TrailingBlank", "*:second:5 "},
        ElementRow{"Hexadecimal", "*:second:0x10"}, ElementRow{"Word", "*:second:debug"},
        ElementRow{"FurtherColon", "*:second:c:d"}, ElementRow{"NumbersWithColon", "*:second:1:2"},
        ElementRow{"TooLarge", "*:second:2147483648"},
        ElementRow{"SmallAfterNarrowing", "*:second:4294967297"},
        ElementRow{"BadLevelBeforeUnknownDestination", "*:nobody:x"}),
    [](const auto& row) { return row.param.name; });

struct ParsedLevelRow {
    const char* name;
    const char* level;
    int value;
    friend void PrintTo(const ParsedLevelRow& row, std::ostream* out) { *out << row.level; }
};

class AcceptedLevel : public LogWriterTest, public testing::WithParamInterface<ParsedLevelRow> {};

TEST_P(AcceptedLevel, IsSet) {
    EXPECT_EQ(complaints((std::string("*:second:") + GetParam().level).c_str()), "");
    EXPECT_EQ(writer.getLevel(), GetParam().value);
    EXPECT_EQ(writer.getLogger(), &second);
}
INSTANTIATE_TEST_SUITE_P(Texts, AcceptedLevel,
                         testing::Values(ParsedLevelRow{"Zero", "0", 0},
                                         ParsedLevelRow{"LeadingBlank", " 5", 5},
                                         ParsedLevelRow{"Plus", "+5", 5},
                                         ParsedLevelRow{"LeadingZeroIsDecimal", "010", 10},
                                         ParsedLevelRow{"MinusZero", "-0", 0},
                                         ParsedLevelRow{"Largest", "2147483647", INT_MAX}),
                         [](const auto& row) { return row.param.name; });

/// Leaves the parameter "Log" at its default.
struct LogParamTest : LogWriterTest {
    ~LogParamTest() override {
        plat::logParam.resetToDefault();
        plat::logParam.notifyResetToDefault();
    }
};

TEST_F(LogParamTest, IsAStringOfTheGlobalConfiguration) {
    EXPECT_EQ(plat::Configuration::global()->get("log"), &plat::logParam);
    EXPECT_STREQ(plat::logParam.getName(), "Log");
    EXPECT_TRUE(plat::logParam.isString());
    EXPECT_FALSE(plat::logParam.isHidden());
    EXPECT_THAT(valuesOf(plat::logParam), ElementsAre(testing::Pair(100, "")));
    EXPECT_EQ(plat::logParam.callbacks.size(), 1U);
    const LocalesInForce english{"en_US"};
    EXPECT_STREQ(plat::logParam.getDescription(),
                 "Record events in the format <log>:<target>:<level>[,...].");
}

TEST_F(LogParamTest, IsAppliedWhenItChanges) {
    EXPECT_TRUE(plat::Configuration::global()->set("-Log=*:recorder:0,OtherWriter:second:100", 50));
    EXPECT_EQ(writer.getLogger(), &recorder);
    EXPECT_EQ(writer.getLevel(), 0);
    EXPECT_EQ(other.getLogger(), &second);
    EXPECT_EQ(other.getLevel(), 100);
    plat::logParam.setParam("OtherWriter:recorder:5", 0);
    EXPECT_EQ(writer.getLogger(), nullptr);
    EXPECT_EQ(other.getLevel(), 5);
    plat::logParam.unsetParam(0, true);
    EXPECT_EQ(other.getLevel(), 100);
    plat::logParam.unsetParam(50, true);
    EXPECT_EQ(other.getLogger(), nullptr);
    EXPECT_EQ(other.getLevel(), 0);
}

TEST_F(LogParamTest, ValueInForceIsApplied) {
    plat::logParam.setParam("*:recorder:30", 0);
    plat::logParam.setParam("*:second:100", 50);
    EXPECT_EQ(writer.getLogger(), &recorder);
    EXPECT_EQ(writer.getLevel(), 30);
}

TEST_F(LogParamTest, BadElementsAreReportedWhenItChanges) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(plat::logParam.setParam("bad,LogWriterTest:nowhere:7", 50));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Failed to parse log param element: 'bad'\nNo logger found: 'nowhere'\n");
    EXPECT_EQ(writer.getLevel(), 7);
}

TEST_F(LogParamTest, CanBeAppliedAgain) {
    plat::logParam.setParam("*:recorder:30", 50);
    LogWriter::setLogParamElement("*:second:100");
    static const LogWriter late("LateAgain");
    LogWriter::refreshLogSetting();
    EXPECT_EQ(writer.getLogger(), &recorder);
    EXPECT_EQ(writer.getLevel(), 30);
    EXPECT_EQ(late.getLogger(), &recorder);
    plat::logParam.unsetParam(50, false);
    EXPECT_EQ(writer.getLogger(), &recorder); // nobody was told
    LogWriter::refreshLogSetting();
    EXPECT_EQ(writer.getLogger(), nullptr);
}

TEST_F(LogParamTest, ItsOwnChangeIsLoggedByTheSettingBefore) {
    plat::logParam.setParam("ConfigParameter:recorder:100", 50);
    EXPECT_THAT(recorder.take(), IsEmpty());
    plat::logParam.setParam("", 50);
    EXPECT_THAT(recorder.take(),
                ElementsAre(Line{100, "ConfigParameter", "set Log(String) to , priority 50"}));
}

TEST_F(LogParamTest, NullTextSilences) {
    plat::logParam.setParam("*:recorder:30", 50);
    plat::logParam.setValue(plat::String(), 50);
    EXPECT_EQ(writer.getLogger(), nullptr);
}

// The list is of this program's writers, newest first, then the foundation's; so each test below
// looks at the front, where its own writers stand.
TEST_F(LogWriterTest, ListsThreeShortNamesOnOneLine) {
    static const LogWriter a("aaaaaaaaaa");
    static const LogWriter b("bbbbbbbbbb");
    static const LogWriter c("cccccccccc");
    EXPECT_THAT(listed(79), StartsWith("  cccccccccc, bbbbbbbbbb, aaaaaaaaaa, "));
}

TEST_F(LogWriterTest, ListEndsWithOneLineEnd) {
    const std::string text = listed(79);
    EXPECT_EQ(text.back(), '\n');
    EXPECT_NE(text[text.size() - 2], '\n');
    EXPECT_NE(text[text.size() - 2], ',');
}

struct WidthRow {
    int width;
    const char* front;
};

class ListWidth : public LogWriterTest, public testing::WithParamInterface<WidthRow> {
protected:
    static void SetUpTestSuite() {
        static const LogWriter four("four");
        static const LogWriter three("three");
        static const LogWriter two("two22");
        static const LogWriter one("one1");
    }
};

TEST_P(ListWidth, BreaksLinesWhereTheRoomEnds) {
    EXPECT_THAT(listed(GetParam().width), StartsWith(GetParam().front));
}
INSTANTIATE_TEST_SUITE_P(
    Widths, ListWidth,
    testing::Values(
        // The room is width - 2, and each name takes its length and 2 more.
        WidthRow{40, "  one1, two22, three, four, "},
        // "  one1, two22," is 14 columns: at 14 its name would fill the room exactly.
        WidthRow{15, "  one1, two22,\n  three, four,"},
        WidthRow{14, "  one1, two22,\n  three, four,"},
        WidthRow{13, "  one1,\n  two22,\n  three,\n  four,"},
        WidthRow{8, "  one1,\n  two22,\n  three,\n"}, WidthRow{3, "  one1,\n  two22,\n"},
        WidthRow{0, "  one1,\n  two22,\n"}, WidthRow{-5, "  one1,\n  two22,\n"}),
    [](const auto& row) {
        return "Width" + std::string(row.param.width < 0 ? "Minus" : "") +
               std::to_string(std::abs(row.param.width));
    });

} // namespace
