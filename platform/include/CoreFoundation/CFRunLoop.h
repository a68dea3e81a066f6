#pragma once

#include <CoreFoundation/CFString.h>

typedef struct __CFRunLoop* CFRunLoopRef;
typedef struct __CFRunLoopSource* CFRunLoopSourceRef;
typedef CFStringRef CFRunLoopMode;
typedef double CFTimeInterval;
typedef int32_t CFRunLoopRunResult;

enum {
    kCFRunLoopRunFinished = 1,
    kCFRunLoopRunStopped = 2,
    kCFRunLoopRunTimedOut = 3,
    kCFRunLoopRunHandledSource = 4
};

CF_EXPORT const CFRunLoopMode kCFRunLoopDefaultMode;
CF_EXPORT const CFRunLoopMode kCFRunLoopCommonModes;

/// The run loop of the calling thread, made on first use. Ownership: not the caller's.
CF_EXPORT CFRunLoopRef CFRunLoopGetCurrent(void);

/// The run loop of the main thread. Threads: any.
CF_EXPORT CFRunLoopRef CFRunLoopGetMain(void);

/// Lets the run loop serve the source. Adding it twice changes nothing.
CF_EXPORT void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode);

/// Takes the source out of this run loop; one that is not in it stays where it is.
CF_EXPORT void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source,
                                     CFRunLoopMode mode);

/// Serves the calling thread's run loop until CFRunLoopStop.
CF_EXPORT void CFRunLoopRun(void);

/// Serves the calling thread's run loop for at most so many seconds, or until the first source was
/// handled when asked to; says which of these ended it.
CF_EXPORT CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds,
                                                Boolean returnAfterSourceHandled);

/// Ends the innermost run of this loop. Threads: any.
CF_EXPORT void CFRunLoopStop(CFRunLoopRef loop);
