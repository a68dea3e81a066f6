#pragma once

#include <cstddef>
#include <cstdio>

#include "plat/FilePtr.h"
#include "rdr/BufferedInStream.h"

namespace rdr {

/// Reads a file. It never says that there is no data now: reading a pipe or a terminal waits until
/// the buffer is full or the input ends. It is not rewindable, so that lines and items may be of
/// any length.
/// Errors: every reader throws EndOfStream at the end of the file, and plat::StdlibException
/// "reading from file failed".
class FileInStream : public BufferedInStream {
public:
    /// Opens a file as open() does; a null name opens none.
    FileInStream(const char* name, bool isBinary);
    FileInStream(std::nullptr_t, bool isBinary)
        : FileInStream(static_cast<const char*>(nullptr), isBinary) {}
    /// Reads an open file, and closes it in the end if it shall own it. Processes that are started
    /// inherit the file or not, as before.
    FileInStream(std::FILE* openFile, bool isOwned);

    /// Opens a file, "-" for standard input, which is then not inherited by processes that are
    /// started. What is buffered of the file before is read first, and the position goes on.
    /// Errors: throws what FilePtr::open() throws; the file before stays.
    void open(const char* name, bool isBinary);
    /// Reads an open file, as the constructor does, behind what is buffered.
    void setFilePtr(std::FILE* openFile, bool isOwned) noexcept;

    /// Never returns 0.
    /// Errors: without a file, asserts.
    int read(void* buf, int len) override;

private:
    plat::FilePtr file;
};

} // namespace rdr
