#include "lumowatch/DisplayWatcher.h"

#include "lumowatch/PngFile.h"
#include "lumowatch/Texts.h"

#include <ctime>
#include <utility>

namespace lumowatch {
namespace {

double processCpuSeconds() {
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

std::span<const CGRect> listOf(int count, const CGRect* rects) {
    return {rects, static_cast<std::size_t>(count)};
}

} // namespace

DisplayWatcher::DisplayWatcher(const CaptureLibrary& capture, Setup given, EventPrinter& events,
                               GMainLoop* mainLoop)
    : setup(std::move(given)), printer(events), loop(mainLoop),
      source(capture.newSource(this, setup.display)) {
    CGDisplayRegisterReconfigurationCallback(&DisplayWatcher::onReconfigured, this);
}

DisplayWatcher::~DisplayWatcher() {
    CGDisplayRemoveReconfigurationCallback(&DisplayWatcher::onReconfigured, this);
    if (grabIdle != 0)
        g_source_remove(grabIdle);
}

bool DisplayWatcher::start() {
    return source->start();
}

Statistics DisplayWatcher::statistics() const {
    Statistics now = seen;
    now.seconds = seconds();
    now.cpuSeconds = processCpuSeconds();
    return now;
}

double DisplayWatcher::seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - startTime).count();
}

void DisplayWatcher::rectsChanged(int count, const CGRect* rects) {
    ++seen.frames;
    for (const CGRect& rect : listOf(count, rects))
        seen.changedPixels += static_cast<std::int64_t>(rect.size.width * rect.size.height);
    printer.changed(seconds(), listOf(count, rects));
    grabSoon();
}

void DisplayWatcher::rectsMoved(CGFloat dx, CGFloat dy, int count, const CGRect* rects) {
    seen.movedAreas += count;
    printer.moved(seconds(), dx, dy, listOf(count, rects));
}

// The library holds its lock while it reports, and a grab takes that lock: so not from in there.
void DisplayWatcher::grabSoon() {
    if (grabIdle != 0)
        return;
    const auto run = [](gpointer self) -> gboolean {
        static_cast<DisplayWatcher*>(self)->grab();
        return G_SOURCE_REMOVE;
    };
    grabIdle = g_idle_add_full(G_PRIORITY_DEFAULT, run, this, nullptr);
}

void DisplayWatcher::grab() {
    grabIdle = 0;
    if (!hasGrabbedEnough())
        source->grab();
}

void DisplayWatcher::pixelsGrabbed(const void* pixels, plat::Rect box, int /*bytesPerPixel*/,
                                   int strideBytes) {
    ++seen.grabs;
    printer.grabbed(seconds(), box, writePicture(pixels, box, strideBytes));
    if (hasGrabbedEnough())
        g_main_loop_quit(loop);
}

/// The file's name, or an empty text when none was written.
std::string DisplayWatcher::writePicture(const void* pixels, const plat::Rect& box,
                                         int strideBytes) {
    if (setup.pngFolder.empty())
        return "";
    char name[32];
    std::snprintf(name, sizeof name, "/grab-%05lld.png", static_cast<long long>(seen.grabs));
    std::string path = setup.pngFolder + name;
    const auto stride = static_cast<std::size_t>(strideBytes);
    const auto* corner = static_cast<const std::uint8_t*>(pixels) +
                         static_cast<std::size_t>(box.top) * stride +
                         static_cast<std::size_t>(box.left) * 4;
    std::string error;
    if (!writePng(path, corner, stride, box.right - box.left, box.bottom - box.top, &error)) {
        std::fprintf(stderr, "lumowatch: %s\n", error.c_str());
        return "";
    }
    ++seen.pictures;
    return path;
}

void DisplayWatcher::onReconfigured(CGDirectDisplayID changed, CGDisplayChangeSummaryFlags flags,
                                    void* self) {
    static_cast<DisplayWatcher*>(self)->onReconfigured(changed, flags);
}

void DisplayWatcher::onReconfigured(CGDirectDisplayID changed, CGDisplayChangeSummaryFlags flags) {
    if (changed != setup.display)
        return;
    source->stop();
    if ((flags & kCGDisplayRemoveFlag) != 0) {
        printer.note(seconds(), text("lumowatch_display_gone"));
        isGone = true;
        g_main_loop_quit(loop);
        return;
    }
    printer.note(seconds(), text("lumowatch_display_changed"));
    if (!source->start()) {
        isGone = true;
        g_main_loop_quit(loop);
    }
}

} // namespace lumowatch
