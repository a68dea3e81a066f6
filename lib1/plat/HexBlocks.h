#pragma once

#include <cstddef>

/// Hexadecimal text, block by block.
namespace plat {

/// Writes two lower-case digits a byte, as far as whole blocks go. Returns the number of bytes
/// written; fewer than 16 are left.
std::size_t writeHexBlocks(char* out, const unsigned char* bytes, std::size_t count) noexcept;

/// Reads `count` bytes from twice as many digits, as far as whole blocks go. Returns the number of
/// bytes read; fewer than 16 are left, or one of the next 32 characters is no digit.
std::size_t readHexBlocks(const char* hex, unsigned char* out, std::size_t count) noexcept;

// The same for any processor, 16 bytes a step.

std::size_t writeHexVectors(char* out, const unsigned char* bytes, std::size_t count) noexcept;
std::size_t readHexVectors(const char* hex, unsigned char* out, std::size_t count) noexcept;

} // namespace plat
