#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

/// Several bytes of a text at once, in a word: the first byte is the lowest one.
namespace plat {

static_assert(std::endian::native == std::endian::little, "a word's first byte is its lowest");

template <typename Word>
inline Word loadWord(const char* bytes) noexcept {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

template <typename Word>
inline void storeWord(char* bytes, Word word) noexcept {
    std::memcpy(bytes, &word, sizeof word);
}

/// A word with the same byte at each place.
template <typename Word>
constexpr Word eachByte(unsigned char byte) noexcept {
    return Word(-1) / 255 * byte;
}

} // namespace plat
