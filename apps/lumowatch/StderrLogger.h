#pragma once

#include "plat/Logger.h"

#include <cstdio>

namespace lumowatch {

/// Log lines of this program and of the library, on standard error.
class StderrLogger final : public plat::Logger {
public:
    StderrLogger() : plat::Logger("stderr") {}

    void write(int /*level*/, const char* writerName, const char* text) override {
        std::fprintf(stderr, "%s: %s\n", writerName, text);
    }
    void flush() override { std::fflush(stderr); }
};

} // namespace lumowatch
