#include "plat/SString.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "plat/FormatText.h"
#include "plat/StringUtil.h"

namespace plat {

static_assert(sizeof(SString<256>) == 256, "the text and nothing else");

namespace {

bool isContinuation(char c) noexcept {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// The length of the string in an array. Mostly it was just cleared: a vector that is read from
/// memory has to wait for a byte that was just written there, and this byte has not.
int lengthOf(const char* buf) noexcept {
    return *buf == '\0' ? 0 : int(std::strlen(buf));
}

/// Removes the partial character that cutting may have left at the end of the array. Only what the
/// append wrote is looked at, and of that no more than a character's length.
void dropPartialCharacter(char* buf, int size, int appendedFrom) noexcept {
    const int lowest = std::max(size - 5, appendedFrom);
    int i = size - 2;
    while (i >= lowest && isContinuation(buf[i]))
        --i;
    if (i < lowest)
        return;
    const int sequenceLength = std::countl_one(static_cast<unsigned char>(buf[i]));
    if (sequenceLength >= 2 && sequenceLength <= 4 && i + sequenceLength > size - 1)
        buf[i] = '\0';
}

} // namespace

void SString_prf(char* buf, int size, const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    SString_vprf(buf, size, format, args);
    va_end(args);
}

void SString_vprf(char* buf, int size, const char* format, va_list args) noexcept {
    const int length = lengthOf(buf);
    const int room = size - length;
    const int written = formatText(buf + length, std::size_t(room), format, args);
    if (written < 0 || written >= room)
        dropPartialCharacter(buf, size, length);
    buf[size - 1] = '\0';
}

void SString_append(char* buf, int size, const char* text, int maxLen) noexcept {
    const int length = lengthOf(buf);
    const int wanted = maxLen < 0 ? strLen(text) : strLen(text, maxLen);
    const int count = std::min(wanted, size - length - 1);
    if (count > 0)
        std::memcpy(buf + length, text, std::size_t(count));
    if (count < wanted)
        dropPartialCharacter(buf, size, length);
    buf[length + count] = '\0';
}

void SString_appendChar(char* buf, int size, char c, int count) noexcept {
    const int length = lengthOf(buf);
    const int fitting = std::min(count, size - length - 1);
    if (fitting < 1)
        return;
    std::memset(buf + length, c, std::size_t(fitting));
    buf[length + fitting] = '\0';
}

} // namespace plat
