#pragma once

#include "plat/Exception.h"

namespace plat {

/// A text that must be UTF-8 is not.
class BadUtf8 : public Exception {
public:
    explicit BadUtf8(const char* text) noexcept : Exception(text) {}
    /// Formats the message. The number only selects this form.
    [[gnu::format(printf, 3, 4)]]
    BadUtf8(int, const char* format, ...) noexcept;
};

} // namespace plat
