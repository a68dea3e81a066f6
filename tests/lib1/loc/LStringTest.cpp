#include "loc/LString.h"

#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/RecordingLogger.h"
#include "loc/Localize.h"

namespace {

using loc::LString;
using loc::PrintfArg;
using loc::PrintfArgs;
using testing::ElementsAre;
using testing::IsEmpty;

RecordingLogger recorder("recorder");

struct Row {
    const char* name;
    const char* format;
    std::vector<PrintfArg> args;
    const char* result;
    bool isBad = false;
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

class Xprintf : public testing::TestWithParam<Row> {};

TEST_P(Xprintf, ExpandsDirectivesAndReportsBadOnesOnce) {
    const LogSetting setting("Localize:recorder:0");
    std::vector<PrintfArg> args = GetParam().args;
    for (std::size_t i = 1; i < args.size(); ++i)
        args[i - 1].next = &args[i];
    const loc::PrintfArgList list(args.empty() ? nullptr : args.data());
    EXPECT_STREQ(LString().xprintf(GetParam().format, list).get(), GetParam().result);
    const auto lines = recorder.take();
    if (!GetParam().isBad) {
        EXPECT_THAT(lines, IsEmpty());
        return;
    }
    const std::string text = std::string("Bad loc string for args - ") + GetParam().format;
    EXPECT_THAT(lines, ElementsAre(RecordingLogger::Line{0, "Localize", text}));
}

std::string nameOf(const testing::TestParamInfo<Row>& row) {
    return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Good, Xprintf,
    testing::Values(
        Row{"Empty", "", {}, ""}, Row{"Plain", "plain", {}, "plain"},
        Row{"ArgumentsMayBeLeftOver", "plain", {1, "a"}, "plain"},
        Row{"Percent", "100 %%", {}, "100 %"}, Row{"Percents", "%%%%D", {}, "%%D"},
        Row{"PercentWithArguments", "%%%S%%", {"a"}, "%a%"},
        Row{"Positions", "%1$S, %2$S", {"a", "b"}, "a, b"},
        Row{"PositionsTurned", "%2$S, %1$S", {"a", "b"}, "b, a"},
        Row{"PositionTwice", "%1$S%1$S%2$S", {"a", "b"}, "aab"},
        Row{"PositionOfTheOnly", "%1$S", {"a"}, "a"},
        Row{"PositionWithZeros", "%002$S", {"a", "b"}, "b"},
        Row{"OnlyArgumentTwice", "%S%S", {"a"}, "aa"}, Row{"Signed", "%D", {-5}, "-5"},
        Row{"SignedPositive", "%D", {5}, "5"}, Row{"SignedZero", "%D", {0}, "0"},
        Row{"SignedLeast", "%D", {INT_MIN}, "-2147483648"},
        Row{"SignedMost", "%D", {INT_MAX}, "2147483647"}, Row{"PlusPositive", "%+D", {5}, "+5"},
        Row{"PlusNegative", "%+D", {-5}, "-5"}, Row{"PlusZero", "%+D", {0}, "+0"},
        Row{"PlusLeast", "%+D", {INT_MIN}, "-2147483648"},
        Row{"PlusMost", "%+D", {INT_MAX}, "+2147483647"},
        Row{"Unsigned", "%D", {UINT_MAX}, "4294967295"}, Row{"UnsignedZero", "%D", {0U}, "0"},
        Row{"Hex", "%X", {255U}, "ff"}, Row{"HexZero", "%X", {0U}, "0"},
        Row{"HexMost", "%X", {UINT_MAX}, "ffffffff"},
        Row{"HexDigits", "%X", {0x12345678U}, "12345678"},
        Row{"HexLetters", "%X", {0x90abcdefU}, "90abcdef"},
        Row{"String", "<%S>", {"a%Sb"}, "<a%Sb>"}, Row{"EmptyString", "<%S>", {""}, "<>"},
        Row{"NullString", "<%S>", {static_cast<const char*>(nullptr)}, "<>"},
        Row{"NullStringWithPrecision", "<%.3S>", {static_cast<const char*>(nullptr)}, "<>"},
        Row{"StringIsNotRepaired", "%S", {"a\xFF"}, "a\xFF"},
        Row{"PlusBehindPosition", "%1$+D", {5}, "+5"},
        Row{"PlusBeforePosition", "%+1$D", {5}, "+5"},
        Row{"PrecisionBehindPosition", "%2$.2S", {"a", "bcd"}, "bc"},
        Row{"Precision", "%.3S", {"abcdef"}, "abc"}, Row{"PrecisionAsLong", "%.3S", {"abc"}, "abc"},
        Row{"PrecisionLonger", "%.9S", {"abc"}, "abc"},
        Row{"PrecisionMost", "%.2147483647S", {"abc"}, "abc"},
        Row{"PrecisionCutsACharacter", "%.3S", {"ab\xC3\xA9"}, "ab"},
        Row{"PrecisionKeepsACharacter", "%.4S", {"ab\xC3\xA9z"}, "ab\xC3\xA9"},
        Row{"PrecisionOfOneCutsIt", "%.1S", {"\xC3\xA9"}, ""},
        Row{"PrecisionRepairs", "%.5S", {"a\xFFz"}, "a\xEF\xBF\xBDz"},
        Row{"PrecisionLeavesNoRoomToRepair", "%.3S", {"a\xFFz"}, "a"},
        Row{"PrecisionReplacesFullWidthSigns", "%.4S", {"\xEF\xBF\xA0z"}, "\xEF\xBF\xBDz"},
        Row{"FullWidthSignsStayWithout", "%S", {"\xEF\xBF\xA0"}, "\xEF\xBF\xA0"},
        Row{"ManyArguments", "%9$D%8$S", {1, 2, 3, 4, 5, 6, 7, "h", 9}, "9h"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Bad, Xprintf,
    testing::Values(Row{"PositionRequired", "%S!", {"a", "b"}, "%%S!", true},
                    Row{"NoArgument", "%S", {}, "%%S", true},
                    Row{"PositionTooHigh", "%2$S", {"a"}, "%%2$S", true},
                    Row{"PositionOfNone", "%1$S", {}, "%%1$S", true},
                    Row{"PositionZero", "%0$S", {"a"}, "%%0$S", true},
                    Row{"PositionTooLong", "%99999999999$S", {"a"}, "%%99999999999$S", true},
                    Row{"TwoPositions", "%1$2$S", {"a", "b"}, "%%1$2$S", true},
                    Row{"PositionWithoutDollar", "%1S", {"a"}, "%%1S", true},
                    Row{"PositionBeforeNoDollar", "%1xS", {"a"}, "%%1xS", true},
                    Row{"PositionWithSign", "%++1$D", {1}, "%%++1$D", true},
                    Row{"PositionWithMinus", "%-1$D", {1}, "%%-1$D", true},
                    Row{"PositionWithBlank", "% 1$D", {1}, "%% 1$D", true},
                    Row{"PlusOnUnsigned", "%+D", {5U}, "%%+D", true},
                    Row{"PlusOnHex", "%+X", {5U}, "%%+X", true},
                    Row{"PlusOnString", "%+S", {"a"}, "%%+S", true},
                    Row{"TwoPluses", "%++D", {5}, "%%++D", true},
                    Row{"HexOfSigned", "%X", {5}, "%%X", true},
                    Row{"HexOfString", "%X", {"a"}, "%%X", true},
                    Row{"NumberOfString", "%D", {"a"}, "%%D", true},
                    Row{"StringOfSigned", "%S", {5}, "%%S", true},
                    Row{"StringOfUnsigned", "%S", {5U}, "%%S", true},
                    Row{"LowerCaseNumber", "%d", {5}, "%%d", true},
                    Row{"LowerCaseString", "%s", {"a"}, "%%s", true},
                    Row{"LowerCaseHex", "%x", {5U}, "%%x", true},
                    Row{"OtherLetter", "%U", {5U}, "%%U", true},
                    Row{"PrecisionZero", "%.0S", {"a"}, "%%.0S", true},
                    Row{"PrecisionWithoutNumber", "%.S", {"a"}, "%%.S", true},
                    Row{"PrecisionWithBlank", "%. 3S", {"a"}, "%%. 3S", true},
                    Row{"PrecisionWithSign", "%.+3S", {"a"}, "%%.+3S", true},
                    Row{"PrecisionTooLarge", "%.2147483648S", {"a"}, "%%.2147483648S", true},
                    Row{"TwoPrecisions", "%.1.2S", {"abc"}, "%%.1.2S", true},
                    Row{"PrecisionOfNumber", "%.3D", {5}, "%%.3D", true},
                    Row{"PrecisionOfUnsigned", "%.3D", {5U}, "%%.3D", true},
                    Row{"PrecisionOfHex", "%.3X", {5U}, "%%.3X", true},
                    Row{"PrecisionTakesThePositionsDigits", "%.31$S", {"abcd"}, "%%.31$S", true},
                    Row{"EndsBehindPercent", "a%", {1}, "a%%", true},
                    Row{"EndsBehindFlags", "a%+1$.2", {"b"}, "a%%+1$.2", true},
                    Row{"PercentBehindAFlag", "%+%", {5}, "%%+%%", true},
                    Row{"GoesOnRightBehindThePercent", "%1$%S", {"a"}, "%%1$a", true},
                    Row{"ReportedOnce", "%d %d %S", {"a"}, "%%d %%d a", true},
                    Row{"BadType",
                        "%D",
                        {[] {
                            PrintfArg arg(1);
                            arg.type = 3;
                            return arg;
                        }()},
                        "%%D",
                        true}),
    nameOf);

TEST(LStringXprintf, ReplacesTheContent) {
    LString text;
    text.append("before");
    EXPECT_EQ(&text.xprintf("%D", PrintfArgs(7)), &text);
    EXPECT_STREQ(text.get(), "7");
}

TEST(LStringXprintf, TakesItsOwnContent) {
    const LogSetting setting("Localize:recorder:0");
    LString text;
    text.append("%1$S-%1$S-%Q");
    text.xprintf(text.get(), PrintfArgs(static_cast<const char*>(text.get())));
    EXPECT_STREQ(text.get(), "%1$S-%1$S-%Q-%1$S-%1$S-%Q-%%Q");
    EXPECT_THAT(recorder.takeTexts(), ElementsAre("Bad loc string for args - %1$S-%1$S-%Q"));
}

TEST(LStringXprintf, TakesANullFormatForAnEmptyOne) {
    EXPECT_STREQ(LString().xprintf(nullptr).get(), "");
}

TEST(LStringXprintf, GrowsBeyondItsFirstGuess) {
    const std::string text(100000, 'x');
    EXPECT_EQ(LString().xprintf("%S%S", PrintfArgs(text.c_str())).get(), text + text);
}

TEST(LStringXprintf, BadFormatIsKeptWhenTheDestinationThrows) {
    const LogSetting setting("Localize:recorder:0");
    recorder.onWrite = [] { throw 1; };
    LString text;
    EXPECT_THROW(text.xprintf("%d"), int);
    recorder.onWrite = nullptr;
    recorder.take();
    EXPECT_STREQ(text.get(), "%%d");
}

TEST(LStringXprintfDeathTest, AbortsIfErrorsAreFatal) {
    EXPECT_EXIT(
        {
            loc::abortOnError = true;
            LString().xprintf("%d of", PrintfArgs(1));
        },
        testing::KilledBySignal(SIGABRT), "^Bad loc string for args - %d of\nAborting\n$");
}

TEST(LStringXprintfDeathTest, GoodFormatNeverAborts) {
    loc::abortOnError = true;
    EXPECT_STREQ(LString().xprintf("%D", PrintfArgs(1)).get(), "1");
    loc::abortOnError = false;
}

TEST(PrintfArgs, AreLinkedInOrder) {
    const PrintfArgs args(-1, 2U, "c");
    const loc::PrintfArgList list = args;
    ASSERT_NE(list.first, nullptr);
    EXPECT_EQ(list.first->type, 0);
    EXPECT_EQ(list.first->signedValue, -1);
    EXPECT_EQ(list.first->next->type, 1);
    EXPECT_EQ(list.first->next->unsignedValue, 2U);
    EXPECT_EQ(list.first->next->next->type, 2);
    EXPECT_STREQ(list.first->next->next->stringValue, "c");
    EXPECT_EQ(list.first->next->next->next, nullptr);
}

TEST(PrintfArgs, NoneIsTheEmptyList) {
    EXPECT_EQ(loc::PrintfArgList(PrintfArgs()).first, nullptr);
    EXPECT_EQ(loc::PrintfArgList().first, nullptr);
}

TEST(LStringWordWrap, WrapsAndReturnsItself) {
    LString text;
    text.append("one two three four");
    EXPECT_EQ(&text.wordWrap(10, 2), &text);
    EXPECT_STREQ(text.get(), "one two\n  three\n  four");
}

} // namespace
