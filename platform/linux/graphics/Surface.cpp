#include "platform/linux/graphics/Surface.h"

#include "plat/LogWriter.h"
#include "platform/linux/core/Guard.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

static plat::LogWriter vlog("Surface");

namespace {

constexpr IOReturn badArgument = static_cast<IOReturn>(0xe00002c2U);

/// The largest side that an X server can name; its square still fits in the size of a surface.
constexpr int maxSide = 32767;

} // namespace

platform::Ref<__IOSurface>
__IOSurface::create(int width, int height, platform::SurfaceMemory memory,
                    std::shared_ptr<platform::SurfaceIdleListener> listener) {
    if (width < 1 || height < 1 || width > maxSide || height > maxSide) {
        vlog.error("No surface can have %d x %d pixels", width, height);
        return {};
    }
    auto surface = platform::Ref<__IOSurface>::adopt(
        new __IOSurface(width, height, memory, std::move(listener)));
    if (!surface->allocate())
        return {};
    return surface;
}

__IOSurface::__IOSurface(int width, int height, platform::SurfaceMemory memory,
                         std::shared_ptr<platform::SurfaceIdleListener> listener) noexcept
    : Object(platform::ObjectType::Surface), widthPixels(width), heightPixels(height), kind(memory),
      listener(std::move(listener)) {}

__IOSurface::~__IOSurface() {
    // A log destination that throws ends here, or the host's process would.
    platform::runGuarded("Surface", [this] { removeSegment(); });
    if (base && kind == platform::SurfaceMemory::SharedSegment)
        shmdt(base);
    else if (base)
        munmap(base, sizeBytes());
    if (file != -1)
        close(file);
}

bool __IOSurface::allocate() {
    switch (kind) {
    case platform::SurfaceMemory::SharedFile:
        return allocateFile();
    case platform::SurfaceMemory::SharedSegment:
        return allocateSegment();
    case platform::SurfaceMemory::Private:
        return allocatePrivate();
    }
    return false;
}

bool __IOSurface::allocateFile() {
    file = memfd_create("lumo-frame", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file == -1) {
        vlog.error("memfd_create failed (%d)", errno);
        return false;
    }
    // Sealed, so that whoever else holds the file cannot shrink it under our feet (SIGBUS).
    if (fchmod(file, S_IRUSR | S_IWUSR) != 0 ||
        ftruncate(file, static_cast<off_t>(sizeBytes())) != 0 ||
        fcntl(file, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0) {
        vlog.error("An unnamed file of %zu bytes could not be made (%d)", sizeBytes(), errno);
        return false;
    }
    void* mapped = mmap(nullptr, sizeBytes(), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (mapped == MAP_FAILED) {
        vlog.error("An unnamed file of %zu bytes could not be mapped (%d)", sizeBytes(), errno);
        return false;
    }
    base = static_cast<std::uint8_t*>(mapped);
    return true;
}

bool __IOSurface::allocateSegment() {
    segment = shmget(IPC_PRIVATE, sizeBytes(), IPC_CREAT | S_IRUSR | S_IWUSR);
    if (segment == -1) {
        vlog.error("A shared segment of %zu bytes could not be made (%d)", sizeBytes(), errno);
        return false;
    }
    void* attached = shmat(segment, nullptr, 0);
    // shmat reports failure as a pointer of all ones.
    if (reinterpret_cast<std::intptr_t>(attached) == -1) {
        vlog.error("A shared segment of %zu bytes could not be attached (%d)", sizeBytes(), errno);
        return false;
    }
    base = static_cast<std::uint8_t*>(attached);
    return true;
}

bool __IOSurface::allocatePrivate() {
    void* mapped =
        mmap(nullptr, sizeBytes(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        vlog.error("%zu bytes of memory could not be had (%d)", sizeBytes(), errno);
        return false;
    }
    base = static_cast<std::uint8_t*>(mapped);
    return true;
}

void __IOSurface::removeSegment() {
    if (segment == -1 || isSegmentRemoved.exchange(true))
        return;
    if (shmctl(segment, IPC_RMID, nullptr) != 0)
        vlog.error("A shared segment could not be marked for removal (%d)", errno);
}

void __IOSurface::incrementUseCount() noexcept {
    users.fetch_add(1, std::memory_order_acq_rel);
}

void __IOSurface::decrementUseCount() noexcept {
    std::int32_t count = users.load(std::memory_order_relaxed);
    do {
        if (count == 0)
            return;
    } while (!users.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel));
    if (count == 1 && listener)
        listener->onSurfaceIdle();
}

IOReturn IOSurfaceLock(IOSurfaceRef surface, IOSurfaceLockOptions, uint32_t*) {
    // Pixels in plain memory need no mapping in; what keeps them from changing is the use count.
    return surface ? 0 : badArgument;
}

IOReturn IOSurfaceUnlock(IOSurfaceRef surface, IOSurfaceLockOptions, uint32_t*) {
    return surface ? 0 : badArgument;
}

void* IOSurfaceGetBaseAddress(IOSurfaceRef surface) {
    return surface->pixels();
}

size_t IOSurfaceGetBytesPerRow(IOSurfaceRef surface) {
    return surface->strideBytes();
}

size_t IOSurfaceGetWidth(IOSurfaceRef surface) {
    return static_cast<size_t>(surface->width());
}

size_t IOSurfaceGetHeight(IOSurfaceRef surface) {
    return static_cast<size_t>(surface->height());
}

void IOSurfaceIncrementUseCount(IOSurfaceRef surface) {
    surface->incrementUseCount();
}

void IOSurfaceDecrementUseCount(IOSurfaceRef surface) {
    surface->decrementUseCount();
}

int32_t IOSurfaceGetUseCount(IOSurfaceRef surface) {
    return surface->useCount();
}
