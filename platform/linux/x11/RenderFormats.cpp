#include "platform/linux/x11/RenderFormats.h"

namespace platform::x11 {
namespace {

bool isBgra(const xcb_render_pictforminfo_t& format) {
    const auto& bits = format.direct;
    return format.type == XCB_RENDER_PICT_TYPE_DIRECT && format.depth == 32 &&
           bits.blue_shift == 0 && bits.green_shift == 8 && bits.red_shift == 16 &&
           bits.alpha_shift == 24 && bits.blue_mask == 0xff && bits.green_mask == 0xff &&
           bits.red_mask == 0xff && bits.alpha_mask == 0xff;
}

xcb_render_pictformat_t formatOfVisual(const xcb_render_query_pict_formats_reply_t& formats,
                                       xcb_visualid_t visual) {
    for (auto screen = xcb_render_query_pict_formats_screens_iterator(&formats); screen.rem != 0;
         xcb_render_pictscreen_next(&screen)) {
        for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem != 0;
             xcb_render_pictdepth_next(&depth)) {
            for (auto it = xcb_render_pictdepth_visuals_iterator(depth.data); it.rem != 0;
                 xcb_render_pictvisual_next(&it)) {
                if (it.data->visual == visual)
                    return it.data->format;
            }
        }
    }
    return 0;
}

} // namespace

RenderFormats RenderFormats::find(Connection& connection) {
    RenderFormats found;
    const auto formats = connection.wait<xcb_render_query_pict_formats_reply_t>(
        xcb_render_query_pict_formats(connection.get()).sequence, "RENDER formats");
    if (formats == nullptr)
        return found;
    found.screen = formatOfVisual(*formats, connection.screen().root_visual);
    for (auto it = xcb_render_query_pict_formats_formats_iterator(formats.get());
         it.rem != 0 && found.bgra == 0; xcb_render_pictforminfo_next(&it)) {
        if (isBgra(*it.data))
            found.bgra = it.data->id;
    }
    return found;
}

xcb_render_picture_t createScreenPicture(Connection& connection, xcb_render_pictformat_t format) {
    const xcb_render_picture_t picture = connection.newId();
    // Without this the windows on the root would be left out.
    const std::uint32_t mode = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
    const auto cookie = xcb_render_create_picture_checked(
        connection.get(), picture, connection.root(), format, XCB_RENDER_CP_SUBWINDOW_MODE, &mode);
    return connection.check(cookie, "A picture of the screen") ? picture : 0;
}

} // namespace platform::x11
