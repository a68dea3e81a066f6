#include "platform/linux/x11/ConnectionSource.h"

#include "platform/linux/x11/RoundTrip.h"
#include "support/MainLoop.h"
#include "support/Painter.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace platform::x11 {
namespace {

using support::serveMainLoopUntil;
using support::serveWhatIsThere;

class ConnectionSourceTest : public testing::Test {
protected:
    ConnectionSourceTest() {
        const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection->get(), connection->root(), XCB_CW_EVENT_MASK,
                                     &mask);
        roundTrip(*connection);
    }

    /// Another client changes what the connection watches, so that it gets an event.
    void causeEvent(xcb_atom_t property = XCB_ATOM_WM_NAME) {
        xcb_change_property(other.connection(), XCB_PROP_MODE_REPLACE, other.root(), property,
                            XCB_ATOM_STRING, 8, 1, "x");
        ASSERT_TRUE(other.sync());
    }

    void takeEvents() {
        while (const auto event = source.nextEvent()) {
            ASSERT_EQ(event->response_type, XCB_PROPERTY_NOTIFY);
            properties.push_back(reinterpret_cast<const xcb_property_notify_event_t&>(*event).atom);
        }
    }

    support::XServer server;
    support::Painter other{server.display()};
    std::unique_ptr<Connection> connection = Connection::open(server.display().c_str());
    int calls = 0;
    std::vector<xcb_atom_t> properties;
    ConnectionSource source{*connection, "test", [this] {
                                ++calls;
                                takeEvents();
                            }};
};

TEST_F(ConnectionSourceTest, WorksOnceWhenItIsAttachedAndThenRests) {
    serveWhatIsThere();
    EXPECT_EQ(calls, 0);
    source.attach(nullptr);
    ASSERT_NE(source.get(), nullptr);
    source.wakeAt(std::nullopt);
    serveWhatIsThere();
    EXPECT_EQ(calls, 0); // its first call was taken back
    source.wakeAt(0);
    g_main_context_iteration(nullptr, FALSE);
    EXPECT_EQ(calls, 1);
    source.wakeAt(std::nullopt);
    serveWhatIsThere();
    EXPECT_EQ(calls, 1);
}

TEST_F(ConnectionSourceTest, IsCalledRightAfterItWasAttached) {
    source.attach(nullptr);
    g_main_context_iteration(nullptr, FALSE);
    EXPECT_EQ(calls, 1);
}

TEST_F(ConnectionSourceTest, WakesForEventsAndHandsThemOutInOrder) {
    source.attach(nullptr);
    source.wakeAt(std::nullopt);
    causeEvent(XCB_ATOM_WM_NAME);
    causeEvent(XCB_ATOM_WM_ICON_NAME);
    ASSERT_TRUE(serveMainLoopUntil([this] { return properties.size() >= 2; }));
    EXPECT_EQ(properties, (std::vector<xcb_atom_t>{XCB_ATOM_WM_NAME, XCB_ATOM_WM_ICON_NAME}));
}

TEST_F(ConnectionSourceTest, WakesForAnEventThatAReplyBroughtAlong) {
    source.attach(nullptr);
    source.wakeAt(std::nullopt);
    causeEvent();
    roundTrip(*connection); // the event is in the queue now, and no longer shows on the socket
    g_main_context_iteration(nullptr, FALSE);
    EXPECT_EQ(properties, (std::vector<xcb_atom_t>{XCB_ATOM_WM_NAME}));
}

TEST_F(ConnectionSourceTest, WakesAtTheTimeThatWasSet) {
    source.attach(nullptr);
    const std::int64_t due = g_get_monotonic_time() + 5000;
    source.wakeAt(due);
    ASSERT_TRUE(serveMainLoopUntil([this] { return calls > 0; }));
    EXPECT_GE(g_get_monotonic_time(), due);
}

TEST_F(ConnectionSourceTest, WakesWhenTheServerIsGone) {
    source.attach(nullptr);
    source.wakeAt(std::nullopt);
    serveWhatIsThere();
    const int before = calls;
    server.kill();
    ASSERT_TRUE(serveMainLoopUntil([&] { return calls > before && connection->isBroken(); }));
}

TEST_F(ConnectionSourceTest, DoesNothingOnceDetached) {
    source.attach(nullptr);
    source.detach();
    EXPECT_EQ(source.get(), nullptr);
    source.wakeAt(0);
    causeEvent();
    serveWhatIsThere();
    EXPECT_EQ(calls, 0);
    source.detach();
    source.attach(nullptr);
    ASSERT_TRUE(serveMainLoopUntil([this] { return !properties.empty(); }));
}

TEST_F(ConnectionSourceTest, MayBeDestroyedByItsOwnWork) {
    int ended = 0;
    std::unique_ptr<ConnectionSource> mortal;
    mortal = std::make_unique<ConnectionSource>(*connection, "mortal", [&] {
        ++ended;
        mortal.reset();
    });
    mortal->attach(nullptr);
    ASSERT_TRUE(serveMainLoopUntil([&] { return ended > 0; }));
    serveWhatIsThere();
    EXPECT_EQ(ended, 1);
    EXPECT_EQ(mortal, nullptr);
}

} // namespace
} // namespace platform::x11
