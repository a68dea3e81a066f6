#pragma once

#include <CoreFoundation/CFBase.h>

#include <stddef.h>

typedef struct __IOSurface* IOSurfaceRef;
typedef int32_t IOReturn;
typedef uint32_t IOSurfaceLockOptions;

enum { kIOSurfaceLockReadOnly = 0x00000001 };

/// Between lock and unlock the pixels may be read. Errors: 0 is success.
CF_EXPORT IOReturn IOSurfaceLock(IOSurfaceRef surface, IOSurfaceLockOptions options,
                                 uint32_t* seed);
CF_EXPORT IOReturn IOSurfaceUnlock(IOSurfaceRef surface, IOSurfaceLockOptions options,
                                   uint32_t* seed);

/// The first byte of the top row. Ownership: borrowed, as long as the surface lives.
CF_EXPORT void* IOSurfaceGetBaseAddress(IOSurfaceRef surface);
CF_EXPORT size_t IOSurfaceGetBytesPerRow(IOSurfaceRef surface);
CF_EXPORT size_t IOSurfaceGetWidth(IOSurfaceRef surface);
CF_EXPORT size_t IOSurfaceGetHeight(IOSurfaceRef surface);

/// A surface whose use count is not zero is never written by the service that fills it.
/// Threads: any.
CF_EXPORT void IOSurfaceIncrementUseCount(IOSurfaceRef surface);
CF_EXPORT void IOSurfaceDecrementUseCount(IOSurfaceRef surface);
CF_EXPORT int32_t IOSurfaceGetUseCount(IOSurfaceRef surface);
