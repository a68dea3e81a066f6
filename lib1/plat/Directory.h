#pragma once

/// Directories. Paths are UTF-8; private means accessible by the owner only.
/// Errors: what throws, throws a SystemException with the name of the operation and its path; a
/// `NoThrow` form tells a failure by its result, and leaves the error in `errno`.
namespace plat {

/// Creates a directory; a private one is never visible with other permissions. Returns false if it
/// exists already; with both flags set it is then made private.
bool mkDir(const char* path, bool isPrivate, bool makeExistingPrivate);

/// Creates a directory and those above it that are missing, all of them private or not. Returns
/// what mkDir() does for the path itself; directories above it that exist stay as they are.
bool mkPath(const char* path, bool isPrivate, bool makeExistingPrivate);

/// Creates a directory with the owner, the group and the permissions of the one above it, but for
/// the right of group and others to write, or with those of the owner alone if it is private. It is
/// private until then. Returns false, and changes nothing, if it exists already.
bool mkDirMatchParent(const char* path, bool isPrivate);

/// Tells whether there is a directory, which may be behind a symbolic link.
bool isDir(const char* path) noexcept;

/// Makes a file or directory private: gives it to the effective user, and takes all permissions
/// from group and others.
void fileMakePrivate(const char* path);

/// Removes a directory; with `isRecursive` what is in it, too. Symbolic links in it are removed,
/// not followed. A path that is itself one is: its directory is emptied, and then removing the link
/// as a directory fails.
void rmDir(const char* path, bool isRecursive);
/// Errors: with `isRecursive`, throws for a file in it that cannot be removed.
bool rmDirNoThrow(const char* path, bool isRecursive);

/// Makes a directory the current one.
void chDir(const char* path);
bool chDirNoThrow(const char* path) noexcept;

} // namespace plat
