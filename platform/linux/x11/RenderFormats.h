#pragma once

#include "platform/linux/x11/Connection.h"

#include <xcb/render.h>

namespace platform::x11 {

/// The two picture formats that reading the screen needs; 0 for one that the server lacks.
struct RenderFormats {
    xcb_render_pictformat_t screen = 0; ///< of the root window's visual
    xcb_render_pictformat_t bgra = 0;   ///< depth 32: blue, green, red, alpha in byte order

    bool areUsable() const noexcept { return screen != 0 && bgra != 0; }

    /// Asks the server, once. Units: pixel layouts as in the RENDER protocol's PICTFORMINFO.
    static RenderFormats find(Connection& connection);
};

/// A picture of the root window that shows the windows on it too; 0 if the server refuses.
xcb_render_picture_t createScreenPicture(Connection& connection, xcb_render_pictformat_t format);

} // namespace platform::x11
