#include "plat/File.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "plat/Exception.h"

namespace plat {

static_assert(sizeof(off_t) == sizeof(std::int64_t), "files may be large");

namespace {

/// Sets a record lock, or waits for it. The lock is the classic one, which belongs to the process:
/// one of the open file would keep out the process's other handles, too.
bool setLock(std::FILE* file, short type, int command) noexcept {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET; // with start and length 0: the whole file, however it grows
    int result = 0;
    do
        result = ::fcntl(::fileno(file), command, &lock);
    while (result == -1 && errno == EINTR);
    return result != -1;
}

} // namespace

bool fileExists(const char* path) {
    if (fileExistsNoThrow(path))
        return true;
    if (errno != ENOENT)
        throw SystemExceptionFmt("fileExists(%s)", errno, path);
    return false;
}

bool fileExistsNoThrow(const char* path) noexcept {
    struct stat status;
    return ::stat(path, &status) == 0;
}

void fileRemove(const char* path) {
    if (!fileRemoveNoThrow(path))
        throw SystemExceptionFmt("fileRemove(%s)", errno, path);
}

bool fileRemoveNoThrow(const char* path) noexcept {
    return std::remove(path) == 0;
}

void fileRename(const char* oldPath, const char* newPath) {
    if (!fileRenameNoThrow(oldPath, newPath))
        throw SystemExceptionFmt("fileRename(%s,%s)", errno, oldPath, newPath);
}

bool fileRenameNoThrow(const char* oldPath, const char* newPath) noexcept {
    return std::rename(oldPath, newPath) == 0;
}

std::FILE* fileOpen(const char* path, const char* mode) {
    std::FILE* const file = fileOpenNoThrow(path, mode);
    if (file == nullptr)
        throw SystemExceptionFmt("fileOpen(%s)", errno, path);
    return file;
}

std::FILE* fileOpenNoThrow(const char* path, const char* mode) noexcept {
    return std::fopen(path, mode);
}

int fileOpenFd(const char* path, int flags, unsigned permissions) {
    const int descriptor = fileOpenFdNoThrow(path, flags, permissions);
    if (descriptor == -1)
        throw SystemExceptionFmt("fileOpenFd(%s)", errno, path);
    return descriptor;
}

int fileOpenFdNoThrow(const char* path, int flags, unsigned permissions) noexcept {
    return ::open(path, flags, static_cast<mode_t>(permissions));
}

void fileTruncate(std::FILE* file, std::int64_t length) {
    int result = 0;
    do
        result = ::ftruncate(::fileno(file), length);
    while (result != 0 && errno == EINTR);
    if (result != 0)
        throw SystemException("fileTruncate(ftruncate)", errno);
}

std::int64_t fileGetSize(std::FILE* file) {
    const std::int64_t position = fileTell(file);
    fileSeek(file, 0, SEEK_END);
    const std::int64_t size = fileTell(file);
    fileSeek(file, position, SEEK_SET);
    return size;
}

std::int64_t fileTell(std::FILE* file) {
    const std::int64_t position = fileTellNoThrow(file);
    if (position == -1)
        throw SystemException("fileTell", errno);
    return position;
}

std::int64_t fileTellNoThrow(std::FILE* file) noexcept {
    return ::ftello(file);
}

void fileSeek(std::FILE* file, std::int64_t offset, int origin) {
    if (!fileSeekNoThrow(file, offset, origin))
        throw SystemException("fileSeek", errno);
}

bool fileSeekNoThrow(std::FILE* file, std::int64_t offset, int origin) noexcept {
    return ::fseeko(file, offset, origin) == 0;
}

bool fileLock(std::FILE* file, bool wait) {
    if (setLock(file, F_WRLCK, wait ? F_SETLKW : F_SETLK))
        return true;
    if (errno != EAGAIN && errno != EACCES)
        throw SystemException("fileLock", errno);
    return false;
}

void fileUnlock(std::FILE* file) {
    if (!setLock(file, F_UNLCK, F_SETLK))
        throw SystemException("fileUnlock", errno);
}

} // namespace plat
