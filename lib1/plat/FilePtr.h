#pragma once

#include <cstdio>

#include "plat/DString.h"

namespace plat {

/// Holds a stdio file, and closes it if it owns it; null is empty. The name "-" stands for standard
/// input or output, which are not owned. A failed close is logged, never thrown.
/// Threads: one thread at a time.
class FilePtr {
public:
    enum class Mode : int {
        Read,            ///< an existing file, or standard input
        Write,           ///< a new or emptied file, or standard output
        Append,          ///< behind what is there, or on standard output
        AppendRead,      ///< as Append, and reading
        ReadWrite,       ///< an existing file
        ReadWriteCreate, ///< an existing file, or a new one where that cannot be opened
        WriteRead,       ///< a new or emptied file, and reading
    };
    using enum Mode;

    explicit FilePtr(std::FILE* heldFile = nullptr, bool isOwned = true) noexcept
        : owned(isOwned), file(heldFile) {}
    /// Opens a file. Errors: as for open().
    FilePtr(const char* name, Mode mode, bool isBinary);
    FilePtr(const FilePtr&) = delete;
    FilePtr& operator=(const FilePtr&) = delete;
    ~FilePtr() { close(); }

    std::FILE* get() const noexcept { return file; }
    bool isOwned() const noexcept { return owned; }

    /// Opens a file and holds it instead of the one before.
    /// Errors: throws "fileOpen(...)", or that the mode does not fit "-"; the file before stays.
    void open(const char* name, Mode mode, bool isBinary);
    /// Closes the file and holds another.
    void replacePtr(std::FILE* newFile, bool isOwned) noexcept;
    /// Passes on what stdio still buffers.
    /// Errors: throws StdlibException "fflush()".
    void flush();
    /// Reads a line without its '\n'; a '\r' stays. Returns false at the end of the file, which
    /// need not end in '\n'.
    /// Shape: a NUL hides the bytes behind it.
    /// Errors: throws SystemException "Error reading from file".
    bool readLine(DString* line);

    /// Keeps the processes that this one starts from inheriting the file, whatever the second
    /// argument says. A null file is ignored.
    static void setInheritable(std::FILE* file, bool isInheritable) noexcept;

protected:
    /// Closes the file if it is owned, and empties the holder.
    void close() noexcept;

private:
    bool owned; ///< whether the holder closes the file
    std::FILE* file;

    friend struct FilePtrLayout;
};

} // namespace plat
