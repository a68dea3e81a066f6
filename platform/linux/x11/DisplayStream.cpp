#include "platform/linux/x11/DisplayStream.h"

#include "plat/LogWriter.h"
#include "platform/linux/core/DispatchQueue.h"
#include "platform/linux/core/Guard.h"
#include "platform/linux/graphics/Update.h"
#include "platform/linux/x11/DisplayList.h"

#include <CoreFoundation/CFNumber.h>
#include <algorithm>
#include <ctime>
#include <utility>

static plat::LogWriter vlog("DisplayStream");

using platform::Ref;
using platform::x11::Connection;
using platform::x11::ScreenWatch;

namespace {

constexpr int formatBgra = 0x42475241; // 'BGRA'
constexpr int defaultQueueDepth = 3;
constexpr int leastQueueDepth = 2;
constexpr int greatestQueueDepth = 8;
constexpr std::int64_t shortestFrameMicros = 1000;
constexpr size_t greatestSide = 32767; // what the X protocol can name

std::uint64_t monotonicNanos() noexcept {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000U +
           static_cast<std::uint64_t>(now.tv_nsec);
}

double numberOr(double otherwise, CFDictionaryRef properties, CFStringRef key) noexcept {
    const void* value = properties != nullptr ? CFDictionaryGetValue(properties, key) : nullptr;
    double number = otherwise;
    if (value != nullptr && CFGetTypeID(value) == CFNumberGetTypeID())
        CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberDoubleType, &number);
    return number;
}

CGDisplayStream::Options optionsFrom(CGDirectDisplayID display, size_t width, size_t height,
                                     CFDictionaryRef properties) noexcept {
    CGDisplayStream::Options options;
    options.display = display;
    options.width = static_cast<int>(width);
    options.height = static_cast<int>(height);
    const double depth = numberOr(defaultQueueDepth, properties, kCGDisplayStreamQueueDepth);
    options.queueDepth =
        static_cast<int>(std::clamp<double>(depth, leastQueueDepth, greatestQueueDepth));
    const double seconds = numberOr(0, properties, kCGDisplayStreamMinimumFrameTime);
    options.minimumMicros = static_cast<std::int64_t>(std::clamp(seconds, 0.0, 3600.0) * 1e6);
    if (properties != nullptr &&
        CFDictionaryGetValue(properties, kCGDisplayStreamShowCursor) == kCFBooleanTrue)
        vlog.info("The pointer cannot be drawn into frames on X11");
    return options;
}

Ref<CGDisplayStream> createStream(CGDirectDisplayID display, size_t width, size_t height,
                                  int32_t pixelFormat, CFDictionaryRef properties,
                                  dispatch_queue_t queue,
                                  CGDisplayStreamFrameAvailableHandler handler) {
    if (pixelFormat != formatBgra || handler == nullptr || width == 0 || height == 0 ||
        width > greatestSide || height > greatestSide) {
        vlog.error("No stream of %zu x %zu pixels in format 0x%x", width, height,
                   static_cast<unsigned>(pixelFormat));
        return {};
    }
    return CGDisplayStream::create(optionsFrom(display, width, height, properties), queue, handler);
}

} // namespace

/// The stream's entry in a run loop. The run loop may keep it longer than the stream lives.
class CGDisplayStream::Source final : public platform::RunLoopSource {
public:
    explicit Source(CGDisplayStream& owner) noexcept : stream(&owner) {}

    void attach(GMainContext* served) override {
        if (stream != nullptr)
            stream->serveIn(served);
    }
    void detach() override { attach(nullptr); }
    void forgetStream() noexcept { stream = nullptr; }

private:
    CGDisplayStream* stream;
};

Ref<CGDisplayStream> CGDisplayStream::create(const Options& options, dispatch_queue_t queue,
                                             CGDisplayStreamFrameAvailableHandler handler) {
    auto stream = Ref<CGDisplayStream>::adopt(new CGDisplayStream(options, queue, handler));
    return stream->connect() ? stream : Ref<CGDisplayStream>();
}

CGDisplayStream::CGDisplayStream(const Options& given, dispatch_queue_t onQueue,
                                 CGDisplayStreamFrameAvailableHandler onFrame)
    : Object(platform::ObjectType::DisplayStream), options(given), handler(Block_copy(onFrame)),
      queue(onQueue) {
    if (queue == nullptr)
        source = Ref<Source>::adopt(new Source(*this));
}

CGDisplayStream::~CGDisplayStream() {
    if (source)
        source->forgetStream();
    watch.reset();
    Block_release(handler);
}

/// Finds the display. Errors: false, with the reason in the log.
bool CGDisplayStream::connect() {
    connection = Connection::open();
    if (connection == nullptr)
        return false;
    const platform::x11::SigpipeGuard guard(*connection);
    const auto display = platform::x11::findDisplay(*connection, options.display);
    if (!display) {
        vlog.error("There is no display %u", options.display);
        return false;
    }
    setup.display = display->id;
    setup.place = display->place;
    setup.width = options.width;
    setup.height = options.height;
    setup.frames = options.queueDepth;
    setup.frameInterval = options.minimumMicros != 0
                              ? std::max(options.minimumMicros, shortestFrameMicros)
                              : static_cast<std::int64_t>(1e6 / display->refreshHz);
    return true;
}

CGError CGDisplayStream::start() {
    if (watch != nullptr)
        return kCGErrorCannotComplete;
    if (connection == nullptr && !connect())
        return kCGErrorInvalidConnection;
    watch = ScreenWatch::open(std::move(connection), setup, *this);
    if (watch == nullptr)
        return kCGErrorFailure;
    isRunning = true;
    if (queue != nullptr)
        serveOnQueue();
    else if (context != nullptr)
        watch->attach(context);
    return kCGErrorSuccess;
}

// From here on the watch is the queue's, which also takes it down.
void CGDisplayStream::serveOnQueue() {
    heldQueue = platform::retainQueue(queue);
    GMainContext* const served = platform::contextOf(queue);
    ScreenWatch* const started = watch.get();
    dispatch_async(queue, ^{
      started->attach(served);
    });
}

CGError CGDisplayStream::stop() {
    const bool wasRunning = isRunning.exchange(false);
    connection.reset();
    dropWatch();
    if (wasRunning)
        call(kCGDisplayStreamFrameStatusStopped, nullptr, nullptr);
    return kCGErrorSuccess;
}

// On a queue the watch may be at work right now: it is then taken down where it works.
void CGDisplayStream::dropWatch() {
    if (queue == nullptr || watch == nullptr) {
        watch.reset();
        return;
    }
    ScreenWatch* const old = watch.release();
    CFRetain(this); // its sink, until it is gone
    dispatch_async(queue, ^{
      delete old;
      CFRelease(this);
    });
    heldQueue.reset();
}

platform::RunLoopSource* CGDisplayStream::runLoopSource() const noexcept {
    return source.get();
}

void CGDisplayStream::serveIn(GMainContext* newContext) {
    context = newContext;
    if (watch == nullptr)
        return;
    if (context != nullptr)
        watch->attach(context);
    else
        watch->detach();
}

void CGDisplayStream::onFrame(platform::Surface& surface, const platform::FrameChange& change) {
    if (!isRunning)
        return;
    // The host may stop and release the stream from inside its handler.
    const auto self = Ref<CGDisplayStream>::share(this);
    const auto kept = Ref<platform::Surface>::share(&surface);
    const auto update = Ref<CGDisplayStreamUpdate>::adopt(
        new CGDisplayStreamUpdate(change.dirty, change.moved, change.shift.dx, change.shift.dy));
    call(kCGDisplayStreamFrameStatusFrameComplete, &surface, update.get());
}

void CGDisplayStream::onEnd() {
    const auto self = Ref<CGDisplayStream>::share(this);
    if (isRunning.exchange(false))
        call(kCGDisplayStreamFrameStatusStopped, nullptr, nullptr);
}

void CGDisplayStream::call(CGDisplayStreamFrameStatus status, platform::Surface* surface,
                           CGDisplayStreamUpdateRef update) {
    platform::runGuarded("The frame handler",
                         [&] { handler(status, monotonicNanos(), surface, update); });
}

CGDisplayStreamRef CGDisplayStreamCreate(CGDirectDisplayID display, size_t outputWidth,
                                         size_t outputHeight, int32_t pixelFormat,
                                         CFDictionaryRef properties,
                                         CGDisplayStreamFrameAvailableHandler handler) {
    return createStream(display, outputWidth, outputHeight, pixelFormat, properties, nullptr,
                        handler)
        .detach();
}

CGDisplayStreamRef
CGDisplayStreamCreateWithDispatchQueue(CGDirectDisplayID display, size_t outputWidth,
                                       size_t outputHeight, int32_t pixelFormat,
                                       CFDictionaryRef properties, dispatch_queue_t queue,
                                       CGDisplayStreamFrameAvailableHandler handler) {
    if (queue == nullptr)
        return nullptr;
    return createStream(display, outputWidth, outputHeight, pixelFormat, properties, queue, handler)
        .detach();
}

CFRunLoopSourceRef CGDisplayStreamGetRunLoopSource(CGDisplayStreamRef stream) {
    return stream != nullptr ? stream->runLoopSource() : nullptr;
}

CGError CGDisplayStreamStart(CGDisplayStreamRef stream) {
    return stream != nullptr ? stream->start() : kCGErrorIllegalArgument;
}

CGError CGDisplayStreamStop(CGDisplayStreamRef stream) {
    return stream != nullptr ? stream->stop() : kCGErrorIllegalArgument;
}
