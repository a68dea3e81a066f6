#include "plat/ParameterAlias.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/ParameterListener.h"
#include "lib1/plat/VirtualSlot.h"
#include "plat/BoolParameter.h"
#include "plat/Configuration.h"
#include "plat/IntParameter.h"
#include "plat/StringParameter.h"

namespace {

using plat::BoolParameter;
using plat::Configuration;
using plat::IntParameter;
using plat::ParameterAlias;
using plat::String;
using plat::StringParameter;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Targets = std::map<String, String, plat::strcasecmp_t>;
using Store = std::map<std::string, std::string>;

/// What an alias says that a value stands for.
std::vector<std::pair<std::string, std::string>> targetsOf(ParameterAlias& alias,
                                                           const char* value) {
    Targets targets;
    EXPECT_TRUE(alias.handleAlias("any", value, &targets));
    std::vector<std::pair<std::string, std::string>> texts;
    for (const auto& [name, text] : targets)
        texts.emplace_back(name.str(), text.get() == nullptr ? "(null)" : text.get());
    return texts;
}

/// An alias whose answer is the test's.
class ScriptedAlias : public ParameterAlias {
public:
    ScriptedAlias()
        : ParameterAlias(static_cast<const char*>(nullptr), static_cast<const char*>(nullptr),
                         nullptr) {}

    bool handleAlias(const char* aliasName, const char* value, Targets* targets) override {
        names.emplace_back(aliasName);
        return answer(value, targets);
    }

    std::function<bool(const char*, Targets*)> answer;
    std::vector<std::string> names; ///< under which it was asked
};

/// Settings in a map whose keys have a case; every call is kept.
class MapStore : public Configuration::CanonicalizeCallback {
public:
    explicit MapStore(Store content) : settings(std::move(content)) {}

    bool get(const char* name, String* value) override {
        calls.push_back(std::string("get ") + name);
        const auto found = settings.find(name);
        if (found == settings.end())
            return false;
        *value = String(found->second.c_str());
        return true;
    }
    void set(const char* name, const char* value) override {
        calls.push_back(std::string("set ") + name);
        settings[name] = value == nullptr ? "(null)" : value;
    }
    void remove(const char* name) override {
        calls.push_back(std::string("remove ") + name);
        settings.erase(name);
    }

    Store settings;
    std::vector<std::string> calls;
};

struct ParameterAliasTest : testing::Test {
    Configuration config{"Test", nullptr};

    Store canonical(const Store& content) {
        MapStore store(content);
        config.canonicalize(&store);
        return store.settings;
    }
};

TEST(ParameterAlias, KeepsTheOrderOfItsVirtualOperations) {
    EXPECT_EQ(virtualSlot(&ParameterAlias::handleAlias), 2U);
    EXPECT_EQ(virtualSlot(&Configuration::CanonicalizeCallback::get), 2U);
    EXPECT_EQ(virtualSlot(&Configuration::CanonicalizeCallback::set), 3U);
    EXPECT_EQ(virtualSlot(&Configuration::CanonicalizeCallback::remove), 4U);
}

TEST(ParameterAlias, PassesItsValueToEveryName) {
    ParameterAlias alias("b", "a", "c");
    EXPECT_THAT(targetsOf(alias, "5"), ElementsAre(Pair("a", "5"), Pair("b", "5"), Pair("c", "5")));
    EXPECT_THAT(targetsOf(alias, nullptr),
                ElementsAre(Pair("a", "(null)"), Pair("b", "(null)"), Pair("c", "(null)")));
}

TEST(ParameterAlias, LeavesOutNullNames) {
    ParameterAlias alias(static_cast<const char*>(nullptr), "a", nullptr);
    EXPECT_THAT(targetsOf(alias, "5"), ElementsAre(Pair("a", "5")));
    ParameterAlias none(static_cast<const char*>(nullptr), static_cast<const char*>(nullptr),
                        nullptr);
    EXPECT_THAT(targetsOf(none, "5"), IsEmpty());
}

TEST(ParameterAlias, CopiesTheNamesThatAreAdded) {
    ParameterAlias alias("a", "A", nullptr);
    char name[] = "z";
    alias.addName(name);
    name[0] = 'x';
    EXPECT_THAT(targetsOf(alias, "5"), ElementsAre(Pair("a", "5"), Pair("z", "5")));
}

TEST_F(ParameterAliasTest, SetsItsTarget) {
    IntParameter param("New", "", 1, false, &config);
    const ParameterAlias alias("Old", &param, &config);
    EXPECT_TRUE(config.set("old", "5", 50));
    EXPECT_EQ(param.getPriority(), 50);
    EXPECT_EQ(param.value(), 5);
    EXPECT_TRUE(config.set("-OLD=6", 0));
    EXPECT_EQ(param.value(), 6);
    EXPECT_FALSE(config.set("old", "x", 50));
    EXPECT_EQ(config.get("old"), nullptr); // lookups ignore aliases
}

TEST_F(ParameterAliasTest, RegistersInTheGlobalConfigurationIfNoneIsGiven) {
    static IntParameter param("ParameterAliasTestNew", "", 1);
    static const ParameterAlias alias("ParameterAliasTestOld", &param, nullptr);
    EXPECT_TRUE(Configuration::global()->set("parameteraliastestold", "5", 50));
    EXPECT_EQ(param.value(), 5);
}

TEST_F(ParameterAliasTest, SucceedsIfOneTargetTakesTheValue) {
    ParameterAlias alias("a", "b", nullptr);
    config.addAlias("both", &alias);
    EXPECT_FALSE(config.set("both", "1", 50));
    IntParameter a("a", "", 0, false, &config);
    EXPECT_TRUE(config.set("both", "1", 50));
    IntParameter b("b", "", 0, false, &config);
    EXPECT_TRUE(config.set("both", "2", 50));
    EXPECT_EQ(a.value(), 2);
    EXPECT_EQ(b.value(), 2);
    EXPECT_FALSE(config.set("both", "x", 50));
}

TEST_F(ParameterAliasTest, SetsTheOtherTargetsAfterARefusal) {
    ParameterAlias alias("a", "b", nullptr);
    config.addAlias("both", &alias);
    const IntParameter a("a", "", 0, false, &config);
    StringParameter b("b", "", "", false, &config);
    EXPECT_TRUE(config.set("both", "x", 50));
    EXPECT_EQ(valueOf(b), "x");
}

TEST_F(ParameterAliasTest, PassesNullOn) {
    ParameterAlias alias("flag", "text", nullptr);
    config.addAlias("both", &alias);
    BoolParameter flag("flag", "", false, false, &config);
    StringParameter text("text", "", "-", false, &config);
    EXPECT_TRUE(config.set("-both", 50));
    EXPECT_TRUE(flag.value());
    EXPECT_EQ(valueOf(text), "-");
}

TEST_F(ParameterAliasTest, ShadowsAParameterOfItsName) {
    IntParameter shadowed("Name", "", 1, false, &config);
    IntParameter target("Target", "", 1, false, &config);
    const ParameterAlias alias("name", &target, &config);
    EXPECT_TRUE(config.set("Name", "5", 50));
    EXPECT_EQ(shadowed.value(), 1);
    EXPECT_EQ(target.value(), 5);
}

TEST_F(ParameterAliasTest, RefusalEndsTheSearch) {
    IntParameter shadowed("Name", "", 1, false, &config);
    ScriptedAlias alias;
    alias.answer = [](const char*, Targets* targets) {
        (*targets)[String("Name")] = String("7"); // not looked at
        return false;
    };
    config.addAlias("name", &alias);
    EXPECT_FALSE(config.set("NAME", "5", 50));
    EXPECT_EQ(shadowed.value(), 1);
    EXPECT_THAT(alias.names, ElementsAre("NAME")); // as the caller wrote it
}

TEST_F(ParameterAliasTest, MayTranslateItsValue) {
    IntParameter param("Level", "", 1, false, &config);
    ScriptedAlias alias;
    alias.answer = [](const char* value, Targets* targets) {
        (*targets)[String("level")] = String(value == nullptr ? "9" : "0");
        return true;
    };
    config.addAlias("loud", &alias);
    EXPECT_TRUE(config.set("--loud", 50));
    EXPECT_EQ(param.value(), 9);
    EXPECT_TRUE(config.set("loud=off", 50));
    EXPECT_EQ(param.value(), 0);
}

TEST_F(ParameterAliasTest, AppliesTargetsInTheOrderOfTheirNames) {
    StringParameter a("a", "", "", false, &config);
    StringParameter b("b", "", "", false, &config);
    StringParameter c("C", "", "", false, &config);
    ParameterListener listener(a);
    b.callbacks.push_back(&listener);
    c.callbacks.push_back(&listener);
    ParameterAlias alias("C", "b", "a");
    config.addAlias("all", &alias);
    config.set("all", "x", 50);
    EXPECT_THAT(listener.take(), ElementsAre(Pair("a", 50), Pair("b", 50), Pair("C", 50)));
}

TEST_F(ParameterAliasTest, TargetMayBeAnAlias) {
    IntParameter param("c", "", 0, false, &config);
    const ParameterAlias inner("b", &param, &config);
    ParameterAlias outer("b", static_cast<const char*>(nullptr), nullptr);
    config.addAlias("a", &outer);
    EXPECT_TRUE(config.set("a", "5", 50));
    EXPECT_EQ(param.value(), 5);
}

TEST_F(ParameterAliasTest, TargetMayBeInAChildAndSoMayTheAlias) {
    Configuration child("Child", nullptr);
    config.registerChild(&child, true);
    IntParameter param("c", "", 0, false, &child);
    const ParameterAlias own("a", &param, &config);
    const ParameterAlias theirs("b", &param, &child);
    EXPECT_TRUE(config.set("a", "5", 50));
    EXPECT_EQ(param.value(), 5);
    EXPECT_TRUE(config.set("b", "6", 50));
    EXPECT_EQ(param.value(), 6);
    EXPECT_FALSE(child.set("a", "7", 50));
}

TEST_F(ParameterAliasTest, LaterOneReplacesTheNameInAnyCase) {
    IntParameter first("First", "", 0, false, &config);
    IntParameter second("Second", "", 0, false, &config);
    const ParameterAlias old("Old", &first, &config);
    const ParameterAlias replacing("OLD", &second, &config);
    EXPECT_TRUE(config.set("old", "5", 50));
    EXPECT_EQ(first.value(), 0);
    EXPECT_EQ(second.value(), 5);
}

TEST_F(ParameterAliasTest, OneThatNamesItselfSetsNothing) {
    IntParameter param("Name", "", 0, false, &config);
    const ParameterAlias alias("name", &param, &config);
    EXPECT_FALSE(config.set("name", "5", 50));
    EXPECT_FALSE(config.set("-name", 50));
    EXPECT_EQ(param.value(), 0);
}

TEST_F(ParameterAliasTest, CycleSetsNothing) {
    ParameterAlias first("b", static_cast<const char*>(nullptr), nullptr);
    ParameterAlias second("a", "b", nullptr);
    config.addAlias("a", &first);
    config.addAlias("B", &second);
    EXPECT_FALSE(config.set("a", "5", 50));
    EXPECT_FALSE(config.set("b", nullptr, 50));
}

TEST_F(ParameterAliasTest, CycleLeavesTheOtherTargets) {
    IntParameter param("c", "", 0, false, &config);
    ParameterAlias alias("a", "c", nullptr);
    config.addAlias("a", &alias);
    EXPECT_TRUE(config.set("a", "5", 50));
    EXPECT_EQ(param.value(), 5);
}

TEST_F(ParameterAliasTest, OneMayNameItselfWithOtherValues) {
    IntParameter param("done", "", 0, false, &config);
    ScriptedAlias countDown;
    countDown.answer = [](const char* value, Targets* targets) {
        const int left = std::stoi(value);
        (*targets)[String(left > 0 ? "count" : "done")] =
            String(std::to_string(left > 0 ? left - 1 : 42).c_str());
        return true;
    };
    config.addAlias("count", &countDown);
    EXPECT_TRUE(config.set("count", "3", 50));
    EXPECT_EQ(param.value(), 42);
    EXPECT_EQ(countDown.names.size(), 4U);
}

TEST_F(ParameterAliasTest, OneObjectMayHaveTwoNames) {
    IntParameter param("c", "", 0, false, &config);
    ScriptedAlias alias;
    alias.answer = [&alias](const char* value, Targets* targets) {
        (*targets)[String(alias.names.back() == "a" ? "b" : "c")] = String(value);
        return true;
    };
    config.addAlias("a", &alias);
    config.addAlias("b", &alias);
    EXPECT_TRUE(config.set("a", "5", 50));
    EXPECT_EQ(param.value(), 5);
}

// Canonicalising a store

TEST_F(ParameterAliasTest, CanonicalisingRenamesAliases) {
    IntParameter param("New", "", 1, false, &config);
    const ParameterAlias alias("Old", &param, &config);
    EXPECT_EQ(canonical({{"Old", "5"}}), (Store{{"New", "5"}}));
    EXPECT_EQ(canonical({{"Old", "5"}, {"New", "7"}}), (Store{{"New", "7"}}));
    EXPECT_EQ(canonical({{"Other", "5"}}), (Store{{"Other", "5"}}));
    EXPECT_EQ(canonical({}), Store{});
    EXPECT_EQ(param.value(), 1); // only the store changes
}

TEST_F(ParameterAliasTest, CanonicalisingAsksTheStoreInOrder) {
    ParameterAlias alias("b", "a", nullptr);
    config.addAlias("Old", &alias);
    config.addAlias("absent", &alias);
    MapStore store({{"Old", "5"}, {"b", "1"}});
    config.canonicalize(&store);
    EXPECT_THAT(store.calls,
                ElementsAre("get absent", "get Old", "get a", "set a", "get b", "remove Old"));
    EXPECT_EQ(store.settings, (Store{{"a", "5"}, {"b", "1"}}));
}

TEST_F(ParameterAliasTest, CanonicalisingDropsWhatAnAliasRefuses) {
    ScriptedAlias alias;
    alias.answer = [](const char*, Targets* targets) {
        (*targets)[String("New")] = String("7");
        return false;
    };
    config.addAlias("Old", &alias);
    EXPECT_EQ(canonical({{"Old", "5"}}), Store{});
    EXPECT_THAT(alias.names, ElementsAre("Old")); // as it is registered
}

TEST_F(ParameterAliasTest, CanonicalisingMovesOnToLaterAliasesOnly) {
    ParameterAlias toB("b", static_cast<const char*>(nullptr), nullptr);
    ParameterAlias toC("c", static_cast<const char*>(nullptr), nullptr);
    ParameterAlias toA("a", static_cast<const char*>(nullptr), nullptr);
    config.addAlias("a", &toB);
    config.addAlias("b", &toC);
    EXPECT_EQ(canonical({{"a", "5"}}), (Store{{"c", "5"}}));
    config.addAlias("z", &toA);
    EXPECT_EQ(canonical({{"z", "5"}}), (Store{{"a", "5"}})); // "a" has been passed by then
}

TEST_F(ParameterAliasTest, CanonicalisingRemovesAnAliasThatNamesItself) {
    ParameterAlias alias("a", static_cast<const char*>(nullptr), nullptr);
    config.addAlias("a", &alias);
    EXPECT_EQ(canonical({{"a", "5"}}), Store{});
}

TEST_F(ParameterAliasTest, CanonicalisingLooksAtOwnAliasesOnly) {
    Configuration child("Child", nullptr);
    config.registerChild(&child, true);
    ParameterAlias alias("New", static_cast<const char*>(nullptr), nullptr);
    child.addAlias("Old", &alias);
    EXPECT_EQ(canonical({{"Old", "5"}}), (Store{{"Old", "5"}}));
}

TEST_F(ParameterAliasTest, CanonicalisingUsesTheNameAsItWasFirstRegistered) {
    ParameterAlias alias("New", static_cast<const char*>(nullptr), nullptr);
    config.addAlias("Old", &alias);
    config.addAlias("OLD", &alias);
    EXPECT_EQ(canonical({{"Old", "5"}, {"OLD", "6"}}), (Store{{"New", "5"}, {"OLD", "6"}}));
}

} // namespace
