#include "platform/linux/x11/DisplayImage.h"

#include "support/LogCapture.h"
#include "support/Painter.h"
#include "support/Picture.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <cstring>

namespace platform::x11 {
namespace {

using support::LogCapture;
using support::Picture;

constexpr int width = 120;
constexpr int height = 80;

struct Screen {
    explicit Screen(int depth) : server({.width = width, .height = height, .depth = depth}) {
        support::Painter painter(server.display());
        painter.fill(0, 0, width, height, 0x102030);
        painter.fill(30, 20, 40, 30, 0xff8000);
        EXPECT_TRUE(painter.sync());
        connection = Connection::open(server.display().c_str());
    }

    support::XServer server;
    std::unique_ptr<Connection> connection;
};

Picture pictureOf(const Ref<CGImage>& image) {
    if (!image)
        return {};
    Picture picture(static_cast<int>(image->width), static_cast<int>(image->height));
    const __CFData& data = *image->provider->data;
    EXPECT_EQ(static_cast<std::size_t>(CFDataGetLength(&data)), picture.pixels.size() * 4);
    std::memcpy(picture.pixels.data(), CFDataGetBytePtr(&data), picture.pixels.size() * 4);
    return picture;
}

Picture part(const Picture& whole, const PixelRect& area) {
    Picture result(area.width(), area.height());
    for (int y = 0; y < area.height(); ++y) {
        for (int x = 0; x < area.width(); ++x)
            result.at(x, y) = whole.at(area.left + x, area.top + y);
    }
    return result;
}

class PictureOfDepth : public testing::TestWithParam<int> {};

TEST_P(PictureOfDepth, IsWhatTheServerShows) {
    const Screen screen(GetParam());
    EXPECT_EQ(pictureOf(readImage(*screen.connection, {0, 0, width, height})),
              screen.server.frameBuffer());
}

INSTANTIATE_TEST_SUITE_P(Depths, PictureOfDepth, testing::Values(15, 16, 24, 30));

TEST(DisplayImage, ShowsAPartAndLeavesOutWhatLiesOutside) {
    const Screen screen(24);
    const Picture all = screen.server.frameBuffer();
    const PixelRect areas[] = {
        {30, 20, 31, 21}, {25, 10, 64, 60}, {-10, -5, 33, 27}, {100, 60, 400, 300}};
    for (const PixelRect& area : areas)
        EXPECT_EQ(pictureOf(readImage(*screen.connection, area)),
                  part(all, area.intersection({0, 0, width, height})));
}

TEST(DisplayImage, IsNoneWithoutASinglePixel) {
    const Screen screen(24);
    const LogCapture log("DisplayImage");
    EXPECT_FALSE(readImage(*screen.connection, {}));
    EXPECT_FALSE(readImage(*screen.connection, {width, 0, width + 10, 10}));
    EXPECT_TRUE(log.lines().empty());
}

TEST(DisplayImage, KnowsTheScreensSizeOfNow) {
    const Screen screen(24);
    support::ScreenSetup(screen.server.display()).resize(64, 48);
    const auto image = readImage(*screen.connection, {0, 0, width, height});
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 64U);
    EXPECT_EQ(image->height, 48U);
}

TEST(DisplayImage, CannotShowAPalette) {
    const Screen screen(8);
    const LogCapture log("DisplayImage");
    EXPECT_FALSE(readImage(*screen.connection, {0, 0, 10, 10}));
    EXPECT_TRUE(log.has("No picture of a screen of depth 8 whose pixels are no colours"));
}

TEST(DisplayImage, IsNoneWhenTheServerIsGone) {
    Screen screen(24);
    const SigpipeGuard guard(*screen.connection);
    screen.server.kill();
    EXPECT_FALSE(readImage(*screen.connection, {0, 0, 10, 10}));
}

} // namespace
} // namespace platform::x11
