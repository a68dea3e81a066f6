#include "plat/IntParameter.h"

#include <climits>
#include <memory>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/ParameterListener.h"
#include "lib1/plat/RecordingLogger.h"
#include "plat/Configuration.h"

namespace {

using plat::Configuration;
using plat::IntParameter;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

RecordingLogger recorder("recorder");

struct IntParameterTest : testing::Test {
    Configuration config{"Test", nullptr};
};

constexpr int refused = INT_MIN; // no row stores it

struct TextRow {
    const char* name;
    const char* text;
    int value;
    friend void PrintTo(const TextRow& row, std::ostream* out) { *out << row.name; }
};

class IntText : public IntParameterTest, public testing::WithParamInterface<TextRow> {
protected:
    void expectSet(IntParameter& param) {
        ParameterListener listener(param);
        recorder.take();
        const LogSetting setting("ConfigParameter:recorder:110");
        EXPECT_EQ(param.setParam(GetParam().text, 50), GetParam().value != refused);
        if (GetParam().value == refused) {
            EXPECT_EQ(param.getPriority(), 100);
            EXPECT_THAT(listener.take(), IsEmpty());
            EXPECT_THAT(recorder.take(), IsEmpty());
        } else {
            EXPECT_EQ(param.getPriority(), 50);
            EXPECT_EQ(param.getIntValue(), GetParam().value);
        }
    }
};

class UnboundedText : public IntText {};

TEST_P(UnboundedText, IsParsed) {
    IntParameter param("P", "", 77, false, &config);
    expectSet(param);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, UnboundedText,
    testing::Values(TextRow{"Null", nullptr, refused}, TextRow{"Empty", "", refused},
                    TextRow{"Decimal", "80", 80}, TextRow{"Negative", "-80", -80},
                    TextRow{"Plus", "+80", 80}, TextRow{"Hexadecimal", "0xA", 10},
                    TextRow{"NegativeHexadecimal", "-0Xff", -255}, TextRow{"Octal", "010", 8},
                    TextRow{"BadOctal", "08", refused}, TextRow{"Binary", "0b11", refused},
                    TextRow{"LeadingBlank", " 5", 5}, TextRow{"TrailingBlank", "5 ", refused},
                    TextRow{"Letters", "five", refused}, TextRow{"TrailingLetter", "5x", refused},
                    TextRow{"Fraction", "5.0", refused}, TextRow{"Largest", "2147483647", INT_MAX},
                    TextRow{"TooLarge", "2147483648", refused},
                    TextRow{"Smallest", "-2147483647", -INT_MAX},
                    TextRow{"TooSmall", "-2147483649", refused},
                    TextRow{"SmallAfterNarrowing", "4294967301", refused},
                    TextRow{"BeyondLongLong", "99999999999999999999", refused}),
    [](const auto& row) { return row.param.name; });

class BoundedText : public IntText {};

TEST_P(BoundedText, IsParsedAndChecked) {
    IntParameter param("P", "", 2, false, &config, 1, 10);
    expectSet(param);
}
INSTANTIATE_TEST_SUITE_P(
    OneToTen, BoundedText,
    testing::Values(TextRow{"Below", "0", refused}, TextRow{"Lowest", "1", 1},
                    TextRow{"Highest", "10", 10}, TextRow{"Above", "11", refused},
                    TextRow{"TrailingLetter", "5x", refused}, TextRow{"Hexadecimal", "0xA", 10},
                    TextRow{"HexadecimalAbove", "0xB", refused}, TextRow{"Octal", "010", 8},
                    TextRow{"Negative", "-1", refused}),
    [](const auto& row) { return row.param.name; });

TEST_F(IntParameterTest, TakesNumbersWithinItsBounds) {
    IntParameter param("P", "", 5, false, &config, -1, 10);
    ParameterListener listener(param);
    recorder.take();
    const LogSetting setting("ConfigParameter:recorder:110");
    EXPECT_FALSE(param.setParam(11, 50));
    EXPECT_FALSE(param.setIntValue(-2, 50));
    EXPECT_THAT(recorder.take(), IsEmpty());
    EXPECT_THAT(listener.take(), IsEmpty());
    EXPECT_TRUE(param.setParam(10, 50));
    EXPECT_TRUE(param.setIntValue(-1, 0));
    EXPECT_TRUE(param.setParam(0, 20)); // a number, not a null text
    EXPECT_THAT(valuesOf(param),
                ElementsAre(Pair(0, "-1"), Pair(20, "0"), Pair(50, "10"), Pair(100, "5")));
}

TEST_F(IntParameterTest, HasAllNumbersWithoutBounds) {
    IntParameter param("P", "", 0, false, &config);
    EXPECT_TRUE(param.setParam(INT_MIN, 50));
    EXPECT_TRUE(param.setParam(INT_MAX, 0));
}

TEST_F(IntParameterTest, DefaultNeedNotLieWithinTheBounds) {
    IntParameter param("P", "", 99, false, &config, 1, 10);
    EXPECT_EQ(param.getIntValue(), 99);
    EXPECT_FALSE(param.setParam("99", 50));
}

TEST_F(IntParameterTest, EmptyRangeTakesNothing) {
    IntParameter param("P", "", 5, false, &config, 1, 0);
    EXPECT_FALSE(param.setParam(0, 50));
    EXPECT_FALSE(param.setParam(1, 50));
}

TEST_F(IntParameterTest, AnswersForItsKind) {
    const IntParameter param("P", loc::msgid_t("plat_test_unknown"), 5, true, &config);
    EXPECT_TRUE(param.isInt());
    EXPECT_FALSE(param.isBool() || param.isString() || param.isEnum() || param.isBinary());
    EXPECT_TRUE(param.isHidden());
    EXPECT_STREQ(param.getDescription(), "plat_test_unknown");
}

TEST_F(IntParameterTest, ClonesItsKindWithTheBounds) {
    IntParameter param("P", "", 5, false, &config, 1, 10);
    param.setParam(6, 50);
    Configuration other("Other", nullptr);
    const std::unique_ptr<plat::ConfigParameter> copy(param.clone(&other));
    ASSERT_NE(dynamic_cast<IntParameter*>(copy.get()), nullptr);
    EXPECT_THAT(valuesOf(*copy), ElementsAre(Pair(50, "6"), Pair(100, "5")));
    EXPECT_TRUE(copy->setParam("10", 0));
    EXPECT_TRUE(copy->setParam("1", 0));
    EXPECT_FALSE(copy->setParam("11", 0));
    EXPECT_FALSE(copy->setParam("0", 0));
}

} // namespace
