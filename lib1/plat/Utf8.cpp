#include "plat/Utf8.h"

#include <wchar.h> // wcwidth is POSIX's, not the standard's: <cwchar> need not have it

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>

#include "plat/AsciiRun.h"
#include "plat/Exception.h"
#include "plat/Utf8Blocks.h"
#include "plat/Utf8Decode.h"
#include "rdr/MemOutStream.h"

namespace plat {

namespace {

constexpr int longestCharacter = 4;

/// Finds the first sequence of a text that is not UTF-8, or where it stops. The end that characters
/// are decoded with may be null.
const char* skipValid(const char* p, const char* stop, const char* end) noexcept {
    while ((p = skipValidUtf8(p, stop)) != stop) {
        const char* const blockEnd = p + std::min<std::ptrdiff_t>(stop - p, 64);
        while (p < blockEnd) {
            const char* const sequence = p;
            if (*p == '\0' || takeCharacter(&p, end) == -1)
                return sequence;
        }
    }
    return p;
}

/// Where valid text is to be cut to leave at most `length` bytes: in front of a character.
const char* cutBefore(const char* text, std::ptrdiff_t length) noexcept {
    const char* cut = text + length;
    while (cut != text && isContinuation(*cut))
        --cut;
    return cut;
}

/// Writes the escaped form of one byte of an invalid sequence.
void escapeByte(char byte, char esc, char** out) noexcept {
    const auto low = static_cast<unsigned char>(byte & 0x7F);
    *(*out)++ = esc;
    *(*out)++ = 'M';
    const bool isGraphic = low >= 33 && low <= 126;
    *(*out)++ = isGraphic ? '-' : '^';
    *(*out)++ = char(isGraphic ? low : low ^ 0x40);
}

} // namespace

int readUtf8NonAscii(unsigned char lead, const char** p, int avail) noexcept {
    return decodeNonAscii(lead, p, avail);
}

void writeUtf8(int codePoint, char** out) {
    if (codePoint > 0x10FFFF)
        throw Exception("Unicode out of range");
    char* to = *out;
    if (codePoint < 0x80) {
        *to++ = char(codePoint);
    } else if (codePoint < 0x800) {
        *to++ = char(0xC0 | (codePoint >> 6));
        *to++ = char(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        *to++ = char(0xE0 | (codePoint >> 12));
        *to++ = char(0x80 | ((codePoint >> 6) & 0x3F));
        *to++ = char(0x80 | (codePoint & 0x3F));
    } else {
        *to++ = char(0xF0 | (codePoint >> 18));
        *to++ = char(0x80 | ((codePoint >> 12) & 0x3F));
        *to++ = char(0x80 | ((codePoint >> 6) & 0x3F));
        *to++ = char(0x80 | (codePoint & 0x3F));
    }
    *out = to;
}

void utf8Back1(const char** p) noexcept {
    for (int back = 1; back <= longestCharacter; ++back) {
        if (!isContinuation((*p)[-back])) {
            *p -= back;
            return;
        }
    }
    --*p;
}

int utf8NumColumns(const char* begin, const char* end) noexcept {
    const char* const stop = textEnd(begin, end);
    std::ptrdiff_t columns = 0;
    for (const char* p = begin;;) {
        // Plain text has a column a byte: its control characters, which are not printable, too.
        const char* const run = p;
        p = skipPlain(p, stop);
        columns += p - run;
        if (isTextEnd(p, stop))
            break;
        const int character = takeCharacter(&p, end);
        if (character == -1)
            break;
        const int width = ::wcwidth(wchar_t(character));
        columns += width == -1 ? 1 : width;
    }
    return int(columns);
}

bool isValidUtf8(const char* begin, const char* end) noexcept {
    const char* const stop = textEnd(begin, end);
    const auto length = std::size_t(stop - begin);
    if (length <= 32 && isPlainShort(begin, length))
        return true;
    return isTextEnd(skipValid(begin, stop, end), stop);
}

char* sanitizeUtf8(const char* begin, const char* end, int maxBytes) {
    constexpr char replacement[] = "\xEF\xBF\xBD";
    constexpr int replacementSize = sizeof replacement - 1;
    const char* const stop = textEnd(begin, end);
    rdr::MemOutStream out(initialSize(std::size_t(stop - begin), 10));
    const std::ptrdiff_t most =
        maxBytes < 0 ? std::numeric_limits<std::ptrdiff_t>::max() : maxBytes;
    for (const char* p = begin;;) {
        const char* const run = p;
        p = skipValid(p, stop, end);
        if (p - run > most - out.length()) {
            out.writeBytes(run, int(cutBefore(run, most - out.length()) - run));
            break;
        }
        out.writeBytes(run, int(p - run));
        if (isTextEnd(p, stop) || most - out.length() < replacementSize)
            break;
        out.writeBytes(replacement, replacementSize);
        takeCharacter(&p, end);
    }
    out.writeBytes("", 1);
    return reinterpret_cast<char*>(out.takeBuf());
}

void sanitizeUtf8Range(const char* text, int* start, int* length) noexcept {
    const auto textLength = int(std::strlen(text));
    int count = *length < 0 ? textLength : *length;
    int first = std::clamp(*start, 0, textLength);
    for (; isContinuation(text[first]); ++first)
        --count;
    count = std::clamp(count, 0, textLength - first);
    if (count > 0) {
        while (first + count < textLength && isContinuation(text[first + count]))
            ++count;
    }
    *start = first;
    *length = count;
}

char* strvisUtf8(const char* text, char esc) {
    std::unique_ptr<char[]> result(new char[4 * std::strlen(text) + 1]);
    char* out = result.get();
    for (const char* p = text; *p != '\0';) {
        const char* const sequence = p;
        const int character = takeCharacter(&p, nullptr);
        if (character == -1) {
            for (const char* byte = sequence; byte != p; ++byte)
                escapeByte(*byte, esc, &out);
        } else if (character == static_cast<unsigned char>(esc)) {
            out = std::copy(sequence, p, out);
            out = std::copy(sequence, p, out);
        } else if (character < 32 || character == 127) {
            *out++ = esc;
            *out++ = '^';
            *out++ = char(character ^ 0x40);
        } else {
            out = std::copy(sequence, p, out);
        }
    }
    *out = '\0';
    return result.release();
}

} // namespace plat
