#include "platform/linux/x11/DamageWatch.h"

#include "platform/linux/graphics/Region.h"
#include "platform/linux/x11/RoundTrip.h"
#include "support/LogCapture.h"
#include "support/Painter.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace platform::x11 {
namespace {

using support::LogCapture;
using support::Painter;
using support::XServer;

constexpr PixelRect wholeScreen{0, 0, 300, 200};

class DamageWatchTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(connection, nullptr);
        watch = DamageWatch::open(*connection);
        ASSERT_NE(watch, nullptr);
    }

    /// How many reports of damage are here.
    std::ptrdiff_t reports() {
        const auto events = eventsOf(*connection);
        return std::ranges::count_if(events,
                                     [&](const auto& event) { return watch->isNotify(*event); });
    }

    Region taken() {
        watch->sendTake();
        const auto answer =
            connection->wait<xcb_xfixes_fetch_region_reply_t>(watch->sendFetch(), "What was taken");
        return answer != nullptr ? Region(DamageWatch::rectsOf(*answer)) : Region();
    }

    const XServer server{{.width = 300, .height = 200}};
    Painter painter{server.display()};
    const std::unique_ptr<Connection> connection = Connection::open(server.display().c_str());
    std::unique_ptr<DamageWatch> watch;
};

TEST_F(DamageWatchTest, ReportsTheWholeScreenAtFirst) {
    EXPECT_EQ(reports(), 1);
    EXPECT_EQ(taken(), Region(wholeScreen));
}

TEST_F(DamageWatchTest, NothingIsTakenTwice) {
    taken();
    EXPECT_TRUE(taken().isEmpty());
}

TEST_F(DamageWatchTest, CollectsWhatIsDrawn) {
    taken();
    painter.fill(10, 20, 30, 40, 0xff0000);
    painter.fill(100, 20, 5, 5, 0x00ff00);
    ASSERT_TRUE(painter.sync());
    const PixelRect drawn[] = {{10, 20, 40, 60}, {100, 20, 105, 25}};
    EXPECT_EQ(taken(), Region(drawn));
}

TEST_F(DamageWatchTest, CollectsWhatIsDrawnInWindows) {
    const xcb_window_t window = painter.createWindow(50, 60, 100, 100, 0x0000ff);
    ASSERT_TRUE(painter.sync());
    taken();
    painter.fill(1, 2, 3, 4, 0xff0000, window);
    ASSERT_TRUE(painter.sync());
    EXPECT_EQ(taken(), Region(PixelRect{51, 62, 54, 66}));
}

TEST_F(DamageWatchTest, ReportsOnceUntilItIsTaken) {
    reports();
    taken();
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(reports(), 0) << "round " << round;
        for (int i = 0; i < 100; ++i) {
            painter.fill(i, i, 10, 10, 0x010101U * static_cast<unsigned>(i));
            ASSERT_TRUE(painter.sync());
        }
        EXPECT_EQ(reports(), 1) << "round " << round;
        EXPECT_FALSE(taken().isEmpty());
    }
}

TEST_F(DamageWatchTest, RegionKeepsWhatWasTakenUntilTheNextTake) {
    taken();
    painter.fill(1, 1, 2, 2, 0xff0000);
    ASSERT_TRUE(painter.sync());
    const Region first = taken();
    painter.fill(100, 100, 2, 2, 0xff0000);
    ASSERT_TRUE(painter.sync());
    const auto again = connection->wait<xcb_xfixes_fetch_region_reply_t>(
        xcb_xfixes_fetch_region(connection->get(), watch->taken()).sequence, "The same");
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(Region(DamageWatch::rectsOf(*again)), first);
}

TEST_F(DamageWatchTest, OtherEventsAreNotItsReports) {
    xcb_generic_event_t event{};
    event.response_type = XCB_CONFIGURE_NOTIFY;
    EXPECT_FALSE(watch->isNotify(event));
    event.response_type = 0; // an error
    EXPECT_FALSE(watch->isNotify(event));
}

TEST_F(DamageWatchTest, LeavesNothingOnTheServer) {
    taken();
    reports();
    const xcb_xfixes_region_t region = watch->taken();
    watch.reset();
    ASSERT_TRUE(roundTrip(*connection));
    painter.fill(1, 1, 2, 2, 0xff0000);
    ASSERT_TRUE(painter.sync());
    EXPECT_TRUE(eventsOf(*connection).empty());
    const LogCapture log("X11Connection");
    EXPECT_EQ(connection->wait<xcb_xfixes_fetch_region_reply_t>(
                  xcb_xfixes_fetch_region(connection->get(), region).sequence, "The region"),
              nullptr);
    EXPECT_TRUE(log.has("The region failed"));
}

struct Lack {
    const char* name;
    const char* extension;
    friend void PrintTo(const Lack& row, std::ostream* out) { *out << row.name; }
};

class ServerWithout : public testing::TestWithParam<Lack> {};

TEST_P(ServerWithout, CannotBeWatched) {
    const XServer server({.width = 64, .height = 48, .withoutExtensions = {GetParam().extension}});
    const auto connection = Connection::open(server.display().c_str());
    ASSERT_NE(connection, nullptr);
    const LogCapture log("DamageWatch");
    EXPECT_EQ(DamageWatch::open(*connection), nullptr);
    EXPECT_EQ(log.lines(),
              (std::vector<std::string>{std::string("DamageWatch: The server has no ") +
                                        GetParam().extension}));
    EXPECT_TRUE(roundTrip(*connection));
}

INSTANTIATE_TEST_SUITE_P(Each, ServerWithout,
                         testing::Values(Lack{"Damage", "DAMAGE"}, Lack{"Xfixes", "XFIXES"}),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace platform::x11
