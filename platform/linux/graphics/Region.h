#pragma once

#include "platform/linux/graphics/PixelRect.h"

#include <cstddef>
#include <span>
#include <vector>

namespace platform {

/// A set of pixels, exact. Equal sets are equal regions.
/// Shape: rectangles() are disjoint, ordered from the top and then from the left; those side by
/// side between the same rows never touch.
/// Cost: building from n rectangles that overlap a lot can give n * n; use coalesce for lists whose
/// length somebody else decides.
class Region {
public:
    Region() = default;
    explicit Region(const PixelRect& rect);
    explicit Region(std::span<const PixelRect> rects);

    friend bool operator==(const Region&, const Region&) = default;

    const std::vector<PixelRect>& rectangles() const noexcept { return rects; }
    bool isEmpty() const noexcept { return rects.empty(); }
    bool contains(int x, int y) const noexcept;
    bool contains(const PixelRect& rect) const;
    bool overlaps(const PixelRect& rect) const noexcept;

    /// Exact; empty for an empty region.
    PixelRect boundingBox() const noexcept;

    /// Units: pixels.
    std::int64_t area() const noexcept;

    Region united(const Region& other) const;
    Region minus(const Region& other) const;
    Region intersected(const Region& other) const;
    Region moved(int dx, int dy) const;

private:
    std::vector<PixelRect> rects;
};

PixelRect boundingBoxOf(std::span<const PixelRect> rects) noexcept;

/// How many rectangles an update or a list of damage names at most.
constexpr std::size_t maxListedRects = 64;

/// Few disjoint rectangles that cover everything the given ones cover, ordered from the top:
/// exactly it as a rule when that takes at most `limit` of them, else a little more, but never more
/// than the same bounding box. Cheap also for a hundred thousand rectangles; empty ones are left
/// out. `limit` is at least 1.
std::vector<PixelRect> coalesce(std::span<const PixelRect> rects,
                                std::size_t limit = maxListedRects);

/// Collects rectangles as they come in and keeps them bounded: nothing added is ever lost, the
/// bounding box stays exact, and the memory it takes does not grow with their number.
class DamageList {
public:
    explicit DamageList(std::size_t limit = maxListedRects);

    void add(const PixelRect& rect);
    void add(std::span<const PixelRect> rects);
    void clear() noexcept;

    bool isEmpty() const noexcept { return box.isEmpty(); }
    const PixelRect& boundingBox() const noexcept { return box; }

    /// At most `limit` disjoint rectangles. Ownership: borrowed until the next change.
    const std::vector<PixelRect>& rectangles();

private:
    std::size_t limit;
    std::vector<PixelRect> pending;
    bool isCoalesced = true;
    PixelRect box;
};

} // namespace platform
