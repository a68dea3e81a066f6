#pragma once

#include <utility>

namespace platform {

/// Owns one reference to an object; null is empty. T derives from Object and may be const.
/// Threads: a Ref is one thread's; the object may be shared.
template <class T>
class Ref {
public:
    Ref() noexcept = default;
    Ref(const Ref& other) noexcept : object(other.object) { retain(); }
    Ref(Ref&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object, other.object);
        return *this;
    }
    ~Ref() { reset(); }

    /// Takes over a reference that the caller holds (a new object's first one, say).
    static Ref adopt(T* object) noexcept {
        Ref ref;
        ref.object = object;
        return ref;
    }

    /// Adds a reference of its own.
    static Ref share(T* object) noexcept {
        Ref ref = adopt(object);
        ref.retain();
        return ref;
    }

    T* get() const noexcept { return object; }
    T* operator->() const noexcept { return object; }
    T& operator*() const noexcept { return *object; }
    explicit operator bool() const noexcept { return object != nullptr; }
    friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.object == b.object; }

    /// Gives the reference away: the caller releases it.
    [[nodiscard]] T* detach() noexcept { return std::exchange(object, nullptr); }

    void reset() noexcept {
        if (T* old = std::exchange(object, nullptr))
            old->release();
    }

private:
    void retain() const noexcept {
        if (object)
            object->retain();
    }

    T* object = nullptr;
};

} // namespace platform
