#include "platform/linux/core/RunLoop.h"

#include <CoreFoundation/CoreFoundation.h>

#include <atomic>
#include <cmath>
#include <functional>
#include <future>
#include <glib.h>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace platform {
namespace {

/// A source that calls its action when it was fired.
class TestSource final : public RunLoopSource {
public:
    explicit TestSource(std::function<void()> action = [] {}) : onFire(std::move(action)) {}
    ~TestSource() override { EXPECT_EQ(source, nullptr) << "freed while in a loop"; }

    static Ref<TestSource> make(std::function<void()> action = [] {}) {
        return Ref<TestSource>::adopt(new TestSource(std::move(action)));
    }

    void attach(GMainContext* context) override {
        static GSourceFuncs functions{nullptr, nullptr, dispatch, nullptr, nullptr, nullptr};
        ++attached;
        lastContext = context;
        source = g_source_new(&functions, sizeof(GSource));
        g_source_set_callback(source, never, this, nullptr);
        g_source_attach(source, context);
    }

    void detach() override {
        ++detached;
        g_source_destroy(source);
        g_source_unref(source);
        source = nullptr;
    }

    void fire() { g_source_set_ready_time(source, 0); }

    int attached = 0;
    int detached = 0;
    GMainContext* lastContext = nullptr;

private:
    static gboolean never(gpointer) { return G_SOURCE_CONTINUE; }
    static gboolean dispatch(GSource* source, GSourceFunc, gpointer data) {
        g_source_set_ready_time(source, -1);
        static_cast<TestSource*>(data)->onFire();
        return G_SOURCE_CONTINUE;
    }

    std::function<void()> onFire;
    GSource* source = nullptr;
};

void add(const Ref<TestSource>& source, CFRunLoopRef loop = CFRunLoopGetCurrent()) {
    CFRunLoopAddSource(loop, source.get(), kCFRunLoopCommonModes);
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): it does not follow the count
}

void remove(const Ref<TestSource>& source, CFRunLoopRef loop = CFRunLoopGetCurrent()) {
    CFRunLoopRemoveSource(loop, source.get(), kCFRunLoopCommonModes);
}

CFRunLoopRunResult run(double seconds, bool returnAfterSourceHandled = false) {
    return CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, returnAfterSourceHandled ? 1 : 0);
}

constexpr double longTime = 60;

/// Most tests need a loop that nobody else uses: that of a new thread.
void onNewThread(const std::function<void()>& test) {
    std::thread(test).join();
}

TEST(RunLoop, OfTheMainThreadIsThatOfTheDefaultContext) {
    EXPECT_EQ(CFRunLoopGetCurrent(), CFRunLoopGetMain());
    EXPECT_EQ(RunLoop::of(g_main_context_default()), CFRunLoopGetMain());
}

TEST(RunLoop, OfAnotherThreadIsOneOfItsOwn) {
    onNewThread([] {
        CFRunLoopRef mine = CFRunLoopGetCurrent();
        EXPECT_NE(mine, CFRunLoopGetMain());
        EXPECT_EQ(CFRunLoopGetCurrent(), mine);
        CFRunLoopRef others = nullptr;
        onNewThread([&others] { others = CFRunLoopGetCurrent(); });
        EXPECT_NE(others, mine);
    });
}

TEST(RunLoop, OfTheMainThreadIgnoresAPushedContext) {
    GMainContext* pushed = g_main_context_new();
    g_main_context_push_thread_default(pushed);
    EXPECT_EQ(CFRunLoopGetCurrent(), CFRunLoopGetMain());
    g_main_context_pop_thread_default(pushed);
    g_main_context_unref(pushed);
}

TEST(RunLoop, FollowsTheContextThatTheHostPushed) {
    GMainContext* context = g_main_context_new();
    CFRunLoopRef first = nullptr;
    onNewThread([&] {
        g_main_context_push_thread_default(context);
        first = CFRunLoopGetCurrent();
        EXPECT_EQ(first, RunLoop::of(context));
        g_main_context_pop_thread_default(context);
        EXPECT_NE(CFRunLoopGetCurrent(), first);
    });
    // Another thread takes the context over: still the same loop.
    onNewThread([&] {
        g_main_context_push_thread_default(context);
        EXPECT_EQ(CFRunLoopGetCurrent(), first);
        g_main_context_pop_thread_default(context);
    });
    g_main_context_unref(context);
}

TEST(RunLoop, IsTheMainOneOnAThreadThatRunsTheDefaultContext) {
    onNewThread([] {
        ASSERT_TRUE(g_main_context_acquire(g_main_context_default()));
        EXPECT_EQ(CFRunLoopGetCurrent(), CFRunLoopGetMain());
        g_main_context_release(g_main_context_default());
        EXPECT_NE(CFRunLoopGetCurrent(), CFRunLoopGetMain());
    });
}

TEST(RunLoop, AttachesASourceOnceAndDetachesIt) {
    onNewThread([] {
        const auto source = TestSource::make();
        add(source);
        add(source);
        EXPECT_EQ(source->attached, 1);
        EXPECT_EQ(source->lastContext, g_main_context_get_thread_default());
        EXPECT_EQ(source->retainCount(), 2);
        remove(source);
        remove(source);
        EXPECT_EQ(source->detached, 1);
        EXPECT_EQ(source->retainCount(), 1);
        add(source);
        EXPECT_EQ(source->attached, 2);
        remove(source);
    });
}

TEST(RunLoop, DoesNotTellModesApart) {
    onNewThread([] {
        const auto source = TestSource::make();
        CFRunLoopAddSource(CFRunLoopGetCurrent(), source.get(), kCFRunLoopDefaultMode);
        CFRunLoopRemoveSource(CFRunLoopGetCurrent(), source.get(), kCFRunLoopCommonModes);
        EXPECT_EQ(source->detached, 1);
    });
}

TEST(RunLoop, LeavesASourceOfAnotherLoopWhereItIs) {
    onNewThread([] {
        const auto source = TestSource::make();
        add(source);
        remove(source, CFRunLoopGetMain());
        EXPECT_EQ(source->detached, 0);
        add(source, CFRunLoopGetMain());
        EXPECT_EQ(source->attached, 1);
        EXPECT_EQ(source->lastContext, g_main_context_get_thread_default());
        remove(source);
        EXPECT_EQ(source->detached, 1);
    });
}

TEST(RunLoop, ToleratesNull) {
    const auto source = TestSource::make();
    CFRunLoopAddSource(nullptr, source.get(), kCFRunLoopCommonModes);
    CFRunLoopAddSource(CFRunLoopGetMain(), nullptr, kCFRunLoopCommonModes);
    CFRunLoopRemoveSource(nullptr, source.get(), kCFRunLoopCommonModes);
    CFRunLoopRemoveSource(CFRunLoopGetMain(), nullptr, kCFRunLoopCommonModes);
    CFRunLoopStop(nullptr);
    EXPECT_EQ(source->attached, 0);
}

TEST(RunLoop, LetsItsSourcesGoWhenTheThreadEnds) {
    const auto source = TestSource::make();
    onNewThread([&] { add(source); });
    EXPECT_EQ(source->detached, 1);
    EXPECT_EQ(source->retainCount(), 1);
}

TEST(RunLoop, LetsItsSourcesGoWhenTheHostsContextEnds) {
    const auto source = TestSource::make();
    GMainContext* context = g_main_context_new();
    CFRunLoopRef loop = RunLoop::of(context);
    CFRetain(loop);
    add(source, loop);
    g_main_context_unref(context);
    EXPECT_EQ(source->detached, 1);
    EXPECT_EQ(source->retainCount(), 1);
    // Who kept the loop has an empty shell.
    add(source, loop);
    CFRunLoopStop(loop);
    EXPECT_EQ(source->attached, 1);
    EXPECT_EQ(CFGetRetainCount(loop), 1);
    CFRelease(loop);
}

TEST(RunLoop, SurvivesAContextThatEndsInsideItsOwnRun) {
    onNewThread([] {
        GMainContext* context = g_main_context_new();
        g_main_context_push_thread_default(context);
        const auto source = TestSource::make([context] {
            CFRunLoopStop(CFRunLoopGetCurrent());
            g_main_context_pop_thread_default(context);
            g_main_context_unref(context);
        });
        add(source);
        source->fire();
        CFRunLoopRun();
        EXPECT_EQ(source->detached, 1);
    });
}

TEST(RunLoop, HasNothingToRunForWithoutSources) {
    onNewThread([] {
        EXPECT_EQ(run(longTime), kCFRunLoopRunFinished);
        EXPECT_EQ(run(0), kCFRunLoopRunFinished);
        CFRunLoopRun();
    });
}

TEST(RunLoop, OfTheMainThreadAlwaysHasTheMainQueueToRunFor) {
    EXPECT_EQ(run(0), kCFRunLoopRunTimedOut);
    EXPECT_EQ(run(0.001), kCFRunLoopRunTimedOut);
}

TEST(RunLoop, RunsUntilTheTimeIsUp) {
    onNewThread([] {
        const auto source = TestSource::make();
        add(source);
        const gint64 start = g_get_monotonic_time();
        EXPECT_EQ(run(0.02), kCFRunLoopRunTimedOut);
        EXPECT_GE(g_get_monotonic_time() - start, 20000);
        EXPECT_EQ(run(-1), kCFRunLoopRunTimedOut);
        EXPECT_EQ(run(std::nan("")), kCFRunLoopRunTimedOut);
        remove(source);
    });
}

TEST(RunLoop, ReturnsAfterTheFirstSourceWhenAskedTo) {
    onNewThread([] {
        int calls = 0;
        const auto source = TestSource::make([&calls] { ++calls; });
        add(source);
        source->fire();
        EXPECT_EQ(run(longTime, true), kCFRunLoopRunHandledSource);
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(run(0.001, true), kCFRunLoopRunTimedOut);
        source->fire();
        EXPECT_EQ(run(0, true), kCFRunLoopRunHandledSource);
        source->fire();
        EXPECT_EQ(run(0, false), kCFRunLoopRunTimedOut);
        EXPECT_EQ(calls, 3);
        remove(source);
    });
}

TEST(RunLoop, ServesWhatIsReadyBeforeTheTimeIsUp) {
    onNewThread([] {
        int calls = 0;
        Ref<TestSource> source;
        source = TestSource::make([&] {
            ++calls;
            if (calls < 5)
                source->fire();
        });
        add(source);
        source->fire();
        EXPECT_EQ(run(0.05), kCFRunLoopRunTimedOut);
        EXPECT_EQ(calls, 5);
        remove(source);
    });
}

TEST(RunLoop, KeepsToItsTimeWhenSourcesNeverRest) {
    onNewThread([] {
        Ref<TestSource> source;
        source = TestSource::make([&source] { source->fire(); });
        add(source);
        source->fire();
        EXPECT_EQ(run(0.02), kCFRunLoopRunTimedOut);
        remove(source);
    });
}

TEST(RunLoop, EndsWithItsLastSource) {
    onNewThread([] {
        Ref<TestSource> source;
        source = TestSource::make([&source] { remove(source); });
        add(source);
        source->fire();
        EXPECT_EQ(run(longTime), kCFRunLoopRunFinished);
        add(source);
        source->fire();
        CFRunLoopRun();
    });
}

TEST(RunLoop, EndsWhenAnotherThreadTakesItsLastSource) {
    std::promise<CFRunLoopRef> running;
    const auto source = TestSource::make([&running] { running.set_value(CFRunLoopGetCurrent()); });
    std::thread runner([&] {
        add(source);
        source->fire();
        CFRunLoopRun();
    });
    CFRunLoopRef loop = running.get_future().get();
    remove(source, loop);
    runner.join();
    EXPECT_EQ(source->detached, 1);
}

TEST(RunLoop, IsStoppedFromInside) {
    onNewThread([] {
        const auto source = TestSource::make([] { CFRunLoopStop(CFRunLoopGetCurrent()); });
        add(source);
        source->fire();
        EXPECT_EQ(run(longTime), kCFRunLoopRunStopped);
        source->fire();
        CFRunLoopRun();
        remove(source);
    });
}

TEST(RunLoop, IsStoppedFromAnotherThreadWhileItWaits) {
    std::promise<CFRunLoopRef> running;
    std::atomic<bool> hasEnded = false;
    std::thread runner([&] {
        const auto source =
            TestSource::make([&running] { running.set_value(CFRunLoopGetCurrent()); });
        add(source);
        source->fire();
        CFRunLoopRun();
        hasEnded = true;
        remove(source);
    });
    CFRunLoopRef loop = running.get_future().get();
    EXPECT_FALSE(hasEnded);
    CFRunLoopStop(loop);
    runner.join();
}

TEST(RunLoop, StopEndsTheInnermostRunOnly) {
    onNewThread([] {
        std::vector<CFRunLoopRunResult> results;
        const auto inner = TestSource::make([] { CFRunLoopStop(CFRunLoopGetCurrent()); });
        const auto outer = TestSource::make([&] {
            inner->fire();
            results.push_back(run(longTime));
        });
        add(inner);
        add(outer);
        outer->fire();
        results.push_back(run(0.05));
        EXPECT_EQ(results,
                  (std::vector<CFRunLoopRunResult>{kCFRunLoopRunStopped, kCFRunLoopRunTimedOut}));
        remove(inner);
        remove(outer);
    });
}

TEST(RunLoop, ForgetsAStopThatCameBeforeTheRun) {
    onNewThread([] {
        const auto source = TestSource::make();
        add(source);
        CFRunLoopStop(CFRunLoopGetCurrent());
        EXPECT_EQ(run(0.005), kCFRunLoopRunTimedOut);
        remove(source);
    });
}

TEST(RunLoop, ServesTheHostsOwnGLibSources) {
    bool hasRun = false;
    g_idle_add(
        [](gpointer flag) -> gboolean {
            *static_cast<bool*>(flag) = true;
            return G_SOURCE_REMOVE;
        },
        &hasRun);
    EXPECT_EQ(run(longTime, true), kCFRunLoopRunHandledSource);
    EXPECT_TRUE(hasRun);
}

TEST(RunLoop, ServesItsSourcesWhenTheHostRunsTheContext) {
    onNewThread([] {
        GMainContext* context = g_main_context_new();
        g_main_context_push_thread_default(context);
        GMainLoop* loop = g_main_loop_new(context, FALSE);
        const auto source = TestSource::make([loop] { g_main_loop_quit(loop); });
        add(source);
        source->fire();
        g_main_loop_run(loop);
        remove(source);
        g_main_loop_unref(loop);
        g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
    });
}

std::atomic<int> polls = 0;

gint countingPoll(GPollFD* fds, guint count, gint timeout) {
    ++polls;
    return g_poll(fds, count, timeout);
}

TEST(RunLoop, SleepsWhileNothingHappens) {
    onNewThread([] {
        GMainContext* context = g_main_context_new();
        g_main_context_set_poll_func(context, countingPoll);
        g_main_context_push_thread_default(context);
        const auto source = TestSource::make();
        add(source);
        polls = 0;
        EXPECT_EQ(run(0.2), kCFRunLoopRunTimedOut);
        // One for the wait itself, and at most one more if the clock rounds down.
        EXPECT_LE(polls, 2);
        remove(source);
        g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
    });
}

} // namespace
} // namespace platform
