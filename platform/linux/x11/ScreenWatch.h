#pragma once

#include "platform/linux/graphics/FrameChange.h"
#include "platform/linux/graphics/Region.h"
#include "platform/linux/x11/ConnectionSource.h"
#include "platform/linux/x11/DamageWatch.h"
#include "platform/linux/x11/DrainThread.h"
#include "platform/linux/x11/FramePacer.h"
#include "platform/linux/x11/FrameReader.h"
#include "platform/linux/x11/GeometryWatch.h"

#include <glib.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace platform::x11 {

/// Who gets the frames of a ScreenWatch.
/// Threads: called on the thread that runs the context to which the watch is attached.
class FrameSink {
public:
    virtual ~FrameSink() = default;

    /// A new frame; the surface is not written again while it has a use count. May detach and
    /// delete the watch.
    virtual void onFrame(Surface& surface, const FrameChange& change) = 0;

    /// The server is gone. The last call.
    virtual void onEnd() = 0;
};

/// Watches a part of the screen, as one GLib source: sends requests, lets replies come, and hands
/// every new frame on. Never waits. Wakes up for nothing while nothing changes.
/// Threads: one at a time; while the sink is busy for long, a thread of its own takes the damage.
class ScreenWatch {
public:
    struct Setup {
        CGDirectDisplayID display = 0;
        PixelRect place; ///< of the display, in root coordinates
        int width = 0;   ///< of the frames
        int height = 0;
        int frames = 0;
        FramePacer::Micros frameInterval = 0;
    };

    /// Errors: null, with the reason in the log.
    static std::unique_ptr<ScreenWatch> open(std::unique_ptr<Connection> connection,
                                             const Setup& setup, FrameSink& sink);
    ~ScreenWatch();
    ScreenWatch(const ScreenWatch&) = delete;
    ScreenWatch& operator=(const ScreenWatch&) = delete;

    void attach(GMainContext* context);
    void detach();

private:
    class Idleness;

    /// The request that is under way; one at a time.
    struct Request {
        unsigned firstSequence = 0; ///< errors from here to `sequence` belong to it
        unsigned sequence = 0;      ///< whose reply ends it, or its first half
        Frame* frame = nullptr;     ///< null: damage is taken, no pixels
        bool isReading = false;     ///< the reply came, pixels are still on the way
        bool hasFailed = false;
    };

    ScreenWatch(std::unique_ptr<Connection> connection, const Setup& setup, FrameSink& sink);
    bool openParts();

    void dispatch();

    void handleEvents();
    void handleEvent(const xcb_generic_event_t& event);
    void handleError(const xcb_generic_error_t& error);
    void followGeometry();
    Frame* pollRequest();
    bool pollReply();
    void onTaken(const xcb_xfixes_fetch_region_reply_t* answer);
    Frame* finishFrame();
    void tellWhatIsNewer(Frame& frame);
    bool hasNews(const Frame& frame);
    void addDamage(std::span<const PixelRect> rects);
    void damageAll();

    void step();
    std::optional<std::int64_t> drain();
    void handOver(Frame& frame);
    Frame* writableFrame();
    void beginRequest(Frame* frame);
    void sendTake(Frame* frame);
    void sendTimedFrame(Frame& frame);
    void scheduleWake();

    FrameChange takeChange(const Frame& frame);

    PixelRect whole() const noexcept { return PixelRect::ofSize(0, 0, setup.width, setup.height); }

    const std::unique_ptr<Connection> connection;
    const Setup setup;
    FrameSink& sink;

    std::shared_ptr<Idleness> idleness;
    std::unique_ptr<FrameReader> reader;
    std::unique_ptr<DamageWatch> damage; ///< null: the whole screen is read at intervals
    GeometryWatch geometry;
    FramePacer pacer;
    Viewport viewport;

    DamageList changed;           ///< since the last frame that went out
    const Frame* shown = nullptr; ///< the last one that went out, while it holds what it held then
    Request request;
    bool isBusy = false; ///< the request is under way
    int failures = 0;    ///< one after the other

    std::shared_ptr<DrainThread> drainThread;
    ConnectionSource source;
    bool hasEnded = false;
};

} // namespace platform::x11
