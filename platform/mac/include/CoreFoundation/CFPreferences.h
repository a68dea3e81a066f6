#pragma once

#include <CoreFoundation/CFString.h>

CF_EXPORT const CFStringRef kCFPreferencesCurrentApplication;

/// What the user, or else the system, has stored under a key for an application; null for nothing.
/// Ownership: the caller releases it.
CF_EXPORT CFTypeRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application);
