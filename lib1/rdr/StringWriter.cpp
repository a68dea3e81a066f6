#include "rdr/StringWriter.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#include "plat/FormatText.h"

namespace rdr {

static_assert(sizeof(StringWriter) == sizeof(OutStream*), "the stream and nothing else");

StringWriter& StringWriter::prf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vprf(format, args);
    va_end(args);
    return *this;
}

StringWriter& StringWriter::vprf(const char* format, va_list args) {
    auto guess = std::int64_t(std::strlen(format));
    for (;;) {
        if (guess >= std::numeric_limits<int>::max())
            throw std::bad_array_new_length();
        out->ensureRoom(int(guess) + 1);
        auto* const text = reinterpret_cast<char*>(out->getPtr());
        const std::ptrdiff_t room = out->getEnd() - out->getPtr();
        const int written = plat::formatText(text, std::size_t(room), format, args);
        if (written >= 0 && written < room) {
            out->setPtr(out->getPtr() + written);
            return *this;
        }
        guess = written < 0 ? 2 * guess : written;
    }
}

StringWriter& StringWriter::appendChar(char c) {
    return appendChar(c, 1);
}

StringWriter& StringWriter::appendChar(char c, int n) {
    if (n < 1)
        return *this;
    if (n == std::numeric_limits<int>::max())
        throw std::bad_array_new_length();
    out->ensureRoom(n + 1);
    std::memset(out->getPtr(), c, std::size_t(n));
    out->setPtr(out->getPtr() + n);
    *out->getPtr() = '\0';
    return *this;
}

} // namespace rdr
