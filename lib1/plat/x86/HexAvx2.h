#pragma once

#include <cstddef>

namespace plat {

// For processors that have AVX2.

/// Writes two lower-case digits a byte, 32 bytes a step. Returns the number of bytes written.
std::size_t writeHexAvx2(char* out, const unsigned char* bytes, std::size_t count) noexcept;

/// Reads `count` bytes from twice as many digits, 32 bytes a step. Returns the number of bytes read
/// before too few are left or a step has a character that is no digit.
std::size_t readHexAvx2(const char* hex, unsigned char* out, std::size_t count) noexcept;

} // namespace plat
