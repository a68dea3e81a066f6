// What the engine adds to a frame: the services are scripted and record nothing. "ServicesAlone"
// makes the same calls without an engine, so the difference is the engine's own.
#include <vector>

#include <benchmark/benchmark.h>

#include "apps/mac/lumoscreenhelper/fake/Services.h"
#include "lumoscreenhelper/DisplayStreamImpl.h"
#include "svr/mac/DisplayStreamClient.h"

namespace {

using fake::Services;

class IdleClient : public svr::DisplayStreamClient {
public:
    void pixelsGrabbed(const void* pixels, plat::Rect, int, int) override {
        benchmark::DoNotOptimize(pixels);
    }
    void rectsChanged(int, const CGRect* rects) override { benchmark::DoNotOptimize(rects); }
    void rectsMoved(CGFloat, CGFloat, int, const CGRect* rects) override {
        benchmark::DoNotOptimize(rects);
    }
};

struct Stage {
    explicit Stage(std::int64_t rectCount) {
        services.reset();
        first = services.makeSurface();
        second = services.makeSurface();
        update = services.makeUpdate({});
        for (std::int64_t i = 0; i < rectCount; ++i)
            update->dirty.push_back(CGRectMake(CGFloat(i * 20), CGFloat(i * 10), 10, 10));
        update->moved = update->dirty;
        engine.start(nullptr);
        services.recording = false;
    }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage() { engine.stop(); }

    Services& services = Services::get();
    __IOSurface* first;
    __IOSurface* second;
    CGDisplayStreamUpdate* update;
    IdleClient client;
    svr::DisplayStreamImpl engine{&client, 1};
};

void frameAndGrab(benchmark::State& state) {
    Stage stage(state.range(0));
    for (auto _ : state) {
        stage.services.deliver(stage.first, stage.update);
        stage.engine.grab();
        std::swap(stage.first, stage.second);
    }
}
BENCHMARK(frameAndGrab)->Name("Engine/FrameAndGrab/rects")->Arg(1)->Arg(8)->Arg(64);

// Frames that nobody grabs: each is merged into those before.
void mergedFrame(benchmark::State& state) {
    Stage stage(state.range(0));
    CGDisplayStreamUpdate* const merged = stage.services.makeUpdate({});
    merged->dirty = stage.update->dirty;
    stage.services.merge = [merged](CGDisplayStreamUpdateRef, CGDisplayStreamUpdateRef) {
        ++merged->refs;
        return CGDisplayStreamUpdateRef(merged);
    };
    for (auto _ : state) {
        stage.services.deliver(stage.first, stage.update);
        std::swap(stage.first, stage.second);
    }
}
BENCHMARK(mergedFrame)->Name("Engine/MergedFrame/rects")->Arg(1)->Arg(64);

void servicesAlone(benchmark::State& state) {
    Stage stage(state.range(0));
    dispatch_semaphore_t const sem = dispatch_semaphore_create(1);
    CFRetain(stage.second);
    IOSurfaceIncrementUseCount(stage.second);
    for (auto _ : state) {
        dispatch_semaphore_wait(sem, DISPATCH_TIME_FOREVER);
        IOSurfaceDecrementUseCount(stage.second);
        CFRelease(stage.second);
        CFRetain(stage.first);
        IOSurfaceIncrementUseCount(stage.first);
        benchmark::DoNotOptimize(CFRunLoopGetCurrent());
        benchmark::DoNotOptimize(CFRunLoopGetMain());
        CFRetain(stage.update);
        std::size_t count = 0;
        CGDisplayStreamUpdateGetRects(stage.update, kCGDisplayStreamUpdateDirtyRects, &count);
        CGDisplayStreamUpdateGetRects(stage.update, kCGDisplayStreamUpdateMovedRects, &count);
        CGFloat dx = 0;
        CGFloat dy = 0;
        CGDisplayStreamUpdateGetMovedRectsDelta(stage.update, &dx, &dy);
        dispatch_semaphore_signal(sem);

        dispatch_semaphore_wait(sem, DISPATCH_TIME_FOREVER);
        const CGRect* const rects =
            CGDisplayStreamUpdateGetRects(stage.update, kCGDisplayStreamUpdateDirtyRects, &count);
        CGRect box = rects[0];
        for (std::size_t i = 0; i < count; ++i)
            box = CGRectUnion(box, rects[i]);
        benchmark::DoNotOptimize(box);
        IOSurfaceLock(stage.first, kIOSurfaceLockReadOnly, nullptr);
        benchmark::DoNotOptimize(IOSurfaceGetBaseAddress(stage.first));
        benchmark::DoNotOptimize(IOSurfaceGetBytesPerRow(stage.first));
        IOSurfaceUnlock(stage.first, kIOSurfaceLockReadOnly, nullptr);
        CFRelease(stage.update);
        dispatch_semaphore_signal(sem);
        std::swap(stage.first, stage.second);
    }
}
BENCHMARK(servicesAlone)->Name("ServicesAlone/FrameAndGrab/rects")->Arg(1)->Arg(8)->Arg(64);

} // namespace

BENCHMARK_MAIN();
