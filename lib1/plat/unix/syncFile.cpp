#include "plat/syncFile.h"

#include <cerrno>

#include <unistd.h>

namespace plat {

bool syncFile(int descriptor) noexcept {
    int result = 0;
    do
        result = ::fsync(descriptor);
    while (result != 0 && errno == EINTR);
    return result == 0 || (errno != EIO && errno != ENOSPC && errno != EDQUOT);
}

} // namespace plat
