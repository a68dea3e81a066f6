#pragma once

#include <CoreFoundation/CFBase.h>

typedef const struct __CFBoolean* CFBooleanRef;
typedef const struct __CFNumber* CFNumberRef;
typedef CFIndex CFNumberType;

enum { kCFNumberIntType = 9, kCFNumberFloatType = 12, kCFNumberDoubleType = 13 };

CF_EXPORT const CFBooleanRef kCFBooleanTrue;
CF_EXPORT const CFBooleanRef kCFBooleanFalse;

CF_EXPORT CFTypeID CFBooleanGetTypeID(void);
CF_EXPORT Boolean CFBooleanGetValue(CFBooleanRef boolean);

CF_EXPORT CFTypeID CFNumberGetTypeID(void);

/// A new number of the given type, read from `value`, which points to an int, float or double.
/// Ownership: the caller releases it.
CF_EXPORT CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type,
                                     const void* value);

/// Stores the number, converted to the given type; false if the conversion lost something.
CF_EXPORT Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);
