#include "platform/linux/x11/ReconfigurationWatch.h"

#include "support/LogCapture.h"
#include "support/MainLoop.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <algorithm>
#include <cstdlib>
#include <glib.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <unistd.h>
#include <vector>

namespace platform::x11 {
namespace {

using support::LogCapture;
using support::ScreenSetup;
using support::serveMainLoopUntil;
using support::serveWhatIsThere;
using support::XServer;

using Places = std::vector<DisplayPlace>;
using Changes = std::vector<DisplayChange>;

constexpr PixelRect vga{0, 0, 640, 480};

struct ChangeRow {
    const char* name;
    Places before;
    Places after;
    Changes changes;
};

class ChangesBetween : public testing::TestWithParam<ChangeRow> {};

TEST_P(ChangesBetween, NamesEachDisplayOnce) {
    EXPECT_EQ(changesBetween(GetParam().before, GetParam().after), GetParam().changes);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, ChangesBetween,
    testing::Values(
        ChangeRow{"None", {{5, vga}}, {{5, vga}}, {}},
        ChangeRow{"NoneWhenOnlyTheOrderDiffers", {{5, vga}, {6, vga}}, {{6, vga}, {5, vga}}, {}},
        ChangeRow{"Added", {}, {{5, vga}}, {{5, kCGDisplayAddFlag}}},
        ChangeRow{"Removed", {{5, vga}}, {}, {{5, kCGDisplayRemoveFlag}}},
        ChangeRow{"Moved", {{5, vga}}, {{5, vga.moved(0, 1)}}, {{5, kCGDisplayMovedFlag}}},
        ChangeRow{"Resized",
                  {{5, vga}},
                  {{5, {0, 0, 640, 400}}},
                  {{5, kCGDisplayDesktopShapeChangedFlag}}},
        ChangeRow{"MovedAndResized",
                  {{5, vga}},
                  {{5, {10, 0, 640, 480}}},
                  {{5, kCGDisplayMovedFlag | kCGDisplayDesktopShapeChangedFlag}}},
        ChangeRow{"ReplacedAndMoved",
                  {{5, vga}, {6, vga}},
                  {{6, vga.moved(1, 0)}, {7, vga}},
                  {{5, kCGDisplayRemoveFlag}, {6, kCGDisplayMovedFlag}, {7, kCGDisplayAddFlag}}}),
    [](const auto& row) { return row.param.name; });

/// What callbacks were called with; one at a time, as a callback can carry only a pointer.
struct Calls {
    Changes changes;
    std::vector<pid_t> threads;

    static void record(CGDirectDisplayID display, CGDisplayChangeSummaryFlags flags, void* calls) {
        static_cast<Calls*>(calls)->changes.push_back({display, flags});
        static_cast<Calls*>(calls)->threads.push_back(gettid());
    }

    bool has(CGDirectDisplayID display, CGDisplayChangeSummaryFlags flags) const {
        return std::find(changes.begin(), changes.end(), DisplayChange{display, flags}) !=
               changes.end();
    }
};

class Registered {
public:
    explicit Registered(Calls& calls) : info(&calls) {
        EXPECT_EQ(CGDisplayRegisterReconfigurationCallback(Calls::record, info), kCGErrorSuccess);
    }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;
    ~Registered() {
        EXPECT_EQ(CGDisplayRemoveReconfigurationCallback(Calls::record, info), kCGErrorSuccess);
    }

private:
    Calls* info;
};

class Reconfiguration : public testing::Test {
protected:
    Reconfiguration() { setenv("DISPLAY", server.display().c_str(), 1); }
    void TearDown() override {
        unsetenv("DISPLAY");
        serveWhatIsThere();
    }

    CGDirectDisplayID namedDisplay(const char* name) { return 0x80000000U | setup.atomOf(name); }

    XServer server{{.width = 300, .height = 200}};
    ScreenSetup setup{server.display()};
    CGDirectDisplayID main = setup.firstOutput();
    Calls calls;
};

TEST_F(Reconfiguration, TellsOfANewSizeOnTheMainLoop) {
    const Registered registered(calls);
    setup.resize(200, 100);
    EXPECT_TRUE(calls.changes.empty()) << "not before the loop runs";
    EXPECT_TRUE(
        serveMainLoopUntil([this] { return calls.has(main, kCGDisplayDesktopShapeChangedFlag); }));
    for (const pid_t thread : calls.threads)
        EXPECT_EQ(thread, getpid());
}

TEST_F(Reconfiguration, TellsOfDisplaysThatComeMoveAndGo) {
    const Registered registered(calls);
    const CGDirectDisplayID part = namedDisplay("Part");
    setup.setMonitor("Part", 0, 0, 50, 50);
    EXPECT_TRUE(serveMainLoopUntil([&] { return calls.has(part, kCGDisplayAddFlag); }));
    setup.setMonitor("Part", 10, 0, 50, 50);
    EXPECT_TRUE(serveMainLoopUntil([&] { return calls.has(part, kCGDisplayMovedFlag); }));
    setup.deleteMonitor("Part");
    EXPECT_TRUE(serveMainLoopUntil([&] { return calls.has(part, kCGDisplayRemoveFlag); }));
    EXPECT_EQ(calls.changes.size(), 3U);
}

TEST_F(Reconfiguration, TellsOfAnOutputThatIsTurnedOff) {
    const Registered registered(calls);
    setup.turnOutputOff();
    EXPECT_TRUE(serveMainLoopUntil([this] { return calls.has(main, kCGDisplayRemoveFlag); }));
}

TEST_F(Reconfiguration, EndsUpWithTheLastOfManyChanges) {
    const Registered registered(calls);
    for (int i = 0; i < 10; ++i)
        setup.resize(100 + i * 10, 100);
    setup.setMonitor("Last", 0, 0, 5, 5);
    EXPECT_TRUE(
        serveMainLoopUntil([&] { return calls.has(namedDisplay("Last"), kCGDisplayAddFlag); }));
}

TEST_F(Reconfiguration, TellsNobodyAfterRemoval) {
    {
        const Registered registered(calls);
    }
    setup.resize(200, 100);
    serveWhatIsThere();
    EXPECT_TRUE(calls.changes.empty());
}

TEST_F(Reconfiguration, CountsRegistrations) {
    const Registered once(calls);
    const Registered twice(calls);
    Calls others;
    const Registered other(others);
    setup.setMonitor("Part", 0, 0, 50, 50);
    EXPECT_TRUE(serveMainLoopUntil([&] { return !others.changes.empty(); }));
    EXPECT_EQ(calls.changes.size(), 2U);
}

TEST_F(Reconfiguration, RefusesWhatIsNotRegistered) {
    EXPECT_EQ(CGDisplayRemoveReconfigurationCallback(Calls::record, &calls),
              kCGErrorIllegalArgument);
    EXPECT_EQ(CGDisplayRegisterReconfigurationCallback(nullptr, &calls), kCGErrorIllegalArgument);
    const Registered registered(calls);
    EXPECT_EQ(CGDisplayRemoveReconfigurationCallback(Calls::record, nullptr),
              kCGErrorIllegalArgument);
}

/// Removes itself, and the other one, when it is called.
struct Remover {
    int called = 0;
    Remover* other = nullptr;

    static void remove(CGDirectDisplayID, CGDisplayChangeSummaryFlags, void* info) {
        auto* self = static_cast<Remover*>(info);
        ++self->called;
        CGDisplayRemoveReconfigurationCallback(remove, self);
        CGDisplayRemoveReconfigurationCallback(remove, self->other);
    }
};

TEST_F(Reconfiguration, LetsACallbackRemoveItselfAndOthers) {
    Remover one;
    Remover other;
    one.other = &other;
    other.other = &one;
    CGDisplayRegisterReconfigurationCallback(Remover::remove, &one);
    CGDisplayRegisterReconfigurationCallback(Remover::remove, &other);
    setup.setMonitor("Part", 0, 0, 50, 50);
    EXPECT_TRUE(serveMainLoopUntil([&] { return one.called + other.called > 0; }));
    serveWhatIsThere();
    EXPECT_EQ(one.called, 1);
    EXPECT_EQ(other.called, 0);
}

void throwAlways(CGDirectDisplayID, CGDisplayChangeSummaryFlags, void*) {
    throw std::runtime_error("from a callback");
}

TEST_F(Reconfiguration, GoesOnAfterACallbackThatThrows) {
    CGDisplayRegisterReconfigurationCallback(throwAlways, nullptr);
    const Registered registered(calls);
    setup.setMonitor("Part", 0, 0, 50, 50);
    EXPECT_TRUE(serveMainLoopUntil([this] { return !calls.changes.empty(); }));
    CGDisplayRemoveReconfigurationCallback(throwAlways, nullptr);
}

TEST_F(Reconfiguration, TellsThatADeadServersDisplaysAreGoneAndTakesRegistrationsOfTheNext) {
    const Registered registered(calls);
    const LogCapture log;
    server.kill();
    EXPECT_TRUE(serveMainLoopUntil([&log] { return log.has("The X server is gone"); }));
    EXPECT_EQ(calls.changes, (Changes{{main, kCGDisplayRemoveFlag}}));
    EXPECT_EQ(CGDisplayRegisterReconfigurationCallback(Calls::record, nullptr),
              kCGErrorInvalidConnection);
    XServer next({.width = 300, .height = 200});
    setenv("DISPLAY", next.display().c_str(), 1);
    Calls later;
    const Registered again(later);
    ScreenSetup(next.display()).setMonitor("Part", 0, 0, 50, 50);
    EXPECT_TRUE(serveMainLoopUntil([&later] { return !later.changes.empty(); }));
}

TEST_F(Reconfiguration, DoesNotHoldTheLoopWhileTheServerSleeps) {
    const Registered registered(calls);
    setup.resize(200, 100);
    server.pause();
    gint64 longest = 0;
    for (int i = 0; i < 20; ++i) {
        const gint64 start = g_get_monotonic_time();
        g_main_context_iteration(nullptr, FALSE);
        longest = std::max(longest, g_get_monotonic_time() - start);
        g_usleep(1000);
    }
    EXPECT_LT(longest, 1'000'000) << "waited for a server that sleeps";
    server.resume();
    EXPECT_TRUE(serveMainLoopUntil([this] { return !calls.changes.empty(); }));
}

TEST(ReconfigurationWithoutRandr, TellsOfTheScreen) {
    XServer server({.width = 300, .height = 200, .withoutExtensions = {"RANDR"}});
    setenv("DISPLAY", server.display().c_str(), 1);
    Calls calls;
    {
        const Registered registered(calls);
        serveWhatIsThere();
    }
    unsetenv("DISPLAY");
    EXPECT_TRUE(calls.changes.empty());
}

TEST(ReconfigurationNowhere, RefusesRegistrations) {
    unsetenv("DISPLAY");
    EXPECT_EQ(CGDisplayRegisterReconfigurationCallback(Calls::record, nullptr),
              kCGErrorInvalidConnection);
}

} // namespace
} // namespace platform::x11
