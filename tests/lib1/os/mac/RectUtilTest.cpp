#include "os/mac/RectUtil.h"

#include <climits>
#include <limits>

#include <gtest/gtest.h>

namespace {

using plat::Rect;

constexpr CGFloat infinity = std::numeric_limits<CGFloat>::infinity();
constexpr CGFloat notANumber = std::numeric_limits<CGFloat>::quiet_NaN();

struct NumberRow {
    const char* name;
    CGFloat value;
    int whole;
    friend void PrintTo(const NumberRow& row, std::ostream* out) { *out << row.value; }
};

class TruncatedNumber : public testing::TestWithParam<NumberRow> {};

TEST_P(TruncatedNumber, GoesTowardsZeroAndSaturates) {
    EXPECT_EQ(os::truncateToInt(GetParam().value), GetParam().whole);
}
INSTANTIATE_TEST_SUITE_P(
    Numbers, TruncatedNumber,
    testing::Values(
        NumberRow{"Zero", 0, 0}, NumberRow{"MinusZero", -0.0, 0}, NumberRow{"Below", 0.99, 0},
        NumberRow{"AboveMinusOne", -0.99, 0}, NumberRow{"Positive", 9.7, 9},
        NumberRow{"Negative", -9.7, -9}, NumberRow{"Largest", 2147483647.0, INT_MAX},
        NumberRow{"LargestAndAHalf", 2147483647.5, INT_MAX},
        NumberRow{"TooLarge", 2147483648.0, INT_MAX}, NumberRow{"Smallest", -2147483648.0, INT_MIN},
        NumberRow{"SmallestAndAHalf", -2147483648.5, INT_MIN},
        NumberRow{"TooSmall", -2147483649.0, INT_MIN},
        NumberRow{"NextToSmallest", -2147483647.9, -2147483647},
        NumberRow{"Huge", std::numeric_limits<CGFloat>::max(), INT_MAX},
        NumberRow{"Infinite", infinity, INT_MAX}, NumberRow{"MinusInfinite", -infinity, INT_MIN},
        NumberRow{"NotANumber", notANumber, 0}),
    [](const auto& row) { return row.param.name; });

TEST(SaturatedSum, StaysInRange) {
    EXPECT_EQ(os::saturatedSum(3, -5), -2);
    EXPECT_EQ(os::saturatedSum(INT_MAX, 0), INT_MAX);
    EXPECT_EQ(os::saturatedSum(INT_MAX, 1), INT_MAX);
    EXPECT_EQ(os::saturatedSum(INT_MIN, -1), INT_MIN);
    EXPECT_EQ(os::saturatedSum(INT_MIN, INT_MAX), -1);
}

TEST(RectFromCGRect, TruncatesBeforeItAdds) {
    EXPECT_EQ(os::rectFromCGRect(CGRectMake(0.5, 0.5, 9.7, 9.7)), (Rect{0, 0, 9, 9}));
    EXPECT_EQ(os::rectFromCGRect(CGRectMake(1.9, 2.9, 1.9, 2.9)), (Rect{1, 2, 2, 4}));
    EXPECT_EQ(os::rectFromCGRect(CGRectMake(-1.5, -2.5, 3.5, 4.5)), (Rect{-1, -2, 2, 2}));
}

TEST(RectFromCGRect, Saturates) {
    EXPECT_EQ(os::rectFromCGRect(CGRectMake(10, 20, infinity, 3e9)),
              (Rect{10, 20, INT_MAX, INT_MAX}));
    EXPECT_EQ(os::rectFromCGRect(CGRectMake(-infinity, notANumber, -1, notANumber)),
              (Rect{INT_MIN, 0, INT_MIN, 0}));
}

TEST(CGRectFromRect, HasOriginAndSize) {
    const CGRect rect = os::cgRectFromRect({-5, 7, 10, 9});
    EXPECT_EQ(rect.origin.x, -5);
    EXPECT_EQ(rect.origin.y, 7);
    EXPECT_EQ(rect.size.width, 15);
    EXPECT_EQ(rect.size.height, 2);
}

TEST(CGRectFromRect, HasSizesThatNoIntHolds) {
    const CGRect rect = os::cgRectFromRect({INT_MIN, INT_MAX, INT_MAX, INT_MIN});
    EXPECT_EQ(rect.size.width, 4294967295.0);
    EXPECT_EQ(rect.size.height, -4294967295.0);
}

} // namespace
