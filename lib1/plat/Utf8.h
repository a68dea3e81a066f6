#pragma once

/// UTF-8 text. A text is a range of bytes; a null end means up to the NUL. A NUL ends every text,
/// also inside its range. Characters are decoded strictly: overlong forms, surrogates, values above
/// U+10FFFF, U+xxFFFE and U+xxFFFF are no characters, and neither are U+FFD0 to U+FFEF.
namespace plat {

/// Decodes the character whose first byte, 0x80 or more, has been taken already.
/// Shape: `*p` points behind that byte and moves over the bytes that follow it; `avail` counts the
/// bytes to the end of the range, `lead` included (4 without an end).
/// Errors: -1 for what is no character; `*p` stands behind the bytes that belonged to it, at the
/// byte that did not fit.
int readUtf8NonAscii(unsigned char lead, const char** p, int avail) noexcept;

/// Writes a character's shortest form of 1 to 4 bytes and moves `*out` behind it. Surrogates are
/// written like other values; of a negative value, the low byte is.
/// Errors: a value above U+10FFFF throws Exception "Unicode out of range".
void writeUtf8(int codePoint, char** out);

/// Moves back to the first byte of the character before `*p`; by one byte if none starts in the
/// four bytes before. It looks at those bytes even if the text starts later.
void utf8Back1(const char** p) noexcept;

/// Counts the columns that a text takes in a terminal, up to the first byte that is not UTF-8.
/// Characters that cannot be printed count 1. The widths are those of the current locale.
int utf8NumColumns(const char* begin, const char* end = nullptr) noexcept;

/// Tells whether a text is UTF-8 up to its end; a character that the end cuts makes it invalid.
bool isValidUtf8(const char* begin, const char* end = nullptr) noexcept;

/// Copies a text with U+FFFD in place of each sequence that is not UTF-8. The copy has at most
/// `maxBytes` bytes unless that is negative, and ends in front of the character that would exceed
/// it. Ownership: the caller frees the array with delete[].
char* sanitizeUtf8(const char* begin, const char* end = nullptr, int maxBytes = -1);

/// Moves a range of bytes so that it neither starts nor ends inside a character: the start goes on
/// to the next character, and a character cut at the end is taken whole. A negative length means
/// everything.
void sanitizeUtf8Range(const char* text, int* start, int* length) noexcept;

/// Makes a printable form of a text, for logs, from which it can be had back: characters stay,
/// control characters and bytes that are not UTF-8 are escaped, the escape character is doubled.
/// Ownership: the caller frees the array with delete[].
char* strvisUtf8(const char* text, char esc);

} // namespace plat
