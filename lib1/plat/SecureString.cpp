#include "plat/SecureString.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "plat/ByteVector.h"
#include "plat/StringUtil.h"
#include "plat/Word.h"

namespace plat {

namespace {

/// The differences between pieces of one word to four, as words at their ends and between, which
/// overlap as they must.
template <typename Word>
std::uint64_t wordDifferences(const char* a, const char* b, std::size_t n) noexcept {
    constexpr std::size_t size = sizeof(Word);
    const std::size_t inner = n / (2 * size) * size;
    Word all = 0;
    for (const std::size_t at : {std::size_t(0), inner, n - size - inner, n - size})
        all |= loadWord<Word>(a + at) ^ loadWord<Word>(b + at);
    return all;
}

std::uint64_t vectorDifferences(const char* a, const char* b, std::size_t n) noexcept {
    constexpr std::size_t step = sizeof(ByteVector);
    ByteVector all{};
    for (std::size_t i = 0; i < n - step; i += step)
        all |= loadVector(a + i) ^ loadVector(b + i);
    // The last bytes, some of them for the second time.
    all |= loadVector(a + n - step) ^ loadVector(b + n - step);
    return anyBits(all);
}

/// All differences between the bytes of two arrays, ORed together. What it does depends on n alone.
std::uint64_t differences(const char* a, const char* b, std::size_t n) noexcept {
    if (n > 32)
        return vectorDifferences(a, b, n);
    if (n >= 8)
        return wordDifferences<std::uint64_t>(a, b, n);
    if (n >= 4)
        return wordDifferences<std::uint32_t>(a, b, n);
    unsigned char all = 0;
    for (std::size_t i = 0; i < n; ++i)
        all |= static_cast<unsigned char>(a[i] ^ b[i]);
    return all;
}

} // namespace

void secureZeroMemory(void* p, std::size_t n) noexcept {
    if (n == 0)
        return;
    std::memset(p, 0, n);
    // As far as the optimiser knows, this reads the bytes: they must be 0 even if they are freed
    // next. A loop over volatile bytes would say the same at a fortieth of the speed.
    asm volatile("" : : "r"(p) : "memory");
}

bool secureMemEq(const void* a, const void* b, std::size_t n) noexcept {
    std::uint64_t all = differences(static_cast<const char*>(a), static_cast<const char*>(b), n);
    // As far as the optimiser knows, this changes the differences in memory: all of them must be
    // there, and there is nothing to decide before.
    asm volatile("" : "+m"(all));
    return all == 0;
}

void secureMemCpy(void* dst, const void* src, std::size_t n) noexcept {
    auto* to = static_cast<unsigned char*>(dst);
    const auto* from = static_cast<const unsigned char*>(src);
    for (std::size_t i = 0; i < n; ++i)
        to[i] = from[i];
}

char* secureStrDup(const char* s, int maxLength) {
    if (s == nullptr)
        return nullptr;
    const auto length = std::size_t(maxLength < 0 ? strLen(s) : strLen(s, maxLength));
    std::unique_ptr<char[]> copy(new char[length + 1]);
    secureMemCpy(copy.get(), s, length);
    copy[length] = '\0';
    return copy.release();
}

int secureStrCmp(const char* a, const char* b) noexcept {
    if (a == nullptr || b == nullptr)
        return int(b == nullptr) - int(a == nullptr);
    while (*a != '\0' && *a == *b) {
        ++a;
        ++b;
    }
    return int(static_cast<unsigned char>(*a)) - int(static_cast<unsigned char>(*b));
}

SecureString& SecureString::operator=(SecureString&& other) noexcept {
    return replaceBuf(std::exchange(other.buf, nullptr));
}

SecureString& SecureString::replaceBuf(char* newBuf) noexcept {
    const std::unique_ptr<char[]> old(std::exchange(buf, newBuf));
    if (old != nullptr)
        secureZeroMemory(old.get(), std::strlen(old.get()));
    return *this;
}

} // namespace plat
