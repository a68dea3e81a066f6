#include "platform/linux/x11/DisplayList.h"

#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

namespace platform::x11 {
namespace {

using support::ScreenSetup;
using support::XServer;

class DisplayList : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(connection, nullptr); }

    XServer server{{.width = 300, .height = 200}};
    ScreenSetup setup{server.display()};
    const std::unique_ptr<Connection> connection = Connection::open(server.display().c_str());
};

TEST_F(DisplayList, NamesEachWithThePrimaryOneFirst) {
    setup.setMonitor("Left", 0, 0, 100, 200);
    setup.setMonitor("Middle", 100, 0, 20, 20);
    setup.setMonitor("Right", 120, 0, 180, 150, true, true);
    const auto displays = listDisplays(*connection);
    ASSERT_EQ(displays.size(), 3U);
    EXPECT_EQ(displays[0].name, "Right");
    EXPECT_EQ(displays[0].id, setup.firstOutput());
    EXPECT_EQ(displays[0].place, (PixelRect{120, 0, 300, 150}));
    EXPECT_TRUE(displays[0].isPrimary);
    EXPECT_EQ(displays[1].name, "Left");
    EXPECT_EQ(displays[1].place, (PixelRect{0, 0, 100, 200}));
    EXPECT_FALSE(displays[1].isPrimary);
    EXPECT_EQ(displays[2].name, "Middle");
}

TEST_F(DisplayList, SaysHowOftenAnOutputRefreshes) {
    setup.resize(160, 120, 75);
    auto displays = listDisplays(*connection);
    ASSERT_EQ(displays.size(), 1U);
    EXPECT_NEAR(displays[0].refreshHz, 75, 1);
    setup.resize(200, 120, 30);
    displays = listDisplays(*connection);
    ASSERT_EQ(displays.size(), 1U);
    EXPECT_NEAR(displays[0].refreshHz, 30, 1);
}

TEST_F(DisplayList, DisplayWithoutAnOutputHasTheUsualRate) {
    setup.resize(160, 120, 75);
    setup.setMonitor("Part", 0, 0, 100, 100);
    const auto part = findDisplay(*connection, 0x80000000U | setup.atomOf("Part"));
    ASSERT_TRUE(part.has_value());
    EXPECT_EQ(part->refreshHz, 60);
}

TEST_F(DisplayList, IsEmptyWhileTheOutputIsOff) {
    setup.turnOutputOff();
    EXPECT_TRUE(listDisplays(*connection).empty());
    EXPECT_EQ(findDisplay(*connection, 0), std::nullopt);
}

TEST_F(DisplayList, FindsADisplayByItsIdentifier) {
    setup.setMonitor("Left", 0, 0, 100, 200);
    setup.setMonitor("Right", 100, 0, 200, 150, true, true);
    const auto displays = listDisplays(*connection);
    ASSERT_EQ(displays.size(), 2U);
    EXPECT_EQ(findDisplay(*connection, 0), displays[0]);
    EXPECT_EQ(findDisplay(*connection, displays[0].id), displays[0]);
    EXPECT_EQ(findDisplay(*connection, displays[1].id), displays[1]);
    EXPECT_EQ(findDisplay(*connection, 12345), std::nullopt);
}

TEST_F(DisplayList, IsEmptyWhenTheServerIsGone) {
    server.kill();
    const SigpipeGuard guard(*connection);
    EXPECT_TRUE(listDisplays(*connection).empty());
}

TEST(DisplayListWithoutRandr, HasTheWholeScreen) {
    const XServer server({.width = 300, .height = 200, .withoutExtensions = {"RANDR"}});
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    const DisplayInfo whole{wholeScreenId, {0, 0, 300, 200}, true, 60, "screen"};
    EXPECT_EQ(listDisplays(*connection), std::vector<DisplayInfo>{whole});
    EXPECT_EQ(findDisplay(*connection, 0), whole);
    EXPECT_EQ(findDisplay(*connection, wholeScreenId), whole);
    EXPECT_EQ(findDisplay(*connection, 2), std::nullopt);
}

} // namespace
} // namespace platform::x11
