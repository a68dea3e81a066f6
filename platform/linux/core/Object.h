#pragma once

#include <CoreFoundation/CFBase.h>

#include <atomic>
#include <cstdint>

namespace platform {

/// Which kind of object stands behind a reference; what CFGetTypeID answers.
enum class ObjectType : std::uint8_t {
    String = 1,
    Boolean,
    Number,
    Data,
    Dictionary,
    RunLoop,
    RunLoopSource,
    Semaphore,
    Queue,
    Image,
    DataProvider,
    Surface,
    StreamUpdate,
    DisplayStream
};

/// Base of every object that the C interfaces hand out: a count of references that starts at one
/// and deletes the object when it falls to zero. An object's address is its reference, so Object
/// must be the first base of whatever derives from it.
/// Threads: counting is safe on any; what else is, the derived class says.
class Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object();

    void retain() const noexcept;
    void release() const noexcept;
    CFIndex retainCount() const noexcept;
    ObjectType type() const noexcept { return objectType; }

protected:
    enum class Lifetime : std::uint8_t { Counted, Immortal };

    /// An immortal object (a constant) ignores retain and release.
    explicit constexpr Object(ObjectType type, Lifetime lifetime = Lifetime::Counted) noexcept
        : references(lifetime == Lifetime::Immortal ? immortal : 1), objectType(type) {}

private:
    static constexpr CFIndex immortal = -1;

    mutable std::atomic<CFIndex> references;
    const ObjectType objectType;
};

/// The object behind a reference of the C interfaces.
inline const Object* objectOf(CFTypeRef reference) noexcept {
    return static_cast<const Object*>(reference);
}

} // namespace platform
