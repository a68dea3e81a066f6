#pragma once

#include "platform/linux/graphics/PixelRect.h"

namespace platform::x11 {

/// Where a stream's frame lies on the screen. The frame keeps the size that the stream was made
/// with; the screen may shrink and grow under it.
struct Viewport {
    int x = 0; ///< the frame's corner in root coordinates
    int y = 0;
    PixelRect visible; ///< the part of the frame that the screen has; in frame coordinates

    friend bool operator==(const Viewport&, const Viewport&) = default;

    PixelRect toFrame(const PixelRect& root) const noexcept { return root.moved(-x, -y); }
    PixelRect toRoot(const PixelRect& frame) const noexcept { return frame.moved(x, y); }
};

} // namespace platform::x11
