#include "plat/StringParameter.h"

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/ParameterListener.h"
#include "plat/BadUtf8.h"
#include "plat/Configuration.h"

namespace {

using plat::Configuration;
using plat::StringParameter;
using testing::ElementsAre;
using testing::Pair;

struct StringParameterTest : testing::Test {
    Configuration config{"Test", nullptr};
};

TEST_F(StringParameterTest, TakesUtf8) {
    StringParameter param("Name", "", "default", false, &config);
    EXPECT_EQ(valueOf(param), "default");
    EXPECT_TRUE(param.setParam("a\xE2\x82\xAC", 50));
    EXPECT_TRUE(param.setParam("", 0));
    EXPECT_THAT(valuesOf(param),
                ElementsAre(Pair(0, ""), Pair(50, "a\xE2\x82\xAC"), Pair(100, "default")));
}

TEST_F(StringParameterTest, RefusesNull) {
    StringParameter param("Name", "", "", false, &config);
    EXPECT_FALSE(param.setParam(nullptr, 50));
    EXPECT_EQ(param.getPriority(), 100);
}

TEST_F(StringParameterTest, ThrowsForWhatIsNoUtf8) {
    StringParameter param("Name", "", "", false, &config);
    for (const char* text : {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\x80"}) {
        try {
            param.setParam(text, 50);
            ADD_FAILURE() << "no exception";
        } catch (const plat::BadUtf8& failure) {
            EXPECT_STREQ(failure.message.get(), "Bad UTF-8 string for Name");
        }
    }
    EXPECT_EQ(param.getPriority(), 100);
}

TEST_F(StringParameterTest, DoesNotCheckItsDefault) {
    const StringParameter param("Name", "", "\xFF", false, &config);
    EXPECT_EQ(valueOf(param), "\xFF");
}

TEST_F(StringParameterTest, KeepsACopyOfItsDefault) {
    char text[] = "abc";
    const StringParameter param("Name", "", text, false, &config);
    text[0] = 'x';
    EXPECT_EQ(valueOf(param), "abc");
}

TEST(StringParameterDeathTest, NullDefaultIsABrokenInvariant) {
    Configuration config("Test", nullptr);
    EXPECT_DEATH(StringParameter("Name", "", nullptr, false, &config),
                 "Assertion 'v' failed at .*: Default value <null> for Name not allowed");
    EXPECT_DEATH(
        StringParameter("ById", loc::msgid_t("plat_test_unknown"), nullptr, false, &config),
        "Assertion 'v' failed at .*: Default value <null> for ById not allowed");
}

TEST_F(StringParameterTest, AnswersForItsKind) {
    StringParameter param("Name", loc::msgid_t("plat_test_unknown"), "5", true, &config);
    EXPECT_TRUE(param.isString());
    EXPECT_FALSE(param.isBool() || param.isInt() || param.isEnum() || param.isBinary());
    EXPECT_FALSE(param.setIntValue(5, 50));
    EXPECT_EQ(param.getIntValue(), 0);
    EXPECT_TRUE(param.isHidden());
    EXPECT_STREQ(param.getDescription(), "plat_test_unknown");
}

TEST_F(StringParameterTest, NullStoredDirectlyReadsAsNull) {
    StringParameter param("Name", "", "default", false, &config);
    param.setValue(plat::String(), 50);
    EXPECT_EQ(param.getValueStr(), nullptr);
}

TEST_F(StringParameterTest, ClonesItsKind) {
    StringParameter param("Name", "", "a", false, &config);
    param.setParam("b", 50);
    Configuration other("Other", nullptr);
    const std::unique_ptr<plat::ConfigParameter> copy(param.clone(&other));
    ASSERT_NE(dynamic_cast<StringParameter*>(copy.get()), nullptr);
    EXPECT_THAT(valuesOf(*copy), ElementsAre(Pair(50, "b"), Pair(100, "a")));
}

} // namespace
