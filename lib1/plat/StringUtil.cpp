#include "plat/StringUtil.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

#include "plat/BadInt.h"

namespace plat {

namespace {

/// Keeps `errno` as the caller knows it, and clears it meanwhile: an old ERANGE would look like one
/// of the conversion's own.
class ErrnoKeeper {
public:
    ErrnoKeeper() noexcept : saved(std::exchange(errno, 0)) {}
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;
    ~ErrnoKeeper() { errno = saved; }

    bool sawRangeError() const noexcept { return errno == ERANGE; }

private:
    int saved;
};

std::unique_ptr<char[]> dupBytes(const char* bytes, std::size_t count) {
    // Not make_unique: it would clear the array first.
    std::unique_ptr<char[]> copy(new char[count + 1]);
    if (count != 0)
        std::memcpy(copy.get(), bytes, count);
    copy[count] = '\0';
    return copy;
}

/// Tells whether the system's conversions take a base; for others they need not say where they end.
bool isBase(int base) noexcept {
    return base == 0 || (base >= 2 && base <= 36);
}

/// The base to convert a text with, so that every system reads the same number: some take "0b" for
/// a prefix too, in the bases 0 and 2, and others end the number behind that 0.
int portableBase(const char* text, int base) noexcept {
    if (base != 0 && base != 2)
        return base;
    while (std::isspace(static_cast<unsigned char>(*text)) != 0)
        ++text;
    if (*text == '+' || *text == '-')
        ++text;
    const bool isBinary = text[0] == '0' && (text[1] == 'b' || text[1] == 'B');
    return isBinary ? 8 : base;
}

/// Takes out what an out pointer holds. The pointer is null from then on, so that it does not
/// dangle when an allocation throws.
std::unique_ptr<char[]> takeOut(char** out) noexcept {
    return std::unique_ptr<char[]>(out == nullptr ? nullptr : std::exchange(*out, nullptr));
}

} // namespace

char* strDup(const char* text, int maxLen) {
    if (text == nullptr)
        return nullptr;
    const std::size_t count = maxLen < 0 ? std::strlen(text) : ::strnlen(text, std::size_t(maxLen));
    return dupBytes(text, count).release();
}

int strLen(const char* text) noexcept {
    return text == nullptr ? 0 : int(std::strlen(text));
}

int strLen(const char* text, int maxLen) noexcept {
    if (text == nullptr || maxLen < 1)
        return 0;
    return int(::strnlen(text, std::size_t(maxLen)));
}

int strCpy(char* dst, const char* src, int size) noexcept {
    const int length = strLen(src);
    const int count = std::min(size - 1, length);
    if (count > 0)
        std::memcpy(dst, src, std::size_t(count));
    dst[count] = '\0';
    return length;
}

bool strSplit(const char* text, char separator, char** before, char** after, bool fromEnd) {
    const std::unique_ptr<char[]> oldBefore = takeOut(before);
    // Both may hold one and the same array, which is freed once.
    std::unique_ptr<char[]> oldAfter = takeOut(after);
    if (oldAfter == oldBefore)
        static_cast<void>(oldAfter.release());

    const char* const bytes = text == nullptr ? "" : text;
    const std::string_view all(bytes);
    const std::size_t index = fromEnd ? all.rfind(separator) : all.find(separator);
    const bool found = index != std::string_view::npos;
    if (before != nullptr)
        *before = found ? dupBytes(bytes, index).release() : strDup(text);
    if (after != nullptr && found)
        *after = strDup(bytes + index + 1);
    return found;
}

bool strBegins(const char* text, const char* prefix) noexcept {
    if (prefix == nullptr)
        return true;
    if (text == nullptr)
        return *prefix == '\0';
    return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

bool strEnds(const char* text, const char* suffix) noexcept {
    if (suffix == nullptr)
        return true;
    const std::string_view all(text == nullptr ? "" : text);
    return all.ends_with(suffix);
}

bool strToInt(int* out, const char** text, int base) noexcept {
    *out = 0;
    if (*text == nullptr || !isBase(base))
        return false;
    const ErrnoKeeper keeper;
    char* end = nullptr;
    const long value = std::strtol(*text, &end, portableBase(*text, base));
    // A long of 64 bits reports no range error for what an int cannot hold.
    const bool outside =
        value > std::numeric_limits<int>::max() || value < std::numeric_limits<int>::min();
    if (end == *text || outside || keeper.sawRangeError())
        return false;
    *out = int(value);
    *text = end;
    return true;
}

int strToInt(const char** text, int base) {
    int value = 0;
    if (!strToInt(&value, text, base))
        throw BadInt("Failed to parse integer");
    return value;
}

bool strToInt(int* out, const char* text, int base) noexcept {
    return strToInt(out, &text, base) && *text == '\0';
}

bool strToUint(unsigned* out, const char** text, int base) noexcept {
    *out = 0;
    if (*text == nullptr || !isBase(base))
        return false;
    const ErrnoKeeper keeper;
    char* end = nullptr;
    const unsigned long value = std::strtoul(*text, &end, portableBase(*text, base));
    const bool outside = value > std::numeric_limits<unsigned>::max();
    const bool hasMinus = std::memchr(*text, '-', std::size_t(end - *text)) != nullptr;
    if (end == *text || outside || keeper.sawRangeError() || hasMinus)
        return false;
    *out = unsigned(value);
    *text = end;
    return true;
}

bool strToUint(unsigned* out, const char* text, int base) noexcept {
    if (strToUint(out, &text, base) && *text == '\0')
        return true;
    *out = 0;
    return false;
}

} // namespace plat
