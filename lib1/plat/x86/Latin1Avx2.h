#pragma once

#include <cstddef>

namespace plat {

// For processors that have AVX2 and BMI2.

/// Skips UTF-8 text without a NUL whose characters are below U+0100, 32 bytes a step, and adds up
/// its characters. Shape: the byte before `begin` can be read.
const char* countLatinAvx2(const char* begin, const char* end, std::size_t* count) noexcept;

/// Converts such text to Latin-1, as long as there is room for 32 bytes at `*out`.
/// Shape: the byte before `begin` can be read.
const char* writeLatinAvx2(const char* begin, const char* end, char** out,
                           const char* outEnd) noexcept;

} // namespace plat
