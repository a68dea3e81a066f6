#include "plat/ConfigParameter.h"

#include <memory>
#include <ostream>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/ParameterListener.h"
#include "lib1/plat/RecordingLogger.h"
#include "lib1/plat/VirtualSlot.h"
#include "plat/BadUtf8.h"
#include "plat/BinaryParameter.h"
#include "plat/BoolParameter.h"
#include "plat/Configuration.h"
#include "plat/IntParameter.h"
#include "plat/StringParameter.h"
#include "plat/StringUtil.h"

namespace {

using plat::BoolParameter;
using plat::ConfigParameter;
using plat::Configuration;
using plat::IntParameter;
using plat::String;
using plat::StringParameter;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

RecordingLogger recorder("recorder");

static_assert(std::is_abstract_v<ConfigParameter>);
static_assert(std::is_abstract_v<plat::ParameterChangedCallback>);
static_assert(std::has_virtual_destructor_v<plat::ParameterChangedCallback>);

/// The least that a kind has to define.
class PlainParameter : public ConfigParameter {
public:
    PlainParameter(const char* name, const char* description, loc::msgid_t id, bool hidden,
                   Configuration* config)
        : ConfigParameter(name, description, id, hidden, config) {}
    PlainParameter(const PlainParameter& source, Configuration* into)
        : ConfigParameter(source, into) {}

    void ownStrings() { ownsStrings = true; }

    bool setParam(const char*, int) override { return false; }
    void unsetParam(int, bool) override {}
    char* getValueStr() const override { return plat::strDup("plain"); }
    int getPriority() const override { return priority; }
    std::map<int, String> getStringValues() const override { return {}; }
    ConfigParameter* clone(Configuration* into) override { return new PlainParameter(*this, into); }

    int priority = 100;
};

struct ConfigParameterTest : testing::Test {
    Configuration config{"Test", nullptr};
};

TEST(ConfigParameter, KeepsTheOrderOfItsVirtualOperations) {
    // The destructor has the first two slots.
    EXPECT_EQ(virtualSlot(&ConfigParameter::setParam), 2U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::unsetParam), 3U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::setIntValue), 4U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::getValueStr), 5U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::getIntValue), 6U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::getPriority), 7U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::getStringValues), 8U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::isBool), 9U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::isInt), 10U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::isString), 11U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::isEnum), 12U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::isBinary), 13U);
    EXPECT_EQ(virtualSlot(&ConfigParameter::clone), 14U);
    EXPECT_EQ(virtualSlot(&plat::ParameterChangedCallback::parameterChanged), 2U);
}

TEST_F(ConfigParameterTest, AnswersNoUnlessItsKindSaysOtherwise) {
    PlainParameter param("Plain", "text", nullptr, false, &config);
    EXPECT_FALSE(param.setIntValue(1, 50));
    EXPECT_EQ(param.getIntValue(), 0);
    EXPECT_FALSE(param.isBool());
    EXPECT_FALSE(param.isInt());
    EXPECT_FALSE(param.isString());
    EXPECT_FALSE(param.isEnum());
    EXPECT_FALSE(param.isBinary());
}

TEST_F(ConfigParameterTest, KeepsTheVeryTextsItWasGiven) {
    static const char name[] = "Name";
    static const char text[] = "What it does.";
    const PlainParameter param(name, text, nullptr, true, &config);
    EXPECT_EQ(param.getName(), name);
    EXPECT_EQ(param.getDescription(), text);
    EXPECT_TRUE(param.isHidden());
    EXPECT_TRUE(param.callbacks.empty());
}

TEST_F(ConfigParameterTest, DescriptionGoesBeforeTheIdsText) {
    const PlainParameter both("A", "own", loc::msgid_t("plat_test_unknown"), false, &config);
    EXPECT_STREQ(both.getDescription(), "own");
    const PlainParameter idOnly("B", nullptr, loc::msgid_t("plat_test_unknown"), false, &config);
    EXPECT_STREQ(idOnly.getDescription(), "plat_test_unknown"); // as every id without a text
    const PlainParameter neither("C", nullptr, nullptr, false, &config);
    EXPECT_STREQ(neither.getDescription(), "");
}

TEST_F(ConfigParameterTest, RegistersInItsConfigurationOrTheGlobalOne) {
    PlainParameter here("ConfigParameterTestHere", "", nullptr, false, &config);
    static PlainParameter there("ConfigParameterTestThere", "", nullptr, false, nullptr);
    EXPECT_EQ(config.get("ConfigParameterTestHere"), &here);
    EXPECT_EQ(config.get("ConfigParameterTestThere"), nullptr);
    EXPECT_EQ(Configuration::global()->get("ConfigParameterTestThere"), &there);
}

TEST_F(ConfigParameterTest, CopyKeepsAllButTheListeners) {
    PlainParameter source("Name", "text", nullptr, true, &config);
    ParameterListener listener(source);
    Configuration other("Other", nullptr);
    const std::unique_ptr<ConfigParameter> copy(source.clone(&other));
    EXPECT_EQ(copy->getName(), source.getName());
    EXPECT_EQ(copy->getDescription(), source.getDescription());
    EXPECT_TRUE(copy->isHidden());
    EXPECT_TRUE(copy->callbacks.empty());
    EXPECT_EQ(other.get("Name"), copy.get());
    EXPECT_EQ(config.get("Name"), &source);
}

TEST_F(ConfigParameterTest, CopyOfOwnedTextsHasTextsOfItsOwn) {
    auto source = std::make_unique<PlainParameter>(plat::strDup("Name"), plat::strDup("text"),
                                                   nullptr, false, &config);
    source->ownStrings();
    Configuration other("Other", nullptr);
    const std::unique_ptr<ConfigParameter> copy(source->clone(&other));
    EXPECT_NE(copy->getName(), source->getName());
    source.reset(); // leak checkers watch
    EXPECT_STREQ(copy->getName(), "Name");
    EXPECT_STREQ(copy->getDescription(), "text");
    const std::unique_ptr<ConfigParameter> second(copy->clone(&other));
    EXPECT_NE(second->getName(), copy->getName()); // owning is copied too
}

TEST_F(ConfigParameterTest, CopyOfOwnedTextsKeepsAMissingDescription) {
    PlainParameter source(plat::strDup("Name"), nullptr, loc::msgid_t("plat_test_unknown"), false,
                          &config);
    source.ownStrings();
    Configuration other("Other", nullptr);
    const std::unique_ptr<ConfigParameter> copy(source.clone(&other));
    EXPECT_STREQ(copy->getDescription(), "plat_test_unknown");
}

struct LockRow {
    int priority;
    bool isLocked;
    friend void PrintTo(const LockRow& row, std::ostream* out) { *out << row.priority; }
};

class LockingPriority : public ConfigParameterTest, public testing::WithParamInterface<LockRow> {};

TEST_P(LockingPriority, IsAnyBelowThePreferences) {
    PlainParameter param("P", "", nullptr, false, &config);
    param.priority = GetParam().priority;
    EXPECT_EQ(param.isLocked(), GetParam().isLocked);
}
INSTANTIATE_TEST_SUITE_P(Boundaries, LockingPriority,
                         testing::Values(LockRow{-1, true}, LockRow{0, true}, LockRow{49, true},
                                         LockRow{50, false}, LockRow{100, false}));

TEST_F(ConfigParameterTest, ResetRemovesPreferenceAndPolicyInSilence) {
    IntParameter param("P", "", 5, false, &config);
    param.setParam(6, 50);
    param.setParam(7, 0);
    ParameterListener listener(param);
    param.resetToDefault();
    EXPECT_THAT(valuesOf(param), ElementsAre(Pair(100, "5")));
    EXPECT_THAT(listener.takePriorities(), IsEmpty());
    param.notifyResetToDefault();
    EXPECT_THAT(listener.takePriorities(), ElementsAre(100));
}

TEST_F(ConfigParameterTest, ResetLeavesOtherPriorities) {
    IntParameter param("P", "", 5, false, &config);
    param.setParam(6, 50);
    param.setParam(7, 20);
    param.setParam(8, 0);
    param.setParam(9, 70);
    ParameterListener listener(param);
    param.resetToDefault();
    EXPECT_THAT(valuesOf(param), ElementsAre(Pair(20, "7"), Pair(70, "9"), Pair(100, "5")));
    EXPECT_EQ(param.getPriority(), 20);
    param.notifyResetToDefault();
    EXPECT_THAT(listener.takePriorities(), IsEmpty());
}

TEST_F(ConfigParameterTest, NotifyingAResetAsksListenersInOrder) {
    IntParameter param("P", "", 5, false, &config);
    std::vector<int> order;
    ParameterListener first(param);
    ParameterListener second(param);
    first.onChange = [&order] { order.push_back(1); };
    second.onChange = [&order] { order.push_back(2); };
    param.notifyResetToDefault();
    EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST_F(ConfigParameterTest, CopyValuesReplacesAllValues) {
    Configuration other("Other", nullptr);
    StringParameter source("S", "", "a", false, &other);
    source.setParam("b", 50);
    StringParameter target("S", "", "x", false, &config);
    target.setParam("y", 0);
    ParameterListener listener(target);
    target.copyValues(source);
    EXPECT_THAT(valuesOf(target), ElementsAre(Pair(50, "b"), Pair(100, "a")));
    // The removal, then the new values in ascending order, the default last.
    EXPECT_THAT(listener.takePriorities(), ElementsAre(0, 50, 100));
    EXPECT_THAT(valuesOf(source), ElementsAre(Pair(50, "b"), Pair(100, "a")));
}

TEST_F(ConfigParameterTest, CopyValuesRemovesInAscendingOrder) {
    Configuration other("Other", nullptr);
    const StringParameter source("S", "", "x", false, &other);
    StringParameter target("S", "", "x", false, &config);
    for (const int priority : {70, 0, -3, 50})
        target.setParam("y", priority);
    ParameterListener listener(target);
    target.copyValues(source);
    EXPECT_THAT(listener.takePriorities(), ElementsAre(-3, 0, 50, 70)); // an equal default: silent
}

TEST_F(ConfigParameterTest, CopyValuesAnnouncesUnchangedValuesTwice) {
    Configuration other("Other", nullptr);
    StringParameter source("S", "", "a", false, &other);
    source.setParam("b", 50);
    StringParameter target("S", "", "a", false, &config);
    target.setParam("b", 50);
    ParameterListener listener(target);
    std::vector<std::string> seen;
    listener.onChange = [&] { seen.push_back(valueOf(target)); };
    target.copyValues(source);
    EXPECT_THAT(listener.takePriorities(), ElementsAre(50, 50));
    EXPECT_THAT(seen, ElementsAre("a", "b")); // the default meanwhile
}

TEST_F(ConfigParameterTest, CopyValuesOfItselfDoesNothing) {
    StringParameter param("S", "", "a", false, &config);
    param.setParam("b", 50);
    ParameterListener listener(param);
    param.copyValues(param);
    EXPECT_THAT(valuesOf(param), ElementsAre(Pair(50, "b"), Pair(100, "a")));
    EXPECT_THAT(listener.takePriorities(), IsEmpty());
}

TEST_F(ConfigParameterTest, CopyValuesSkipsTextsThatTheKindRejects) {
    const LogSetting setting("ConfigParameter:recorder:0");
    Configuration other("Other", nullptr);
    StringParameter source("S", "", "no", false, &other);
    source.setParam("maybe", 50);
    source.setParam("", 0);
    BoolParameter target("S", "", true, false, &config);
    target.copyValues(source);
    EXPECT_THAT(valuesOf(target), ElementsAre(Pair(0, "1"), Pair(100, "0"))); // "" is true
    EXPECT_THAT(recorder.takeTexts(), ElementsAre("Bool parameter S: invalid value 'maybe'"));
}

TEST_F(ConfigParameterTest, CopyValuesPassesBytesAsHexadecimalText) {
    Configuration other("Other", nullptr);
    const unsigned char bytes[] = {0xAB, 0x01};
    const plat::BinaryParameter source("S", "", {bytes, 2}, &other);
    StringParameter target("S", "", "x", false, &config);
    target.copyValues(source);
    EXPECT_EQ(valueOf(target), "ab01");
}

TEST_F(ConfigParameterTest, CopyValuesPassesOnWhatAKindThrows) {
    Configuration other("Other", nullptr);
    StringParameter source("S", "", "a", false, &other);
    source.setParam("b", 0);
    source.setValue(String("\xFF"), 50);
    StringParameter target("S", "", "x", false, &config);
    EXPECT_THROW(target.copyValues(source), plat::BadUtf8);
    EXPECT_THAT(valuesOf(target), ElementsAre(Pair(0, "b"), Pair(100, "x")));
}

} // namespace
