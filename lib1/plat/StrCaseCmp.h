#pragma once

#include <cstdint>

#include "plat/String.h"

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

/// A number that texts have in common for which strCaseCmp gives 0.
inline std::uint16_t strCaseHash(const char* text) noexcept {
    std::uint32_t hash = 0;
    // The bit tells the cases of a letter apart; that it joins other bytes too does no harm.
    for (; text != nullptr && *text != '\0'; ++text)
        hash = hash * 33 + (static_cast<unsigned char>(*text) | 0x20U);
    return std::uint16_t(hash ^ hash >> 16);
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
