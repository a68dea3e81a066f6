#pragma once

#include <set>

#include "plat/String.h"

namespace plat {

/// No strings at all, as a default argument. Inline, so that it is made before every object of a
/// file that includes it: static initialisers may use it.
inline const std::set<String> emptyStringSet;

} // namespace plat
