#pragma once

#include "lumowatch/CaptureLibrary.h"
#include "lumowatch/EventPrinter.h"
#include "lumowatch/Statistics.h"

#include <CoreGraphics/CGDirectDisplay.h>
#include <glib.h>

#include <chrono>
#include <memory>
#include <string>

namespace lumowatch {

/// Watches one display through the library: prints what is reported, grabs after each report, and
/// starts anew when the display takes another size.
/// Threads: the main thread, whose run loop serves it.
class DisplayWatcher final : public svr::DisplayStreamClient {
public:
    struct Setup {
        CGDirectDisplayID display = kCGNullDirectDisplay;
        int grabs = 0;         ///< ends the loop after so many; 0: never
        std::string pngFolder; ///< empty: no pictures
    };

    /// Ownership: printer and loop outlive the watcher.
    DisplayWatcher(const CaptureLibrary& library, Setup setup, EventPrinter& printer,
                   GMainLoop* loop);
    ~DisplayWatcher() override;

    /// Errors: false when the display cannot be watched; the reason is in the log.
    bool start();

    Statistics statistics() const;

    /// The display went away for good; the loop was ended for that.
    bool isDisplayGone() const noexcept { return isGone; }

    // What the library calls
    void pixelsGrabbed(const void* pixels, plat::Rect box, int bytesPerPixel,
                       int strideBytes) override;
    void rectsChanged(int count, const CGRect* rects) override;
    void rectsMoved(CGFloat dx, CGFloat dy, int count, const CGRect* rects) override;

private:
    static void onReconfigured(CGDirectDisplayID changed, CGDisplayChangeSummaryFlags flags,
                               void* self);
    void onReconfigured(CGDirectDisplayID changed, CGDisplayChangeSummaryFlags flags);
    void grabSoon();
    void grab();
    bool hasGrabbedEnough() const { return setup.grabs != 0 && seen.grabs >= setup.grabs; }
    double seconds() const;
    std::string writePicture(const void* pixels, const plat::Rect& box, int strideBytes);

    const Setup setup;
    EventPrinter& printer;
    GMainLoop* const loop;
    const std::chrono::steady_clock::time_point startTime = std::chrono::steady_clock::now();

    std::unique_ptr<svr::DisplayStreamSource> source;
    Statistics seen;
    guint grabIdle = 0; ///< GLib's number of the pending grab, or 0
    bool isGone = false;
};

} // namespace lumowatch
