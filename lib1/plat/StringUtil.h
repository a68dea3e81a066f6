#pragma once

/// The free functions for NUL-terminated strings. No length is stored anywhere: it is found by
/// looking for the NUL. A null pointer counts as the empty string unless a function says otherwise.
namespace plat {

/// Copies a text, or its first `maxLen` bytes when `maxLen` is not negative.
/// Ownership: the caller frees the array with delete[]. A null text gives null.
char* strDup(const char* text, int maxLen = -1);

/// Counts the bytes before the NUL.
int strLen(const char* text) noexcept;

/// Counts the bytes before the first NUL, `maxLen` at most; 0 for a `maxLen` below 1.
int strLen(const char* text, int maxLen) noexcept;

/// Copies as much of `src` as `size` bytes take with their NUL.
/// Returns the length of the whole source: a result of `size` or more says that the copy was cut.
/// Shape: `size` is at least 1.
int strCpy(char* dst, const char* src, int size) noexcept;

/// Splits a text at the first separator, or at the last one with `fromEnd`.
/// Without a separator, `*before` gets a copy of the whole text, `*after` gets null and the result
/// is false.
/// Ownership: what `*before` and `*after` held is freed, and they get new arrays. The old arrays
/// are freed last, also when an allocation throws, so the text may be one of them. Either pointer
/// may be null and is ignored then.
bool strSplit(const char* text, char separator, char** before, char** after, bool fromEnd = false);

/// Tells whether a text begins with a prefix; every text begins with a null or empty one.
bool strBegins(const char* text, const char* prefix) noexcept;

/// Tells whether a text ends with a suffix; every text ends with a null or empty one.
bool strEnds(const char* text, const char* suffix) noexcept;

/// Parses a number as strtol does (leading white space, sign, base 0 to 36) and moves `*text`
/// behind it. A failure sets `*out` to 0 and leaves `*text`.
/// Errors: false without a digit, outside 32 bits, or for a null `*text`. `errno` stays as it was.
bool strToInt(int* out, const char** text, int base) noexcept;

/// Parses a number like the form above and returns it.
/// Errors: throws BadInt "Failed to parse integer".
int strToInt(const char** text, int base);

/// Parses a text that is a number as a whole.
/// Errors: false as above (0 in `*out`), or with bytes left over: `*out` keeps the number then.
bool strToInt(int* out, const char* text, int base) noexcept;

/// Parses an unsigned number as strtoul does, but takes no '-', and moves `*text` behind it.
/// Errors: false without a digit, with a '-', outside 32 bits, or for a null `*text`; `*out` is 0
/// then. `errno` stays as it was.
bool strToUint(unsigned* out, const char** text, int base) noexcept;

/// Parses a text that is an unsigned number as a whole.
/// Errors: false in all other cases, with 0 in `*out`, also when only some bytes are left over.
bool strToUint(unsigned* out, const char* text, int base) noexcept;

} // namespace plat
