#pragma once

#include <CoreGraphics/CGImage.h>

#include "os/mac/CFUtil.h"
#include "plat/Rect.h"

namespace os {

/// Owns a picture of a display, or null.
class CGImagePtr {
public:
    /// Takes a picture of a part of a display; null if the system gives none.
    /// Units: `r` in points from the display's own corner.
    /// Errors: throws plat::DynamicFnLoadFailed where the system has no such function.
    CGImagePtr(unsigned display, const plat::Rect& r);
    CGImagePtr(const CGImagePtr&) = delete;
    CGImagePtr& operator=(const CGImagePtr&) = delete;
    ~CGImagePtr() { reset(); }

    /// Whether the system can take pictures at all.
    static bool canCreateFromDisplay() noexcept;

    void reset() noexcept;
    CGImageRef get() const noexcept { return image; }

private:
    CGImageRef image;
};

/// Owns a copy of a picture's bytes, or null.
class CGImageData {
public:
    /// Errors: throws plat::DynamicFnLoadFailed where the system has no such function.
    explicit CGImageData(CGImage* image);

    /// Whether the system can copy pictures at all.
    static bool isSupported() noexcept;

    CFDataRef get() const noexcept { return data.get(); }

private:
    CFPtr<CFDataRef> data;
};

/// How many pixels a point of the display is wide; 1 if that cannot be found out.
/// Errors: throws plat::DynamicFnLoadFailed where the system cannot take pictures.
unsigned getScaleFactor(unsigned display);

} // namespace os
