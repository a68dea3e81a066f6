#pragma once

#include <CoreGraphics/CGGeometry.h>

#include "plat/Rect.h"

namespace svr {

/// What a host is told of the display that it watches. The host implements it; the capture library
/// calls the last three operations, in whose places no other may be put.
/// Errors: an exception passes on to whoever called the library: the host's call of grab(), or the
/// run loop or queue that delivers frames.
class DisplayStreamClient {
public:
    DisplayStreamClient() = default;
    DisplayStreamClient(const DisplayStreamClient&) = delete;
    DisplayStreamClient& operator=(const DisplayStreamClient&) = delete;
    virtual ~DisplayStreamClient() = default;

    /// The host's own; the library never calls it.
    virtual void hostOperation() {}

    /// Everything that changed since the grab before lies in `box`, and its pixels may be read now.
    /// Shape: `pixels` is the first byte of the whole frame, not of the box; rows of 4-byte BGRA,
    /// top row first; a row starts every `strideBytes`.
    /// Units: `box` in pixels. Ownership: the pixels are borrowed for the call.
    /// Threads: on the one that calls grab(). The source must not be called from inside.
    virtual void pixelsGrabbed(const void* pixels, plat::Rect box, int bytesPerPixel,
                               int strideBytes) = 0;

    /// These areas have new content. An area is told again with each frame until it is grabbed.
    /// Units: pixels. Ownership: the rectangles are borrowed; when the source was started on
    /// another thread than the main one, a grab may free them before this call comes.
    /// Threads: the main thread. The source must not be called from inside.
    virtual void rectsChanged(int count, const CGRect* rects) = 0;

    /// These areas show what was at (dx, dy) from them before; the changed areas include them.
    /// Units, ownership and threads: as for rectsChanged(), which comes first.
    virtual void rectsMoved(CGFloat dx, CGFloat dy, int count, const CGRect* rects) = 0;
};

} // namespace svr
