#include "platform/linux/graphics/FrameDiff.h"

#include "platform/linux/graphics/Region.h"

#include <algorithm>
#include <cstring>

namespace platform {
namespace {

constexpr int bandRows = 16;

/// The part of one row, from `left` to `right`, that differs.
PixelRect differenceOfRow(const Surface& before, const Surface& after, int y, int left, int right) {
    const std::uint32_t* a = before.row(y);
    const std::uint32_t* b = after.row(y);
    if (std::memcmp(a + left, b + left, static_cast<std::size_t>(right - left) * 4) == 0)
        return {};
    while (a[left] == b[left])
        ++left;
    while (a[right - 1] == b[right - 1])
        --right;
    return {left, y, right, y + 1};
}

} // namespace

std::vector<PixelRect> differences(const Surface& before, const Surface& after,
                                   std::span<const PixelRect> area) {
    std::vector<PixelRect> bands;
    for (const PixelRect& rect : area) {
        for (int top = rect.top; top < rect.bottom; top += bandRows) {
            PixelRect band;
            const int bottom = std::min(top + bandRows, rect.bottom);
            for (int y = top; y < bottom; ++y)
                band = band.boundingWith(differenceOfRow(before, after, y, rect.left, rect.right));
            if (!band.isEmpty())
                bands.push_back(band);
        }
    }
    return coalesce(bands);
}

} // namespace platform
