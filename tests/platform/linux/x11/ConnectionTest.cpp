#include "platform/linux/x11/Connection.h"

#include "platform/linux/x11/RoundTrip.h"
#include "support/LogCapture.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <functional>

namespace platform::x11 {
namespace {

using support::LogCapture;
using support::XServer;

std::unique_ptr<Connection> openTo(const XServer& server) {
    return Connection::open(server.display().c_str());
}

using Lines = std::vector<std::string>;

TEST(Connection, NeedsAName) {
    unsetenv("DISPLAY");
    const LogCapture log("X11Connection");
    EXPECT_EQ(Connection::open(), nullptr);
    EXPECT_EQ(Connection::open(""), nullptr);
    EXPECT_EQ(log.lines(), Lines(2, "X11Connection: No display: DISPLAY is not set"));
}

TEST(Connection, MalformedNameIsRefused) {
    const LogCapture log("X11Connection");
    EXPECT_EQ(Connection::open("no display at all"), nullptr);
    EXPECT_EQ(log.lines(), (Lines{"X11Connection: Cannot open display no display at all: the "
                                  "display name is malformed"}));
}

TEST(Connection, TakesTheDisplayOfTheEnvironment) {
    const XServer server({.width = 64, .height = 48});
    setenv("DISPLAY", server.display().c_str(), 1);
    const auto connection = Connection::open();
    unsetenv("DISPLAY");
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(connection->screen().width_in_pixels, 64);
    EXPECT_EQ(connection->screen().height_in_pixels, 48);
    EXPECT_EQ(connection->root(), connection->screen().root);
    EXPECT_FALSE(connection->isBroken());
}

TEST(Connection, ServerThatIsNotThereIsLogged) {
    const LogCapture log("X11Connection");
    EXPECT_EQ(Connection::open(":4711"), nullptr);
    EXPECT_EQ(log.lines(),
              (Lines{"X11Connection: Cannot open display :4711: no server answers there"}));
}

TEST(Connection, ScreenThatIsNotThereIsLogged) {
    const XServer server({.width = 64, .height = 48});
    const LogCapture log("X11Connection");
    EXPECT_EQ(Connection::open((server.display() + ".7").c_str()), nullptr);
    EXPECT_TRUE(log.has("the server has no such screen"));
}

struct Missing {
    const char* name;
    std::vector<std::string> without;
    std::function<bool(const Extensions&)> has;
    friend void PrintTo(const Missing& row, std::ostream* out) { *out << row.name; }
};

class MissingExtension : public testing::TestWithParam<Missing> {};

TEST_P(MissingExtension, IsFoundOutAndCostsNothing) {
    const XServer server({.width = 64, .height = 48, .withoutExtensions = GetParam().without});
    const auto connection = openTo(server);
    ASSERT_NE(connection, nullptr);
    EXPECT_FALSE(GetParam().has(connection->extensions()));
    EXPECT_TRUE(roundTrip(*connection));
}

TEST_P(MissingExtension, IsFoundWhereItIsThere) {
    const XServer server({.width = 64, .height = 48});
    const auto connection = openTo(server);
    ASSERT_NE(connection, nullptr);
    EXPECT_TRUE(GetParam().has(connection->extensions()));
}

INSTANTIATE_TEST_SUITE_P(
    Each, MissingExtension,
    testing::Values(
        Missing{"Damage", {"DAMAGE"}, [](const Extensions& found) { return found.damage; }},
        Missing{"Xfixes", {"XFIXES"}, [](const Extensions& found) { return found.xfixes; }},
        Missing{"Render", {"RENDER"}, [](const Extensions& found) { return found.render; }},
        Missing{"Randr",
                {"RANDR"},
                [](const Extensions& found) { return found.randr || found.randrMonitors; }},
        Missing{"Shm",
                {"MIT-SHM"},
                [](const Extensions& found) {
                    return found.shm || found.shmFds || found.sharedPixmaps;
                }}),
    [](const auto& row) { return row.param.name; });

TEST(Connection, LogsWhatTheServerRefuses) {
    const XServer server({.width = 64, .height = 48});
    const auto connection = openTo(server);
    ASSERT_NE(connection, nullptr);
    const xcb_window_t noWindow = connection->newId();
    const LogCapture log("X11Connection");
    EXPECT_EQ(connection->wait<xcb_get_geometry_reply_t>(
                  xcb_get_geometry(connection->get(), noWindow).sequence, "A size"),
              nullptr);
    EXPECT_TRUE(log.has("X11Connection: A size failed: X error 9, request 14.0")); // Drawable
    EXPECT_FALSE(connection->check(xcb_map_window_checked(connection->get(), noWindow), "A map"));
    EXPECT_TRUE(log.has("X11Connection: A map failed: X error 3, request 8.0")); // Window
    EXPECT_EQ(log.lines().size(), 2U);
    EXPECT_TRUE(connection->check(xcb_no_operation_checked(connection->get()), "Nothing"));
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST(Connection, GivesUpOnAServerThatDoesNotAnswer) {
    XServer server({.width = 64, .height = 48});
    const auto connection = openTo(server);
    ASSERT_NE(connection, nullptr);
    const LogCapture log("X11Connection");
    server.pause();
    EXPECT_EQ(connection->wait<xcb_get_input_focus_reply_t>(
                  xcb_get_input_focus(connection->get()).sequence, "The focus",
                  std::chrono::milliseconds(1)),
              nullptr);
    server.resume();
    EXPECT_EQ(log.lines(), (Lines{"X11Connection: The focus: the server does not answer"}));
    EXPECT_TRUE(roundTrip(*connection)); // the late answer is nobody's
}

TEST(Connection, IsBrokenWhenTheServerIsGone) {
    XServer server({.width = 64, .height = 48});
    const auto connection = openTo(server);
    ASSERT_NE(connection, nullptr);
    server.kill();
    const SigpipeGuard guard(*connection);
    EXPECT_FALSE(roundTrip(*connection));
    EXPECT_TRUE(connection->isBroken());
    EXPECT_FALSE(connection->check(xcb_no_operation_checked(connection->get()), "Nothing"));
}

/// Whether the signal waits for this thread.
bool isSigpipePending() {
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

TEST(SigpipeGuard, LeavesNoSignalBehind) {
    XServer server({.width = 64, .height = 48});
    const auto connection = openTo(server);
    ASSERT_NE(connection, nullptr);
    server.kill();
    {
        const SigpipeGuard guard(*connection);
        while (!connection->isBroken()) {
            xcb_no_operation(connection->get());
            xcb_flush(connection->get());
        }
    }
    // Unblocked again, it would have ended this process.
    EXPECT_FALSE(isSigpipePending());
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGPIPE), 0);
}

TEST(SigpipeGuard, LeavesTheHostItsOwnBlockedSignal) {
    sigset_t pipe;
    sigset_t before;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &before);
    XServer server({.width = 64, .height = 48});
    const auto connection = openTo(server);
    ASSERT_NE(connection, nullptr);
    pthread_kill(pthread_self(), SIGPIPE);
    server.kill();
    {
        const SigpipeGuard guard(*connection);
        EXPECT_FALSE(roundTrip(*connection));
        EXPECT_TRUE(connection->isBroken());
    }
    EXPECT_TRUE(isSigpipePending());
    const timespec now{0, 0};
    EXPECT_EQ(sigtimedwait(&pipe, nullptr, &now), SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace
} // namespace platform::x11
