#include "plat/SplitterInPlace.h"

#include <cstring>
#include <utility>

namespace plat {

static_assert(sizeof(SplitterInPlace) == sizeof(char*), "the position and nothing else");

/// Ends the token that starts at the position, and returns it. Without a separator, the rest of the
/// string is the last token.
char* SplitterInPlace::endToken(char* separator, int separatorLength) noexcept {
    if (separator == nullptr)
        return std::exchange(position, nullptr);
    *separator = '\0';
    return std::exchange(position, separator + separatorLength);
}

char* SplitterInPlace::next(char separator) noexcept {
    if (position == nullptr)
        return nullptr;
    return endToken(separator == '\0' ? nullptr : std::strchr(position, separator), 1);
}

char* SplitterInPlace::nextOneOf(const char* separators, char* found) noexcept {
    if (found != nullptr)
        *found = '\0';
    if (position == nullptr)
        return nullptr;
    char* const separator = std::strpbrk(position, separators);
    if (separator != nullptr && found != nullptr)
        *found = *separator;
    return endToken(separator, 1);
}

char* SplitterInPlace::nextString(const char* separator) noexcept {
    if (position == nullptr)
        return nullptr;
    const auto length = int(std::strlen(separator));
    return endToken(length == 0 ? nullptr : std::strstr(position, separator), length);
}

} // namespace plat
