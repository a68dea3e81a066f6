#pragma once

#include <cstdlib>

/// Environment variables that choose locales.
inline constexpr const char* localeVariables[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LC_CTYPE",
                                                  "LANG"};

/// Lets the process see the locales of the system that were built for tests, and no others; and
/// forget what the machine prefers.
struct TestLocales {
    TestLocales() {
        ::setenv("LOCPATH", LUMO_TEST_LOCALES, 1);
        for (const char* variable : localeVariables)
            ::unsetenv(variable);
    }
};
inline const TestLocales testLocales;

/// Hides those, too, for the length of a scope.
struct NoLocales {
    NoLocales() { ::setenv("LOCPATH", LUMO_TEST_LOCALES "/none", 1); }
    NoLocales(const NoLocales&) = delete;
    NoLocales& operator=(const NoLocales&) = delete;
    ~NoLocales() { ::setenv("LOCPATH", LUMO_TEST_LOCALES, 1); }
};
