#include "plat/Assertion.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "plat/CrashInfo.h"
#include "plat/LogWriter.h"

static plat::LogWriter vlog("Assertion");

namespace plat {

// With a base that has members too, offsetof is up to the compiler: all of ours have it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(offsetof(AssertionFail, expr) == sizeof(Exception));
static_assert(offsetof(AssertionFail, file) == offsetof(AssertionFail, expr) + sizeof(char*));
static_assert(offsetof(AssertionFail, line) == offsetof(AssertionFail, file) + sizeof(char*));
#pragma GCC diagnostic pop

namespace {

/// Logs a message in a place where nothing may be thrown.
void logQuietly(const char* format, const AssertionFail& failure) noexcept {
    try {
        vlog.error(format, failure.message.get());
    } catch (...) { // NOLINT(bugprone-empty-catch): whatever the destination throws, this goes on
    }
}

} // namespace

AssertionFail::AssertionFail(const char* condition, const char* sourceFile, int sourceLine) noexcept
    : Exception(1, "Assertion '%s' failed at %s:%d", condition, sourceFile, sourceLine),
      expr(condition), file(sourceFile), line(sourceLine) {
    typeName.append("AssertionFail");
}

AssertionFail& AssertionFail::fmt(const char* format, ...) noexcept {
    message.append(": ");
    va_list args;
    va_start(args, format);
    message.vprf(format, args);
    va_end(args);
    return *this;
}

void assertFatal_(const AssertionFail& failure) noexcept {
    std::fprintf(stderr, "%s\n", failure.message.get());
    logQuietly("%s", failure);
    setCrashInfo(failure.message.get());
    std::abort();
}

void failFatally(const char* condition, const char* file, int line) noexcept {
    assertFatal_(AssertionFail(condition, file, line));
}

void assertWarn_(const AssertionFail& failure) noexcept {
    logQuietly("Warning: %s", failure);
}

} // namespace plat
