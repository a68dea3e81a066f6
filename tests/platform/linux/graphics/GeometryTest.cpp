#include <CoreGraphics/CGGeometry.h>

#include <cmath>
#include <gtest/gtest.h>

namespace {

void expectRect(const CGRect& rect, CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    EXPECT_EQ(rect.origin.x, x);
    EXPECT_EQ(rect.origin.y, y);
    EXPECT_EQ(rect.size.width, width);
    EXPECT_EQ(rect.size.height, height);
}

const CGRect nullRect = CGRectMake(HUGE_VAL, HUGE_VAL, 0, 0);

struct UnionRow {
    const char* name;
    CGRect a;
    CGRect b;
    CGRect both;
};

class RectUnion : public testing::TestWithParam<UnionRow> {};

TEST_P(RectUnion, IsTheSmallestAroundBothInEitherOrder) {
    const CGRect& both = GetParam().both;
    expectRect(CGRectUnion(GetParam().a, GetParam().b), both.origin.x, both.origin.y,
               both.size.width, both.size.height);
    expectRect(CGRectUnion(GetParam().b, GetParam().a), both.origin.x, both.origin.y,
               both.size.width, both.size.height);
}

INSTANTIATE_TEST_SUITE_P(
    Rects, RectUnion,
    testing::Values(
        UnionRow{"Apart", CGRectMake(0, 0, 10, 10), CGRectMake(100, 100, 10, 10),
                 CGRectMake(0, 0, 110, 110)},
        UnionRow{"OneInside", CGRectMake(0, 0, 10, 10), CGRectMake(2, 3, 4, 5),
                 CGRectMake(0, 0, 10, 10)},
        UnionRow{"Equal", CGRectMake(1, 2, 3, 4), CGRectMake(1, 2, 3, 4), CGRectMake(1, 2, 3, 4)},
        UnionRow{"Fractions", CGRectMake(0.5, 0.5, 9.75, 9.75), CGRectMake(0.25, 1, 1, 1),
                 CGRectMake(0.25, 0.5, 10, 9.75)},
        UnionRow{"Negative", CGRectMake(-10, -20, 5, 5), CGRectMake(0, 0, 1, 1),
                 CGRectMake(-10, -20, 11, 21)},
        UnionRow{"EmptyStillHasAPlace", CGRectMake(50, 60, 0, 0), CGRectMake(0, 0, 10, 10),
                 CGRectMake(0, 0, 50, 60)},
        UnionRow{"NegativeSizeReachesBack", CGRectMake(10, 10, -5, -4), CGRectMake(10, 10, 1, 1),
                 CGRectMake(5, 6, 6, 5)},
        UnionRow{"NullAddsNothing", nullRect, CGRectMake(1, 2, 3, 4), CGRectMake(1, 2, 3, 4)},
        UnionRow{"HalfNullAddsNothing", CGRectMake(0, HUGE_VAL, 5, 5), CGRectMake(1, 2, 3, 4),
                 CGRectMake(1, 2, 3, 4)},
        UnionRow{"NullAndNegativeSize", nullRect, CGRectMake(5, 5, -2, -2),
                 CGRectMake(5, 5, -2, -2)}),
    [](const auto& row) { return row.param.name; });

TEST(RectUnion, OfTwoNullsIsNull) {
    EXPECT_EQ(CGRectUnion(nullRect, nullRect).origin.x, HUGE_VAL);
}

} // namespace
