#include <CoreFoundation/CoreFoundation.h>

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

CFNumberRef makeDouble(double value) {
    return CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &value);
}

TEST(Boolean, HasTwoConstants) {
    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
    EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
    CFRelease(kCFBooleanFalse);
    CFRelease(kCFBooleanFalse);
    EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
}

TEST(Number, KeepsAnInt) {
    const int eight = 8;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &eight);
    EXPECT_EQ(CFGetTypeID(number), CFNumberGetTypeID());
    int asInt = 0;
    float asFloat = 0;
    double asDouble = 0;
    EXPECT_TRUE(CFNumberGetValue(number, kCFNumberIntType, &asInt));
    EXPECT_TRUE(CFNumberGetValue(number, kCFNumberFloatType, &asFloat));
    EXPECT_TRUE(CFNumberGetValue(number, kCFNumberDoubleType, &asDouble));
    EXPECT_EQ(asInt, 8);
    EXPECT_EQ(asFloat, 8);
    EXPECT_EQ(asDouble, 8);
    CFRelease(number);
}

TEST(Number, KeepsAFloatToTheLastBit) {
    const float thirtieth = 0.033333335F;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberFloatType, &thirtieth);
    float asFloat = 0;
    double asDouble = 0;
    EXPECT_TRUE(CFNumberGetValue(number, kCFNumberFloatType, &asFloat));
    EXPECT_TRUE(CFNumberGetValue(number, kCFNumberDoubleType, &asDouble));
    EXPECT_EQ(asFloat, thirtieth);
    EXPECT_EQ(asDouble, static_cast<double>(thirtieth));
    CFRelease(number);
}

struct Loss {
    const char* name;
    double value;
    int asInt;
    bool isIntExact;
    bool isFloatExact;
};

class NumberConverted : public testing::TestWithParam<Loss> {};

TEST_P(NumberConverted, SaysWhatItLost) {
    CFNumberRef number = makeDouble(GetParam().value);
    int asInt = -1;
    float asFloat = -1;
    EXPECT_EQ(CFNumberGetValue(number, kCFNumberIntType, &asInt) != 0, GetParam().isIntExact);
    EXPECT_EQ(CFNumberGetValue(number, kCFNumberFloatType, &asFloat) != 0, GetParam().isFloatExact);
    EXPECT_EQ(asInt, GetParam().asInt);
    CFRelease(number);
}

constexpr int intMax = std::numeric_limits<int>::max();
constexpr int intMin = std::numeric_limits<int>::min();

INSTANTIATE_TEST_SUITE_P(Values, NumberConverted,
                         testing::Values(Loss{"Zero", 0, 0, true, true},
                                         Loss{"Half", 0.5, 0, false, true},
                                         Loss{"Tenth", 0.1, 0, false, false},
                                         Loss{"NegativeHalf", -2.5, -2, false, true},
                                         Loss{"IntMax", intMax, intMax, true, false},
                                         Loss{"IntMin", intMin, intMin, true, true},
                                         Loss{"AboveIntMax", 2147483648.0, intMax, false, true},
                                         Loss{"BelowIntMin", -2147483649.0, intMin, false, false},
                                         Loss{"BeyondFloat", 1e300, intMax, false, false},
                                         Loss{"Infinite", HUGE_VAL, intMax, false, true},
                                         Loss{"NotANumber", std::nan(""), 0, false, true}),
                         [](const auto& row) { return row.param.name; });

TEST(Number, ServesNoOtherType) {
    const int value = 1;
    EXPECT_EQ(CFNumberCreate(nullptr, 3, &value), nullptr);
    CFNumberRef number = makeDouble(1);
    int asInt = 7;
    EXPECT_FALSE(CFNumberGetValue(number, 3, &asInt));
    EXPECT_EQ(asInt, 7);
    CFRelease(number);
}

} // namespace
