#pragma once

namespace plat {

// For processors that have AVX2.

/// skipValidUtf8() with vectors of 32 bytes.
const char* skipValidUtf8Avx2(const char* begin, const char* end) noexcept;

/// skipPlainBlocks() with vectors of 32 bytes.
const char* skipPlainAvx2(const char* begin, const char* end) noexcept;

} // namespace plat
