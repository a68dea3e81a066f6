// A host that watches a real display while somebody draws at random, and grabs at random: in the
// end its picture must equal the server's own frame buffer, and on the way every area that was told
// as moved must show what stood at its source.
//
// LUMO_FIDELITY_OPERATIONS and LUMO_FIDELITY_SEEDS ask for longer runs.

#include "plat/Rect.h"
#include "support/Painter.h"
#include "support/Picture.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"
#include "svr/mac/DisplayStreamClient.h"
#include "svr/mac/DisplayStreamSource.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <thread>

namespace {

using support::Picture;

constexpr int width = 640;
constexpr int height = 480;
constexpr gint64 patienceMicros = 30'000'000;

int numberFrom(const char* variable, int otherwise) {
    const char* text = std::getenv(variable);
    return text != nullptr ? std::atoi(text) : otherwise;
}

/// Keeps a picture of the display as a host would, from nothing but what it is told and handed.
class Host final : public svr::DisplayStreamClient {
public:
    Host() : picture(width, height) {}

    void pixelsGrabbed(const void* pixels, plat::Rect box, int bytesPerPixel,
                       int strideBytes) override {
        ASSERT_EQ(bytesPerPixel, 4);
        ASSERT_TRUE(box.left >= 0 && box.top >= 0 && box.right <= width && box.bottom <= height);
        const auto* bytes = static_cast<const std::uint8_t*>(pixels);
        const auto rowOf = [&](int y) {
            return reinterpret_cast<const std::uint32_t*>(bytes + std::ptrdiff_t{y} * strideBytes);
        };
        checkMoves(rowOf);
        for (int y = box.top; y < box.bottom; ++y) {
            for (int x = box.left; x < box.right; ++x) {
                const std::uint32_t pixel = rowOf(y)[x];
                notOpaque += (pixel >> 24) != 0xff ? 1 : 0;
                picture.at(x, y) = pixel;
            }
        }
        moved.clear();
        ++grabs;
    }

    void rectsChanged(int count, const CGRect* /*rects*/) override {
        EXPECT_GT(count, 0);
        moved.clear(); // what still holds is told again
        hasNews = true;
    }

    void rectsMoved(CGFloat dx, CGFloat dy, int count, const CGRect* rects) override {
        moved.assign(rects, rects + count);
        shiftX = static_cast<int>(dx);
        shiftY = static_cast<int>(dy);
    }

    Picture picture;
    std::vector<CGRect> moved; ///< since the grab before
    int shiftX = 0;
    int shiftY = 0;
    bool hasNews = false;
    int grabs = 0;
    int movesChecked = 0;
    int wrongMoves = 0;
    int notOpaque = 0;

private:
    template <typename Rows>
    void checkMoves(const Rows& rowOf) {
        for (const CGRect& rect : moved) {
            ++movesChecked;
            const int left = static_cast<int>(rect.origin.x);
            const int top = static_cast<int>(rect.origin.y);
            bool isRight = true;
            for (int y = top; y < top + static_cast<int>(rect.size.height); ++y) {
                for (int x = left; x < left + static_cast<int>(rect.size.width); ++x)
                    isRight = isRight && rowOf(y)[x] == picture.at(x + shiftX, y + shiftY);
            }
            wrongMoves += isRight ? 0 : 1;
        }
    }
};

/// Grabs on a thread of its own whenever it is asked to.
class GrabThread {
public:
    explicit GrabThread(svr::DisplayStreamSource& watched)
        : source(watched), thread([this] { run(); }) {}
    ~GrabThread() {
        ask(Wish::End);
        thread.join();
    }

    void grab() { ask(Wish::Grab); }

private:
    enum class Wish { None, Grab, End };

    void ask(Wish what) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return wish == Wish::None; });
        wish = what;
        changed.notify_all();
        changed.wait(lock, [this] { return wish == Wish::None; });
    }

    void run() {
        for (bool isEnding = false; !isEnding;) {
            std::unique_lock lock(mutex);
            changed.wait(lock, [this] { return wish != Wish::None; });
            isEnding = wish == Wish::End;
            if (!isEnding)
                source.grab();
            wish = Wish::None;
            changed.notify_all();
        }
    }

    svr::DisplayStreamSource& source;
    std::mutex mutex;
    std::condition_variable changed;
    Wish wish = Wish::None;
    std::thread thread;
};

/// Draws at random, the same for the same seed.
class Chaos {
public:
    Chaos(const std::string& display, unsigned seed)
        : painter(display), setup(display), random(seed) {}

    int upTo(int last) { return std::uniform_int_distribution<int>(0, last)(random); }

    void draw() {
        const int what = upTo(99);
        if (what < 35)
            painter.fill(upTo(width) - 20, upTo(height) - 20, 1 + upTo(120), 1 + upTo(90),
                         colour());
        else if (what < 45)
            drawText();
        else if (what < 60)
            scroll();
        else if (what < 65)
            openWindow();
        else if (what < 80)
            moveWindow();
        else if (what < 83)
            closeWindow();
        else if (what < 88)
            scatter();
        else if (what < 90)
            painter.fill(0, 0, width, height, colour());
        else if (what < 91)
            resize();
        else
            drawInWindow();
        painter.flush();
    }

    bool finish() {
        setup.resize(width, height);
        for (const xcb_window_t window : windows)
            painter.destroyWindow(window);
        for (int y = 12; y < height; y += 14)
            drawLine(0, y, 105);
        return painter.sync();
    }

    /// Moves the whole screen up by a line.
    bool scrollOnce() {
        painter.copyArea(0, 14, width, height - 14, 0, 0);
        drawLine(0, height - 2, 105);
        return painter.sync();
    }

private:
    std::uint32_t colour() { return static_cast<std::uint32_t>(upTo(0xffffff)); }

    void drawText() { drawLine(upTo(width) - 100, upTo(height), 1 + upTo(60)); }

    void drawLine(int x, int y, int letters) {
        std::string line;
        for (int i = 0; i < letters; ++i)
            line += static_cast<char>(' ' + upTo(94));
        painter.text(x, y, line, colour(), colour());
    }

    void scroll() {
        const int x = upTo(width / 2);
        const int y = upTo(height / 2);
        const int w = 100 + upTo(width / 2);
        const int h = 100 + upTo(height / 2);
        const int dx = upTo(3) == 0 ? upTo(60) - 30 : 0;
        painter.copyArea(x, y, w, h, x + dx, y + upTo(60) - 30);
    }

    void scatter() {
        std::vector<xcb_rectangle_t> rects;
        rects.reserve(200);
        for (int i = 0; i < 200; ++i)
            rects.push_back({static_cast<std::int16_t>(upTo(width)),
                             static_cast<std::int16_t>(upTo(height)), 8, 8});
        painter.fillAll(colour(), rects);
    }

    void openWindow() {
        if (windows.size() < 8)
            windows.push_back(painter.createWindow(upTo(width), upTo(height), 50 + upTo(200),
                                                   50 + upTo(150), colour()));
    }

    xcb_window_t anyWindow() {
        return windows[static_cast<std::size_t>(upTo(static_cast<int>(windows.size()) - 1))];
    }

    void moveWindow() {
        if (!windows.empty())
            painter.moveWindow(anyWindow(), upTo(width) - 40, upTo(height) - 40);
    }

    void drawInWindow() {
        if (!windows.empty())
            painter.fill(upTo(100), upTo(100), 1 + upTo(50), 1 + upTo(50), colour(), anyWindow());
    }

    void closeWindow() {
        if (windows.empty())
            return;
        painter.destroyWindow(windows.back());
        windows.pop_back();
    }

    void resize() {
        painter.sync();
        setup.resize(width - upTo(20) * 8, height - upTo(20) * 8);
    }

    support::Painter painter;
    support::ScreenSetup setup;
    std::mt19937 random;
    std::vector<xcb_window_t> windows;
};

int differences(const Picture& ours, const Picture& theirs) {
    int count = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            count += ours.rgbAt(x, y) != theirs.rgbAt(x, y) ? 1 : 0;
    }
    return count;
}

void serveWhatIsThere() {
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
}

/// Serves the main loop and grabs until the picture is right; gives up after a long time, which
/// only a lost change takes.
int settle(Host& host, svr::DisplayStreamSource& source, const support::XServer& server) {
    const gint64 deadline = g_get_monotonic_time() + patienceMicros;
    int wrong = differences(host.picture, server.frameBuffer());
    while (wrong != 0 && g_get_monotonic_time() < deadline) {
        g_usleep(1000);
        serveWhatIsThere();
        if (std::exchange(host.hasNews, false)) {
            source.grab();
            wrong = differences(host.picture, server.frameBuffer());
        }
    }
    return wrong;
}

class Fidelity : public testing::TestWithParam<int> {};

TEST_P(Fidelity, PictureOfTheHostEqualsTheFrameBuffer) {
    const support::XServer server({.width = width, .height = height});
    setenv("DISPLAY", server.display().c_str(), 1);
    Host host;
    Chaos chaos(server.display(), static_cast<unsigned>(GetParam()));
    const std::unique_ptr<svr::DisplayStreamSource> source(NewDisplayStream(&host, 0));
    ASSERT_TRUE(source->start());
    {
        GrabThread other(*source);
        const int operations = numberFrom("LUMO_FIDELITY_OPERATIONS", 2000);
        for (int i = 0; i < operations; ++i) {
            chaos.draw();
            if (chaos.upTo(2) == 0)
                serveWhatIsThere();
            if (chaos.upTo(9) == 0)
                g_usleep(static_cast<gulong>(chaos.upTo(4000)));
            if (chaos.upTo(5) == 0)
                source->grab();
            else if (chaos.upTo(5) == 0)
                other.grab();
        }
    }
    ASSERT_TRUE(chaos.finish());
    host.hasNews = true;
    ASSERT_EQ(settle(host, *source, server), 0);
    ASSERT_TRUE(chaos.scrollOnce());
    EXPECT_EQ(settle(host, *source, server), 0);
    EXPECT_EQ(host.wrongMoves, 0) << "of " << host.movesChecked;
    EXPECT_EQ(host.notOpaque, 0);
    EXPECT_GT(host.grabs, 10);
    EXPECT_GT(host.movesChecked, 0);
    EXPECT_TRUE(source->stop());
}

INSTANTIATE_TEST_SUITE_P(Seeds, Fidelity,
                         testing::Range(1, 1 + numberFrom("LUMO_FIDELITY_SEEDS", 3)));

} // namespace
