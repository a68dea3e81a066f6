#pragma once

#include "platform/linux/core/Ref.h"
#include "platform/linux/graphics/Image.h"
#include "platform/linux/graphics/PixelRect.h"
#include "platform/linux/x11/Connection.h"

namespace platform::x11 {

/// A picture of a part of the screen, as the server shows it now; opaque. What lies outside the
/// screen is left out. Waits for the server's answer, a few seconds at most.
/// Units: root coordinates. Errors: null, with the reason in the log.
Ref<CGImage> readImage(Connection& connection, const PixelRect& area);

} // namespace platform::x11
