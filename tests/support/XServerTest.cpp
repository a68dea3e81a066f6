#include "support/XServer.h"

#include "support/Painter.h"
#include "support/ScreenSetup.h"

#include <csignal>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/wait.h>

namespace support {
namespace {

TEST(XServer, ShowsWhatAPainterDraws) {
    XServer server({.width = 200, .height = 100});
    Painter painter(server.display());
    painter.fill(0, 0, 200, 100, 0x102030);
    painter.fill(10, 20, 30, 40, 0xa1b2c3);
    ASSERT_TRUE(painter.sync());
    const Picture shown = server.frameBuffer();
    EXPECT_EQ(shown.width, 200);
    EXPECT_EQ(shown.height, 100);
    EXPECT_EQ(shown.at(9, 20), 0xff102030U);
    EXPECT_EQ(shown.at(10, 20), 0xffa1b2c3U);
    EXPECT_EQ(shown.at(39, 59), 0xffa1b2c3U);
    EXPECT_EQ(shown.at(40, 59), 0xff102030U);
}

TEST(XServer, RunsSideBySideWithAnother) {
    XServer one;
    XServer other;
    EXPECT_NE(one.display(), other.display());
}

TEST(XServer, ThrowsWhenItDoesNotStart) {
    EXPECT_THROW(XServer({.arguments = {"-nonsense"}}), std::runtime_error);
}

TEST(XServer, AnswersAgainAfterAPause) {
    XServer server;
    Painter painter(server.display());
    server.pause();
    painter.fill(0, 0, 10, 10, 0xff0000);
    painter.flush();
    server.resume();
    ASSERT_TRUE(painter.sync());
    EXPECT_EQ(server.frameBuffer().rgbAt(0, 0), 0xff0000U);
}

TEST(XServer, EndsWhenKilledEvenWhilePaused) {
    XServer server;
    Painter painter(server.display());
    server.pause();
    server.kill();
    EXPECT_FALSE(server.isRunning());
    EXPECT_FALSE(painter.sync());
}

TEST(XServer, LeavesItsLastPictureWhenItEnds) {
    XServer server;
    Painter painter(server.display());
    painter.fill(0, 0, 10, 10, 0x123456);
    ASSERT_TRUE(painter.sync());
    server.terminate();
    EXPECT_EQ(server.frameBuffer().rgbAt(9, 9), 0x123456U);
}

TEST(XServer, EndsWhenTerminated) {
    XServer server;
    Painter painter(server.display());
    server.terminate();
    EXPECT_FALSE(painter.sync());
}

TEST(XServer, LacksAnExtensionThatItIsToldToLack) {
    XServer server({.withoutExtensions = {"DAMAGE"}});
    Painter painter(server.display());
    const std::string name = "DAMAGE";
    auto* reply = xcb_query_extension_reply(
        painter.connection(), xcb_query_extension(painter.connection(), 6, name.c_str()), nullptr);
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(reply->present, 0);
    free(reply);
}

class ScreenOfDepth : public testing::TestWithParam<int> {};

TEST_P(ScreenOfDepth, ShowsColoursThatItCanHold) {
    XServer server({.width = 20, .height = 20, .depth = GetParam()});
    Painter painter(server.display());
    painter.fill(0, 0, 20, 20, 0xff0000);
    painter.fill(5, 5, 5, 5, 0x00ff00);
    painter.fill(10, 10, 5, 5, 0x0000ff);
    ASSERT_TRUE(painter.sync());
    const Picture shown = server.frameBuffer();
    EXPECT_EQ(shown.at(0, 0), 0xffff0000U);
    EXPECT_EQ(shown.at(5, 5), 0xff00ff00U);
    EXPECT_EQ(shown.at(14, 14), 0xff0000ffU);
}

INSTANTIATE_TEST_SUITE_P(Depths, ScreenOfDepth, testing::Values(8, 15, 16, 24, 30),
                         [](const auto& row) { return "Depth" + std::to_string(row.param); });

TEST(Painter, ScrollsAndWritesAndMovesWindows) {
    XServer server({.width = 100, .height = 100});
    Painter painter(server.display());
    painter.fill(0, 0, 100, 100, 0x000000);
    painter.fill(0, 50, 100, 1, 0xffffff);
    painter.copyArea(0, 10, 100, 90, 0, 0);
    painter.text(10, 90, " ", 0xff0000, 0x00ff00);
    const xcb_window_t window = painter.createWindow(50, 0, 10, 10, 0x0000ff);
    painter.moveWindow(window, 80, 70);
    ASSERT_TRUE(painter.sync());
    const Picture shown = server.frameBuffer();
    EXPECT_EQ(shown.rgbAt(0, 40), 0xffffffU);
    EXPECT_EQ(shown.rgbAt(0, 41), 0x000000U);
    EXPECT_EQ(shown.rgbAt(10, 81), 0x00ff00U);
    EXPECT_EQ(shown.rgbAt(85, 75), 0x0000ffU);
    EXPECT_EQ(shown.rgbAt(55, 5), 0x000000U);
}

TEST(ScreenSetup, ShrinksAndGrowsTheScreen) {
    XServer server({.width = 300, .height = 200});
    ScreenSetup setup(server.display());
    setup.resize(200, 100);
    EXPECT_EQ(Painter(server.display()).width(), 200);
    EXPECT_EQ(Painter(server.display()).height(), 100);
    setup.resize(300, 200);
    EXPECT_EQ(Painter(server.display()).width(), 300);
    EXPECT_THROW(setup.resize(400, 200), std::runtime_error);
}

TEST(ScreenSetup, NamesMonitors) {
    XServer server({.width = 300, .height = 200});
    ScreenSetup setup(server.display());
    setup.setMonitor("Left", 0, 0, 150, 200);
    setup.setMonitor("Right", 150, 0, 150, 200, true, true);
    setup.deleteMonitor("Left");
    EXPECT_THROW(setup.deleteMonitor("Left"), std::runtime_error);
}

} // namespace
} // namespace support
