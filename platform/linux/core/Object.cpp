#include "platform/linux/core/Object.h"

namespace platform {

Object::~Object() = default;

void Object::retain() const noexcept {
    if (references.load(std::memory_order_relaxed) == immortal)
        return;
    references.fetch_add(1, std::memory_order_relaxed);
}

void Object::release() const noexcept {
    if (references.load(std::memory_order_relaxed) == immortal)
        return;
    // What other threads did with the object happens before its end.
    if (references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

CFIndex Object::retainCount() const noexcept {
    return references.load(std::memory_order_relaxed);
}

} // namespace platform

const CFAllocatorRef kCFAllocatorDefault = nullptr;

CFTypeRef CFRetain(CFTypeRef object) {
    platform::objectOf(object)->retain();
    return object;
}

void CFRelease(CFTypeRef object) {
    platform::objectOf(object)->release();
}

CFIndex CFGetRetainCount(CFTypeRef object) {
    return platform::objectOf(object)->retainCount();
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    return static_cast<CFTypeID>(platform::objectOf(object)->type());
}
