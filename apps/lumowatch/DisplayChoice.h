#pragma once

#include <CoreGraphics/CGDirectDisplay.h>

#include <cstdio>

namespace lumowatch {

/// The display that an identifier means: 0 the main one.
/// Errors: kCGNullDirectDisplay if there is no such display.
CGDirectDisplayID chooseDisplay(int identifier);

/// Prints the displays, one a line. Returns whether there is any.
bool listDisplays(std::FILE* out);

} // namespace lumowatch
