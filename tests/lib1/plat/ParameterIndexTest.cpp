#include "plat/ParameterIndex.h"

#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plat/Configuration.h"
#include "plat/IntParameter.h"
#include "plat/StrCaseCmp.h"

namespace {

using plat::ConfigParameter;
using plat::IntParameter;
using plat::ParameterIndex;

struct ParameterIndexTest : testing::Test {
    ConfigParameter* add(const std::string& name) {
        names.push_back(std::make_unique<std::string>(name));
        const char* const text = names.back()->c_str();
        params.push_back(std::make_unique<IntParameter>(text, "", 0, false, &config));
        index.add(params.back().get(), plat::strCaseHash(text));
        return params.back().get();
    }
    /// What a walk from the newest to the oldest finds.
    ConfigParameter* walkFor(const std::string& name) const {
        for (auto it = params.rbegin(); it != params.rend(); ++it) {
            if (plat::strCaseCmp((*it)->getName(), name.c_str()) == 0)
                return it->get();
        }
        return nullptr;
    }

    plat::Configuration config{"Test", nullptr};
    std::vector<std::unique_ptr<std::string>> names;
    std::vector<std::unique_ptr<IntParameter>> params;
    ParameterIndex index;
};

TEST_F(ParameterIndexTest, FindsNothingWhileEmpty) {
    EXPECT_EQ(index.find("a"), nullptr);
    EXPECT_EQ(index.find(""), nullptr);
    EXPECT_EQ(index.find(nullptr), nullptr);
}

TEST_F(ParameterIndexTest, TakesNullForAnEmptyName) {
    ConfigParameter* const unnamed = add("");
    EXPECT_EQ(index.find(""), unnamed);
    EXPECT_EQ(index.find(nullptr), unnamed);
    IntParameter null(nullptr, "", 0, false, &config);
    index.add(&null, plat::strCaseHash(nullptr));
    EXPECT_EQ(index.find(""), &null);
    EXPECT_EQ(index.find(nullptr), &null);
    EXPECT_EQ(index.find("a"), nullptr);
}

TEST_F(ParameterIndexTest, FindsTheNewestOfEqualNamesHoweverItGrows) {
    for (int i = 0; i < 200; ++i) {
        ConfigParameter* const newest = add(i % 2 == 0 ? "Width" : "wIDTH");
        ASSERT_EQ(index.find("width"), newest) << i;
        add("other" + std::to_string(i));
        ASSERT_EQ(index.find("WIDTH"), newest) << i;
    }
}

// '@' and '`' differ by what tells the cases of letters apart, and are no letters.
TEST_F(ParameterIndexTest, TellsManyNamesOfOneHashApart) {
    constexpr unsigned count = 256;
    for (unsigned i = 0; i < count; ++i) {
        std::string name(8, '@');
        for (std::size_t bit = 0; bit < name.size(); ++bit)
            name[bit] = (i >> bit & 1) != 0 ? '`' : '@';
        add(name);
        ASSERT_EQ(plat::strCaseHash(name.c_str()), plat::strCaseHash("@@@@@@@@"));
    }
    for (const auto& name : names)
        ASSERT_EQ(index.find(name->c_str()), walkFor(*name)) << *name;
    EXPECT_EQ(index.find("@@@@@@@@@"), nullptr);
}

TEST_F(ParameterIndexTest, FindsWhatAWalkFinds) {
    std::mt19937 random(1);
    const auto anyName = [&random] {
        std::string name(random() % 19, 'a'); // also longer than a word and than two
        for (char& letter : name)
            letter = "aAbB@`_"[random() % 7];
        return name.substr(0, random() % 3 == 0 ? 2 : name.size()); // short ones come again
    };
    for (int i = 0; i < 1000; ++i) {
        add(anyName());
        const std::string wanted = anyName();
        ASSERT_EQ(index.find(wanted.c_str()), walkFor(wanted)) << wanted;
    }
    for (const auto& name : names)
        ASSERT_EQ(index.find(name->c_str()), walkFor(*name)) << *name;
}

TEST_F(ParameterIndexTest, CanBeFilledAgainOnceItIsCleared) {
    for (int i = 0; i < 50; ++i)
        add("parameter" + std::to_string(i));
    index.clear();
    EXPECT_EQ(index.find("parameter1"), nullptr);
    ConfigParameter* const param = add("parameter1");
    EXPECT_EQ(index.find("parameter1"), param);
    EXPECT_EQ(index.find("parameter2"), nullptr);
}

} // namespace
