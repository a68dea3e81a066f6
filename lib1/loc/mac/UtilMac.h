#pragma once

#include <vector>

#include "plat/String.h"

namespace loc {

/// Appends the locales for the user's preferred languages, the first five at most; without such a
/// preference, the user's current locale. A language without a country gets that of the current
/// locale if it is the same language, else its usual one. Empty ones and duplicates are left out.
void getAppleLocales(std::vector<plat::String>* locales);

} // namespace loc
