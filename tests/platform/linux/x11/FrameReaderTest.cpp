#include "platform/linux/x11/FrameReader.h"

#include "platform/linux/x11/ScreenReading.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <string>

namespace platform::x11 {
namespace {

using support::LogCapture;

support::XServerOptions without(std::vector<std::string> extensions) {
    support::XServerOptions options = ScreenReading::screenOfDepth(24);
    options.withoutExtensions = std::move(extensions);
    return options;
}

INSTANTIATE_TEST_SUITE_P(
    TheBestWay, ReadsTheScreen,
    testing::Values(ReaderRow{"OfAFullServer", FrameReader::open, without({})},
                    ReaderRow{"WithoutRender", FrameReader::open, without({"RENDER"})},
                    ReaderRow{"WithoutSharedMemory", FrameReader::open, without({"MIT-SHM"})},
                    ReaderRow{"WithoutBoth", FrameReader::open, without({"RENDER", "MIT-SHM"})},
                    ReaderRow{"WithoutRegions", FrameReader::open, without({"XFIXES"})}),
    [](const auto& row) { return row.param.name; });

/// What a server lacks, which memory the frames then have, and what the log says about it.
struct WayRow {
    const char* name;
    std::vector<std::string> lacks;
    bool underRegion;
    SurfaceMemory memory;
    std::vector<std::string> log;
    friend void PrintTo(const WayRow& row, std::ostream* out) { *out << row.name; }
};

class WayDown : public testing::TestWithParam<WayRow> {};

TEST_P(WayDown, IsTakenWithItsReasonInTheLog) {
    const support::XServer server(without(GetParam().lacks));
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    const LogCapture log("FrameReader");
    const auto reader = FrameReader::open(*connection, {64, 48, 2, nullptr});
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->readsUnderRegion(), GetParam().underRegion);
    for (const Frame& frame : reader->frames())
        EXPECT_EQ(frame.surface->memory(), GetParam().memory);
    EXPECT_EQ(log.lines(), GetParam().log);
}

const char* const noRender = "FrameReader: The server has no RENDER: pixels are converted here";
const char* const noDrawing =
    "FrameReader: The server cannot draw into shared memory: pixels take a second way";
const char* const noMemory = "FrameReader: The server has no MIT-SHM";
const char* const noSharing =
    "FrameReader: No shared memory with the server: pixels come through the socket";

INSTANTIATE_TEST_SUITE_P(
    Servers, WayDown,
    testing::Values(
        WayRow{"Full", {}, true, SurfaceMemory::SharedFile, {}},
        WayRow{"WithoutRender", {"RENDER"}, false, SurfaceMemory::Private, {noRender, noDrawing}},
        WayRow{"WithoutSharedMemory",
               {"MIT-SHM"},
               false,
               SurfaceMemory::Private,
               {noMemory, noSharing}},
        WayRow{"WithoutBoth",
               {"MIT-SHM", "RENDER"},
               false,
               SurfaceMemory::Private,
               {noMemory, noRender, noSharing}}),
    [](const auto& row) { return row.param.name; });

class Pool : public testing::Test {
protected:
    Frame& frame(std::size_t i) { return reader->frames()[i]; }

    support::XServer server{ScreenReading::screenOfDepth(24)};
    std::unique_ptr<Connection> connection = Connection::open(server.display().c_str());
    std::unique_ptr<FrameReader> reader = FrameReader::open(*connection, {64, 48, 3, nullptr});
};

TEST_F(Pool, GivesAFrameThatNobodyHolds) {
    ASSERT_NE(reader, nullptr);
    ASSERT_EQ(reader->frames().size(), 3U);
    EXPECT_EQ(reader->idleFrame(nullptr), &frame(0));
    frame(0).surface->incrementUseCount();
    EXPECT_EQ(reader->idleFrame(nullptr), &frame(1));
    frame(0).surface->decrementUseCount();
    EXPECT_EQ(reader->idleFrame(nullptr), &frame(0));
}

TEST_F(Pool, GivesTheLastFrameOnlyIfThereIsNoOther) {
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->idleFrame(&frame(0)), &frame(1));
    frame(1).surface->incrementUseCount();
    frame(2).surface->incrementUseCount();
    EXPECT_EQ(reader->idleFrame(&frame(0)), &frame(0));
    frame(0).surface->incrementUseCount();
    EXPECT_EQ(reader->idleFrame(&frame(0)), nullptr);
}

TEST(BlackenGone, PaintsWhatTheViewportDoesNotShowInsideTheAreaAlone) {
    const auto surface = Surface::create(6, 4, SurfaceMemory::Private);
    const Viewport viewport{0, 0, {0, 0, 4, 3}};
    const PixelRect area[] = {{2, 0, 5, 2}, {0, 2, 2, 4}};
    blackenGone(*surface, viewport, area);
    const std::uint32_t black = 0xff000000;
    const std::uint32_t expected[4][6] = {{0, 0, 0, 0, black, 0},
                                          {0, 0, 0, 0, black, 0},
                                          {0, 0, 0, 0, 0, 0},
                                          {black, black, 0, 0, 0, 0}};
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(surface->row(y)[x], expected[y][x]) << x << ", " << y;
    }
}

TEST(AttachSegment, IsRefusedToAServerThatIsGone) {
    support::XServer server(ScreenReading::screenOfDepth(24));
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    const SigpipeGuard guard(*connection);
    server.kill();
    const auto surface = Surface::create(6, 4, SurfaceMemory::SharedSegment);
    EXPECT_FALSE(attachSegment(*connection, *surface, connection->newId()));
}

} // namespace
} // namespace platform::x11
