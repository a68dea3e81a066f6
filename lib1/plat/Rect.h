#pragma once

#include <cstddef>

namespace plat {

/// A rectangle of whole units; right and bottom are exclusive.
struct Rect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    bool operator==(const Rect&) const = default;
};

static_assert(sizeof(Rect) == 4 * sizeof(int));
static_assert(offsetof(Rect, left) == 0 && offsetof(Rect, top) == sizeof(int) &&
              offsetof(Rect, right) == 2 * sizeof(int) &&
              offsetof(Rect, bottom) == 3 * sizeof(int));

} // namespace plat
