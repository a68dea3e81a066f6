// Counts what the whole program asks malloc for while frames are handled and grabbed.
#include <atomic>
#include <cstddef>

#include <gtest/gtest.h>

#include "apps/mac/lumoscreenhelper/fake/Services.h"
#include "lumoscreenhelper/DisplayStreamImpl.h"
#include "svr/mac/DisplayStreamClient.h"

namespace {

std::atomic<long> allocations{0};

} // namespace

extern "C" void* __libc_malloc(std::size_t size);

extern "C" __attribute__((visibility("default"))) void* malloc(std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

namespace {

class CountingClient : public svr::DisplayStreamClient {
public:
    int calls = 0;

    void pixelsGrabbed(const void*, plat::Rect, int, int) override { ++calls; }
    void rectsChanged(int, const CGRect*) override { ++calls; }
    void rectsMoved(CGFloat, CGFloat, int, const CGRect*) override { ++calls; }
};

struct EngineAllocation : testing::Test {
    EngineAllocation() {
        services.reset();
        engine.start(nullptr);
        services.recording = false;
    }

    fake::Services& services = fake::Services::get();
    CountingClient client;
    svr::DisplayStreamImpl engine{&client, 1};
};

TEST_F(EngineAllocation, IsSeenByTheCounter) {
    const long before = allocations;
    services.makeSurface();
    EXPECT_GT(allocations, before);
}

TEST_F(EngineAllocation, FramesAndGrabsNeedNone) {
    __IOSurface* const surfaces[] = {services.makeSurface(), services.makeSurface()};
    auto* const update = services.makeUpdate({CGRectMake(0, 0, 10, 10), CGRectMake(20, 20, 10, 10)},
                                             {CGRectMake(0, 0, 10, 10)}, 5, 5);
    const long before = allocations;
    for (int i = 0; i < 100; ++i) {
        services.deliver(surfaces[i % 2], update);
        engine.grab();
    }
    EXPECT_EQ(allocations, before);
    EXPECT_EQ(client.calls, 300);
}

TEST_F(EngineAllocation, MergedFramesNeedNone) {
    auto* const surface = services.makeSurface();
    auto* const update = services.makeUpdate({CGRectMake(0, 0, 10, 10)});
    auto* const merged = services.makeUpdate({CGRectMake(0, 0, 10, 10)});
    services.merge = [merged](CGDisplayStreamUpdateRef, CGDisplayStreamUpdateRef) {
        return CFRetain(merged), CGDisplayStreamUpdateRef(merged);
    };
    const long before = allocations;
    for (int i = 0; i < 10; ++i)
        services.deliver(surface, update);
    engine.grab();
    EXPECT_EQ(allocations, before);
}

} // namespace
