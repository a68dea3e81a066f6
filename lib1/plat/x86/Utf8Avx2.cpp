#if defined(__x86_64__) || defined(__i386__) // nothing is left of this file elsewhere

#include "plat/x86/Utf8Avx2.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "plat/Utf8Decode.h"
#include "plat/Word.h"
#include "plat/x86/Avx2Vector.h"

// The rules of UTF-8 by table look-up: J. Keiser, D. Lemire, "Validating UTF-8 In Less Than One
// Instruction Per Byte" (2021). Three tables, by the halves of a byte and of the one before, name
// the errors that two bytes can make together; what all three name is one. Whether a third or
// fourth byte belongs there is seen from the bytes two and three before. This system refuses more
// than Unicode does, always behind one pair of bytes (see `suspects`).

namespace plat {

using namespace avx2;

namespace {

constexpr std::ptrdiff_t blockSize = 2 * vectorSize;
constexpr std::ptrdiff_t lookBehind = 3;

// One bit an error, as far as a table sees it.
constexpr unsigned tooShort = 1 << 0;  // a lead byte, and no continuation
constexpr unsigned tooLong = 1 << 1;   // ASCII, and a continuation
constexpr unsigned overlong3 = 1 << 2; // E0 80 to E0 9F
constexpr unsigned tooLarge = 1 << 3;  // F4 90 and above
constexpr unsigned surrogate = 1 << 4; // ED A0 to ED BF
constexpr unsigned overlong2 = 1 << 5; // C0 and C1
constexpr unsigned overlong4 = 1 << 6; // F0 80 to F0 8F; as well F5 80 to FF 8F, also too large
constexpr unsigned twoConts = 1 << 7;  // two continuations: an error unless they must be there

/// The errors for each of the 16 values of half a byte.
struct Table {
    alignas(16) char errors[16] = {};

    constexpr void add(int first, int last, unsigned bits) {
        for (int i = first; i <= last; ++i)
            errors[i] = char(static_cast<unsigned char>(errors[i]) | bits);
    }
};

constexpr Table firstByHighHalf = [] {
    Table table;
    table.add(0x0, 0x7, tooLong);
    table.add(0x8, 0xB, twoConts);
    table.add(0xC, 0xF, tooShort);
    table.add(0xC, 0xC, overlong2);
    table.add(0xE, 0xE, overlong3 | surrogate);
    table.add(0xF, 0xF, tooLarge | overlong4);
    return table;
}();

constexpr Table firstByLowHalf = [] {
    Table table;
    table.add(0x0, 0xF, tooShort | tooLong | twoConts);
    table.add(0x0, 0x0, overlong2 | overlong3 | overlong4);
    table.add(0x1, 0x1, overlong2);
    table.add(0x4, 0xF, tooLarge);
    table.add(0x5, 0xF, overlong4);
    table.add(0xD, 0xD, surrogate);
    return table;
}();

constexpr Table secondByHighHalf = [] {
    Table table;
    table.add(0x0, 0x7, tooShort);
    table.add(0x8, 0xB, tooLong | twoConts | overlong2);
    table.add(0x8, 0x8, overlong3 | overlong4);
    table.add(0x9, 0x9, overlong3 | tooLarge);
    table.add(0xA, 0xB, surrogate | tooLarge);
    table.add(0xC, 0xF, tooShort);
    return table;
}();

LUMO_AVX2 __m256i lookUp(const Table& table, __m256i indices) noexcept {
    const __m128i half = _mm_load_si128(reinterpret_cast<const __m128i*>(table.errors));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(half), indices);
}

/// Zero where 32 bytes, seen with those one, two and three places before them, are UTF-8 beyond
/// doubt.
LUMO_AVX2 __m256i doubts(__m256i byte, __m256i before1, __m256i before2, __m256i before3) noexcept {
    const __m256i pairErrors =
        _mm256_and_si256(_mm256_and_si256(lookUp(firstByHighHalf, highHalves(before1)),
                                          lookUp(firstByLowHalf, lowHalves(before1))),
                         lookUp(secondByHighHalf, highHalves(byte)));
    // The top bit: a lead of three or more two bytes before, or one of four three bytes before.
    const __m256i mustContinue =
        _mm256_and_si256(_mm256_or_si256(_mm256_subs_epu8(before2, all(0xE0 - 0x80)),
                                         _mm256_subs_epu8(before3, all(0xF0 - 0x80))),
                         all(0x80));
    const __m256i errors = _mm256_xor_si256(mustContinue, pairErrors);
    // What else is refused ends in xF BF 90 to xF BF BF, its last byte being a third or fourth one:
    // U+FFD0 to U+FFEF, and the last two of each plane.
    const __m256i pairs = _mm256_and_si256(_mm256_or_si256(before2, all(0xF0)), before1);
    const __m256i suspects = _mm256_and_si256(_mm256_cmpeq_epi8(pairs, all(0xBF)), mustContinue);
    return _mm256_or_si256(errors, suspects);
}

LUMO_AVX2 __m256i doubts(const char* p) noexcept {
    return doubts(load(p), load(p - 1), load(p - 2), load(p - 3));
}

LUMO_AVX2 bool isZero(__m256i bytes) noexcept {
    return _mm256_testz_si256(bytes, bytes) != 0;
}

LUMO_AVX2 bool isPlain(__m256i first, __m256i second) noexcept {
    // As signed numbers, plain bytes are those above 0.
    const __m256i smallest = _mm256_min_epi8(first, second);
    return _mm256_movemask_epi8(_mm256_cmpgt_epi8(smallest, _mm256_setzero_si256())) == -1;
}

/// Where the character begins that a valid text leaves unfinished, or the text's end.
const char* unfinishedCharacter(const char* end) noexcept {
    constexpr unsigned char leads[] = {0xC0, 0xE0, 0xF0};
    for (int i = 0; i < 3; ++i) {
        if (static_cast<unsigned char>(end[-1 - i]) >= leads[i])
            return end - 1 - i;
    }
    return end;
}

LUMO_AVX2 bool isPlainBlock(const char* p) noexcept {
    return isPlain(load(p), load(p + vectorSize));
}

/// Skips pairs of blocks of plain text.
LUMO_AVX2 const char* skipPlainPairs(const char* p, const char* end) noexcept {
    while (end - p >= 2 * blockSize &&
           isPlain(_mm256_min_epi8(load(p), load(p + vectorSize)),
                   _mm256_min_epi8(load(p + 2 * vectorSize), load(p + 3 * vectorSize))))
        p += 2 * blockSize;
    return p;
}

LUMO_AVX2 __m256i nuls(__m256i first, __m256i second) noexcept {
    return _mm256_cmpeq_epi8(_mm256_min_epu8(first, second), _mm256_setzero_si256());
}

/// Tells whether 64 bytes are UTF-8 beyond doubt, as far as it can be seen without those behind
/// them.
LUMO_AVX2 bool isValidBlock(const char* p) noexcept {
    const __m256i first = load(p);
    const __m256i second = load(p + vectorSize);
    const __m256i allDoubts = _mm256_or_si256(doubts(p), doubts(p + vectorSize));
    return isZero(_mm256_or_si256(allDoubts, nuls(first, second)));
}

/// A text of 8 to 32 bytes, with blanks behind it. It goes through registers: a vector cannot be
/// read from memory at once where it was just written in pieces.
LUMO_AVX2 __m256i loadShort(const char* begin, std::ptrdiff_t count) noexcept {
    constexpr std::ptrdiff_t wordSize = sizeof(std::uint64_t);
    constexpr std::uint64_t blanks = eachByte<std::uint64_t>(' ');
    std::uint64_t words[4];
    for (std::ptrdiff_t i = 0; i < 4; ++i) {
        const std::ptrdiff_t at = std::min(i * wordSize, count - wordSize);
        const auto missing = unsigned(i * wordSize - at); // bytes behind the end
        const unsigned shift = 8 * missing % 64;
        const auto word = loadWord<std::uint64_t>(begin + at);
        words[i] = missing < wordSize ? word >> shift | blanks << 1 << (63 - shift) : blanks;
    }
    return _mm256_set_epi64x(std::int64_t(words[3]), std::int64_t(words[2]), std::int64_t(words[1]),
                             std::int64_t(words[0]));
}

LUMO_AVX2 bool isValidShort(const char* begin, std::ptrdiff_t count) noexcept {
    const __m256i bytes = loadShort(begin, count);
    const __m256i shifted = _mm256_permute2x128_si256(all(' '), bytes, 0x21);
    const __m256i allDoubts =
        doubts(bytes, _mm256_alignr_epi8(bytes, shifted, 15),
               _mm256_alignr_epi8(bytes, shifted, 14), _mm256_alignr_epi8(bytes, shifted, 13));
    return isZero(_mm256_or_si256(allDoubts, nuls(bytes, bytes))) &&
           unfinishedCharacter(begin + count) == begin + count;
}

/// Tells whether a text is valid that is too short for blocks in its place: copied among blanks.
LUMO_AVX2 bool isValidCopied(const char* begin, std::ptrdiff_t count) noexcept {
    char copy[vectorSize + 3 * vectorSize];
    char* const text = copy + vectorSize;
    for (std::ptrdiff_t i = 0; i < 4 * vectorSize; i += vectorSize)
        store(copy + i, all(' '));
    std::memcpy(text, begin, std::size_t(count));
    __m256i allDoubts = _mm256_setzero_si256();
    for (std::ptrdiff_t i = 0; i <= count; i += vectorSize) { // one blank at least is looked at
        const __m256i bytes = load(text + i);
        allDoubts =
            _mm256_or_si256(allDoubts, _mm256_or_si256(doubts(text + i), nuls(bytes, bytes)));
    }
    return isZero(allDoubts);
}

} // namespace

[[gnu::target("avx2")]] const char* skipValidUtf8Avx2(const char* begin, const char* end) noexcept {
    const std::ptrdiff_t count = end - begin;
    if (count < 8)
        return begin;
    if (count <= vectorSize)
        return isValidShort(begin, count) ? end : begin;
    if (count < blockSize + 4)
        return isValidCopied(begin, count) ? end : begin;

    // So that there are three bytes to look at in front of each block.
    const char* p = begin;
    while (p - begin < lookBehind) {
        const char* const character = p;
        if (*p == '\0' || takeCharacter(&p, end) == -1)
            return character;
    }
    while (end - p >= blockSize) {
        const bool isPlain = isPlainBlock(p);
        if (isPlain ? unfinishedCharacter(p) != p : !isValidBlock(p))
            return unfinishedCharacter(p);
        p += blockSize;
        if (isPlain)
            p = skipPlainPairs(p, end);
    }
    if (p != end && !isValidBlock(end - blockSize)) // some of it for the second time
        return unfinishedCharacter(p);
    return unfinishedCharacter(end);
}

[[gnu::target("avx2")]] const char* skipPlainAvx2(const char* begin, const char* end) noexcept {
    const char* p = skipPlainPairs(begin, end);
    while (end - p >= vectorSize && isPlain(load(p), load(p)))
        p += vectorSize;
    return p;
}

} // namespace plat

#endif
