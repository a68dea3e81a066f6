#pragma once

#include "platform/linux/graphics/PixelRect.h"
#include "platform/linux/graphics/Surface.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace platform {

/// So many pixels next to each other make one hash.
constexpr int hashedPixels = 16;

/// Hashes of pixels, in the order of rows or columns. Equal pixels have equal hashes anywhere in
/// any surface; the other way round holds almost always, and whoever relies on it compares pixels.
using PixelHashes = std::vector<std::uint64_t>;

/// For each of `columns`: a hash a row of `box`, of the pixels that start at that column.
std::vector<PixelHashes> rowHashes(const Surface& surface, const PixelRect& box,
                                   std::span<const int> columns);

/// A hash for every run of pixels in this row of `box`, which is at least one run wide.
PixelHashes runHashes(const Surface& surface, const PixelRect& box, int y);

/// Whether there is nothing to tell places apart by.
bool isUniform(const PixelHashes& hashes) noexcept;

/// A polynomial over a run of pixels, so that the next run's value follows from this one's.
class RollingHash {
public:
    /// Of the run that starts here.
    explicit RollingHash(const std::uint32_t* pixels) noexcept {
        for (int i = 0; i < hashedPixels; ++i)
            value = value * base + pixels[i];
    }

    /// One pixel further: `out` leaves the run at its beginning, `in` joins it at its end.
    void roll(std::uint32_t out, std::uint32_t in) noexcept {
        value = value * base + (in - outFactor * out);
    }

    std::uint64_t get() const noexcept { return value; }

private:
    static constexpr std::uint64_t base = 0xd6e8feb86659fd93ULL;
    static constexpr std::uint64_t outFactor = [] {
        std::uint64_t power = 1;
        for (int i = 0; i < hashedPixels; ++i)
            power *= base;
        return power;
    }();

    std::uint64_t value = 0;
};

} // namespace platform
