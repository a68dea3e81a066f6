#pragma once

#include <vector>

#include "plat/String.h"

/// Lists of locale codes. A code is a language, a country behind '_' or '-', an encoding behind '.'
/// and a modifier behind '@', of which all but the language may be missing.
namespace loc {

/// Appends the locales of a list such as "de:fr_CA:en-GB.UTF-8" to `locales` as canonical codes
/// ("de_DE", "fr_CA", "en_GB"), without encodings and modifiers, empty ones and duplicates. A
/// language without a country is completed as LangCountry does; both defaults may be null.
void parseLocaleList(const char* list, std::vector<plat::String>* locales,
                     const char* defaultLanguage = nullptr, const char* defaultCountry = nullptr);

/// Appends the locales whose texts are searched for a list of locales, the preferred first: each
/// with its bare language behind it if it has a country, and then "en_US" and "en". Duplicates are
/// left out.
void getStringLocales(const std::vector<plat::String>& locales,
                      std::vector<plat::String>* stringLocales);

} // namespace loc
