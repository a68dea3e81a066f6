#pragma once

#include "platform/linux/core/Ref.h"
#include "platform/linux/graphics/Region.h"
#include "platform/linux/graphics/Surface.h"
#include "platform/linux/x11/Connection.h"
#include "platform/linux/x11/Viewport.h"

#include <xcb/xfixes.h>

#include <memory>
#include <span>
#include <vector>

namespace platform::x11 {

/// One surface of a stream's small pool, and what of the screen it has missed.
struct Frame {
    Ref<Surface> surface;
    DamageList missed;

    // The server's side of it; 0 where the way of reading needs none.
    std::uint32_t segment = 0;
    std::uint32_t pixmap = 0;
    std::uint32_t picture = 0;
};

/// Brings frames up to date with the screen, one way or another, without ever waiting in the run
/// loop: a read is sent, and its end is seen by polling. Owns the frames.
/// Threads: one at a time.
class FrameReader {
public:
    enum class Progress { Pending, Done, Failed };

    struct Setup {
        int width = 0; ///< of a frame, in pixels
        int height = 0;
        int frames = 0;
        std::shared_ptr<SurfaceIdleListener> listener;
    };

    /// The best way that this server allows; each step down leaves its reason in the log.
    /// Errors: null, with the reason in the log, when there is none.
    static std::unique_ptr<FrameReader> open(Connection& connection, const Setup& setup);

    virtual ~FrameReader() = default;
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;

    /// True: the server can copy exactly what a region of its own holds, before anybody here knows
    /// which rectangles those are.
    virtual bool readsUnderRegion() const noexcept { return false; }

    /// Sends what brings this area of the frame up to date, and with it what `region` holds (0 for
    /// none; root coordinates). What the screen does not have becomes opaque black.
    /// Units: `area` in pixels of the frame.
    virtual void send(Frame& frame, const Viewport& viewport, std::span<const PixelRect> area,
                      xcb_xfixes_region_t region) = 0;

    /// Whether the last read has ended. A reader that reads under a region is done as soon as any
    /// later request was answered, and says Done at once.
    virtual Progress poll() = 0;

    std::vector<Frame>& frames() noexcept { return pool; }

    /// A frame that nobody holds; `last` only if there is no other. Null if all are held.
    Frame* idleFrame(const Frame* last) noexcept;

protected:
    explicit FrameReader(Connection& server) : connection(server) {}

    /// Makes the pool, every frame of it missing the whole screen; false if memory is refused.
    bool makeFrames(const Setup& setup, SurfaceMemory memory);

    Connection& connection;

private:
    std::vector<Frame> pool;
};

/// Makes a surface known to the server as a shared segment; false (and a log line) if it refuses.
bool attachSegment(Connection& connection, Surface& surface, std::uint32_t segment);

/// Makes the part of `area` that the viewport does not show opaque black, in this process.
void blackenGone(Surface& surface, const Viewport& viewport, std::span<const PixelRect> area);

} // namespace platform::x11
