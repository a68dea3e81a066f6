#pragma once

#include "platform/linux/core/Object.h"

#include <CoreFoundation/CFString.h>

#include <memory>

/// Immutable text. Constants are objects that borrow a literal and are never freed; ASCII only.
struct __CFString final : platform::Object {
    /// A constant: define it constinit and [[clang::no_destroy]].
    explicit constexpr __CFString(const char* literal) noexcept
        : Object(platform::ObjectType::String, Lifetime::Immortal), text(literal) {
        while (literal[bytes] != '\0')
            ++bytes;
        units = static_cast<CFIndex>(bytes);
    }

    /// A copy of valid UTF-8.
    __CFString(const char* text, std::size_t bytes);

    const char* utf8() const noexcept { return text; }
    std::size_t sizeBytes() const noexcept { return bytes; }
    CFIndex utf16Length() const noexcept { return units; }

private:
    std::unique_ptr<char[]> owned;
    const char* text;
    std::size_t bytes = 0;
    CFIndex units = 0;
};
