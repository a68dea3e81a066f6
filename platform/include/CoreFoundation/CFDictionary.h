#pragma once

#include <CoreFoundation/CFBase.h>

typedef const struct __CFDictionary* CFDictionaryRef;

/// How a dictionary treats its keys and values. Here only null is accepted in their place: keys
/// compare as pointers, and neither keys nor values are retained.
typedef struct CFDictionaryKeyCallBacks CFDictionaryKeyCallBacks;
typedef struct CFDictionaryValueCallBacks CFDictionaryValueCallBacks;

CF_EXPORT CFTypeID CFDictionaryGetTypeID(void);

/// A new dictionary of `count` entries; of equal keys the first one counts.
/// Ownership: the caller releases it, and keeps keys and values alive while it lives.
CF_EXPORT CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys,
                                             const void** values, CFIndex count,
                                             const CFDictionaryKeyCallBacks* keyCallBacks,
                                             const CFDictionaryValueCallBacks* valueCallBacks);

CF_EXPORT CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary);

/// The value of the key, or null if there is none. Ownership: borrowed from the dictionary.
CF_EXPORT const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);
