// A host that is as small as one can be: watches the main display and prints what changes.

#include "svr/mac/DisplayStreamClient.h"
#include "svr/mac/DisplayStreamSource.h"

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CGWindow.h>
#include <CoreGraphics/CoreGraphics.h>

#include <cstdio>
#include <dlfcn.h>
#include <memory>

namespace {

constexpr const char* libraryPath = "/Library/lumo/lumoscreenhelper.dylib";
constexpr CFTimeInterval grabIntervalSeconds = 1.0 / 30;

class Printer final : public svr::DisplayStreamClient {
public:
    void pixelsGrabbed(const void* /*pixels*/, plat::Rect box, int /*bytesPerPixel*/,
                       int strideBytes) override {
        std::printf("grabbed %dx%d at %d,%d, rows %d bytes apart\n", box.right - box.left,
                    box.bottom - box.top, box.left, box.top, strideBytes);
    }
    void rectsChanged(int count, const CGRect* /*rects*/) override {
        std::printf("%d areas changed\n", count);
    }
    void rectsMoved(CGFloat dx, CGFloat dy, int count, const CGRect* /*rects*/) override {
        std::printf("%d areas moved, from %g,%g\n", count, double{dx}, double{dy});
    }
};

int fail(const char* why) {
    std::fprintf(stderr, "examplehost: %s\n", why);
    return 1;
}

} // namespace

int main() {
    if (!CGPreflightScreenCaptureAccess() && !CGRequestScreenCaptureAccess())
        return fail("not allowed to record the screen; see Privacy & Security in the settings");
    void* library = dlopen(libraryPath, RTLD_NOW);
    if (library == nullptr)
        return fail(dlerror());
    const auto newDisplayStream =
        reinterpret_cast<decltype(&NewDisplayStream)>(dlsym(library, "NewDisplayStream"));
    if (newDisplayStream == nullptr)
        return fail("the library has no NewDisplayStream");

    Printer printer;
    const std::unique_ptr<svr::DisplayStreamSource> source(
        newDisplayStream(&printer, CGMainDisplayID()));
    if (!source->start())
        return fail("the display cannot be watched");
    for (;;) { // frames arrive on this thread's run loop; never grab from inside a report
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, grabIntervalSeconds, 0);
        source->grab();
    }
}
