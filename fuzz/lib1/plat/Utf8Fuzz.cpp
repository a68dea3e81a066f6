#include "plat/Utf8.h"

#include <wchar.h>

#include <clocale>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Require.h"
#include "plat/Latin1.h"

namespace {

// A character of a text, or -1, and the bytes that it takes.
struct Character {
    int value;
    std::size_t size;
};

unsigned byteAt(const std::string& text, std::size_t i) {
    return static_cast<unsigned char>(text[i]);
}

bool isContinuation(const std::string& text, std::size_t i) {
    return i < text.size() && (byteAt(text, i) & 0xC0) == 0x80;
}

bool isCharacter(unsigned value, std::size_t size) {
    if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
        return false;
    if ((value & 0xFFFF) == 0xFFFE || (value & 0xFFFF) == 0xFFFF)
        return false;
    if (value >= 0xFFD0 && value <= 0xFFEF)
        return false;
    return size == (value < 0x80 ? 1U : value < 0x800 ? 2U : value < 0x10000 ? 3U : 4U);
}

// `isRange`: whether the text has an end beside its NUL, which a lead byte may not look beyond.
Character decode(const std::string& text, std::size_t at, bool isRange) {
    const unsigned lead = byteAt(text, at);
    if (lead < 0x80)
        return {int(lead), 1};
    std::size_t length = 0;
    unsigned value = 0;
    if (lead >= 0xC0 && lead < 0xE0) {
        length = 2;
        value = lead & 0x1F;
    } else if (lead >= 0xE0 && lead < 0xF0) {
        length = 3;
        value = lead & 0x0F;
    } else if (lead >= 0xF0 && lead < 0xF8) {
        length = 4;
        value = lead & 0x07;
    }
    if (length == 0 || (isRange && at + length > text.size()))
        return {-1, 1};
    for (std::size_t i = 1; i < length; ++i) {
        if (!isContinuation(text, at + i))
            return {-1, i};
        value = value * 64 + (byteAt(text, at + i) & 0x3F);
    }
    return {isCharacter(value, length) ? int(value) : -1, length};
}

std::string encode(int value) {
    const auto v = unsigned(value);
    const auto tail = [](unsigned bits) { return char(0x80 | (bits & 0x3F)); };
    if (v < 0x80)
        return {char(v)};
    if (v < 0x800)
        return {char(0xC0 | v >> 6), tail(v)};
    if (v < 0x10000)
        return {char(0xE0 | v >> 12), tail(v >> 6), tail(v)};
    return {char(0xF0 | v >> 18), tail(v >> 12), tail(v >> 6), tail(v)};
}

struct Model {
    std::vector<Character> characters;
    bool isValid = true;
    std::string latin1;
    int columns = 0;

    // A NUL ends the text; behind it, it is still there to be looked at.
    Model(const std::string& text, bool isRange) {
        for (std::size_t at = 0; at < text.size() && text[at] != '\0';) {
            const Character c = decode(text, at, isRange);
            if (c.value == -1)
                isValid = false;
            if (isValid) {
                const int width = ::wcwidth(wchar_t(c.value));
                columns += width == -1 ? 1 : width;
            }
            latin1 += c.value == 0x20AC                 ? '\x80'
                      : c.value >= 0 && c.value < 0x100 ? char(c.value)
                                                        : '?';
            characters.push_back(c);
            at += c.size;
        }
    }

    std::string sanitized(int maxBytes) const {
        std::string out;
        for (const Character& c : characters) {
            const std::string bytes = encode(c.value == -1 ? 0xFFFD : c.value);
            if (maxBytes >= 0 && out.size() + bytes.size() > std::size_t(maxBytes))
                break;
            out += bytes;
        }
        return out;
    }
};

using Array = std::unique_ptr<char[]>;

// A copy without a byte to spare, so that each look too far is seen.
struct Exact {
    Array bytes;
    const char* end;
    Exact(const std::string& text, bool isTerminated)
        : bytes(new char[text.size() + (isTerminated ? 1 : 0)]), end(nullptr) {
        text.copy(bytes.get(), text.size());
        if (isTerminated)
            bytes[text.size()] = '\0';
        else
            end = bytes.get() + text.size();
    }
};

void checkText(const std::string& text, bool isRange, int maxBytes) {
    const Model model(text, isRange);
    const Exact exact(text, !isRange);
    const char* const begin = exact.bytes.get();
    REQUIRE(plat::isValidUtf8(begin, exact.end) == model.isValid);
    REQUIRE(plat::utf8NumColumns(begin, exact.end) == model.columns);
    REQUIRE(Array(plat::sanitizeUtf8(begin, exact.end)).get() == model.sanitized(-1));
    REQUIRE(Array(plat::sanitizeUtf8(begin, exact.end, maxBytes)).get() ==
            model.sanitized(maxBytes));
    char* latin1End = nullptr;
    const Array latin1(plat::utf8ToLatin1(begin, exact.end, &latin1End));
    REQUIRE(std::string(latin1.get(), latin1End) == model.latin1);
    REQUIRE(*latin1End == '\0');
}

void checkLatin1(const std::string& text) {
    std::string expected;
    for (const char c : std::string(text.c_str())) {
        const auto byte = static_cast<unsigned char>(c);
        expected += encode(byte == 0x80 ? 0x20AC : byte);
    }
    const Exact range(text, false);
    char* end = nullptr;
    const Array fromRange(plat::latin1ToUtf8(range.bytes.get(), range.end, &end));
    REQUIRE(std::string(fromRange.get(), end) == expected);
    const Array fromText(plat::latin1ToUtf8(text.c_str(), nullptr, nullptr));
    REQUIRE(fromText.get() == expected);
}

void checkRange(const std::string& text, int start, int length) {
    int s = start;
    int n = length < 0 ? int(text.size()) : length;
    s = s < 0 ? 0 : s > int(text.size()) ? int(text.size()) : s;
    while (isContinuation(text, std::size_t(s))) {
        ++s;
        --n;
    }
    n = n > int(text.size()) - s ? int(text.size()) - s : n;
    n = n < 0 ? 0 : n;
    while (n > 0 && isContinuation(text, std::size_t(s + n)))
        ++n;
    plat::sanitizeUtf8Range(text.c_str(), &start, &length);
    REQUIRE(start == s && length == n);
}

std::string printable(const std::string& text, char esc) {
    std::string out;
    std::size_t at = 0;
    for (const Character& c : Model(text, false).characters) {
        if (c.value == esc) {
            out += std::string(2, esc);
        } else if (c.value >= 0 && (c.value < 32 || c.value == 127)) {
            out += {esc, '^', char(c.value ^ 0x40)};
        } else if (c.value >= 0) {
            out += text.substr(at, c.size);
        } else {
            for (std::size_t i = at; i < at + c.size; ++i) {
                const char low = char(text[i] & 0x7F);
                const bool isPlain = low >= 33 && low <= 126;
                out += {esc, 'M', isPlain ? '-' : '^', isPlain ? low : char(low ^ 0x40)};
            }
        }
        at += c.size;
    }
    return out;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::setlocale(LC_ALL, "C.UTF-8"); // NOLINT(concurrency-mt-unsafe): before all else
    return 0;
}

// The first bytes are numbers, the rest a text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3)
        return 0;
    const int first = static_cast<signed char>(data[0]);
    const int second = static_cast<signed char>(data[1]);
    const std::string whole(data + 2, data + size);
    const std::string text = whole.c_str();

    checkText(whole, true, first);
    checkText(text, false, first);
    checkLatin1(whole);
    checkRange(text, first, second);
    for (const char esc : {'~', 'M'})
        REQUIRE(Array(plat::strvisUtf8(text.c_str(), esc)).get() == printable(text, esc));
    return 0;
}
