#include "lumoscreenhelper/DisplayStreamImpl.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include <Block.h>
#include <IOSurface/IOSurfaceRef.h>

#include "lumoscreenhelper/DispatchQueue.h"
#include "os/mac/CGUtil.h"
#include "os/mac/RectUtil.h"
#include "plat/Assertion.h"
#include "plat/LogWriter.h"
#include "svr/mac/DisplayStreamClient.h"

namespace svr {

static plat::LogWriter vlog("DisplayStreamImpl");

struct DisplayStreamImpl::Layout {
    static constexpr std::size_t word = sizeof(void*); // the display's number is padded to one
    static_assert(offsetof(DisplayStreamImpl, client) == 0);
    static_assert(offsetof(DisplayStreamImpl, display) == word);
    static_assert(offsetof(DisplayStreamImpl, stream) == 2 * word);
    static_assert(offsetof(DisplayStreamImpl, props) == 3 * word);
    static_assert(offsetof(DisplayStreamImpl, queueDepth) == 4 * word);
    static_assert(offsetof(DisplayStreamImpl, minFrameTime) == 5 * word);
    static_assert(offsetof(DisplayStreamImpl, propKeys) == 6 * word);
    static_assert(offsetof(DisplayStreamImpl, propValues) == 10 * word);
    static_assert(offsetof(DisplayStreamImpl, sem) == 14 * word);
    static_assert(offsetof(DisplayStreamImpl, handler) == 15 * word);
    static_assert(offsetof(DisplayStreamImpl, runLoopSource) == 16 * word);
    static_assert(offsetof(DisplayStreamImpl, queue) == 17 * word);
    static_assert(offsetof(DisplayStreamImpl, surface) == 18 * word);
    static_assert(offsetof(DisplayStreamImpl, update) == 19 * word);
    static_assert(sizeof(DisplayStreamImpl) == 20 * word);
};

namespace {

constexpr std::int32_t pixelFormatBgra = 0x42475241; // 'BGRA'
constexpr int bytesPerPixel = 4;

/// One call of the client by an engine on this thread. The client may delete the engine from
/// inside, which the engine must know before it touches a member again.
class ClientCall {
public:
    explicit ClientCall(const void* callingEngine) noexcept
        : engine(callingEngine), outer(std::exchange(innermost, this)) {}
    ClientCall(const ClientCall&) = delete;
    ClientCall& operator=(const ClientCall&) = delete;
    ~ClientCall() { innermost = outer; }

    bool engineLives() const noexcept { return engine != nullptr; }

    static void engineDies(const void* dying) noexcept {
        for (ClientCall* call = innermost; call != nullptr; call = call->outer) {
            if (call->engine == dying)
                call->engine = nullptr;
        }
    }

private:
    static thread_local constinit ClientCall* innermost;

    const void* engine;
    ClientCall* outer;
};
thread_local constinit ClientCall* ClientCall::innermost = nullptr;

/// Keeps a surface readable for the length of a scope, unless the client lets go of it inside: it
/// is not ours to touch then, and one that lives on elsewhere keeps this lock.
class ReadLock {
public:
    ReadLock(const SurfacePtr& heldSurface, const ClientCall& clientCall) noexcept
        : held(heldSurface), surface(heldSurface.get()), call(clientCall) {
        IOSurfaceLock(surface, kIOSurfaceLockReadOnly, nullptr);
    }
    ReadLock(const ReadLock&) = delete;
    ReadLock& operator=(const ReadLock&) = delete;
    ~ReadLock() {
        if (call.engineLives() && held.get() == surface)
            IOSurfaceUnlock(surface, kIOSurfaceLockReadOnly, nullptr);
    }

private:
    const SurfacePtr& held;
    IOSurfaceRef surface;
    const ClientCall& call;
};

struct Rects {
    const CGRect* first = nullptr;
    std::size_t count = 0; // the service leaves it alone where there is nothing to count
};

Rects rectsOf(const UpdatePtr& update, CGDisplayStreamUpdateRectType type) {
    Rects rects;
    if (update)
        rects.first = CGDisplayStreamUpdateGetRects(update.get(), type, &rects.count);
    return rects;
}

plat::Rect boundingBox(const Rects& rects) {
    if (rects.count == 0)
        return {};
    CGRect box = rects.first[0];
    for (std::size_t i = 0; i < rects.count; ++i)
        box = CGRectUnion(box, rects.first[i]);
    return os::rectFromCGRect(box);
}

std::size_t pixelCount(CGFloat points, unsigned scale) {
    return std::size_t(std::max(os::truncateToInt(points), 0)) * scale;
}

void reportChanged(DisplayStreamClient* client, const UpdatePtr& update, bool isMainThread) {
    const Rects changed = rectsOf(update, kCGDisplayStreamUpdateDirtyRects);
    if (changed.count == 0)
        return;
    const int count = int(changed.count);
    const CGRect* const rects = changed.first;
    runOnMainThread(isMainThread, ^{
      client->rectsChanged(count, rects);
    });
}

void reportMoved(DisplayStreamClient* client, const UpdatePtr& update, bool isMainThread) {
    const Rects moved = rectsOf(update, kCGDisplayStreamUpdateMovedRects);
    if (moved.count == 0)
        return;
    CGFloat dx = 0;
    CGFloat dy = 0;
    CGDisplayStreamUpdateGetMovedRectsDelta(update.get(), &dx, &dy);
    const int count = int(moved.count);
    const CGRect* const rects = moved.first;
    runOnMainThread(isMainThread, ^{
      client->rectsMoved(dx, dy, count, rects);
    });
}

void requestStart(CGDisplayStreamRef stream, unsigned display) {
    const CGError err = CGDisplayStreamStart(stream);
    if (err != kCGErrorSuccess)
        vlog.error("CGDisplayStreamStart failed (%d, %d)", int(err), int(display));
}

} // namespace

DisplayStreamImpl::FrameHandler::~FrameHandler() {
    if (block != nullptr)
        Block_release(block);
}

void DisplayStreamImpl::FrameHandler::copy(CGDisplayStreamFrameAvailableHandler newBlock) {
    CGDisplayStreamFrameAvailableHandler const old = std::exchange(block, Block_copy(newBlock));
    if (old != nullptr)
        Block_release(old);
}

DisplayStreamImpl::DisplayStreamImpl(DisplayStreamClient* newClient, unsigned displayId)
    : client(newClient), display(displayId), stream(nullptr), propKeys{kCGDisplayStreamShowCursor},
      propValues{kCFBooleanFalse}, sem(dispatch_semaphore_create(1)), runLoopSource(nullptr),
      queue(nullptr) {}

// The members release what they hold, the last one first.
DisplayStreamImpl::~DisplayStreamImpl() {
    ClientCall::engineDies(this);
    stop();
}

bool DisplayStreamImpl::start(const char* queueName) {
    handler.copy(^(CGDisplayStreamFrameStatus status, uint64_t, IOSurfaceRef frameSurface,
                   CGDisplayStreamUpdateRef newUpdate) {
      handleFrame(status, frameSurface, newUpdate);
    });
    makeProps();
    if (queueName != nullptr) {
        if (queue != nullptr)
            dispatch_release(queue);
        queue = dispatch_queue_create(queueName, DISPATCH_QUEUE_SERIAL);
    }
    const CGRect bounds = CGDisplayBounds(display);
    const unsigned scale = os::getScaleFactor(display);
    const std::size_t width = pixelCount(bounds.size.width, scale);
    const std::size_t height = pixelCount(bounds.size.height, scale);
    if (queue != nullptr) {
        stream = CGDisplayStreamCreateWithDispatchQueue(display, width, height, pixelFormatBgra,
                                                        props.get(), queue, handler.get());
    } else {
        stream = CGDisplayStreamCreate(display, width, height, pixelFormatBgra, props.get(),
                                       handler.get());
        runLoopSource = CGDisplayStreamGetRunLoopSource(stream);
        if (runLoopSource == nullptr) {
            vlog.error("Invalid runloop reference");
            return false;
        }
        CFRunLoopAddSource(CFRunLoopGetCurrent(), runLoopSource, kCFRunLoopCommonModes);
    }
    requestStart(stream, display);
    return true;
}

void DisplayStreamImpl::grab() {
    const SemaphoreLock lock(sem);
    LUMO_ASSERT_FATAL(client);
    const plat::Rect box = boundingBox(rectsOf(update, kCGDisplayStreamUpdateDirtyRects));
    const ClientCall call(this);
    if (box.left < box.right && box.top < box.bottom) {
        const ReadLock readLock(surface, call);
        const void* const pixels = IOSurfaceGetBaseAddress(surface.get());
        const int strideBytes = int(IOSurfaceGetBytesPerRow(surface.get()));
        client->pixelsGrabbed(pixels, box, bytesPerPixel, strideBytes);
    }
    if (call.engineLives())
        update.reset();
}

bool DisplayStreamImpl::stop() {
    if (surface) {
        IOSurfaceDecrementUseCount(surface.get());
        surface.reset();
    }
    update.reset();
    if (CGDisplayStreamRef const old = std::exchange(stream, nullptr)) {
        const CGError err = CGDisplayStreamStop(old);
        if (err != kCGErrorSuccess)
            vlog.error("CGDisplayStreamStop failed (%d, %d)", int(err), int(display));
    }
    if (runLoopSource != nullptr) {
        CFRunLoopRemoveSource(CFRunLoopGetCurrent(), runLoopSource, kCFRunLoopCommonModes);
        runLoopSource = nullptr;
    }
    if (queue != nullptr) {
        dispatch_release(queue);
        queue = nullptr;
    }
    return true;
}

// The analyzer does not see that the handles' assign() takes over what it is given.
// NOLINTBEGIN(clang-analyzer-osx.cocoa.RetainCount)

void DisplayStreamImpl::updateProps(bool withTiming) {
    if (withTiming) {
        const int depth = 8;
        queueDepth.assign(CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &depth));
        const float seconds = 0.033333335F;
        minFrameTime.assign(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloatType, &seconds));
        propKeys[1] = kCGDisplayStreamQueueDepth;
        propValues[1] = queueDepth.get();
        propKeys[2] = kCGDisplayStreamMinimumFrameTime;
        propValues[2] = minFrameTime.get();
    }
    makeProps();
}

void DisplayStreamImpl::startStream() {
    requestStart(stream, display);
}

/// Receives one frame. Surface and update are the service's own.
void DisplayStreamImpl::handleFrame(CGDisplayStreamFrameStatus status, IOSurfaceRef frameSurface,
                                    CGDisplayStreamUpdateRef newUpdate) {
    if (frameSurface == nullptr || client == nullptr)
        return;
    const SemaphoreLock lock(sem);
    holdSurface(frameSurface);
    if (status != kCGDisplayStreamFrameStatusFrameComplete)
        return;
    CFRunLoopRef const current = CFRunLoopGetCurrent();
    const bool isMainThread = current == CFRunLoopGetMain();
    if (newUpdate != nullptr)
        mergeUpdate(newUpdate);
    const ClientCall call(this);
    reportChanged(client, update, isMainThread);
    if (call.engineLives())
        reportMoved(client, update, isMainThread);
}

/// Every frame adds a reference to its surface, also to the one that is held already: that one is
/// not given back.
void DisplayStreamImpl::holdSurface(IOSurfaceRef newSurface) {
    if (surface)
        IOSurfaceDecrementUseCount(surface.get());
    surface.assign(newSurface);
    CFRetain(newSurface);
    IOSurfaceIncrementUseCount(newSurface);
}

void DisplayStreamImpl::mergeUpdate(CGDisplayStreamUpdateRef newUpdate) {
    if (update) {
        update.assign(CGDisplayStreamUpdateCreateMergedUpdate(update.get(), newUpdate));
        return;
    }
    update.assign(static_cast<CGDisplayStreamUpdateRef>(CFRetain(newUpdate)));
}

/// The dictionary has one entry, whatever the arrays hold.
void DisplayStreamImpl::makeProps() {
    constexpr CFIndex entries = 1;
    props.assign(CFDictionaryCreate(kCFAllocatorDefault, reinterpret_cast<const void**>(propKeys),
                                    propValues, entries, nullptr, nullptr));
}

// NOLINTEND(clang-analyzer-osx.cocoa.RetainCount)

} // namespace svr
