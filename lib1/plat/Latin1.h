#pragma once

#include "plat/Buf.h"

/// Latin-1 text: ISO 8859-1, except that the byte 0x80 is the euro sign, as in Windows code page
/// 1252. U+0080 becomes that byte too, so it does not survive the way there and back.
namespace plat {

/// Converts UTF-8 to Latin-1, with '?' for each character that Latin-1 lacks and for each sequence
/// that is not UTF-8. A null `end` means up to the NUL; a NUL ends the text in any case.
/// Ownership: the caller frees the array with delete[]. `*outEnd` (unless `outEnd` is null) gets
/// the position of its NUL.
char* utf8ToLatin1(const char* begin, const char* end = nullptr, char** outEnd = nullptr);

/// Converts UTF-8 to Latin-1. The buffer's length does not count the NUL. The text may be a view of
/// the same buffer.
void utf8ToLatin1(CBuf<char> text, MBuf<char>* out);

/// Converts Latin-1 to UTF-8. A null `end` means up to the NUL; a NUL ends the text in any case.
/// Ownership: the caller frees the array with delete[]. `*outEnd` (unless `outEnd` is null) gets
/// the position of its NUL.
char* latin1ToUtf8(const char* begin, const char* end = nullptr, char** outEnd = nullptr);

/// Converts Latin-1 to UTF-8. The buffer's length does not count the NUL. The text may be a view of
/// the same buffer.
void latin1ToUtf8(CBuf<char> text, MBuf<char>* out);

} // namespace plat
