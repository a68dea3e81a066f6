#include "plat/BoolParameter.h"

#include <memory>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/ParameterListener.h"
#include "lib1/plat/RecordingLogger.h"
#include "plat/Configuration.h"

namespace {

using plat::BoolParameter;
using plat::Configuration;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Line = RecordingLogger::Line;

RecordingLogger recorder("recorder");

struct TextRow {
    const char* name;
    const char* text;
    int value; // -1 for a text that is refused
    friend void PrintTo(const TextRow& row, std::ostream* out) { *out << row.name; }
};

class BoolText : public testing::TestWithParam<TextRow> {};

TEST_P(BoolText, IsParsed) {
    for (const bool before : {false, true}) {
        bool out = before;
        EXPECT_EQ(BoolParameter::parseBool(GetParam().text, &out), GetParam().value != -1);
        EXPECT_EQ(out, GetParam().value == -1 ? before : GetParam().value == 1);
    }
}

TEST_P(BoolText, SetsAParameter) {
    Configuration config("Test", nullptr);
    BoolParameter param("Flag", "", GetParam().value == 0, false, &config);
    ParameterListener listener(param);
    recorder.take();
    const LogSetting setting("ConfigParameter:recorder:30");
    EXPECT_EQ(param.setParam(GetParam().text, 50), GetParam().value != -1);
    if (GetParam().value == -1) {
        EXPECT_THAT(valuesOf(param), ElementsAre(Pair(100, "0")));
        EXPECT_THAT(listener.take(), IsEmpty());
        EXPECT_THAT(recorder.take(),
                    ElementsAre(Line{0, "ConfigParameter",
                                     std::string("Bool parameter Flag: invalid value '") +
                                         GetParam().text + "'"}));
    } else {
        EXPECT_EQ(param.getIntValue(), GetParam().value);
        EXPECT_EQ(param.getPriority(), 50);
        EXPECT_THAT(recorder.take(), IsEmpty());
    }
}
INSTANTIATE_TEST_SUITE_P(
    Texts, BoolText,
    testing::Values(TextRow{"Null", nullptr, 1}, TextRow{"Empty", "", 1}, TextRow{"One", "1", 1},
                    TextRow{"On", "on", 1}, TextRow{"OnUpper", "ON", 1}, TextRow{"True", "true", 1},
                    TextRow{"TrueUpper", "TRUE", 1}, TextRow{"Yes", "yes", 1},
                    TextRow{"YesUpper", "YES", 1}, TextRow{"Zero", "0", 0},
                    TextRow{"Off", "off", 0}, TextRow{"OffMixed", "Off", 0},
                    TextRow{"False", "false", 0}, TextRow{"FalseMixed", "fAlSe", 0},
                    TextRow{"No", "no", 0}, TextRow{"NoUpper", "NO", 0},
                    TextRow{"LeadingZero", "01", -1}, TextRow{"Two", "2", -1},
                    TextRow{"LeadingBlank", " true", -1}, TextRow{"TrailingBlank", "true ", -1},
                    TextRow{"Blank", " ", -1}, TextRow{"PlusOne", "+1", -1},
                    TextRow{"Letter", "y", -1}, TextRow{"DoubleZero", "00", -1}),
    [](const auto& row) { return row.param.name; });

struct BoolParameterTest : testing::Test {
    Configuration config{"Test", nullptr};
};

TEST_F(BoolParameterTest, AnswersForItsKind) {
    BoolParameter param("Flag", "About it.", true, true, &config);
    EXPECT_TRUE(param.isBool());
    EXPECT_FALSE(param.isInt() || param.isString() || param.isEnum() || param.isBinary());
    EXPECT_TRUE(param.isHidden());
    EXPECT_STREQ(param.getDescription(), "About it.");
    EXPECT_EQ(valueOf(param), "1");
    EXPECT_EQ(param.getIntValue(), 1);
    param.setValue(false, 0);
    EXPECT_EQ(valueOf(param), "0");
    EXPECT_EQ(param.getIntValue(), 0);
}

TEST_F(BoolParameterTest, TakesAnIdAsDescription) {
    const BoolParameter param("Flag", loc::msgid_t("plat_test_unknown"), false, false, &config);
    EXPECT_STREQ(param.getDescription(), "plat_test_unknown");
}

TEST_F(BoolParameterTest, TakesNumbers) {
    BoolParameter param("Flag", "", false, false, &config);
    EXPECT_TRUE(param.setIntValue(-3, 50));
    EXPECT_EQ(valueOf(param), "1");
    EXPECT_TRUE(param.setIntValue(0, 0));
    EXPECT_EQ(valueOf(param), "0");
    EXPECT_EQ(param.getPriority(), 0);
}

TEST_F(BoolParameterTest, ClonesItsKind) {
    BoolParameter param("Flag", "", false, false, &config);
    param.setParam("on", 50);
    Configuration other("Other", nullptr);
    const std::unique_ptr<plat::ConfigParameter> copy(param.clone(&other));
    EXPECT_NE(dynamic_cast<BoolParameter*>(copy.get()), nullptr);
    EXPECT_THAT(valuesOf(*copy), ElementsAre(Pair(50, "1"), Pair(100, "0")));
}

} // namespace
