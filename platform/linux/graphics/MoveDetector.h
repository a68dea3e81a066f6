#pragma once

#include "platform/linux/graphics/FrameChange.h"
#include "platform/linux/graphics/Surface.h"

#include <optional>
#include <span>

namespace platform {

/// Where to look for moves: a scroll goes along one axis, and samples find it; a window goes
/// anywhere, and finding that takes a look at every pixel that changed.
enum class MoveSearch { Scrolls, ScrollsAndWindows };

/// Finds what moved inside the changed areas from one frame to the next, looking at pixels alone.
/// Never wrong: every rectangle named was compared pixel by pixel with its source. May miss moves:
/// small ones, and those of pictures that look the same everywhere.
/// Both frames have the same size; the rectangles lie inside them.
/// Cost: for a scroll, well under a copy of the box, as samples tell the offset, and one comparison
/// of what then counts as moved.
void findMoves(const Surface& before, const Surface& after, MoveSearch search, FrameChange& change);

/// The parts of `area` that equal `before` at the offset; disjoint, each at least 16 x 8 pixels.
std::vector<PixelRect> movedParts(const Surface& before, const Surface& after,
                                  std::span<const PixelRect> area, Shift shift);

} // namespace platform
