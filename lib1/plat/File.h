#pragma once

#include <cstdint>
#include <cstdio>

/// Files. Paths are UTF-8; sizes and positions are in bytes, and of 64 bits everywhere.
/// Errors: what throws, throws a SystemException with the name of the operation and its path; a
/// `NoThrow` form tells a failure by its result, and leaves the error in `errno`.
namespace plat {

/// Tells whether there is a file or directory; a symbolic link to nothing is none.
/// Errors: throws if that cannot be told, as for a path that runs through a file.
bool fileExists(const char* path);
/// Tells whether there is a file or directory that can be reached.
bool fileExistsNoThrow(const char* path) noexcept;

/// Removes a file or an empty directory.
void fileRemove(const char* path);
bool fileRemoveNoThrow(const char* path) noexcept;

/// Renames a file; one that has the new name already is replaced.
void fileRename(const char* oldPath, const char* newPath);
bool fileRenameNoThrow(const char* oldPath, const char* newPath) noexcept;

/// Opens a file as fopen() does.
/// Ownership: the caller closes it; see FilePtr.
std::FILE* fileOpen(const char* path, const char* mode);
std::FILE* fileOpenNoThrow(const char* path, const char* mode) noexcept;

/// Opens a file as open() does; the permissions are those of a file that is created.
/// Ownership: the caller closes the descriptor. The quiet form returns -1 for a failure.
int fileOpenFd(const char* path, int flags, unsigned permissions);
int fileOpenFdNoThrow(const char* path, int flags, unsigned permissions) noexcept;

/// Sets the length of the file; bytes that stdio still buffers are not looked at.
void fileTruncate(std::FILE* file, std::int64_t length);

/// The size of the file. The position stays.
std::int64_t fileGetSize(std::FILE* file);

/// The position; the quiet form returns -1 for a failure.
std::int64_t fileTell(std::FILE* file);
std::int64_t fileTellNoThrow(std::FILE* file) noexcept;

/// Goes to a position, counted from `origin` as for fseek().
void fileSeek(std::FILE* file, std::int64_t offset, int origin);
bool fileSeekNoThrow(std::FILE* file, std::int64_t offset, int origin) noexcept;

/// Locks the whole file, which is open for writing, against other processes that lock it. Returns
/// false if one holds it already; with `wait`, waits instead.
/// Shape: the lock is the process's: it has it once, on all handles, and closing any of them ends
/// it.
bool fileLock(std::FILE* file, bool wait);
/// Ends the lock.
void fileUnlock(std::FILE* file);

} // namespace plat
