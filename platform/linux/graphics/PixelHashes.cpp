#include "platform/linux/graphics/PixelHashes.h"

#include <algorithm>
#include <functional>

namespace platform {
namespace {

/// How far ahead memory is asked for. The server has just written it, on another core, and the
/// processor does not foresee steps of a row.
constexpr int rowsAhead = 8;

/// One for each pixel of a run, so that its place counts.
constexpr std::array<std::uint32_t, hashedPixels> keys = [] {
    std::array<std::uint32_t, hashedPixels> result{};
    std::uint64_t state = 1;
    for (std::uint32_t& key : result) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        key = static_cast<std::uint32_t>(state >> 32);
    }
    return result;
}();

/// The NH hash of UMAC (RFC 4418): products that do not wait for each other.
std::uint64_t hashOf(const std::uint32_t* pixels) noexcept {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < hashedPixels; i += 2)
        sum += std::uint64_t{pixels[i] + keys[i]} * (pixels[i + 1] + keys[i + 1]);
    return sum;
}

} // namespace

std::vector<PixelHashes> rowHashes(const Surface& surface, const PixelRect& box,
                                   std::span<const int> columns) {
    std::vector<PixelHashes> hashes(columns.size());
    for (PixelHashes& column : hashes)
        column.reserve(static_cast<std::size_t>(box.height()));
    // Row by row: what lies in one row lies in the same pages of memory.
    for (int y = box.top; y < box.bottom; ++y) {
        const std::uint32_t* row = surface.row(y);
        const std::uint32_t* later = surface.row(std::min(y + rowsAhead, box.bottom - 1));
        for (std::size_t i = 0; i < columns.size(); ++i) {
            __builtin_prefetch(later + columns[i]);
            hashes[i].push_back(hashOf(row + columns[i]));
        }
    }
    return hashes;
}

PixelHashes runHashes(const Surface& surface, const PixelRect& box, int y) {
    const std::uint32_t* row = surface.row(y);
    PixelHashes hashes;
    hashes.reserve(static_cast<std::size_t>(box.width()));
    RollingHash hash(row + box.left);
    hashes.push_back(hash.get());
    for (int x = box.left; x + hashedPixels < box.right; ++x) {
        hash.roll(row[x], row[x + hashedPixels]);
        hashes.push_back(hash.get());
    }
    return hashes;
}

bool isUniform(const PixelHashes& hashes) noexcept {
    return std::ranges::adjacent_find(hashes, std::not_equal_to()) == hashes.end();
}

} // namespace platform
