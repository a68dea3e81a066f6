#include "rdr/OutStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "plat/StringUtil.h"

namespace rdr {

// With virtual functions, offsetof is up to the compiler: all of ours have it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
/// Sees the protected members.
struct OutStreamLayout {
    static_assert(offsetof(OutStream, ptr) == sizeof(void*), "behind the virtual table");
    static_assert(offsetof(OutStream, end) == 2 * sizeof(void*));
};
#pragma GCC diagnostic pop

void OutStream::writeBytes(const void* data, int len) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (len > 0) {
        int count = int(std::min<std::ptrdiff_t>(end - ptr, len));
        if (count <= 0)
            count = overrun(1, len);
        std::memcpy(ptr, bytes, std::size_t(count));
        ptr += count;
        bytes += count;
        len -= count;
    }
}

int OutStream::unflushedBytes() {
    OutStream* const flushing = getFlushingStream();
    return flushing == this ? 0 : flushing->unflushedBytes();
}

void OutStream::writeLongString(const char* text, int max) {
    int length = plat::strLen(text);
    if (max > 0)
        length = std::min(length, max);
    const auto bits = std::uint32_t(length);
    const unsigned char header[] = {
        static_cast<unsigned char>(bits >> 24), static_cast<unsigned char>(bits >> 16),
        static_cast<unsigned char>(bits >> 8), static_cast<unsigned char>(bits)};
    writeBytes(header, sizeof header);
    writeBytes(text, length);
}

void OutStream::writeShortString(const char* text) {
    const int length = plat::strLen(text, 255);
    const auto header = static_cast<unsigned char>(length);
    writeBytes(&header, 1);
    writeBytes(text, length);
}

void OutStream::skip(int n) {
    while (n > 0) {
        int count = int(std::min<std::ptrdiff_t>(end - ptr, n));
        if (count <= 0)
            count = overrun(1, n);
        ptr += count;
        n -= count;
    }
}

} // namespace rdr
