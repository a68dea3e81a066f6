#if defined(__x86_64__) // nothing is left of this file elsewhere

#include "plat/x86/Latin1Avx2.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "plat/Word.h"
#include "plat/x86/Avx2Vector.h"

namespace plat {

using namespace avx2;

namespace {

constexpr int wordSize = sizeof(std::uint64_t);

#define AVX2 [[gnu::target("avx2,bmi2"), gnu::always_inline]] inline

/// The bytes C2 and C3, which begin the characters U+0080 to U+00FF.
AVX2 __m256i leads(__m256i bytes) noexcept {
    return _mm256_cmpeq_epi8(_mm256_and_si256(bytes, all(0xFE)), all(0xC2));
}

/// 32 bytes of text, seen together with those one place before.
struct LatinBytes {
    __m256i bytes;
    __m256i before;
    __m256i leadsHere;
    __m256i leadsBefore;

    AVX2 explicit LatinBytes(const char* p) noexcept
        : bytes(load(p)), before(load(p - 1)), leadsHere(leads(bytes)), leadsBefore(leads(before)) {
    }

    /// Tells whether all characters are below U+0100, apart from a lead byte at the end.
    AVX2 bool isLatin() const noexcept {
        const __m256i continuations = _mm256_cmpgt_epi8(all(0xC0), bytes);
        const __m256i misplaced = _mm256_xor_si256(continuations, leadsBefore);
        const __m256i others =
            _mm256_andnot_si256(_mm256_or_si256(continuations, leadsHere), bytes);
        const __m256i nuls = _mm256_cmpeq_epi8(bytes, _mm256_setzero_si256());
        // In each of them, the top bit tells.
        return _mm256_movemask_epi8(_mm256_or_si256(_mm256_or_si256(misplaced, others), nuls)) == 0;
    }

    /// One bit for each lead byte.
    AVX2 std::uint32_t leadBits() const noexcept {
        return std::uint32_t(_mm256_movemask_epi8(leadsHere));
    }

    /// The characters, in place of the bytes that end them.
    AVX2 __m256i characters() const noexcept {
        const __m256i isUpperHalf = _mm256_cmpeq_epi8(before, all(0xC3));
        return _mm256_add_epi8(bytes, _mm256_and_si256(isUpperHalf, all(0x40)));
    }
};

/// Where a text goes on that was taken from `begin` to `p`: if the last byte is a lead byte, there.
const char* nextCharacter(const char* begin, const char* p) noexcept {
    return p != begin && static_cast<unsigned char>(p[-1]) >= 0xC0 ? p - 1 : p;
}

/// Writes the bytes of a word that no bit is set for, and up to a word in all.
AVX2 char* writeUnmarked(char* out, std::uint64_t word, unsigned bits) noexcept {
    const std::uint64_t kept = _pdep_u64(~bits, eachByte<std::uint64_t>(1)) * 0xFF;
    storeWord(out, _pext_u64(word, kept));
    return out + wordSize - std::popcount(bits);
}

} // namespace

[[gnu::target("avx2,bmi2")]] const char* countLatinAvx2(const char* begin, const char* end,
                                                        std::size_t* count) noexcept {
    const char* p = begin;
    for (; end - p >= vectorSize; p += vectorSize) {
        const LatinBytes latin(p);
        if (!latin.isLatin())
            break;
        *count += std::size_t(vectorSize - std::popcount(latin.leadBits()));
    }
    return nextCharacter(begin, p);
}

[[gnu::target("avx2,bmi2")]] const char* writeLatinAvx2(const char* begin, const char* end,
                                                        char** out, const char* outEnd) noexcept {
    const char* p = begin;
    for (; end - p >= vectorSize && outEnd - *out >= vectorSize; p += vectorSize) {
        const LatinBytes latin(p);
        if (!latin.isLatin())
            break;
        const __m256i characters = latin.characters();
        std::uint64_t words[4];
        std::memcpy(words, &characters, sizeof words);
        std::uint32_t bits = latin.leadBits();
        for (const std::uint64_t word : words) {
            *out = writeUnmarked(*out, word, bits & 0xFF);
            bits >>= 8;
        }
    }
    return nextCharacter(begin, p);
}

} // namespace plat

#endif
