#include "platform/linux/x11/ScreenFormat.h"

namespace platform::x11 {
namespace {

const xcb_visualtype_t* findVisual(const xcb_screen_t& screen) {
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem != 0;
         xcb_depth_next(&depth)) {
        for (auto it = xcb_depth_visuals_iterator(depth.data); it.rem != 0;
             xcb_visualtype_next(&it)) {
            if (it.data->visual_id == screen.root_visual)
                return it.data;
        }
    }
    return nullptr;
}

} // namespace

PixelFormat screenFormat(const Connection& connection) noexcept {
    PixelFormat format;
    const xcb_visualtype_t* visual = findVisual(connection.screen());
    const bool hasMasks = visual != nullptr && (visual->_class == XCB_VISUAL_CLASS_TRUE_COLOR ||
                                                visual->_class == XCB_VISUAL_CLASS_DIRECT_COLOR);
    if (!hasMasks)
        return format;
    format.isBigEndian = isBigEndian(connection);
    format.redMask = visual->red_mask;
    format.greenMask = visual->green_mask;
    format.blueMask = visual->blue_mask;
    const xcb_setup_t* setup = xcb_get_setup(connection.get());
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem != 0; xcb_format_next(&it)) {
        if (it.data->depth == connection.screen().root_depth) {
            format.bitsPerPixel = it.data->bits_per_pixel;
            format.rowPadBits = it.data->scanline_pad;
        }
    }
    return format;
}

bool isBigEndian(const Connection& connection) noexcept {
    return xcb_get_setup(connection.get())->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
}

} // namespace platform::x11
