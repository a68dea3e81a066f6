#pragma once

#include "platform/linux/core/Object.h"
#include "platform/linux/core/Ref.h"

#include <IOSurface/IOSurfaceRef.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace platform {

/// Where a surface's pixels lie, and so how an X server can be let at them.
enum class SurfaceMemory : std::uint8_t {
    SharedFile,    ///< an unnamed file (memfd) that can be handed over a socket
    SharedSegment, ///< a SysV segment of mode 0600
    Private        ///< this process's own memory
};

/// Is told that a surface's use count fell to zero, so that a stream which waits for a free surface
/// can go on. A host that hands a surface over to itself does so at every frame: be quick.
class SurfaceIdleListener {
public:
    virtual ~SurfaceIdleListener() = default;

    /// Threads: whichever lowered the count, inside IOSurfaceDecrementUseCount; several at once are
    /// possible. The count may have risen again already.
    virtual void onSurfaceIdle() noexcept = 0;
};

} // namespace platform

/// A frame's pixels. Zero bytes at first, and no memory is taken until they are touched.
/// Shape: rows of 4-byte BGRA pixels, top row first, width * 4 bytes apart.
/// Threads: counts on any; the pixels belong to whoever holds a use count, else to the stream.
struct __IOSurface final : platform::Object {
    /// A new surface, or null (and a log line) when the system gives no such memory. The surface
    /// keeps the listener alive for as long as it lives itself, so a stream hands in something that
    /// does not own the stream. Width and height are at least 1.
    static platform::Ref<__IOSurface>
    create(int width, int height, platform::SurfaceMemory memory,
           std::shared_ptr<platform::SurfaceIdleListener> listener = nullptr);
    ~__IOSurface() override;

    int width() const noexcept { return widthPixels; }
    int height() const noexcept { return heightPixels; }
    std::size_t strideBytes() const noexcept { return std::size_t(widthPixels) * 4; }
    std::size_t sizeBytes() const noexcept { return strideBytes() * std::size_t(heightPixels); }
    std::uint8_t* pixels() const noexcept { return base; }
    std::uint32_t* row(int y) const noexcept {
        return reinterpret_cast<std::uint32_t*>(base + strideBytes() * std::size_t(y));
    }

    platform::SurfaceMemory memory() const noexcept { return kind; }

    /// The unnamed file, close-on-exec and sealed in its size; -1 for other memory. Ownership: the
    /// surface's; pass a duplicate (F_DUPFD_CLOEXEC) to who closes what it gets.
    int fd() const noexcept { return file; }

    /// The SysV segment's identifier; -1 for other memory.
    int segmentId() const noexcept { return segment; }

    /// Marks the SysV segment for removal when its last user lets go: to be called as soon as the
    /// server has attached it, or will not. Nothing but the first call does anything, and the
    /// destructor calls it too.
    void removeSegment();

    void incrementUseCount() noexcept;
    /// Below zero it does not go.
    void decrementUseCount() noexcept;
    std::int32_t useCount() const noexcept { return users.load(std::memory_order_acquire); }
    /// Nobody reads it: the stream may write.
    bool isIdle() const noexcept { return useCount() == 0; }

private:
    __IOSurface(int width, int height, platform::SurfaceMemory memory,
                std::shared_ptr<platform::SurfaceIdleListener> listener) noexcept;
    bool allocate();
    bool allocateFile();
    bool allocateSegment();
    bool allocatePrivate();

    const int widthPixels;
    const int heightPixels;
    const platform::SurfaceMemory kind;
    const std::shared_ptr<platform::SurfaceIdleListener> listener;
    std::uint8_t* base = nullptr;
    int file = -1;
    int segment = -1;
    std::atomic<bool> isSegmentRemoved = false;
    std::atomic<std::int32_t> users = 0;
};

namespace platform {
using Surface = __IOSurface;
}
