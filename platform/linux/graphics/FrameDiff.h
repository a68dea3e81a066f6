#pragma once

#include "platform/linux/graphics/PixelRect.h"
#include "platform/linux/graphics/Surface.h"

#include <span>
#include <vector>

namespace platform {

/// Few rectangles that hold every pixel of `area` in which two frames of the same size differ; none
/// if they are equal there. The rectangles of the area lie inside the frames.
std::vector<PixelRect> differences(const Surface& before, const Surface& after,
                                   std::span<const PixelRect> area);

} // namespace platform
