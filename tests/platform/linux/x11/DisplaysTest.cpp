#include "platform/linux/x11/QueryConnection.h"

#include "support/LogCapture.h"
#include "support/Painter.h"
#include "support/ScreenSetup.h"
#include "support/XServer.h"

#include <CoreGraphics/CoreGraphics.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using support::LogCapture;
using support::Painter;
using support::ScreenSetup;
using support::XServer;

/// Points DISPLAY at a server for the length of a scope.
class DisplayVariable {
public:
    explicit DisplayVariable(const std::string& name) { setenv("DISPLAY", name.c_str(), 1); }
    DisplayVariable(const DisplayVariable&) = delete;
    DisplayVariable& operator=(const DisplayVariable&) = delete;
    ~DisplayVariable() { unsetenv("DISPLAY"); }
};

class Displays : public testing::Test {
protected:
    void TearDown() override { unsetenv("GDK_SCALE"); }

    XServer server{{.width = 300, .height = 200}};
    DisplayVariable variable{server.display()};
};

void expectRect(const CGRect& rect, CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    EXPECT_EQ(rect.origin.x, x);
    EXPECT_EQ(rect.origin.y, y);
    EXPECT_EQ(rect.size.width, width);
    EXPECT_EQ(rect.size.height, height);
}

std::vector<CGDirectDisplayID> activeDisplays(uint32_t room = 16) {
    std::vector<CGDirectDisplayID> displays(16);
    uint32_t count = 99;
    EXPECT_EQ(CGGetActiveDisplayList(room, displays.data(), &count), kCGErrorSuccess);
    displays.resize(count);
    return displays;
}

/// The pixels of an image, which is released; empty for null.
std::vector<std::uint32_t> pixelsOf(CGImageRef image) {
    if (image == nullptr)
        return {};
    CFDataRef data = CGDataProviderCopyData(CGImageGetDataProvider(image));
    EXPECT_EQ(static_cast<std::size_t>(CFDataGetLength(data)),
              CGImageGetBytesPerRow(image) * CGImageGetHeight(image));
    std::vector<std::uint32_t> pixels(CGImageGetWidth(image) * CGImageGetHeight(image));
    std::memcpy(pixels.data(), CFDataGetBytePtr(data), pixels.size() * 4);
    CFRelease(data);
    CGImageRelease(image);
    return pixels;
}

TEST_F(Displays, AreNamedByTheirOutput) {
    ScreenSetup setup(server.display());
    EXPECT_EQ(CGMainDisplayID(), setup.firstOutput());
    EXPECT_EQ(activeDisplays(), (std::vector<CGDirectDisplayID>{setup.firstOutput()}));
}

TEST_F(Displays, HaveBoundsInPoints) {
    expectRect(CGDisplayBounds(CGMainDisplayID()), 0, 0, 300, 200);
    expectRect(CGDisplayBounds(kCGNullDirectDisplay), 0, 0, 300, 200);
    setenv("GDK_SCALE", "2", 1);
    expectRect(CGDisplayBounds(CGMainDisplayID()), 0, 0, 150, 100);
    setenv("GDK_SCALE", "3", 1);
    EXPECT_EQ(CGDisplayBounds(CGMainDisplayID()).size.width, 100);
    EXPECT_DOUBLE_EQ(CGDisplayBounds(CGMainDisplayID()).size.height, 200 / 3.0);
}

TEST_F(Displays, HaveEmptyBoundsWhenUnknown) {
    expectRect(CGDisplayBounds(12345), 0, 0, 0, 0);
}

TEST_F(Displays, AreListedWithThePrimaryOneFirst) {
    ScreenSetup setup(server.display());
    setup.setMonitor("Left", 0, 0, 100, 200);
    setup.setMonitor("Right", 100, 0, 200, 150, true, true);
    const CGDirectDisplayID left = 0x80000000U | setup.atomOf("Left");
    const CGDirectDisplayID right = setup.firstOutput();
    EXPECT_EQ(activeDisplays(), (std::vector<CGDirectDisplayID>{right, left}));
    EXPECT_EQ(activeDisplays(1), (std::vector<CGDirectDisplayID>{right}));
    EXPECT_TRUE(activeDisplays(0).empty());
    EXPECT_EQ(CGMainDisplayID(), right);
    expectRect(CGDisplayBounds(left), 0, 0, 100, 200);
    expectRect(CGDisplayBounds(right), 100, 0, 200, 150);
    expectRect(CGDisplayBounds(kCGNullDirectDisplay), 100, 0, 200, 150);
}

TEST_F(Displays, AreCountedWithoutAnArray) {
    uint32_t count = 0;
    EXPECT_EQ(CGGetActiveDisplayList(0, nullptr, &count), kCGErrorSuccess);
    EXPECT_EQ(count, 1U);
    CGDirectDisplayID display = 0;
    EXPECT_EQ(CGGetActiveDisplayList(1, &display, nullptr), kCGErrorIllegalArgument);
}

TEST_F(Displays, AreNoneWhileTheOutputIsOff) {
    const CGDirectDisplayID display = CGMainDisplayID();
    ScreenSetup(server.display()).turnOutputOff();
    EXPECT_EQ(CGMainDisplayID(), kCGNullDirectDisplay);
    EXPECT_TRUE(activeDisplays().empty());
    expectRect(CGDisplayBounds(display), 0, 0, 0, 0);
    EXPECT_EQ(CGDisplayCreateImageForRect(display, CGRectMake(0, 0, 1, 1)), nullptr);
}

TEST_F(Displays, FollowTheScreensSize) {
    ScreenSetup setup(server.display());
    setup.resize(160, 120);
    expectRect(CGDisplayBounds(0), 0, 0, 160, 120);
    setup.resize(300, 200);
    expectRect(CGDisplayBounds(0), 0, 0, 300, 200);
}

TEST_F(Displays, GiveAPictureOfAPart) {
    Painter painter(server.display());
    painter.fill(0, 0, 300, 200, 0x112233);
    painter.fill(20, 30, 2, 1, 0xa1b2c3);
    ASSERT_TRUE(painter.sync());
    EXPECT_EQ(pixelsOf(CGDisplayCreateImageForRect(0, CGRectMake(20, 29, 2, 2))),
              (std::vector<std::uint32_t>{0xff112233, 0xff112233, 0xffa1b2c3, 0xffa1b2c3}));
}

TEST_F(Displays, GiveAPictureOfTheirWhole) {
    Painter painter(server.display());
    painter.fill(0, 0, 300, 200, 0x112233);
    painter.text(5, 50, "some text", 0xffffff, 0x000000);
    painter.createWindow(50, 60, 30, 20, 0x00ff00);
    ASSERT_TRUE(painter.sync());
    CGImageRef image = CGDisplayCreateImageForRect(CGMainDisplayID(), CGDisplayBounds(0));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(CGImageGetWidth(image), 300U);
    EXPECT_EQ(CGImageGetHeight(image), 200U);
    EXPECT_EQ(pixelsOf(image), server.frameBuffer().pixels);
}

TEST_F(Displays, GiveAPictureFromTheirOwnCorner) {
    ScreenSetup setup(server.display());
    setup.setMonitor("Part", 100, 50, 100, 100, true);
    Painter painter(server.display());
    painter.fill(0, 0, 300, 200, 0x000000);
    painter.fill(100, 50, 1, 1, 0xff0000);
    ASSERT_TRUE(painter.sync());
    EXPECT_EQ(pixelsOf(CGDisplayCreateImageForRect(CGMainDisplayID(), CGRectMake(0, 0, 2, 1))),
              (std::vector<std::uint32_t>{0xffff0000, 0xff000000}));
}

TEST_F(Displays, ShowTheirScaleInAPictureOfOnePoint) {
    for (const int scale : {1, 2, 4}) {
        setenv("GDK_SCALE", std::to_string(scale).c_str(), 1);
        CGImageRef image = CGDisplayCreateImageForRect(0, CGRectMake(0, 0, 1, 1));
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(CGImageGetWidth(image), static_cast<std::size_t>(scale));
        EXPECT_EQ(CGImageGetHeight(image), static_cast<std::size_t>(scale));
        CGImageRelease(image);
    }
}

struct ClippedArea {
    const char* name;
    CGRect area;
    std::size_t width;
    std::size_t height;
};

class PictureOfArea : public Displays, public testing::WithParamInterface<ClippedArea> {};

TEST_P(PictureOfArea, HoldsEveryPixelThatItTouchesOnTheDisplay) {
    CGImageRef image = CGDisplayCreateImageForRect(0, GetParam().area);
    EXPECT_EQ(CGImageGetWidth(image), GetParam().width);
    EXPECT_EQ(CGImageGetHeight(image), GetParam().height);
    CGImageRelease(image);
}

constexpr CGFloat inf = std::numeric_limits<CGFloat>::infinity();
constexpr CGFloat huge = std::numeric_limits<CGFloat>::max();
const CGFloat nan = std::nan("");

INSTANTIATE_TEST_SUITE_P(
    Areas, PictureOfArea,
    testing::Values(ClippedArea{"LastPixel", CGRectMake(299, 199, 1, 1), 1, 1},
                    ClippedArea{"OnePixelTooWide", CGRectMake(299, 0, 2, 1), 1, 1},
                    ClippedArea{"BeyondTheCorner", CGRectMake(-5, -5, 10, 10), 5, 5},
                    ClippedArea{"Outside", CGRectMake(300, 0, 10, 10), 0, 0},
                    ClippedArea{"FarOutside", CGRectMake(1e9, 1e9, 10, 10), 0, 0},
                    ClippedArea{"Empty", CGRectMake(10, 10, 0, 5), 0, 0},
                    ClippedArea{"Fractions", CGRectMake(0.5, 0.5, 1, 1), 2, 2},
                    ClippedArea{"Tiny", CGRectMake(10.25, 10.25, 0.5, 0.5), 1, 1},
                    ClippedArea{"NegativeSize", CGRectMake(10, 10, -4, -3), 4, 3},
                    ClippedArea{"Huge", CGRectMake(-huge / 2, -huge / 2, huge, huge), 300, 200},
                    ClippedArea{"NullRectangle", CGRectMake(inf, inf, 0, 0), 0, 0},
                    ClippedArea{"InfiniteSize", CGRectMake(0, 0, inf, inf), 300, 200},
                    ClippedArea{"NotANumber", CGRectMake(nan, 0, 5, 5), 0, 0},
                    ClippedArea{"SizeNotANumber", CGRectMake(0, 0, 5, nan), 0, 0}),
    [](const auto& row) { return row.param.name; });

TEST_F(Displays, GiveNoPictureWhenUnknown) {
    EXPECT_EQ(CGDisplayCreateImageForRect(12345, CGRectMake(0, 0, 1, 1)), nullptr);
}

TEST_F(Displays, GiveNoPictureOfWhatTheScreenLacks) {
    ScreenSetup setup(server.display());
    setup.setMonitor("Beyond", 1000, 1000, 100, 100, true);
    EXPECT_EQ(CGDisplayCreateImageForRect(CGMainDisplayID(), CGRectMake(0, 0, 1, 1)), nullptr);
}

TEST_F(Displays, AnswerOnManyThreads) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 20; ++n) {
                EXPECT_EQ(CGDisplayBounds(0).size.width, 300);
                CGImageRelease(CGDisplayCreateImageForRect(0, CGRectMake(0, 0, 10, 10)));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

class DisplaysOfDepth : public testing::TestWithParam<int> {};

TEST_P(DisplaysOfDepth, GiveThePixelsThatTheServerShows) {
    XServer server({.width = 61, .height = 37, .depth = GetParam()});
    const DisplayVariable variable(server.display());
    Painter painter(server.display());
    painter.fill(0, 0, 61, 37, 0x336699);
    painter.fill(3, 3, 20, 20, 0xff8001);
    painter.fill(30, 10, 25, 20, 0xffffff);
    ASSERT_TRUE(painter.sync());
    EXPECT_EQ(pixelsOf(CGDisplayCreateImageForRect(0, CGDisplayBounds(0))),
              server.frameBuffer().pixels);
}

INSTANTIATE_TEST_SUITE_P(Depths, DisplaysOfDepth, testing::Values(15, 16, 24, 30),
                         [](const auto& row) { return "Depth" + std::to_string(row.param); });

TEST(DisplaysOfAColourTable, GiveNoPictureAndSayWhy) {
    XServer server({.width = 61, .height = 37, .depth = 8});
    const DisplayVariable variable(server.display());
    const LogCapture log;
    EXPECT_EQ(CGDisplayCreateImageForRect(0, CGRectMake(0, 0, 1, 1)), nullptr);
    EXPECT_TRUE(log.has("DisplayImage: No picture of a screen of depth 8"));
}

TEST(DisplaysWithoutRandr, AreTheWholeScreen) {
    XServer server({.width = 300, .height = 200, .withoutExtensions = {"RANDR"}});
    const DisplayVariable variable(server.display());
    EXPECT_EQ(CGMainDisplayID(), 1U);
    EXPECT_EQ(activeDisplays(), (std::vector<CGDirectDisplayID>{1}));
    expectRect(CGDisplayBounds(1), 0, 0, 300, 200);
    EXPECT_EQ(pixelsOf(CGDisplayCreateImageForRect(1, CGRectMake(0, 0, 5, 4))).size(), 20U);
}

class DisplaysNowhere : public testing::TestWithParam<const char*> {};

TEST_P(DisplaysNowhere, AreNone) {
    const DisplayVariable variable(GetParam());
    const LogCapture log;
    uint32_t count = 5;
    CGDirectDisplayID display = 7;
    EXPECT_EQ(CGMainDisplayID(), kCGNullDirectDisplay);
    EXPECT_EQ(CGGetActiveDisplayList(1, &display, &count), kCGErrorInvalidConnection);
    EXPECT_EQ(count, 0U);
    expectRect(CGDisplayBounds(0), 0, 0, 0, 0);
    EXPECT_EQ(CGDisplayCreateImageForRect(0, CGRectMake(0, 0, 1, 1)), nullptr);
    EXPECT_FALSE(log.lines().empty());
}

INSTANTIATE_TEST_SUITE_P(Names, DisplaysNowhere, testing::Values("", ":987654", "no name at all"));

TEST(DisplaysOfAnotherServer, AreFoundWhenTheVariableChanges) {
    XServer first({.width = 100, .height = 80});
    XServer second({.width = 200, .height = 90});
    {
        const DisplayVariable variable(first.display());
        EXPECT_EQ(CGDisplayBounds(0).size.width, 100);
    }
    const DisplayVariable variable(second.display());
    EXPECT_EQ(CGDisplayBounds(0).size.width, 200);
}

TEST(DisplaysOfADeadServer, AreNoneUntilThereIsAServerAgain) {
    auto server = std::make_unique<XServer>();
    std::string name = server->display();
    const DisplayVariable variable(name);
    EXPECT_EQ(CGDisplayBounds(0).size.width, 640);
    server->kill();
    EXPECT_EQ(CGDisplayBounds(0).size.width, 0);
    EXPECT_EQ(CGDisplayCreateImageForRect(0, CGRectMake(0, 0, 1, 1)), nullptr);
    server.reset();
    XServer next({.width = 320, .height = 240});
    setenv("DISPLAY", next.display().c_str(), 1);
    EXPECT_EQ(CGDisplayBounds(0).size.width, 320);
}

TEST_F(Displays, AnswerInAForkedChildAndInItsParent) {
    EXPECT_EQ(CGDisplayBounds(0).size.width, 300);
    const pid_t child = fork();
    if (child == 0)
        _exit(CGDisplayBounds(0).size.width == 300 ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(CGDisplayBounds(0).size.width, 300);
}

TEST_F(Displays, KeepOneConnection) {
    const auto descriptors = [] {
        int count = 0;
        for (int fd = 0; fd < 256; ++fd)
            count += fcntl(fd, F_GETFD) != -1 ? 1 : 0;
        return count;
    };
    CGMainDisplayID();
    const int before = descriptors();
    for (int i = 0; i < 50; ++i) {
        CGMainDisplayID();
        CGImageRelease(CGDisplayCreateImageForRect(0, CGRectMake(0, 0, 1, 1)));
    }
    EXPECT_EQ(descriptors(), before);
    const platform::x11::QueryConnection connection;
    EXPECT_NE(fcntl(connection.get()->fd(), F_GETFD) & FD_CLOEXEC, 0);
}

} // namespace
