#include "plat/HexToBin.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include "plat/ByteVector.h"

namespace plat {

namespace {

int digitValue(char c) noexcept {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = char(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The values of 16 digits at once; `*bad` is not 0 any more where one is no digit.
ByteVector digitValues(ByteVector text, ByteVector* bad) noexcept {
    const ByteVector fromZero = text - '0';
    const ByteVector fromA = (text | 0x20) - 'a';
    const auto isNumber = ByteVector(fromZero < 10);
    const auto isLetter = ByteVector(fromA < 6);
    *bad |= ~(isNumber | isLetter);
    return (fromZero & isNumber) | ((fromA + 10) & isLetter);
}

/// Reads 16 bytes from 32 digits; `*bad` is not 0 any more where one is no digit.
void readHex(const char* hex, unsigned char* out, ByteVector* bad) noexcept {
    const ByteVector first = digitValues(loadVector(hex), bad);
    const ByteVector second = digitValues(loadVector(hex + 16), bad);
    const ByteVector high = __builtin_shufflevector(first, second, 0, 2, 4, 6, 8, 10, 12, 14, 16,
                                                    18, 20, 22, 24, 26, 28, 30);
    const ByteVector low = __builtin_shufflevector(first, second, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19,
                                                   21, 23, 25, 27, 29, 31);
    storeVector(out, high << 4 | low);
}

/// Reads `count` bytes from twice as many characters.
bool readHex(const char* hex, unsigned char* out, std::size_t count) noexcept {
    constexpr std::size_t step = sizeof(ByteVector);
    ByteVector bad{};
    std::size_t i = 0;
    for (; count - i >= step; i += step)
        readHex(hex + 2 * i, out + i, &bad);
    int signs = 0; // negative as soon as a value is
    for (; i < count; ++i) {
        const int high = digitValue(hex[2 * i]);
        const int low = digitValue(hex[2 * i + 1]);
        signs |= high | low;
        out[i] = static_cast<unsigned char>(high * 16 + low);
    }
    return signs >= 0 && anyBits(bad) == 0;
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
