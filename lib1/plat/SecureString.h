#pragma once

#include <cstddef>

namespace plat {

/// Sets bytes to 0, also where they are never read again and an optimiser would leave it out.
void secureZeroMemory(void* p, std::size_t n) noexcept;

/// Compares n bytes in a time that depends on n alone.
bool secureMemEq(const void* a, const void* b, std::size_t n) noexcept;

/// Copies n bytes one by one; the arrays do not overlap.
void secureMemCpy(void* dst, const void* src, std::size_t n) noexcept;

/// Copies a text byte by byte, its first `maxLength` bytes at most when `maxLength` is not
/// negative. Ownership: the caller frees the array with delete[]. A null text gives null.
char* secureStrDup(const char* s, int maxLength = -1);

/// Compares two texts: the difference of the first bytes that differ, or 0. Null is smaller than
/// every text: -1 or 1. It stops at the first difference.
int secureStrCmp(const char* a, const char* b) noexcept;

/// Owns a secret text and wipes it before freeing it.
class SecureString {
public:
    /// Takes ownership of the array.
    explicit SecureString(char* owned = nullptr) noexcept : buf(owned) {}
    SecureString(SecureString&& other) noexcept : buf(other.buf) { other.buf = nullptr; }
    SecureString& operator=(SecureString&& other) noexcept;
    SecureString(const SecureString&) = delete;
    SecureString& operator=(const SecureString&) = delete;
    ~SecureString() { replaceBuf(nullptr); }

    const char* get() const noexcept { return buf; }

    /// Wipes and frees the text held, and holds `newBuf` from now on.
    SecureString& replaceBuf(char* newBuf) noexcept;

private:
    char* buf;
};

} // namespace plat
