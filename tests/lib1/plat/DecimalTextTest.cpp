#include "plat/DecimalText.h"

#include <algorithm>
#include <climits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

template <typename Number>
std::string text(Number value) {
    char out[plat::longestDecimal + 1];
    std::fill(std::begin(out), std::end(out), '#');
    const char* const end = plat::writeDecimal(out, value);
    EXPECT_EQ(out[plat::longestDecimal], '#') << "wrote behind the longest number";
    return {out, std::size_t(end - out)};
}

TEST(WriteDecimal, WritesEveryNumberOfFiveDigits) {
    for (int value = -100000; value <= 100000; ++value)
        ASSERT_EQ(text(std::int64_t(value)), std::to_string(value));
}

TEST(WriteDecimal, WritesTheNeighboursOfEveryPowerOfTen) {
    std::uint64_t power = 1;
    for (int digits = 1; digits < 20; ++digits) {
        power *= 10;
        for (const std::uint64_t value : {power - 1, power, power + 1}) {
            EXPECT_EQ(text(value), std::to_string(value));
            EXPECT_EQ(text(std::int64_t(value)), std::to_string(std::int64_t(value)));
        }
    }
}

TEST(WriteDecimal, WritesTheEdges) {
    for (const std::int64_t value :
         {std::int64_t(INT_MIN), std::int64_t(INT_MAX), std::int64_t(UINT_MAX),
          std::int64_t(UINT_MAX) + 1, INT64_MAX, INT64_MIN})
        EXPECT_EQ(text(value), std::to_string(value));
    EXPECT_EQ(text(UINT64_MAX), std::to_string(UINT64_MAX));
}

TEST(WriteDecimal, WritesRandomNumbersOfEveryLength) {
    std::mt19937_64 random(20261121); // NOLINT(bugprone-random-generator-seed): repeatable
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t value = random() >> (i % 64);
        ASSERT_EQ(text(value), std::to_string(value));
        ASSERT_EQ(text(std::int64_t(value)), std::to_string(std::int64_t(value)));
    }
}

} // namespace
