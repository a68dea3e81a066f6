#include "plat/S64Parameter.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "plat/BinToHex.h"
#include "plat/HexToBin.h"
#include "plat/StringUtil.h"

namespace plat {

namespace {

constexpr const char prefix[] = "int64:";
constexpr int prefixLength = 6;
constexpr int digits = 16;
constexpr int byteCount = 8;

/// The text that is kept for a number.
class TaggedText {
public:
    explicit TaggedText(long long number) {
        std::memcpy(text, prefix, prefixLength);
        char* out = text + prefixLength;
        for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
            *out++ = intToHex(int(std::uint64_t(number) >> shift & 15));
        *out = '\0';
    }
    const char* get() const noexcept { return text; }

private:
    char text[prefixLength + digits + 1];
};

bool isTagged(const char* text) noexcept {
    return strBegins(text, prefix) && strLen(text) == prefixLength + digits;
}

bool isLowerHexDigit(char c) noexcept {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
}

long long littleEndian(CBuf<unsigned char> bytes) noexcept {
    std::uint64_t number = 0;
    for (int i = byteCount - 1; i >= 0; --i)
        number = number << 8 | bytes.data[i];
    return static_cast<long long>(number);
}

} // namespace

S64Parameter::S64Parameter(const char* name, const char* description, long long defaultValue,
                           bool hidden, Configuration* config)
    : StringParameter(name, description, TaggedText(defaultValue).get(), hidden, config) {}

S64Parameter::S64Parameter(const char* name, loc::msgid_t description, long long defaultValue,
                           bool hidden, Configuration* config)
    : StringParameter(name, description, TaggedText(defaultValue).get(), hidden, config) {}

bool S64Parameter::setParam(long long number, int priority) {
    return StringParameter::setParam(TaggedText(number).get(), priority);
}

bool S64Parameter::setParam(const char* text, int priority) {
    if (text == nullptr)
        return false;
    if (isTagged(text)) {
        return std::all_of(text + prefixLength, text + prefixLength + digits, isLowerHexDigit) &&
               StringParameter::setParam(text, priority);
    }
    MBuf<unsigned char> bytes;
    if (!hexStrToBin(text, &bytes) || bytes.length() != byteCount)
        return false;
    return setParam(littleEndian(bytes.view()), priority);
}

long long S64Parameter::getValue() const noexcept {
    if (!isTagged(value().get()))
        return 0;
    std::uint64_t number = 0;
    for (const char* digit = value().get() + prefixLength; *digit != '\0'; ++digit) {
        int half = 0;
        if (!readHexAndShift(*digit, &half))
            return 0;
        number = number << 4 | std::uint64_t(half);
    }
    return static_cast<long long>(number);
}

} // namespace plat
