#include "platform/linux/x11/DisplayScale.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace platform::x11 {
namespace {

struct Setting {
    const char* name;
    const char* text;
    int scale;
};

class DisplayScaleOf : public testing::TestWithParam<Setting> {
protected:
    void TearDown() override { unsetenv("GDK_SCALE"); }
};

TEST_P(DisplayScaleOf, IsAWholeNumberFromOneToFour) {
    if (GetParam().text != nullptr)
        setenv("GDK_SCALE", GetParam().text, 1);
    else
        unsetenv("GDK_SCALE");
    EXPECT_EQ(displayScale(), GetParam().scale);
}

INSTANTIATE_TEST_SUITE_P(Settings, DisplayScaleOf,
                         testing::Values(Setting{"Unset", nullptr, 1}, Setting{"Empty", "", 1},
                                         Setting{"One", "1", 1}, Setting{"Two", "2", 2},
                                         Setting{"Four", "4", 4}, Setting{"Zero", "0", 1},
                                         Setting{"Five", "5", 1}, Setting{"Fraction", "1.5", 1},
                                         Setting{"TwoDigits", "22", 1},
                                         Setting{"Negative", "-2", 1}, Setting{"Text", "2x", 1}),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace platform::x11
