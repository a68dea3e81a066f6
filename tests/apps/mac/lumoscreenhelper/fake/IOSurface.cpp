#include <string>

#include "apps/mac/lumoscreenhelper/fake/Services.h"

using fake::nameOf;
using fake::Services;

namespace {

void recordCall(const char* call, IOSurfaceRef surface) {
    Services::get().record([&] { return std::string(call) + "(" + nameOf(surface) + ")"; });
    if (surface->refs < 1)
        Services::get().addError(std::string(call) + "(" + surface->name + "): gone");
}

void recordLock(const char* call, IOSurfaceRef surface, IOSurfaceLockOptions options,
                const std::uint32_t* seed) {
    Services::get().record([&] {
        return std::string(call) + "(" + nameOf(surface) + ", " +
               (options == kIOSurfaceLockReadOnly ? "read-only" : "writable") + ", " +
               (seed == nullptr ? "no seed" : "seed") + ")";
    });
    if (surface->refs < 1)
        Services::get().addError(std::string(call) + "(" + surface->name + "): gone");
}

} // namespace

IOReturn IOSurfaceLock(IOSurfaceRef surface, IOSurfaceLockOptions options, std::uint32_t* seed) {
    recordLock("IOSurfaceLock", surface, options, seed);
    ++surface->readLocks;
    return 0;
}

IOReturn IOSurfaceUnlock(IOSurfaceRef surface, IOSurfaceLockOptions options, std::uint32_t* seed) {
    recordLock("IOSurfaceUnlock", surface, options, seed);
    if (--surface->readLocks < 0)
        Services::get().addError("IOSurfaceUnlock(" + surface->name + "): not locked");
    return 0;
}

void* IOSurfaceGetBaseAddress(IOSurfaceRef surface) {
    recordCall("IOSurfaceGetBaseAddress", surface);
    return surface->base;
}

std::size_t IOSurfaceGetBytesPerRow(IOSurfaceRef surface) {
    recordCall("IOSurfaceGetBytesPerRow", surface);
    return surface->stride;
}

void IOSurfaceIncrementUseCount(IOSurfaceRef surface) {
    recordCall("IOSurfaceIncrementUseCount", surface);
    ++surface->useCount;
}

void IOSurfaceDecrementUseCount(IOSurfaceRef surface) {
    recordCall("IOSurfaceDecrementUseCount", surface);
    if (--surface->useCount < 0)
        Services::get().addError("IOSurfaceDecrementUseCount(" + surface->name + "): not in use");
}
