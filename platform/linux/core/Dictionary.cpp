#include "platform/linux/core/Object.h"

#include <CoreFoundation/CFDictionary.h>

#include <algorithm>
#include <utility>
#include <vector>

/// Looked through from the front: its dictionaries have a handful of entries.
struct __CFDictionary final : platform::Object {
    using Entry = std::pair<const void*, const void*>;

    __CFDictionary() noexcept : Object(platform::ObjectType::Dictionary) {}

    const Entry* find(const void* key) const noexcept {
        const auto found = std::find_if(entries.begin(), entries.end(),
                                        [key](const Entry& entry) { return entry.first == key; });
        return found == entries.end() ? nullptr : &*found;
    }

    std::vector<Entry> entries;
};

CFTypeID CFDictionaryGetTypeID() {
    return static_cast<CFTypeID>(platform::ObjectType::Dictionary);
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
    if (count < 0 || keyCallBacks != nullptr || valueCallBacks != nullptr)
        return nullptr;
    auto* dictionary = new __CFDictionary;
    dictionary->entries.reserve(static_cast<std::size_t>(count));
    for (CFIndex i = 0; i < count; ++i) {
        if (dictionary->find(keys[i]) == nullptr)
            dictionary->entries.emplace_back(keys[i], values[i]);
    }
    return dictionary;
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
    return static_cast<CFIndex>(dictionary->entries.size());
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    const auto* entry = dictionary->find(key);
    return entry != nullptr ? entry->second : nullptr;
}
