#include "platform/linux/graphics/PixelFormat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace platform {

namespace {

constexpr std::uint32_t opaque = 0xff000000U;

/// One colour channel: where its bits lie in a pixel, and how they become 8.
class Channel {
public:
    explicit Channel(std::uint32_t mask) noexcept
        : mask(mask), shift(std::countr_zero(mask)), bits(std::popcount(mask)) {
        if (bits > 8) {
            shift += bits - 8;
            bits = 8;
        }
        for (unsigned value = 0; value < (1U << bits); ++value)
            widened[value] = repeated(value, bits);
    }

    std::uint32_t of(std::uint32_t pixel) const noexcept {
        return widened[(pixel & mask) >> shift];
    }

private:
    static std::uint8_t repeated(unsigned value, int bits) noexcept {
        unsigned result = 0;
        for (int at = 8 - bits; at > -bits; at -= bits)
            result |= at >= 0 ? value << at : value >> -at;
        return static_cast<std::uint8_t>(result);
    }

    std::uint32_t mask;
    int shift;
    int bits;
    std::array<std::uint8_t, 256> widened{};
};

std::uint32_t loadPixel(const std::uint8_t* from, int bytes, bool isBigEndian) noexcept {
    std::uint32_t pixel = 0;
    for (int i = 0; i < bytes; ++i) {
        const int place = isBigEndian ? bytes - 1 - i : i;
        pixel |= std::uint32_t{from[i]} << (8 * place);
    }
    return pixel;
}

void storeBgra(std::uint8_t* to, std::uint32_t blue, std::uint32_t green,
               std::uint32_t red) noexcept {
    to[0] = static_cast<std::uint8_t>(blue);
    to[1] = static_cast<std::uint8_t>(green);
    to[2] = static_cast<std::uint8_t>(red);
    to[3] = 0xff;
}

/// Row by row through whole words, which the compiler turns into vectors.
void copyOpaque(const std::uint8_t* from, std::uint8_t* to, int width) noexcept {
    for (int x = 0; x < width; ++x) {
        std::uint32_t pixel;
        std::memcpy(&pixel, from + std::size_t(x) * 4, 4);
        pixel |= opaque;
        std::memcpy(to + std::size_t(x) * 4, &pixel, 4);
    }
}

bool isChannelMask(std::uint32_t mask, int bitsPerPixel) noexcept {
    if (mask == 0 || (bitsPerPixel < 32 && (mask >> bitsPerPixel) != 0))
        return false;
    const std::uint32_t shifted = mask >> std::countr_zero(mask);
    return (shifted & (shifted + 1)) == 0;
}

} // namespace

bool PixelFormat::isSupported() const noexcept {
    const bool isKnownSize =
        bitsPerPixel == 8 || bitsPerPixel == 16 || bitsPerPixel == 24 || bitsPerPixel == 32;
    return isKnownSize && rowPadBits >= 8 && rowPadBits % 8 == 0 &&
           isChannelMask(redMask, bitsPerPixel) && isChannelMask(greenMask, bitsPerPixel) &&
           isChannelMask(blueMask, bitsPerPixel);
}

bool PixelFormat::isBgrx() const noexcept {
    return bitsPerPixel == 32 && !isBigEndian && redMask == 0xff0000U && greenMask == 0xff00U &&
           blueMask == 0xffU;
}

std::size_t PixelFormat::strideBytes(int width) const noexcept {
    const std::size_t bits = std::size_t(width) * std::size_t(bitsPerPixel);
    const std::size_t pad = std::size_t(rowPadBits);
    return (bits + pad - 1) / pad * pad / 8;
}

void PixelFormat::toBgra(const std::uint8_t* from, std::size_t fromStride, std::uint8_t* to,
                         std::size_t toStride, int width, int height) const noexcept {
    if (!isSupported())
        return;
    if (isBgrx()) {
        for (int y = 0; y < height; ++y)
            copyOpaque(from + std::size_t(y) * fromStride, to + std::size_t(y) * toStride, width);
        return;
    }
    const Channel red(redMask);
    const Channel green(greenMask);
    const Channel blue(blueMask);
    const int bytes = bitsPerPixel / 8;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* source = from + std::size_t(y) * fromStride;
        std::uint8_t* target = to + std::size_t(y) * toStride;
        for (int x = 0; x < width; ++x, source += bytes, target += 4) {
            const std::uint32_t pixel = loadPixel(source, bytes, isBigEndian);
            storeBgra(target, blue.of(pixel), green.of(pixel), red.of(pixel));
        }
    }
}

} // namespace platform
