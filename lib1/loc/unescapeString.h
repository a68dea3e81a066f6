#pragma once

#include "plat/DString.h"
#include "rdr/MemOutStream.h"

namespace loc {

/// Appends the content of a quoted string: blanks, a '"', the content, a '"', and nothing else.
/// Shape: in the content, a '\' stands in front of one of "'?\ (itself), one of abfnrtv (as in C),
/// an x and two hexadecimal digits, or three octal digits. Nothing is said of UTF-8.
/// Errors: throws plat::Exception with one of eight texts; what comes before the fault is appended
/// then. To a DString, a zero byte ends the text.
void unescapeString(const char* text, plat::DString* target);
void unescapeString(const char* text, rdr::MemOutStream* target);

} // namespace loc
