#pragma once

#include <IOSurface/IOSurfaceRef.h>

#include "os/mac/CFUtil.h"

namespace svr {

/// Owns one reference to a frame surface, or null. Its use count is the owner's own affair.
using SurfacePtr = os::CFPtr<IOSurfaceRef>;

} // namespace svr
