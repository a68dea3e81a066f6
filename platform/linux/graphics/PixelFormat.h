#pragma once

#include <cstddef>
#include <cstdint>

namespace platform {

/// How an X server lays out the pixels of one visual, as its set-up states it, and the way from
/// there to opaque BGRA. Only visuals whose pixels are made of colour masks can be described.
struct PixelFormat {
    int bitsPerPixel = 0; ///< 8, 16, 24 or 32
    int rowPadBits = 32;  ///< a row's length is a multiple of this
    bool isBigEndian = false;
    std::uint32_t redMask = 0;
    std::uint32_t greenMask = 0;
    std::uint32_t blueMask = 0;

    /// Whether toBgra can serve it: a depth it knows, and masks of adjoining bits inside a pixel.
    bool isSupported() const noexcept;

    /// Whether the bytes are blue, green, red and one more already.
    bool isBgrx() const noexcept;

    /// Bytes from one row to the next in an image of this width as the server sends it.
    std::size_t strideBytes(int width) const noexcept;

    /// Converts rows into BGRA with an alpha of 255. A channel of fewer than 8 bits is widened by
    /// repeating its upper bits, a wider one keeps its upper 8: as the server's own compositing
    /// does. `from` and `to` may be the same array if isBgrx() and the strides are equal.
    /// Units: strides in bytes. Errors: asks for isSupported(), else does nothing.
    void toBgra(const std::uint8_t* from, std::size_t fromStride, std::uint8_t* to,
                std::size_t toStride, int width, int height) const noexcept;
};

} // namespace platform
