#pragma once

#include <utility>

#include <CoreFoundation/CoreFoundation.h>

namespace os {

/// Owns one reference to an object of Core Foundation's kind, or null.
template <typename Ref>
class CFPtr {
public:
    CFPtr() noexcept = default;
    explicit CFPtr(Ref owned) noexcept : object(owned) {}
    CFPtr(const CFPtr&) = delete;
    CFPtr& operator=(const CFPtr&) = delete;
    ~CFPtr() { reset(); }

    /// Releases what is held and owns the given object from now on. Null, or the very object that
    /// is held, changes nothing: no reference is given back.
    void assign(Ref owned) noexcept {
        if (owned == nullptr || owned == object)
            return;
        if (object != nullptr)
            CFRelease(object);
        object = owned;
    }

    void reset() noexcept {
        if (Ref old = std::exchange(object, nullptr))
            CFRelease(old);
    }

    Ref get() const noexcept { return object; }
    explicit operator bool() const noexcept { return object != nullptr; }

private:
    Ref object = nullptr;
};

/// Owns one dictionary, or null.
class CFDictionaryPtr : public CFPtr<CFDictionaryRef> {
public:
    using CFPtr::CFPtr;

    /// The text that a key has as its value, in UTF-8; null if the key is absent or its value is no
    /// string. The dictionary must not be null.
    /// Ownership: the caller frees it with delete[].
    char* getStr(const void* key) const;
};

using CFNumberPtr = CFPtr<CFNumberRef>;

} // namespace os
