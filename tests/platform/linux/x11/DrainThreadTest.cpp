#include "platform/linux/x11/DrainThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <pthread.h>
#include <semaphore>
#include <sys/eventfd.h>
#include <unistd.h>

namespace platform::x11 {
namespace {

constexpr std::int64_t untilInput = -1;

class DrainThreadTest : public testing::Test {
protected:
    ~DrainThreadTest() override { ::close(input); }

    /// Tells the test about each step, which answers this.
    DrainThread::Step step(std::optional<std::int64_t> answer) {
        return [this, answer]() -> std::optional<std::int64_t> {
            ++steps;
            worker = pthread_self();
            stepped.release();
            return answer;
        };
    }

    const int input = eventfd(0, EFD_CLOEXEC);
    std::atomic<int> steps = 0;
    std::atomic<pthread_t> worker = pthread_t{};
    std::counting_semaphore<> stepped{0};
};

TEST_F(DrainThreadTest, WorksOnAnotherThreadWhileTheCallerIsAway) {
    DrainThread drain(input, step(untilInput));
    drain.begin();
    stepped.acquire();
    EXPECT_TRUE(drain.end());
    EXPECT_FALSE(pthread_equal(worker, pthread_self()));
}

TEST_F(DrainThreadTest, DoesNotWorkAfterTheCallerCameBack) {
    DrainThread drain(input, step(0)); // as fast as it can
    drain.begin();
    stepped.acquire();
    stepped.acquire();
    EXPECT_TRUE(drain.end());
    const int stepsAtEnd = steps;
    drain.close();
    EXPECT_EQ(steps, stepsAtEnd);
}

TEST_F(DrainThreadTest, StepsAgainWhenTheDescriptorBecomesReadable) {
    DrainThread drain(input, step(untilInput));
    drain.begin();
    stepped.acquire();
    EXPECT_EQ(steps, 1);
    eventfd_write(input, 1);
    stepped.acquire();
    EXPECT_GE(steps, 2);
    EXPECT_TRUE(drain.end());
}

TEST_F(DrainThreadTest, StepsAgainWhenItsSleepIsOver) {
    DrainThread drain(input, step(1));
    drain.begin();
    for (int i = 0; i < 3; ++i)
        stepped.acquire();
    EXPECT_TRUE(drain.end());
}

TEST_F(DrainThreadTest, HasNothingMoreToDoAfterAStepThatSaysSo) {
    eventfd_write(input, 1); // readable all the time
    DrainThread drain(input, step(std::nullopt));
    drain.begin();
    stepped.acquire();
    EXPECT_TRUE(drain.end());
    drain.close();
    EXPECT_EQ(steps, 1);
}

TEST_F(DrainThreadTest, ServesOneAbsenceAfterTheOther) {
    DrainThread drain(input, step(untilInput));
    for (int i = 0; i < 5; ++i) {
        drain.begin();
        stepped.acquire();
        EXPECT_TRUE(drain.end());
    }
    EXPECT_FALSE(drain.end()); // nobody was away
}

TEST_F(DrainThreadTest, EndWithoutABeginSaysThatNothingWasDone) {
    DrainThread drain(input, step(untilInput));
    EXPECT_FALSE(drain.end());
    EXPECT_EQ(steps, 0);
}

TEST_F(DrainThreadTest, CanBeClosedWhileTheCallerIsAway) {
    DrainThread drain(input, step(untilInput));
    drain.begin();
    stepped.acquire();
    drain.close();
    const int stepsAtClose = steps;
    EXPECT_FALSE(drain.end());
    drain.close();
    drain.begin();
    EXPECT_FALSE(drain.end());
    EXPECT_EQ(steps, stepsAtClose);
}

TEST_F(DrainThreadTest, TakesNoSignalOfTheHost) {
    sigset_t ofWorker;
    sigemptyset(&ofWorker);
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    DrainThread drain(input, [&]() -> std::optional<std::int64_t> {
        pthread_sigmask(SIG_SETMASK, nullptr, &ofWorker);
        stepped.release();
        return std::nullopt;
    });
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    drain.begin();
    stepped.acquire();
    EXPECT_TRUE(drain.end());
    for (const int signal : {SIGINT, SIGTERM, SIGCHLD, SIGPIPE, SIGALRM, SIGUSR1}) {
        EXPECT_EQ(sigismember(&ofWorker, signal), 1) << signal;
        EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal)) << signal;
    }
}

} // namespace
} // namespace platform::x11
