#include "platform/linux/x11/DisplayPlaces.h"

#include "platform/linux/x11/DisplayList.h"
#include "platform/linux/x11/RoundTrip.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

namespace platform::x11 {
namespace {

using support::ScreenSetup;
using support::XServer;

using Places = std::vector<DisplayPlace>;

class DisplayPlaces : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(connection, nullptr); }

    XServer server{{.width = 300, .height = 200}};
    ScreenSetup setup{server.display()};
    const std::unique_ptr<Connection> connection = Connection::open(server.display().c_str());
};

TEST_F(DisplayPlaces, ComeWithThePrimaryOneFirst) {
    setup.setMonitor("Left", 0, 0, 100, 200);
    setup.setMonitor("Right", 100, 0, 200, 150, true, true);
    DisplayPlacesQuery query(*connection);
    EXPECT_EQ(query.wait(), (Places{{setup.firstOutput(), {100, 0, 300, 150}},
                                    {0x80000000U | setup.atomOf("Left"), {0, 0, 100, 200}}}));
    EXPECT_FALSE(query.isAsking());
}

TEST_F(DisplayPlaces, AreNoneWhileTheOutputIsOff) {
    setup.turnOutputOff();
    EXPECT_EQ(DisplayPlacesQuery(*connection).wait(), Places());
}

TEST_F(DisplayPlaces, CanBePolledFor) {
    DisplayPlacesQuery query(*connection);
    EXPECT_EQ(query.poll(), std::nullopt); // nothing was asked
    query.ask();
    EXPECT_TRUE(query.isAsking());
    EXPECT_EQ(query.poll(), std::nullopt); // nothing was sent
    EXPECT_TRUE(query.isAsking());
    ASSERT_TRUE(roundTrip(*connection));
    EXPECT_EQ(query.poll(), (Places{{setup.firstOutput(), {0, 0, 300, 200}}}));
    EXPECT_FALSE(query.isAsking());
    EXPECT_EQ(query.poll(), std::nullopt);
}

TEST_F(DisplayPlaces, MayBeAskedForAgain) {
    DisplayPlacesQuery query(*connection);
    ASSERT_TRUE(query.wait().has_value());
    setup.resize(160, 120);
    EXPECT_EQ(query.wait(), (Places{{setup.firstOutput(), {0, 0, 160, 120}}}));
}

TEST_F(DisplayPlaces, QuestionThatNobodyWaitsForLeavesNoAnswer) {
    {
        DisplayPlacesQuery query(*connection);
        query.ask();
    }
    EXPECT_TRUE(roundTrip(*connection));
    EXPECT_TRUE(DisplayPlacesQuery(*connection).wait().has_value());
}

TEST_F(DisplayPlaces, AreNotKnownWhenTheServerIsGone) {
    DisplayPlacesQuery query(*connection);
    query.ask();
    server.kill();
    const SigpipeGuard guard(*connection);
    EXPECT_FALSE(roundTrip(*connection));
    EXPECT_EQ(query.poll(), std::nullopt);
    EXPECT_FALSE(query.isAsking());
    EXPECT_EQ(query.wait(), std::nullopt);
}

TEST(DisplayPlacesWithoutRandr, AreTheWholeScreen) {
    const XServer server({.width = 300, .height = 200, .withoutExtensions = {"RANDR"}});
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(DisplayPlacesQuery(*connection).wait(), (Places{{wholeScreenId, {0, 0, 300, 200}}}));
}

} // namespace
} // namespace platform::x11
