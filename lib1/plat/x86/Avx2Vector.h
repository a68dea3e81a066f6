#pragma once

#if defined(__x86_64__) || defined(__i386__)

#include <cstddef>

#include <immintrin.h>

/// Marks an inline function that only code for such a processor calls (see Cpu.h).
#define LUMO_AVX2 [[gnu::target("avx2"), gnu::always_inline]] inline

/// Vectors of 32 bytes.
namespace plat::avx2 {

constexpr std::ptrdiff_t vectorSize = 32;

LUMO_AVX2 __m256i load(const void* p) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}

LUMO_AVX2 void store(void* p, __m256i bytes) noexcept {
    _mm256_storeu_si256(static_cast<__m256i*>(p), bytes);
}

/// This byte at every place.
LUMO_AVX2 __m256i all(int byte) noexcept {
    return _mm256_set1_epi8(char(byte));
}

/// The upper four bits of each byte.
LUMO_AVX2 __m256i highHalves(__m256i bytes) noexcept {
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), all(0x0F));
}

/// The lower four bits of each byte.
LUMO_AVX2 __m256i lowHalves(__m256i bytes) noexcept {
    return _mm256_and_si256(bytes, all(0x0F));
}

} // namespace plat::avx2

#endif
