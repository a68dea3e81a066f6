#pragma once

#include "plat/DString.h"

namespace os {

/// Where macOS keeps the library of a framework that is a part of another one.
plat::DString frameworkPath(const char* umbrella, const char* framework);

/// The path in a form that a lookup takes for one candidate: itself, or its last component when a
/// comma would split it; the loader knows a library that is loaded already by that name.
/// Ownership: borrowed from the argument.
const char* singleCandidate(const char* path) noexcept;

/// The library that has the functions of Core Graphics: an absolute path, in that form. One file
/// per system.
plat::DString coreGraphicsPath();

} // namespace os
