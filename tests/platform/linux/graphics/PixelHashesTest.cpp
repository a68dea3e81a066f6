#include "platform/linux/graphics/PixelHashes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace platform {
namespace {

constexpr int width = 100;
constexpr int height = 40;
constexpr PixelRect whole{0, 0, width, height};

Ref<Surface> noise(unsigned seed) {
    auto surface = Surface::create(width, height, SurfaceMemory::Private);
    std::mt19937 random(seed);
    std::generate_n(surface->row(0), width * height, random);
    return surface;
}

TEST(PixelHashes, RowHashesHaveOneHashARowForEachColumn) {
    const int columns[] = {0, 30, width - hashedPixels};
    const auto hashes = rowHashes(*noise(1), {0, 3, width, 20}, columns);
    ASSERT_EQ(hashes.size(), 3U);
    for (const PixelHashes& column : hashes)
        EXPECT_EQ(column.size(), 17U);
}

TEST(PixelHashes, EqualPixelsHaveEqualRowHashesAnywhere) {
    const auto from = noise(1);
    const auto to = noise(2);
    std::copy_n(from->row(5) + 7, hashedPixels, to->row(30) + 61);
    const int there[] = {7};
    const int here[] = {61};
    EXPECT_EQ(rowHashes(*from, whole, there)[0][5], rowHashes(*to, whole, here)[0][30]);
}

TEST(PixelHashes, EqualPixelsHaveEqualRunHashesAnywhere) {
    const auto from = noise(1);
    const auto to = noise(2);
    std::copy_n(from->row(5) + 7, hashedPixels, to->row(30) + 61);
    EXPECT_EQ(runHashes(*from, whole, 5)[7], runHashes(*to, whole, 30)[61]);
    EXPECT_EQ(runHashes(*from, {5, 0, 60, 9}, 5)[2], runHashes(*to, {61, 0, 90, 40}, 30)[0]);
}

TEST(PixelHashes, EveryPixelOfARunCounts) {
    const auto surface = noise(3);
    const int columns[] = {20};
    const PixelHashes rows = rowHashes(*surface, whole, columns)[0];
    const PixelHashes runs = runHashes(*surface, whole, 9);
    for (int x = 20; x < 20 + hashedPixels; ++x) {
        surface->row(9)[x] ^= 1;
        EXPECT_NE(rowHashes(*surface, whole, columns)[0][9], rows[9]) << x;
        EXPECT_NE(runHashes(*surface, whole, 9)[20], runs[20]) << x;
        surface->row(9)[x] ^= 1;
    }
}

TEST(PixelHashes, TheOrderOfPixelsCounts) {
    const auto surface = noise(4);
    std::fill_n(surface->row(0), width, 0xffffffffU);
    const int columns[] = {0};
    std::set<std::uint64_t> rows;
    std::set<std::uint64_t> runs;
    for (int x = 0; x < hashedPixels; ++x) {
        surface->row(0)[x] = 0xff000000U;
        rows.insert(rowHashes(*surface, whole, columns)[0][0]);
        runs.insert(runHashes(*surface, whole, 0)[0]);
        surface->row(0)[x] = 0xffffffffU;
    }
    EXPECT_EQ(rows.size(), std::size_t{hashedPixels});
    EXPECT_EQ(runs.size(), std::size_t{hashedPixels});
}

TEST(PixelHashes, RunHashesHaveOneHashARun) {
    const auto surface = noise(5);
    EXPECT_EQ(runHashes(*surface, whole, 0).size(), std::size_t{width - hashedPixels + 1});
    EXPECT_EQ(runHashes(*surface, {10, 0, 10 + hashedPixels, 1}, 0).size(), 1U);
}

TEST(PixelHashes, RollingGivesWhatStartingThereGives) {
    const auto surface = noise(6);
    const std::uint32_t* row = surface->row(12);
    const PixelHashes hashes = runHashes(*surface, whole, 12);
    for (std::size_t x = 0; x < hashes.size(); ++x)
        EXPECT_EQ(hashes[x], RollingHash(row + x).get()) << x;
}

TEST(PixelHashes, UniformMeansOneValue) {
    EXPECT_TRUE(isUniform({}));
    EXPECT_TRUE(isUniform({7}));
    EXPECT_TRUE(isUniform({7, 7, 7}));
    EXPECT_FALSE(isUniform({7, 7, 8}));
    EXPECT_FALSE(isUniform({8, 7, 7}));
}

} // namespace
} // namespace platform
