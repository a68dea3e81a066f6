#include "plat/DString.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

#include "plat/Assertion.h"
#include "plat/CopyBytes.h"
#include "plat/FormatText.h"
#include "plat/Utf8.h"
#include "rdr/MemOutStream.h"

namespace plat {

/// Sees the private members.
struct DStringLayout {
    static_assert(offsetof(DString, buf) == 0);
    static_assert(offsetof(DString, size) == sizeof(char*));
};

namespace {

constexpr int smallestSize = 8;
constexpr std::int64_t largestSize = std::int64_t(1) << 30;

std::size_t lengthOf(const char* text) noexcept {
    return text == nullptr ? 0 : std::strlen(text);
}

std::size_t lengthOf(const char* text, int maxLen) noexcept {
    if (maxLen < 0 || text == nullptr)
        return lengthOf(text);
    return ::strnlen(text, std::size_t(maxLen));
}

int bufSizeFor(std::int64_t n) {
    if (n > largestSize)
        throw std::bad_array_new_length();
    if (n < smallestSize)
        return smallestSize;
    return int(std::bit_ceil(std::uint32_t(n)));
}

/// The next occurrence of a text that is not empty, or null.
const char* findIn(const char* begin, const char* end, const char* find, std::size_t findLen) {
    return static_cast<const char*>(::memmem(begin, std::size_t(end - begin), find, findLen));
}

/// A run of bytes that are neither blanks nor line ends.
struct Word {
    const char* begin;
    const char* end;
    bool isAscii;

    explicit Word(const char* text) noexcept : begin(text), end(text) {
        unsigned char bits = 0;
        for (; *end != ' ' && *end != '\n' && *end != '\0'; ++end)
            bits |= static_cast<unsigned char>(*end);
        isAscii = bits < 0x80;
    }

    int size() const noexcept { return int(end - begin); }
    int columns() const noexcept { return isAscii ? size() : utf8NumColumns(begin, end); }
};

/// Builds the wrapped form of a text, word by word.
class WordWrapper {
public:
    WordWrapper(int lineWidth, int lineIndent, int textLength)
        : width(std::max(lineWidth, 0)), indent(std::max(lineIndent, 0)), out(textLength + 1) {}

    void wrap(const char* text) {
        for (;;) {
            const char* const spaces = text;
            while (*text == ' ')
                ++text;
            if (*text == '\0')
                return; // blanks at the very end are dropped
            const Word word(text);
            addWord(word, text - spaces);
            text = word.end;
            if (*text == '\n') {
                out.writeBytes(text++, 1);
                column = 0;
            }
        }
    }

    void passTo(DString* to) { out.passBufTo(to); }

private:
    /// Adds a word, which is empty where blanks end a line.
    void addWord(const Word& word, std::int64_t spaces) {
        const int columns = word.columns();
        if (column + spaces + columns > width && column >= 1) {
            out.writeBytes("\n", 1);
            column = 0;
            spaces = indent;
        }
        addSpaces(spaces);
        out.writeBytes(word.begin, word.size());
        column += spaces + columns;
    }

    void addSpaces(std::int64_t spaces) {
        out.ensureRoom(int(spaces));
        if (spaces == 1) // as between most words
            *out.getPtr() = ' ';
        else
            std::memset(out.getPtr(), ' ', std::size_t(spaces));
        out.setPtr(out.getPtr() + spaces);
    }

    std::int64_t width;
    std::int64_t indent;
    std::int64_t column = 0;
    rdr::MemOutStream out;
};

} // namespace

DString::DString(DString&& other) noexcept
    : buf(std::exchange(other.buf, nullptr)), size(std::exchange(other.size, 0)) {}

DString& DString::operator=(const DString& other) { // NOLINT(bugprone-unhandled-self-assignment)
    // No guard against self-assignment: it leaves the string empty.
    replaceBuf(nullptr, 0);
    copyFrom(other);
    return *this;
}

DString& DString::operator=(DString&& other) noexcept {
    const int otherSize = other.size;
    return replaceBuf(other.takeBuf(), otherSize);
}

int DString::bufSize(int n) {
    return bufSizeFor(n);
}

void DString::ensureCapacity(int n) {
    grow(n);
}

DString& DString::replaceBuf(char* newBuf, int newSize) noexcept {
    delete[] std::exchange(buf, newBuf);
    size = newSize;
    return *this;
}

char* DString::takeBuf() noexcept {
    size = 0;
    return std::exchange(buf, nullptr);
}

std::unique_ptr<char[]> DString::grow(std::int64_t n) {
    if (buf != nullptr && size >= n)
        return nullptr;
    const int newSize = bufSizeFor(n);
    char* const newBuf = new char[std::size_t(newSize)];
    copyGrown(newBuf, buf, std::size_t(size));
    newBuf[size] = '\0';
    size = newSize;
    return std::unique_ptr<char[]>(std::exchange(buf, newBuf));
}

void DString::copyFrom(const DString& other) {
    if (other.buf == nullptr)
        return;
    ensureCapacity(other.size);
    // An array that was handed over may be smaller than the capacity chosen for its size.
    std::memcpy(buf, other.buf, std::size_t(std::min(size, other.size)));
}

DString& DString::append_(const char* text, int maxLen) {
    const std::size_t length = lengthOf(buf);
    const std::size_t count = lengthOf(text, maxLen);
    const std::unique_ptr<char[]> outgrown = grow(std::int64_t(length + count + 1));
    if (count != 0)
        std::memcpy(buf + length, text, count);
    buf[length + count] = '\0';
    return *this;
}

DString& DString::prf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vprf(format, args);
    va_end(args);
    return *this;
}

DString& DString::vprf(const char* format, va_list args) {
    const std::size_t length = lengthOf(buf);
    auto guess = std::int64_t(std::strlen(format));
    for (;;) {
        grow(std::int64_t(length) + 1 + guess);
        const std::size_t room = std::size_t(size) - length;
        const int written = formatText(buf + length, room, format, args);
        if (written >= 0 && std::size_t(written) < room)
            return *this;
        guess = written < 0 ? 2 * guess : written;
        buf[length] = '\0';
    }
}

DString& DString::appendChar_(char c, int count) {
    if (count <= 0)
        return *this;
    const std::size_t length = lengthOf(buf);
    grow(std::int64_t(length) + count + 1);
    std::memset(buf + length, c, std::size_t(count));
    buf[length + std::size_t(count)] = '\0';
    return *this;
}

DString& DString::replace(const char* source, const char* find, const char* with) {
    const std::size_t findLen = lengthOf(find);
    LUMO_ASSERT_FATAL(findLen);
    const std::size_t withLen = lengthOf(with);
    if (source == nullptr)
        source = "";
    const char* const sourceEnd = source + std::strlen(source);

    // Counted first, so that the string grows once and its own parts can be arguments: nothing
    // below its end changes, and an outgrown array lives until the end.
    std::size_t added = std::size_t(sourceEnd - source);
    for (const char* at = source; (at = findIn(at, sourceEnd, find, findLen)) != nullptr;) {
        added = added - findLen + withLen;
        at += findLen;
    }
    const std::size_t length = lengthOf(buf);
    const std::unique_ptr<char[]> outgrown = grow(std::int64_t(length + added + 1));

    char* out = buf + length;
    const auto emit = [&out](const char* bytes, std::size_t count) {
        if (count != 0)
            std::memcpy(out, bytes, count);
        out += count;
    };
    const char* rest = source;
    for (const char* at = source; (at = findIn(at, sourceEnd, find, findLen)) != nullptr;) {
        emit(rest, std::size_t(at - rest));
        emit(with, withLen);
        at += findLen;
        rest = at;
    }
    emit(rest, std::size_t(sourceEnd - rest));
    *out = '\0';
    return *this;
}

DString& DString::replace(const char* find, const char* with) {
    if (buf == nullptr)
        return *this;
    const int oldSize = size;
    const std::unique_ptr<char[]> source(takeBuf());
    ensureCapacity(oldSize);
    return replace(source.get(), find, with);
}

DString& DString::stripAnyOf(const char* chars) noexcept {
    if (buf == nullptr || chars == nullptr)
        return *this;
    bool isStripped[256] = {};
    for (; *chars != '\0'; ++chars)
        isStripped[static_cast<unsigned char>(*chars)] = true;
    char* const end = std::remove_if(buf, buf + std::strlen(buf), [&isStripped](char c) {
        return isStripped[static_cast<unsigned char>(c)];
    });
    *end = '\0';
    return *this;
}

DString& DString::wordWrap(int width, int indent) {
    if (buf == nullptr)
        return *this;
    WordWrapper wrapper(width, indent, int(std::strlen(buf)));
    wrapper.wrap(buf);
    wrapper.passTo(this);
    return *this;
}

} // namespace plat
