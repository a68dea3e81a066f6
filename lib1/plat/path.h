#pragma once

#include "plat/String.h"

/// Paths of components separated by '/', taken by their text alone: nothing here looks at a file,
/// so a ".." undoes the component in front of it even where that is a symbolic link.
namespace plat {

/// Tells whether a path starts at the root.
bool isAbsolutePath(const char* path) noexcept;

/// Tells whether a path is anything but "/". It looks at the text only: "//" has a parent.
bool hasParentDir(const char* path) noexcept;

/// The canonical form of a path: no empty component, no ".", no ".." but at the start of a relative
/// path, no '/' at the end; "." for the path of nothing.
class CanonicalName : public String {
public:
    explicit CanonicalName(const char* path);
};

/// The canonical path of the directory that a path is in. ".", which has no name, is in "..", "/"
/// in itself.
class DirName : public String {
public:
    explicit DirName(const char* path);
};

/// The last component of a path's canonical form, without the suffix (unless that is null, or the
/// whole component). It is "/" for the root, and "." for a path of nothing but "..", which has no
/// component with a name.
class BaseName : public String {
public:
    explicit BaseName(const char* path, const char* suffix = nullptr);
};

} // namespace plat
