#pragma once

#include "plat/SString.h"

namespace plat {

/// The root of everything that the library throws: thrown by value, caught by reference. Its texts
/// are of fixed size, so that nothing is allocated on the way from a failure to its handler.
class Exception {
public:
    Exception() noexcept = default;
    /// Takes the text as it stands, without formatting.
    explicit Exception(const char* text) noexcept : message(text) {}
    /// Formats the message. The number only selects this form.
    [[gnu::format(printf, 3, 4)]]
    Exception(int, const char* format, ...) noexcept;

    SString<256> message;
    SString<32> typeName; ///< the kind of failure; empty for a plain Exception
};

/// A call of the operating system failed.
class SystemException : public Exception {
public:
    /// The message is the context, ": ", the system's text for the error and its number.
    SystemException(const char* context, int errorNumber) noexcept;

    /// Stores an error number and appends its description to the message.
    void strerror(int errorNumber) noexcept;

    int err = 0; ///< an errno value

protected:
    SystemException() noexcept;
};

/// A call of the C library failed: the message ends in the text for `errno`.
class StdlibException : public SystemException {
public:
    [[gnu::format(printf, 2, 3)]]
    explicit StdlibException(const char* format, ...) noexcept;
};

/// A call of the operating system failed; the context is formatted.
class SystemExceptionFmt : public SystemException {
public:
    /// The error number stands between the format and its arguments.
    [[gnu::format(printf, 2, 4)]]
    SystemExceptionFmt(const char* format, int errorNumber, ...) noexcept;
};

} // namespace plat
