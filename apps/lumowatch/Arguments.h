#pragma once

#include <string>

namespace lumowatch {

/// What the command line asks for.
struct Arguments {
    double seconds = 0;    ///< 0: until interrupted
    std::string pngFolder; ///< empty: no pictures are written
    bool isHelp = false;

    /// Errors: false, with one sentence in `error`.
    bool parse(int argc, const char* const* argv, std::string* error);
};

extern const char* const usage;

} // namespace lumowatch
