#pragma once

#include <cstddef>

namespace plat {

/// Writes the system's text for an error number.
/// Errors: false for a number that the system does not know and for a text that does not fit; what
/// the array holds then is not said.
bool systemErrorText(int err, char* out, std::size_t room) noexcept;

} // namespace plat
