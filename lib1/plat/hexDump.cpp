#include "plat/hexDump.h"

#include <algorithm>
#include <cstdio>

#include "plat/SString.h"

namespace plat {

namespace {

constexpr int bytesPerLine = 16;
constexpr int bytesPerGroup = 4;

/// Writes one line; where it is short, blanks keep the text in its column.
void dumpLine(const unsigned char* data, int count) noexcept {
    SString<96> hex;
    SString<bytesPerLine + 1> text;
    for (int i = 0; i < bytesPerLine; ++i) {
        if (i < count) {
            const unsigned char byte = data[i];
            hex.prf("%02x ", byte);
            text.appendChar(byte < 32 || byte > 126 ? '.' : char(byte));
        } else {
            hex.append("   ");
        }
        if (i % bytesPerGroup == bytesPerGroup - 1)
            hex.append(" ");
    }
    std::fprintf(stderr, "%s%s\n", hex.get(), text.get());
}

} // namespace

void hexDump(const char* title, const char* linePrefix, const unsigned char* data, int length) {
    std::fputs(title, stderr);
    for (int i = 0; i < length; i += bytesPerLine) {
        if (i != 0)
            std::fputs(linePrefix, stderr);
        dumpLine(data + i, std::min(length - i, bytesPerLine));
    }
    std::fflush(stderr);
}

} // namespace plat
