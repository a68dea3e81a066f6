#pragma once

#include <CoreGraphics/CGDisplayStream.h>

#include "os/mac/CFUtil.h"

namespace svr {

/// Owns one reference to an update, the list of what changed in a frame, or null.
using UpdatePtr = os::CFPtr<CGDisplayStreamUpdateRef>;

} // namespace svr
