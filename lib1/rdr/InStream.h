#pragma once

#include <cstdint>

#include "plat/Assertion.h"
#include "plat/DString.h"

namespace rdr {

/// A stream of bytes to read from. Readers take bytes straight from the buffered range, between the
/// read pointer and the end pointer; where it is too small, the derived stream fills it up.
///
/// A rewindable stream keeps every byte since the last checkpoint. When its data runs out in the
/// middle of a message it goes back there, and the whole message can be read again later. What is
/// read between two checkpoints must fit into its buffer.
/// Errors: every reader throws BlockException where data may come later, and what the derived
/// stream throws: EndOfStream or EndOfMsg at the end of the data, plat::Exception for a failure.
/// Threads: one thread at a time.
class InStream {
public:
    InStream(const InStream&) = delete;
    InStream& operator=(const InStream&) = delete;
    virtual ~InStream() = default;

    /// The position of the read pointer, counted from the start of the stream.
    virtual int pos() = 0;
    /// Makes the read pointer the place that rewind() goes back to.
    virtual void checkpoint();
    /// Goes back to the last checkpoint.
    /// Errors: throws plat::Exception where the stream is not rewindable.
    virtual void rewind();
    /// Goes to a position, by way of the last checkpoint.
    /// Errors: throws plat::Exception for one before the checkpoint, and where the stream is not
    /// rewindable.
    virtual void reposition(int position);
    /// Tells whether the read pointer is at the end of a message.
    virtual bool atEndMsg() { return false; }
    /// Fills the buffered range up to `itemSize` bytes, or to as many as the buffer can hold behind
    /// the read pointer. The pointers may change. Called only where the range is smaller.
    /// Errors: false or a BlockException when no data can be had now; throws EndOfStream or
    /// EndOfMsg at the end of the data.
    virtual bool overrun(int itemSize) = 0;

    /// Fills the buffered range as overrun() does; for lack of data, goes back to the checkpoint.
    /// Returns whether there are bytes now.
    /// Errors: throws BlockException instead of returning false with `wait`, and plat::Exception
    /// when the buffer is full of bytes that are kept since the checkpoint.
    bool overrunOrRewind(bool wait, int itemSize);

    /// Reads one item of `itemSize` bytes. It stays in the buffer where it lies there in one piece,
    /// and is copied to `scratch` otherwise.
    /// Ownership: the result is valid until the next read.
    const unsigned char* getItem_(unsigned char* scratch, int itemSize);
    /// Reads at most `*nItems` items, as many as lie in the buffer in one piece, or a single one by
    /// way of `scratch`; `*nItems` becomes their number.
    /// Ownership: the result is valid until the next read.
    /// Errors: a number below 1 asserts.
    const unsigned char* getItems(unsigned char* scratch, int itemSize, int* nItems);

    /// Reads a string behind its length, which takes 4 bytes, the most significant first.
    /// Ownership: the caller frees the array with delete[]; a NUL stands behind the bytes, which
    /// may be any.
    /// Errors: throws StringTooLongException, with only the length read, for more than `maxLen`.
    char* readLongString(unsigned maxLen);
    /// Reads a string behind its length, which takes one byte, into 256 bytes of the caller's.
    void readShortString(char* dest);
    /// Reads a string behind its length, which takes one byte.
    /// Ownership: as for readLongString().
    char* readShortString();
    /// Reads a short string that is secret: it is copied from the buffer byte by byte, and wiped if
    /// the rest of it cannot be read.
    /// Ownership: as for readLongString(); the caller wipes it.
    char* readShortSecureString();

    /// Moves the read pointer over n bytes; over none for an n below 1.
    void skip(int n);
    /// Moves the read pointer over n bytes, or over those that are buffered; with an empty buffer,
    /// fills it once before. Returns how many.
    int skipAvailBytes(int n, bool wait);

    /// Reads a line without its '\n', and without any '\r', and returns its length. The last line
    /// of the stream needs no '\n'. NULs are bytes like others.
    /// Shape: `maxLen` is the length of the longest line in bytes; 0 and less stand for 262144.
    /// Errors: throws StringTooLongException for a longer line, with `maxLen` + 1 of its bytes read
    /// and in `line`. At the end of the data, passes on what overrun() throws. With every other
    /// error `line` holds what was read so far.
    int readLine(plat::DString* line, int maxLen = 0);
    /// Reads a line as above into an array. A result of `size` says that the array is full: there
    /// is no NUL, and the rest of the line, if only its '\n', is what the next call reads.
    int readLine(char* dest, int size);

    /// The read pointer, and the end of the buffered bytes.
    const unsigned char* getPtr() const noexcept { return ptr; }
    const unsigned char* getEnd() const noexcept { return end; }
    /// Moves the read pointer over bytes that the caller has read behind it.
    /// Errors: a pointer outside the buffered range asserts.
    void setPtr(const unsigned char* p) {
        LUMO_ASSERT_FATAL(p >= ptr && p <= end);
        ptr = p;
    }

protected:
    InStream() noexcept = default;

    const unsigned char* ptr = nullptr;           ///< the next byte to be read
    const unsigned char* end = nullptr;           ///< one past the last buffered byte
    const unsigned char* checkpointPtr = nullptr; ///< the read pointer at the last checkpoint
    int checkpointPos = 0;                        ///< the position at the last checkpoint
    bool rewindable = true; ///< whether a lack of data leads back to the checkpoint

private:
    struct LineReader;

    int available() const noexcept { return int(end - ptr); }
    /// How many of n wanted bytes lie in the buffered range; fills it when it is empty.
    int piece(std::int64_t n);
    void readBytes(char* dest, std::int64_t count);
    const unsigned char* assembleItem(unsigned char* scratch, int itemSize);
    std::uint8_t readLength8();
    std::uint32_t readLength32();
    void skipBytes(std::int64_t n);

    friend struct InStreamLayout;
};

} // namespace rdr
