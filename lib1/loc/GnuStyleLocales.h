#pragma once

#include <vector>

#include "plat/String.h"

namespace loc {

/// Appends the locales of the environment variable "LANGUAGE", a list separated by colons, to
/// `locales`, as parseLocaleList() does; a language without a country gets that of `defaultLocale`
/// if it is the same language. The default may be null.
/// Errors: false if the variable is not set, or names no locale.
bool getGnuStyleLocales(const char* defaultLocale, std::vector<plat::String>* locales);

} // namespace loc
