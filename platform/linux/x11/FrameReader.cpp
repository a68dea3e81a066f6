#include "platform/linux/x11/FrameReader.h"

#include "plat/LogWriter.h"
#include "platform/linux/x11/ComposingReader.h"
#include "platform/linux/x11/ImageReader.h"

#include <xcb/shm.h>

#include <algorithm>
#include <fcntl.h>
#include <sys/socket.h>

static plat::LogWriter vlog("FrameReader");

namespace platform::x11 {
namespace {

constexpr std::uint32_t opaqueBlack = 0xff000000;

// Only then is the server on this machine for sure: a forwarded display looks local too, and its
// segment numbers mean something else.
bool isUnixSocket(int fd) {
    sockaddr address{};
    socklen_t size = sizeof address;
    return getsockname(fd, &address, &size) == 0 && address.sa_family == AF_UNIX;
}

std::vector<SurfaceMemory> sharedMemories(Connection& connection) {
    std::vector<SurfaceMemory> memories;
    const Extensions& has = connection.extensions();
    if (!has.shm) {
        vlog.info("The server has no MIT-SHM");
    } else if (!isUnixSocket(connection.fd())) {
        vlog.info("The server is not reached through a local socket: no shared memory");
    } else {
        if (has.shmFds)
            memories.push_back(SurfaceMemory::SharedFile);
        memories.push_back(SurfaceMemory::SharedSegment);
    }
    return memories;
}

} // namespace

std::unique_ptr<FrameReader> FrameReader::open(Connection& connection, const Setup& setup) {
    const auto memories = sharedMemories(connection);
    const Extensions& has = connection.extensions();
    if (!has.render)
        vlog.info("The server has no RENDER: pixels are converted here");
    if (has.render && has.sharedPixmaps) {
        for (const SurfaceMemory memory : memories) {
            if (auto reader = ComposingReader::open(connection, setup, memory))
                return reader;
        }
    }
    if (!memories.empty())
        vlog.info("The server cannot draw into shared memory: pixels take a second way");
    for (const SurfaceMemory memory : memories) {
        if (auto reader = ImageReader::open(connection, setup, memory))
            return reader;
    }
    vlog.info("No shared memory with the server: pixels come through the socket");
    return ImageReader::open(connection, setup, SurfaceMemory::Private);
}

Frame* FrameReader::idleFrame(const Frame* last) noexcept {
    Frame* idle = nullptr;
    for (Frame& frame : pool) {
        if (!frame.surface->isIdle())
            continue;
        if (&frame != last)
            return &frame;
        idle = &frame;
    }
    return idle;
}

bool FrameReader::makeFrames(const Setup& setup, SurfaceMemory memory) {
    pool.reserve(static_cast<std::size_t>(setup.frames));
    for (int i = 0; i < setup.frames; ++i) {
        Frame frame;
        frame.surface = Surface::create(setup.width, setup.height, memory, setup.listener);
        if (!frame.surface)
            return false;
        frame.missed.add(PixelRect::ofSize(0, 0, setup.width, setup.height));
        pool.push_back(std::move(frame));
    }
    return true;
}

bool attachSegment(Connection& connection, Surface& surface, std::uint32_t segment) {
    xcb_connection_t* xcb = connection.get();
    if (surface.memory() == SurfaceMemory::SharedFile) {
        const int copy = fcntl(surface.fd(), F_DUPFD_CLOEXEC, 0); // xcb closes what it gets
        return copy != -1 && connection.check(xcb_shm_attach_fd_checked(xcb, segment, copy, 0),
                                              "Sharing a file with the server");
    }
    const auto id = static_cast<std::uint32_t>(surface.segmentId());
    const bool isAttached = connection.check(xcb_shm_attach_checked(xcb, segment, id, 0),
                                             "Sharing a memory segment with the server");
    surface.removeSegment();
    return isAttached;
}

void blackenGone(Surface& surface, const Viewport& viewport, std::span<const PixelRect> area) {
    const Region gone = Region(area).minus(Region(viewport.visible));
    for (const PixelRect& rect : gone.rectangles()) {
        for (int y = rect.top; y < rect.bottom; ++y) {
            std::uint32_t* row = surface.row(y);
            std::fill(row + rect.left, row + rect.right, opaqueBlack);
        }
    }
}

} // namespace platform::x11
