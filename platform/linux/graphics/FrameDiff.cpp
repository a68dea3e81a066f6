#include "platform/linux/graphics/FrameDiff.h"

#include "platform/linux/graphics/Region.h"

#include <algorithm>
#include <cstring>

namespace platform {
namespace {

constexpr int bandRows = 16;

/// The part of one row that differs.
PixelRect differenceOfRow(const Surface& before, const Surface& after, int y) {
    const std::uint32_t* a = before.row(y);
    const std::uint32_t* b = after.row(y);
    const int width = before.width();
    if (std::memcmp(a, b, before.strideBytes()) == 0)
        return {};
    int left = 0;
    while (a[left] == b[left])
        ++left;
    int right = width;
    while (a[right - 1] == b[right - 1])
        --right;
    return {left, y, right, y + 1};
}

} // namespace

std::vector<PixelRect> differences(const Surface& before, const Surface& after) {
    std::vector<PixelRect> bands;
    for (int top = 0; top < before.height(); top += bandRows) {
        PixelRect band;
        const int bottom = std::min(top + bandRows, before.height());
        for (int y = top; y < bottom; ++y)
            band = band.boundingWith(differenceOfRow(before, after, y));
        if (!band.isEmpty())
            bands.push_back(band);
    }
    return coalesce(bands);
}

} // namespace platform
