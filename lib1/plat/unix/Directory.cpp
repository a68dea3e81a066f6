#include "plat/Directory.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include "plat/DPrintf.h"
#include "plat/Exception.h"
#include "plat/File.h"
#include "plat/String.h"
#include "plat/path.h"

namespace plat {

namespace {

constexpr mode_t groupAndOthers = 0077;
constexpr mode_t ownersBits = 07700; ///< with the set-user-id, set-group-id and sticky bits
constexpr mode_t bitsWithoutWriting = 07755;
constexpr auto sameGroup = static_cast<gid_t>(-1);

struct CloseListing {
    void operator()(DIR* listing) const noexcept { ::closedir(listing); }
};

bool isLinkToItsOwn(const char* name) noexcept {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

/// The names in a directory; none if it cannot be listed. All at once, so that it is closed by the
/// time that anything is removed: directories may lie deeper than files can be open.
std::vector<String> namesIn(const char* path) {
    std::vector<String> names;
    const std::unique_ptr<DIR, CloseListing> listing(::opendir(path));
    if (listing == nullptr)
        return names;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the listing is this thread's own
    while (const dirent* const entry = ::readdir(listing.get())) {
        if (!isLinkToItsOwn(entry->d_name))
            names.emplace_back(entry->d_name);
    }
    return names;
}

void removeWhatIsIn(const char* path) {
    for (const String& name : namesIn(path)) {
        const DPrintf entry("%s/%s", path, name.get());
        struct stat status;
        if (::lstat(entry.get(), &status) != 0)
            continue;
        if (S_ISDIR(status.st_mode))
            rmDirNoThrow(entry.get(), true);
        else
            fileRemove(entry.get());
    }
}

} // namespace

bool mkDir(const char* path, bool isPrivate, bool makeExistingPrivate) {
    if (::mkdir(path, isPrivate ? 0700 : 0777) == 0)
        return true;
    const int err = errno;
    if (!isDir(path))
        throw SystemExceptionFmt("mkDir(%s)", err, path);
    if (isPrivate && makeExistingPrivate)
        fileMakePrivate(path);
    return false;
}

bool mkPath(const char* path, bool isPrivate, bool makeExistingPrivate) {
    try {
        return mkDir(path, isPrivate, makeExistingPrivate);
    } catch (const SystemException& e) {
        if (e.err != ENOENT)
            throw;
    }
    mkPath(DirName(path).get(), isPrivate, false);
    return mkDir(path, isPrivate, makeExistingPrivate);
}

bool mkDirMatchParent(const char* path, bool isPrivate) {
    if (!mkDir(path, true, false))
        return false;
    const DirName parentPath(path);
    struct stat parent;
    if (::stat(parentPath.get(), &parent) != 0)
        throw SystemException("mkDirMatchParent/stat", errno);
    if (::chown(path, parent.st_uid, parent.st_gid) != 0)
        throw SystemException("mkDirMatchParent/chown", errno);
    if (::chmod(path, parent.st_mode & (isPrivate ? ownersBits : bitsWithoutWriting)) != 0)
        throw SystemException("mkDirMatchParent/chmod", errno);
    return true;
}

bool isDir(const char* path) noexcept {
    struct stat status;
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

void fileMakePrivate(const char* path) {
    struct stat status;
    if (::stat(path, &status) != 0)
        throw SystemExceptionFmt("fileMakePrivate/stat(%s)", errno, path);
    if (const uid_t user = ::geteuid();
        status.st_uid != user && ::chown(path, user, sameGroup) != 0)
        throw SystemExceptionFmt("fileMakePrivate/chown(%s)", errno, path);
    if ((status.st_mode & groupAndOthers) != 0 && ::chmod(path, status.st_mode & ownersBits) != 0)
        throw SystemExceptionFmt("fileMakePrivate/chmod(%s)", errno, path);
}

void rmDir(const char* path, bool isRecursive) {
    if (!rmDirNoThrow(path, isRecursive))
        throw SystemExceptionFmt("rmDir(%s)", errno, path);
}

bool rmDirNoThrow(const char* path, bool isRecursive) {
    if (isRecursive)
        removeWhatIsIn(path);
    return ::rmdir(path) == 0;
}

void chDir(const char* path) {
    if (!chDirNoThrow(path))
        throw SystemExceptionFmt("chDir(%s)", errno, path);
}

bool chDirNoThrow(const char* path) noexcept {
    return ::chdir(path) == 0;
}

} // namespace plat
