#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>

typedef const struct __CFLocale* CFLocaleRef;

/// The user's settings of formats and language. Ownership: the caller releases it.
CF_EXPORT CFLocaleRef CFLocaleCopyCurrent(void);

/// Such as "de_AT". Ownership: the locale's.
CF_EXPORT CFStringRef CFLocaleGetIdentifier(CFLocaleRef locale);

/// The parts of an identifier by the keys below. Ownership: the caller releases it.
CF_EXPORT CFDictionaryRef CFLocaleCreateComponentsFromLocaleIdentifier(CFAllocatorRef allocator,
                                                                       CFStringRef identifier);

/// The usual spelling of a language, such as "de-AT". Ownership: the caller releases it.
CF_EXPORT CFStringRef CFLocaleCreateCanonicalLanguageIdentifierFromString(CFAllocatorRef allocator,
                                                                          CFStringRef identifier);

CF_EXPORT const CFStringRef kCFLocaleLanguageCode;
CF_EXPORT const CFStringRef kCFLocaleCountryCode;
