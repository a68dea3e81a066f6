#pragma once

#include "platform/linux/graphics/PixelRect.h"

#include <vector>

namespace platform {

/// From where a moved area came. Units: pixels, from the area back to its source.
struct Shift {
    int dx = 0;
    int dy = 0;

    friend bool operator==(const Shift&, const Shift&) = default;
};

/// What one frame changes against the one before. Units: pixels of the frame.
struct FrameChange {
    std::vector<PixelRect> dirty; ///< everything that changed, moved areas included
    std::vector<PixelRect> moved; ///< of it, what stood elsewhere in the frame before
    Shift shift;                  ///< of all moved areas
};

} // namespace platform
