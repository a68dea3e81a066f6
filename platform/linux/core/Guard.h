#pragma once

#include <cxxabi.h>

namespace platform {

/// Writes that an exception was dropped, and its text if it has one; throws nothing. For use inside
/// a catch block.
void logDroppedException(const char* where) noexcept;

/// Runs the function and drops what it throws, with a log line: for code that is called from C,
/// where an exception would end the host's process or leave a run loop half served. The forced
/// unwinding of a thread that is being cancelled passes through.
template <class Function>
void runGuarded(const char* where, Function&& function) {
    try {
        function();
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        logDroppedException(where);
    }
}

} // namespace platform
