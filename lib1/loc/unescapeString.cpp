#include "loc/unescapeString.h"

#include <cstring>

#include "plat/Exception.h"
#include "plat/StringUtil.h"

namespace loc {

namespace {

constexpr int codeDigits = 3; ///< of an octal escape

/// The byte of an escape of two characters, or -1.
int letterEscape(char letter) noexcept {
    switch (letter) {
    case '"':
    case '\'':
    case '?':
    case '\\':
        return letter;
    case 'a':
        return 7;
    case 'b':
        return 8;
    case 'f':
        return 12;
    case 'n':
        return 10;
    case 'r':
        return 13;
    case 't':
        return 9;
    case 'v':
        return 11;
    default:
        return -1;
    }
}

/// Converts `count` characters as a whole. Like the C library's functions it takes white space and
/// a sign among them.
bool convert(int* value, const char* digits, int count, int base) noexcept {
    char text[codeDigits + 1] = {};
    std::memcpy(text, digits, std::size_t(count));
    return plat::strToInt(value, text, base);
}

class Unescaper {
public:
    Unescaper(const char* text, rdr::MemOutStream* target) noexcept : at(text), out(*target) {}

    void run() {
        skipOpeningQuote();
        while (*at != '"') {
            const std::size_t plain = std::strcspn(at, "\"\\");
            out.writeBytes(at, int(plain));
            at += plain;
            if (*at == '\\')
                resolveEscape();
            else if (*at == '\0')
                throw plat::Exception("Missing terminator");
        }
        if (at[1] != '\0')
            throw plat::Exception("Junk following string data");
    }

private:
    void skipOpeningQuote() {
        while (*at == ' ')
            ++at;
        if (*at == '\0')
            throw plat::Exception("Junk following string data");
        if (*at != '"')
            throw plat::Exception("Junk preceding string data");
        ++at;
    }

    void resolveEscape() {
        ++at;
        if (*at == '\0')
            throw plat::Exception("Invalid escape at end");
        if (const int byte = letterEscape(*at); byte >= 0)
            take(1, byte);
        else if (*at == 'x')
            resolveHex();
        else
            resolveOctal();
    }

    void resolveHex() {
        ++at;
        if (plat::strLen(at, 2) < 2)
            throw plat::Exception("Invalid hex escape at end");
        int value = 0;
        if (!convert(&value, at, 2, 16))
            throw plat::Exception("Invalid hex escape");
        take(2, value);
    }

    void resolveOctal() {
        if (plat::strLen(at, codeDigits) < codeDigits)
            throw plat::Exception("Invalid escape at end");
        int value = 0;
        if (!convert(&value, at, codeDigits, 8))
            throw plat::Exception("Invalid escape code");
        if (value > 255)
            throw plat::Exception("Octal escape code out of range");
        take(codeDigits, value);
    }

    void take(int count, int byte) {
        at += count;
        const auto written = static_cast<unsigned char>(byte);
        out.writeBytes(&written, 1);
    }

    const char* at;
    rdr::MemOutStream& out;
};

/// Appends bytes up to the first zero byte.
void appendText(plat::DString* target, rdr::MemOutStream& bytes) {
    target->append_(reinterpret_cast<const char*>(bytes.data()), bytes.length());
}

} // namespace

void unescapeString(const char* text, rdr::MemOutStream* target) {
    Unescaper(text == nullptr ? "" : text, target).run();
}

void unescapeString(const char* text, plat::DString* target) {
    rdr::MemOutStream bytes;
    try {
        unescapeString(text, &bytes);
    } catch (const plat::Exception&) {
        appendText(target, bytes);
        throw;
    }
    appendText(target, bytes);
}

} // namespace loc
