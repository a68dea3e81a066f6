#pragma once

namespace platform::x11 {

/// How many pixels of the server make one point on each side: what GDK_SCALE says, when that is a
/// whole number from 1 to 4, else 1.
int displayScale() noexcept;

} // namespace platform::x11
