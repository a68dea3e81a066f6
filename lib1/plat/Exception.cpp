#include "plat/Exception.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "plat/SystemErrorText.h"

namespace plat {

static_assert(offsetof(Exception, message) == 0, "an exception's address is its text's");
static_assert(offsetof(Exception, typeName) == sizeof(Exception::message));
static_assert(sizeof(Exception) == 256 + 32, "two texts and nothing else");
static_assert(sizeof(SystemException) == sizeof(Exception) + sizeof(int));
static_assert(!std::is_polymorphic_v<SystemExceptionFmt>);

Exception::Exception(int, const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    message.vprf(format, args);
    va_end(args);
}

SystemException::SystemException() noexcept {
    typeName.append("System");
}

SystemException::SystemException(const char* context, int errorNumber) noexcept
    : SystemException() {
    message.append(context);
    strerror(errorNumber);
}

void SystemException::strerror(int errorNumber) noexcept {
    err = errorNumber;
    if (*message.get() != '\0')
        message.append(": ");
    if (err == 0) {
        message.append("Success");
    } else {
        char* const end = message.data() + std::strlen(message.get());
        char* const last = message.data() + message.size() - 1;
        if (systemErrorText(err, end, std::size_t(last + 1 - end))) {
            *last = '\0';
        } else {
            *end = '\0';
            message.append("Unknown error");
        }
    }
    message.prf(" (%d)", err);
}

StdlibException::StdlibException(const char* format, ...) noexcept {
    typeName.clear().append("Stdlib");
    va_list args;
    va_start(args, format);
    message.vprf(format, args);
    va_end(args);
    strerror(errno);
}

SystemExceptionFmt::SystemExceptionFmt(const char* format, int errorNumber, ...) noexcept {
    va_list args;
    va_start(args, errorNumber);
    message.vprf(format, args);
    va_end(args);
    strerror(errorNumber);
}

} // namespace plat
