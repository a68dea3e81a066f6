#include "loc/TransMap.h"

#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "lib1/loc/LocalesInForce.h"
#include "loc/Localize.h"
#include "loc/PluralRule.h"
#include "loc/Translation.h"

namespace {

using loc::Localize;
using loc::TransMap;

// Locales and ids of this test's own; each text is read raw.
void add(const char* locale, const char* msgid, const char* text) {
    Localize::inst().addSanitized(locale, msgid, text, true);
}

const char* textOf(const loc::Translation* translation) {
    return translation == nullptr ? nullptr : translation->get(true, "of a test");
}

// Runs a body on a thread of its own, which has no map yet.
template <typename Body>
void onNewThread(Body body) {
    std::thread(body).join();
}

TEST(TransMap, ProcessMapIsCurrentOnThreadsWithoutAMap) {
    onNewThread([] { EXPECT_EQ(TransMap::getThreadInst(), TransMap::getProcessInst()); });
}

TEST(TransMap, ProcessMapIsOneForAllThreads) {
    TransMap* const map = TransMap::getProcessInst();
    onNewThread([map] { EXPECT_EQ(TransMap::getProcessInst(), map); });
}

TEST(TransMap, ScopedMapsAreAStack) {
    TransMap* const before = TransMap::getThreadInst();
    {
        const TransMap outer;
        EXPECT_EQ(TransMap::getThreadInst(), &outer);
        {
            const TransMap inner;
            EXPECT_EQ(TransMap::getThreadInst(), &inner);
        }
        EXPECT_EQ(TransMap::getThreadInst(), &outer);
    }
    EXPECT_EQ(TransMap::getThreadInst(), before);
}

TEST(TransMap, ScopedMapIsTheThreadsAlone) {
    const TransMap map;
    onNewThread([] { EXPECT_EQ(TransMap::getThreadInst(), TransMap::getProcessInst()); });
}

TEST(TransMap, ThreadWithoutAMapHasNoneAgain) {
    onNewThread([] {
        {
            const TransMap map;
        }
        EXPECT_EQ(TransMap::getThreadInst(), TransMap::getProcessInst());
    });
}

TEST(TransMap, StartsEmpty) {
    const TransMap map;
    EXPECT_EQ(map.get("loc_param_locale"), nullptr);
    EXPECT_EQ(map.getPlural("loc_bytesize_kilo", 1, 0, 9), nullptr);
}

TEST(TransMap, FindsExactlyTheId) {
    add("q1", "own_id", "text");
    const LocalesInForce locales{"q1"};
    EXPECT_STREQ(textOf(locales.map.get("own_id")), "text");
    EXPECT_EQ(locales.map.get("own_i"), nullptr);
    EXPECT_EQ(locales.map.get("own_idd"), nullptr);
    EXPECT_EQ(locales.map.get("OWN_ID"), nullptr);
    EXPECT_EQ(locales.map.get(nullptr), nullptr);
}

TEST(TransMap, FindsIdsByTheirBytes) {
    add("q1", "own_other", "text");
    const LocalesInForce locales{"q1"};
    const std::string copy("own_other");
    EXPECT_STREQ(textOf(locales.map.get(copy.c_str())), "text");
}

TEST(TransMap, FirstLocaleWithAnIdWins) {
    add("q1", "own_shared", "first");
    add("q2", "own_shared", "second");
    add("q2", "own_second", "only second");
    const LocalesInForce locales{"q1", "q2"};
    EXPECT_STREQ(textOf(locales.map.get("own_shared")), "first");
    EXPECT_STREQ(textOf(locales.map.get("own_second")), "only second");
}

TEST(TransMap, PluralOfFrenchTextsFollowsTheFrenchRule) {
    const LocalesInForce locales{"fr_FR", "fr", "en_US", "en"};
    const TransMap& map = locales.map;
    EXPECT_STREQ(textOf(map.getPlural("loc_bytesize_unit", 0, 0, 9)), "%D octet");
    EXPECT_STREQ(textOf(map.getPlural("loc_bytesize_unit", 1, 0, 9)), "%D octet");
    EXPECT_STREQ(textOf(map.getPlural("loc_bytesize_unit", 2, 0, 9)), "%D octets");
    EXPECT_STREQ(textOf(map.getPlural("loc_bytesize_unit", -1, -1, 9)), "%D octets");
    EXPECT_EQ(map.getPlural("loc_bytesize_unit", 1, 0, 9), map.get("loc_bytesize_unit_zerosing"));
}

TEST(TransMap, LocaleThatLacksAFormIsSkippedForAllCounts) {
    add("de_XX", "own_fruit_zeromany", "%D Früchte");
    const LocalesInForce incomplete{"de_XX"};
    EXPECT_EQ(incomplete.map.getPlural("own_fruit", 5, 0, 9), nullptr);
    EXPECT_STREQ(textOf(incomplete.map.getPlural("own_fruit", 5, 2, 9)), "%D Früchte");
}

TEST(TransMap, FormOfALaterLocaleCompletesAnEarlierOne) {
    add("q3", "own_tree_zeromany", "q3 trees");
    add("q4", "own_tree_sing", "q4 tree");
    const LocalesInForce locales{"q3", "q4"};
    EXPECT_STREQ(textOf(locales.map.getPlural("own_tree", 1, 0, 9)), "q4 tree");
    EXPECT_STREQ(textOf(locales.map.getPlural("own_tree", 2, 0, 9)), "q3 trees");
}

TEST(TransMap, LocaleWhoseFormIsAbsentIsPassedOver) {
    // The French range from 0 asks for "many" alone: a count of 0 then finds no French form.
    add("fr_XX", "own_cat_many", "%D chats");
    add("q5", "own_cat_sing", "%D cat");
    add("q5", "own_cat_zeromany", "%D cats");
    const LocalesInForce locales{"fr_XX", "q5"};
    EXPECT_STREQ(textOf(locales.map.getPlural("own_cat", 0, 0, 9)), "%D cats");
    EXPECT_STREQ(textOf(locales.map.getPlural("own_cat", 7, 0, 9)), "%D chats");
}

TEST(TransMap, LocaleOfAnotherRuleFollowsOneThatLacksAForm) {
    add("de_XX", "own_pear_zeromany", "%D Birnen");
    add("ja", "own_pear_singplural", "one form");
    const LocalesInForce locales{"de_XX", "ja"};
    EXPECT_STREQ(textOf(locales.map.getPlural("own_pear", 5, 0, 9)), "one form");
    EXPECT_STREQ(textOf(locales.map.getPlural("own_pear", 5, 2, 9)), "%D Birnen");
}

TEST(TransMap, BareStemIsNoForm) {
    add("q6", "own_stem", "never");
    const LocalesInForce locales{"q6"};
    EXPECT_EQ(locales.map.getPlural("own_stem", 1, 1, 1), nullptr);
}

TEST(TransMap, LongKeysAreCut) {
    const std::string stem(253, 'x');
    const std::string cut = stem + "_s"; // 255 bytes of "..._sing" and of "..._singplural"
    add("ja", cut.c_str(), "cut");
    const LocalesInForce locales{"ja"};
    EXPECT_STREQ(textOf(locales.map.getPlural(stem.c_str(), 1, 1, 1)), "cut");
}

TEST(TransMap, ChecksEveryFormOfARange) {
    add("q7", "own_part_sing", "one");
    const LocalesInForce locales{"q7"};
    const loc::PluralRule* const english = loc::getRuleForLocale("en");
    EXPECT_TRUE(locales.map.checkForAllPluralForms(english, "own_part", 1, 1));
    EXPECT_FALSE(locales.map.checkForAllPluralForms(english, "own_part", 0, 1));
    EXPECT_FALSE(locales.map.checkForAllPluralForms(english, "own_part", 2, 3));
    EXPECT_TRUE(locales.map.checkForAllPluralForms(loc::getRuleForLocale("fr"), "own_part", 0, 1));
}

TEST(TransMapDeathTest, OnlyTheCurrentMapIsDestroyed) {
    EXPECT_EXIT(
        {
            auto outer = std::make_unique<TransMap>();
            const TransMap inner;
            outer.reset();
        },
        testing::KilledBySignal(SIGABRT), "Assertion 'thrInst == this' failed at .*TransMap.cpp");
}

TEST(TransMapDeathTest, ExitWithinAScopeIsClean) {
    EXPECT_EXIT(
        {
            const TransMap map;
            std::exit(3);
        },
        testing::ExitedWithCode(3), "^$");
}

TEST(TransMapDeathTest, ProcessMapMadeOnAnotherThreadIsDestroyedAtExit) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a process that has no map yet
    EXPECT_EXIT(
        {
            onNewThread([] { TransMap::getProcessInst(); });
            std::exit(4);
        },
        testing::ExitedWithCode(4), "^$");
}

TEST(TransMapDeathTest, ScopedMapMayComeBeforeTheProcessMap) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            {
                const LocalesInForce locales{"fr"}; // asks whether its map is the process map
            }
            std::exit(5);
        },
        testing::ExitedWithCode(5), "^$");
}

} // namespace
