#pragma once

#include "plat/Exception.h"

namespace plat {

/// A text that must be UTF-8 is not.
///
/// With the parameter "_BadUtf8Assert" of the global configuration on, making one ends the process
/// instead, as a fatal assertion: to find out where bad text comes from.
class BadUtf8 : public Exception {
public:
    explicit BadUtf8(const char* text) noexcept;
    /// Formats the message. The number only selects this form.
    [[gnu::format(printf, 3, 4)]]
    BadUtf8(int, const char* format, ...) noexcept;
};

} // namespace plat
