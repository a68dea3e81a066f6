#pragma once

#include <clocale>

#include <locale.h> // locale_t is POSIX's, not the standard's: <clocale> need not have it
#if __has_include(<xlocale.h>)
#include <xlocale.h> // where some systems keep it
#endif

namespace loc {

/// Gives the calling thread a locale of the system for the length of a scope: character types,
/// collation, messages, money, numbers and times.
class LibcLocaleSetter {
public:
    /// A name that the system does not know changes nothing.
    explicit LibcLocaleSetter(const char* name);
    LibcLocaleSetter(const LibcLocaleSetter&) = delete;
    LibcLocaleSetter& operator=(const LibcLocaleSetter&) = delete;
    ~LibcLocaleSetter();

private:
    friend struct LibcLocaleSetterLayout;

    locale_t saved;
    locale_t created; ///< null if there is none
};

} // namespace loc
