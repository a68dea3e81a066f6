#pragma once

#include "platform/linux/x11/FrameReader.h"

#include <xcb/render.h>

namespace platform::x11 {

/// The best way: each frame is a pixmap of depth 32 inside shared memory, and the server composes
/// the screen straight into it, opaque alpha included (RENDER, operator Src), clipped to what
/// changed. Nothing is copied here.
class ComposingReader final : public FrameReader {
public:
    /// Errors: null, with the reason in the log, when the server refuses any step.
    static std::unique_ptr<ComposingReader> open(Connection& connection, const Setup& setup,
                                                 SurfaceMemory memory);
    ~ComposingReader() override;

    bool readsUnderRegion() const noexcept override { return true; }
    void send(Frame& frame, const Viewport& viewport, std::span<const PixelRect> area,
              xcb_xfixes_region_t region) override;
    Progress poll() override { return Progress::Done; }

private:
    explicit ComposingReader(Connection& server) : FrameReader(server) {}
    bool attach(Frame& frame, const Setup& setup, xcb_render_pictformat_t format);
    void clip(const Frame& frame, const Viewport& viewport, std::span<const PixelRect> area,
              xcb_xfixes_region_t region);
    void fillGone(const Frame& frame, const Viewport& viewport, std::span<const PixelRect> area);

    xcb_render_picture_t screenPicture = 0;
    xcb_xfixes_region_t clipRegion = 0;
};

} // namespace platform::x11
