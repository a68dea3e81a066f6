#include "plat/String.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <utility>

#include "plat/StringUtil.h"

namespace plat {

static_assert(sizeof(String) == sizeof(char*), "one pointer and nothing else");

namespace {

// The classification functions take the values of unsigned char only.
bool isSpace(char c) noexcept {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}
char upper(char c) noexcept {
    return char(std::toupper(static_cast<unsigned char>(c)));
}
char lower(char c) noexcept {
    return char(std::tolower(static_cast<unsigned char>(c)));
}

} // namespace

String::String(const char* text) : buf(strDup(text)) {}

String::String(const String& other) : buf(strDup(other.buf)) {}

String::String(String&& other) noexcept : buf(other.takeBuf()) {}

// Copied first: the other may be this very String.
String& String::operator=(const String& other) { // NOLINT(bugprone-unhandled-self-assignment)
    return replaceBuf(strDup(other.buf));
}

String& String::operator=(String&& other) noexcept {
    return replaceBuf(other.takeBuf());
}

String String::owning(char* array) noexcept {
    String string;
    string.buf = array;
    return string;
}

String& String::replaceBuf(char* newBuf) noexcept {
    delete[] std::exchange(buf, newBuf);
    return *this;
}

char* String::takeBuf() noexcept {
    return std::exchange(buf, nullptr);
}

String& String::lstripspace() {
    const char* rest = buf;
    while (isSpace(*rest))
        ++rest;
    if (rest != buf)
        replaceBuf(strDup(rest));
    return *this;
}

String& String::rstripspace() noexcept {
    if (buf == nullptr)
        return *this;
    char* end = buf + std::strlen(buf);
    while (end != buf && isSpace(end[-1]))
        --end;
    *end = '\0';
    return *this;
}

String& String::intersperse(char separator, int every) {
    if (every < 1)
        return *this;
    const std::size_t length = buf != nullptr ? std::strlen(buf) : 0;
    std::unique_ptr<char[]> result(new char[2 * length + 1]);
    char* out = result.get();
    for (std::size_t i = 0; i < length; ++i) {
        if (i > 0 && i % std::size_t(every) == 0)
            *out++ = separator;
        *out++ = buf[i];
    }
    *out = '\0';
    return replaceBuf(result.release());
}

String& String::toUpper() noexcept {
    std::transform(buf, buf + std::strlen(buf), buf, upper);
    return *this;
}

String& String::toLower() noexcept {
    std::transform(buf, buf + std::strlen(buf), buf, lower);
    return *this;
}

bool operator==(const String& string, const char* text) noexcept {
    if (string.get() == nullptr || text == nullptr)
        return string.get() == text;
    return std::strcmp(string.get(), text) == 0;
}

bool operator==(const String& a, const String& b) noexcept {
    return a == b.get();
}

bool operator<(const String& a, const String& b) noexcept {
    if (a.get() == nullptr || b.get() == nullptr)
        return a.get() == nullptr && b.get() != nullptr;
    return std::strcmp(a.get(), b.get()) < 0;
}

void appendUniq(std::vector<String>* strings, const char* text) {
    const auto isEqual = [text](const String& string) { return string == text; };
    if (std::none_of(strings->begin(), strings->end(), isEqual))
        strings->emplace_back(text);
}

} // namespace plat
