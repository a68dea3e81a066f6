#pragma once

#include <memory>
#include <vector>

#include "loc/LibcLocale.h"
#include "loc/LibcLocaleSetter.h"
#include "loc/TransMap.h"
#include "plat/String.h"

namespace loc {

/// Gives the calling thread other locales than the process for the length of a scope: the texts it
/// sees, and the locale of the system that it runs under.
/// Threads: on the stack of one thread, and strictly nested there.
class LocaleSetter {
public:
    /// Takes a list of locales separated by colons. Null or empty changes no texts, and gives the
    /// thread the system's locale of the setter around this one, else that of the process.
    /// Errors: codes for which the system has no locale are logged; if it has none for any, the
    /// thread runs under "C".
    explicit LocaleSetter(const char* list);
    LocaleSetter(const LocaleSetter&) = delete;
    LocaleSetter& operator=(const LocaleSetter&) = delete;
    /// Errors: asserts that this is the thread's innermost setter.
    ~LocaleSetter();

    /// Chooses the system's locale for threads whose setter has no list; no thread's changes by
    /// that. Errors: as for the constructor.
    static void setProcessLocale(const std::vector<plat::String>& locales);
    /// Does the same by the preferences of the user, which are appended to `locales`.
    static void useOsProcessLocale(std::vector<plat::String>* locales);
    /// Gives the system's locale for the first code that it has one for, else "C".
    static void getLibcLocale(const std::vector<plat::String>& locales, LibcLocale* result);
    /// The system's locale of the calling thread's innermost setter; "C" without one, or if that
    /// one has no list. Ownership: valid while the setter is.
    static const LibcLocale& getThreadLibcLocale();
    /// The list of the innermost setter that has one, as it was given, else the process's locales.
    static plat::String getThreadLocales();

private:
    friend struct LocaleSetterLayout;

    void apply();
    void useList();
    void inherit();

    LibcLocale libcLocale;
    plat::String requested; ///< null for none
    LocaleSetter* previous;
    std::unique_ptr<TransMap> transMap;
    std::unique_ptr<LibcLocaleSetter> libcSetter; ///< goes before the map does
};

} // namespace loc
