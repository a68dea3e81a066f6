#if defined(__x86_64__) || defined(__i386__) // nothing is left of this file elsewhere

#include "plat/x86/HexAvx2.h"

#include "plat/x86/Avx2Vector.h"

namespace plat {

using namespace avx2;

namespace {

/// The digits of 32 halves at once.
LUMO_AVX2 __m256i digits(__m256i halves) noexcept {
    const __m128i table = _mm_setr_epi8('0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b',
                                        'c', 'd', 'e', 'f');
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(table), halves);
}

/// Writes the text of 32 bytes.
LUMO_AVX2 void writeHex(char* out, const unsigned char* from) noexcept {
    const __m256i bytes = load(from);
    const __m256i high = digits(highHalves(bytes));
    const __m256i low = digits(lowHalves(bytes));
    // Of each 16 bytes, the first eight and the last eight.
    const __m256i first = _mm256_unpacklo_epi8(high, low);
    const __m256i last = _mm256_unpackhi_epi8(high, low);
    store(out, _mm256_permute2x128_si256(first, last, 0x20));
    store(out + vectorSize, _mm256_permute2x128_si256(first, last, 0x31));
}

/// The values of 32 digits at once, above 15 for a character that is none.
LUMO_AVX2 __m256i digitValues(__m256i text) noexcept {
    // With '9' as 255, what saturates below 240 is no number; one subtraction takes it above 15.
    const __m256i upToNine = _mm256_subs_epu8(_mm256_add_epi8(text, all(0xFF - '9')), all(6));
    const __m256i numbers = _mm256_sub_epi8(upToNine, all(0xF0));
    const __m256i fromA = _mm256_sub_epi8(_mm256_and_si256(text, all(0xDF)), all('A'));
    return _mm256_min_epu8(numbers, _mm256_adds_epu8(fromA, all(10)));
}

/// Reads 32 bytes from 64 digits. Returns false if one is no digit.
LUMO_AVX2 bool readHex(const char* hex, unsigned char* out) noexcept {
    const __m256i first = digitValues(load(hex));
    const __m256i last = digitValues(load(hex + vectorSize));
    const __m256i weights = _mm256_set1_epi16(0x0110); // 16 for the first digit, 1 for the second
    const __m256i lanes = _mm256_packus_epi16(_mm256_maddubs_epi16(first, weights),
                                              _mm256_maddubs_epi16(last, weights));
    constexpr int inOrder = 0b11'01'10'00;
    store(out, _mm256_permute4x64_epi64(lanes, inOrder));
    return _mm256_testz_si256(_mm256_or_si256(first, last), all(0xF0)) != 0;
}

} // namespace

[[gnu::target("avx2")]] std::size_t writeHexAvx2(char* out, const unsigned char* bytes,
                                                 std::size_t count) noexcept {
    std::size_t i = 0;
    for (; count - i >= std::size_t{vectorSize}; i += vectorSize)
        writeHex(out + 2 * i, bytes + i);
    return i;
}

[[gnu::target("avx2")]] std::size_t readHexAvx2(const char* hex, unsigned char* out,
                                                std::size_t count) noexcept {
    std::size_t i = 0;
    while (count - i >= std::size_t{vectorSize} && readHex(hex + 2 * i, out + i))
        i += vectorSize;
    return i;
}

} // namespace plat

#endif
