#pragma once

#include <memory>

#include "rdr/InStream.h"

namespace rdr {

/// A stream that reads from any source by way of a buffer of fixed size. The buffer keeps what was
/// read since the last checkpoint, so that its size is that of the longest message; for a stream
/// that is not rewindable it keeps only what is not read yet.
class BufferedInStream : public InStream {
public:
    int pos() override;
    bool overrun(int itemSize) override;
    /// Fills an array with at most `len` bytes from the source, and returns how many; 0 says that
    /// it has none now.
    /// Errors: throws EndOfStream or EndOfMsg at the end of the data.
    virtual int read(void* buf, int len) = 0;

protected:
    /// Allocates a buffer of `size` bytes, 16800 for a negative one.
    explicit BufferedInStream(int size = -1);

private:
    void compact() noexcept;
    unsigned char* bufferEnd() const noexcept { return buffer.get() + bufferSize; }

    int bufferSize;
    int offset = 0; ///< the position of the first byte in the buffer
    std::unique_ptr<unsigned char[]> buffer;

    friend struct BufferedInStreamLayout;

public:
    bool dump = false; ///< prints all that is read to standard error
};

} // namespace rdr
