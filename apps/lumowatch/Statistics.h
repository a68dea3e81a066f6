#pragma once

#include <cstdint>

namespace lumowatch {

/// What was seen, for the closing summary.
struct Statistics {
    double seconds = 0;
    std::int64_t frames = 0;        ///< reports of changed areas
    std::int64_t grabs = 0;         ///< hand-overs of pixels
    std::int64_t changedPixels = 0; ///< areas of all changed rectangles, added up
    std::int64_t movedAreas = 0;
    std::int64_t pictures = 0; ///< files written
    double cpuSeconds = 0;     ///< of this process
};

} // namespace lumowatch
