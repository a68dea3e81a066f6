#include "plat/BinToHex.h"

#include <cstddef>
#include <memory>

#include "plat/Assertion.h"
#include "plat/ByteVector.h"

namespace plat {

namespace {

constexpr int fromNineToA = 'a' - '9' - 1;

char digit(int half) noexcept {
    return char('0' + half + (half > 9 ? fromNineToA : 0));
}

/// The digits of 16 halves at once.
ByteVector digits(ByteVector halves) noexcept {
    const auto letters = ByteVector(halves > 9);
    return halves + '0' + (letters & fromNineToA);
}

/// Writes the text of 16 bytes.
void writeHex(char* out, const unsigned char* bytes) noexcept {
    const ByteVector vector = loadVector(bytes);
    const ByteVector high = digits(vector >> 4);
    const ByteVector low = digits(vector & 15);
    storeVector(out, __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6,
                                             22, 7, 23));
    storeVector(out + 16, __builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28,
                                                  13, 29, 14, 30, 15, 31));
}

} // namespace

char intToHex(int i) {
    LUMO_ASSERT_THROW(i >= 0 && i <= 15);
    return digit(i);
}

String binToHexStr(CBuf<unsigned char> bytes) {
    constexpr int step = sizeof(ByteVector);
    constexpr std::ptrdiff_t stepText = 2 * sizeof(ByteVector);
    std::unique_ptr<char[]> text(new char[2 * std::size_t(bytes.length) + 1]);
    char* out = text.get();
    int i = 0;
    for (; bytes.length - i >= step; i += step, out += stepText)
        writeHex(out, bytes.data + i);
    for (; i < bytes.length; ++i) {
        *out++ = digit(bytes.data[i] >> 4);
        *out++ = digit(bytes.data[i] & 15);
    }
    *out = '\0';
    return String::owning(text.release());
}

} // namespace plat
