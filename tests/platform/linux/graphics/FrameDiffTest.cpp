#include "platform/linux/graphics/FrameDiff.h"

#include "platform/linux/graphics/Region.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace platform {
namespace {

using Rects = std::vector<PixelRect>;

std::uint32_t& pixelAt(const Surface& surface, int x, int y) {
    return surface.row(y)[x];
}

/// Two frames of the same size and of the same noise.
struct Frames {
    Frames(int width, int height)
        : before(Surface::create(width, height, SurfaceMemory::Private)),
          after(Surface::create(width, height, SurfaceMemory::Private)) {
        std::mt19937 random(1);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                pixelAt(*before, x, y) = static_cast<std::uint32_t>(random());
        }
        std::memcpy(after->pixels(), before->pixels(), before->sizeBytes());
    }

    void change(int x, int y) { pixelAt(*after, x, y) ^= 1; }
    Rects foundIn(const Rects& area) const { return differences(*before, *after, area); }
    Rects found() const {
        return foundIn({PixelRect::ofSize(0, 0, before->width(), before->height())});
    }

    Ref<Surface> before;
    Ref<Surface> after;
};

TEST(FrameDiff, EqualFramesDifferNowhere) {
    EXPECT_TRUE(Frames(40, 50).found().empty());
    EXPECT_TRUE(Frames(1, 1).found().empty());
}

struct OnePixel {
    const char* name;
    int x;
    int y;
    friend void PrintTo(const OnePixel& row, std::ostream* out) { *out << row.name; }
};

class PixelThatDiffers : public testing::TestWithParam<OnePixel> {};

TEST_P(PixelThatDiffers, IsNamedAlone) {
    Frames frames(37, 50); // the last rows are fewer than a band
    frames.change(GetParam().x, GetParam().y);
    EXPECT_EQ(frames.found(), (Rects{PixelRect::ofSize(GetParam().x, GetParam().y, 1, 1)}));
}

INSTANTIATE_TEST_SUITE_P(Places, PixelThatDiffers,
                         testing::Values(OnePixel{"FirstPixel", 0, 0}, OnePixel{"RowsEnd", 36, 0},
                                         OnePixel{"LastRowOfABand", 5, 15},
                                         OnePixel{"FirstRowOfABand", 5, 16},
                                         OnePixel{"LastPixel", 36, 49}),
                         [](const auto& row) { return row.param.name; });

TEST(FrameDiff, FrameOfOnePixelMayDiffer) {
    Frames frames(1, 1);
    frames.change(0, 0);
    EXPECT_EQ(frames.found(), (Rects{{0, 0, 1, 1}}));
}

TEST(FrameDiff, EachByteOfAPixelCounts) {
    for (const std::uint32_t bit : {1U, 1U << 8, 1U << 16, 1U << 24}) {
        const Frames frames(8, 8);
        pixelAt(*frames.after, 3, 4) ^= bit;
        EXPECT_EQ(frames.found(), (Rects{{3, 4, 4, 5}})) << bit;
    }
}

TEST(FrameDiff, ChangesFarApartAreTwoRectangles) {
    Frames frames(100, 100);
    frames.change(3, 4);
    frames.change(90, 80);
    EXPECT_EQ(frames.found(), (Rects{{3, 4, 4, 5}, {90, 80, 91, 81}}));
}

TEST(FrameDiff, WholeFrameIsOneRectangle) {
    Frames frames(70, 61);
    for (int y = 0; y < 61; ++y) {
        for (int x = 0; x < 70; ++x)
            frames.change(x, y);
    }
    EXPECT_EQ(frames.found(), (Rects{{0, 0, 70, 61}}));
}

TEST(FrameDiff, LooksOnlyWhereItIsToldTo) {
    Frames frames(60, 60);
    frames.change(10, 10);
    frames.change(30, 30);
    frames.change(50, 50);
    EXPECT_TRUE(frames.foundIn({}).empty());
    EXPECT_TRUE(frames.foundIn({{0, 0, 60, 10}, {0, 10, 10, 60}, {11, 10, 30, 60}}).empty());
    EXPECT_EQ(frames.foundIn({{10, 10, 11, 11}, {25, 20, 60, 40}}),
              (Rects{{10, 10, 11, 11}, {30, 30, 31, 31}}));
}

TEST(FrameDiff, HoldsEveryPixelThatDiffersWithFewRectangles) {
    std::mt19937 random(5);
    for (int run = 0; run < 50; ++run) {
        Frames frames(64, 2000); // more bands than an update may name
        std::vector<PixelRect> changed;
        for (unsigned i = random() % 200; i > 0; --i) {
            const int x = static_cast<int>(random() % 64);
            const int y = static_cast<int>(random() % 2000);
            pixelAt(*frames.after, x, y) = ~pixelAt(*frames.before, x, y);
            changed.push_back(PixelRect::ofSize(x, y, 1, 1));
        }
        const Rects found = frames.found();
        EXPECT_LE(found.size(), maxListedRects);
        EXPECT_EQ(boundingBoxOf(found), boundingBoxOf(changed)) << "run " << run;
        const Region region(found);
        for (const PixelRect& pixel : changed)
            ASSERT_TRUE(region.contains(pixel)) << "run " << run;
    }
}

} // namespace
} // namespace platform
