#include "platform/linux/core/Object.h"

#include <CoreFoundation/CFNumber.h>

#include <cmath>
#include <limits>

struct __CFBoolean final : platform::Object {
    explicit constexpr __CFBoolean(bool value) noexcept
        : Object(platform::ObjectType::Boolean, Lifetime::Immortal), value(value) {}
    const bool value;
};

/// A double holds each value of every type that is served.
struct __CFNumber final : platform::Object {
    explicit __CFNumber(double value) noexcept
        : Object(platform::ObjectType::Number), value(value) {}
    const double value;
};

namespace {

[[clang::no_destroy]] constinit const __CFBoolean trueObject(true);
[[clang::no_destroy]] constinit const __CFBoolean falseObject(false);

/// Saturates; 0 for what is no number.
int toInt(double value) {
    if (std::isnan(value))
        return 0;
    if (value <= std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    if (value >= std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    return static_cast<int>(value);
}

/// Saturates: a double beyond the range of float is no float.
float toFloat(double value) {
    constexpr double largest = std::numeric_limits<float>::max();
    if (std::isfinite(value) && std::abs(value) > largest)
        return std::copysign(std::numeric_limits<float>::infinity(),
                             static_cast<float>(value > 0 ? 1 : -1));
    return static_cast<float>(value);
}

template <class T>
Boolean store(T converted, double value, void* to) {
    *static_cast<T*>(to) = converted;
    const bool isSame = static_cast<double>(converted) == value;
    return isSame || (std::isnan(value) && std::isnan(static_cast<double>(converted)));
}

} // namespace

const CFBooleanRef kCFBooleanTrue = &trueObject;
const CFBooleanRef kCFBooleanFalse = &falseObject;

CFTypeID CFBooleanGetTypeID() {
    return static_cast<CFTypeID>(platform::ObjectType::Boolean);
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    return boolean->value;
}

CFTypeID CFNumberGetTypeID() {
    return static_cast<CFTypeID>(platform::ObjectType::Number);
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
    switch (type) {
    case kCFNumberIntType:
        return new __CFNumber(*static_cast<const int*>(value));
    case kCFNumberFloatType:
        return new __CFNumber(static_cast<double>(*static_cast<const float*>(value)));
    case kCFNumberDoubleType:
        return new __CFNumber(*static_cast<const double*>(value));
    default:
        return nullptr;
    }
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    switch (type) {
    case kCFNumberIntType:
        return store(toInt(number->value), number->value, value);
    case kCFNumberFloatType:
        return store(toFloat(number->value), number->value, value);
    case kCFNumberDoubleType:
        return store(number->value, number->value, value);
    default:
        return 0;
    }
}
