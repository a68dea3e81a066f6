#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "plat/String.h"
#include "plat/Word.h"

namespace plat {

/// Compares two texts as strcmp does, letters of either case being equal.
/// Shape: only the letters of ASCII have a case here, whatever the locale: under a Turkish one the
/// system's comparison tells "I" from "i". A null text counts as empty.
inline int strCaseCmp(const char* a, const char* b) noexcept {
    // Inline, with a first byte that decides most comparisons: names are found by walking lists.
    const auto fold = [](char c) {
        const int byte = static_cast<unsigned char>(c);
        return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte;
    };
    if (a == nullptr)
        a = "";
    if (b == nullptr)
        b = "";
    while (*a != '\0' && fold(*a) == fold(*b)) {
        ++a;
        ++b;
    }
    return fold(*a) - fold(*b);
}

/// Whether strCaseCmp gives 0; fast where the texts are the same.
inline bool isSameCaseless(const char* a, const char* b) noexcept {
    return (a != nullptr && b != nullptr && std::strcmp(a, b) == 0) || strCaseCmp(a, b) == 0;
}

/// The bytes of a text of at most 8 bytes, all of them at least once.
inline std::uint64_t shortTextWord(const char* text, std::size_t length) noexcept {
    if (length >= 4)
        return loadWord<std::uint32_t>(text) |
               std::uint64_t(loadWord<std::uint32_t>(text + length - 4)) << 32;
    if (length == 0)
        return 0;
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    return byte(0) | unsigned(byte(length / 2)) << 8 | unsigned(byte(length - 1)) << 16;
}

/// A number that texts have in common for which strCaseCmp gives 0.
inline std::uint16_t strCaseHash(const char* text) noexcept {
    // Word by word: byte by byte takes as long as all the rest of finding a name.
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15; // odd, its bits without a pattern
    std::size_t length = text == nullptr ? 0 : std::strlen(text);
    std::uint64_t hash = length;
    const auto mix = [&hash](std::uint64_t word) {
        // The bit tells the cases of a letter apart; that it joins other bytes too does no harm.
        hash = (hash ^ (word | eachByte<std::uint64_t>(0x20))) * factor;
        hash ^= hash >> 32;
    };
    for (; length > sizeof hash; length -= sizeof hash, text += sizeof hash)
        mix(loadWord<std::uint64_t>(text));
    mix(shortTextWord(text, length));
    return std::uint16_t(hash * factor >> 48);
}

/// Orders the keys of a map as strCaseCmp does. A text can be looked up without making a String.
// NOLINTNEXTLINE(readability-identifier-naming): named after what it does, as a type
struct strcasecmp_t {
    using is_transparent = void; // NOLINT(readability-identifier-naming): the standard's name

    bool operator()(const String& a, const String& b) const noexcept {
        return strCaseCmp(a.get(), b.get()) < 0;
    }
    bool operator()(const String& a, const char* b) const noexcept {
        return strCaseCmp(a.get(), b) < 0;
    }
    bool operator()(const char* a, const String& b) const noexcept {
        return strCaseCmp(a, b.get()) < 0;
    }
};

} // namespace plat
