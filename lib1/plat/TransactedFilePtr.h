#pragma once

#include <memory>

#include "plat/FilePtr.h"

namespace plat {

/// Writes a file under a temporary name beside its final one, and puts it in place on commit():
/// whoever looks sees the old file or the new one, whole. Without a commit the final file is not
/// touched, and the temporary one is removed.
class TransactedFilePtr : public FilePtr {
public:
    /// Opens the temporary file, which is named as the final one with `suffix` behind it.
    /// Errors: throws "fileOpen(...)".
    TransactedFilePtr(const char* name, bool isBinary);
    ~TransactedFilePtr();

    /// Puts the file in place and closes it; does nothing when it is closed already. A committed
    /// file survives a crash of the machine: its bytes are on the disk before it gets its name, and
    /// its name is there when this returns, as far as the file system can be told to do so. Only in
    /// a folder that may not be read does the system write the name when it likes.
    /// Errors: throws StdlibException "fflush()", also for a write that failed before, or "fsync()"
    /// where the disk did not take the bytes: the file stays open then. Throws "fileRename(...)"
    /// with the file closed. In each case the destructor removes the temporary file, and the final
    /// one is as it was.
    void commit();

    /// What a temporary name ends in; it may be changed while no TransactedFilePtr is made.
    static const char* suffix;

private:
    std::unique_ptr<char[]> tempName; ///< null once committed
    std::unique_ptr<char[]> finalName;

    friend struct TransactedFilePtrLayout;
};

} // namespace plat
