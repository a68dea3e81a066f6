#include "platform/linux/x11/ComposingReader.h"

#include "plat/LogWriter.h"
#include "platform/linux/x11/RenderFormats.h"

#include <xcb/shm.h>

static plat::LogWriter vlog("ComposingReader");

namespace platform::x11 {
namespace {

constexpr std::uint8_t bgraDepth = 32;

xcb_rectangle_t toX(const PixelRect& rect) {
    return {static_cast<std::int16_t>(rect.left), static_cast<std::int16_t>(rect.top),
            static_cast<std::uint16_t>(rect.width()), static_cast<std::uint16_t>(rect.height())};
}

std::vector<xcb_rectangle_t> toX(std::span<const PixelRect> rects, const PixelRect& within, int dx,
                                 int dy) {
    std::vector<xcb_rectangle_t> result;
    result.reserve(rects.size());
    for (const PixelRect& rect : rects) {
        if (const PixelRect part = rect.intersection(within); !part.isEmpty())
            result.push_back(toX(part.moved(dx, dy)));
    }
    return result;
}

} // namespace

std::unique_ptr<ComposingReader> ComposingReader::open(Connection& connection, const Setup& setup,
                                                       SurfaceMemory memory) {
    const RenderFormats formats = RenderFormats::find(connection);
    if (!formats.areUsable()) {
        vlog.info("The server cannot compose this screen into BGRA");
        return nullptr;
    }
    std::unique_ptr<ComposingReader> reader(new ComposingReader(connection));
    reader->screenPicture = createScreenPicture(connection, formats.screen);
    if (reader->screenPicture == 0 || !reader->makeFrames(setup, memory))
        return nullptr;
    for (Frame& frame : reader->frames()) {
        if (!reader->attach(frame, setup, formats.bgra))
            return nullptr;
    }
    if (connection.extensions().xfixes) {
        reader->clipRegion = connection.newId();
        xcb_xfixes_create_region(connection.get(), reader->clipRegion, 0, nullptr);
    }
    return reader;
}

ComposingReader::~ComposingReader() {
    xcb_connection_t* xcb = connection.get();
    if (clipRegion != 0)
        xcb_xfixes_destroy_region(xcb, clipRegion);
    for (const Frame& frame : frames()) {
        if (frame.picture != 0)
            xcb_render_free_picture(xcb, frame.picture);
        if (frame.pixmap != 0)
            xcb_free_pixmap(xcb, frame.pixmap);
        if (frame.segment != 0)
            xcb_shm_detach(xcb, frame.segment);
    }
    if (screenPicture != 0)
        xcb_render_free_picture(xcb, screenPicture);
}

bool ComposingReader::attach(Frame& frame, const Setup& setup, xcb_render_pictformat_t format) {
    xcb_connection_t* xcb = connection.get();
    const std::uint32_t segment = connection.newId();
    if (!attachSegment(connection, *frame.surface, segment))
        return false;
    frame.segment = segment;

    const std::uint32_t pixmap = connection.newId();
    const std::uint32_t picture = connection.newId();
    const auto width = static_cast<std::uint16_t>(setup.width);
    const auto height = static_cast<std::uint16_t>(setup.height);
    const auto pixmapAsked = xcb_shm_create_pixmap_checked(xcb, pixmap, connection.root(), width,
                                                           height, bgraDepth, segment, 0);
    if (!connection.check(pixmapAsked, "A pixmap in shared memory"))
        return false;
    frame.pixmap = pixmap;
    const auto pictureAsked =
        xcb_render_create_picture_checked(xcb, picture, pixmap, format, 0, nullptr);
    if (!connection.check(pictureAsked, "A picture in shared memory"))
        return false;
    frame.picture = picture;
    return true;
}

void ComposingReader::send(Frame& frame, const Viewport& viewport, std::span<const PixelRect> area,
                           xcb_xfixes_region_t region) {
    const PixelRect& visible = viewport.visible;
    if (!visible.isEmpty()) {
        clip(frame, viewport, area, region);
        const auto left = static_cast<std::int16_t>(visible.left);
        const auto top = static_cast<std::int16_t>(visible.top);
        xcb_render_composite(connection.get(), XCB_RENDER_PICT_OP_SRC, screenPicture, 0,
                             frame.picture, static_cast<std::int16_t>(viewport.x + left),
                             static_cast<std::int16_t>(viewport.y + top), 0, 0, left, top,
                             static_cast<std::uint16_t>(visible.width()),
                             static_cast<std::uint16_t>(visible.height()));
    }
    fillGone(frame, viewport, area);
}

void ComposingReader::clip(const Frame& frame, const Viewport& viewport,
                           std::span<const PixelRect> area, xcb_xfixes_region_t region) {
    xcb_connection_t* xcb = connection.get();
    if (region == 0) {
        const auto rects = toX(area, viewport.visible, 0, 0);
        xcb_render_set_picture_clip_rectangles(
            xcb, frame.picture, 0, 0, static_cast<std::uint32_t>(rects.size()), rects.data());
        return;
    }
    const auto originX = static_cast<std::int16_t>(-viewport.x);
    const auto originY = static_cast<std::int16_t>(-viewport.y);
    if (area.empty()) {
        xcb_xfixes_set_picture_clip_region(xcb, frame.picture, region, originX, originY);
        return;
    }
    const auto rects = toX(area, viewport.visible, viewport.x, viewport.y);
    xcb_xfixes_set_region(xcb, clipRegion, static_cast<std::uint32_t>(rects.size()), rects.data());
    xcb_xfixes_union_region(xcb, clipRegion, region, clipRegion);
    xcb_xfixes_set_picture_clip_region(xcb, frame.picture, clipRegion, originX, originY);
}

// By the server too: what it does comes in order, a write from here could overtake it.
void ComposingReader::fillGone(const Frame& frame, const Viewport& viewport,
                               std::span<const PixelRect> area) {
    const Region gone = Region(area).minus(Region(viewport.visible));
    if (gone.isEmpty())
        return;
    const auto rects = toX(gone.rectangles(), gone.boundingBox(), 0, 0);
    const std::uint32_t noClip = XCB_PIXMAP_NONE;
    xcb_render_change_picture(connection.get(), frame.picture, XCB_RENDER_CP_CLIP_MASK, &noClip);
    const xcb_render_color_t black{0, 0, 0, 0xffff};
    xcb_render_fill_rectangles(connection.get(), XCB_RENDER_PICT_OP_SRC, frame.picture, black,
                               static_cast<std::uint32_t>(rects.size()), rects.data());
}

} // namespace platform::x11
