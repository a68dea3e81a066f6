#include "plat/TransactedFilePtr.h"

#include <cerrno>
#include <cstddef>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "plat/DPrintf.h"
#include "plat/Exception.h"
#include "plat/File.h"
#include "plat/StringUtil.h"
#include "plat/syncFile.h"

namespace plat {

// Both classes have members, so offsetof is up to the compiler: all of ours have it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
/// Sees the private members.
struct TransactedFilePtrLayout {
    static_assert(offsetof(TransactedFilePtr, tempName) == sizeof(FilePtr));
    static_assert(offsetof(TransactedFilePtr, finalName) == sizeof(FilePtr) + sizeof(char*));
};
#pragma GCC diagnostic pop

namespace {

/// The folder that the system looks a name up in: not DirName's, which takes ".." by the text.
std::unique_ptr<char[]> folderOf(const char* name) {
    const char* const slash = std::strrchr(name, '/');
    return std::unique_ptr<char[]>(slash == nullptr ? strDup(".")
                                                    : strDup(name, int(slash + 1 - name)));
}

/// Makes the names in a folder last. It cannot fail: the file has its name by now.
void syncFolderOf(const char* name) {
    const int folder = fileOpenFdNoThrow(folderOf(name).get(), O_RDONLY | O_CLOEXEC, 0);
    if (folder == -1)
        return;
    syncFile(folder);
    ::close(folder);
}

} // namespace

const char* TransactedFilePtr::suffix = ".tmp";

TransactedFilePtr::TransactedFilePtr(const char* name, bool isBinary)
    : tempName(DPrintf("%s%s", name, suffix).takeBuf()), finalName(strDup(name)) {
    replacePtr(fileOpen(tempName.get(), isBinary ? "wb" : "w"), true);
}

TransactedFilePtr::~TransactedFilePtr() {
    close();
    if (tempName != nullptr)
        fileRemoveNoThrow(tempName.get());
}

void TransactedFilePtr::commit() {
    if (get() == nullptr)
        return;
    flush();
    if (std::ferror(get()) != 0) { // stdio has dropped what an earlier write could not pass on
        errno = EIO;
        throw StdlibException("fflush()");
    }
    if (!syncFile(::fileno(get())))
        throw StdlibException("fsync()");
    close();
    fileRename(tempName.get(), finalName.get());
    tempName.reset();
    syncFolderOf(finalName.get());
}

} // namespace plat
