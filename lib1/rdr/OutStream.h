#pragma once

#include "plat/Assertion.h"

namespace rdr {

/// A stream of bytes to write to. Writers put bytes straight between the write pointer and the end
/// pointer; where that range is too small, the derived stream makes room.
class OutStream {
public:
    OutStream(const OutStream&) = delete;
    OutStream& operator=(const OutStream&) = delete;
    virtual ~OutStream() = default;

    /// Writes `len` bytes.
    virtual void writeBytes(const void* data, int len);
    /// The number of bytes written so far.
    virtual int length() = 0;
    /// Passes buffered bytes on.
    virtual void flush() {}
    /// The stream whose flush passes this stream's bytes on.
    virtual OutStream* getFlushingStream() { return this; }
    /// The number of bytes that are written and not yet flushed.
    virtual int unflushedBytes();
    /// The number of bytes that can be written without blocking.
    virtual int nonBlockingBytes() = 0;
    /// Ends the stream.
    virtual void shutdown() {}
    /// Makes room for at least one item behind the write pointer, and returns how many of the items
    /// fit. The pointers may change. Called only where the room is too small.
    virtual int overrun(int itemSize, int nItems) = 0;

    /// Writes a text of at most `max` bytes (0: any length) behind its length, which takes 4 bytes,
    /// the most significant first. Longer text is cut.
    void writeLongString(const char* text, int max = 0);
    /// Writes a text of at most 255 bytes behind its length, which takes one byte. Longer text is
    /// cut, in a character if need be.
    void writeShortString(const char* text);
    /// Moves the write pointer over n bytes without writing them.
    void skip(int n);

    /// The write pointer, and the end of the room behind it.
    unsigned char* getPtr() const noexcept { return ptr; }
    unsigned char* getEnd() const noexcept { return end; }
    /// Moves the write pointer over bytes that the caller has put behind it.
    /// Errors: a pointer outside the room asserts.
    void setPtr(unsigned char* p) {
        LUMO_ASSERT_FATAL(p >= ptr && p <= end);
        ptr = p;
    }

    /// Makes room for n bytes in one piece behind the write pointer.
    void ensureRoom(int n) {
        if (end - ptr < n)
            overrun(n, 1);
    }

protected:
    OutStream() noexcept = default;

    unsigned char* ptr = nullptr; ///< where the next byte goes
    unsigned char* end = nullptr; ///< one past the last byte that can be written

    friend struct OutStreamLayout;
};

} // namespace rdr
