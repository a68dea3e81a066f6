#include "os/mac/FrameworkPath.h"

#include <cstring>

namespace os {

plat::DString frameworkPath(const char* umbrella, const char* framework) {
    plat::DString path;
    path.prf("/System/Library/Frameworks/%s.framework/", umbrella);
    path.prf("Frameworks/%s.framework/%s", framework, framework);
    return path;
}

const char* singleCandidate(const char* path) noexcept {
    const char* const lastSlash = std::strrchr(path, '/');
    const bool isSplit = std::strchr(path, ',') != nullptr;
    return isSplit && lastSlash != nullptr ? lastSlash + 1 : path;
}

} // namespace os
