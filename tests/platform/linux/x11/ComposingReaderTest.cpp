#include "platform/linux/x11/ComposingReader.h"

#include "platform/linux/x11/DamageWatch.h"
#include "platform/linux/x11/ScreenReading.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace platform::x11 {
namespace {

template <SurfaceMemory memory>
std::unique_ptr<FrameReader> openWith(Connection& connection, const FrameReader::Setup& setup) {
    return ComposingReader::open(connection, setup, memory);
}

INSTANTIATE_TEST_SUITE_P(
    Composing, ReadsTheScreen,
    testing::Values(ReaderRow{"IntoAFile", openWith<SurfaceMemory::SharedFile>,
                              ScreenReading::screenOfDepth(24)},
                    ReaderRow{"IntoASegment", openWith<SurfaceMemory::SharedSegment>,
                              ScreenReading::screenOfDepth(24)},
                    ReaderRow{"FromDepth16", openWith<SurfaceMemory::SharedFile>,
                              ScreenReading::screenOfDepth(16)}),
    [](const auto& row) { return row.param.name; });

class ReadsUnderARegion : public testing::TestWithParam<PixelRect> {};

TEST_P(ReadsUnderARegion, WhatChangedAndWhatIsMissed) {
    ScreenReading screen(ScreenReading::screenOfDepth(24), openWith<SurfaceMemory::SharedFile>,
                         GetParam());
    ASSERT_NE(screen.reader, nullptr);
    EXPECT_TRUE(screen.reader->readsUnderRegion());
    const auto damage = DamageWatch::open(*screen.connection);
    ASSERT_NE(damage, nullptr);
    damage->sendTake();
    ASSERT_EQ(screen.read({screen.wholeFrame()}), FrameReader::Progress::Done);
    for (unsigned seed = 2; seed < 6; ++seed) {
        screen.draw(seed);
        damage->sendTake();
        // Every other time there is also an area of the frame itself.
        const PixelRect missed = PixelRect::ofSize(5, 6, 20, 10);
        std::vector<PixelRect> area;
        if (seed % 2 == 0) {
            const Surface& surface = *screen.frame().surface;
            const std::size_t stride = surface.strideBytes();
            std::fill_n(screen.frame().surface->pixels() + 6 * stride + 20, 80, std::uint8_t{0x55});
            area.push_back(missed);
        }
        ASSERT_EQ(screen.read(area, damage->taken()), FrameReader::Progress::Done);
        EXPECT_EQ(screen.picture(), screen.expected()) << "seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Frames, ReadsUnderARegion,
                         testing::Values(ScreenReading::whole, PixelRect{40, 30, 141, 120}));

TEST(ComposingReader, LeavesAloneWhatTheRegionDoesNotHold) {
    ScreenReading screen(ScreenReading::screenOfDepth(24), openWith<SurfaceMemory::SharedFile>);
    ASSERT_NE(screen.reader, nullptr);
    ASSERT_EQ(screen.read({screen.wholeFrame()}), FrameReader::Progress::Done);
    const support::Picture before = screen.picture();
    screen.draw(2);
    const xcb_xfixes_region_t nothing = screen.connection->newId();
    xcb_xfixes_create_region(screen.connection->get(), nothing, 0, nullptr);
    ASSERT_EQ(screen.read({}, nothing), FrameReader::Progress::Done);
    EXPECT_EQ(screen.picture(), before);
}

TEST(ComposingReader, DoesNotSeeAPrivateFrame) {
    // Its memory is no file and no segment, so the server cannot be let at it.
    ScreenReading screen(ScreenReading::screenOfDepth(24), openWith<SurfaceMemory::Private>);
    EXPECT_EQ(screen.reader, nullptr);
    EXPECT_TRUE(roundTrip(*screen.connection));
}

} // namespace
} // namespace platform::x11
