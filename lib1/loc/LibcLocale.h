#pragma once

#include "plat/String.h"

namespace loc {

/// A locale of the system.
struct LibcLocale {
    static constexpr int unknownEnc = 0;
    static constexpr int utf8Enc = 1;
    static constexpr int latin1Enc = 2;
    static constexpr int asciiEnc = 3;

    plat::String name;        ///< as setlocale takes it
    int encType = unknownEnc; ///< how its text is encoded
};

/// Finds the locale of the system for a locale code, such as "de_DE": one whose text is UTF-8 if
/// there is any, else one whose text is Latin-1 or ASCII.
/// Errors: false if there is none; `*result` is then the name itself, of an unknown encoding.
/// Threads: any. What was found is remembered. Looking changes the locale of the process for a
/// moment, which other threads may notice.
bool findLibcLocale(const char* name, LibcLocale* result);

/// Tells how the text of a locale of the system is encoded, and takes its name apart: `base` gets
/// what stands before the encoding or modifier, `rest` the modifier (null for none).
/// Shape: of a name that the system does not know, `rest` is all behind the first '.' or '@'.
/// Threads: as GlobalLocaleSetter.
int getEncType(const char* name, plat::String* base, plat::String* rest);

/// Finds the first locale of the system that is made of a base, a usual name of UTF-8 and, unless
/// it is null or empty, a modifier. Threads: as GlobalLocaleSetter.
bool findUtf8Locale(const char* base, const char* modifier, LibcLocale* result);
/// Does the same with the names of encodings that are Latin-1 (or ISO 8859-15) or ASCII.
bool findLatin1OrAsciiLocale(const char* base, const char* modifier, LibcLocale* result);

} // namespace loc
