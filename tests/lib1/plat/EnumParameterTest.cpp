#include "plat/EnumParameter.h"

#include <memory>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/ParameterListener.h"
#include "lib1/plat/RecordingLogger.h"
#include "plat/Configuration.h"
#include "plat/StringUtil.h"

namespace {

using plat::Configuration;
using plat::EnumParameter;
using plat::strDup;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

RecordingLogger recorder("recorder");

constexpr const char* levels[] = {"low", "high", nullptr};
constexpr const char* nothing[] = {nullptr};

struct EnumParameterTest : testing::Test {
    Configuration config{"Test", nullptr};
};

struct DefaultRow {
    const char* name;
    const char* text;
    int index;
    int lines; // how many changes are logged
    friend void PrintTo(const DefaultRow& row, std::ostream* out) { *out << row.name; }
};

class EnumDefault : public EnumParameterTest, public testing::WithParamInterface<DefaultRow> {};

TEST_P(EnumDefault, IsLookedUp) {
    recorder.take();
    const LogSetting setting("ConfigParameter:recorder:110");
    const EnumParameter param("Level", "", GetParam().text, levels, false, &config);
    EXPECT_EQ(param.getIntValue(), GetParam().index);
    EXPECT_EQ(valueOf(param), levels[GetParam().index]);
    EXPECT_EQ(param.getPriority(), 100);
    std::vector<std::string> lines{"set Level(Int) to 0, priority 100",
                                   "set Level(Int) to 1, priority 100"};
    lines.resize(std::size_t(GetParam().lines));
    EXPECT_EQ(recorder.takeTexts(), lines);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, EnumDefault,
    testing::Values(DefaultRow{"First", "low", 0, 1}, DefaultRow{"Second", "high", 1, 2},
                    DefaultRow{"OtherCase", "HIGH", 1, 2}, DefaultRow{"Unknown", "middle", 0, 1},
                    DefaultRow{"Empty", "", 0, 1}, DefaultRow{"Null", nullptr, 0, 1}),
    [](const auto& row) { return row.param.name; });

TEST_F(EnumParameterTest, TakesTheNamesOfItsList) {
    EnumParameter param("Level", "", "low", levels, false, &config);
    EXPECT_TRUE(param.setParam("HIGH", 50));
    EXPECT_EQ(param.getIntValue(), 1);
    EXPECT_EQ(valueOf(param), "high");
    EXPECT_TRUE(param.setParam("Low", 0));
    EXPECT_THAT(valuesOf(param), ElementsAre(Pair(0, "low"), Pair(50, "high"), Pair(100, "low")));
}

TEST_F(EnumParameterTest, RefusesOtherTextsInSilence) {
    EnumParameter param("Level", "", "low", levels, false, &config);
    ParameterListener listener(param);
    recorder.take();
    const LogSetting setting("ConfigParameter:recorder:110");
    for (const char* text : {static_cast<const char*>(nullptr), "", "hig", "higher", "1", " low"})
        EXPECT_FALSE(param.setParam(text, 50));
    EXPECT_FALSE(param.setIntValue(2, 50));
    EXPECT_FALSE(param.setIntValue(-1, 50));
    EXPECT_THAT(recorder.take(), IsEmpty());
    EXPECT_THAT(listener.take(), IsEmpty());
}

TEST_F(EnumParameterTest, TakesIndices) {
    EnumParameter param("Level", "", "low", levels, false, &config);
    EXPECT_TRUE(param.setIntValue(1, 50));
    EXPECT_EQ(valueOf(param), "high");
    EXPECT_TRUE(param.setParam(0, 0)); // a number, not a null text
    EXPECT_EQ(valueOf(param), "low");
}

TEST_F(EnumParameterTest, FirstOfEqualNamesIsTaken) {
    static constexpr const char* names[] = {"a", "B", "b", nullptr};
    EnumParameter param("Level", "", "a", names, false, &config);
    EXPECT_TRUE(param.setParam("b", 50));
    EXPECT_EQ(param.getIntValue(), 1);
    EXPECT_EQ(valueOf(param), "B");
}

/// Lets only the index 0 through.
class PickyParameter : public EnumParameter {
public:
    using EnumParameter::EnumParameter;
    bool setIntValue(int value, int priority) override {
        return value == 0 && EnumParameter::setIntValue(value, priority);
    }
};

TEST_F(EnumParameterTest, StoresNamesByWayOfTheirNumbers) {
    PickyParameter param("Level", "", "low", levels, false, &config);
    EXPECT_FALSE(param.setParam("high", 50));
    EXPECT_TRUE(param.setParam("low", 50));
}

TEST_F(EnumParameterTest, EmptyListHasNoNames) {
    for (const char* const* list :
         {static_cast<const char* const*>(nothing), static_cast<const char* const*>(nullptr)}) {
        EnumParameter param("Level", "", "low", list, false, &config);
        EXPECT_EQ(param.getIntValue(), 0);
        EXPECT_EQ(valueOf(param), "(null)");
        EXPECT_THAT(valuesOf(param), ElementsAre(Pair(100, "(null)")));
        EXPECT_FALSE(param.setIntValue(0, 50));
        EXPECT_FALSE(param.setParam("low", 50));
        param.init("low");
        EXPECT_EQ(valueOf(param), "(null)");
    }
}

TEST_F(EnumParameterTest, NumberWithoutANameHasNoText) {
    EnumParameter param("Level", "", "low", levels, false, &config);
    param.setValue(2, 50); // asks for no bounds
    EXPECT_EQ(valueOf(param), "(null)");
    param.setValue(-1, 50);
    EXPECT_EQ(valueOf(param), "(null)");
    EXPECT_THAT(valuesOf(param), ElementsAre(Pair(50, "(null)"), Pair(100, "low")));
}

TEST_F(EnumParameterTest, InitCountsNamesThatWereAdded) {
    const char* names[5] = {};
    EnumParameter param("Level", "", nullptr, names, false, &config);
    names[0] = "a";
    names[1] = "b";
    param.init("b");
    EXPECT_EQ(valueOf(param), "b");
    EXPECT_EQ(param.getPriority(), 100);
    EXPECT_FALSE(param.setIntValue(2, 50));
    names[2] = "c";
    EXPECT_FALSE(param.setParam("c", 50)); // not counted yet
    param.init("C");
    EXPECT_EQ(valueOf(param), "c");
    EXPECT_TRUE(param.setIntValue(0, 50));
    param.init("unknown");
    EXPECT_THAT(valuesOf(param), ElementsAre(Pair(50, "a"), Pair(100, "c")));
}

TEST_F(EnumParameterTest, AnswersForItsKind) {
    const EnumParameter param("Level", loc::msgid_t("plat_test_unknown"), "high", levels, true,
                              &config);
    EXPECT_TRUE(param.isEnum());
    EXPECT_TRUE(param.isInt());
    EXPECT_FALSE(param.isBool() || param.isString() || param.isBinary());
    EXPECT_TRUE(param.isHidden());
    EXPECT_STREQ(param.getDescription(), "plat_test_unknown");
    EXPECT_EQ(valueOf(param), "high");
}

TEST_F(EnumParameterTest, ClonesItsKindWithTheVeryList) {
    EnumParameter param("Level", "", "low", levels, false, &config);
    param.setParam("high", 50);
    Configuration other("Other", nullptr);
    const std::unique_ptr<plat::ConfigParameter> copy(param.clone(&other));
    ASSERT_NE(dynamic_cast<EnumParameter*>(copy.get()), nullptr);
    EXPECT_THAT(valuesOf(*copy), ElementsAre(Pair(50, "high"), Pair(100, "low")));
    EXPECT_TRUE(copy->setParam("LOW", 0));
    EXPECT_FALSE(copy->setIntValue(2, 0));
}

/// Owns its texts, as a parameter made from texts that do not last would.
class OwningParameter : public EnumParameter {
public:
    OwningParameter(const char* const* list, Configuration* config)
        : EnumParameter(strDup("Level"), strDup("About it."), "b", list, false, config) {
        ownsStrings = true;
    }
};

TEST_F(EnumParameterTest, CloneOfOwnedTextsHasTextsOfItsOwn) {
    auto source = std::make_unique<OwningParameter>(
        new const char*[3]{strDup("a"), strDup("b"), nullptr}, &config);
    Configuration other("Other", nullptr);
    const std::unique_ptr<plat::ConfigParameter> copy(source->clone(&other));
    source.reset(); // leak checkers watch
    EXPECT_EQ(valueOf(*copy), "b");
    EXPECT_TRUE(copy->setParam("A", 50));
    EXPECT_EQ(valueOf(*copy), "a");
    EXPECT_STREQ(copy->getName(), "Level");
}

} // namespace
