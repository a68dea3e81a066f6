#include "rdr/BufferedInStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "plat/Assertion.h"
#include "plat/hexDump.h"

namespace rdr {

// With virtual functions, offsetof is up to the compiler: all of ours have it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
/// Sees the private members.
struct BufferedInStreamLayout {
    static_assert(offsetof(BufferedInStream, offset) ==
                  offsetof(BufferedInStream, bufferSize) + sizeof(int));
    static_assert(offsetof(BufferedInStream, buffer) > offsetof(BufferedInStream, offset));
    static_assert(offsetof(BufferedInStream, dump) ==
                  offsetof(BufferedInStream, buffer) + sizeof(void*));
};
#pragma GCC diagnostic pop

namespace {

constexpr int defaultSize = 16800;

/// Positions wrap around in a stream of more than 2 GB.
int addPositions(int a, std::ptrdiff_t b) noexcept {
    return int(std::uint32_t(a) + std::uint32_t(b));
}

} // namespace

BufferedInStream::BufferedInStream(int size)
    : bufferSize(size < 0 ? defaultSize : size),
      buffer(new unsigned char[std::size_t(bufferSize)]) {
    ptr = end = checkpointPtr = buffer.get();
}

int BufferedInStream::pos() {
    return addPositions(offset, ptr - buffer.get());
}

void BufferedInStream::compact() noexcept {
    const std::ptrdiff_t distance = checkpointPtr - buffer.get();
    if (distance == 0)
        return;
    std::memmove(buffer.get(), checkpointPtr, std::size_t(end - checkpointPtr));
    offset = addPositions(offset, distance);
    ptr -= distance;
    end -= distance;
    checkpointPtr -= distance;
}

bool BufferedInStream::overrun(int itemSize) {
    compact();
    const auto wanted = std::min<std::ptrdiff_t>(itemSize, bufferEnd() - ptr);
    while (end - ptr < wanted) {
        unsigned char* const to = buffer.get() + (end - buffer.get());
        const int room = int(bufferEnd() - end);
        const int count = read(to, room);
        if (count == 0)
            return false;
        LUMO_ASSERT_FATAL(count > 0 && count <= room);
        if (dump)
            plat::hexDump(" <-- ", "     ", to, count);
        end += count;
    }
    return true;
}

} // namespace rdr
