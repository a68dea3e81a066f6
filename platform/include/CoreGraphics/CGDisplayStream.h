#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFRunLoop.h>
#include <CoreFoundation/CFString.h>
#include <CoreGraphics/CGDirectDisplay.h>
#include <IOSurface/IOSurfaceRef.h>
#include <dispatch/dispatch.h>

typedef struct CGDisplayStream* CGDisplayStreamRef;
typedef const struct CGDisplayStreamUpdate* CGDisplayStreamUpdateRef;

typedef int32_t CGDisplayStreamFrameStatus;

enum {
    kCGDisplayStreamFrameStatusFrameComplete = 0, ///< a new frame, with its update
    kCGDisplayStreamFrameStatusFrameIdle = 1,     ///< nothing changed
    kCGDisplayStreamFrameStatusFrameBlank = 2,    ///< the display went blank
    kCGDisplayStreamFrameStatusStopped = 3        ///< the last call of this stream's handler
};

typedef int32_t CGDisplayStreamUpdateRectType;

enum {
    kCGDisplayStreamUpdateRefreshedRects = 0,
    kCGDisplayStreamUpdateMovedRects = 1,
    kCGDisplayStreamUpdateDirtyRects = 2,
    kCGDisplayStreamUpdateReducedDirtyRects = 3
};

/// Keys of a stream's properties.
CG_EXTERN const CFStringRef kCGDisplayStreamShowCursor;       ///< boolean; default false
CG_EXTERN const CFStringRef kCGDisplayStreamMinimumFrameTime; ///< number; seconds between frames
CG_EXTERN const CFStringRef kCGDisplayStreamQueueDepth;       ///< number; surfaces, 3 to 8

/// The rectangles of one kind, and their number. Units: pixels of the frame.
/// Ownership: borrowed, as long as the update lives. A null update has none, and the number is then
/// left as it was.
CG_EXTERN const CGRect* CGDisplayStreamUpdateGetRects(CGDisplayStreamUpdateRef update,
                                                      CGDisplayStreamUpdateRectType type,
                                                      size_t* rectCount);

/// What changed from before the first update to after the second; the order counts.
/// Ownership: the caller releases it.
CG_EXTERN CGDisplayStreamUpdateRef CGDisplayStreamUpdateCreateMergedUpdate(
    CGDisplayStreamUpdateRef first, CGDisplayStreamUpdateRef second);

/// The offset that all moved rectangles share, from the moved rectangle back to its source.
CG_EXTERN void CGDisplayStreamUpdateGetMovedRectsDelta(CGDisplayStreamUpdateRef update, CGFloat* dx,
                                                       CGFloat* dy);

#if defined(__BLOCKS__)
/// Ownership: surface and update are borrowed for the call. A surface that is kept needs a retain,
/// and a use count for as long as nobody may write into it. The update is null unless the frame is
/// complete.
typedef void (^CGDisplayStreamFrameAvailableHandler)(CGDisplayStreamFrameStatus status,
                                                     uint64_t displayTime,
                                                     IOSurfaceRef frameSurface,
                                                     CGDisplayStreamUpdateRef update);

/// A stream that calls its handler on the run loop that serves its source; null if there is no such
/// display. Ownership: the caller releases it; the handler is copied.
CG_EXTERN CGDisplayStreamRef CGDisplayStreamCreate(CGDirectDisplayID display, size_t outputWidth,
                                                   size_t outputHeight, int32_t pixelFormat,
                                                   CFDictionaryRef properties,
                                                   CGDisplayStreamFrameAvailableHandler handler);

/// A stream that calls its handler on the queue.
CG_EXTERN CGDisplayStreamRef CGDisplayStreamCreateWithDispatchQueue(
    CGDirectDisplayID display, size_t outputWidth, size_t outputHeight, int32_t pixelFormat,
    CFDictionaryRef properties, dispatch_queue_t queue,
    CGDisplayStreamFrameAvailableHandler handler);
#endif

/// Ownership: borrowed from the stream; null for a stream on a queue, and for no stream.
CG_EXTERN CFRunLoopSourceRef CGDisplayStreamGetRunLoopSource(CGDisplayStreamRef stream);

CG_EXTERN CGError CGDisplayStreamStart(CGDisplayStreamRef stream);
CG_EXTERN CGError CGDisplayStreamStop(CGDisplayStreamRef stream);
