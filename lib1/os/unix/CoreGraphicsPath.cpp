#include "os/mac/FrameworkPath.h"

#include <climits>
#include <cstdlib>

#include <dlfcn.h>

#include <CoreGraphics/CGDirectDisplay.h>

namespace os {

// The file that has the functions which the program is linked with already.
plat::DString coreGraphicsPath() {
    plat::DString path;
    Dl_info info;
    if (dladdr(reinterpret_cast<const void*>(&CGDisplayBounds), &info) == 0)
        return path;
    char absolute[PATH_MAX];
    path.append(
        singleCandidate(realpath(info.dli_fname, absolute) == nullptr ? info.dli_fname : absolute));
    return path;
}

} // namespace os
