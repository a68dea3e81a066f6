#pragma once

namespace plat {

/// Cuts a writable string into tokens by overwriting the separators with NULs. It allocates nothing
/// and owns nothing.
/// Shape: an empty string has one empty token, and a separator at the end is followed by one.
class SplitterInPlace {
public:
    /// Starts at a string of the caller's, which outlives the tokens.
    explicit SplitterInPlace(char* text) noexcept : position(text) {}

    /// The next token, up to a separator; null when none is left.
    char* next(char separator) noexcept;

    /// The next token, up to any of the separators; null when none is left. `*found` (unless
    /// `found` is null) gets the separator, or 0 behind the last token.
    char* nextOneOf(const char* separators, char* found) noexcept;

    /// The next token, up to a whole separator text; null when none is left.
    char* nextString(const char* separator) noexcept;

private:
    char* endToken(char* separator, int separatorLength) noexcept;

    char* position; ///< where the next token starts; null when the string is used up
};

} // namespace plat
