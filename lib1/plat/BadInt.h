#pragma once

#include "plat/Exception.h"

namespace plat {

/// A text that should be a number is none.
class BadInt : public Exception {
public:
    explicit BadInt(const char* text) noexcept : Exception(text) {}
};

} // namespace plat
