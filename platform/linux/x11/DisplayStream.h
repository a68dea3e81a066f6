#pragma once

#include "platform/linux/core/DispatchQueue.h"
#include "platform/linux/core/Ref.h"
#include "platform/linux/core/RunLoopSource.h"
#include "platform/linux/x11/ScreenWatch.h"

#include <Block.h>
#include <CoreGraphics/CGDisplayStream.h>

#include <atomic>
#include <memory>

/// A stream of frames of one display, over X11. It holds nothing of the server or the system while
/// it is stopped, so that one that is never released costs next to nothing.
/// Threads: started and stopped by one thread at a time; the handler runs on the run loop that
/// serves the stream's source, or on its queue.
struct CGDisplayStream final : platform::Object, private platform::x11::FrameSink {
    struct Options {
        CGDirectDisplayID display = 0;
        int width = 0;
        int height = 0;
        int queueDepth = 0;             ///< surfaces in the pool
        std::int64_t minimumMicros = 0; ///< between two frames; 0: as the display refreshes
    };

    /// Errors: null, with the reason in the log, when the display cannot be watched.
    static platform::Ref<CGDisplayStream> create(const Options& options, dispatch_queue_t queue,
                                                 CGDisplayStreamFrameAvailableHandler handler);
    ~CGDisplayStream() override;

    CGError start();

    /// No call of the handler begins after this but the stopped notice, which comes from inside it.
    CGError stop();

    /// Null for a stream on a queue. Ownership: the stream's.
    platform::RunLoopSource* runLoopSource() const noexcept;

private:
    class Source;

    CGDisplayStream(const Options& options, dispatch_queue_t queue,
                    CGDisplayStreamFrameAvailableHandler handler);
    bool connect();
    void serveIn(GMainContext* newContext);
    void serveOnQueue();
    void dropWatch();
    void onFrame(platform::Surface& surface, const platform::FrameChange& change) override;
    void onEnd() override;
    void call(CGDisplayStreamFrameStatus status, platform::Surface* surface,
              CGDisplayStreamUpdateRef update);

    const Options options;
    const CGDisplayStreamFrameAvailableHandler handler;
    dispatch_queue_t const queue;
    platform::Ref<platform::DispatchQueue> heldQueue; ///< while the stream runs
    platform::Ref<Source> source;
    GMainContext* context = nullptr; ///< where the watch is served, or will be

    std::unique_ptr<platform::x11::Connection> connection; ///< found good, not in use yet
    platform::x11::ScreenWatch::Setup setup;
    std::unique_ptr<platform::x11::ScreenWatch> watch;
    std::atomic<bool> isRunning = false;
};
