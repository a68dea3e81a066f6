#include "platform/linux/x11/QueryConnection.h"

#include "platform/linux/x11/RoundTrip.h"
#include "support/LogCapture.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace platform::x11 {
namespace {

using support::XServer;

class QueryConnectionTest : public testing::Test {
protected:
    ~QueryConnectionTest() override { unsetenv("DISPLAY"); }

    static void use(const XServer& server) { setenv("DISPLAY", server.display().c_str(), 1); }

    static int lentFd() {
        const QueryConnection connection;
        return connection ? connection.get()->fd() : -1;
    }

    static int lentWidth() {
        const QueryConnection connection;
        return connection ? connection.get()->screen().width_in_pixels : 0;
    }
};

TEST_F(QueryConnectionTest, LendsTheSameConnectionAgain) {
    const XServer server;
    use(server);
    const int fd = lentFd();
    EXPECT_NE(fd, -1);
    EXPECT_EQ(lentFd(), fd);
    const QueryConnection connection;
    ASSERT_TRUE(connection);
    EXPECT_TRUE(roundTrip(*connection.get()));
}

TEST_F(QueryConnectionTest, FollowsTheEnvironment) {
    const XServer first({.width = 100, .height = 80});
    const XServer second({.width = 200, .height = 160});
    use(first);
    EXPECT_EQ(lentWidth(), 100);
    use(second);
    EXPECT_EQ(lentWidth(), 200);
    use(first);
    EXPECT_EQ(lentWidth(), 100);
}

TEST_F(QueryConnectionTest, IsNoneWithoutAServerAndSaysSo) {
    setenv("DISPLAY", "nowhere.invalid:77", 1);
    const support::LogCapture log;
    const QueryConnection connection;
    EXPECT_FALSE(connection);
    EXPECT_EQ(connection.get(), nullptr);
    EXPECT_FALSE(log.lines().empty());
}

TEST_F(QueryConnectionTest, IsOpenedAnewWhenTheServerWentAway) {
    {
        XServer server({.width = 100, .height = 80});
        use(server);
        EXPECT_EQ(lentWidth(), 100);
        server.kill();
        EXPECT_EQ(lentWidth(), 0);
    }
    const XServer next({.width = 120, .height = 80});
    use(next);
    EXPECT_EQ(lentWidth(), 120);
}

TEST_F(QueryConnectionTest, IsLentToOneAtATime) {
    const XServer server;
    use(server);
    std::atomic<int> borrowers = 0;
    std::atomic<int> most = 0;
    const auto borrow = [&] {
        for (int i = 0; i < 50; ++i) {
            const QueryConnection connection;
            most = std::max(most.load(), ++borrowers);
            EXPECT_TRUE(roundTrip(*connection.get()));
            --borrowers;
        }
    };
    {
        const std::jthread one(borrow);
        const std::jthread two(borrow);
        borrow();
    }
    EXPECT_EQ(most, 1);
}

TEST_F(QueryConnectionTest, LeavesTheParentsAloneInAForkedChild) {
    const XServer server({.width = 100, .height = 80});
    use(server);
    ASSERT_NE(lentFd(), -1);
    const pid_t child = fork();
    if (child == 0)
        _exit(lentWidth() == 100 ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    const QueryConnection connection;
    ASSERT_TRUE(connection);
    EXPECT_TRUE(roundTrip(*connection.get()));
}

} // namespace
} // namespace platform::x11
