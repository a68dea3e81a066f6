#pragma once

#include "platform/linux/graphics/PixelRect.h"

#include <CoreGraphics/CGDirectDisplay.h>
#include <xcb/randr.h>

#include <vector>

namespace platform::x11 {

/// One display as RANDR 1.5 knows it.
struct Monitor {
    CGDirectDisplayID id = 0;
    PixelRect place; ///< in root coordinates
    bool isPrimary = false;
    xcb_atom_t name = 0;
    xcb_randr_output_t output = 0; ///< its first one, or 0
};

/// A monitor is named by its first output, which it keeps while others come and go; one that has
/// none (a part of the screen that somebody declared a monitor), by its name.
constexpr CGDirectDisplayID nameFlag = 0x80000000;

/// The monitors of an answer, in the server's order.
std::vector<Monitor> monitorsOf(const xcb_randr_get_monitors_reply_t& answer);

/// The one of that identifier; for 0 the primary one, or else the first. Null if there is none.
const Monitor* findMonitor(const std::vector<Monitor>& monitors, CGDirectDisplayID id) noexcept;

} // namespace platform::x11
