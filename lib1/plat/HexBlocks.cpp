#include "plat/HexBlocks.h"

#include "plat/ByteVector.h"

#if defined(__x86_64__) || defined(__i386__) // decided for each architecture of a universal build
#include "plat/x86/Cpu.h"
#include "plat/x86/HexAvx2.h"
#endif

namespace plat {

namespace {

/// The digits of 16 halves at once.
ByteVector digits(ByteVector halves) noexcept {
    constexpr int fromNineToA = 'a' - '9' - 1;
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

/// The values of 16 digits at once; `*bad` is not 0 any more where one is no digit.
ByteVector digitValues(ByteVector text, ByteVector* bad) noexcept {
    const ByteVector fromZero = text - '0';
    const ByteVector fromA = (text | 0x20) - 'a';
    const auto isNumber = ByteVector(fromZero < 10);
    const auto isLetter = ByteVector(fromA < 6);
    *bad |= ~(isNumber | isLetter);
    return (fromZero & isNumber) | ((fromA + 10) & isLetter);
}

/// Reads 16 bytes from 32 digits. Returns false if one is no digit.
bool readHex(const char* hex, unsigned char* out) noexcept {
    ByteVector bad{};
    const ByteVector first = digitValues(loadVector(hex), &bad);
    const ByteVector second = digitValues(loadVector(hex + 16), &bad);
    const ByteVector high = __builtin_shufflevector(first, second, 0, 2, 4, 6, 8, 10, 12, 14, 16,
                                                    18, 20, 22, 24, 26, 28, 30);
    const ByteVector low = __builtin_shufflevector(first, second, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19,
                                                   21, 23, 25, 27, 29, 31);
    storeVector(out, high << 4 | low);
    return anyBits(bad) == 0;
}

} // namespace

std::size_t writeHexVectors(char* out, const unsigned char* bytes, std::size_t count) noexcept {
    constexpr std::size_t step = sizeof(ByteVector);
    std::size_t i = 0;
    for (; count - i >= step; i += step)
        writeHex(out + 2 * i, bytes + i);
    return i;
}

std::size_t readHexVectors(const char* hex, unsigned char* out, std::size_t count) noexcept {
    constexpr std::size_t step = sizeof(ByteVector);
    std::size_t i = 0;
    while (count - i >= step && readHex(hex + 2 * i, out + i))
        i += step;
    return i;
}

#if defined(__x86_64__) || defined(__i386__)

std::size_t writeHexBlocks(char* out, const unsigned char* bytes, std::size_t count) noexcept {
    const std::size_t done = cpuFeatures().avx2 ? writeHexAvx2(out, bytes, count) : 0;
    return done + writeHexVectors(out + 2 * done, bytes + done, count - done);
}

std::size_t readHexBlocks(const char* hex, unsigned char* out, std::size_t count) noexcept {
    const std::size_t done = cpuFeatures().avx2 ? readHexAvx2(hex, out, count) : 0;
    return done + readHexVectors(hex + 2 * done, out + done, count - done);
}

#else

std::size_t writeHexBlocks(char* out, const unsigned char* bytes, std::size_t count) noexcept {
    return writeHexVectors(out, bytes, count);
}

std::size_t readHexBlocks(const char* hex, unsigned char* out, std::size_t count) noexcept {
    return readHexVectors(hex, out, count);
}

#endif

} // namespace plat
