#include "plat/BadUtf8.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/ParameterListener.h"
#include "plat/Configuration.h"
#include "plat/StringParameter.h"

namespace {

using plat::BadUtf8;
using plat::Configuration;
using testing::ElementsAre;
using testing::Pair;

plat::ConfigParameter& assertSwitch() {
    return *Configuration::global()->getOrThrow("_BadUtf8Assert");
}

TEST(BadUtf8Assert, IsASwitchThatIsOff) {
    EXPECT_TRUE(assertSwitch().isBool());
    EXPECT_STREQ(assertSwitch().getName(), "_BadUtf8Assert");
    EXPECT_STREQ(assertSwitch().getDescription(),
                 "Make bad UTF-8 cause an assertion failure for debugging");
    EXPECT_THAT(valuesOf(assertSwitch()), ElementsAre(Pair(100, "0")));
}

TEST(BadUtf8Assert, LetsExceptionsBeThrownWhenOff) {
    assertSwitch().setParam("on", 50);
    assertSwitch().setParam("off", 0);
    EXPECT_STREQ(BadUtf8("text").message.get(), "text");
    EXPECT_STREQ(BadUtf8(1, "%d", 5).message.get(), "5");
    assertSwitch().resetToDefault();
}

TEST(BadUtf8AssertDeathTest, EndsTheProcessWhenOn) {
    assertSwitch().setParam("on", 50);
    EXPECT_DEATH(throw BadUtf8("percent %s sign"),
                 "^Assertion '0' failed at .*BadUtf8\\.cpp:[0-9]+: percent %s sign");
    EXPECT_DEATH(throw BadUtf8(1, "Bad UTF-8 string for %s", "name"),
                 "^Assertion '0' failed at .*: Bad UTF-8 string for name");
    Configuration config("Test", nullptr);
    plat::StringParameter param("Text", "", "", false, &config);
    EXPECT_DEATH(param.setParam("\xFF", 50), "Bad UTF-8 string for Text");
    assertSwitch().resetToDefault();
}

} // namespace
