#pragma once

#include "plat/Exception.h"

namespace plat {

/// A condition that had to hold did not.
class AssertionFail : public Exception {
public:
    /// Ownership: keeps both pointers; they point to literals.
    AssertionFail(const char* condition, const char* sourceFile, int sourceLine) noexcept;

    /// Appends ": " and an explanation to the message.
    [[gnu::format(printf, 2, 3)]]
    AssertionFail& fmt(const char* format, ...) noexcept;

    const char* expr; ///< the source text of the condition
    const char* file;
    int line;
};

/// Prints the message to standard error, logs it and aborts.
[[noreturn]] void assertFatal_(const AssertionFail& failure) noexcept;

/// Builds the failure and ends the process with it: a check that fits into one call stays small
/// where it is inlined.
[[noreturn]] void failFatally(const char* condition, const char* file, int line) noexcept;

/// Logs the message as a warning.
void assertWarn_(const AssertionFail& failure) noexcept;

} // namespace plat

#define LUMO_ASSERTION_FAIL(condition) ::plat::AssertionFail(#condition, __FILE__, __LINE__)

/// Ends the process with a message unless the condition holds.
#define LUMO_ASSERT_FATAL(condition)                                                               \
    do {                                                                                           \
        if (!(condition)) [[unlikely]]                                                             \
            ::plat::failFatally(#condition, __FILE__, __LINE__);                                   \
    } while (false)

/// Ends the process with a message and an explanation unless the condition holds.
#define LUMO_ASSERT_FATAL_MSG(condition, ...)                                                      \
    do {                                                                                           \
        if (!(condition)) [[unlikely]]                                                             \
            ::plat::assertFatal_(LUMO_ASSERTION_FAIL(condition).fmt(__VA_ARGS__));                 \
    } while (false)

/// Throws the AssertionFail itself unless the condition holds: it neither prints nor logs.
#define LUMO_ASSERT_THROW(condition)                                                               \
    do {                                                                                           \
        if (!(condition)) [[unlikely]]                                                             \
            throw LUMO_ASSERTION_FAIL(condition);                                                  \
    } while (false)

/// Logs a message unless the condition holds.
#define LUMO_ASSERT_WARN(condition)                                                                \
    do {                                                                                           \
        if (!(condition)) [[unlikely]]                                                             \
            ::plat::assertWarn_(LUMO_ASSERTION_FAIL(condition));                                   \
    } while (false)

/// Logs a message and an explanation unless the condition holds.
#define LUMO_ASSERT_WARN_MSG(condition, ...)                                                       \
    do {                                                                                           \
        if (!(condition)) [[unlikely]]                                                             \
            ::plat::assertWarn_(LUMO_ASSERTION_FAIL(condition).fmt(__VA_ARGS__));                  \
    } while (false)
