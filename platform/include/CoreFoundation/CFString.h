#pragma once

#include <CoreFoundation/CFBase.h>

typedef const struct __CFString* CFStringRef;
typedef uint32_t CFStringEncoding;

enum { kCFStringEncodingUTF8 = 0x08000100 };

CF_EXPORT CFTypeID CFStringGetTypeID(void);

/// A new string with a copy of the text, or null when the text is null or not valid UTF-8.
/// Ownership: the caller releases it.
CF_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text,
                                                CFStringEncoding encoding);

/// Units: UTF-16 code units.
CF_EXPORT CFIndex CFStringGetLength(CFStringRef string);

/// Copies the text and a NUL into the buffer; false (and an empty text, when there is room for its
/// NUL) if the buffer is too small.
CF_EXPORT Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                                     CFStringEncoding encoding);
