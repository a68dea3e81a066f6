#pragma once

#include <cstdarg>

namespace plat {

/// Appends formatted text to the string in `buf`. What does not fit is cut, and cut text ends in a
/// whole UTF-8 character; `buf[size - 1]` is a NUL afterwards.
/// Shape: `size` counts the whole array; the string in it is NUL-terminated.
[[gnu::format(printf, 3, 4)]]
void SString_prf(char* buf, int size, const char* format, ...) noexcept;

/// Appends formatted text as SString_prf does.
[[gnu::format(printf, 3, 0)]]
void SString_vprf(char* buf, int size, const char* format, va_list args) noexcept;

/// Appends a text, or its first `maxLen` bytes when `maxLen` is not negative, and cuts as
/// SString_prf does. A null text appends nothing.
void SString_append(char* buf, int size, const char* text, int maxLen) noexcept;

/// Appends a character `count` times, or as often as it fits.
void SString_appendChar(char* buf, int size, char c, int count) noexcept;

/// A string of N inline bytes, the last of them for the NUL. It never allocates and never fails:
/// text that does not fit is cut at a whole UTF-8 character. The text of messages and exceptions.
template <int N>
class SString {
    static_assert(N > 0, "the NUL needs a byte");

public:
    /// Only the ends are written: clearing the array would cost as much as a whole message.
    SString() noexcept { clear(); }
    explicit SString(const char* text) noexcept : SString() { append(text); }

    const char* get() const noexcept { return buf; }

    [[gnu::format(printf, 2, 3)]]
    SString& prf(const char* format, ...) noexcept {
        va_list args;
        va_start(args, format);
        SString_vprf(buf, N, format, args);
        va_end(args);
        return *this;
    }

    [[gnu::format(printf, 2, 0)]]
    SString& vprf(const char* format, va_list args) noexcept {
        SString_vprf(buf, N, format, args);
        return *this;
    }

    SString& append(const char* text, int maxLen = -1) noexcept {
        SString_append(buf, N, text, maxLen);
        return *this;
    }

    SString& appendChar(char c, int count = 1) noexcept {
        SString_appendChar(buf, N, c, count);
        return *this;
    }

    SString& clear() noexcept {
        buf[0] = '\0';
        buf[N - 1] = '\0';
        return *this;
    }

    /// The array itself, for a routine of the system that writes into it. A NUL must stay in it.
    char* data() noexcept { return buf; }
    static constexpr int size() noexcept { return N; }

private:
    char buf[N];
};

} // namespace plat
