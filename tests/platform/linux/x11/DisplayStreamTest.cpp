// Streams of real displays, and what may go wrong with them.

#include "platform/linux/graphics/Surface.h"
#include "support/MainLoop.h"
#include "support/Painter.h"
#include "support/Picture.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <IOSurface/IOSurfaceRef.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <thread>

namespace {

using support::Painter;
using support::Picture;
using support::ScreenSetup;
using support::serveMainLoopUntil;
using support::XServer;
using support::XServerOptions;

constexpr int bgra = 0x42475241;
constexpr std::uint32_t red = 0xd02010;
constexpr std::uint32_t blue = 0x1020d0;

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// A host that keeps a picture of the display from a stream's frames.
class Viewer {
public:
    Viewer(const XServer& server, int width, int height, bool onQueue = false)
        : picture(width, height) {
        setenv("DISPLAY", server.display().c_str(), 1);
        Viewer* self = this;
        const auto handler = ^(CGDisplayStreamFrameStatus status, uint64_t, IOSurfaceRef surface,
                               CGDisplayStreamUpdateRef update) {
          self->onFrame(status, surface, update);
        };
        const auto w = static_cast<size_t>(width);
        const auto h = static_cast<size_t>(height);
        if (onQueue) {
            queue = dispatch_queue_create("frames", DISPATCH_QUEUE_SERIAL);
            stream = CGDisplayStreamCreateWithDispatchQueue(0, w, h, bgra, nullptr, queue, handler);
        } else {
            stream = CGDisplayStreamCreate(0, w, h, bgra, nullptr, handler);
        }
    }
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;
    ~Viewer() {
        stop();
        while (!held.empty())
            letGo();
        if (stream != nullptr)
            CFRelease(stream);
        if (queue != nullptr)
            dispatch_release(queue);
    }

    CGError start() {
        source = CGDisplayStreamGetRunLoopSource(stream);
        if (source != nullptr)
            CFRunLoopAddSource(CFRunLoopGetCurrent(), source, kCFRunLoopCommonModes);
        return CGDisplayStreamStart(stream);
    }

    CGError stop() {
        const CGError result = CGDisplayStreamStop(stream);
        if (source != nullptr)
            CFRunLoopRemoveSource(CFRunLoopGetCurrent(), source, kCFRunLoopCommonModes);
        source = nullptr;
        if (queue != nullptr)
            waitForQueue();
        return result;
    }

    /// Serves the main loop until the picture equals the server's; false after a long time.
    bool follows(const XServer& server) {
        return serveMainLoopUntil([&] { return isEqual(server.frameBuffer()); });
    }

    bool isEqual(const Picture& other) const {
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                if (picture.at(x, y) != (other.at(x, y) | 0xff000000))
                    return false;
            }
        }
        return true;
    }

    CGDisplayStreamRef stream = nullptr;
    Picture picture;
    std::atomic<int> frames = 0;
    std::atomic<int> stops = 0;
    std::atomic<int> wrongMoves = 0;
    std::size_t mostRects = 0;
    bool holdsEveryFrame = false; ///< and gives none back
    std::function<void()> onEachFrame;

private:
    /// A call of the handler that was under way on the queue may have gone on.
    void waitForQueue() {
        std::atomic<bool> isServed = false;
        std::atomic<bool>* const flag = &isServed;
        dispatch_async(queue, ^{
          *flag = true;
        });
        serveMainLoopUntil([&] { return isServed.load(); });
    }

    void onFrame(CGDisplayStreamFrameStatus status, IOSurfaceRef surface,
                 CGDisplayStreamUpdateRef update) {
        if (status == kCGDisplayStreamFrameStatusStopped) {
            EXPECT_EQ(surface, nullptr);
            EXPECT_EQ(update, nullptr);
            ++stops;
            return;
        }
        ASSERT_EQ(status, kCGDisplayStreamFrameStatusFrameComplete);
        ASSERT_NE(update, nullptr);
        hold(surface);
        checkMoves(surface, update);
        copyDirty(surface, update);
        ++frames;
        if (onEachFrame)
            onEachFrame();
    }

    void hold(IOSurfaceRef surface) {
        if (!held.empty() && !holdsEveryFrame)
            letGo();
        CFRetain(surface);
        IOSurfaceIncrementUseCount(surface);
        held.push_back(surface);
    }

    void letGo() {
        IOSurfaceDecrementUseCount(held.back());
        CFRelease(held.back());
        held.pop_back();
    }

    static const std::uint32_t* rowOf(IOSurfaceRef surface, int y) {
        const auto* base = static_cast<const std::uint8_t*>(IOSurfaceGetBaseAddress(surface));
        return reinterpret_cast<const std::uint32_t*>(base + static_cast<std::size_t>(y) *
                                                                 IOSurfaceGetBytesPerRow(surface));
    }

    void checkMoves(IOSurfaceRef surface, CGDisplayStreamUpdateRef update) {
        std::size_t count = 0;
        const CGRect* rects =
            CGDisplayStreamUpdateGetRects(update, kCGDisplayStreamUpdateMovedRects, &count);
        CGFloat dx = 0;
        CGFloat dy = 0;
        CGDisplayStreamUpdateGetMovedRectsDelta(update, &dx, &dy);
        for (std::size_t i = 0; i < count; ++i) {
            forEachPixel(rects[i], [&](int x, int y) {
                if (rowOf(surface, y)[x] !=
                    picture.at(x + static_cast<int>(dx), y + static_cast<int>(dy)))
                    ++wrongMoves;
            });
        }
    }

    void copyDirty(IOSurfaceRef surface, CGDisplayStreamUpdateRef update) {
        std::size_t count = 0;
        const CGRect* rects =
            CGDisplayStreamUpdateGetRects(update, kCGDisplayStreamUpdateDirtyRects, &count);
        mostRects = std::max(mostRects, count);
        for (std::size_t i = 0; i < count; ++i)
            forEachPixel(rects[i], [&](int x, int y) { picture.at(x, y) = rowOf(surface, y)[x]; });
    }

    template <typename Visit>
    void forEachPixel(const CGRect& rect, const Visit& visit) const {
        const int right = static_cast<int>(rect.origin.x + rect.size.width);
        const int bottom = static_cast<int>(rect.origin.y + rect.size.height);
        ASSERT_LE(right, picture.width);
        ASSERT_LE(bottom, picture.height);
        for (int y = static_cast<int>(rect.origin.y); y < bottom; ++y) {
            for (int x = static_cast<int>(rect.origin.x); x < right; ++x)
                visit(x, y);
        }
    }

    CFRunLoopSourceRef source = nullptr;
    dispatch_queue_t queue = nullptr;
    std::vector<IOSurfaceRef> held;
};

/// Something of everything, drawn at random.
void paintALot(Painter& painter, int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    const auto upTo = [&](int last) {
        return static_cast<int>(random() % static_cast<unsigned>(last + 1));
    };
    for (int i = 0; i < 40; ++i) {
        painter.fill(upTo(width), upTo(height), 1 + upTo(width), 1 + upTo(height / 4),
                     random() & 0xffffff);
        painter.copyArea(0, 0, width, height, upTo(4) - 2, upTo(20) - 10);
        serveMainLoopUntil([&] { return upTo(3) == 0; });
        painter.flush();
    }
    painter.sync();
}

struct Server {
    const char* name;
    XServerOptions options;
    friend void PrintTo(const Server& row, std::ostream* out) { *out << row.name; }
};

class StreamOn : public testing::TestWithParam<Server> {};

TEST_P(StreamOn, ShowsWhatTheServerShows) {
    const XServerOptions& options = GetParam().options;
    const XServer server(options);
    Viewer viewer(server, options.width, options.height);
    ASSERT_NE(viewer.stream, nullptr);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    Painter painter(server.display());
    painter.hidePointer();
    paintALot(painter, options.width, options.height, 5);
    EXPECT_TRUE(viewer.follows(server));
    EXPECT_EQ(viewer.wrongMoves, 0);
    EXPECT_LE(viewer.mostRects, 64U);
}

INSTANTIATE_TEST_SUITE_P(
    Servers, StreamOn,
    testing::Values(Server{"Everything", {}},
                    Server{"WithoutShm", {.withoutExtensions = {"MIT-SHM"}}},
                    Server{"WithoutRender", {.withoutExtensions = {"RENDER"}}},
                    Server{"WithoutShmAndRender", {.withoutExtensions = {"MIT-SHM", "RENDER"}}},
                    Server{"WithoutDamage", {.withoutExtensions = {"DAMAGE"}}},
                    Server{"WithoutXfixes", {.withoutExtensions = {"XFIXES"}}},
                    Server{"WithoutRandr", {.withoutExtensions = {"RANDR"}}},
                    Server{"WithoutShmAndDamage", {.withoutExtensions = {"MIT-SHM", "DAMAGE"}}},
                    Server{"Depth15", {.depth = 15}}, Server{"Depth16", {.depth = 16}},
                    Server{"Depth30", {.depth = 30}},
                    Server{"Depth15WithoutRender", {.depth = 15, .withoutExtensions = {"RENDER"}}},
                    Server{"Depth16WithoutRender", {.depth = 16, .withoutExtensions = {"RENDER"}}},
                    Server{"Depth30WithoutShmAndRender",
                           {.depth = 30, .withoutExtensions = {"MIT-SHM", "RENDER"}}},
                    Server{"OnePixelWide", {.width = 1, .height = 97}},
                    Server{"ThreePixelsWide", {.width = 3, .height = 3}},
                    Server{"OddWidth", {.width = 641, .height = 123}},
                    Server{"Width1366", {.width = 1366, .height = 768}},
                    Server{"OddWidthDepth16WithoutShmAndRender",
                           {.width = 641,
                            .height = 123,
                            .depth = 16,
                            .withoutExtensions = {"MIT-SHM", "RENDER"}}}),
    [](const auto& row) { return row.param.name; });

TEST(DisplayStream, IndexedColoursAreRefused) {
    const XServer server({.depth = 8});
    Viewer viewer(server, 640, 480);
    ASSERT_NE(viewer.stream, nullptr);
    EXPECT_NE(viewer.start(), kCGErrorSuccess);
}

TEST(DisplayStream, NoDisplayGivesNoStream) {
    const auto handler =
        ^(CGDisplayStreamFrameStatus, uint64_t, IOSurfaceRef, CGDisplayStreamUpdateRef) {
        };
    for (const char* name : {"", ":4711", "nonsense", "localhost:4711"}) {
        setenv("DISPLAY", name, 1);
        EXPECT_EQ(CGDisplayStreamCreate(0, 10, 10, bgra, nullptr, handler), nullptr) << name;
    }
    unsetenv("DISPLAY");
    EXPECT_EQ(CGDisplayStreamCreate(0, 10, 10, bgra, nullptr, handler), nullptr);
}

TEST(DisplayStream, BadArgumentsGiveNoStream) {
    const XServer server;
    setenv("DISPLAY", server.display().c_str(), 1);
    const auto handler =
        ^(CGDisplayStreamFrameStatus, uint64_t, IOSurfaceRef, CGDisplayStreamUpdateRef) {
        };
    EXPECT_EQ(CGDisplayStreamCreate(0, 0, 10, bgra, nullptr, handler), nullptr);
    EXPECT_EQ(CGDisplayStreamCreate(0, 10, 0, bgra, nullptr, handler), nullptr);
    EXPECT_EQ(CGDisplayStreamCreate(0, 40000, 10, bgra, nullptr, handler), nullptr);
    EXPECT_EQ(CGDisplayStreamCreate(0, 10, 10, 0, nullptr, handler), nullptr);
    EXPECT_EQ(CGDisplayStreamCreate(0, 10, 10, bgra, nullptr, nullptr), nullptr);
    EXPECT_EQ(CGDisplayStreamCreate(987654, 10, 10, bgra, nullptr, handler), nullptr);
    EXPECT_EQ(CGDisplayStreamCreateWithDispatchQueue(0, 10, 10, bgra, nullptr, nullptr, handler),
              nullptr);
    EXPECT_EQ(CGDisplayStreamGetRunLoopSource(nullptr), nullptr);
    EXPECT_NE(CGDisplayStreamStart(nullptr), kCGErrorSuccess);
    EXPECT_NE(CGDisplayStreamStop(nullptr), kCGErrorSuccess);
}

TEST(DisplayStream, FramesLargerThanTheDisplayAreBlackBeyondIt) {
    const XServer server({.width = 100, .height = 80});
    Painter painter(server.display());
    painter.fill(0, 0, 100, 80, red);
    painter.sync();
    Viewer viewer(server, 130, 90);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > 0; }));
    EXPECT_EQ(viewer.picture.at(99, 79), 0xff000000 | red);
    EXPECT_EQ(viewer.picture.at(100, 0), 0xff000000);
    EXPECT_EQ(viewer.picture.at(0, 80), 0xff000000);
    EXPECT_EQ(viewer.picture.at(129, 89), 0xff000000);
}

TEST(DisplayStream, StopIsNoticedOnceAndEndsAllCalls) {
    const XServer server;
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > 0; }));
    Painter painter(server.display());
    painter.fill(0, 0, 10, 10, red);
    painter.sync();
    EXPECT_EQ(viewer.stop(), kCGErrorSuccess);
    EXPECT_EQ(viewer.stops, 1);
    const int frames = viewer.frames;
    support::serveWhatIsThere();
    EXPECT_EQ(viewer.frames, frames);
    EXPECT_EQ(viewer.stop(), kCGErrorSuccess);
    EXPECT_EQ(viewer.stops, 1);
}

TEST(DisplayStream, StopFromInsideTheHandlerIsFine) {
    const XServer server;
    Viewer viewer(server, 640, 480);
    viewer.onEachFrame = [&] { viewer.stop(); };
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.stops > 0; }));
    support::serveWhatIsThere();
    EXPECT_EQ(viewer.frames, 1);
}

TEST(DisplayStream, ExceptionOutOfTheHandlerLeavesTheStreamAlive) {
    const XServer server;
    Viewer viewer(server, 640, 480);
    viewer.onEachFrame = [] { throw 1; };
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames == 1; }));
    Painter painter(server.display());
    painter.fill(0, 0, 10, 10, red);
    painter.sync();
    EXPECT_TRUE(serveMainLoopUntil([&] { return viewer.frames == 2; }));
}

TEST(DisplayStream, StartAndStopAgainLeavesNothingBehind) {
    const XServer server;
    Viewer viewer(server, 640, 480);
    std::size_t before = 0;
    for (int i = 0; i < 20; ++i) {
        const int frames = viewer.frames;
        ASSERT_EQ(viewer.start(), kCGErrorSuccess);
        ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > frames; }));
        viewer.stop();
        if (i == 0)
            before = openDescriptors();
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(DisplayStream, EveryDescriptorIsCloseOnExec) {
    const XServer server;
    const auto isInheritable = [](int fd) {
        const int flags = fcntl(fd, F_GETFD);
        return flags != -1 && (flags & FD_CLOEXEC) == 0;
    };
    std::vector<int> before;
    for (int fd = 0; fd < 1000; ++fd) {
        if (fcntl(fd, F_GETFD) != -1)
            before.push_back(fd);
    }
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > 0; }));
    EXPECT_GT(openDescriptors(), before.size());
    for (int fd = 0; fd < 1000; ++fd) {
        const bool isOurs = std::ranges::find(before, fd) == before.end();
        EXPECT_FALSE(isOurs && isInheritable(fd)) << fd;
    }
}

TEST(DisplayStream, NothingIsCalledWhileNothingChanges) {
    const XServer server;
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > 0; }));
    support::serveWhatIsThere();
    const int frames = viewer.frames;
    Painter painter(server.display());
    painter.sync();
    support::serveWhatIsThere();
    EXPECT_EQ(viewer.frames, frames);
}

TEST(DisplayStream, HeldSurfacesAreNeverWrittenAndDamageIsDrained) {
    const XServer server;
    Viewer viewer(server, 640, 480);
    viewer.holdsEveryFrame = true; // the pool runs dry
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    Painter painter(server.display());
    for (int i = 0; i < 3; ++i) {
        painter.fill(i * 10, 0, 10, 10, red);
        painter.sync();
        ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames == i + 1; }));
    }
    const Picture before = viewer.picture;
    for (int i = 0; i < 50; ++i) {
        painter.fill(0, 100, 640, 300, i % 2 == 0 ? red : blue);
        painter.sync();
        support::serveWhatIsThere();
    }
    EXPECT_EQ(viewer.frames, 3);
    EXPECT_EQ(viewer.picture, before);
}

TEST(DisplayStream, SurfaceThatIsGivenBackShowsWhatItMissed) {
    const XServer server;
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    Painter painter(server.display());
    for (int i = 0; i < 12; ++i) {
        painter.fill(i * 40, i * 30, 35, 25, i % 2 == 0 ? red : blue);
        painter.sync();
        const int frames = viewer.frames;
        ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > frames; }));
    }
    EXPECT_TRUE(viewer.follows(server));
}

TEST(DisplayStream, TwoStreamsOfOneDisplayBothSeeEverything) {
    const XServer server;
    Viewer first(server, 640, 480);
    Viewer second(server, 640, 480);
    ASSERT_EQ(first.start(), kCGErrorSuccess);
    ASSERT_EQ(second.start(), kCGErrorSuccess);
    Painter painter(server.display());
    paintALot(painter, 640, 480, 9);
    EXPECT_TRUE(first.follows(server));
    EXPECT_TRUE(second.follows(server));
}

TEST(DisplayStream, QueueServesTheHandlerOnItsOwnThread) {
    const XServer server;
    std::atomic<bool> isOther = false;
    const auto mainThread = std::this_thread::get_id();
    Viewer viewer(server, 640, 480, true);
    viewer.onEachFrame = [&] { isOther = std::this_thread::get_id() != mainThread; };
    EXPECT_EQ(CGDisplayStreamGetRunLoopSource(viewer.stream), nullptr);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > 0; }));
    EXPECT_TRUE(isOther);
    EXPECT_EQ(viewer.stop(), kCGErrorSuccess);
    EXPECT_EQ(viewer.stops, 1);
}

TEST(DisplayStream, ManyScatteredRectanglesAreToldAsFew) {
    const XServer server({.width = 1280, .height = 720});
    Viewer viewer(server, 1280, 720);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    std::mt19937 random(3);
    std::vector<xcb_rectangle_t> rects;
    rects.reserve(20000);
    for (int i = 0; i < 20000; ++i)
        rects.push_back({static_cast<std::int16_t>(random() % 1280),
                         static_cast<std::int16_t>(random() % 720), 8, 8});
    Painter painter(server.display());
    painter.fillAll(red, rects);
    painter.sync();
    EXPECT_TRUE(viewer.follows(server));
    EXPECT_LE(viewer.mostRects, 64U);
}

TEST(DisplayStream, CheckerboardIsShownRight) {
    const XServer server;
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    std::vector<xcb_rectangle_t> rects;
    for (std::int16_t y = 0; y < 480; y += 2) {
        for (auto x = static_cast<std::int16_t>(y % 4); x < 640; x += 4)
            rects.push_back({x, y, 2, 2});
    }
    Painter painter(server.display());
    painter.fillAll(blue, rects);
    painter.sync();
    EXPECT_TRUE(viewer.follows(server));
}

TEST(DisplayStream, DamageBeyondTheScreenIsClipped) {
    const XServer server;
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    Painter painter(server.display());
    painter.fill(600, 450, 30000, 30000, red);
    painter.fill(-100, -100, 120, 130, blue);
    painter.sync();
    EXPECT_TRUE(viewer.follows(server));
}

class Resizing : public testing::TestWithParam<Server> {};

TEST_P(Resizing, StreamGoesOnAtItsOwnSizeAndWhatIsGoneIsBlack) {
    const XServer server(GetParam().options);
    Painter painter(server.display());
    painter.fill(0, 0, 640, 480, red);
    painter.sync();
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(viewer.follows(server));
    ScreenSetup setup(server.display());
    setup.resize(400, 300);
    const auto isGone = [&] {
        return viewer.picture.at(399, 299) != 0xff000000 &&
               viewer.picture.at(400, 299) == 0xff000000 &&
               viewer.picture.at(399, 300) == 0xff000000 &&
               viewer.picture.at(639, 479) == 0xff000000;
    };
    painter.fill(0, 0, 400, 300, blue);
    painter.sync();
    EXPECT_TRUE(serveMainLoopUntil(isGone));
    setup.resize(640, 480);
    painter.fill(0, 0, 640, 480, red);
    painter.sync();
    EXPECT_TRUE(viewer.follows(server));
    EXPECT_EQ(viewer.stops, 0);
}

INSTANTIATE_TEST_SUITE_P(Servers, Resizing,
                         testing::Values(Server{"Everything", {}},
                                         Server{"WithoutShm", {.withoutExtensions = {"MIT-SHM"}}},
                                         Server{"WithoutRender", {.withoutExtensions = {"RENDER"}}},
                                         Server{"WithoutDamage",
                                                {.withoutExtensions = {"DAMAGE"}}}),
                         [](const auto& row) { return row.param.name; });

TEST(DisplayStream, DisplayThatIsTurnedOffIsBlackUntilItIsBack) {
    const XServer server;
    Painter painter(server.display());
    painter.fill(0, 0, 640, 480, red);
    painter.sync();
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(viewer.follows(server));
    ScreenSetup setup(server.display());
    setup.turnOutputOff();
    const Picture black(640, 480, 0xff000000);
    EXPECT_TRUE(serveMainLoopUntil([&] { return viewer.picture == black; }));
    setup.resize(640, 480);
    painter.fill(0, 0, 640, 480, blue);
    painter.sync();
    EXPECT_TRUE(viewer.follows(server));
}

class EndOfServer : public testing::TestWithParam<int> {};

std::atomic<int> pipeSignals = 0;

TEST_P(EndOfServer, IsNoticedOnceWithoutASignal) {
    std::signal(SIGPIPE, [](int) { ++pipeSignals; });
    XServer server;
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > 0; }));
    if (GetParam() == SIGTERM)
        server.terminate();
    else
        server.kill();
    EXPECT_TRUE(serveMainLoopUntil([&] { return viewer.stops > 0; }));
    support::serveWhatIsThere();
    EXPECT_EQ(viewer.stop(), kCGErrorSuccess);
    EXPECT_EQ(viewer.stops, 1);
    EXPECT_EQ(pipeSignals, 0);
    EXPECT_NE(viewer.start(), kCGErrorSuccess);
}

INSTANTIATE_TEST_SUITE_P(Signals, EndOfServer, testing::Values(SIGTERM, SIGKILL));

TEST(DisplayStream, PausedServerHoldsUpNothing) {
    XServer server;
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > 0; }));
    Painter painter(server.display());
    painter.fill(0, 0, 100, 100, red);
    painter.flush();
    server.pause();
    // The loop must stay free to do other things; a wait for the server would last for ever.
    support::serveWhatIsThere();
    int idleTurns = 0;
    g_idle_add(
        [](gpointer turns) -> gboolean {
            return ++*static_cast<int*>(turns) < 100 ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
        },
        &idleTurns);
    EXPECT_TRUE(serveMainLoopUntil([&] { return idleTurns == 100; }));
    server.resume();
    EXPECT_TRUE(viewer.follows(server));
    EXPECT_EQ(viewer.stops, 0);
}

TEST(DisplayStream, StopWhileTheServerIsPausedReturns) {
    XServer server;
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > 0; }));
    server.pause();
    EXPECT_EQ(viewer.stop(), kCGErrorSuccess);
    EXPECT_EQ(viewer.stops, 1);
    server.resume();
}

TEST(DisplayStream, HostThatStaysInACallbackHoldsUpNobody) {
    const XServer server;
    Painter painter(server.display());
    Viewer viewer(server, 640, 480);
    bool isDrained = true;
    viewer.onEachFrame = [&] {
        if (viewer.frames != 2)
            return;
        // Ten times as much as the server would collect in one go; with nobody to take it away,
        // each rectangle would cost more than the one before.
        std::mt19937 random(1);
        for (int i = 0; i < 20; ++i) {
            std::vector<xcb_rectangle_t> rects;
            rects.reserve(1000);
            for (int j = 0; j < 1000; ++j)
                rects.push_back({static_cast<std::int16_t>(random() % 640),
                                 static_cast<std::int16_t>(random() % 480), 3, 3});
            painter.fillAll(red, rects);
            isDrained = isDrained && painter.sync();
        }
    };
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames == 1; }));
    painter.fill(0, 0, 10, 10, blue);
    painter.sync();
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames >= 2; }));
    EXPECT_TRUE(isDrained);
    EXPECT_TRUE(viewer.follows(server));
}

TEST(DisplayStream, SharedMemoryIsNobodyElses) {
    const XServer server;
    Viewer viewer(server, 640, 480);
    ASSERT_EQ(viewer.start(), kCGErrorSuccess);
    ASSERT_TRUE(serveMainLoopUntil([&] { return viewer.frames > 0; }));
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry.path(), gone).string();
        EXPECT_EQ(target.find("/dev/shm"), std::string::npos) << target;
    }
}

} // namespace
