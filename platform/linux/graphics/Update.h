#pragma once

#include "platform/linux/core/Object.h"
#include "platform/linux/core/Ref.h"
#include "platform/linux/graphics/Region.h"

#include <CoreGraphics/CGDisplayStream.h>

#include <mutex>
#include <span>
#include <vector>

/// What changed from one frame to a later one. Two statements, both about whole pixels:
/// outside the dirty rectangles nothing differs; and each pixel of a moved rectangle shows what the
/// earlier frame showed at that place plus the offset. Dirty covers everything moved.
/// Shape: at most platform::maxListedRects rectangles of either kind, disjoint. Where there would
/// be more, dirty ones are joined and cover too much; small moved ones are left out.
/// Threads: any; it does not change.
struct CGDisplayStreamUpdate final : platform::Object {
    /// Rectangles may overlap, and `dirty` need not repeat those moved; without an offset nothing
    /// counts as moved.
    explicit CGDisplayStreamUpdate(std::span<const platform::PixelRect> dirty,
                                   std::span<const platform::PixelRect> moved = {}, int dx = 0,
                                   int dy = 0);

    /// The step from before the first to after the second.
    static platform::Ref<const CGDisplayStreamUpdate> merged(const CGDisplayStreamUpdate& first,
                                                             const CGDisplayStreamUpdate& second);

    const std::vector<platform::PixelRect>& dirty() const noexcept { return dirtyPixels; }
    const std::vector<platform::PixelRect>& moved() const noexcept { return movedPixels; }

    /// From a moved rectangle back to its source; 0 without one. Units: pixels.
    int dx() const noexcept { return offsetX; }
    int dy() const noexcept { return offsetY; }

    const std::vector<CGRect>& rects(CGDisplayStreamUpdateRectType type) const;

private:
    void makeSeldomLists() const;

    std::vector<platform::PixelRect> dirtyPixels;
    std::vector<platform::PixelRect> movedPixels;
    int offsetX;
    int offsetY;
    std::vector<CGRect> dirtyRects;
    std::vector<CGRect> movedRects;

    // Few ask for these, so they are made when somebody does.
    mutable std::once_flag seldomListsMade;
    mutable std::vector<CGRect> refreshedRects;
    mutable std::vector<CGRect> reducedRects;
};
