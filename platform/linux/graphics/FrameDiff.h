#pragma once

#include "platform/linux/graphics/PixelRect.h"
#include "platform/linux/graphics/Surface.h"

#include <vector>

namespace platform {

/// Few rectangles that hold every pixel in which two frames of the same size differ; none if they
/// are equal. For a server that does not report damage.
std::vector<PixelRect> differences(const Surface& before, const Surface& after);

} // namespace platform
