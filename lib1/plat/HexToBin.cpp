#include "plat/HexToBin.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include "plat/HexBlocks.h"

namespace plat {

namespace {

int digitValue(char c) noexcept {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = char(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Reads `count` bytes from twice as many characters.
bool readHex(const char* hex, unsigned char* out, std::size_t count) noexcept {
    for (std::size_t i = readHexBlocks(hex, out, count); i < count; ++i) {
        const int high = digitValue(hex[2 * i]);
        const int low = digitValue(hex[2 * i + 1]);
        if (high < 0 || low < 0)
            return false;
        out[i] = static_cast<unsigned char>(high * 16 + low);
    }
    return true;
}

} // namespace

bool readHexAndShift(char c, int* acc) noexcept {
    const int value = digitValue(c);
    if (value == -1)
        return false;
    *acc = int(unsigned(*acc) * 16 + unsigned(value));
    return true;
}

bool hexStrToBin(const char* hex, MBuf<unsigned char>* out) {
    out->clear();
    const std::size_t length = std::strlen(hex);
    if (length % 2 != 0)
        return false;
    if (length == 0)
        return true;
    MBuf<unsigned char> bytes(out->isSecure());
    bytes.replaceBuf(new unsigned char[length / 2], int(length / 2));
    if (!readHex(hex, bytes.get(), length / 2))
        return false;
    *out = std::move(bytes);
    return true;
}

} // namespace plat
