#pragma once

#include <cstdio>
#include <string>
#include <vector>

/// The modes of the files that were opened by name, in order.
inline std::vector<std::string> openedModes;

// This stands in front of the C library's, for the library, which is built for large files. Only
// one source file of a program may include it.
extern "C" __attribute__((visibility("default"))) std::FILE* fopen64(const char* path,
                                                                     const char* mode) {
    openedModes.emplace_back(mode);
    return std::fopen(path, mode);
}
