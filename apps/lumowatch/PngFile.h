#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace lumowatch {

/// Writes a picture as an RGB PNG file, replacing an old one of that name.
/// Shape: `pixels` are rows of 4-byte BGRA, `strideBytes` apart; alpha is left out.
/// Errors: false, with one sentence in `error`; what was written so far is removed.
bool writePng(const std::string& path, const std::uint8_t* pixels, std::size_t strideBytes,
              int width, int height, std::string* error);

} // namespace lumowatch
