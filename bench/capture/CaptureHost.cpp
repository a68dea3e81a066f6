// A host to measure: watches the main display and prints what it saw as one JSON object.
//   SECONDS MODE
// MODE: each    grabs after every report          never   never grabs
//       rate    grabs 30 times a second           slow    stays a second in every callback
//       latency draws one rectangle at a time itself and times report and pixels
//       cycle   starts and stops SECONDS times over
//       moves   grabs after every report and checks every moved rectangle
//       stream  a display stream itself, asked for 1000 frames a second, each looked at

#include "lumowatch/StderrLogger.h"
#include "plat/LogWriter.h"
#include "plat/Rect.h"
#include "svr/mac/DisplayStreamClient.h"
#include "svr/mac/DisplayStreamSource.h"

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <IOSurface/IOSurfaceRef.h>
#include <glib.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <utility>
#include <vector>

namespace {

long answeredReplies = 0;

} // namespace

/// Stands before xcb's own function, also for the library: every answer that is waited for without
/// blocking comes through here.
extern "C" __attribute__((visibility("default"))) int
xcb_poll_for_reply(xcb_connection_t* connection, unsigned sequence, void** reply,
                   xcb_generic_error_t** error) {
    using Original = int (*)(xcb_connection_t*, unsigned, void**, xcb_generic_error_t**);
    static const auto original = reinterpret_cast<Original>(dlsym(RTLD_NEXT, "xcb_poll_for_reply"));
    const int isThere = original(connection, sequence, reply, error);
    answeredReplies += isThere;
    return isThere;
}

namespace {

double now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

long residentKib() {
    std::ifstream statistics("/proc/self/smaps_rollup");
    std::string word;
    long kib = 0;
    while (statistics >> word) {
        if (word == "Private_Dirty:" || word == "Private_Clean:") {
            long part = 0;
            statistics >> part;
            kib += part;
        }
    }
    return kib;
}

long countIn(const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
}

double quantile(std::vector<double> values, double part) {
    if (values.empty())
        return 0;
    std::ranges::sort(values);
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

class Host final : public svr::DisplayStreamClient {
public:
    explicit Host(std::string wanted) : mode(std::move(wanted)) {}

    void pixelsGrabbed(const void* pixels, plat::Rect box, int, int strideBytes) override {
        ++grabs;
        lastPixels = now();
        const auto* row = static_cast<const std::uint8_t*>(pixels) +
                          std::ptrdiff_t{box.top} * strideBytes + std::ptrdiff_t{box.left} * 4;
        std::memcpy(&cornerPixel, row, sizeof cornerPixel);
        boxArea += static_cast<double>(box.right - box.left) * (box.bottom - box.top);
        if (mode == "moves")
            keepPicture(static_cast<const std::uint8_t*>(pixels), box, strideBytes);
    }

    void rectsChanged(int count, const CGRect* rects) override {
        ++reports;
        lastReport = now();
        mostRects = std::max(mostRects, count);
        for (int i = 0; i < count; ++i)
            rectArea += static_cast<double>(rects[i].size.width * rects[i].size.height);
        moved.clear();
        if (mode == "slow")
            g_usleep(G_USEC_PER_SEC);
        wantsGrab = mode == "each" || mode == "latency" || mode == "moves";
    }

    void rectsMoved(CGFloat dx, CGFloat dy, int count, const CGRect* rects) override {
        moved.assign(rects, rects + count);
        shiftX = static_cast<int>(dx);
        shiftY = static_cast<int>(dy);
    }

    std::string mode;
    bool wantsGrab = false;
    long reports = 0;
    long grabs = 0;
    int mostRects = 0;
    double rectArea = 0;
    double boxArea = 0;
    double lastReport = 0;
    double lastPixels = 0;
    std::uint32_t cornerPixel = 0;
    std::vector<CGRect> moved;
    int shiftX = 0;
    int shiftY = 0;
    long movesRight = 0;
    long movesWrong = 0;
    long bigMoves = 0;

private:
    void keepPicture(const std::uint8_t* pixels, const plat::Rect& box, int strideBytes) {
        const auto stride = static_cast<std::size_t>(strideBytes);
        if (picture.empty())
            picture.resize(stride * 8192);
        double movedArea = 0;
        for (const CGRect& rect : moved) {
            (isRight(rect, pixels, stride) ? movesRight : movesWrong) += 1;
            movedArea += static_cast<double>(rect.size.width * rect.size.height);
        }
        if (movedArea * 2 > static_cast<double>(box.right - box.left) * (box.bottom - box.top))
            ++bigMoves;
        for (int y = box.top; y < box.bottom; ++y) {
            const std::size_t at =
                static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(box.left) * 4;
            std::memcpy(&picture[at], pixels + at,
                        static_cast<std::size_t>(box.right - box.left) * 4);
        }
    }

    bool isRight(const CGRect& rect, const std::uint8_t* pixels, std::size_t stride) const {
        const auto left = static_cast<int>(rect.origin.x);
        const auto top = static_cast<int>(rect.origin.y);
        const auto bytes = static_cast<std::size_t>(rect.size.width) * 4;
        for (int y = top; y < top + static_cast<int>(rect.size.height); ++y) {
            const std::size_t at =
                static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(left) * 4;
            const std::size_t from = static_cast<std::size_t>(y + shiftY) * stride +
                                     static_cast<std::size_t>(left + shiftX) * 4;
            if (std::memcmp(pixels + at, &picture[from], bytes) != 0)
                return false;
        }
        return true;
    }

    std::vector<std::uint8_t> picture;
};

/// Draws a rectangle, waits until its colour was handed over, and again.
class LatencyProbe {
public:
    LatencyProbe()
        : xcb(xcb_connect(nullptr, nullptr)),
          screen(xcb_setup_roots_iterator(xcb_get_setup(xcb)).data), gc(xcb_generate_id(xcb)) {
        xcb_create_gc(xcb, gc, screen->root, 0, nullptr);
    }

    void draw() {
        colour = static_cast<std::uint32_t>(++number * 40503) & 0xffffff;
        const xcb_rectangle_t rect{300, 200, 64, 64};
        xcb_change_gc(xcb, gc, XCB_GC_FOREGROUND, &colour);
        xcb_poly_fill_rectangle(xcb, screen->root, gc, 1, &rect);
        drawn = now();
        xcb_flush(xcb);
    }

    void take(const Host& host) {
        if ((host.cornerPixel & 0xffffff) != colour || drawn == 0)
            return;
        toReport.push_back((host.lastReport - drawn) * 1e6);
        toPixels.push_back((host.lastPixels - drawn) * 1e6);
        drawn = 0;
    }

    bool isWaiting() const { return drawn != 0; }

    std::vector<double> toReport;
    std::vector<double> toPixels;

private:
    xcb_connection_t* xcb;
    const xcb_screen_t* screen;
    xcb_gcontext_t gc;
    int number = 0;
    std::uint32_t colour = 0;
    double drawn = 0;
};

int cycle(int times) {
    Host host("each");
    std::vector<double> toFirst;
    std::vector<double> toStop;
    long fdsBefore = 0;
    long threadsBefore = 0;
    long memoryBefore = 0;
    for (int i = 0; i < times; ++i) {
        if (i == times / 10) {
            fdsBefore = countIn("/proc/self/fd");
            threadsBefore = countIn("/proc/self/task");
            memoryBefore = residentKib();
        }
        const double start = now();
        const std::unique_ptr<svr::DisplayStreamSource> source(NewDisplayStream(&host, 0));
        source->start();
        for (const long before = host.reports; host.reports == before;)
            g_main_context_iteration(nullptr, TRUE);
        toFirst.push_back((host.lastReport - start) * 1e3);
        const double stop = now();
        source->stop();
        toStop.push_back((now() - stop) * 1e3);
        const long after = host.reports;
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
        if (host.reports != after)
            return 3;
    }
    std::printf("{\"startMillis\": %.2f, \"stopMillis\": %.2f, \"fds\": %ld, \"threads\": %ld, "
                "\"kibPerCycle\": %.3f}\n",
                quantile(toFirst, 0.5), quantile(toStop, 0.5), countIn("/proc/self/fd") - fdsBefore,
                countIn("/proc/self/task") - threadsBefore,
                static_cast<double>(residentKib() - memoryBefore) / (times * 0.9));
    return 0;
}

int stream(double seconds) {
    const double shortest = 0.001;
    const void* keys[] = {kCGDisplayStreamMinimumFrameTime};
    const void* values[] = {CFNumberCreate(nullptr, kCFNumberDoubleType, &shortest)};
    const CFDictionaryRef properties =
        CFDictionaryCreate(nullptr, keys, values, 1, nullptr, nullptr);
    const CGRect bounds = CGDisplayBounds(CGMainDisplayID());
    __block long frames = 0;
    __block std::uint32_t firstPixel = 0;
    const CGDisplayStreamRef opened = CGDisplayStreamCreate(
        CGMainDisplayID(), static_cast<size_t>(bounds.size.width),
        static_cast<size_t>(bounds.size.height), 0x42475241, properties,
        ^(CGDisplayStreamFrameStatus status, uint64_t, IOSurfaceRef surface,
          CGDisplayStreamUpdateRef) {
          if (status != kCGDisplayStreamFrameStatusFrameComplete)
              return;
          ++frames;
          firstPixel += *static_cast<const std::uint32_t*>(IOSurfaceGetBaseAddress(surface));
        });
    if (opened == nullptr)
        return 2;
    CFRunLoopAddSource(CFRunLoopGetCurrent(), CGDisplayStreamGetRunLoopSource(opened),
                       kCFRunLoopCommonModes);
    CGDisplayStreamStart(opened);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, 0);
    CGDisplayStreamStop(opened);
    std::printf("{\"reports\": %ld, \"pixels\": %u}\n", frames, firstPixel);
    return 0;
}

struct Heartbeat {
    double last = now();
    double longest = 0;
};

int watch(double seconds, const std::string& mode) {
    const long kibBefore = residentKib();
    Host host(mode);
    const std::unique_ptr<svr::DisplayStreamSource> source(NewDisplayStream(&host, 0));
    if (!source->start())
        return 2;
    std::unique_ptr<LatencyProbe> probe;
    if (mode == "latency")
        probe = std::make_unique<LatencyProbe>();
    bool isOver = false;
    g_timeout_add(
        static_cast<guint>(seconds * 1000),
        [](gpointer over) -> gboolean {
            *static_cast<bool*>(over) = true;
            return G_SOURCE_REMOVE;
        },
        &isOver);
    if (mode == "rate")
        g_timeout_add(
            33,
            [](gpointer watched) -> gboolean {
                static_cast<svr::DisplayStreamSource*>(watched)->grab();
                return G_SOURCE_CONTINUE;
            },
            source.get());
    Heartbeat heartbeat;
    if (mode == "heartbeat")
        g_timeout_add(
            5,
            [](gpointer data) -> gboolean {
                auto& beat = *static_cast<Heartbeat*>(data);
                beat.longest = std::max(beat.longest, now() - beat.last);
                beat.last = now();
                return G_SOURCE_CONTINUE;
            },
            &heartbeat);
    double nextDraw = now() + 0.3;
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    while (!isOver) {
        if (probe != nullptr) {
            g_main_context_iteration(nullptr, probe->isWaiting() ? TRUE : FALSE);
            if (!probe->isWaiting() && now() > nextDraw) {
                probe->draw();
                nextDraw = now() + 0.025;
            }
        } else {
            g_main_context_iteration(nullptr, TRUE);
        }
        if (std::exchange(host.wantsGrab, false)) {
            source->grab();
            if (probe != nullptr)
                probe->take(host);
        }
    }
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    const std::vector<double> none;
    std::printf(
        "{\"replies\": %ld, \"reports\": %ld, \"grabs\": %ld, \"wakeups\": %ld, \"mostRects\": %d, "
        "\"rectArea\": %.0f, \"boxArea\": %.0f, \"privateKib\": %ld, \"longestGap\": %.4f, "
        "\"movesRight\": %ld, \"movesWrong\": %ld, \"bigMoves\": %ld, "
        "\"reportMicros\": %.1f, \"reportP99\": %.1f, \"pixelMicros\": %.1f, \"pixelP99\": "
        "%.1f, \"samples\": %zu}\n",
        answeredReplies, host.reports, host.grabs, after.ru_nvcsw - before.ru_nvcsw, host.mostRects,
        host.rectArea, host.boxArea, residentKib() - kibBefore, heartbeat.longest, host.movesRight,
        host.movesWrong, host.bigMoves, quantile(probe ? probe->toReport : none, 0.5),
        quantile(probe ? probe->toReport : none, 0.99),
        quantile(probe ? probe->toPixels : none, 0.5),
        quantile(probe ? probe->toPixels : none, 0.99), probe ? probe->toPixels.size() : 0);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 1;
    lumowatch::StderrLogger logger;
    plat::LogWriter::applyLogSetting("*:stderr:0");
    const std::string mode = argv[2];
    if (mode == "cycle")
        return cycle(std::atoi(argv[1]));
    if (mode == "stream")
        return stream(std::atof(argv[1]));
    return watch(std::atof(argv[1]), mode);
}
