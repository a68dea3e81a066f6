#pragma once

#include "plat/String.h"

namespace loc {

/// The country that a language without one stands for, such as "DE" for "de"; null for a language
/// that is not known. Languages are compared exactly.
/// Ownership: the result is static.
const char* langToCanonCountry(const char* language) noexcept;

/// A locale code made of a language and, if there is one, a country, such as "de_DE".
/// Shape: a null country is not given, and completed: with the default country for the default
/// language (if both are given), else with the language's usual one. An empty country stays
/// without. The code is empty where the language is. Nothing is changed to upper or lower case.
class LangCountry {
public:
    LangCountry(const char* language, const char* country, const char* defaultLanguage,
                const char* defaultCountry, const char* separator);

    const char* get() const noexcept { return code.str(); }
    bool isEmpty() const noexcept { return *get() == '\0'; }

private:
    plat::String code;
};

} // namespace loc
