#pragma once

#include "platform/linux/graphics/PixelRect.h"
#include "platform/linux/x11/Connection.h"

#include <CoreGraphics/CGDirectDisplay.h>

#include <optional>
#include <string>
#include <vector>

namespace platform::x11 {

/// One display of an X screen.
struct DisplayInfo {
    CGDirectDisplayID id = 0;
    PixelRect place; ///< in root coordinates; pixels
    bool isPrimary = false;
    double refreshHz = 60; ///< 60 where the server does not say
    std::string name;

    friend bool operator==(const DisplayInfo&, const DisplayInfo&) = default;
};

/// The identifier of the whole screen, on a server that knows no displays.
constexpr CGDirectDisplayID wholeScreenId = 1;

/// All displays that are on, the primary one first. A server without RANDR 1.5 has one, the whole
/// screen. Waits for the server's answers, a few seconds at most.
/// Errors: empty, with the reason in the log.
std::vector<DisplayInfo> listDisplays(Connection& connection);

/// The display of that identifier; for 0 the primary one. Null if there is none.
std::optional<DisplayInfo> findDisplay(Connection& connection, CGDirectDisplayID id);

} // namespace platform::x11
