#include "platform/linux/graphics/Update.h"

#include <array>
#include <gtest/gtest.h>
#include <random>
#include <thread>

namespace platform {
namespace {

using Update = CGDisplayStreamUpdate;
using UpdateRef = Ref<const Update>;
using Rects = std::vector<PixelRect>;

UpdateRef makeUpdate(const Rects& dirty, const Rects& moved = {}, int dx = 0, int dy = 0) {
    return UpdateRef::adopt(new Update(dirty, moved, dx, dy));
}

UpdateRef merge(const UpdateRef& first, const UpdateRef& second) {
    return UpdateRef::adopt(CGDisplayStreamUpdateCreateMergedUpdate(first.get(), second.get()));
}

Rects rectsOf(const UpdateRef& update, CGDisplayStreamUpdateRectType type) {
    std::size_t count = 12345;
    const CGRect* rects = CGDisplayStreamUpdateGetRects(update.get(), type, &count);
    Rects result;
    for (std::size_t i = 0; i < count; ++i)
        result.push_back(PixelRect::ofSize(
            static_cast<int>(rects[i].origin.x), static_cast<int>(rects[i].origin.y),
            static_cast<int>(rects[i].size.width), static_cast<int>(rects[i].size.height)));
    return result;
}

Rects dirtyOf(const UpdateRef& update) {
    return rectsOf(update, kCGDisplayStreamUpdateDirtyRects);
}

Rects movedOf(const UpdateRef& update) {
    return rectsOf(update, kCGDisplayStreamUpdateMovedRects);
}

struct Offset {
    CGFloat dx = 77;
    CGFloat dy = 77;
    friend bool operator==(const Offset&, const Offset&) = default;
};

Offset offsetOf(const UpdateRef& update) {
    Offset offset;
    CGDisplayStreamUpdateGetMovedRectsDelta(update.get(), &offset.dx, &offset.dy);
    return offset;
}

TEST(Update, NamesWhatChanged) {
    const auto update = makeUpdate({{0, 0, 10, 10}, {20, 20, 30, 40}});
    EXPECT_EQ(dirtyOf(update), (Rects{{0, 0, 10, 10}, {20, 20, 30, 40}}));
    EXPECT_TRUE(movedOf(update).empty());
    EXPECT_EQ(offsetOf(update), (Offset{0, 0}));
}

TEST(Update, CountsMovedAreasAsDirtyToo) {
    const auto update = makeUpdate({{0, 90, 100, 100}}, {{0, 0, 100, 90}}, 0, 10);
    EXPECT_EQ(dirtyOf(update), (Rects{{0, 0, 100, 100}}));
    EXPECT_EQ(movedOf(update), (Rects{{0, 0, 100, 90}}));
    EXPECT_EQ(offsetOf(update), (Offset{0, 10}));
}

TEST(Update, TellsRefreshedFromMoved) {
    const auto update = makeUpdate({{0, 90, 100, 100}}, {{0, 0, 100, 90}}, 0, 10);
    EXPECT_EQ(rectsOf(update, kCGDisplayStreamUpdateRefreshedRects), (Rects{{0, 90, 100, 100}}));
}

TEST(Update, ReducesItsDirtyRectangles) {
    Rects scattered;
    for (int i = 0; i < 40; ++i)
        scattered.push_back(PixelRect::ofSize(i * 20, i * 15, 5, 5));
    const auto update = makeUpdate(scattered);
    EXPECT_EQ(dirtyOf(update), scattered);
    const Rects reduced = rectsOf(update, kCGDisplayStreamUpdateReducedDirtyRects);
    EXPECT_LE(reduced.size(), 8U);
    EXPECT_TRUE(Region(scattered).minus(Region(reduced)).isEmpty());
}

TEST(Update, TakesAnUnknownKindForDirty) {
    EXPECT_EQ(rectsOf(makeUpdate({{1, 1, 2, 2}}), 99), (Rects{{1, 1, 2, 2}}));
}

TEST(Update, DoesNotCallMovedWhatStaysInPlace) {
    const auto update = makeUpdate({}, {{0, 0, 5, 5}}, 0, 0);
    EXPECT_TRUE(movedOf(update).empty());
    EXPECT_EQ(dirtyOf(update), (Rects{{0, 0, 5, 5}}));
}

TEST(Update, MayBeEmpty) {
    const auto update = makeUpdate({});
    EXPECT_TRUE(dirtyOf(update).empty());
    EXPECT_EQ(
        CGDisplayStreamUpdateGetRects(update.get(), kCGDisplayStreamUpdateDirtyRects, nullptr),
        nullptr);
}

TEST(Update, KeepsItsListsShort) {
    Rects scattered;
    Rects moved;
    for (int i = 0; i < 500; ++i) {
        scattered.push_back(PixelRect::ofSize(i % 25 * 40, i / 25 * 40, 8, 8));
        moved.push_back(PixelRect::ofSize(2000 + i % 25 * 40, i / 25 * 40, 8, 8));
    }
    moved.push_back(PixelRect::ofSize(4000, 4000, 100, 100));
    const auto update = makeUpdate(scattered, moved, 1, 1);
    EXPECT_LE(dirtyOf(update).size(), maxListedRects);
    EXPECT_EQ(movedOf(update).size(), maxListedRects);
    EXPECT_EQ(movedOf(update).front(), moved.back()) << "the largest are told";
    EXPECT_TRUE(Region(scattered).minus(Region(dirtyOf(update))).isEmpty());
    EXPECT_TRUE(Region(moved).minus(Region(dirtyOf(update))).isEmpty());
}

TEST(Update, MayBeNull) {
    std::size_t count = 5;
    EXPECT_EQ(CGDisplayStreamUpdateGetRects(nullptr, kCGDisplayStreamUpdateDirtyRects, &count),
              nullptr);
    EXPECT_EQ(count, 5U) << "the number is left alone";
    EXPECT_EQ(offsetOf(UpdateRef()), (Offset{77, 77}));
    CGDisplayStreamUpdateGetMovedRectsDelta(makeUpdate({}).get(), nullptr, nullptr);
}

TEST(Update, ServesItsListsOnManyThreads) {
    const auto update = makeUpdate({{0, 90, 100, 100}}, {{0, 0, 100, 90}}, 0, 10);
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([update] {
            EXPECT_EQ(rectsOf(update, kCGDisplayStreamUpdateRefreshedRects).size(), 1U);
            EXPECT_EQ(rectsOf(update, kCGDisplayStreamUpdateReducedDirtyRects).size(), 1U);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(MergedUpdate, WithNullIsTheOtherOne) {
    const auto update = makeUpdate({{1, 1, 2, 2}});
    EXPECT_EQ(merge(update, UpdateRef()), update);
    EXPECT_EQ(merge(UpdateRef(), update), update);
    EXPECT_EQ(update->retainCount(), 1);
    EXPECT_FALSE(merge(UpdateRef(), UpdateRef()));
}

TEST(MergedUpdate, IsANewOneWithAReferenceOfItsOwn) {
    const auto first = makeUpdate({{1, 1, 2, 2}});
    const auto both = merge(first, first);
    EXPECT_NE(both, first);
    EXPECT_EQ(both->retainCount(), 1);
    EXPECT_EQ(dirtyOf(both), (Rects{{1, 1, 2, 2}}));
}

TEST(MergedUpdate, HoldsTheDirtyAreasOfBoth) {
    const auto both = merge(makeUpdate({{0, 0, 10, 10}}), makeUpdate({{100, 100, 110, 110}}));
    EXPECT_EQ(dirtyOf(both), (Rects{{0, 0, 10, 10}, {100, 100, 110, 110}}));
}

TEST(MergedUpdate, KeepsMovesThatTheSecondLeavesAlone) {
    const auto first = makeUpdate({}, {{0, 0, 100, 100}}, 0, 10);
    const auto both = merge(first, makeUpdate({{0, 0, 100, 40}}));
    EXPECT_EQ(movedOf(both), (Rects{{0, 40, 100, 100}}));
    EXPECT_EQ(offsetOf(both), (Offset{0, 10}));
}

TEST(MergedUpdate, KeepsSecondMovesWhoseSourceTheFirstLeftAlone) {
    // The source of row y is row y + 10: a change of rows 50 to 60 spoils rows 40 to 50.
    const auto both =
        merge(makeUpdate({{0, 50, 100, 60}}), makeUpdate({}, {{0, 0, 100, 90}}, 0, 10));
    EXPECT_EQ(movedOf(both), (Rects{{0, 0, 100, 40}, {0, 50, 100, 90}}));
    EXPECT_EQ(offsetOf(both), (Offset{0, 10}));
}

TEST(MergedUpdate, AddsTheOffsetsOfChainedMoves) {
    const auto scroll = makeUpdate({{0, 90, 100, 100}}, {{0, 0, 100, 90}}, 0, 10);
    const auto both = merge(scroll, scroll);
    EXPECT_EQ(movedOf(both), (Rects{{0, 0, 100, 80}}));
    EXPECT_EQ(offsetOf(both), (Offset{0, 20}));
    EXPECT_EQ(dirtyOf(both), (Rects{{0, 0, 100, 100}}));
}

TEST(MergedUpdate, ForgetsAMoveThereAndBack) {
    const auto there = makeUpdate({}, {{10, 0, 20, 10}}, -10, 0);
    const auto back = makeUpdate({}, {{0, 0, 10, 10}}, 10, 0);
    const auto both = merge(there, back);
    // What went there and back is where it was; the other place still shows it, moved.
    EXPECT_EQ(movedOf(both), (Rects{{10, 0, 20, 10}}));
    EXPECT_EQ(offsetOf(both), (Offset{-10, 0}));
    EXPECT_EQ(dirtyOf(both), (Rects{{0, 0, 20, 10}}));
}

TEST(MergedUpdate, ChoosesTheOffsetThatExplainsMost) {
    const auto small = makeUpdate({}, {{0, 0, 10, 10}}, 50, 50);
    const auto large = makeUpdate({}, {{200, 200, 300, 300}}, 0, 7);
    for (const auto& both : {merge(small, large), merge(large, small)}) {
        EXPECT_EQ(movedOf(both), (Rects{{200, 200, 300, 300}}));
        EXPECT_EQ(offsetOf(both), (Offset{0, 7}));
        EXPECT_EQ(dirtyOf(both), (Rects{{0, 0, 10, 10}, {200, 200, 300, 300}}));
    }
}

TEST(MergedUpdate, JoinsMovesOfOneOffset) {
    const auto both =
        merge(makeUpdate({}, {{0, 0, 10, 10}}, 0, 20), makeUpdate({}, {{100, 0, 110, 10}}, 0, 20));
    EXPECT_EQ(movedOf(both), (Rects{{0, 0, 10, 10}, {100, 0, 110, 10}}));
    EXPECT_EQ(offsetOf(both), (Offset{0, 20}));
}

constexpr int side = 40;

/// A screen on which no two pixels ever look alike, but by being moved.
class Screen {
public:
    Screen() { fill({0, 0, side, side}); }

    int at(int x, int y) const { return pixels[index(x, y)]; }

    void fill(const PixelRect& rect) {
        forEach(rect, [this](int x, int y) { pixels[index(x, y)] = ++lastValue; });
    }

    /// Copies from the place `offset` away, as it was before.
    void move(const PixelRect& rect, int dx, int dy) {
        const auto before = pixels;
        forEach(rect, [&](int x, int y) { pixels[index(x, y)] = before[index(x + dx, y + dy)]; });
    }

    template <class Do>
    static void forEach(const PixelRect& rect, Do act) {
        for (int y = rect.top; y < rect.bottom; ++y) {
            for (int x = rect.left; x < rect.right; ++x)
                act(x, y);
        }
    }

private:
    static std::size_t index(int x, int y) {
        return static_cast<std::size_t>(y) * side + static_cast<std::size_t>(x);
    }

    std::array<int, std::size_t{side} * side> pixels{};
    int lastValue = 0;
};

/// Both statements of an update, pixel by pixel.
void expectTrue(const Update& update, const Screen& before, const Screen& after) {
    const Region dirty(update.dirty());
    Screen::forEach({0, 0, side, side}, [&](int x, int y) {
        if (!dirty.contains(x, y))
            ASSERT_EQ(after.at(x, y), before.at(x, y))
                << "changed but not dirty: " << x << "," << y;
    });
    for (const PixelRect& rect : update.moved()) {
        EXPECT_TRUE(dirty.contains(rect));
        Screen::forEach(rect, [&](int x, int y) {
            ASSERT_EQ(after.at(x, y), before.at(x + update.dx(), y + update.dy()))
                << "not moved: " << x << "," << y;
        });
    }
}

class RandomUpdates {
public:
    explicit RandomUpdates(unsigned seed) : random(seed) {}

    /// Moves some areas by one offset, then draws over some, and says so.
    UpdateRef change(Screen& screen) {
        const int dx = between(-8, 8);
        const int dy = between(-8, 8);
        const PixelRect room =
            PixelRect{0, 0, side, side}.intersection(PixelRect{0, 0, side, side}.moved(-dx, -dy));
        Region moved;
        if (between(0, 3) != 0) {
            const PixelRect rect = rectIn(room);
            screen.move(rect, dx, dy);
            moved = Region(rect);
        }
        Rects drawn;
        for (int i = between(0, 3); i > 0; --i) {
            drawn.push_back(rectIn({0, 0, side, side}));
            screen.fill(drawn.back());
        }
        moved = moved.minus(Region(drawn));
        return makeUpdate(drawn, moved.rectangles(), dx, dy);
    }

private:
    int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

    PixelRect rectIn(const PixelRect& room) {
        const int left = between(room.left, room.right - 1);
        const int top = between(room.top, room.bottom - 1);
        return {left, top, between(left + 1, room.right), between(top + 1, room.bottom)};
    }

    std::mt19937 random;
};

class MergedUpdates : public testing::TestWithParam<unsigned> {};

TEST_P(MergedUpdates, SayTheTruthAboutEveryPixel) {
    RandomUpdates random(GetParam());
    int withMoves = 0;
    for (int round = 0; round < 60; ++round) {
        Screen screen;
        const Screen before = screen;
        UpdateRef accumulated;
        for (int step = 0; step < 6; ++step) {
            const Screen beforeStep = screen;
            const UpdateRef update = random.change(screen);
            expectTrue(*update, beforeStep, screen);
            const Region dirtyBefore = accumulated ? Region(accumulated->dirty()) : Region();
            accumulated = merge(accumulated, update);
            expectTrue(*accumulated, before, screen);
            EXPECT_TRUE(dirtyBefore.united(Region(update->dirty()))
                            .minus(Region(accumulated->dirty()))
                            .isEmpty())
                << "an area was lost";
            EXPECT_EQ(boundingBoxOf(accumulated->dirty()),
                      dirtyBefore.united(Region(update->dirty())).boundingBox());
            if (step > 0 && !accumulated->moved().empty())
                ++withMoves;
        }
    }
    EXPECT_GT(withMoves, 30) << "merging must not simply drop all moves";
}

INSTANTIATE_TEST_SUITE_P(Seeds, MergedUpdates, testing::Range(1U, 9U));

} // namespace
} // namespace platform
