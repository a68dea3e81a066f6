#include "plat/syncFile.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace plat {

namespace {

/// Here fsync only hands the bytes to the disk, which may keep them in its memory for a while. Not
/// every file system knows the other call.
bool isSynced(int descriptor) noexcept {
    return ::fcntl(descriptor, F_FULLFSYNC) == 0 || (errno != EINTR && ::fsync(descriptor) == 0);
}

} // namespace

bool syncFile(int descriptor) noexcept {
    bool isDone = false;
    do
        isDone = isSynced(descriptor);
    while (!isDone && errno == EINTR);
    return isDone || (errno != EIO && errno != ENOSPC && errno != EDQUOT);
}

} // namespace plat
