#pragma once

#include <cstdarg>
#include <cstdint>
#include <memory>

namespace plat {

/// A string that grows: for messages and other short text. Its length is not stored, so that every
/// append looks for the end first; long text is built in an rdr::MemOutStream, which keeps its
/// write pointer, and handed over with `passBufTo`.
/// Errors: throws std::bad_alloc, also for text that needs more than 2^30 bytes.
class DString {
public:
    /// Null: no array, capacity 0; read as "".
    DString() noexcept = default;
    /// Holds an allocated "" with room for `initialSize` bytes.
    explicit DString(int initialSize) { ensureCapacity(initialSize); }
    DString(const DString& other) : DString() { copyFrom(other); }
    DString(DString&& other) noexcept;
    /// Copies the whole array of the other string. Assigning a string to itself empties it.
    DString& operator=(const DString& other);
    DString& operator=(DString&& other) noexcept;
    ~DString() { delete[] buf; }

    /// The capacity chosen for n bytes: the next power of two, 8 at least.
    static int bufSize(int n);

    char* get() noexcept { return buf; }
    const char* get() const noexcept { return buf; }
    /// The text, "" for null.
    const char* str() const noexcept { return buf == nullptr ? "" : buf; }
    int capacity() const noexcept { return size; }

    /// Makes room for n bytes with the NUL, and keeps all bytes of the array.
    void ensureCapacity(int n);

    /// Frees the array and owns the given one, of `newSize` bytes, from now on.
    DString& replaceBuf(char* newBuf, int newSize) noexcept;
    /// Hands the array over; the string is null afterwards.
    char* takeBuf() noexcept;

    DString& append(const char* text) { return append_(text, -1); }
    DString& appendChar(char c) { return appendChar_(c, 1); }

    /// Appends a text, or its first `maxLen` bytes when `maxLen` is not negative. A null text
    /// appends nothing. The text may be a part of this string.
    DString& append_(const char* text, int maxLen);
    /// Appends formatted text.
    [[gnu::format(printf, 2, 3)]]
    DString& prf(const char* format, ...);
    /// Appends formatted text.
    [[gnu::format(printf, 2, 0)]]
    DString& vprf(const char* format, va_list args);
    /// Appends a character `count` times.
    DString& appendChar_(char c, int count);
    /// Appends the source with every `find` in it replaced; a null `with` removes them. Each of the
    /// three may be a part of this string.
    /// Errors: an empty `find` asserts.
    DString& replace(const char* source, const char* find, const char* with);
    /// Replaces every `find` in this string.
    /// Errors: an empty `find` asserts.
    DString& replace(const char* find, const char* with);
    /// Removes every byte that is one of `chars`.
    DString& stripAnyOf(const char* chars) noexcept;
    /// Breaks the text into lines of `width` columns; a line that was broken goes on behind
    /// `indent` blanks. Blanks at the start of a line stay, those at the very end go. A word that
    /// is wider than a line is not broken.
    DString& wordWrap(int width, int indent);

private:
    /// Makes room for n bytes, and returns the array that was outgrown: an argument may point to
    /// it.
    std::unique_ptr<char[]> grow(std::int64_t n);
    void copyFrom(const DString& other);

    char* buf = nullptr;
    int size = 0; ///< capacity in bytes

    friend struct DStringLayout;
};

} // namespace plat
