#include "plat/Configuration.h"

#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/ParameterListener.h"
#include "lib1/plat/RecordingLogger.h"
#include "plat/BadUtf8.h"
#include "plat/BinaryParameter.h"
#include "plat/BoolParameter.h"
#include "plat/Exception.h"
#include "plat/IntParameter.h"
#include "plat/ParameterAlias.h"
#include "plat/ParameterIterator.h"
#include "plat/S64Parameter.h"
#include "plat/StringParameter.h"

namespace {

using plat::BoolParameter;
using plat::ConfigParameter;
using plat::Configuration;
using plat::IntParameter;
using plat::ParameterAlias;
using plat::String;
using plat::StringParameter;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Line = RecordingLogger::Line;

RecordingLogger recorder("recorder");

/// The names of a configuration's own parameters and its descendants', in the order of a walk.
std::vector<std::string> namesOf(const Configuration& config) {
    std::vector<std::string> names;
    for (plat::ParameterIterator it(&config, true); it.param != nullptr; it.next())
        names.emplace_back(it.param->getName());
    return names;
}

struct ConfigurationTest : testing::Test {
    Configuration config{"Test", nullptr};
    Configuration child{"Child", nullptr};
    Configuration grandchild{"Grandchild", nullptr};

    void nest() {
        config.registerChild(&child, true);
        child.registerChild(&grandchild, true);
    }
};

TEST_F(ConfigurationTest, KeepsACopyOfItsName) {
    char name[] = "abc";
    const Configuration named(name, nullptr);
    name[0] = 'x';
    EXPECT_STREQ(named.getName(), "abc");
}

TEST(Configuration, GlobalOneIsAlwaysTheSame) {
    EXPECT_EQ(Configuration::global(), Configuration::global());
    EXPECT_STREQ(Configuration::global()->getName(), "Global");
}

// Looking up

TEST_F(ConfigurationTest, FindsNamesOfEitherCase) {
    IntParameter param("Width", "", 1, false, &config);
    EXPECT_EQ(config.get("Width"), &param);
    EXPECT_EQ(config.get("wIDTH"), &param);
    EXPECT_EQ(config.get("Widt"), nullptr);
    EXPECT_EQ(config.get("Width2"), nullptr);
    EXPECT_EQ(config.get(""), nullptr);
    EXPECT_EQ(config.get(nullptr), nullptr);
}

TEST_F(ConfigurationTest, TellsNamesOfOneHashApart) {
    ASSERT_EQ(plat::strCaseHash("b@"), plat::strCaseHash("b`"));
    IntParameter first("b@", "", 1, false, &config);
    IntParameter second("b`", "", 2, false, &config);
    EXPECT_EQ(config.get("B@"), &first);
    EXPECT_EQ(config.get("B`"), &second);
}

TEST_F(ConfigurationTest, FindsTheNewestOfEqualNames) {
    const IntParameter older("Width", "", 1, false, &config);
    IntParameter newer("WIDTH", "", 2, false, &config);
    EXPECT_EQ(config.get("width"), &newer);
}

TEST_F(ConfigurationTest, FindsOwnParametersBeforeThoseOfChildren) {
    nest();
    const IntParameter theirs("A", "", 1, false, &child);
    IntParameter own("A", "", 2, false, &config);
    EXPECT_EQ(config.get("a"), &own);
}

TEST_F(ConfigurationTest, LooksIntoAChildsChildrenBeforeTheNextChild) {
    nest();
    Configuration second("Second", nullptr);
    config.registerChild(&second, true);
    IntParameter deep("A", "", 1, false, &grandchild);
    const IntParameter late("A", "", 2, false, &second);
    EXPECT_EQ(config.get("a"), &deep);
    EXPECT_EQ(second.get("A"), &late);
}

TEST_F(ConfigurationTest, GetOrThrowThrowsForUnknownNames) {
    nest();
    IntParameter param("Width", "", 1, false, &grandchild);
    EXPECT_EQ(config.getOrThrow("width"), &param);
    try {
        config.getOrThrow("Height");
        ADD_FAILURE() << "no exception";
    } catch (const plat::Exception& failure) {
        EXPECT_STREQ(failure.message.get(), "Parameter Height not found");
    }
    EXPECT_THROW(config.getOrThrow(nullptr), plat::Exception);
}

TEST_F(ConfigurationTest, HasEachChildOnce) {
    config.registerChild(&child, true);
    config.registerChild(&grandchild, true);
    config.registerChild(&child, true);
    const IntParameter a("A", "", 1, false, &child);
    const IntParameter b("B", "", 1, false, &grandchild);
    EXPECT_THAT(namesOf(config), ElementsAre("A", "B"));
    config.registerChild(&child, false);
    EXPECT_THAT(namesOf(config), ElementsAre("B"));
    config.registerChild(&child, false);
    EXPECT_THAT(namesOf(config), ElementsAre("B"));
    config.registerChild(&child, true); // behind the other one now
    EXPECT_THAT(namesOf(config), ElementsAre("B", "A"));
}

// Setting

TEST_F(ConfigurationTest, SetsByName) {
    IntParameter param("Width", "", 1, false, &config);
    EXPECT_TRUE(config.set("width", "80", 50));
    EXPECT_TRUE(config.set("WIDTH", "81", 0));
    EXPECT_FALSE(config.set("height", "80", 50));
    EXPECT_FALSE(config.set("width", "wide", 50));
    EXPECT_FALSE(config.set(nullptr, "80", 50));
    EXPECT_THAT(valuesOf(param), ElementsAre(Pair(0, "81"), Pair(50, "80"), Pair(100, "1")));
}

TEST_F(ConfigurationTest, SetsByTheFrontOfAText) {
    IntParameter param("Width", "", 1, false, &config);
    EXPECT_TRUE(config.set("widthless", 5, "80", 50));
    EXPECT_FALSE(config.set("widthless", 4, "81", 50));
    EXPECT_FALSE(config.set("widthless", 6, "82", 50));
    EXPECT_FALSE(config.set("widthless", 0, "83", 50));
    EXPECT_TRUE(config.set("width", 99, "84", 0)); // the text ends before that
    EXPECT_THAT(valuesOf(param), ElementsAre(Pair(0, "84"), Pair(50, "80"), Pair(100, "1")));
}

TEST_F(ConfigurationTest, OwnParameterThatRefusesEndsTheSearch) {
    nest();
    IntParameter own("A", "", 1, false, &config);
    IntParameter theirs("A", "", 1, false, &child);
    EXPECT_TRUE(config.set("a", "2", 50));
    EXPECT_FALSE(config.set("a", "x", 50));
    EXPECT_EQ(own.value(), 2);
    EXPECT_EQ(theirs.value(), 1);
}

TEST_F(ConfigurationTest, FirstChildThatSucceedsEndsTheSearch) {
    Configuration second("Second", nullptr);
    Configuration third("Third", nullptr);
    config.registerChild(&child, true);
    config.registerChild(&second, true);
    config.registerChild(&third, true);
    IntParameter refusing("A", "", 1, false, &child);
    StringParameter taking("A", "", "1", false, &second);
    StringParameter late("A", "", "1", false, &third);
    EXPECT_TRUE(config.set("a", "x", 50));
    EXPECT_EQ(refusing.value(), 1);
    EXPECT_EQ(valueOf(taking), "x");
    EXPECT_EQ(valueOf(late), "1");
}

TEST_F(ConfigurationTest, SetsInGrandchildren) {
    nest();
    IntParameter deep("A", "", 1, false, &grandchild);
    EXPECT_TRUE(config.set("a", "2", 50));
    EXPECT_EQ(deep.value(), 2);
}

TEST_F(ConfigurationTest, PassesOnWhatAParameterThrows) {
    const StringParameter param("A", "", "", false, &config);
    EXPECT_THROW(config.set("a", "\xFF", 50), plat::BadUtf8);
    EXPECT_THROW(config.set("a=\xFF", 50), plat::BadUtf8);
}

struct WordRow {
    const char* name;
    const char* word;
    bool isSet;
    const char* flag; // what the parameters hold afterwards
    const char* text;
    friend void PrintTo(const WordRow& row, std::ostream* out) {
        *out << (row.word == nullptr ? "null" : row.word);
    }
};

class SettingWord : public ConfigurationTest, public testing::WithParamInterface<WordRow> {};

TEST_P(SettingWord, SetsWhatItSays) {
    nest();
    BoolParameter flag("Verbose", "", false, false, &config);
    StringParameter text("Text", "", "-", false, &grandchild);
    EXPECT_EQ(config.set(GetParam().word, 50), GetParam().isSet);
    EXPECT_EQ(valueOf(flag), GetParam().flag);
    EXPECT_EQ(valueOf(text), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(Words, SettingWord,
                         testing::Values(WordRow{"OneDash", "-Verbose", true, "1", "-"},
                                         WordRow{"TwoDashes", "--verbose", true, "1", "-"},
                                         WordRow{"ThreeDashes", "---verbose", false, "0", "-"},
                                         WordRow{"NoDash", "verbose", false, "0", "-"},
                                         WordRow{"Value", "verbose=1", true, "1", "-"},
                                         WordRow{"ValueOff", "verbose=0", true, "0", "-"},
                                         WordRow{"ValueEmpty", "VERBOSE=", true, "1", "-"},
                                         WordRow{"OneDashValue", "-verbose=on", true, "1", "-"},
                                         WordRow{"TwoDashesValue", "--verbose=on", true, "1", "-"},
                                         WordRow{"ValueRefused", "verbose=2", false, "0", "-"},
                                         WordRow{"FirstEqualsSign", "text=b=c", true, "0", "b=c"},
                                         WordRow{"TextEmpty", "-text=", true, "0", ""},
                                         WordRow{"TextNeedsAValue", "-text", false, "0", "-"},
                                         WordRow{"BlankInName", "text =b", false, "0", "-"},
                                         WordRow{"UnknownName", "-other=1", false, "0", "-"},
                                         WordRow{"Dash", "-", false, "0", "-"},
                                         WordRow{"Dashes", "--", false, "0", "-"},
                                         WordRow{"Equals", "=", false, "0", "-"},
                                         WordRow{"DashEquals", "-=x", false, "0", "-"},
                                         WordRow{"Empty", "", false, "0", "-"},
                                         WordRow{"Null", nullptr, false, "0", "-"}),
                         [](const auto& row) { return row.param.name; });

// Copying

TEST_F(ConfigurationTest, CopyIsFlatAndInReverse) {
    nest();
    const IntParameter a("A", "", 1, false, &config);
    const IntParameter b("B", "", 2, false, &config);
    const IntParameter c("C", "", 3, false, &child);
    const IntParameter d("D", "", 4, false, &grandchild);
    ASSERT_THAT(namesOf(config), ElementsAre("B", "A", "C", "D"));
    Configuration copy(config);
    EXPECT_THAT(namesOf(copy), ElementsAre("D", "C", "A", "B"));
    EXPECT_STREQ(copy.getName(), "Test");
    EXPECT_TRUE(copy.set("d", "5", 50));
    EXPECT_EQ(valueOf(*copy.get("D")), "5");
    EXPECT_EQ(valueOf(d), "4"); // leak checkers watch that the copy deletes its clones
    config.registerChild(&child, false);
    EXPECT_THAT(namesOf(copy), ElementsAre("D", "C", "A", "B"));
}

TEST_F(ConfigurationTest, CopyFindsAChildsParameterBeforeItsParents) {
    nest();
    const StringParameter own("A", "", "own", false, &config);
    const StringParameter theirs("A", "", "theirs", false, &child);
    const Configuration copy(config);
    EXPECT_EQ(valueOf(*config.get("a")), "own");
    EXPECT_EQ(valueOf(*copy.get("a")), "theirs");
}

TEST_F(ConfigurationTest, CopySharesTheAliasesOfItsSourceOnly) {
    nest();
    IntParameter param("New", "", 1, false, &config);
    const ParameterAlias alias("Old", &param, &config);
    const ParameterAlias childAlias("Older", &param, &child);
    Configuration copy(config);
    EXPECT_TRUE(copy.set("old", "2", 50));
    EXPECT_FALSE(copy.set("older", "3", 50));
    EXPECT_EQ(valueOf(*copy.get("New")), "2");
    EXPECT_EQ(param.value(), 1);
}

TEST_F(ConfigurationTest, CopyKeepsKindsAndAllValues) {
    BoolParameter flag("Flag", "", false, true, &config);
    flag.setParam("on", 50);
    const plat::S64Parameter big("Big", "", 5, false, &config);
    ParameterListener listener(flag);
    const Configuration copy(config);
    EXPECT_TRUE(copy.get("Flag")->isBool());
    EXPECT_TRUE(copy.get("Flag")->isHidden());
    EXPECT_THAT(valuesOf(*copy.get("Flag")), ElementsAre(Pair(50, "1"), Pair(100, "0")));
    EXPECT_TRUE(copy.get("Flag")->callbacks.empty());
    EXPECT_TRUE(copy.get("Big")->setParam("any text", 50)); // it has become one
}

/// Refuses to be copied, after it was registered with the copy.
class UniqueParameter : public BoolParameter {
public:
    using BoolParameter::BoolParameter;
    ConfigParameter* clone(Configuration* into) override {
        return new UniqueParameter(*this, into);
    }

private:
    UniqueParameter(const UniqueParameter& source, Configuration* into)
        : BoolParameter(source, into) {
        throw std::string("unique");
    }
};

TEST_F(ConfigurationTest, FailedCopyDeletesTheClonesThatWereMade) {
    const UniqueParameter unique("Unique", "", false, false, &config);
    const StringParameter text("Text", "", "a", false, &config); // leak checkers watch its clone
    EXPECT_THROW(Configuration{config}, std::string);
    EXPECT_THAT(namesOf(config), ElementsAre("Text", "Unique"));
}

TEST_F(ConfigurationTest, ClearEmptiesTheList) {
    IntParameter param("A", "", 1, false, &config);
    Configuration copy(config);
    copy.clear();
    EXPECT_EQ(copy.get("A"), nullptr);
    config.clear();
    EXPECT_EQ(config.get("A"), nullptr);
    EXPECT_EQ(param.value(), 1); // not owned
    const IntParameter later("B", "", 1, false, &config);
    EXPECT_THAT(namesOf(config), ElementsAre("B"));
}

// Comparing

TEST_F(ConfigurationTest, CopyValuesCopiesAllValuesOfEqualNames) {
    Configuration other("Other", nullptr);
    IntParameter a("A", "", 1, false, &config);
    IntParameter b("B", "", 2, false, &config);
    IntParameter c("C", "", 3, false, &config);
    b.setParam(9, 0);
    IntParameter otherB("b", "", 20, false, &other);
    IntParameter otherA("a", "", 10, false, &other); // in another order
    IntParameter otherD("d", "", 40, false, &other);
    otherB.setParam(21, 50);
    config.copyValues(&other, false);
    EXPECT_THAT(valuesOf(a), ElementsAre(Pair(100, "10")));
    EXPECT_THAT(valuesOf(b), ElementsAre(Pair(50, "21"), Pair(100, "20")));
    EXPECT_THAT(valuesOf(c), ElementsAre(Pair(100, "3")));
}

TEST_F(ConfigurationTest, CopyValuesMatchesEqualNamesInTheOrderOfTheLists) {
    Configuration other("Other", nullptr);
    IntParameter older("A", "", 1, false, &config);
    IntParameter newer("A", "", 2, false, &config);
    const IntParameter otherOlder("A", "", 10, false, &other);
    const IntParameter otherNewer("A", "", 20, false, &other);
    config.copyValues(&other, false);
    EXPECT_EQ(older.value(), 10);
    EXPECT_EQ(newer.value(), 20);
}

TEST_F(ConfigurationTest, CopyValuesReachesChildrenButNoDeeper) {
    nest();
    Configuration other("Other", nullptr);
    Configuration otherChild("OtherChild", nullptr);
    other.registerChild(&otherChild, true);
    IntParameter own("A", "", 1, false, &config);
    IntParameter inChild("A", "", 1, false, &child);
    IntParameter deep("A", "", 1, false, &grandchild);
    IntParameter b("B", "", 1, false, &config);
    const IntParameter otherA("A", "", 2, false, &other);
    const IntParameter otherB("B", "", 2, false, &otherChild); // never looked at
    config.copyValues(&other, false);
    EXPECT_EQ(own.value(), 2);
    EXPECT_EQ(inChild.value(), 1);
    config.copyValues(&other, true);
    EXPECT_EQ(inChild.value(), 2);
    EXPECT_EQ(deep.value(), 1);
    EXPECT_EQ(b.value(), 1);
}

TEST_F(ConfigurationTest, CopyValuesOfItselfChangesNothing) {
    IntParameter param("A", "", 1, false, &config);
    param.setParam(2, 50);
    ParameterListener listener(param);
    config.copyValues(&config, true);
    EXPECT_THAT(listener.take(), IsEmpty());
    EXPECT_EQ(param.value(), 2);
}

TEST_F(ConfigurationTest, MergeMovesTheValueInForceOnly) {
    nest();
    Configuration other("Other", nullptr);
    IntParameter a("A", "", 1, false, &config);
    IntParameter b("B", "", 1, false, &config);
    IntParameter c("C", "", 1, false, &config);
    IntParameter inChild("A", "", 1, false, &child);
    a.setParam(5, 50);
    IntParameter otherA("a", "", 2, false, &other);
    const IntParameter otherB("b", "", 3, false, &other);
    const StringParameter otherC("c", "", "x", false, &other); // refused there
    otherA.setParam(6, 70);
    otherA.setParam(7, 20);
    config.merge(&other);
    EXPECT_THAT(valuesOf(a), ElementsAre(Pair(20, "7"), Pair(50, "5"), Pair(100, "1")));
    EXPECT_THAT(valuesOf(b), ElementsAre(Pair(100, "3")));
    EXPECT_THAT(valuesOf(c), ElementsAre(Pair(100, "1")));
    EXPECT_EQ(inChild.value(), 1);
}

TEST_F(ConfigurationTest, MergeDiffsSetsWhatDiffers) {
    Configuration a("A", nullptr);
    Configuration aChild("AChild", nullptr);
    Configuration b("B", nullptr);
    a.registerChild(&aChild, true);
    IntParameter changed("Changed", "", 1, false, &a);
    changed.setParam(2, 50);
    const IntParameter changedThere("changed", "", 1, false, &b);
    const IntParameter same("Same", "", 7, false, &a);
    IntParameter sameThere("Same", "", 8, false, &b);
    sameThere.setParam(7, 0); // the texts count, not the priorities
    const IntParameter missing("Missing", "", 9, false, &a);
    IntParameter deep("Deep", "", 3, false, &aChild);
    deep.setParam(4, 0);
    const IntParameter deepThere("Deep", "", 3, false, &b);
    IntParameter myChanged("CHANGED", "", 0, false, &config);
    IntParameter mySame("Same", "", 0, false, &config);
    IntParameter myMissing("Missing", "", 0, false, &config);
    IntParameter myDeep("Deep", "", 0, false, &config);
    config.mergeDiffs(&a, &b);
    EXPECT_THAT(valuesOf(myChanged), ElementsAre(Pair(50, "2"), Pair(100, "0")));
    EXPECT_THAT(valuesOf(mySame), ElementsAre(Pair(100, "0")));
    EXPECT_THAT(valuesOf(myMissing), ElementsAre(Pair(100, "0")));
    EXPECT_THAT(valuesOf(myDeep), ElementsAre(Pair(0, "4"), Pair(100, "0")));
}

TEST_F(ConfigurationTest, MergeDiffsComparesBytes) {
    Configuration a("A", nullptr);
    Configuration b("B", nullptr);
    const StringParameter upper("T", "", "X", false, &a);
    const StringParameter lower("T", "", "x", false, &b);
    StringParameter mine("T", "", "", false, &config);
    config.mergeDiffs(&a, &b);
    EXPECT_EQ(valueOf(mine), "X");
}

TEST_F(ConfigurationTest, MergeDiffsGoesThroughAliases) {
    Configuration a("A", nullptr);
    Configuration b("B", nullptr);
    const IntParameter changed("Old", "", 2, false, &a);
    const IntParameter changedThere("Old", "", 1, false, &b);
    IntParameter mine("New", "", 0, false, &config);
    const ParameterAlias alias("Old", &mine, &config);
    config.mergeDiffs(&a, &b);
    EXPECT_EQ(mine.value(), 2);
}

TEST_F(ConfigurationTest, SubsetNeedsEveryTextInTheOther) {
    nest();
    Configuration other("Other", nullptr);
    Configuration otherChild("OtherChild", nullptr);
    other.registerChild(&otherChild, true);
    EXPECT_TRUE(config.subset(&other));
    IntParameter a("A", "", 1, false, &config);
    EXPECT_FALSE(config.subset(&other));
    EXPECT_TRUE(other.subset(&config));
    IntParameter otherA("a", "", 2, false, &otherChild);
    EXPECT_FALSE(config.subset(&other));
    otherA.setParam(1, 0);
    EXPECT_TRUE(config.subset(&other));
    const IntParameter deep("D", "", 1, false, &grandchild);
    EXPECT_FALSE(config.subset(&other));
    EXPECT_TRUE(other.subset(&config));
}

// Reporting

struct ReportTest : ConfigurationTest {
    std::vector<Line> report(const char* setting = "Configuration:recorder:100") const {
        const LogSetting applied(setting);
        recorder.take();
        config.logReport();
        return recorder.take();
    }
};

TEST_F(ReportTest, SaysWhereValuesComeFrom) {
    StringParameter both("both", "", "d", false, &config);
    both.setParam("user", 50);
    both.setParam("policy", 0);
    StringParameter policy("policy", "", "d", false, &config);
    policy.setParam("p", 0);
    StringParameter preference("preference", "", "d", false, &config);
    preference.setParam("u", 50);
    const StringParameter plain("plain", "", "d", false, &config);
    EXPECT_THAT(report(),
                ElementsAre(Line{30, "Configuration", "both=policy (Policy overriding preference)"},
                            Line{30, "Configuration", "policy=p (Policy)"},
                            Line{30, "Configuration", "preference=u (Preference)"},
                            Line{100, "Configuration", "plain=d (Default)"}));
    EXPECT_EQ(report("Configuration:recorder:30").size(), 3U);
}

TEST_F(ReportTest, LabelsDependOnTheThreePrioritiesOnly) {
    StringParameter above("above", "", "d", false, &config);
    above.setParam("u", 50);
    above.setParam("ten", 10);
    StringParameter beyond("beyond", "", "d", false, &config);
    beyond.setParam("p", 0);
    beyond.setParam("minus", -1);
    StringParameter other("other", "", "d", false, &config);
    other.setParam("seventy", 70);
    EXPECT_THAT(report(), ElementsAre(Line{30, "Configuration", "beyond=minus (Policy)"},
                                      Line{30, "Configuration", "above=ten (Preference)"},
                                      Line{100, "Configuration", "other=seventy (Default)"}));
}

TEST_F(ReportTest, SortsByPriorityThenName) {
    nest();
    StringParameter b("b", "", "", false, &config);
    const StringParameter upperC("C", "", "", false, &config);
    const StringParameter a("a", "", "", false, &grandchild);
    StringParameter z("z", "", "", false, &child);
    z.setParam("", 0);
    std::vector<std::string> texts;
    for (const Line& line : report())
        texts.push_back(line.text);
    EXPECT_THAT(texts, ElementsAre("z= (Policy)", "a= (Default)", "b= (Default)", "C= (Default)"));
}

TEST_F(ReportTest, KeepsTheOrderOfTheWalkForEqualNames) {
    nest();
    const StringParameter theirs("A", "", "child", false, &child);
    const StringParameter older("a", "", "older", false, &config);
    const StringParameter newer("A", "", "newer", false, &config);
    std::vector<std::string> texts;
    for (const Line& line : report())
        texts.push_back(line.text);
    EXPECT_THAT(texts, ElementsAre("A=newer (Default)", "a=older (Default)", "A=child (Default)"));
}

TEST_F(ReportTest, LeavesOutInternalNamesButNotHiddenOnes) {
    const StringParameter internal("_internal", "", "", false, &config);
    const StringParameter hidden("hidden", "", "h", true, &config);
    EXPECT_THAT(report(), ElementsAre(Line{100, "Configuration", "hidden=h (Default)"}));
}

TEST_F(ReportTest, DoesNotTellBytes) {
    const unsigned char bytes[] = {1};
    plat::BinaryParameter param("key", "", {bytes, 1}, &config);
    param.setParam("02", 50);
    EXPECT_THAT(report(), ElementsAre(Line{30, "Configuration", "key=<binary> (Preference)"}));
}

TEST_F(ReportTest, NullTextIsEmpty) {
    StringParameter param("text", "", "d", false, &config);
    param.setValue(String(), 50);
    EXPECT_THAT(report(), ElementsAre(Line{30, "Configuration", "text= (Preference)"}));
}

} // namespace
