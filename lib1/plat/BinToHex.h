#pragma once

#include "plat/Buf.h"
#include "plat/String.h"

namespace plat {

/// The lower-case hexadecimal digit for 0 to 15.
/// Errors: throws an AssertionFail for other values.
char intToHex(int i);

/// Writes bytes as text: two lower-case digits each, the high one first.
String binToHexStr(CBuf<unsigned char> bytes);

} // namespace plat
