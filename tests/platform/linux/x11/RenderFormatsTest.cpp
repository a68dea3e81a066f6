#include "platform/linux/x11/RenderFormats.h"

#include "support/LogCapture.h"
#include "support/Painter.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

namespace platform::x11 {
namespace {

using support::LogCapture;
using support::Painter;
using support::XServer;

class RenderFormatsTest : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        ASSERT_NE(connection, nullptr);
        formats = RenderFormats::find(*connection);
        ASSERT_TRUE(formats.areUsable());
    }

    /// A pixel of the screen as it comes through a pixmap of the other format.
    std::uint32_t composedPixel(xcb_render_picture_t screen, int x, int y) {
        xcb_connection_t* xcb = connection->get();
        const std::uint32_t pixmap = connection->newId();
        const std::uint32_t picture = connection->newId();
        xcb_create_pixmap(xcb, 32, pixmap, connection->root(), 1, 1);
        xcb_render_create_picture(xcb, picture, pixmap, formats.bgra, 0, nullptr);
        xcb_render_composite(xcb, XCB_RENDER_PICT_OP_SRC, screen, 0, picture,
                             static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0, 0, 0, 0,
                             1, 1);
        const auto image = connection->wait<xcb_get_image_reply_t>(
            xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, 0, 0, 1, 1, ~0U).sequence,
            "A pixel");
        if (image == nullptr || xcb_get_image_data_length(image.get()) < 4)
            return 0;
        const std::uint8_t* bytes = xcb_get_image_data(image.get());
        return bytes[0] | bytes[1] << 8 | bytes[2] << 16 |
               static_cast<std::uint32_t>(bytes[3]) << 24;
    }

    const XServer server{{.width = 64, .height = 48, .depth = GetParam()}};
    const std::unique_ptr<Connection> connection = Connection::open(server.display().c_str());
    RenderFormats formats;
};

TEST_P(RenderFormatsTest, TurnTheScreenWithItsWindowsIntoOpaqueBgra) {
    Painter painter(server.display());
    painter.fill(0, 0, 64, 48, 0x00ff00);
    painter.createWindow(10, 10, 20, 20, 0xff0000);
    ASSERT_TRUE(painter.sync());
    const xcb_render_picture_t screen = createScreenPicture(*connection, formats.screen);
    ASSERT_NE(screen, 0U);
    EXPECT_EQ(composedPixel(screen, 5, 5), 0xff00ff00);
    EXPECT_EQ(composedPixel(screen, 15, 15), 0xffff0000);
}

TEST_P(RenderFormatsTest, PictureOfAWrongFormatIsRefused) {
    const LogCapture log("X11Connection");
    EXPECT_EQ(createScreenPicture(*connection, connection->newId()), 0U);
    EXPECT_TRUE(log.has("A picture of the screen failed"));
    EXPECT_FALSE(connection->isBroken());
}

INSTANTIATE_TEST_SUITE_P(Depths, RenderFormatsTest, testing::Values(16, 24));

TEST(RenderFormats, AreUsableOnlyTogether) {
    EXPECT_FALSE(RenderFormats().areUsable());
    EXPECT_FALSE((RenderFormats{1, 0}).areUsable());
    EXPECT_FALSE((RenderFormats{0, 1}).areUsable());
    EXPECT_TRUE((RenderFormats{1, 2}).areUsable());
}

TEST(RenderFormats, AreNoneWhenTheServerIsGone) {
    XServer server({.width = 64, .height = 48});
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    server.kill();
    const SigpipeGuard guard(*connection);
    EXPECT_FALSE(RenderFormats::find(*connection).areUsable());
}

} // namespace
} // namespace platform::x11
