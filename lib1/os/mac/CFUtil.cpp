#include "os/mac/CFUtil.h"

#include <cstddef>
#include <limits>
#include <memory>

namespace os {

static_assert(sizeof(CFDictionaryPtr) == sizeof(CFDictionaryRef), "the reference and nothing else");

namespace {

// The most bytes that a text of so many UTF-16 units takes in UTF-8, with its NUL. A size that no
// allocator has stands for what cannot be computed.
std::size_t utf8Size(CFIndex units) {
    constexpr auto maxSize = std::numeric_limits<std::size_t>::max();
    const auto count = static_cast<std::size_t>(units);
    return count > (maxSize - 1) / 4 ? maxSize : 4 * count + 1;
}

} // namespace

char* CFDictionaryPtr::getStr(const void* key) const {
    const void* const value = CFDictionaryGetValue(get(), key);
    if (value == nullptr || CFGetTypeID(value) != CFStringGetTypeID())
        return nullptr;
    const auto string = static_cast<CFStringRef>(value);
    const std::size_t size = utf8Size(CFStringGetLength(string));
    auto text = std::make_unique_for_overwrite<char[]>(size);
    text[0] = '\0';
    // The size always suffices, so the answer says nothing.
    CFStringGetCString(string, text.get(), static_cast<CFIndex>(size), kCFStringEncodingUTF8);
    return text.release();
}

} // namespace os
