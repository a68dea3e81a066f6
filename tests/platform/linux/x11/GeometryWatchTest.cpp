#include "platform/linux/x11/GeometryWatch.h"

#include "platform/linux/x11/RoundTrip.h"
#include "support/LogCapture.h"
#include "support/Painter.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

namespace platform::x11 {
namespace {

using support::LogCapture;
using support::Painter;
using support::ScreenSetup;
using support::XServer;

constexpr PixelRect wholeScreen{0, 0, 300, 200};

class GeometryWatchTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(connection, nullptr); }

    /// Serves everything that is there, questions and their answers too; how often the shape was
    /// another one.
    int settle(GeometryWatch& watch) {
        int changes = 0;
        do {
            for (const auto& event : eventsOf(*connection))
                watch.onEvent(*event);
            roundTrip(*connection);
            changes += watch.poll() ? 1 : 0;
        } while (watch.isAsking());
        return changes;
    }

    XServer server{{.width = 300, .height = 200}};
    ScreenSetup setup{server.display()};
    const std::unique_ptr<Connection> connection = Connection::open(server.display().c_str());
    const CGDirectDisplayID display = setup.firstOutput();
};

TEST_F(GeometryWatchTest, AsksAtOnceAndFindsNothingNew) {
    GeometryWatch watch(*connection, display, wholeScreen);
    EXPECT_TRUE(watch.isAsking());
    EXPECT_FALSE(watch.poll()); // nothing was sent
    EXPECT_TRUE(watch.isAsking());
    EXPECT_EQ(settle(watch), 0);
    EXPECT_EQ(watch.viewport(300, 200), (Viewport{0, 0, wholeScreen}));
}

TEST_F(GeometryWatchTest, FindsWhatChangedBeforeItWasThere) {
    setup.resize(160, 120);
    GeometryWatch watch(*connection, display, wholeScreen);
    EXPECT_EQ(settle(watch), 1);
    EXPECT_EQ(watch.viewport(300, 200), (Viewport{0, 0, {0, 0, 160, 120}}));
}

TEST_F(GeometryWatchTest, FollowsTheScreensSize) {
    GeometryWatch watch(*connection, display, wholeScreen);
    settle(watch);
    const LogCapture log("GeometryWatch");
    setup.resize(160, 120);
    EXPECT_EQ(settle(watch), 1);
    EXPECT_EQ(watch.viewport(300, 200), (Viewport{0, 0, {0, 0, 160, 120}}));
    EXPECT_TRUE(log.has("is now 160 x 120 pixels at (0, 0), on a screen of 160 x 120"));
    setup.resize(300, 200);
    EXPECT_EQ(settle(watch), 1);
    EXPECT_EQ(watch.viewport(300, 200), (Viewport{0, 0, wholeScreen}));
    EXPECT_EQ(settle(watch), 0);
}

TEST_F(GeometryWatchTest, FollowsADisplayThatMoves) {
    setup.setMonitor("Part", 0, 0, 100, 100);
    const CGDirectDisplayID part = 0x80000000U | setup.atomOf("Part");
    GeometryWatch watch(*connection, part, {0, 0, 100, 100});
    EXPECT_EQ(settle(watch), 0);
    setup.setMonitor("Part", 150, 60, 100, 100);
    EXPECT_GE(settle(watch), 1);
    EXPECT_EQ(watch.viewport(100, 100), (Viewport{150, 60, {0, 0, 100, 100}}));
}

TEST_F(GeometryWatchTest, DisplayMayGoAndComeBack) {
    GeometryWatch watch(*connection, display, wholeScreen);
    settle(watch);
    const LogCapture log("GeometryWatch");
    setup.turnOutputOff();
    EXPECT_EQ(settle(watch), 1);
    EXPECT_TRUE(watch.viewport(300, 200).visible.isEmpty());
    EXPECT_TRUE(log.has("is gone; its picture is black until it is back"));
    setup.resize(300, 200);
    EXPECT_EQ(settle(watch), 1);
    EXPECT_EQ(watch.viewport(300, 200), (Viewport{0, 0, wholeScreen}));
    EXPECT_TRUE(log.has("is back"));
}

TEST_F(GeometryWatchTest, AsksAgainWhatChangedAfterTheQuestion) {
    GeometryWatch watch(*connection, display, wholeScreen);
    settle(watch);
    setup.resize(160, 120);
    for (const auto& event : eventsOf(*connection))
        watch.onEvent(*event);
    ASSERT_TRUE(watch.isAsking());
    ASSERT_TRUE(roundTrip(*connection)); // the answer is there
    setup.resize(200, 100);
    const auto later = eventsOf(*connection);
    ASSERT_FALSE(later.empty());
    for (const auto& event : later)
        watch.onEvent(*event);
    EXPECT_TRUE(watch.poll()); // of the first question
    EXPECT_TRUE(watch.isAsking());
    EXPECT_EQ(watch.viewport(300, 200).visible, (PixelRect{0, 0, 160, 120}));
    EXPECT_EQ(settle(watch), 1);
    EXPECT_EQ(watch.viewport(300, 200).visible, (PixelRect{0, 0, 200, 100}));
}

TEST_F(GeometryWatchTest, NotesThatWindowsMove) {
    Painter painter(server.display());
    const xcb_window_t window = painter.createWindow(10, 10, 50, 50, 0xff0000);
    ASSERT_TRUE(painter.sync());
    GeometryWatch watch(*connection, display, wholeScreen);
    settle(watch);
    EXPECT_FALSE(watch.takeWindowsMoved());
    painter.moveWindow(window, 20, 30);
    ASSERT_TRUE(painter.sync());
    EXPECT_EQ(settle(watch), 0);
    EXPECT_TRUE(watch.takeWindowsMoved());
    EXPECT_FALSE(watch.takeWindowsMoved());
    painter.fill(0, 0, 10, 10, 0xff0000, window);
    ASSERT_TRUE(painter.sync());
    settle(watch);
    EXPECT_FALSE(watch.takeWindowsMoved());
}

TEST_F(GeometryWatchTest, FrameKeepsItsSizeUnderALargerOrSmallerDisplay) {
    GeometryWatch watch(*connection, display, {100, 50, 300, 200});
    EXPECT_EQ(watch.viewport(200, 150), (Viewport{100, 50, {0, 0, 200, 150}}));
    EXPECT_EQ(watch.viewport(80, 40), (Viewport{100, 50, {0, 0, 80, 40}}));
    EXPECT_EQ(watch.viewport(900, 900), (Viewport{100, 50, {0, 0, 200, 150}}));
}

TEST_F(GeometryWatchTest, DisplayThatReachesBeyondTheScreenIsCut) {
    const GeometryWatch watch(*connection, display, {250, 150, 400, 300});
    EXPECT_EQ(watch.viewport(150, 150), (Viewport{250, 150, {0, 0, 50, 50}}));
    const GeometryWatch outside(*connection, display, {400, 0, 500, 100});
    EXPECT_EQ(outside.viewport(100, 100), (Viewport{400, 0, {}}));
}

TEST_F(GeometryWatchTest, StaysAsItIsWhenTheServerIsGone) {
    GeometryWatch watch(*connection, display, wholeScreen);
    server.kill(); // before the first question is answered
    const SigpipeGuard guard(*connection);
    EXPECT_FALSE(roundTrip(*connection));
    EXPECT_FALSE(watch.poll());
    EXPECT_FALSE(watch.isAsking());
    EXPECT_EQ(watch.viewport(300, 200), (Viewport{0, 0, wholeScreen}));
}

TEST(GeometryWatchWithoutRandr, DisplayStaysWhereItIs) {
    const XServer server({.width = 300, .height = 200, .withoutExtensions = {"RANDR"}});
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    GeometryWatch watch(*connection, 1, wholeScreen);
    ASSERT_TRUE(roundTrip(*connection));
    EXPECT_FALSE(watch.poll());
    EXPECT_FALSE(watch.isAsking());
    EXPECT_EQ(watch.viewport(300, 200), (Viewport{0, 0, wholeScreen}));
}

} // namespace
} // namespace platform::x11
