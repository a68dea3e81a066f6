#pragma once

namespace plat {

/// Compares texts with patterns.
class Wildcard {
public:
    static constexpr unsigned star = 1; ///< '*' stands for any run of bytes, also an empty one

    /// Tells whether a text matches a pattern as a whole. No character but '*' is special, and '*'
    /// only with the flag `star`. Letters are compared as the current locale's `tolower` gives them
    /// unless `caseSensitive`.
    /// Cost: at most the length of the text times that of the longest run between two stars,
    /// however many stars there are; no memory.
    static bool match(const char* pattern, const char* text, bool caseSensitive,
                      unsigned flags) noexcept;
};

} // namespace plat
