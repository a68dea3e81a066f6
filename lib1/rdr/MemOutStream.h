#pragma once

#include <cstddef>

#include "plat/Buf.h"
#include "plat/CopyBytes.h"
#include "plat/DString.h"
#include "rdr/OutStream.h"

namespace rdr {

/// A stream into memory that grows as it is written: the way to build long text and blocks of
/// bytes. Errors: a write beyond the maximum length throws OutStreamFull, and writes nothing; one
/// beyond 2^31 bytes throws std::bad_alloc.
class MemOutStream final : public OutStream {
public:
    /// Allocates `initialSize` bytes, 256 for a negative one. A `maxLength` of 0 sets no limit.
    explicit MemOutStream(int initialSize = -1, int maxLength = 0);
    ~MemOutStream() override;

    void writeBytes(const void* data, int len) override {
        if (end - ptr < len) [[unlikely]] {
            growAndWrite(data, len);
            return;
        }
        unsigned char* const to = ptr;
        ptr += len;
        plat::copyBytes(to, data, std::size_t(len));
    }
    int length() override { return int(ptr - start); }
    int nonBlockingBytes() override;
    int overrun(int itemSize, int nItems) override;

    /// Sets the maximum length; 0 sets no limit. What is already written stays.
    void setMaxLen(int newMaxLen) noexcept;

    /// What has been written, in one piece; it moves when the stream grows.
    const unsigned char* data() const noexcept { return start; }

    /// Hands over the buffer, which the caller frees with delete[]. The stream is empty afterwards
    /// and can be written again.
    unsigned char* takeBuf() noexcept;
    /// Hands over the buffer and its length.
    void passBufTo(plat::MBuf<unsigned char>* to) noexcept;
    /// Writes a NUL and hands over the buffer as a string whose capacity is what has been written.
    void passBufTo(plat::DString* to);

private:
    void growAndWrite(const void* data, int len);
    void setBuf(unsigned char* newStart, int written, int newSize) noexcept;

    unsigned char* start;
    int allocated;
    int maxLen;

    friend struct MemOutStreamLayout;
};

} // namespace rdr
