#pragma once

#include "platform/linux/x11/FrameReader.h"
#include "platform/linux/x11/RoundTrip.h"
#include "support/Painter.h"
#include "support/Picture.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace platform::x11 {

/// Makes a reader of the kind under test. Errors: null.
using OpenReader =
    std::function<std::unique_ptr<FrameReader>(Connection&, const FrameReader::Setup&)>;

/// A screen with something on it, and a reader whose first frame is read again and again.
class ScreenReading {
public:
    static constexpr int width = 300;
    static constexpr int height = 200;
    static constexpr PixelRect whole{0, 0, width, height};

    /// The reader's frames are of that size and lie anywhere; null when it cannot be had.
    ScreenReading(const support::XServerOptions& options, const OpenReader& open,
                  const PixelRect& frame = whole)
        : server(options), painter(server.display()),
          connection(Connection::open(server.display().c_str())), size(frame) {
        if (connection != nullptr)
            reader = open(*connection, {frame.width(), frame.height(), 2, nullptr});
        painter.hidePointer();
        draw(1);
    }

    static support::XServerOptions screenOfDepth(int depth) {
        support::XServerOptions options;
        options.width = width;
        options.height = height;
        options.depth = depth;
        return options;
    }

    /// Many small areas of many colours, on the root and in a window.
    void draw(unsigned seed) {
        std::mt19937 random(seed);
        const auto upTo = [&](int last) { return static_cast<int>(random() % (last + 1)); };
        if (window == 0)
            window = painter.createWindow(100, 50, 90, 80, 0x224466);
        for (int i = 0; i < 200; ++i)
            painter.fill(upTo(width), upTo(height), 1 + upTo(30), 1 + upTo(30),
                         static_cast<std::uint32_t>(random()) & 0xffffff, i % 4 == 0 ? window : 0);
        EXPECT_TRUE(painter.sync());
    }

    /// Where the frame lies on the screen.
    Viewport viewport() const {
        Viewport view;
        view.x = size.left;
        view.y = size.top;
        view.visible = view.toFrame(whole.intersection(size));
        if (view.visible.isEmpty())
            view.visible = {};
        return view;
    }

    /// Reads this area, in coordinates of the frame, and what the region holds.
    FrameReader::Progress read(std::vector<PixelRect> area, xcb_xfixes_region_t region = 0) {
        reader->send(frame(), viewport(), area, region);
        roundTrip(*connection); // what was asked before is answered now
        return reader->poll();
    }

    Frame& frame() { return reader->frames().front(); }
    PixelRect wholeFrame() const { return PixelRect::ofSize(0, 0, size.width(), size.height()); }

    support::Picture picture() {
        support::Picture shown(size.width(), size.height());
        std::memcpy(shown.pixels.data(), frame().surface->pixels(), shown.pixels.size() * 4);
        return shown;
    }

    /// What the server itself shows where the frame lies; opaque black where there is no screen.
    support::Picture expected() const {
        const support::Picture screen = server.frameBuffer();
        support::Picture part(size.width(), size.height(), 0xff000000);
        for (int y = 0; y < part.height; ++y) {
            for (int x = 0; x < part.width; ++x) {
                if (whole.contains(x + size.left, y + size.top))
                    part.at(x, y) = screen.at(x + size.left, y + size.top);
            }
        }
        return part;
    }

    support::XServer server;
    support::Painter painter;
    std::unique_ptr<Connection> connection;
    std::unique_ptr<FrameReader> reader;

private:
    PixelRect size;
    xcb_window_t window = 0;
};

/// One way of reading on one kind of screen.
struct ReaderRow {
    const char* name;
    OpenReader open;
    support::XServerOptions options;
    friend void PrintTo(const ReaderRow& row, std::ostream* out) { *out << row.name; }
};

/// What every way of reading has to do; the server's own frame buffer says what is right.
class ReadsTheScreen : public testing::TestWithParam<ReaderRow> {
protected:
    static ScreenReading screenUnder(const PixelRect& frame = ScreenReading::whole) {
        return {GetParam().options, GetParam().open, frame};
    }
};

TEST_P(ReadsTheScreen, WholeFrameIsWhatTheServerShows) {
    ScreenReading screen = screenUnder();
    ASSERT_NE(screen.reader, nullptr);
    EXPECT_EQ(screen.read({screen.wholeFrame()}), FrameReader::Progress::Done);
    EXPECT_EQ(screen.picture(), screen.expected());
}

TEST_P(ReadsTheScreen, NothingElseIsReadThanWhatWasAskedFor) {
    ScreenReading screen = screenUnder();
    ASSERT_NE(screen.reader, nullptr);
    ASSERT_EQ(screen.read({screen.wholeFrame()}), FrameReader::Progress::Done);
    const support::Picture before = screen.expected();
    screen.draw(2);
    const support::Picture after = screen.expected();
    ASSERT_NE(before, after);
    const std::vector<PixelRect> area{{10, 20, 60, 90}, {50, 40, 150, 70}, {299, 199, 300, 200}};
    EXPECT_EQ(screen.read(area), FrameReader::Progress::Done);
    support::Picture expected = before;
    for (const PixelRect& rect : area) {
        for (int y = rect.top; y < rect.bottom; ++y) {
            for (int x = rect.left; x < rect.right; ++x)
                expected.at(x, y) = after.at(x, y);
        }
    }
    EXPECT_EQ(screen.picture(), expected);
}

TEST_P(ReadsTheScreen, FrameLiesAnywhereOnTheScreen) {
    ScreenReading screen = screenUnder({40, 30, 141, 120});
    ASSERT_NE(screen.reader, nullptr);
    EXPECT_EQ(screen.read({screen.wholeFrame()}), FrameReader::Progress::Done);
    EXPECT_EQ(screen.picture(), screen.expected());
}

TEST_P(ReadsTheScreen, FrameIsBlackWhereThereIsNoScreen) {
    ScreenReading screen = screenUnder({200, 150, 400, 300});
    ASSERT_NE(screen.reader, nullptr);
    EXPECT_EQ(screen.read({screen.wholeFrame()}), FrameReader::Progress::Done);
    EXPECT_EQ(screen.picture(), screen.expected());
}

TEST_P(ReadsTheScreen, FrameOfADisplayThatIsGoneIsBlack) {
    ScreenReading screen = screenUnder({1000, 1000, 1040, 1030});
    ASSERT_NE(screen.reader, nullptr);
    EXPECT_EQ(screen.read({screen.wholeFrame()}), FrameReader::Progress::Done);
    EXPECT_EQ(screen.picture(), support::Picture(40, 30, 0xff000000));
}

TEST_P(ReadsTheScreen, EachFrameMissesTheWholeScreenAtFirst) {
    ScreenReading screen = screenUnder();
    ASSERT_NE(screen.reader, nullptr);
    ASSERT_EQ(screen.reader->frames().size(), 2U);
    for (Frame& frame : screen.reader->frames())
        EXPECT_EQ(frame.missed.rectangles(), std::vector<PixelRect>{screen.wholeFrame()});
}

} // namespace platform::x11
