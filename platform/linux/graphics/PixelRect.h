#pragma once

#include <algorithm>
#include <cstdint>

namespace platform {

/// A rectangle of whole pixels; right and bottom are exclusive. One without area is empty, whatever
/// its corners say. Units: pixels; a corner lies within +-2^30, so that sizes and sums fit.
struct PixelRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    friend bool operator==(const PixelRect&, const PixelRect&) = default;

    constexpr int width() const noexcept { return right - left; }
    constexpr int height() const noexcept { return bottom - top; }
    constexpr bool isEmpty() const noexcept { return left >= right || top >= bottom; }

    /// Units: pixels.
    constexpr std::int64_t area() const noexcept {
        return isEmpty() ? 0 : std::int64_t{width()} * height();
    }

    constexpr bool contains(const PixelRect& other) const noexcept {
        return other.isEmpty() || (left <= other.left && top <= other.top && right >= other.right &&
                                   bottom >= other.bottom);
    }

    constexpr bool contains(int x, int y) const noexcept {
        return x >= left && x < right && y >= top && y < bottom;
    }

    constexpr bool overlaps(const PixelRect& other) const noexcept {
        return !intersection(other).isEmpty();
    }

    constexpr PixelRect moved(int dx, int dy) const noexcept {
        return {left + dx, top + dy, right + dx, bottom + dy};
    }

    /// What both cover; empty (isEmpty, not necessarily all zero) where they do not meet.
    constexpr PixelRect intersection(const PixelRect& other) const noexcept {
        return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                std::min(bottom, other.bottom)};
    }

    /// The smallest rectangle around both; an empty one adds nothing.
    constexpr PixelRect boundingWith(const PixelRect& other) const noexcept {
        if (other.isEmpty())
            return *this;
        if (isEmpty())
            return other;
        return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                std::max(bottom, other.bottom)};
    }

    static constexpr PixelRect ofSize(int x, int y, int width, int height) noexcept {
        return {x, y, x + width, y + height};
    }
};

} // namespace platform
