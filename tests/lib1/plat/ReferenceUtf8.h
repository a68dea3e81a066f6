#pragma once

#include <wchar.h>

#include <algorithm>
#include <string>

#include "plat/Utf8.h"

/// UTF-8 text decoded one character after the other, for comparison with code that takes shortcuts.
namespace reference {

/// Takes one character or invalid sequence: the code point or -1.
inline int take(const char** p, const char* end) {
    const auto lead = static_cast<unsigned char>(*(*p)++);
    if (lead < 0x80)
        return lead;
    const int avail = end == nullptr ? 4 : int(std::min<std::ptrdiff_t>(end - *p + 1, 4));
    return plat::readUtf8NonAscii(lead, p, avail);
}

inline bool isAtEnd(const char* p, const char* end) {
    return p == end || *p == '\0';
}

inline bool isValid(const char* p, const char* end) {
    while (!isAtEnd(p, end)) {
        if (take(&p, end) == -1)
            return false;
    }
    return true;
}

inline int columns(const char* p, const char* end) {
    int count = 0;
    while (!isAtEnd(p, end)) {
        const int character = take(&p, end);
        if (character == -1)
            break;
        const int width = ::wcwidth(wchar_t(character));
        count += width == -1 ? 1 : width;
    }
    return count;
}

inline std::string encode(int character) {
    char bytes[4];
    char* end = bytes;
    plat::writeUtf8(character, &end);
    return {bytes, end};
}

inline std::string sanitize(const char* p, const char* end, int maxBytes) {
    std::string copy;
    while (!isAtEnd(p, end)) {
        const int character = take(&p, end);
        const std::string bytes = encode(character == -1 ? 0xFFFD : character);
        if (maxBytes >= 0 && copy.size() + bytes.size() > std::size_t(maxBytes))
            break;
        copy += bytes;
    }
    return copy;
}

inline std::string toLatin1(const char* p, const char* end) {
    std::string copy;
    while (!isAtEnd(p, end)) {
        const int character = take(&p, end);
        if (character == 0x20AC)
            copy += '\x80';
        else
            copy += character >= 0 && character < 0x100 ? char(character) : '?';
    }
    return copy;
}

inline std::string fromLatin1(const char* p, const char* end) {
    std::string copy;
    for (; !isAtEnd(p, end); ++p) {
        const auto byte = static_cast<unsigned char>(*p);
        copy += encode(byte == 0x80 ? 0x20AC : byte);
    }
    return copy;
}

} // namespace reference
