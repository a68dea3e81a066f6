#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the run with a finding unless a condition holds; also in a build without assertions.
#define REQUIRE(condition)                                                                         \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                   \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)
