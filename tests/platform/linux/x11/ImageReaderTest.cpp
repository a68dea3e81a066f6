#include "platform/linux/x11/ImageReader.h"

#include "platform/linux/x11/ScreenReading.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace platform::x11 {
namespace {

using support::LogCapture;
using support::XServer;
using support::XServerOptions;

template <SurfaceMemory memory>
std::unique_ptr<FrameReader> openWith(Connection& connection, const FrameReader::Setup& setup) {
    return ImageReader::open(connection, setup, memory);
}

XServerOptions withoutRender(int depth) {
    XServerOptions options = ScreenReading::screenOfDepth(depth);
    options.withoutExtensions = {"RENDER"};
    return options;
}

INSTANTIATE_TEST_SUITE_P(
    Images, ReadsTheScreen,
    testing::Values(ReaderRow{"ThroughAFile", openWith<SurfaceMemory::SharedFile>,
                              ScreenReading::screenOfDepth(24)},
                    ReaderRow{"ThroughASegment", openWith<SurfaceMemory::SharedSegment>,
                              ScreenReading::screenOfDepth(24)},
                    ReaderRow{"ThroughTheSocket", openWith<SurfaceMemory::Private>,
                              ScreenReading::screenOfDepth(24)},
                    ReaderRow{"ComposedFromDepth16", openWith<SurfaceMemory::Private>,
                              ScreenReading::screenOfDepth(16)},
                    ReaderRow{"OfTheScreenThroughAFile", openWith<SurfaceMemory::SharedFile>,
                              withoutRender(24)},
                    ReaderRow{"OfTheScreenThroughTheSocket", openWith<SurfaceMemory::Private>,
                              withoutRender(24)},
                    ReaderRow{"OfAScreenOfDepth16", openWith<SurfaceMemory::Private>,
                              withoutRender(16)}),
    [](const auto& row) { return row.param.name; });

TEST(ImageReader, PicturesLargerThanASliceComeWhole) {
    const XServer server({.width = 800, .height = 700}); // more than 2 MiB
    support::Painter painter(server.display());
    for (int y = 0; y < 700; ++y)
        painter.fill(y, y, 100, 1, 0x010203U * static_cast<unsigned>(y % 80 + 1));
    ASSERT_TRUE(painter.sync());
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    const auto reader =
        ImageReader::open(*connection, {800, 700, 1, nullptr}, SurfaceMemory::Private);
    ASSERT_NE(reader, nullptr);
    EXPECT_FALSE(reader->readsUnderRegion());
    const PixelRect whole{0, 0, 800, 700};
    Frame& frame = reader->frames().front();
    reader->send(frame, {0, 0, whole}, {&whole, 1}, 0);
    EXPECT_TRUE(roundTrip(*connection));
    EXPECT_EQ(reader->poll(), FrameReader::Progress::Done);
    support::Picture picture(800, 700);
    std::memcpy(picture.pixels.data(), frame.surface->pixels(), frame.surface->sizeBytes());
    EXPECT_EQ(picture, server.frameBuffer());
}

TEST(ImageReader, IsPendingUntilTheAnswerIsHere) {
    ScreenReading screen(ScreenReading::screenOfDepth(24), openWith<SurfaceMemory::Private>);
    ASSERT_NE(screen.reader, nullptr);
    EXPECT_EQ(screen.reader->poll(), FrameReader::Progress::Done); // nothing was asked
    const PixelRect area = screen.wholeFrame();
    screen.reader->send(screen.frame(), screen.viewport(), {&area, 1}, 0);
    EXPECT_EQ(screen.reader->poll(), FrameReader::Progress::Pending); // nothing was sent
    ASSERT_TRUE(roundTrip(*screen.connection));
    EXPECT_EQ(screen.reader->poll(), FrameReader::Progress::Done);
    EXPECT_EQ(screen.picture(), screen.expected());
}

TEST(ImageReader, FailsWhereTheServerRefusesAndGoesOnAfterwards) {
    ScreenReading screen(withoutRender(24), openWith<SurfaceMemory::Private>);
    ASSERT_NE(screen.reader, nullptr);
    // As when the screen shrank and nobody knows yet: the viewport reaches beyond it.
    const Viewport beyond{1, 0, screen.wholeFrame()};
    const PixelRect area = screen.wholeFrame();
    screen.reader->send(screen.frame(), beyond, {&area, 1}, 0);
    ASSERT_TRUE(roundTrip(*screen.connection));
    EXPECT_EQ(screen.reader->poll(), FrameReader::Progress::Failed);
    EXPECT_EQ(screen.read({area}), FrameReader::Progress::Done);
    EXPECT_EQ(screen.picture(), screen.expected());
}

TEST(ImageReader, CannotConvertAPalette) {
    const XServer server(withoutRender(8));
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    const LogCapture log("ImageReader");
    EXPECT_EQ(ImageReader::open(*connection, {64, 48, 1, nullptr}, SurfaceMemory::Private),
              nullptr);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"ImageReader: The screen's pixels (depth 8) "
                                                     "cannot be converted to BGRA"}));
}

} // namespace
} // namespace platform::x11
