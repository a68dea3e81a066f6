#include "platform/linux/core/Guard.h"

#include "plat/Exception.h"
#include "plat/LogWriter.h"

#include <exception>

static plat::LogWriter vlog("Platform");

namespace platform {

namespace {

void logCurrentException(const char* where) {
    try {
        throw;
    } catch (const plat::Exception& exception) {
        vlog.error("%s: an exception was dropped: %s", where, exception.message.get());
    } catch (const std::exception& exception) {
        vlog.error("%s: an exception was dropped: %s", where, exception.what());
    } catch (...) {
        vlog.error("%s: an exception was dropped", where);
    }
}

} // namespace

void logDroppedException(const char* where) noexcept {
    try {
        logCurrentException(where);
    } catch (...) { // NOLINT(bugprone-empty-catch): the log itself throws; nobody is left to tell
    }
}

} // namespace platform
