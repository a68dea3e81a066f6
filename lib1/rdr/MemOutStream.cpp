#include "rdr/MemOutStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

#include "rdr/OutStreamFull.h"

namespace rdr {

// With virtual functions, offsetof is up to the compiler: all of ours have it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
/// Sees the private members.
struct MemOutStreamLayout {
    static_assert(offsetof(MemOutStream, start) == sizeof(OutStream));
    static_assert(offsetof(MemOutStream, allocated) == sizeof(OutStream) + sizeof(void*));
    static_assert(offsetof(MemOutStream, maxLen) ==
                  offsetof(MemOutStream, allocated) + sizeof(int));
};
#pragma GCC diagnostic pop

namespace {

constexpr int defaultSize = 256;

} // namespace

MemOutStream::MemOutStream(int initialSize, int maxLength)
    : start(nullptr), allocated(0), maxLen(maxLength) {
    const int size = initialSize < 0 ? defaultSize : initialSize;
    setBuf(new unsigned char[std::size_t(size)], 0, size);
}

MemOutStream::~MemOutStream() {
    delete[] start;
}

/// Apart, so that the usual write is a few instructions and calls nothing.
void MemOutStream::growAndWrite(const void* data, int len) {
    overrun(len, 1);
    writeBytes(data, len);
}

int MemOutStream::nonBlockingBytes() {
    return maxLen > 0 ? maxLen - length() : std::numeric_limits<int>::max();
}

int MemOutStream::overrun(int itemSize, int nItems) {
    const std::int64_t written = length();
    if (maxLen > 0 && written + itemSize > maxLen)
        throw OutStreamFull();
    std::int64_t newSize =
        std::max(written + std::int64_t(itemSize) * nItems, 2 * std::int64_t(allocated));
    if (maxLen > 0)
        newSize = std::min<std::int64_t>(newSize, maxLen);
    if (newSize > std::numeric_limits<int>::max())
        throw std::bad_array_new_length();

    auto* const newStart = new unsigned char[std::size_t(newSize)];
    plat::copyGrown(newStart, start, std::size_t(written));
    delete[] start; // not wiped
    setBuf(newStart, int(written), int(newSize));
    return int(std::min<std::ptrdiff_t>(nItems, (end - ptr) / itemSize));
}

void MemOutStream::setMaxLen(int newMaxLen) noexcept {
    maxLen = newMaxLen;
    setBuf(start, length(), allocated);
}

void MemOutStream::setBuf(unsigned char* newStart, int written, int newSize) noexcept {
    start = newStart;
    allocated = newSize;
    ptr = start + written;
    end = start + (maxLen > 0 ? std::min(allocated, maxLen) : allocated);
}

unsigned char* MemOutStream::takeBuf() noexcept {
    unsigned char* const buf = start;
    setBuf(nullptr, 0, 0);
    return buf;
}

void MemOutStream::passBufTo(plat::MBuf<unsigned char>* to) noexcept {
    const int written = length();
    to->replaceBuf(takeBuf(), written);
}

void MemOutStream::passBufTo(plat::DString* to) {
    ensureRoom(1);
    *ptr++ = '\0';
    const int written = length();
    to->replaceBuf(reinterpret_cast<char*>(takeBuf()), written);
}

} // namespace rdr
