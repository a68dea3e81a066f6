#pragma once

#include <clocale>

#include <locale.h> // locale_t is POSIX's, not the standard's: <clocale> need not have it
#if __has_include(<xlocale.h>)
#include <xlocale.h> // where some systems keep it
#endif

#include "plat/String.h"

namespace loc {

/// Asks the system about a locale by making its character types the whole process's, for the length
/// of a scope. Afterwards all categories are as they were.
/// Threads: meanwhile the others see that locale too, unless they have one of their own; only one
/// thread may do this at a time. The calling thread has none of its own meanwhile.
class GlobalLocaleSetter {
public:
    /// A null name is an empty one: what the environment says.
    explicit GlobalLocaleSetter(const char* name);
    GlobalLocaleSetter(const GlobalLocaleSetter&) = delete;
    GlobalLocaleSetter& operator=(const GlobalLocaleSetter&) = delete;
    ~GlobalLocaleSetter();

    /// The name by which the system calls the locale; null if it does not have it.
    const char* accepted() const noexcept { return reported.get(); }

private:
    plat::String saved;
    plat::String reported;
    locale_t threadsOwn;
};

} // namespace loc
