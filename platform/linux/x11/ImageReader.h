#pragma once

#include "platform/linux/graphics/PixelFormat.h"
#include "platform/linux/x11/FrameReader.h"

#include <xcb/render.h>

#include <deque>

namespace platform::x11 {

/// The ways down: pixels are fetched as images, rectangle by rectangle, and copied into the frame
/// as opaque BGRA. Through shared memory where the server allows that, else through the socket in
/// slices; from the screen itself or, where RENDER is there, from a pixmap of depth 32 that the
/// server composes first.
class ImageReader final : public FrameReader {
public:
    /// `memory` is what images travel in; Private stands for the socket.
    /// Errors: null, with the reason in the log, when the server refuses or its pixels have a
    /// layout that cannot be converted.
    static std::unique_ptr<ImageReader> open(Connection& connection, const Setup& setup,
                                             SurfaceMemory memory);
    ~ImageReader() override;

    void send(Frame& frame, const Viewport& viewport, std::span<const PixelRect> area,
              xcb_xfixes_region_t region) override;
    Progress poll() override;

private:
    /// One image that was asked for and has not come yet.
    struct Piece {
        PixelRect rect; ///< in the frame
        unsigned sequence;
        std::uint32_t offset; ///< into the shared segment
    };

    explicit ImageReader(Connection& server) : FrameReader(server) {}
    bool openStaging(const Setup& setup);
    bool openTransport(const Setup& setup, SurfaceMemory memory);
    void compose(const Viewport& viewport, std::span<const PixelRect> rects);
    void fetch(const Viewport& viewport, const PixelRect& rect);
    void fetchSlice(const Viewport& viewport, const PixelRect& rect);
    bool copyPiece(const Piece& piece, void* reply);
    int rowsPerSlice(int width) const noexcept;

    PixelFormat format;
    Frame* target = nullptr;
    std::deque<Piece> pending;
    bool hasFailed = false;

    Ref<Surface> transport; ///< null: the socket
    std::uint32_t segment = 0;
    std::uint32_t used = 0; ///< bytes of the segment that this read has given out

    xcb_pixmap_t staging = 0; ///< 0: images come from the screen itself
    xcb_render_picture_t screenPicture = 0;
    xcb_render_picture_t stagingPicture = 0;
};

} // namespace platform::x11
