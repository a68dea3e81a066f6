#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CGDisplayStream.h>
#include <dispatch/dispatch.h>

#include "lumoscreenhelper/SurfacePtr.h"
#include "lumoscreenhelper/UpdatePtr.h"
#include "os/mac/CFUtil.h"

namespace svr {

class DisplayStreamClient;

/// The capture engine: receives the frames of one display, tells the client what changed, and hands
/// it the pixels on demand, straight out of the newest frame.
/// Ownership: keeps the pointer to its client, which must outlive it.
/// Threads: frames are handled on the run loop of the thread that calls start(), or on the queue;
/// the client hears of them on the main thread, at once or later. grab() from any thread. start(),
/// stop(), updateProps() and the destructor not while a frame may arrive on another thread.
class DisplayStreamImpl {
public:
    DisplayStreamImpl(DisplayStreamClient* newClient, unsigned displayId);
    DisplayStreamImpl(const DisplayStreamImpl&) = delete;
    DisplayStreamImpl& operator=(const DisplayStreamImpl&) = delete;
    /// Stops. The semaphore is never released.
    ~DisplayStreamImpl();

    /// Makes a stream and starts it. With a name, frames are handled on a serial queue of that
    /// name; with null, on the queue of an earlier start that was not stopped, or else on the
    /// current run loop. A second start leaves the stream of the first behind as it is. Errors:
    /// false if the stream has no run-loop source; true also when the system refuses to start the
    /// stream; both are logged. Throws plat::DynamicFnLoadFailed where the system cannot tell the
    /// display's scale.
    bool start(const char* queueName);

    /// Calls the client's pixelsGrabbed() with the box of all changes since the grab before, if
    /// there are any; they are then forgotten.
    /// Errors: a null client asserts. Passes on what the client throws; the changes then stay.
    void grab();

    /// Ends the stream and lets go of the frame. To be called on the thread that called start().
    /// Errors: a system that refuses is logged. Always true.
    bool stop();

    /// Makes the properties anew. The values that `withTiming` brings stay outside of them: the
    /// dictionary has one entry, the cursor's.
    void updateProps(bool withTiming);

    /// Starts the present stream again.
    void startStream();

private:
    struct Layout;

    /// Owns the copy of the block that the service calls, as long as the engine lives.
    class FrameHandler {
    public:
        FrameHandler() noexcept = default;
        FrameHandler(const FrameHandler&) = delete;
        FrameHandler& operator=(const FrameHandler&) = delete;
        ~FrameHandler();

        void copy(CGDisplayStreamFrameAvailableHandler newBlock);
        CGDisplayStreamFrameAvailableHandler get() const noexcept { return block; }

    private:
        CGDisplayStreamFrameAvailableHandler block = nullptr;
    };

    void handleFrame(CGDisplayStreamFrameStatus status, IOSurfaceRef frameSurface,
                     CGDisplayStreamUpdateRef newUpdate);
    void holdSurface(IOSurfaceRef newSurface);
    void mergeUpdate(CGDisplayStreamUpdateRef newUpdate);
    void makeProps();

    DisplayStreamClient* client;
    unsigned display;
    CGDisplayStreamRef stream;
    os::CFDictionaryPtr props;
    os::CFNumberPtr queueDepth;
    os::CFNumberPtr minFrameTime;
    CFStringRef propKeys[4];
    CFTypeRef propValues[4];
    dispatch_semaphore_t sem; ///< guards surface and update
    FrameHandler handler;
    CFRunLoopSourceRef runLoopSource; ///< the stream's own
    dispatch_queue_t queue;
    SurfacePtr surface;
    UpdatePtr update; ///< everything since the last grab
};

} // namespace svr
