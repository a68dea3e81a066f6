#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "plat/Word.h"

namespace plat {

/// Copies a piece as four words at its ends and between, which overlap as they must: one way for
/// all lengths from one word to four.
template <typename Word>
inline void copyWords(char* to, const char* from, std::size_t count) noexcept {
    constexpr std::size_t size = sizeof(Word);
    const std::size_t inner = count / (2 * size) * size;
    const std::size_t at[] = {0, inner, count - size - inner, count - size};
    Word words[4];
    for (int i = 0; i < 4; ++i)
        words[i] = loadWord<Word>(from + at[i]);
    for (int i = 0; i < 4; ++i)
        storeWord(to + at[i], words[i]);
}

/// Copies bytes between arrays that do not overlap, without a call for the few bytes that text is
/// made of: there the call takes twice as long as the copy. Both may be null for no bytes.
inline void copyBytes(void* to, const void* from, std::size_t count) noexcept {
    auto* const out = static_cast<char*>(to);
    const auto* const in = static_cast<const char*>(from);
    if (count >= 4 && count <= 16) { // most words, and most numbers
        copyWords<std::uint32_t>(out, in, count);
    } else if (count < 4) {
        if (count == 0)
            return;
        const char first = in[0];
        const char middle = in[count / 2];
        const char last = in[count - 1];
        out[0] = first;
        out[count / 2] = middle;
        out[count - 1] = last;
    } else if (count <= 32) {
        copyWords<std::uint64_t>(out, in, count);
    } else {
        std::memcpy(out, in, count);
    }
}

/// Copies the bytes of an array into the one that it grows into.
/// Two arrays of doubling size often lie side by side on the heap, so that one starts 16 bytes
/// further in its page than the other. Some processors (AMD's Zen 3 is one) then take the `rep
/// movsb` by which the C library copies 4 KiB and more at 3 GB/s; in smaller pieces the same copy
/// runs at 40.
inline void copyGrown(void* to, const void* from, std::size_t count) noexcept {
    constexpr std::size_t piece = 2048;
    auto* out = static_cast<char*>(to);
    const auto* in = static_cast<const char*>(from);
    for (; count > piece; count -= piece) {
        std::memcpy(out, in, piece);
        out += piece;
        in += piece;
    }
    copyBytes(out, in, count);
}

} // namespace plat
