#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// Texts to measure with: the same in every run.
namespace corpus {

/// A text made of the given words in a seeded order, whole words only, up to a size.
inline std::string ofWords(const std::vector<std::string_view>& words, std::size_t size) {
    std::mt19937 random(20261121); // NOLINT(bugprone-random-generator-seed): the same in every run
    std::string text;
    for (;;) {
        const std::string_view word = words[random() % words.size()];
        if (text.size() + word.size() + 1 > size)
            break;
        text.append(word).append(" ");
    }
    text.append(size - text.size(), '.');
    return text;
}

inline std::string ascii(std::size_t size) {
    return ofWords({"the", "screen", "of", "a", "sharing", "server", "changes", "where", "pixels",
                    "move", "and", "nothing", "else", "does", "in", "quiet"},
                   size);
}

inline std::string latin(std::size_t size) {
    return ofWords({"l'\u00E9cran", "d\u00E9j\u00E0", "for\u00EAt", "la", "gar\u00E7on", "o\u00F9",
                    "est", "na\u00EFve", "Stra\u00DFe", "f\u00FCr", "\u00FCber", "se\u00F1or",
                    "ni\u00F1o", "es", "\u00E5ret", "k\u00F8benhavn"},
                   size);
}

inline std::string cjk(std::size_t size) {
    return ofWords({"\u753B\u9762\u3092\u5171\u6709", "\u5909\u5316\u3057\u305F", "\u9818\u57DF",
                    "\u8907\u88FD\u3059\u308B", "\u4F55\u3082\u3057\u306A\u3044",
                    "\u5C4F\u5E55\u5206\u4EAB\uFF0C", "\uD654\uBA74\u3002"},
                   size);
}

inline std::string emoji(std::size_t size) {
    return ofWords({"\U0001F600\U0001F601\U0001F602", "\U0001F4BB\U0001F5A5",
                    "\U0001F680\U0001F4F7\U0001F389", "\U0001F9E9\U0001F50D"},
                   size);
}

/// Some of everything.
inline std::string mixed(std::size_t size) {
    return ofWords({"the", "screen", "changes", "d\u00E9j\u00E0", "o\u00F9", "\u753B\u9762",
                    "\u9818\u57DF", "\U0001F4BB", "and", "pixels", "Stra\u00DFe"},
                   size);
}

/// Mixed text with one byte in a hundred overwritten by one that fits nowhere.
inline std::string damaged(std::size_t size) {
    std::mt19937 random(20261121); // NOLINT(bugprone-random-generator-seed): the same in every run
    std::string text = mixed(size);
    for (std::size_t i = 0; i < text.size() / 100; ++i)
        text[random() % text.size()] = char(0xFE);
    return text;
}

/// Latin-1 bytes: the text of latin() in that code.
inline std::string latin1(std::size_t size) {
    const std::string utf8 = latin(2 * size);
    std::string text;
    for (std::size_t i = 0; text.size() < size; ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte < 0x80)
            text += utf8[i];
        else
            text += char((byte & 3) << 6 | (utf8[++i] & 0x3F));
    }
    return text;
}

} // namespace corpus
