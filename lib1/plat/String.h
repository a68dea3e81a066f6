#pragma once

#include <vector>

namespace plat {

/// Owns one NUL-terminated text, or null.
/// Errors: lstripspace, toUpper and toLower read the first byte, so the String must not be null.
class String {
public:
    String() noexcept = default;
    /// Copies the text; null stays null.
    explicit String(const char* text);
    String(const String& other);
    String(String&& other) noexcept;
    String& operator=(const String& other);
    String& operator=(String&& other) noexcept;
    ~String() { delete[] buf; }

    /// Makes a String that owns the given array.
    static String owning(char* array) noexcept;

    char* get() noexcept { return buf; }
    const char* get() const noexcept { return buf; }
    /// The text, "" for null.
    const char* str() const noexcept { return buf == nullptr ? "" : buf; }

    /// Frees the text and owns the given array from now on.
    String& replaceBuf(char* newBuf) noexcept;
    /// Hands the array over; the String is null afterwards.
    char* takeBuf() noexcept;
    /// Where the array is held, for functions that replace it, such as strSplit.
    char** out() noexcept { return &buf; }

    /// Removes the white space at the front.
    String& lstripspace();
    /// Removes the white space at the end; a null String stays null.
    String& rstripspace() noexcept;
    /// Puts a separator in front of every byte whose index is a multiple of `every`, except the
    /// first. An `every` below 1 changes nothing.
    String& intersperse(char separator, int every);
    /// Changes each byte as the current locale says.
    String& toUpper() noexcept;
    /// Changes each byte as the current locale says.
    String& toLower() noexcept;

private:
    char* buf = nullptr;
};

/// Two nulls are equal; null differs from every text, the empty one too.
bool operator==(const String& string, const char* text) noexcept;
bool operator==(const String& a, const String& b) noexcept;
/// Orders by bytes, null first.
bool operator<(const String& a, const String& b) noexcept;

/// Appends a copy of the text unless an equal String is there already.
void appendUniq(std::vector<String>* strings, const char* text);

} // namespace plat
