#pragma once

#include <cstddef>
#include <utility>

#include "plat/SecureString.h"

namespace plat {

/// A view of constant data, passed by value. It owns nothing.
template <typename T>
struct CBuf {
    constexpr CBuf() noexcept = default;
    constexpr CBuf(const T* from, int count) noexcept : length(count), data(from) {}

    const T* begin() const noexcept { return data; }
    const T* end() const noexcept { return data + length; }

    int length = 0; ///< in elements
    const T* data = nullptr;
};

/// Owns one array, with its length. A secure one wipes the array before it frees it.
template <typename T>
class MBuf {
public:
    explicit MBuf(bool isSecret = false) noexcept : secure(isSecret) {}
    MBuf(MBuf&& other) noexcept
        : len(std::exchange(other.len, 0)), buf(std::exchange(other.buf, nullptr)),
          secure(other.secure) {}
    MBuf& operator=(MBuf&& other) noexcept {
        // The flag stays with the array that it was set for.
        if (this != &other) {
            clear();
            secure = other.secure;
            len = std::exchange(other.len, 0);
            buf = std::exchange(other.buf, nullptr);
        }
        return *this;
    }
    MBuf(const MBuf&) = delete;
    MBuf& operator=(const MBuf&) = delete;
    ~MBuf() { clear(); }

    T* get() noexcept { return buf; }
    const T* get() const noexcept { return buf; }
    int length() const noexcept { return len; }
    bool isSecure() const noexcept { return secure; }
    void setSecure(bool newSecure) noexcept { secure = newSecure; }
    CBuf<T> view() const noexcept { return {buf, len}; }

    /// Puts in a new array and takes ownership of it. The old array is wiped over its length if the
    /// buffer is secure, and freed.
    void replaceBuf(T* newBuf, int newLength) noexcept {
        if (buf != nullptr && secure)
            secureZeroMemory(buf, std::size_t(len) * sizeof(T));
        delete[] buf;
        len = newLength;
        buf = newBuf;
    }

    void clear() noexcept { replaceBuf(nullptr, 0); }

private:
    int len = 0;
    T* buf = nullptr;
    bool secure;

    friend struct BufLayout;
};

/// Guards the order of the members.
struct BufLayout {
    static_assert(offsetof(CBuf<char>, length) == 0);
    static_assert(offsetof(CBuf<char>, data) == sizeof(void*));
    static_assert(offsetof(MBuf<char>, len) == 0);
    static_assert(offsetof(MBuf<char>, buf) == sizeof(void*));
    static_assert(offsetof(MBuf<char>, secure) == 2 * sizeof(void*));
};

} // namespace plat
