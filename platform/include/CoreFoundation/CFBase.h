#pragma once

#include <stdint.h>

#define CF_EXPORT extern "C" __attribute__((visibility("default")))

typedef unsigned char Boolean;
typedef long CFIndex;
typedef unsigned long CFTypeID;
typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;

/// The allocator that null stands for too; no other exists here.
CF_EXPORT const CFAllocatorRef kCFAllocatorDefault;

/// Adds one reference to any object of this layer and returns it.
/// Threads: any.
CF_EXPORT CFTypeRef CFRetain(CFTypeRef object);

/// Gives one reference back; the last one frees the object. Null is the caller's bug.
/// Threads: any.
CF_EXPORT void CFRelease(CFTypeRef object);

/// The number of references held now, for tests and diagnosis only.
CF_EXPORT CFIndex CFGetRetainCount(CFTypeRef object);

/// Which kind of object this is; compare with CFStringGetTypeID() and its like.
CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef object);
