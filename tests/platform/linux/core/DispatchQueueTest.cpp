#include "platform/linux/core/DispatchQueue.h"

#include "platform/linux/core/RunLoop.h"

#include <array>
#include <csignal>
#include <filesystem>
#include <future>
#include <glib.h>
#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace platform {
namespace {

dispatch_queue_t makeQueue(const char* label = "test queue") {
    return dispatch_queue_create(label, DISPATCH_QUEUE_SERIAL);
}

/// Returns when everything dispatched so far has run.
void drain(dispatch_queue_t queue) {
    auto done = std::make_shared<std::promise<void>>();
    dispatch_async(queue, ^{
      done->set_value();
    });
    done->get_future().wait();
}

bool hasThread(pid_t thread) {
    return std::filesystem::exists("/proc/self/task/" + std::to_string(thread));
}

void waitForEnd(pid_t thread) {
    while (hasThread(thread))
        usleep(500);
}

TEST(SerialQueue, RunsBlocksInOrderOnAThreadOfItsOwn) {
    dispatch_queue_t queue = makeQueue();
    auto seen = std::make_shared<std::vector<int>>();
    auto threads = std::make_shared<std::vector<pid_t>>();
    for (int i = 0; i < 1000; ++i) {
        dispatch_async(queue, ^{
          seen->push_back(i);
          threads->push_back(gettid());
        });
    }
    drain(queue);
    ASSERT_EQ(seen->size(), 1000U);
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ((*seen)[static_cast<std::size_t>(i)], i);
    for (const pid_t thread : *threads)
        EXPECT_EQ(thread, threads->front());
    EXPECT_NE(threads->front(), gettid());
    dispatch_release(queue);
}

TEST(SerialQueue, CopiesTheBlockAndFreesIt) {
    dispatch_queue_t queue = makeQueue();
    auto captured = std::make_shared<int>(7);
    auto seen = std::make_shared<int>(0);
    { // the block that is copied lives until here
        dispatch_async(queue, ^{
          *seen = *captured;
        });
    }
    drain(queue);
    drain(queue);
    EXPECT_EQ(*seen, 7);
    EXPECT_EQ(captured.use_count(), 1);
    dispatch_release(queue);
}

TEST(SerialQueue, RunsWhatWasDispatchedAndThenEndsItsThread) {
    dispatch_queue_t queue = makeQueue();
    std::promise<void> start;
    std::promise<pid_t> thread;
    std::shared_future<void> started = start.get_future().share();
    auto* threadPromise = &thread;
    auto count = std::make_shared<std::atomic<int>>(0);
    dispatch_async(queue, ^{
      started.wait();
      threadPromise->set_value(gettid());
    });
    for (int i = 0; i < 100; ++i) {
        dispatch_async(queue, ^{
          ++*count;
        });
    }
    dispatch_release(queue);
    EXPECT_EQ(*count, 0);
    start.set_value();
    waitForEnd(thread.get_future().get());
    EXPECT_EQ(*count, 100);
    EXPECT_EQ(count.use_count(), 1);
}

TEST(SerialQueue, EndsWhenItIsGivenBackOnItsOwnThread) {
    dispatch_queue_t queue = makeQueue();
    std::promise<pid_t> thread;
    auto* threadPromise = &thread;
    auto count = std::make_shared<std::atomic<int>>(0);
    dispatch_async(queue, ^{
      dispatch_async(queue, ^{
        ++*count;
      });
      dispatch_release(queue);
      threadPromise->set_value(gettid());
    });
    waitForEnd(thread.get_future().get());
    EXPECT_EQ(*count, 1);
}

TEST(SerialQueue, LivesAsLongAsSomebodyHoldsIt) {
    dispatch_queue_t queue = makeQueue();
    Ref<DispatchQueue> held = retainQueue(queue);
    dispatch_release(queue);
    drain(held->handle());
    std::promise<pid_t> thread;
    auto* threadPromise = &thread;
    dispatch_async(held->handle(), ^{
      threadPromise->set_value(gettid());
    });
    held.reset();
    waitForEnd(thread.get_future().get());
}

TEST(SerialQueue, GoesOnAfterABlockThatThrows) {
    dispatch_queue_t queue = makeQueue();
    dispatch_async(queue, ^{
      throw std::runtime_error("from a block");
    });
    dispatch_async(queue, ^{
      throw 1;
    });
    drain(queue);
    dispatch_release(queue);
}

TEST(SerialQueue, ServesSourcesInItsContext) {
    dispatch_queue_t queue = makeQueue();
    std::promise<pid_t> viaBlock;
    std::promise<pid_t> viaSource;
    auto* blockPromise = &viaBlock;
    dispatch_async(queue, ^{
      blockPromise->set_value(gettid());
    });
    GSource* idle = g_idle_source_new();
    g_source_set_callback(
        idle,
        [](gpointer promise) -> gboolean {
            static_cast<std::promise<pid_t>*>(promise)->set_value(gettid());
            return G_SOURCE_REMOVE;
        },
        &viaSource, nullptr);
    g_source_attach(idle, contextOf(queue));
    g_source_unref(idle);
    EXPECT_EQ(viaBlock.get_future().get(), viaSource.get_future().get());
    dispatch_release(queue);
}

TEST(SerialQueue, HasTheRunLoopOfItsContext) {
    dispatch_queue_t queue = makeQueue();
    std::promise<CFRunLoopRef> current;
    auto* promise = &current;
    dispatch_async(queue, ^{
      promise->set_value(CFRunLoopGetCurrent());
    });
    CFRunLoopRef loop = current.get_future().get();
    EXPECT_EQ(loop, RunLoop::of(contextOf(queue)));
    EXPECT_NE(loop, CFRunLoopGetMain());
    dispatch_release(queue);
}

TEST(SerialQueue, TakesNoSignalOfTheHostButFaults) {
    dispatch_queue_t queue = makeQueue("a label longer than fifteen bytes");
    sigset_t mine;
    pthread_sigmask(SIG_SETMASK, nullptr, &mine);
    sigset_t mask;
    std::array<char, 16> name{};
    auto* maskOfThread = &mask;
    auto* nameOfThread = &name;
    dispatch_async(queue, ^{
      pthread_sigmask(SIG_SETMASK, nullptr, maskOfThread);
      pthread_getname_np(pthread_self(), nameOfThread->data(), nameOfThread->size());
    });
    drain(queue);
    for (const int signal : {SIGINT, SIGTERM, SIGCHLD, SIGPIPE, SIGUSR1, SIGALRM})
        EXPECT_EQ(sigismember(&mask, signal), 1) << signal;
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        EXPECT_EQ(sigismember(&mask, signal), 0) << signal;
    EXPECT_STREQ(name.data(), "a label longer ");
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    EXPECT_EQ(sigismember(&after, SIGTERM), sigismember(&mine, SIGTERM));
    dispatch_release(queue);
}

TEST(SerialQueue, NeedsNoLabel) {
    dispatch_queue_t queue = makeQueue(nullptr);
    ASSERT_NE(queue, nullptr);
    drain(queue);
    dispatch_release(queue);
}

TEST(SerialQueue, TakesBlocksFromManyThreads) {
    dispatch_queue_t queue = makeQueue();
    auto count = std::make_shared<int>(0);
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([queue, count] {
            for (int n = 0; n < 500; ++n) {
                dispatch_async(queue, ^{
                  ++*count;
                });
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    drain(queue);
    EXPECT_EQ(*count, 2000);
    dispatch_release(queue);
}

void runMainLoopOnce() {
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, 0);
}

TEST(MainQueue, RunsBlocksInOrderOnTheMainLoopOnly) {
    auto seen = std::make_shared<std::vector<int>>();
    std::thread([seen] {
        for (int i = 0; i < 3; ++i) {
            dispatch_async(dispatch_get_main_queue(), ^{
              seen->push_back(i);
              EXPECT_EQ(gettid(), getpid());
              EXPECT_EQ(CFRunLoopGetCurrent(), CFRunLoopGetMain());
            });
        }
    }).join();
    EXPECT_TRUE(seen->empty());
    runMainLoopOnce();
    EXPECT_EQ(*seen, (std::vector<int>{0, 1, 2}));
}

TEST(MainQueue, IsServedByAPlainGLibLoop) {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    dispatch_async(dispatch_get_main_queue(), ^{
      g_main_loop_quit(loop);
    });
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
}

TEST(MainQueue, RunsBlocksOfBlocksInALaterPass) {
    auto seen = std::make_shared<std::vector<int>>();
    dispatch_async(dispatch_get_main_queue(), ^{
      dispatch_async(dispatch_get_main_queue(), ^{
        seen->push_back(2);
      });
      seen->push_back(1);
    });
    runMainLoopOnce();
    EXPECT_EQ(*seen, (std::vector<int>{1}));
    runMainLoopOnce();
    EXPECT_EQ(*seen, (std::vector<int>{1, 2}));
}

TEST(MainQueue, StaysSerialInANestedRun) {
    auto seen = std::make_shared<std::vector<int>>();
    dispatch_async(dispatch_get_main_queue(), ^{
      runMainLoopOnce();
      seen->push_back(1);
    });
    dispatch_async(dispatch_get_main_queue(), ^{
      seen->push_back(2);
    });
    runMainLoopOnce();
    EXPECT_EQ(*seen, (std::vector<int>{1, 2}));
}

TEST(MainQueue, GoesOnAfterABlockThatThrows) {
    auto seen = std::make_shared<int>(0);
    dispatch_async(dispatch_get_main_queue(), ^{
      throw std::runtime_error("from a block");
    });
    dispatch_async(dispatch_get_main_queue(), ^{
      *seen = 1;
    });
    runMainLoopOnce();
    EXPECT_EQ(*seen, 1);
}

TEST(MainQueue, IsOneObjectThatIsNeverReleased) {
    dispatch_queue_t queue = dispatch_get_main_queue();
    dispatch_release(queue);
    dispatch_release(queue);
    EXPECT_EQ(dispatch_get_main_queue(), queue);
    auto seen = std::make_shared<int>(0);
    dispatch_async(queue, ^{
      *seen = 1;
    });
    runMainLoopOnce();
    EXPECT_EQ(*seen, 1);
}

} // namespace
} // namespace platform
