#include "loc/LString.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

#include "loc/LocaleSetter.h"
#include "loc/Localize.h"
#include "plat/DecimalText.h"
#include "plat/LogWriter.h"
#include "plat/StringUtil.h"
#include "plat/Utf8.h"
#include "rdr/MemOutStream.h"

namespace loc {

struct LStringLayout {
    static_assert(sizeof(LString) == sizeof(plat::DString));
    static_assert(offsetof(PrintfArg, type) == 0);
    static_assert(offsetof(PrintfArg, signedValue) == sizeof(int));
    static_assert(offsetof(PrintfArg, unsignedValue) == 2 * sizeof(int));
    static_assert(offsetof(PrintfArg, stringValue) >= 3 * sizeof(int));
    static_assert(offsetof(PrintfArg, next) == offsetof(PrintfArg, stringValue) + sizeof(void*));
    static_assert(sizeof(PrintfArgList) == sizeof(void*));
};

namespace {

/// One directive of a format, behind its percent sign.
struct Directive {
    const PrintfArg* arg = nullptr;
    int precision = 0; ///< 0 for none
    bool hasPlus = false;
    char letter = '\0';
    const char* end = nullptr; ///< behind the letter
};

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

/// Reads a number from 1 to INT_MAX: digits alone. Moves `*p` behind it, unless it is none.
bool readNumber(const char** p, int* number) noexcept {
    constexpr std::int64_t largest = std::numeric_limits<int>::max();
    std::int64_t value = 0;
    const char* digit = *p;
    for (; isDigit(*digit); ++digit)
        value = std::min(value * 10 + (*digit - '0'), largest + 1);
    if (value < 1 || value > largest)
        return false;
    *p = digit;
    *number = int(value);
    return true;
}

const PrintfArg* findArg(const PrintfArgList& args, int position) noexcept {
    const PrintfArg* arg = args.first;
    for (; arg != nullptr && position > 1; --position)
        arg = arg->next;
    return arg;
}

/// Reads what stands between the percent sign and the letter, in any order.
/// Errors: false if the format ends, or a position names no argument.
bool parse(const char* p, const PrintfArgList& args, Directive* directive) noexcept {
    for (;;) {
        const char* next = p + 1;
        int number = 0;
        if (*p == '\0')
            return false;
        if (*p == '+' && !directive->hasPlus) {
            directive->hasPlus = true;
        } else if (*p == '.' && directive->precision == 0 && readNumber(&next, &number)) {
            directive->precision = number;
        } else if (next = p;
                   directive->arg == nullptr && readNumber(&next, &number) && *next == '$') {
            directive->arg = findArg(args, number);
            if (directive->arg == nullptr)
                return false;
            ++next;
        } else {
            directive->letter = *p;
            directive->end = p + 1;
            return true;
        }
        p = next;
    }
}

/// Gives a directive without a position the only argument.
bool selectArg(const PrintfArgList& args, Directive* directive) noexcept {
    if (directive->arg == nullptr && args.first != nullptr && args.first->next == nullptr)
        directive->arg = args.first;
    return directive->arg != nullptr;
}

bool fitsItsArg(const Directive& directive) noexcept {
    const int type = directive.arg->type;
    switch (directive.letter) {
    case 'D':
        return directive.precision == 0 &&
               (type == PrintfArg::signedType ||
                (type == PrintfArg::unsignedType && !directive.hasPlus));
    case 'X':
        return directive.precision == 0 && !directive.hasPlus && type == PrintfArg::unsignedType;
    case 'S':
        return !directive.hasPlus && type == PrintfArg::stringType;
    default:
        return false;
    }
}

void writeText(rdr::MemOutStream& out, const char* text, int precision) {
    if (text == nullptr)
        return;
    if (precision == 0) {
        out.writeBytes(text, plat::strLen(text));
        return;
    }
    const char* const end = text + plat::strLen(text, precision);
    const std::unique_ptr<char[]> whole(plat::sanitizeUtf8(text, end, precision));
    out.writeBytes(whole.get(), plat::strLen(whole.get()));
}

void writeHex(rdr::MemOutStream& out, unsigned value) {
    char text[2 * sizeof value];
    char* const end = text + sizeof text;
    char* p = end;
    do
        *--p = "0123456789abcdef"[value & 0xF];
    while ((value >>= 4) != 0);
    out.writeBytes(p, int(end - p));
}

void writeNumber(rdr::MemOutStream& out, const Directive& directive) {
    char text[plat::longestDecimal + 1];
    char* p = text;
    const PrintfArg& arg = *directive.arg;
    if (arg.type == PrintfArg::unsignedType) {
        p = plat::writeDecimal(p, std::uint64_t(arg.unsignedValue));
    } else {
        if (directive.hasPlus && arg.signedValue >= 0)
            *p++ = '+';
        p = plat::writeDecimal(p, std::int64_t(arg.signedValue));
    }
    out.writeBytes(text, int(p - text));
}

void writeArg(rdr::MemOutStream& out, const Directive& directive) {
    if (directive.letter == 'S')
        writeText(out, directive.arg->stringValue, directive.precision);
    else if (directive.letter == 'X')
        writeHex(out, directive.arg->unsignedValue);
    else
        writeNumber(out, directive);
}

int initialSize(std::size_t formatLength) noexcept {
    return int(std::min<std::size_t>(2 * formatLength, std::numeric_limits<int>::max() / 2));
}

void reportBadFormat(const char* format) {
    vlog.error("Bad loc string for args - %s", format);
    if (!abortOnError)
        return;
    std::fprintf(stderr, "Bad loc string for args - %s\nAborting\n", format);
    std::abort();
}

} // namespace

LString& LString::xprintf(const char* format, const PrintfArgList& args) {
    if (format == nullptr)
        format = "";
    const char* const end = format + std::strlen(format);
    rdr::MemOutStream out(initialSize(std::size_t(end - format)));
    bool isBad = false;
    const char* p = format;
    for (;;) {
        const char* const percent = std::find(p, end, '%');
        out.writeBytes(p, int(percent - p));
        if (percent == end)
            break;
        Directive directive;
        if (percent[1] == '%') {
            out.writeBytes("%", 1);
            p = percent + 2;
        } else if (parse(percent + 1, args, &directive) && selectArg(args, &directive) &&
                   fitsItsArg(directive)) {
            writeArg(out, directive);
            p = directive.end;
        } else {
            out.writeBytes("%%", 2);
            p = percent + 1;
            isBad = true;
        }
    }
    const DString old(std::move(*this)); // format and texts may be parts of it
    out.passBufTo(this);
    if (isBad)
        reportBadFormat(format);
    return *this;
}

LString& LString::wordWrap(int width, int indent) noexcept {
    const LocaleSetter setter(nullptr);
    DString::wordWrap(width, indent);
    return *this;
}

} // namespace loc
