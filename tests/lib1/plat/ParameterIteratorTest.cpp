#include "plat/ParameterIterator.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plat/ConfigParameterSort.h"
#include "plat/Configuration.h"
#include "plat/IntParameter.h"

namespace {

using plat::Configuration;
using plat::IntParameter;
using plat::ParameterIterator;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> walk(const Configuration& config, bool recurse) {
    std::vector<std::string> places;
    for (ParameterIterator it(&config, recurse); it.param != nullptr; it.next())
        places.push_back(std::string(it.config->getName()) + "." + it.param->getName());
    return places;
}

TEST(ParameterIterator, EndsAtOnceInAnEmptyConfiguration) {
    const Configuration config("Top", nullptr);
    EXPECT_THAT(walk(config, true), IsEmpty());
    ParameterIterator it(&config, true);
    it.next(); // stays at the end
    EXPECT_EQ(it.param, nullptr);
}

TEST(ParameterIterator, WalksTheNewestFirst) {
    Configuration config("Top", nullptr);
    const IntParameter a("A", "", 1, false, &config);
    const IntParameter b("B", "", 1, false, &config);
    EXPECT_THAT(walk(config, false), ElementsAre("Top.B", "Top.A"));
}

TEST(ParameterIterator, WalksDescendantsLevelByLevel) {
    Configuration top("Top", nullptr);
    Configuration first("First", nullptr);
    Configuration second("Second", nullptr);
    Configuration empty("Empty", nullptr);
    Configuration deep("Deep", nullptr);
    Configuration deeper("Deeper", nullptr);
    top.registerChild(&first, true);
    top.registerChild(&empty, true);
    top.registerChild(&second, true);
    first.registerChild(&deep, true);
    empty.registerChild(&deeper, true);
    const IntParameter a("A", "", 1, false, &deeper);
    const IntParameter b("B", "", 1, false, &deep);
    const IntParameter c("C", "", 1, false, &second);
    const IntParameter d("D", "", 1, false, &first);
    EXPECT_THAT(walk(top, false), IsEmpty());
    EXPECT_THAT(walk(top, true), ElementsAre("First.D", "Second.C", "Deep.B", "Deeper.A"));
    const IntParameter e("E", "", 1, false, &top);
    EXPECT_THAT(walk(top, false), ElementsAre("Top.E"));
    EXPECT_THAT(walk(top, true), ElementsAre("Top.E", "First.D", "Second.C", "Deep.B", "Deeper.A"));
}

TEST(ConfigParameterSort, OrdersByNameWhateverTheCase) {
    Configuration config("Top", nullptr);
    const IntParameter a("alpha", "", 1, false, &config);
    const IntParameter b("Beta", "", 1, false, &config);
    const IntParameter sameAsA("ALPHA", "", 1, false, &config);
    const plat::ConfigParameterSort isBefore;
    EXPECT_TRUE(isBefore(&a, &b));
    EXPECT_FALSE(isBefore(&b, &a));
    EXPECT_FALSE(isBefore(&a, &sameAsA));
    EXPECT_FALSE(isBefore(&sameAsA, &a));
}

} // namespace
