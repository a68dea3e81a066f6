#include "lumowatch/Parameters.h"

#include "plat/Configuration.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

std::string valueOf(const plat::ConfigParameter& parameter) {
    const std::unique_ptr<char[]> value(parameter.getValueStr());
    return value != nullptr ? value.get() : "";
}

struct Row {
    const char* test;
    plat::ConfigParameter* parameter;
    const char* name;
    const char* atFirst;
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.test; }
};

class Parameter : public testing::TestWithParam<Row> {};

TEST_P(Parameter, HasItsNameAndDefault) {
    EXPECT_STREQ(GetParam().parameter->getName(), GetParam().name);
    EXPECT_EQ(valueOf(*GetParam().parameter), GetParam().atFirst);
}

INSTANTIATE_TEST_SUITE_P(
    All, Parameter,
    testing::Values(Row{"Display", &lumowatch::displayParam, "Display", "0"},
                    Row{"ListDisplays", &lumowatch::listDisplaysParam, "ListDisplays", "0"},
                    Row{"Seconds", &lumowatch::secondsParam, "Seconds", "0"},
                    Row{"Grabs", &lumowatch::grabsParam, "Grabs", "0"},
                    Row{"Png", &lumowatch::pngParam, "Png", ""},
                    Row{"Events", &lumowatch::eventsParam, "Events", "text"},
                    Row{"LogDir", &lumowatch::logDirParam, "LogDir", "."},
                    Row{"LogFile", &lumowatch::logFileParam, "LogFile", "lumowatch.log"}),
    [](const auto& row) { return row.param.test; });

/// What one setting does, on a copy, so that the next one finds the defaults again.
struct Setting {
    const char* test;
    const char* name;
    const char* value;
    bool isTaken;
    friend void PrintTo(const Setting& row, std::ostream* out) { *out << row.test; }
};

class SettingTaken : public testing::TestWithParam<Setting> {};

TEST_P(SettingTaken, OnlyWithinItsBounds) {
    plat::Configuration copy(*plat::Configuration::global());
    EXPECT_EQ(copy.set(GetParam().name, GetParam().value, 50), GetParam().isTaken);
}

INSTANTIATE_TEST_SUITE_P(Rows, SettingTaken,
                         testing::Values(Setting{"DisplayZero", "Display", "0", true},
                                         Setting{"DisplayHighest", "Display", "2147483647", true},
                                         Setting{"DisplayNegative", "Display", "-1", false},
                                         Setting{"SecondsLongest", "Seconds", "2147483", true},
                                         Setting{"SecondsTooLong", "Seconds", "2147484", false},
                                         Setting{"SecondsNegative", "Seconds", "-1", false},
                                         Setting{"SecondsNoNumber", "Seconds", "ten", false},
                                         Setting{"GrabsMost", "Grabs", "2147483647", true},
                                         Setting{"GrabsNegative", "Grabs", "-1", false},
                                         Setting{"EventsText", "Events", "text", true},
                                         Setting{"EventsJson", "Events", "json", true},
                                         Setting{"EventsNone", "events", "NONE", true},
                                         Setting{"EventsOther", "Events", "xml", false},
                                         Setting{"Unknown", "Colour", "1", false}),
                         [](const auto& row) { return row.param.test; });

TEST(EventsParameter, HasTheNumbersOfTheFormats) {
    using lumowatch::EventFormat;
    const auto numberOf = [](const char* name) {
        EXPECT_TRUE(lumowatch::eventsParam.setParam(name, 50));
        return static_cast<EventFormat>(lumowatch::eventsParam.getIntValue());
    };
    EXPECT_EQ(numberOf("text"), EventFormat::Text);
    EXPECT_EQ(numberOf("json"), EventFormat::Json);
    EXPECT_EQ(numberOf("none"), EventFormat::None);
    numberOf("text");
}

} // namespace
