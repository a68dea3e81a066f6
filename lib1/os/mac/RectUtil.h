#pragma once

#include <cstdint>
#include <limits>

#include <CoreGraphics/CGGeometry.h>

#include "plat/Rect.h"

namespace os {

/// The whole part of a number; the nearest int for one that no int can hold, 0 for one that is not
/// a number.
inline int truncateToInt(CGFloat value) noexcept {
    using Limits = std::numeric_limits<int>;
    if (value != value)
        return 0;
    if (value >= -static_cast<CGFloat>(Limits::min()))
        return Limits::max();
    if (value <= static_cast<CGFloat>(Limits::min()))
        return Limits::min();
    return static_cast<int>(value);
}

/// The sum, or the nearest int.
inline int saturatedSum(int a, int b) noexcept {
    using Limits = std::numeric_limits<int>;
    const std::int64_t sum = std::int64_t{a} + b;
    if (sum > Limits::max())
        return Limits::max();
    return sum < Limits::min() ? Limits::min() : static_cast<int>(sum);
}

/// Origin, width and height are truncated one by one, before right and bottom are formed: what the
/// fractions of origin and size add up to is left out.
inline plat::Rect rectFromCGRect(const CGRect& rect) noexcept {
    const int left = truncateToInt(rect.origin.x);
    const int top = truncateToInt(rect.origin.y);
    return {left, top, saturatedSum(truncateToInt(rect.size.width), left),
            saturatedSum(truncateToInt(rect.size.height), top)};
}

inline CGRect cgRectFromRect(const plat::Rect& rect) noexcept {
    const auto width = std::int64_t{rect.right} - rect.left;
    const auto height = std::int64_t{rect.bottom} - rect.top;
    return CGRectMake(static_cast<CGFloat>(rect.left), static_cast<CGFloat>(rect.top),
                      static_cast<CGFloat>(width), static_cast<CGFloat>(height));
}

} // namespace os
