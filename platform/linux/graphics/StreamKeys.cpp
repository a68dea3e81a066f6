#include "platform/linux/core/String.h"

#include <CoreGraphics/CGDisplayStream.h>

namespace {

[[clang::no_destroy]] constinit const __CFString showCursor("kCGDisplayStreamShowCursor");
[[clang::no_destroy]] constinit const __CFString
    minimumFrameTime("kCGDisplayStreamMinimumFrameTime");
[[clang::no_destroy]] constinit const __CFString queueDepth("kCGDisplayStreamQueueDepth");

} // namespace

const CFStringRef kCGDisplayStreamShowCursor = &showCursor;
const CFStringRef kCGDisplayStreamMinimumFrameTime = &minimumFrameTime;
const CFStringRef kCGDisplayStreamQueueDepth = &queueDepth;
