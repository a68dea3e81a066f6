#include "platform/linux/graphics/MoveDetector.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace {

using platform::FrameChange;
using platform::MoveSearch;
using platform::PixelRect;
using platform::Ref;
using platform::Shift;
using platform::Surface;
using platform::SurfaceMemory;

constexpr int width = 640;
constexpr int height = 480;

Ref<Surface> blank() {
    return Surface::create(width, height, SurfaceMemory::Private);
}

std::uint32_t* rowOf(const Surface& surface, int y) {
    return reinterpret_cast<std::uint32_t*>(surface.pixels() +
                                            static_cast<std::size_t>(y) * surface.strideBytes());
}

/// Something like text: dark marks of random shape on light paper, in lines with space between.
void write(Surface& surface, const PixelRect& area, unsigned seed) {
    std::mt19937 random(seed);
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            const bool isMark = y % 16 < 11 && x % 8 < 7 && random() % 3 == 0;
            rowOf(surface, y)[x] = isMark ? 0xff202020 : 0xfff8f8f0;
        }
    }
}

/// What stood `shift` away from the area comes into it; the rest is as before.
Ref<Surface> moved(const Surface& before, const PixelRect& area, Shift shift) {
    auto after = blank();
    std::memcpy(after->pixels(), before.pixels(), before.sizeBytes());
    for (int y = area.top; y < area.bottom; ++y)
        std::memcpy(rowOf(*after, y) + area.left,
                    rowOf(before, y + shift.dy) + area.left + shift.dx,
                    static_cast<std::size_t>(area.width()) * 4);
    return after;
}

FrameChange find(const Surface& before, const Surface& after, std::vector<PixelRect> dirty,
                 MoveSearch search = MoveSearch::Scrolls) {
    FrameChange change;
    change.dirty = std::move(dirty);
    findMoves(before, after, search, change);
    return change;
}

bool isTrue(const Surface& before, const Surface& after, const FrameChange& change) {
    for (const PixelRect& rect : change.moved) {
        for (int y = rect.top; y < rect.bottom; ++y) {
            for (int x = rect.left; x < rect.right; ++x) {
                if (rowOf(after, y)[x] != rowOf(before, y + change.shift.dy)[x + change.shift.dx])
                    return false;
            }
        }
    }
    return true;
}

class Scroll : public testing::TestWithParam<Shift> {};

TEST_P(Scroll, IsFoundWholeWithItsOffset) {
    const Shift shift = GetParam();
    const auto before = blank();
    write(*before, {0, 0, width, height}, 7);
    const PixelRect frame{0, 0, width, height};
    const PixelRect area =
        PixelRect{100, 90, 500, 400}.intersection(frame.moved(-shift.dx, -shift.dy));
    const auto after = moved(*before, area, shift);
    const FrameChange change = find(*before, *after, {area});
    EXPECT_EQ(change.shift, shift);
    ASSERT_EQ(change.moved.size(), 1U);
    EXPECT_EQ(change.moved[0], area);
}

INSTANTIATE_TEST_SUITE_P(Offsets, Scroll,
                         testing::Values(Shift{0, 1}, Shift{0, -1}, Shift{0, 16}, Shift{0, -16},
                                         Shift{0, 90}, Shift{0, -57}, Shift{1, 0}, Shift{-1, 0},
                                         Shift{24, 0}, Shift{-90, 0}));

TEST(MoveDetector, NewLineBelowAScrollIsNotMoved) {
    const auto before = blank();
    write(*before, {0, 0, width, height}, 3);
    const auto after = moved(*before, {0, 0, width, height - 16}, {0, 16});
    write(*after, {0, height - 16, width, height}, 4);
    const FrameChange change = find(*before, *after, {{0, 0, width, height}});
    EXPECT_EQ(change.shift, (Shift{0, 16}));
    ASSERT_EQ(change.moved.size(), 1U);
    EXPECT_GE(change.moved[0].area(), std::int64_t{width} * (height - 16));
    EXPECT_TRUE(isTrue(*before, *after, change));
}

TEST(MoveDetector, WindowThatMovedBothWaysIsFoundWhenAskedFor) {
    const auto before = blank();
    write(*before, {100, 100, 260, 220}, 5);
    const Shift shift{-33, 21};
    const PixelRect place = PixelRect{100, 100, 260, 220}.moved(33, -21);
    const auto after = moved(*before, place, shift);
    const FrameChange scrolls = find(*before, *after, {{100, 79, 293, 220}});
    EXPECT_TRUE(scrolls.moved.empty());
    const FrameChange windows =
        find(*before, *after, {{100, 79, 293, 220}}, MoveSearch::ScrollsAndWindows);
    EXPECT_EQ(windows.shift, shift);
    ASSERT_EQ(windows.moved.size(), 1U);
    EXPECT_TRUE(isTrue(*before, *after, windows));
    EXPECT_GE(windows.moved[0].area(), place.area() * 9 / 10);
}

TEST(MoveDetector, SmallChangesAreNotLookedAt) {
    const auto before = blank();
    write(*before, {0, 0, width, height}, 3);
    const PixelRect area{0, 0, 60, 60};
    const auto after = moved(*before, area, {0, 8});
    EXPECT_TRUE(find(*before, *after, {area}).moved.empty());
}

TEST(MoveDetector, UnrelatedPicturesGiveNoMove) {
    const auto before = blank();
    const auto after = blank();
    for (unsigned seed = 0; seed < 20; ++seed) {
        write(*before, {0, 0, width, height}, seed);
        write(*after, {0, 0, width, height}, seed + 100);
        const FrameChange change = find(*before, *after, {{0, 0, width, height}});
        EXPECT_TRUE(change.moved.empty());
        EXPECT_EQ(change.shift, Shift{});
    }
}

TEST(MoveDetector, OneColourGivesNoMove) {
    const auto before = blank();
    const auto after = blank();
    EXPECT_TRUE(find(*before, *after, {{0, 0, width, height}}).moved.empty());
}

TEST(MoveDetector, WhatItSaysIsTrueForRandomScrollsWithOtherChanges) {
    std::mt19937 random(11);
    const auto upTo = [&](int last) { return static_cast<int>(random() % (last + 1)); };
    int found = 0;
    for (int i = 0; i < 200; ++i) {
        const auto before = blank();
        write(*before, {0, 0, width, height}, random());
        const Shift shift{0, upTo(200) - 100};
        const PixelRect frame{0, 0, width, height};
        const PixelRect wanted =
            PixelRect::ofSize(upTo(200), upTo(100), 200 + upTo(200), 150 + upTo(200));
        const PixelRect area = wanted.intersection(frame).intersection(frame.moved(0, -shift.dy));
        if (area.height() < 60)
            continue;
        const auto after = moved(*before, area, shift);
        // A clock changes inside.
        write(*after, PixelRect::ofSize(area.left + 20, area.top + 20, 30, 16), random());
        const FrameChange change = find(*before, *after, {area});
        ASSERT_TRUE(isTrue(*before, *after, change)) << "run " << i;
        for (const PixelRect& rect : change.moved)
            ASSERT_TRUE(area.contains(rect)) << "run " << i;
        found += change.moved.empty() ? 0 : 1;
    }
    EXPECT_GT(found, 150);
}

TEST(MovedParts, SourceOutsideTheFrameIsLeftOut) {
    const auto before = blank();
    const auto after = blank();
    const PixelRect area[] = {{0, 0, width, height}};
    for (const Shift shift : {Shift{0, -100}, Shift{0, 100}, Shift{-100, 0}, Shift{100, 50}}) {
        const auto parts = movedParts(*before, *after, area, shift);
        ASSERT_EQ(parts.size(), 1U);
        EXPECT_TRUE((PixelRect{0, 0, width, height}.contains(parts[0].moved(shift.dx, shift.dy))));
    }
    EXPECT_TRUE(movedParts(*before, *after, area, {0, height}).empty());
}

} // namespace
