#include <dispatch/dispatch.h>

#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <pthread.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

TEST(Semaphore, LetsAsManyPassAsItCounts) {
    dispatch_semaphore_t semaphore = dispatch_semaphore_create(2);
    EXPECT_EQ(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
    EXPECT_EQ(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER), 0);
    EXPECT_NE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
    EXPECT_NE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
    EXPECT_EQ(dispatch_semaphore_signal(semaphore), 0);
    EXPECT_EQ(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
    dispatch_release(semaphore);
}

TEST(Semaphore, IsNotMadeWithANegativeCount) {
    EXPECT_EQ(dispatch_semaphore_create(-1), nullptr);
}

TEST(Semaphore, SaysWhetherItWokeAWaiter) {
    dispatch_semaphore_t semaphore = dispatch_semaphore_create(0);
    EXPECT_EQ(dispatch_semaphore_signal(semaphore), 0);
    EXPECT_EQ(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER), 0);
    std::thread waiter([semaphore] { dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER); });
    // Signals that come before the waiter are taken back.
    while (dispatch_semaphore_signal(semaphore) == 0) {
        if (dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW) != 0)
            break; // the waiter has passed on that signal
        std::this_thread::yield();
    }
    waiter.join();
    EXPECT_NE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
    dispatch_release(semaphore);
}

TEST(Semaphore, SerialisesThreads) {
    dispatch_semaphore_t lock = dispatch_semaphore_create(1);
    int counter = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([lock, &counter] {
            for (int n = 0; n < 5000; ++n) {
                dispatch_semaphore_wait(lock, DISPATCH_TIME_FOREVER);
                ++counter;
                dispatch_semaphore_signal(lock);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(counter, 20000);
    dispatch_release(lock);
}

std::atomic<int> interruptions = 0;

TEST(Semaphore, GoesOnWaitingWhenASignalHandlerInterrupts) {
    struct sigaction action{};
    action.sa_handler = [](int) { ++interruptions; };
    struct sigaction before{};
    sigaction(SIGUSR1, &action, &before);
    dispatch_semaphore_t semaphore = dispatch_semaphore_create(0);
    std::atomic<bool> hasPassed = false;
    std::thread waiter([semaphore, &hasPassed] {
        dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
        hasPassed = true;
    });
    for (int sent = 1; sent <= 5; ++sent) {
        pthread_kill(waiter.native_handle(), SIGUSR1);
        while (interruptions < sent)
            usleep(100);
    }
    EXPECT_FALSE(hasPassed);
    dispatch_semaphore_signal(semaphore);
    waiter.join();
    sigaction(SIGUSR1, &before, nullptr);
    dispatch_release(semaphore);
}

} // namespace
