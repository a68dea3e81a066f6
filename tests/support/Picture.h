#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace support {

/// What a screen shows. Shape: rows of 0xAARRGGBB words (BGRA bytes), top row first, no padding.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    Picture() = default;
    Picture(int width, int height, std::uint32_t colour = 0)
        : width(width), height(height), pixels(std::size_t(width) * std::size_t(height), colour) {}

    std::uint32_t& at(int x, int y) { return pixels[indexOf(x, y)]; }
    std::uint32_t at(int x, int y) const { return pixels[indexOf(x, y)]; }

    /// The same without alpha.
    std::uint32_t rgbAt(int x, int y) const { return at(x, y) & 0xffffffU; }

    friend bool operator==(const Picture&, const Picture&) = default;

private:
    std::size_t indexOf(int x, int y) const {
        return std::size_t(y) * std::size_t(width) + std::size_t(x);
    }
};

} // namespace support
