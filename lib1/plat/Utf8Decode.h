#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

/// Steps through UTF-8 text, for the functions of this folder that do so character by character.
namespace plat {

/// The end of a text, also of one that ends at its NUL. A null text without an end is empty.
inline const char* textEnd(const char* begin, const char* end) noexcept {
    return end != nullptr || begin == nullptr ? end : begin + std::strlen(begin);
}

/// Where a text stops: at its end, or at a NUL in front of it.
inline const char* textStop(const char* begin, const char* end) noexcept {
    if (end == nullptr || begin == end)
        return textEnd(begin, end);
    const void* const nul = std::memchr(begin, '\0', std::size_t(end - begin));
    return nul == nullptr ? end : static_cast<const char*>(nul);
}

/// The size that a stream starts with for `length` bytes and some more.
/// Errors: what no stream can hold fails as its allocation does.
inline int initialSize(std::size_t length, std::size_t more) {
    const std::uint64_t size = std::uint64_t(length) + more;
    if (size > std::uint64_t(std::numeric_limits<int>::max()))
        throw std::bad_array_new_length();
    return int(size);
}

/// Tells whether a text ends here: at its end (null: none) or at a NUL.
inline bool isTextEnd(const char* p, const char* end) noexcept {
    return p == end || *p == '\0';
}

inline bool isContinuation(char c) noexcept {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// Tells whether a decoded value is a character, and its form of `used` bytes the shortest.
constexpr bool isCharacter(int value, int used) noexcept {
    constexpr int smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < smallest[used] || value > 0x10FFFF)
        return false;
    if (value < 0xD800)
        return true;
    // Surrogates, and the last two of each plane. U+FFD0 to U+FFEF, the fullwidth signs among them,
    // are meant as they stand: this system refuses these two rows, and takes those from U+FDD0.
    return value > 0xDFFF && (value < 0xFFD0 || value > 0xFFEF) && (value & 0xFFFE) != 0xFFFE;
}

/// readUtf8NonAscii(), for loops.
inline int decodeNonAscii(unsigned char lead, const char** p, std::ptrdiff_t avail) noexcept {
    const int count = std::countl_one(lead);
    if (count < 2 || count > 4 || count > avail)
        return -1;
    int value = lead & (0x7F >> count);
    for (int i = 1; i < count; ++i) {
        if (!isContinuation(**p))
            return -1;
        value = value << 6 | (*(*p)++ & 0x3F);
    }
    return isCharacter(value, count) ? value : -1;
}

/// Takes the character or the invalid sequence at `*p`, where the text has not ended.
/// Returns the code point or -1.
inline int takeCharacter(const char** p, const char* end) noexcept {
    const auto lead = static_cast<unsigned char>(*(*p)++);
    if (lead < 0x80)
        return lead;
    const char* const rest = *p;
    const std::ptrdiff_t avail = end == nullptr ? 4 : end - rest + 1;
    // Two forms that most text is made of: with these lead bytes, nothing else can be wrong.
    if (lead >= 0xC2 && lead <= 0xDF && avail >= 2 && isContinuation(rest[0])) {
        *p = rest + 1;
        return (lead & 0x1F) << 6 | (rest[0] & 0x3F);
    }
    if (lead >= 0xE1 && lead <= 0xEC && avail >= 3 && isContinuation(rest[0]) &&
        isContinuation(rest[1])) {
        *p = rest + 2;
        return (lead & 0x0F) << 12 | (rest[0] & 0x3F) << 6 | (rest[1] & 0x3F);
    }
    return decodeNonAscii(lead, p, avail);
}

} // namespace plat
