#include "rdr/InStream.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "plat/ByteVector.h"
#include "plat/CopyBytes.h"
#include "plat/SecureString.h"
#include "plat/Word.h"
#include "rdr/BlockException.h"
#include "rdr/EndOfMsg.h"
#include "rdr/EndOfStream.h"
#include "rdr/StringTooLongException.h"

namespace rdr {

// With virtual functions, offsetof is up to the compiler: all of ours have it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
/// Sees the protected members.
struct InStreamLayout {
    static_assert(offsetof(InStream, ptr) == sizeof(void*), "behind the virtual table");
    static_assert(offsetof(InStream, end) == 2 * sizeof(void*));
    static_assert(offsetof(InStream, checkpointPtr) == 3 * sizeof(void*));
    static_assert(offsetof(InStream, checkpointPos) == 4 * sizeof(void*));
    static_assert(offsetof(InStream, rewindable) == 4 * sizeof(void*) + sizeof(int));
};
#pragma GCC diagnostic pop

namespace {

constexpr int defaultMaxLine = 0x40000;
constexpr int smallestLineSize = 64;

/// An array for a string and its NUL.
std::unique_ptr<char[]> newString(std::uint32_t length) {
    const std::uint64_t size = std::uint64_t(length) + 1;
    if (size > std::numeric_limits<std::size_t>::max())
        throw std::bad_array_new_length(); // with 32 bits, the largest length and its NUL make 0
    return std::unique_ptr<char[]>(new char[std::size_t(size)]);
}

/// A bit for each byte of a piece that is '\n' or '\r', the first one's the lowest.
std::uint32_t lineBytes(const char* piece) noexcept {
    constexpr plat::ByteVector weights = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const plat::ByteVector bytes = plat::loadVector(piece);
    const auto found = plat::ByteVector(bytes == '\n') | plat::ByteVector(bytes == '\r');
    std::uint64_t halves[2];
    plat::storeVector(halves, found & weights);
    // The highest byte of a product is the sum of all bytes.
    constexpr auto ones = plat::eachByte<std::uint64_t>(1);
    return std::uint32_t(halves[0] * ones >> 56 | halves[1] * ones >> 56 << 8);
}

/// Finds the first '\n' or '\r' among `count` bytes; `count` if there is none. In one pass, and in
/// steps so large that how many a line takes can be foreseen.
int findLineByte(const char* bytes, int count) noexcept {
    constexpr int step = sizeof(plat::ByteVector);
    int i = 0;
    for (; count - i >= 2 * step; i += 2 * step) {
        const std::uint32_t found = lineBytes(bytes + i) | lineBytes(bytes + i + step) << step;
        if (found != 0)
            return i + std::countr_zero(found);
    }
    while (i < count && bytes[i] != '\n' && bytes[i] != '\r')
        ++i;
    return i;
}

/// Holds an array that shall not be freed as it is.
class WipedOnFailure {
public:
    explicit WipedOnFailure(std::uint32_t length) : array(newString(length)), size(length) {}
    WipedOnFailure(const WipedOnFailure&) = delete;
    WipedOnFailure& operator=(const WipedOnFailure&) = delete;
    ~WipedOnFailure() {
        if (array != nullptr)
            plat::secureZeroMemory(array.get(), size);
    }

    char* get() noexcept { return array.get(); }
    char* release() noexcept { return array.release(); }

private:
    std::unique_ptr<char[]> array;
    std::size_t size;
};

} // namespace

void InStream::checkpoint() {
    checkpointPos = pos();
    checkpointPtr = ptr;
}

void InStream::rewind() {
    if (!rewindable)
        throw plat::Exception("Attempt to rewind a non-rewindable stream");
    ptr = checkpointPtr;
}

void InStream::reposition(int position) {
    if (position < checkpointPos)
        throw plat::Exception("Can't reposition before checkpoint");
    rewind();
    skipBytes(std::int64_t(position) - checkpointPos);
}

bool InStream::overrunOrRewind(bool wait, int itemSize) {
    if (!rewindable)
        checkpoint(); // nothing before the read pointer needs to be kept
    bool isFilled = false;
    try {
        isFilled = overrun(itemSize);
    } catch (const BlockException&) {
        isFilled = false;
    }
    if (isFilled) {
        if (ptr == end)
            throw plat::Exception("InStream overrun: buffer size exceeded");
        return true;
    }
    if (rewindable)
        rewind();
    if (wait)
        throw BlockException();
    return false;
}

int InStream::piece(std::int64_t n) {
    if (ptr == end)
        overrunOrRewind(true, 1);
    return int(std::min<std::int64_t>(n, available()));
}

void InStream::readBytes(char* dest, std::int64_t count) {
    while (count > 0) {
        const int n = piece(count);
        plat::copyBytes(dest, ptr, std::size_t(n));
        ptr += n;
        dest += n;
        count -= n;
    }
}

const unsigned char* InStream::assembleItem(unsigned char* scratch, int itemSize) {
    readBytes(reinterpret_cast<char*>(scratch), itemSize);
    return scratch;
}

const unsigned char* InStream::getItem_(unsigned char* scratch, int itemSize) {
    if (available() < itemSize)
        overrunOrRewind(true, itemSize);
    if (available() < itemSize)
        return assembleItem(scratch, itemSize);
    const unsigned char* const item = ptr;
    ptr += itemSize;
    return item;
}

const unsigned char* InStream::getItems(unsigned char* scratch, int itemSize, int* nItems) {
    LUMO_ASSERT_FATAL(*nItems > 0);
    if (available() < itemSize)
        overrunOrRewind(true, itemSize);
    if (available() < itemSize) {
        *nItems = 1;
        return assembleItem(scratch, itemSize);
    }
    *nItems = std::min(*nItems, available() / itemSize);
    const unsigned char* const items = ptr;
    ptr += std::ptrdiff_t(itemSize) * *nItems;
    return items;
}

std::uint8_t InStream::readLength8() {
    unsigned char scratch = 0;
    return *getItem_(&scratch, 1);
}

std::uint32_t InStream::readLength32() {
    unsigned char scratch[4];
    const unsigned char* const bytes = getItem_(scratch, int(sizeof scratch));
    return std::uint32_t(bytes[0]) << 24 | std::uint32_t(bytes[1]) << 16 |
           std::uint32_t(bytes[2]) << 8 | bytes[3];
}

char* InStream::readLongString(unsigned maxLen) {
    const std::uint32_t length = readLength32();
    if (length > maxLen)
        throw StringTooLongException();
    std::unique_ptr<char[]> text = newString(length);
    readBytes(text.get(), length);
    text[length] = '\0';
    return text.release();
}

void InStream::readShortString(char* dest) {
    const std::uint8_t length = readLength8();
    readBytes(dest, length);
    dest[length] = '\0';
}

char* InStream::readShortString() {
    const std::uint8_t length = readLength8();
    std::unique_ptr<char[]> text = newString(length);
    readBytes(text.get(), length);
    text[length] = '\0';
    return text.release();
}

char* InStream::readShortSecureString() {
    const std::uint8_t length = readLength8();
    WipedOnFailure text(length);
    for (int i = 0; i < length;) {
        const int n = piece(length - i);
        plat::secureMemCpy(text.get() + i, ptr, std::size_t(n));
        ptr += n;
        i += n;
    }
    text.get()[length] = '\0';
    return text.release();
}

void InStream::skipBytes(std::int64_t n) {
    while (n > 0) {
        const int count = piece(n);
        ptr += count;
        n -= count;
    }
}

void InStream::skip(int n) {
    skipBytes(n);
}

int InStream::skipAvailBytes(int n, bool wait) {
    if (ptr == end && !overrunOrRewind(wait, 1))
        return 0;
    const int count = std::clamp(n, 0, available());
    ptr += count;
    return count;
}

/// Reads a line piece by piece into a place that offers room for the next one.
struct InStream::LineReader {
    InStream& in;
    std::int64_t length = 0; ///< bytes stored

    /// Stores bytes up to and without a '\n', or until `limit` are stored; `store(bytes, n, m)`
    /// stores n bytes, of m that can be read. Returns whether the line has ended, be it with the
    /// data.
    template <typename Store>
    bool read(std::int64_t limit, Store store) {
        try {
            while (length < limit) {
                const int searched = in.piece(limit - length);
                const auto* const start = reinterpret_cast<const char*>(in.ptr);
                const int n = findLineByte(start, searched);
                store(start, n, searched);
                length += n;
                in.ptr += n;
                if (n < searched && *in.ptr++ == '\n') // '\r' is left out
                    return true;
            }
        } catch (const EndOfStream&) {
            if (length == 0)
                throw;
            return true;
        } catch (const EndOfMsg&) {
            if (length == 0)
                throw;
            return true;
        }
        return false;
    }
};

int InStream::readLine(plat::DString* line, int maxLen) {
    if (line->capacity() < smallestLineSize)
        line->ensureCapacity(smallestLineSize);
    line->get()[0] = '\0';
    LineReader reader{*this};
    const auto store = [&](const char* bytes, int n, int readable) {
        const std::int64_t needed = reader.length + n + 1;
        if (needed > line->capacity())
            line->ensureCapacity(
                int(std::min<std::int64_t>(needed, std::numeric_limits<int>::max())));
        char* const to = line->get() + reader.length;
        constexpr int piece = smallestLineSize;
        if (n <= piece && readable >= piece && line->capacity() - reader.length >= piece)
            std::memcpy(to, bytes, piece); // more than needed, but without a choice to guess
        else
            plat::copyBytes(to, bytes, std::size_t(n));
    };
    bool isEnded = false;
    try {
        isEnded = reader.read(std::int64_t(maxLen <= 0 ? defaultMaxLine : maxLen) + 1, store);
    } catch (...) {
        line->get()[reader.length] = '\0';
        throw;
    }
    line->get()[reader.length] = '\0';
    if (!isEnded)
        throw StringTooLongException();
    return int(reader.length);
}

int InStream::readLine(char* dest, int size) {
    if (size < 1)
        return 0;
    LineReader reader{*this};
    const auto store = [&](const char* bytes, int n, int) {
        plat::copyBytes(dest + reader.length, bytes, std::size_t(n));
    };
    if (reader.read(size, store))
        dest[reader.length] = '\0';
    return int(reader.length);
}

} // namespace rdr
