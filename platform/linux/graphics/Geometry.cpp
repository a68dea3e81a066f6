#include <CoreGraphics/CGGeometry.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// The null rectangle, which is no place at all, has an infinite origin.
bool isNull(const CGRect& rect) {
    constexpr CGFloat nowhere = std::numeric_limits<CGFloat>::infinity();
    return rect.origin.x == nowhere || rect.origin.y == nowhere;
}

/// A rectangle of negative size reaches back from its origin.
CGRect standardized(CGRect rect) {
    if (rect.size.width < 0) {
        rect.origin.x += rect.size.width;
        rect.size.width = -rect.size.width;
    }
    if (rect.size.height < 0) {
        rect.origin.y += rect.size.height;
        rect.size.height = -rect.size.height;
    }
    return rect;
}

} // namespace

CGRect CGRectUnion(CGRect a, CGRect b) {
    if (isNull(a))
        return b;
    if (isNull(b))
        return a;
    a = standardized(a);
    b = standardized(b);
    const CGFloat left = std::min(a.origin.x, b.origin.x);
    const CGFloat top = std::min(a.origin.y, b.origin.y);
    const CGFloat right = std::max(a.origin.x + a.size.width, b.origin.x + b.size.width);
    const CGFloat bottom = std::max(a.origin.y + a.size.height, b.origin.y + b.size.height);
    return CGRectMake(left, top, right - left, bottom - top);
}
