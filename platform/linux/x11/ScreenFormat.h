#pragma once

#include "platform/linux/graphics/PixelFormat.h"
#include "platform/linux/x11/Connection.h"

namespace platform::x11 {

/// How the server lays out images of the root window; not supported (see there) for a visual that
/// is not made of colour masks.
PixelFormat screenFormat(const Connection& connection) noexcept;

/// Whether images of this server have the most significant byte first.
bool isBigEndian(const Connection& connection) noexcept;

} // namespace platform::x11
