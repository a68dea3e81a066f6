#pragma once

#include <vector>

#include "loc/LibcLocale.h"
#include "plat/String.h"

/// What the operating system knows of the user's languages. Each system has a file of its own.
namespace loc {

/// Appends the locales that the user prefers, the first first, and gives the first locale of the
/// system that serves one of them: as it stands, or else its language with the usual country; "C"
/// if none does. Threads: as findLibcLocale().
void getOsLibcLocale(LibcLocale* result, std::vector<plat::String>* locales);

/// Has the system's user interface speak the languages of a list; an empty one changes nothing.
/// Where the system's user interface follows no such list, nothing is done.
void setUiLocale(const std::vector<plat::String>& locales);

} // namespace loc
