#pragma once

#include <CoreFoundation/CFBase.h>

typedef const struct __CFArray* CFArrayRef;

CF_EXPORT CFTypeID CFArrayGetTypeID(void);
