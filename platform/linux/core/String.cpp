#include "platform/linux/core/String.h"

#include <algorithm>
#include <cstring>
#include <glib.h>

namespace {

CFIndex utf16LengthOf(const char* text, std::size_t bytes) {
    // Each character starts with a byte that is no continuation; those of four bytes take a pair.
    return std::count_if(text, text + bytes, [](char byte) { return (byte & 0xc0) != 0x80; }) +
           std::count_if(text, text + bytes, [](char byte) { return (byte & 0xf8) == 0xf0; });
}

} // namespace

__CFString::__CFString(const char* from, std::size_t size)
    : Object(platform::ObjectType::String), owned(new char[size + 1]), text(owned.get()),
      bytes(size), units(utf16LengthOf(from, size)) {
    std::memcpy(owned.get(), from, size);
    owned[size] = '\0';
}

CFTypeID CFStringGetTypeID() {
    return static_cast<CFTypeID>(platform::ObjectType::String);
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding) {
    if (text == nullptr || encoding != kCFStringEncodingUTF8)
        return nullptr;
    if (g_utf8_validate(text, -1, nullptr) == FALSE)
        return nullptr;
    return new __CFString(text, std::strlen(text));
}

CFIndex CFStringGetLength(CFStringRef string) {
    return string->utf16Length();
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
    const bool isServed = encoding == kCFStringEncodingUTF8 && bufferSize > 0 &&
                          static_cast<std::size_t>(bufferSize) > string->sizeBytes();
    if (!isServed) {
        if (bufferSize > 0)
            buffer[0] = '\0';
        return 0;
    }
    std::memcpy(buffer, string->utf8(), string->sizeBytes() + 1);
    return 1;
}
