#pragma once

#include "plat/Buf.h"

namespace plat {

/// Shifts a hexadecimal digit, of either case, into a number from the right.
/// Errors: false for another character; the number stays as it is.
bool readHexAndShift(char c, int* acc) noexcept;

/// Reads pairs of hexadecimal digits, of either case, as bytes.
/// Errors: false for an odd number of characters and for one that is no digit. What `out` held is
/// gone in any case.
bool hexStrToBin(const char* hex, MBuf<unsigned char>* out);

} // namespace plat
