#pragma once

#include <CoreFoundation/CFBase.h>

typedef const struct __CFData* CFDataRef;

CF_EXPORT CFTypeID CFDataGetTypeID(void);

/// Units: bytes.
CF_EXPORT CFIndex CFDataGetLength(CFDataRef data);

/// Ownership: borrowed, as long as the data lives.
CF_EXPORT const uint8_t* CFDataGetBytePtr(CFDataRef data);
