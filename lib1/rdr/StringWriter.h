#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstring>

#include "plat/DecimalText.h"
#include "plat/StringUtil.h"
#include "rdr/OutStream.h"

namespace rdr {

/// Writes text into a stream, and keeps it NUL-terminated: behind the text stands a NUL that does
/// not count as written, so that a memory stream's buffer can be handed over as a string.
/// Ownership: borrows the stream, which outlives the writer.
/// Errors: as the stream's. Under a maximum length of N, N - 1 bytes of text fit.
class StringWriter {
public:
    explicit StringWriter(OutStream* stream) noexcept : out(stream) {}

    /// Appends a text, or its first `max` bytes when `max` is not negative.
    StringWriter& append(const char* text, int max = -1) {
        out->writeBytes(text, max < 0 && text != nullptr ? int(std::strlen(text))
                                                         : plat::strLen(text, max));
        endText();
        return *this;
    }
    /// Appends a number in decimal.
    StringWriter& appendInt(std::int64_t value) {
        out->ensureRoom(plat::longestDecimal + 1);
        auto* const text = reinterpret_cast<char*>(out->getPtr());
        char* const end = plat::writeDecimal(text, value);
        *end = '\0';
        out->setPtr(reinterpret_cast<unsigned char*>(end));
        return *this;
    }
    /// Appends formatted text.
    [[gnu::format(printf, 2, 3)]]
    StringWriter& prf(const char* format, ...);
    /// Appends formatted text.
    [[gnu::format(printf, 2, 0)]]
    StringWriter& vprf(const char* format, va_list args);
    /// Appends a character.
    StringWriter& appendChar(char c);
    /// Appends a character n times.
    StringWriter& appendChar(char c, int n);

private:
    void endText() {
        out->ensureRoom(1);
        *out->getPtr() = '\0';
    }

    OutStream* out;
};

} // namespace rdr
