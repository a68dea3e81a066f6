#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "plat/Word.h"

/// Plain text: the bytes 1 to 127, which are characters of their own in every code of this folder.
namespace plat {

/// A word with the top bit of each byte set that is 0 or above 127. Exact up to the first such
/// byte.
template <typename Word>
constexpr Word notPlain(Word bytes) noexcept {
    return ((bytes - eachByte<Word>(1)) | bytes) & eachByte<Word>(0x80);
}

/// Finds the first byte that is a NUL or not ASCII, or the end.
inline const char* skipPlain(const char* p, const char* end) noexcept {
    using Word = std::uint64_t;
    for (; end - p >= std::ptrdiff_t(sizeof(Word)); p += sizeof(Word)) {
        if (const Word others = notPlain(loadWord<Word>(p)); others != 0)
            return p + std::countr_zero(others) / 8;
    }
    while (p != end && static_cast<signed char>(*p) > 0)
        ++p;
    return p;
}

/// Tells whether a short text is plain throughout, without a loop.
/// Shape: at most 32 bytes.
inline bool isPlainShort(const char* begin, std::size_t count) noexcept {
    using Word = std::uint64_t;
    if (count >= sizeof(Word)) {
        // Words at the ends and between, which overlap as they must.
        const std::size_t step = count >= 2 * sizeof(Word) ? sizeof(Word) : 0;
        const char* const last = begin + count - sizeof(Word);
        return (notPlain(loadWord<Word>(begin)) | notPlain(loadWord<Word>(begin + step)) |
                notPlain(loadWord<Word>(last - step)) | notPlain(loadWord<Word>(last))) == 0;
    }
    if (count >= sizeof(std::uint32_t)) {
        return (notPlain(loadWord<std::uint32_t>(begin)) |
                notPlain(loadWord<std::uint32_t>(begin + count - sizeof(std::uint32_t)))) == 0;
    }
    return skipPlain(begin, begin + count) == begin + count;
}

} // namespace plat
