#include "platform/linux/x11/ImageReader.h"

#include "plat/LogWriter.h"
#include "platform/linux/x11/RenderFormats.h"
#include "platform/linux/x11/ScreenFormat.h"

#include <xcb/shm.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <cstring>

static plat::LogWriter vlog("ImageReader");

namespace platform::x11 {
namespace {

constexpr std::uint8_t stagingDepth = 32;
constexpr std::uint32_t allPlanes = ~0U;
constexpr std::size_t sliceBytes = std::size_t{1} << 20; // of a reply through the socket

constexpr PixelFormat bgraFormat{32, 32, false, 0x00ff0000, 0x0000ff00, 0x000000ff};

} // namespace

std::unique_ptr<ImageReader> ImageReader::open(Connection& connection, const Setup& setup,
                                               SurfaceMemory memory) {
    std::unique_ptr<ImageReader> reader(new ImageReader(connection));
    if (!reader->openStaging(setup)) {
        reader->format = screenFormat(connection);
        if (!reader->format.isSupported()) {
            vlog.error("The screen's pixels (depth %d) cannot be converted to BGRA",
                       int{connection.screen().root_depth});
            return nullptr;
        }
    }
    if (!reader->makeFrames(setup, SurfaceMemory::Private) || !reader->openTransport(setup, memory))
        return nullptr;
    return reader;
}

ImageReader::~ImageReader() {
    xcb_connection_t* xcb = connection.get();
    for (const Piece& piece : pending)
        xcb_discard_reply(xcb, piece.sequence);
    if (segment != 0)
        xcb_shm_detach(xcb, segment);
    if (stagingPicture != 0)
        xcb_render_free_picture(xcb, stagingPicture);
    if (screenPicture != 0)
        xcb_render_free_picture(xcb, screenPicture);
    if (staging != 0)
        xcb_free_pixmap(xcb, staging);
}

bool ImageReader::openStaging(const Setup& setup) {
    if (!connection.extensions().render)
        return false;
    const RenderFormats formats = RenderFormats::find(connection);
    if (!formats.areUsable())
        return false;
    screenPicture = createScreenPicture(connection, formats.screen);
    if (screenPicture == 0)
        return false;
    xcb_connection_t* xcb = connection.get();
    const xcb_pixmap_t pixmap = connection.newId();
    const auto asked = xcb_create_pixmap_checked(xcb, stagingDepth, pixmap, connection.root(),
                                                 static_cast<std::uint16_t>(setup.width),
                                                 static_cast<std::uint16_t>(setup.height));
    if (!connection.check(asked, "A pixmap to compose into"))
        return false;
    const xcb_render_picture_t picture = connection.newId();
    const auto pictureAsked =
        xcb_render_create_picture_checked(xcb, picture, pixmap, formats.bgra, 0, nullptr);
    if (!connection.check(pictureAsked, "A picture to compose into")) {
        xcb_free_pixmap(xcb, pixmap);
        return false;
    }
    staging = pixmap;
    stagingPicture = picture;
    format = bgraFormat;
    format.isBigEndian = isBigEndian(connection);
    return true;
}

bool ImageReader::openTransport(const Setup& setup, SurfaceMemory memory) {
    if (memory == SurfaceMemory::Private)
        return true;
    transport = Surface::create(setup.width, setup.height, memory);
    const std::uint32_t id = connection.newId();
    if (!transport || !attachSegment(connection, *transport, id))
        return false;
    segment = id;
    return true;
}

void ImageReader::send(Frame& frame, const Viewport& viewport, std::span<const PixelRect> area,
                       xcb_xfixes_region_t /*region*/) {
    target = &frame;
    hasFailed = false;
    used = 0;
    const Region wanted = Region(area).intersected(Region(viewport.visible));
    if (staging != 0)
        compose(viewport, wanted.rectangles());
    for (const PixelRect& rect : wanted.rectangles())
        fetch(viewport, rect);
    blackenGone(*frame.surface, viewport, area);
}

void ImageReader::compose(const Viewport& viewport, std::span<const PixelRect> rects) {
    for (const PixelRect& rect : rects) {
        const auto left = static_cast<std::int16_t>(rect.left);
        const auto top = static_cast<std::int16_t>(rect.top);
        xcb_render_composite(connection.get(), XCB_RENDER_PICT_OP_SRC, screenPicture, 0,
                             stagingPicture, static_cast<std::int16_t>(viewport.x + left),
                             static_cast<std::int16_t>(viewport.y + top), 0, 0, left, top,
                             static_cast<std::uint16_t>(rect.width()),
                             static_cast<std::uint16_t>(rect.height()));
    }
}

int ImageReader::rowsPerSlice(int width) const noexcept {
    return std::max(1, static_cast<int>(sliceBytes / format.strideBytes(width)));
}

void ImageReader::fetch(const Viewport& viewport, const PixelRect& rect) {
    const int rows = transport ? rect.height() : rowsPerSlice(rect.width());
    for (PixelRect slice = rect; slice.top < rect.bottom; slice.top = slice.bottom) {
        slice.bottom = std::min(slice.top + rows, rect.bottom);
        fetchSlice(viewport, slice);
    }
}

void ImageReader::fetchSlice(const Viewport& viewport, const PixelRect& rect) {
    const xcb_drawable_t from = staging != 0 ? staging : connection.root();
    const PixelRect place = staging != 0 ? rect : viewport.toRoot(rect);
    const auto x = static_cast<std::int16_t>(place.left);
    const auto y = static_cast<std::int16_t>(place.top);
    const auto width = static_cast<std::uint16_t>(place.width());
    const auto height = static_cast<std::uint16_t>(place.height());
    Piece piece{rect, 0, used};
    if (transport) {
        piece.sequence = xcb_shm_get_image(connection.get(), from, x, y, width, height, allPlanes,
                                           XCB_IMAGE_FORMAT_Z_PIXMAP, segment, used)
                             .sequence;
        used += static_cast<std::uint32_t>(format.strideBytes(rect.width()) *
                                           static_cast<std::size_t>(rect.height()));
    } else {
        piece.sequence = xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, from, x, y,
                                       width, height, allPlanes)
                             .sequence;
    }
    pending.push_back(piece);
}

FrameReader::Progress ImageReader::poll() {
    while (!pending.empty()) {
        void* answer = nullptr;
        xcb_generic_error_t* problem = nullptr;
        if (xcb_poll_for_reply(connection.get(), pending.front().sequence, &answer, &problem) == 0)
            return Progress::Pending;
        const Reply<void> reply(answer);
        const Reply<xcb_generic_error_t> error(problem);
        // A screen that shrank meanwhile refuses what lies outside; its new size is on the way.
        if (reply == nullptr || !copyPiece(pending.front(), reply.get()))
            hasFailed = true;
        pending.pop_front();
    }
    return hasFailed ? Progress::Failed : Progress::Done;
}

bool ImageReader::copyPiece(const Piece& piece, void* reply) {
    const PixelRect& rect = piece.rect;
    const std::size_t stride = format.strideBytes(rect.width());
    const std::size_t size = stride * static_cast<std::size_t>(rect.height());
    const std::uint8_t* from = nullptr;
    if (transport) {
        from = transport->pixels() + piece.offset;
    } else {
        const auto* image = static_cast<const xcb_get_image_reply_t*>(reply);
        if (static_cast<std::size_t>(xcb_get_image_data_length(image)) < size) {
            vlog.error("The server sent an image that is too short");
            return false;
        }
        from = xcb_get_image_data(image);
    }
    Surface& surface = *target->surface;
    std::uint8_t* to = surface.pixels() +
                       static_cast<std::size_t>(rect.top) * surface.strideBytes() +
                       static_cast<std::size_t>(rect.left) * 4;
    format.toBgra(from, stride, to, surface.strideBytes(), rect.width(), rect.height());
    return true;
}

} // namespace platform::x11
