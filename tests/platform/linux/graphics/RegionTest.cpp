#include "platform/linux/graphics/Region.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <numeric>
#include <random>

namespace platform {
namespace {

using Rects = std::vector<PixelRect>;

constexpr int side = 48;

/// The obvious model: one flag a pixel.
class Pixels {
public:
    void add(const PixelRect& rect) {
        for (int y = std::max(rect.top, 0); y < std::min(rect.bottom, side); ++y) {
            for (int x = std::max(rect.left, 0); x < std::min(rect.right, side); ++x)
                at(x, y) = true;
        }
    }

    bool& at(int x, int y) { return flags[index(x, y)]; }
    bool at(int x, int y) const { return flags[index(x, y)]; }

    template <class Op>
    static Pixels combined(const Pixels& a, const Pixels& b, Op op) {
        Pixels result;
        for (std::size_t i = 0; i < a.flags.size(); ++i)
            result.flags[i] = op(a.flags[i], b.flags[i]);
        return result;
    }

    std::int64_t count() const { return std::count(flags.begin(), flags.end(), true); }

    friend bool operator==(const Pixels&, const Pixels&) = default;

private:
    static std::size_t index(int x, int y) {
        return static_cast<std::size_t>(y) * side + static_cast<std::size_t>(x);
    }

    std::array<bool, std::size_t{side} * side> flags{};
};

Pixels pixelsOf(const Rects& rects) {
    Pixels pixels;
    for (const PixelRect& rect : rects)
        pixels.add(rect);
    return pixels;
}

Pixels pixelsOf(const Region& region) {
    return pixelsOf(region.rectangles());
}

class RandomRects {
public:
    explicit RandomRects(unsigned seed) : random(seed) {}

    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random); }

    /// Sometimes empty, sometimes inside out.
    PixelRect rect() {
        const int left = below(side);
        const int top = below(side);
        const int right = std::min(side, left + below(16) - 1);
        const int bottom = std::min(side, top + below(16) - 1);
        return {left, top, right, bottom};
    }

    Rects rects(int count) {
        Rects result;
        for (int i = 0; i < count; ++i)
            result.push_back(rect());
        return result;
    }

private:
    std::mt19937 random;
};

void expectCanonical(const Region& region) {
    const Rects& rects = region.rectangles();
    for (std::size_t i = 0; i < rects.size(); ++i) {
        EXPECT_FALSE(rects[i].isEmpty());
        if (i == 0)
            continue;
        const PixelRect& before = rects[i - 1];
        if (before.top == rects[i].top) {
            EXPECT_EQ(before.bottom, rects[i].bottom);
            EXPECT_LT(before.right, rects[i].left) << "touching rectangles of one band";
        } else {
            EXPECT_LE(before.bottom, rects[i].top);
        }
    }
}

bool areDisjoint(const Rects& rects) {
    for (std::size_t i = 0; i < rects.size(); ++i) {
        for (std::size_t j = i + 1; j < rects.size(); ++j) {
            if (rects[i].overlaps(rects[j]))
                return false;
        }
    }
    return true;
}

class RegionAgainstPixels : public testing::TestWithParam<unsigned> {};

TEST_P(RegionAgainstPixels, AgreesInEveryOperation) {
    RandomRects random(GetParam());
    for (int round = 0; round < 100; ++round) {
        const Rects listA = random.rects(random.below(12));
        const Rects listB = random.rects(random.below(12));
        const Region a(listA);
        const Region b(listB);
        const Pixels pixelsA = pixelsOf(listA);
        const Pixels pixelsB = pixelsOf(listB);
        ASSERT_EQ(pixelsOf(a), pixelsA);
        EXPECT_EQ(a.area(), pixelsA.count());
        EXPECT_EQ(a.boundingBox(), boundingBoxOf(listA));
        const Region united = a.united(b);
        const Region minus = a.minus(b);
        const Region intersected = a.intersected(b);
        ASSERT_EQ(pixelsOf(united), Pixels::combined(pixelsA, pixelsB, std::logical_or<>()));
        ASSERT_EQ(pixelsOf(intersected), Pixels::combined(pixelsA, pixelsB, std::logical_and<>()));
        ASSERT_EQ(pixelsOf(minus), Pixels::combined(pixelsA, pixelsB, [](bool inA, bool inB) {
                      return inA && !inB;
                  }));
        for (const Region& region : {a, united, minus, intersected})
            expectCanonical(region);
        // Equal sets are equal regions, however they came about.
        EXPECT_EQ(united, minus.united(b));
        EXPECT_EQ(a, minus.united(intersected));
        EXPECT_EQ(a.moved(3, -5).moved(-3, 5), a);
        const PixelRect probe = random.rect();
        EXPECT_EQ(a.contains(probe), Region(probe).minus(a).isEmpty());
        EXPECT_EQ(a.overlaps(probe), !Region(probe).intersected(a).isEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RegionAgainstPixels, testing::Range(1U, 11U));

TEST(Region, IsEmptyWithoutPixels) {
    EXPECT_TRUE(Region().isEmpty());
    EXPECT_TRUE(Region(PixelRect{5, 5, 5, 9}).isEmpty());
    EXPECT_TRUE(Region(PixelRect{5, 5, 2, 9}).isEmpty());
    EXPECT_EQ(Region().boundingBox(), PixelRect{});
    EXPECT_EQ(Region().area(), 0);
    EXPECT_TRUE(Region().contains(PixelRect{}));
    EXPECT_FALSE(Region().contains(0, 0));
}

TEST(Region, JoinsWhatTouches) {
    const Rects tiles{{0, 0, 10, 10}, {10, 0, 20, 10}, {0, 10, 10, 20}, {10, 10, 20, 20}};
    EXPECT_EQ(Region(tiles), Region(PixelRect{0, 0, 20, 20}));
}

TEST(Region, ContainsItsPixelsOnly) {
    const Region region(PixelRect{2, 3, 5, 7});
    EXPECT_TRUE(region.contains(2, 3));
    EXPECT_TRUE(region.contains(4, 6));
    EXPECT_FALSE(region.contains(5, 6));
    EXPECT_FALSE(region.contains(4, 7));
}

TEST(Region, HoldsLargeAreasExactly) {
    EXPECT_EQ(Region(PixelRect{0, 0, 32767, 32767}).area(), std::int64_t{32767} * 32767);
}

void expectCovers(const Rects& few, const Rects& many, std::size_t limit) {
    EXPECT_LE(few.size(), limit);
    EXPECT_TRUE(areDisjoint(few));
    EXPECT_EQ(boundingBoxOf(few), boundingBoxOf(many));
    EXPECT_TRUE(Region(many).minus(Region(few)).isEmpty()) << "something was lost";
}

class CoalescedRects : public testing::TestWithParam<unsigned> {};

TEST_P(CoalescedRects, CoverEverythingWithinTheLimit) {
    RandomRects random(GetParam());
    for (int round = 0; round < 30; ++round) {
        const Rects many = random.rects(1 + random.below(300));
        for (const std::size_t limit : {1U, 2U, 7U, 64U})
            expectCovers(coalesce(many, limit), many, limit);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, CoalescedRects, testing::Range(1U, 9U));

TEST(Coalesce, IsExactWhenTheLimitAllows) {
    const Rects cross{{10, 0, 20, 30}, {0, 10, 30, 20}};
    const Rects few = coalesce(cross);
    EXPECT_EQ(Region(few), Region(cross));
    EXPECT_EQ(few.size(), 3U);
}

TEST(Coalesce, GivesOneRectangleForOneThatIsDrawnOftenOrInTiles) {
    EXPECT_EQ(coalesce(Rects(10000, PixelRect{3, 4, 50, 60})), (Rects{{3, 4, 50, 60}}));
    Rects tiles;
    for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 50; ++x)
            tiles.push_back(PixelRect::ofSize(x * 8, y * 8, 8, 8));
    }
    EXPECT_EQ(coalesce(tiles), (Rects{{0, 0, 400, 400}}));
}

TEST(Coalesce, LeavesEmptyOnesOut) {
    EXPECT_TRUE(coalesce({}).empty());
    EXPECT_TRUE(coalesce(Rects{{5, 5, 5, 5}, {9, 9, 1, 1}}).empty());
    EXPECT_EQ(coalesce(Rects{{5, 5, 5, 5}, {1, 1, 2, 2}}), (Rects{{1, 1, 2, 2}}));
}

TEST(Coalesce, JoinsTheClosestFirst) {
    // Two clusters far apart stay apart.
    Rects many;
    for (int i = 0; i < 40; ++i) {
        many.push_back(PixelRect::ofSize(i * 2, i % 3, 1, 1));
        many.push_back(PixelRect::ofSize(1000 + i * 2, 900 + i % 3, 1, 1));
    }
    const Rects few = coalesce(many, 8);
    std::int64_t area = 0;
    for (const PixelRect& rect : few)
        area += rect.area();
    EXPECT_LT(area, 1000);
}

TEST(Coalesce, TakesScatteredDamageOfAnySize) {
    RandomRects random(77);
    Rects many;
    for (int i = 0; i < 100000; ++i)
        many.push_back(PixelRect::ofSize(random.below(1912), random.below(1072), 8, 8));
    const Rects few = coalesce(many);
    EXPECT_LE(few.size(), maxListedRects);
    EXPECT_TRUE(areDisjoint(few));
    EXPECT_EQ(boundingBoxOf(few), boundingBoxOf(many));
    EXPECT_TRUE(std::all_of(many.begin(), many.begin() + 2000,
                            [&few](const PixelRect& rect) { return Region(few).contains(rect); }));
}

TEST(Coalesce, TakesACheckerboard) {
    Rects many;
    for (int y = 0; y < 270; ++y) {
        for (int x = y % 2; x < 480; x += 2)
            many.push_back(PixelRect::ofSize(x * 4, y * 4, 4, 4));
    }
    const Rects few = coalesce(many);
    expectCovers(few, many, maxListedRects);
}

TEST(DamageList, KeepsTheExactBoundingBoxAndLosesNothing) {
    RandomRects random(5);
    DamageList list;
    Rects all;
    for (int round = 0; round < 50; ++round) {
        for (int i = random.below(400); i > 0; --i) {
            all.push_back(random.rect());
            list.add(all.back());
        }
        const Rects more = random.rects(random.below(200));
        list.add(more);
        all.insert(all.end(), more.begin(), more.end());
        EXPECT_EQ(list.boundingBox(), boundingBoxOf(all));
    }
    expectCovers(list.rectangles(), all, maxListedRects);
}

TEST(DamageList, IsEmptyAtFirstAndAfterClear) {
    DamageList list;
    EXPECT_TRUE(list.isEmpty());
    EXPECT_TRUE(list.rectangles().empty());
    list.add(PixelRect{1, 1, 1, 5});
    EXPECT_TRUE(list.isEmpty());
    list.add(PixelRect{1, 1, 2, 5});
    EXPECT_FALSE(list.isEmpty());
    list.clear();
    EXPECT_TRUE(list.isEmpty());
    EXPECT_TRUE(list.rectangles().empty());
    EXPECT_EQ(list.boundingBox(), PixelRect{});
    list.add(PixelRect{7, 7, 9, 9});
    EXPECT_EQ(list.rectangles(), (Rects{{7, 7, 9, 9}}));
}

TEST(DamageList, TakesManyMoreThanItLists) {
    DamageList list(4);
    for (int i = 0; i < 100000; ++i)
        list.add(PixelRect::ofSize(i % 300 * 5, i / 300 * 3, 2, 2));
    EXPECT_LE(list.rectangles().size(), 4U);
    EXPECT_EQ(list.boundingBox(), (PixelRect{0, 0, 1497, 1001}));
}

TEST(PixelRect, KnowsWhatItHolds) {
    const PixelRect rect{2, 3, 10, 8};
    EXPECT_EQ(rect.area(), 40);
    EXPECT_TRUE(rect.contains(PixelRect{2, 3, 10, 8}));
    EXPECT_TRUE(rect.contains(PixelRect{50, 50, 50, 50}));
    EXPECT_FALSE(rect.contains(PixelRect{2, 3, 11, 8}));
    EXPECT_TRUE(rect.overlaps(PixelRect{9, 7, 20, 20}));
    EXPECT_FALSE(rect.overlaps(PixelRect{10, 3, 20, 8}));
    EXPECT_EQ(rect.moved(-2, 1), (PixelRect{0, 4, 8, 9}));
    EXPECT_EQ(PixelRect().boundingWith(rect), rect);
    EXPECT_EQ(rect.boundingWith(PixelRect{}), rect);
    EXPECT_EQ((PixelRect{0, 0, 65536, 65536}).area(), std::int64_t{1} << 32);
    EXPECT_EQ((PixelRect{5, 5, 1, 1}).area(), 0);
}

} // namespace
} // namespace platform
