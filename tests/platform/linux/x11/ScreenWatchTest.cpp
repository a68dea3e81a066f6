#include "platform/linux/x11/ScreenWatch.h"

#include "support/LogCapture.h"
#include "support/MainLoop.h"
#include "support/Painter.h"
#include "support/Picture.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace platform::x11 {
namespace {

using support::Picture;
using support::serveMainLoopUntil;
using support::serveWhatIsThere;

constexpr int width = 200;
constexpr int height = 150;
constexpr PixelRect whole{0, 0, width, height};

/// Notes what it is told, and keeps the newest picture.
class Sink final : public FrameSink {
public:
    void onFrame(Surface& surface, const FrameChange& change) override {
        ++frames;
        lastDirty = change.dirty;
        lastSurface = Ref<Surface>::share(&surface);
        std::memcpy(picture.pixels.data(), surface.pixels(), surface.sizeBytes());
        if (onEach)
            onEach();
    }
    void onEnd() override { ++ends; }

    int frames = 0;
    int ends = 0;
    std::vector<PixelRect> lastDirty;
    Ref<Surface> lastSurface;
    Picture picture{width, height};
    std::function<void()> onEach;
};

class ScreenWatchTest : public testing::Test {
protected:
    static support::XServerOptions screen(int depth = 24,
                                          const std::vector<std::string>& lacks = {}) {
        return {.width = width, .height = height, .depth = depth, .withoutExtensions = lacks};
    }

    static std::unique_ptr<ScreenWatch> open(const support::XServer& server, Sink& sink,
                                             int frames = 3) {
        auto connection = Connection::open(server.display().c_str());
        if (connection == nullptr)
            return nullptr;
        return ScreenWatch::open(std::move(connection), {0, whole, width, height, frames, 1000},
                                 sink);
    }

    /// A watch that has handed its first frame on; null if it does not.
    std::unique_ptr<ScreenWatch> startedOn(const support::XServer& server, int frames = 3) {
        auto watch = open(server, sink, frames);
        if (watch == nullptr)
            return nullptr;
        watch->attach(nullptr);
        return serveMainLoopUntil([this] { return sink.frames > 0; }) ? std::move(watch) : nullptr;
    }

    Sink sink;
};

TEST_F(ScreenWatchTest, HandsTheWholeScreenOnAtFirst) {
    const support::XServer server(screen());
    const auto watch = open(server, sink);
    ASSERT_NE(watch, nullptr);
    serveWhatIsThere();
    EXPECT_EQ(sink.frames, 0); // nobody serves it yet
    watch->attach(nullptr);
    ASSERT_TRUE(serveMainLoopUntil([this] { return sink.frames > 0; }));
    EXPECT_EQ(sink.lastDirty, std::vector<PixelRect>{whole});
    EXPECT_EQ(sink.picture, server.frameBuffer());
}

TEST_F(ScreenWatchTest, TellsWhatChangedWithItsPixels) {
    const support::XServer server(screen());
    support::Painter painter(server.display());
    const auto watch = startedOn(server);
    ASSERT_NE(watch, nullptr);
    for (int i = 0; i < 10; ++i) {
        const int before = sink.frames;
        painter.fill(5 + i, 7, 20, 10, 0x102030U * static_cast<unsigned>(i + 1));
        ASSERT_TRUE(painter.sync());
        ASSERT_TRUE(serveMainLoopUntil([&] { return sink.frames > before; }));
        EXPECT_EQ(sink.lastDirty, (std::vector<PixelRect>{PixelRect::ofSize(5 + i, 7, 20, 10)}));
        EXPECT_EQ(sink.picture, server.frameBuffer());
    }
}

TEST_F(ScreenWatchTest, NeverWritesASurfaceThatSomebodyUses) {
    const support::XServer server(screen());
    support::Painter painter(server.display());
    const auto watch = startedOn(server, 2);
    ASSERT_NE(watch, nullptr);
    const Ref<Surface> held = sink.lastSurface;
    held->incrementUseCount();
    const Picture before = sink.picture;
    for (unsigned i = 0; i < 5; ++i) {
        const int frames = sink.frames;
        painter.fill(0, 0, width, height, 0x203040U * (i + 1));
        ASSERT_TRUE(painter.sync());
        ASSERT_TRUE(serveMainLoopUntil([&] { return sink.frames > frames; }));
        EXPECT_NE(sink.lastSurface.get(), held.get());
    }
    EXPECT_EQ(std::memcmp(held->pixels(), before.pixels.data(), held->sizeBytes()), 0);
    held->decrementUseCount();
}

TEST_F(ScreenWatchTest, WaitsForASurfaceWhenAllAreInUse) {
    const support::XServer server(screen());
    support::Painter painter(server.display());
    const auto watch = open(server, sink, 2);
    ASSERT_NE(watch, nullptr);
    std::vector<Ref<Surface>> held;
    sink.onEach = [&] {
        sink.lastSurface->incrementUseCount();
        held.push_back(sink.lastSurface);
    };
    watch->attach(nullptr);
    ASSERT_TRUE(serveMainLoopUntil([this] { return sink.frames > 0; }));
    painter.fill(0, 0, 10, 10, 0x445566);
    ASSERT_TRUE(painter.sync());
    ASSERT_TRUE(serveMainLoopUntil([this] { return sink.frames > 1; }));
    painter.fill(10, 10, 10, 10, 0x665544);
    ASSERT_TRUE(painter.sync());
    for (int i = 0; i < 50; ++i) {
        serveWhatIsThere();
        g_usleep(1000);
    }
    EXPECT_EQ(sink.frames, 2);
    held.front()->decrementUseCount();
    ASSERT_TRUE(serveMainLoopUntil([this] { return sink.frames > 2; }));
    EXPECT_EQ(sink.picture, server.frameBuffer());
}

TEST_F(ScreenWatchTest, SaysOnceThatTheServerIsGone) {
    support::XServer server(screen());
    const support::LogCapture log("ScreenWatch");
    const auto watch = startedOn(server);
    ASSERT_NE(watch, nullptr);
    server.kill();
    ASSERT_TRUE(serveMainLoopUntil([this] { return sink.ends > 0; }));
    serveWhatIsThere();
    EXPECT_EQ(sink.ends, 1);
    EXPECT_TRUE(log.has("The X server is gone; the stream ends"));
}

TEST_F(ScreenWatchTest, IsSilentOnceDetached) {
    const support::XServer server(screen());
    support::Painter painter(server.display());
    const auto watch = startedOn(server);
    ASSERT_NE(watch, nullptr);
    watch->detach();
    const int before = sink.frames;
    painter.fill(0, 0, 10, 10, 0x445566);
    ASSERT_TRUE(painter.sync());
    serveWhatIsThere();
    EXPECT_EQ(sink.frames, before);
}

TEST_F(ScreenWatchTest, MayBeDeletedWhileItHandsAFrameOn) {
    const support::XServer server(screen());
    auto watch = open(server, sink);
    ASSERT_NE(watch, nullptr);
    sink.onEach = [&] { watch.reset(); };
    watch->attach(nullptr);
    ASSERT_TRUE(serveMainLoopUntil([this] { return sink.frames > 0; }));
    serveWhatIsThere();
    EXPECT_EQ(watch, nullptr);
    EXPECT_EQ(sink.frames, 1);
    EXPECT_EQ(sink.ends, 0);
}

TEST_F(ScreenWatchTest, ReadsAtIntervalsWhereNoDamageIsReported) {
    const support::XServer server(screen(24, {"DAMAGE"}));
    support::Painter painter(server.display());
    const support::LogCapture log("ScreenWatch");
    const auto watch = open(server, sink);
    ASSERT_NE(watch, nullptr);
    EXPECT_TRUE(log.has("No damage is reported: the whole screen is read 10 times a second"));
    watch->attach(nullptr);
    ASSERT_TRUE(serveMainLoopUntil([this] { return sink.frames > 0; }));
    painter.fill(30, 40, 16, 16, 0x445566);
    ASSERT_TRUE(painter.sync());
    ASSERT_TRUE(serveMainLoopUntil([&] { return sink.picture == server.frameBuffer(); }));
    PixelRect told;
    for (const PixelRect& rect : sink.lastDirty)
        told = told.boundingWith(rect);
    EXPECT_EQ(told, PixelRect::ofSize(30, 40, 16, 16));
}

/// A host that copies what it is told, and nothing else, has the frame: also where it was drawn
/// while the frame was read.
class DrawnMeanwhile : public ScreenWatchTest,
                       public testing::WithParamInterface<std::vector<std::string>> {};

TEST_P(DrawnMeanwhile, TheFrameHoldsNothingThatIsNotTold) {
    const support::XServer server(screen(24, GetParam()));
    support::Painter painter(server.display());
    const auto watch = open(server, sink);
    ASSERT_NE(watch, nullptr);
    Picture copied(width, height);
    sink.onEach = [&] {
        for (const PixelRect& rect : sink.lastDirty) {
            for (int y = rect.top; y < rect.bottom; ++y) {
                for (int x = rect.left; x < rect.right; ++x)
                    copied.at(x, y) = sink.picture.at(x, y);
            }
        }
        ASSERT_EQ(copied, sink.picture) << "frame " << sink.frames;
    };
    watch->attach(nullptr);
    std::mt19937 random(3);
    const auto upTo = [&](unsigned last) { return static_cast<int>(random() % (last + 1)); };
    for (int i = 0; i < 1000 && !HasFatalFailure(); ++i) {
        painter.fill(40 * upTo(4), 30 * upTo(4), 20, 20, random() & 0xffffff);
        ASSERT_TRUE(painter.sync());
        g_main_context_iteration(nullptr, FALSE);
    }
    ASSERT_TRUE(serveMainLoopUntil([&] { return sink.picture == server.frameBuffer(); }));
    EXPECT_GT(sink.frames, 1);
}

INSTANTIATE_TEST_SUITE_P(Servers, DrawnMeanwhile,
                         testing::Values(std::vector<std::string>{},
                                         std::vector<std::string>{"RENDER"},
                                         std::vector<std::string>{"MIT-SHM"},
                                         std::vector<std::string>{"DAMAGE"}),
                         [](const auto& row) {
                             const auto& lacks = row.param;
                             std::string name = lacks.empty() ? "Full" : "Without" + lacks.front();
                             std::erase(name, '-');
                             return name;
                         });

TEST_F(ScreenWatchTest, RefusesAPalette) {
    const support::XServer server(screen(8));
    const support::LogCapture log("ScreenWatch");
    EXPECT_EQ(open(server, sink), nullptr);
    EXPECT_TRUE(
        log.has("The screen's colours (depth 8) are not made of red, green and blue parts"));
}

} // namespace
} // namespace platform::x11
