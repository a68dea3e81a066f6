#pragma once

#include <CoreGraphics/CGError.h>
#include <CoreGraphics/CGGeometry.h>
#include <CoreGraphics/CGImage.h>

typedef uint32_t CGDirectDisplayID;

#define kCGNullDirectDisplay static_cast<CGDirectDisplayID>(0)

/// The display that the desktop calls primary, or 0 when there is none.
CG_EXTERN CGDirectDisplayID CGMainDisplayID(void);

/// Stores at most `maxDisplays` identifiers, the main display first, and their number; with a null
/// array only the number of all displays.
CG_EXTERN CGError CGGetActiveDisplayList(uint32_t maxDisplays, CGDirectDisplayID* displays,
                                         uint32_t* displayCount);

/// Where the display lies on the desktop; empty for an unknown one. 0 is the main display.
/// Units: points.
CG_EXTERN CGRect CGDisplayBounds(CGDirectDisplayID display);

/// A picture of a part of the display, or null. Units: `area` in points from the display's own
/// corner. Ownership: the caller releases it.
CG_EXTERN CGImageRef CGDisplayCreateImageForRect(CGDirectDisplayID display, CGRect area);

typedef uint32_t CGDisplayChangeSummaryFlags;

enum {
    kCGDisplayMovedFlag = 1 << 1,
    kCGDisplayAddFlag = 1 << 4,
    kCGDisplayRemoveFlag = 1 << 5,
    kCGDisplayDesktopShapeChangedFlag = 1 << 12
};

typedef void (*CGDisplayReconfigurationCallBack)(CGDirectDisplayID display,
                                                 CGDisplayChangeSummaryFlags flags, void* userInfo);

/// Calls back on the main run loop, once for each display whose place, size or presence changed.
CG_EXTERN CGError
CGDisplayRegisterReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo);

/// Undoes one registration of this very pair.
CG_EXTERN CGError CGDisplayRemoveReconfigurationCallback(CGDisplayReconfigurationCallBack callback,
                                                         void* userInfo);
