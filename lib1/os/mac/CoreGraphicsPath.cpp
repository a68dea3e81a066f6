#include "os/mac/FrameworkPath.h"

namespace os {

plat::DString coreGraphicsPath() {
    return frameworkPath("ApplicationServices", "CoreGraphics");
}

} // namespace os
