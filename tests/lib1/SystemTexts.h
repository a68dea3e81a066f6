#pragma once

#include <clocale>
#include <cstring>
#include <string>

/// Sets the program's locale. Tests of one program run one after the other, in one thread.
inline bool setLocale(const char* name) {
    return std::setlocale(LC_ALL, name) != nullptr; // NOLINT(concurrency-mt-unsafe)
}

/// The system's text for an error number.
inline std::string systemErrorText(int err) {
    return std::strerror(err); // NOLINT(concurrency-mt-unsafe): as above
}
