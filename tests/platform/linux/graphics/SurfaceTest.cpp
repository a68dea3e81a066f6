#include "platform/linux/graphics/Surface.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace platform {
namespace {

class CountingListener : public SurfaceIdleListener {
public:
    void onSurfaceIdle() noexcept override { ++calls; }
    std::atomic<int> calls = 0;
};

struct Memory {
    const char* name;
    SurfaceMemory kind;
};

class SurfaceIn : public testing::TestWithParam<Memory> {
protected:
    static Ref<Surface> make(int width, int height) {
        return Surface::create(width, height, GetParam().kind);
    }
};

TEST_P(SurfaceIn, HasRowsOfFourBytesAPixel) {
    const auto surface = make(641, 3);
    ASSERT_TRUE(surface);
    EXPECT_EQ(IOSurfaceGetWidth(surface.get()), 641U);
    EXPECT_EQ(IOSurfaceGetHeight(surface.get()), 3U);
    EXPECT_EQ(IOSurfaceGetBytesPerRow(surface.get()), 2564U);
    EXPECT_EQ(IOSurfaceGetBaseAddress(surface.get()), surface->pixels());
    EXPECT_EQ(surface->sizeBytes(), 2564U * 3);
}

TEST_P(SurfaceIn, IsZeroAtFirstAndWritableToTheLastByte) {
    const auto surface = make(33, 17);
    ASSERT_TRUE(surface);
    std::uint8_t* pixels = surface->pixels();
    EXPECT_TRUE(std::all_of(pixels, pixels + surface->sizeBytes(),
                            [](std::uint8_t byte) { return byte == 0; }));
    std::fill_n(pixels, surface->sizeBytes(), std::uint8_t{0xab});
}

TEST_P(SurfaceIn, TakesNoMemoryBeforeItIsTouched) {
    const auto surface = make(4096, 4096);
    ASSERT_TRUE(surface);
    std::vector<unsigned char> pages(surface->sizeBytes() / 4096);
    ASSERT_EQ(mincore(surface->pixels(), surface->sizeBytes(), pages.data()), 0);
    const auto resident =
        std::count_if(pages.begin(), pages.end(), [](unsigned char page) { return page & 1; });
    EXPECT_LT(resident, 16);
}

TEST_P(SurfaceIn, LocksAndUnlocks) {
    const auto surface = make(1, 1);
    ASSERT_TRUE(surface);
    EXPECT_EQ(IOSurfaceLock(surface.get(), kIOSurfaceLockReadOnly, nullptr), 0);
    EXPECT_EQ(IOSurfaceUnlock(surface.get(), kIOSurfaceLockReadOnly, nullptr), 0);
}

class RefusedSize : public testing::TestWithParam<std::pair<int, int>> {};

TEST_P(RefusedSize, GivesNull) {
    EXPECT_FALSE(Surface::create(GetParam().first, GetParam().second, SurfaceMemory::SharedFile));
}

INSTANTIATE_TEST_SUITE_P(Sizes, RefusedSize,
                         testing::Values(std::pair(0, 1), std::pair(1, 0), std::pair(-1, 5),
                                         std::pair(32768, 1), std::pair(1, 32768),
                                         std::pair(1 << 30, 1 << 30)));

INSTANTIATE_TEST_SUITE_P(Kinds, SurfaceIn,
                         testing::Values(Memory{"SharedFile", SurfaceMemory::SharedFile},
                                         Memory{"SharedSegment", SurfaceMemory::SharedSegment},
                                         Memory{"Private", SurfaceMemory::Private}),
                         [](const auto& row) { return row.param.name; });

TEST(SurfaceInAFile, CanBeMappedThroughItsDescriptor) {
    const auto surface = Surface::create(10, 10, SurfaceMemory::SharedFile);
    ASSERT_TRUE(surface);
    EXPECT_EQ(surface->segmentId(), -1);
    const int fd = surface->fd();
    ASSERT_NE(fd, -1);
    EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0);
    surface->pixels()[399] = 42;
    void* mapped = mmap(nullptr, 400, PROT_READ, MAP_SHARED, fd, 0);
    ASSERT_NE(mapped, MAP_FAILED);
    EXPECT_EQ(static_cast<std::uint8_t*>(mapped)[399], 42);
    munmap(mapped, 400);
}

TEST(SurfaceInAFile, IsPrivateAndKeepsItsSize) {
    const auto surface = Surface::create(10, 10, SurfaceMemory::SharedFile);
    ASSERT_TRUE(surface);
    struct stat status{};
    ASSERT_EQ(fstat(surface->fd(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_EQ(status.st_size, 400);
    EXPECT_EQ(ftruncate(surface->fd(), 100), -1);
    EXPECT_EQ(errno, EPERM);
    EXPECT_EQ(ftruncate(surface->fd(), 1000), -1);
    EXPECT_EQ(fcntl(surface->fd(), F_ADD_SEALS, F_SEAL_WRITE), -1);
}

TEST(SurfaceInAFile, ClosesIt) {
    auto surface = Surface::create(10, 10, SurfaceMemory::SharedFile);
    ASSERT_TRUE(surface);
    const int fd = surface->fd();
    surface.reset();
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
}

TEST(SurfaceInASegment, IsPrivateAndGoesWhenMarkedForRemoval) {
    auto surface = Surface::create(10, 10, SurfaceMemory::SharedSegment);
    ASSERT_TRUE(surface);
    EXPECT_EQ(surface->fd(), -1);
    const int segment = surface->segmentId();
    shmid_ds state{};
    ASSERT_EQ(shmctl(segment, IPC_STAT, &state), 0);
    EXPECT_EQ(state.shm_perm.mode & 0777, 0600);
    EXPECT_EQ(state.shm_nattch, 1U);
    surface->removeSegment();
    surface->removeSegment();
    ASSERT_EQ(shmctl(segment, IPC_STAT, &state), 0);
    EXPECT_NE(state.shm_perm.mode & SHM_DEST, 0);
    surface->pixels()[399] = 42;
    surface.reset();
    EXPECT_EQ(shmctl(segment, IPC_STAT, &state), -1);
}

TEST(SurfaceInASegment, IsRemovedByItsDestructorToo) {
    auto surface = Surface::create(10, 10, SurfaceMemory::SharedSegment);
    ASSERT_TRUE(surface);
    const int segment = surface->segmentId();
    surface.reset();
    shmid_ds state{};
    EXPECT_EQ(shmctl(segment, IPC_STAT, &state), -1);
}

TEST(SurfaceUse, IsCountedAndNeverBelowZero) {
    const auto surface = Surface::create(1, 1, SurfaceMemory::Private);
    EXPECT_EQ(IOSurfaceGetUseCount(surface.get()), 0);
    IOSurfaceDecrementUseCount(surface.get());
    EXPECT_EQ(IOSurfaceGetUseCount(surface.get()), 0);
    EXPECT_TRUE(surface->isIdle());
    IOSurfaceIncrementUseCount(surface.get());
    IOSurfaceIncrementUseCount(surface.get());
    EXPECT_EQ(IOSurfaceGetUseCount(surface.get()), 2);
    EXPECT_FALSE(surface->isIdle());
    IOSurfaceDecrementUseCount(surface.get());
    IOSurfaceDecrementUseCount(surface.get());
    EXPECT_TRUE(surface->isIdle());
}

TEST(SurfaceUse, TellsTheListenerWhenItFallsToZero) {
    const auto listener = std::make_shared<CountingListener>();
    const auto surface = Surface::create(1, 1, SurfaceMemory::Private, listener);
    surface->decrementUseCount();
    EXPECT_EQ(listener->calls, 0);
    surface->incrementUseCount();
    surface->incrementUseCount();
    surface->decrementUseCount();
    EXPECT_EQ(listener->calls, 0);
    surface->decrementUseCount();
    EXPECT_EQ(listener->calls, 1);
}

TEST(SurfaceUse, KeepsTheListenerAsLongAsTheSurfaceLives) {
    auto listener = std::make_shared<CountingListener>();
    const std::weak_ptr<CountingListener> watched = listener;
    auto surface = Surface::create(1, 1, SurfaceMemory::Private, std::move(listener));
    EXPECT_FALSE(watched.expired());
    surface.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(SurfaceUse, IsCountedOnManyThreads) {
    const auto listener = std::make_shared<CountingListener>();
    const auto surface = Surface::create(1, 1, SurfaceMemory::Private, listener);
    surface->incrementUseCount();
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&surface] {
            for (int n = 0; n < 10000; ++n) {
                surface->incrementUseCount();
                surface->decrementUseCount();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(surface->useCount(), 1);
    EXPECT_EQ(listener->calls, 0);
    surface->decrementUseCount();
    EXPECT_EQ(listener->calls, 1);
}

TEST(Surface, LockRefusesNull) {
    EXPECT_NE(IOSurfaceLock(nullptr, kIOSurfaceLockReadOnly, nullptr), 0);
    EXPECT_NE(IOSurfaceUnlock(nullptr, kIOSurfaceLockReadOnly, nullptr), 0);
}

TEST(Surface, LivesAsLongAsItIsRetained) {
    auto surface = Surface::create(4, 4, SurfaceMemory::SharedFile);
    IOSurfaceRef kept = surface.get();
    CFRetain(kept);
    surface.reset();
    kept->pixels()[63] = 1;
    EXPECT_EQ(CFGetRetainCount(kept), 1);
    CFRelease(kept);
}

} // namespace
} // namespace platform
