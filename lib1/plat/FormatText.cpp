#include "plat/FormatText.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "plat/CopyBytes.h"
#include "plat/DecimalText.h"

namespace plat {

namespace {

/// A text that is cut where its room ends, and counted on.
class CutText {
public:
    CutText(char* out, std::size_t room) noexcept : begin(out), next(out), last(out + room - 1) {}

    void put(const char* bytes, std::size_t count) noexcept {
        const auto fitting = std::size_t(last - next);
        if (count > fitting) [[unlikely]] {
            excess += count - fitting;
            count = fitting;
        }
        copyBytes(next, bytes, count);
        next += count;
    }

    void put(char c) noexcept {
        if (next == last)
            ++excess;
        else
            *next++ = c;
    }

    void putSigned(std::int64_t value) noexcept { putDecimal(value); }
    void putUnsigned(std::uint64_t value) noexcept {
        if (value <= INT_MAX)
            putDecimal(std::int64_t(value));
        else
            putDecimal(value);
    }

    void putHex(std::uint64_t value) noexcept {
        char digits[16];
        char* const end = digits + sizeof digits;
        char* first = end;
        do {
            *--first = "0123456789abcdef"[value & 15];
            value >>= 4;
        } while (value != 0);
        put(first, std::size_t(end - first));
    }

    /// Ends the text and returns the length of all of it.
    std::size_t finish() noexcept {
        *next = '\0';
        return std::size_t(next - begin) + excess;
    }

private:
    template <typename Number>
    void putDecimal(Number value) noexcept {
        if (last - next >= longestDecimal) {
            next = writeDecimal(next, value);
            return;
        }
        char digits[longestDecimal];
        put(digits, std::size_t(writeDecimal(digits, value) - digits));
    }

    char* begin;
    char* next;
    char* last; ///< where the NUL goes at the latest
    std::size_t excess = 0;
};

/// An argument list of one's own: where a list is an array, a parameter is not one.
struct ArgumentCopy {
    explicit ArgumentCopy(va_list args) noexcept { va_copy(list, args); }
    ArgumentCopy(const ArgumentCopy&) = delete;
    ArgumentCopy& operator=(const ArgumentCopy&) = delete;
    ~ArgumentCopy() { va_end(list); }

    va_list list;
};

/// Writes a number for a directive behind its length modifier.
template <typename Signed, typename Unsigned>
bool putNumber(CutText* text, char directive, va_list* args) noexcept {
    switch (directive) {
    case 'd':
    case 'i':
        text->putSigned(va_arg(*args, Signed));
        return true;
    case 'u':
        text->putUnsigned(va_arg(*args, Unsigned));
        return true;
    case 'x':
        text->putHex(va_arg(*args, Unsigned));
        return true;
    default:
        return false;
    }
}

/// Writes what one directive asks for, and moves the format behind it.
/// Returns false for a directive that is the system's affair.
bool putDirective(CutText* text, const char** format, va_list* args) noexcept {
    const char directive = *(*format)++;
    switch (directive) {
    case 's': {
        const char* const argument = va_arg(*args, const char*);
        if (argument == nullptr)
            return false;
        text->put(argument, std::strlen(argument));
        return true;
    }
    case 'c':
        text->put(char(va_arg(*args, int)));
        return true;
    case '%':
        text->put('%');
        return true;
    case 'l': {
        const char kind = *(*format)++;
        if (kind != 'l')
            return putNumber<long, unsigned long>(text, kind, args);
        const char longKind = *(*format)++;
        return putNumber<long long, unsigned long long>(text, longKind, args);
    }
    case 'z': {
        const char kind = *(*format)++;
        return kind == 'u' && putNumber<std::ptrdiff_t, std::size_t>(text, kind, args);
    }
    default:
        return putNumber<int, unsigned>(text, directive, args);
    }
}

/// Formats with the directives of messages only.
/// Returns false at the first other one.
bool putMessage(CutText* text, const char* format, va_list* args) noexcept {
    for (;;) {
        const char* const run = format;
        while (*format != '%' && *format != '\0')
            ++format;
        text->put(run, std::size_t(format - run));
        if (*format == '\0')
            return true;
        ++format;
        if (!putDirective(text, &format, args))
            return false;
    }
}

} // namespace

int formatText(char* out, std::size_t room, const char* format, va_list args) noexcept {
    if (room != 0) {
        ArgumentCopy copy(args);
        CutText text(out, room);
        const bool isMessage = putMessage(&text, format, &copy.list);
        const std::size_t length = text.finish();
        if (isMessage && length <= INT_MAX)
            return int(length);
    }
    ArgumentCopy copy(args);
    return std::vsnprintf(out, room, format, copy.list);
}

} // namespace plat
