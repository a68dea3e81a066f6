#include "lumoscreenhelper/DisplayStreamImpl.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "apps/mac/lumoscreenhelper/RecordingClient.h"
#include "apps/mac/lumoscreenhelper/fake/Services.h"
#include "lib1/plat/RecordingLogger.h"

namespace {

using fake::Services;
using svr::DisplayStreamImpl;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using Line = RecordingLogger::Line;

RecordingLogger recorder("recorder");

CGRect rect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    return CGRectMake(x, y, width, height);
}

struct DisplayStreamImplTest : testing::Test {
    DisplayStreamImplTest() {
        services.reset();
        recorder.take();
        engine = std::make_unique<DisplayStreamImpl>(&client, 7U);
        services.takeCalls();
    }
    ~DisplayStreamImplTest() override {
        engine.reset();
        EXPECT_THAT(services.errors, IsEmpty());
        for (const fake::Semaphore& semaphore : services.semaphores)
            EXPECT_EQ(semaphore.count, 1) << "taken and given back in equal measure";
        services.reset();
    }

    std::vector<std::string> calls() { return services.takeCalls(); }
    std::vector<Line> logged() { return recorder.take(); }

    // Starts in run-loop mode and forgets the calls.
    void start() {
        ASSERT_TRUE(engine->start(nullptr));
        services.takeCalls();
    }
    // Delivers a complete frame and forgets the calls.
    void frame(IOSurfaceRef surface, CGDisplayStreamUpdateRef update) {
        services.deliver(surface, update);
        services.takeCalls();
    }
    // Lets frames come on another thread's run loop from here on.
    void leaveMainRunLoop() { Services::setCurrentRunLoop(&services.otherLoop); }

    Services& services = Services::get();
    RecordingClient client;
    std::unique_ptr<DisplayStreamImpl> engine; // of its own, so that sanitizers see it go
    LogSetting setting{"*:recorder:110,DynamicFn::0"};
};

using Start = DisplayStreamImplTest;
using Frame = DisplayStreamImplTest;
using Grab = DisplayStreamImplTest;
using Stop = DisplayStreamImplTest;
using Properties = DisplayStreamImplTest;
using Lifetime = DisplayStreamImplTest;
using Callback = DisplayStreamImplTest;
using Threads = DisplayStreamImplTest;

TEST_F(Lifetime, NewEngineHasASemaphoreAndNothingElse) {
    const DisplayStreamImpl other(&client, 7);
    EXPECT_THAT(calls(), ElementsAre("dispatch_semaphore_create(1) = semaphore2"));
    EXPECT_THAT(services.alive(), IsEmpty());
}

TEST_F(Start, MakesAStreamForTheRunLoopOfThisThread) {
    EXPECT_TRUE(engine->start(nullptr));
    EXPECT_THAT(
        calls(),
        ElementsAre("CFDictionaryCreate(default, ShowCursor = false, no callbacks) = dictionary1",
                    "CGDisplayBounds(7)", "CGDisplayCreateImageForRect(7, 0 0 1x1) = image1",
                    "CGImageGetWidth(image1)", "CGImageRelease(image1)",
                    "CGDisplayStreamCreate(7, 1920x1080, 0x42475241, dictionary1) = stream1",
                    "CGDisplayStreamGetRunLoopSource(stream1)", "CFRunLoopGetCurrent()",
                    "CFRunLoopAddSource(main loop, source1, common modes)",
                    "CGDisplayStreamStart(stream1)"));
    EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(Start, AddsTheSourceToTheCurrentRunLoop) {
    leaveMainRunLoop();
    engine->start(nullptr);
    EXPECT_THAT(calls(), Contains("CFRunLoopAddSource(other loop, source1, common modes)"));
    EXPECT_EQ(services.otherLoop.sources.count(services.streams[0]->source), 1U);
}

TEST_F(Start, MakesAStreamForAQueueOfTheGivenName) {
    EXPECT_TRUE(engine->start("frames"));
    EXPECT_THAT(
        calls(),
        ElementsAre("CFDictionaryCreate(default, ShowCursor = false, no callbacks) = dictionary1",
                    "dispatch_queue_create(\"frames\", serial) = queue1", "CGDisplayBounds(7)",
                    "CGDisplayCreateImageForRect(7, 0 0 1x1) = image1", "CGImageGetWidth(image1)",
                    "CGImageRelease(image1)",
                    "CGDisplayStreamCreateWithDispatchQueue(7, 1920x1080, 0x42475241, dictionary1, "
                    "queue1) = stream1",
                    "CGDisplayStreamStart(stream1)"));
}

TEST_F(Start, NewNameReplacesTheQueue) {
    engine->start("first");
    calls();
    engine->start("second");
    const auto second = calls();
    EXPECT_EQ(second[2], "dispatch_release(queue1)");
    EXPECT_EQ(second[3], "dispatch_queue_create(\"second\", serial) = queue2");
    EXPECT_THAT(second, Contains("CGDisplayStreamCreateWithDispatchQueue(7, 1920x1080, 0x42475241, "
                                 "dictionary2, queue2) = stream2"));
}

TEST_F(Start, NullNameKeepsTheQueue) {
    engine->start("frames");
    calls();
    EXPECT_TRUE(engine->start(nullptr));
    EXPECT_THAT(calls(),
                Contains("CGDisplayStreamCreateWithDispatchQueue(7, 1920x1080, 0x42475241, "
                         "dictionary2, queue1) = stream2"));
}

TEST_F(Start, QueueIsGoneAfterAStop) {
    engine->start("frames");
    engine->stop();
    calls();
    engine->start(nullptr);
    EXPECT_THAT(calls(),
                Contains("CGDisplayStreamCreate(7, 1920x1080, 0x42475241, dictionary2) = stream2"));
}

TEST_F(Start, EmptyNameIsAName) {
    engine->start("");
    EXPECT_THAT(calls(), Contains("dispatch_queue_create(\"\", serial) = queue1"));
}

TEST_F(Start, ReplacesTheDictionary) {
    engine->start(nullptr);
    calls();
    engine->start(nullptr);
    const auto second = calls();
    EXPECT_EQ(second[0],
              "CFDictionaryCreate(default, ShowCursor = false, no callbacks) = dictionary2");
    EXPECT_EQ(second[1], "CFRelease(dictionary1)");
}

TEST_F(Start, SecondLeavesTheFirstStreamBehind) {
    engine->start(nullptr);
    engine->start(nullptr);
    const auto both = calls();
    EXPECT_THAT(both, Not(Contains(testing::StartsWith("CGDisplayStreamStop"))));
    engine->stop();
    EXPECT_THAT(calls(), ElementsAre("CGDisplayStreamStop(stream2)", "CFRunLoopGetCurrent()",
                                     "CFRunLoopRemoveSource(main loop, source2, common modes)"));
    EXPECT_EQ(services.mainLoop.sources.count(services.streams[0]->source), 1U); // for good
}

struct SizeRow {
    const char* name;
    CGRect bounds;
    std::size_t imageWidth;
    const char* size;
    friend void PrintTo(const SizeRow& row, std::ostream* out) { *out << row.name; }
};

class StreamSize : public DisplayStreamImplTest, public testing::WithParamInterface<SizeRow> {};

TEST_P(StreamSize, IsTheBoundsInPixels) {
    services.bounds = GetParam().bounds;
    services.imageWidth = GetParam().imageWidth;
    EXPECT_TRUE(engine->start(nullptr));
    EXPECT_THAT(calls(), Contains("CGDisplayStreamCreate(7, " + std::string(GetParam().size) +
                                  ", 0x42475241, dictionary1) = stream1"));
}
constexpr CGFloat huge = std::numeric_limits<CGFloat>::max();
constexpr CGFloat notANumber = std::numeric_limits<CGFloat>::quiet_NaN();
INSTANTIATE_TEST_SUITE_P(
    Bounds, StreamSize,
    testing::Values(SizeRow{"ScaleOne", CGRectMake(0, 0, 1920, 1080), 1, "1920x1080"},
                    SizeRow{"ScaleTwo", CGRectMake(0, 0, 1440, 900), 2, "2880x1800"},
                    SizeRow{"OriginDoesNotCount", CGRectMake(-1920, 50, 1280, 720), 1, "1280x720"},
                    SizeRow{"TruncatedBeforeScaled", CGRectMake(0, 0, 1279.9, 719.5), 2,
                            "2558x1438"},
                    SizeRow{"Odd", CGRectMake(0, 0, 641, 3), 3, "1923x9"},
                    SizeRow{"Empty", CGRectMake(0, 0, 0, 0), 1, "0x0"},
                    SizeRow{"ScaleZero", CGRectMake(0, 0, 1920, 1080), 0, "0x0"},
                    SizeRow{"NoSize", CGRectMake(0, 0, notANumber, -5), 2, "0x0"},
                    SizeRow{"Saturated", CGRectMake(0, 0, huge, 1), 1, "2147483647x1"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Start, ScaleIsOneWithoutAPicture) {
    services.givesImages = false;
    EXPECT_TRUE(engine->start(nullptr));
    EXPECT_THAT(calls(), testing::IsSupersetOf(
                             {"CGDisplayCreateImageForRect(7, 0 0 1x1) = null",
                              "CGDisplayStreamCreate(7, 1920x1080, 0x42475241, dictionary1) = "
                              "stream1"}));
}

TEST_F(Start, FailsWithoutARunLoopSource) {
    services.givesRunLoopSources = false;
    EXPECT_FALSE(engine->start(nullptr));
    EXPECT_EQ(calls().back(), "CGDisplayStreamGetRunLoopSource(stream1)");
    EXPECT_THAT(logged(), ElementsAre(Line{0, "DisplayStreamImpl", "Invalid runloop reference"}));
    engine->stop(); // the stream was kept
    EXPECT_THAT(calls(), ElementsAre("CGDisplayStreamStop(stream1)"));
}

TEST_F(Start, FailsWithoutAStream) {
    services.givesStreams = false;
    EXPECT_FALSE(engine->start(nullptr));
    EXPECT_EQ(calls().back(), "CGDisplayStreamGetRunLoopSource(null)");
    EXPECT_THAT(logged(), ElementsAre(Line{0, "DisplayStreamImpl", "Invalid runloop reference"}));
    engine->stop();
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Start, FailedStartForgetsTheSourceOfTheOneBefore) {
    engine->start(nullptr);
    services.givesRunLoopSources = false;
    EXPECT_FALSE(engine->start(nullptr));
    calls();
    engine->stop();
    EXPECT_THAT(calls(), ElementsAre("CGDisplayStreamStop(stream2)"));
}

TEST_F(Start, SucceedsThoughTheSystemRefuses) {
    services.startError = kCGErrorCannotComplete;
    EXPECT_TRUE(engine->start(nullptr));
    EXPECT_THAT(logged(),
                ElementsAre(Line{0, "DisplayStreamImpl", "CGDisplayStreamStart failed (1004, 7)"}));
}

TEST_F(Start, SucceedsThoughTheSystemRefusesAQueuesStream) {
    services.givesStreams = false;
    services.startError = kCGErrorFailure;
    EXPECT_TRUE(engine->start("frames"));
    EXPECT_EQ(calls().back(), "CGDisplayStreamStart(null)");
    EXPECT_THAT(logged(),
                ElementsAre(Line{0, "DisplayStreamImpl", "CGDisplayStreamStart failed (1000, 7)"}));
}

TEST_F(Start, LargeDisplayNumbersAreLoggedAsNegative) {
    DisplayStreamImpl other(&client, 0xfffffffeU);
    services.startError = -1;
    EXPECT_TRUE(other.start(nullptr));
    EXPECT_THAT(logged(),
                ElementsAre(Line{0, "DisplayStreamImpl", "CGDisplayStreamStart failed (-1, -2)"}));
}

TEST_F(Start, WithoutADictionaryStreamsGetNone) {
    services.givesDictionaries = false;
    EXPECT_TRUE(engine->start(nullptr));
    EXPECT_THAT(calls(),
                Contains("CGDisplayStreamCreate(7, 1920x1080, 0x42475241, null) = stream1"));
}

TEST_F(Frame, WithoutASurfaceIsIgnored) {
    start();
    auto* const update = services.makeUpdate({rect(0, 0, 1, 1)});
    services.deliver(nullptr, update);
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Frame, WithoutAClientIsIgnored) {
    engine = std::make_unique<DisplayStreamImpl>(nullptr, 7U);
    start();
    services.deliver(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Frame, FirstOneIsHeldAndItsChangesReported) {
    start();
    services.deliver(services.makeSurface(),
                     services.makeUpdate({rect(0, 0, 10, 10), rect(20, 0, 5, 5)}));
    EXPECT_THAT(calls(),
                ElementsAre("dispatch_semaphore_wait(semaphore1, forever)", "CFRetain(surface1)",
                            "IOSurfaceIncrementUseCount(surface1)", "CFRunLoopGetCurrent()",
                            "CFRunLoopGetMain()", "CFRetain(update1)",
                            "CGDisplayStreamUpdateGetRects(update1, dirty)",
                            "client.rectsChanged(2, update1.dirty)",
                            "CGDisplayStreamUpdateGetRects(update1, moved)",
                            "dispatch_semaphore_signal(semaphore1)"));
}

TEST_F(Frame, NextOneReplacesTheSurfaceAndMergesTheChanges) {
    start();
    auto* const first = services.makeSurface();
    auto* const second = services.makeSurface();
    frame(first, services.makeUpdate({rect(0, 0, 10, 10)}));
    services.deliver(second, services.makeUpdate({rect(50, 0, 10, 10)}));
    EXPECT_THAT(calls(),
                ElementsAre("dispatch_semaphore_wait(semaphore1, forever)",
                            "IOSurfaceDecrementUseCount(surface1)", "CFRelease(surface1)",
                            "CFRetain(surface2)", "IOSurfaceIncrementUseCount(surface2)",
                            "CFRunLoopGetCurrent()", "CFRunLoopGetMain()",
                            "CGDisplayStreamUpdateCreateMergedUpdate(update1, update2) = update3",
                            "CFRelease(update1)", "CGDisplayStreamUpdateGetRects(update3, dirty)",
                            "client.rectsChanged(2, update3.dirty)",
                            "CGDisplayStreamUpdateGetRects(update3, moved)",
                            "dispatch_semaphore_signal(semaphore1)"));
    EXPECT_EQ(first->useCount, 0);
    EXPECT_EQ(second->useCount, 1);
    EXPECT_EQ(first->refs, 1);
    EXPECT_EQ(second->refs, 2);
}

TEST_F(Frame, SameSurfaceAgainIsRetainedAgainAndNotReleased) {
    start();
    auto* const surface = services.makeSurface();
    frame(surface, nullptr);
    services.deliver(surface, nullptr);
    EXPECT_THAT(calls(),
                ElementsAre("dispatch_semaphore_wait(semaphore1, forever)",
                            "IOSurfaceDecrementUseCount(surface1)", "CFRetain(surface1)",
                            "IOSurfaceIncrementUseCount(surface1)", "CFRunLoopGetCurrent()",
                            "CFRunLoopGetMain()", "dispatch_semaphore_signal(semaphore1)"));
    EXPECT_EQ(surface->useCount, 1);
    EXPECT_EQ(surface->refs, 3);
}

TEST_F(Frame, SurfaceOfNFramesKeepsNLessOneReferencesAfterStop) {
    start();
    auto* const surface = services.makeSurface();
    for (int i = 0; i < 5; ++i)
        frame(surface, services.makeUpdate({rect(0, 0, 1, 1)}));
    engine->stop();
    EXPECT_EQ(surface->refs, 1 + 4);
    EXPECT_EQ(surface->useCount, 0);
}

TEST_F(Frame, ThirdReportCarriesTheChangesOfAllThree) {
    start();
    auto* const surface = services.makeSurface();
    frame(surface, services.makeUpdate({rect(0, 0, 1, 1)}));
    frame(surface, services.makeUpdate({rect(1, 0, 1, 1)}));
    services.deliver(surface, services.makeUpdate({rect(2, 0, 1, 1)}));
    EXPECT_THAT(calls(), Contains("client.rectsChanged(3, update5.dirty)"));
}

TEST_F(Frame, ChangesAreReportedAgainByAFrameThatBringsNone) {
    start();
    auto* const surface = services.makeSurface();
    frame(surface, services.makeUpdate({rect(0, 0, 1, 1)}, {rect(5, 5, 1, 1)}, 1, 2));
    services.deliver(surface, nullptr);
    EXPECT_THAT(calls(), testing::IsSupersetOf({"client.rectsChanged(1, update1.dirty)",
                                                "client.rectsMoved(1, 2, 1, update1.moved)"}));
}

TEST_F(Frame, ChangesAreNotReportedAgainAfterAGrab) {
    start();
    auto* const surface = services.makeSurface();
    frame(surface, services.makeUpdate({rect(0, 0, 1, 1)}));
    engine->grab();
    calls();
    services.deliver(surface, nullptr);
    EXPECT_THAT(calls(), Not(Contains(testing::StartsWith("client."))));
    services.deliver(surface, services.makeUpdate({rect(3, 3, 1, 1)}));
    EXPECT_THAT(calls(), Contains("client.rectsChanged(1, update2.dirty)"));
}

TEST_F(Frame, WithoutAnyUpdateNothingIsReported) {
    start();
    services.deliver(services.makeSurface(), nullptr);
    EXPECT_THAT(calls(),
                ElementsAre("dispatch_semaphore_wait(semaphore1, forever)", "CFRetain(surface1)",
                            "IOSurfaceIncrementUseCount(surface1)", "CFRunLoopGetCurrent()",
                            "CFRunLoopGetMain()", "dispatch_semaphore_signal(semaphore1)"));
}

TEST_F(Frame, MovesAreReportedAfterChanges) {
    start();
    services.deliver(
        services.makeSurface(),
        services.makeUpdate({rect(0, 0, 10, 10)}, {rect(0, 0, 5, 5), rect(5, 0, 5, 5)}, -3, 16.5));
    const auto all = calls();
    EXPECT_THAT(std::vector(all.begin() + 6, all.end()),
                ElementsAre("CGDisplayStreamUpdateGetRects(update1, dirty)",
                            "client.rectsChanged(1, update1.dirty)",
                            "CGDisplayStreamUpdateGetRects(update1, moved)",
                            "CGDisplayStreamUpdateGetMovedRectsDelta(update1)",
                            "client.rectsMoved(-3, 16.5, 2, update1.moved)",
                            "dispatch_semaphore_signal(semaphore1)"));
}

TEST_F(Frame, MovesAreReportedWithoutChangesToo) {
    start();
    services.deliver(services.makeSurface(), services.makeUpdate({}, {rect(0, 0, 5, 5)}, 1, 2));
    const auto all = calls();
    EXPECT_THAT(all, Contains("client.rectsMoved(1, 2, 1, update1.moved)"));
    EXPECT_THAT(all, Not(Contains(testing::StartsWith("client.rectsChanged"))));
}

TEST_F(Frame, AwayFromTheMainRunLoopReportsGoThroughTheMainQueue) {
    start();
    leaveMainRunLoop();
    services.deliver(services.makeSurface(),
                     services.makeUpdate({rect(0, 0, 10, 10)}, {rect(0, 0, 5, 5)}, 1, 2));
    const auto inHandler = calls();
    EXPECT_THAT(std::vector(inHandler.begin() + 6, inHandler.end()),
                ElementsAre("CGDisplayStreamUpdateGetRects(update1, dirty)",
                            "dispatch_async(main queue)",
                            "CGDisplayStreamUpdateGetRects(update1, moved)",
                            "CGDisplayStreamUpdateGetMovedRectsDelta(update1)",
                            "dispatch_async(main queue)", "dispatch_semaphore_signal(semaphore1)"));
    services.runMainQueue();
    EXPECT_THAT(calls(), ElementsAre("client.rectsChanged(1, update1.dirty)",
                                     "client.rectsMoved(1, 2, 1, update1.moved)"));
}

TEST_F(Frame, LateReportHasTheVeryPointerThoughAGrabReleasedTheUpdate) {
    start();
    leaveMainRunLoop();
    services.deliver(services.makeSurface(), services.makeUpdate({rect(0, 0, 10, 10)}));
    engine->grab();
    engine->stop();
    calls();
    services.runMainQueue();
    EXPECT_THAT(calls(), ElementsAre("client.rectsChanged(1, update1.dirty)"));
}

TEST_F(Frame, LateReportNeedsNoEngine) {
    start();
    leaveMainRunLoop();
    services.deliver(services.makeSurface(), services.makeUpdate({rect(0, 0, 10, 10)}));
    engine.reset();
    calls();
    services.runMainQueue();
    EXPECT_THAT(calls(), ElementsAre("client.rectsChanged(1, update1.dirty)"));
}

class OtherStatus : public DisplayStreamImplTest,
                    public testing::WithParamInterface<CGDisplayStreamFrameStatus> {};

TEST_P(OtherStatus, SwapsTheSurfaceAndReportsNothing) {
    start();
    auto* const first = services.makeSurface();
    frame(first, services.makeUpdate({rect(0, 0, 10, 10)}));
    services.deliver(GetParam(), services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    EXPECT_THAT(calls(), ElementsAre("dispatch_semaphore_wait(semaphore1, forever)",
                                     "IOSurfaceDecrementUseCount(surface1)", "CFRelease(surface1)",
                                     "CFRetain(surface2)", "IOSurfaceIncrementUseCount(surface2)",
                                     "dispatch_semaphore_signal(semaphore1)"));
    // A grab now reads the new surface with the box of the update before.
    engine->grab();
    EXPECT_THAT(calls(), testing::IsSupersetOf({"IOSurfaceLock(surface2, read-only, no seed)",
                                                "client.pixelsGrabbed(0 0 10 10, 4, 7680)"}));
}
INSTANTIATE_TEST_SUITE_P(Statuses, OtherStatus,
                         testing::Values(kCGDisplayStreamFrameStatusFrameIdle,
                                         kCGDisplayStreamFrameStatusFrameBlank,
                                         kCGDisplayStreamFrameStatusStopped, 4, -1));

TEST_F(Frame, MergeThatGivesTheHeldUpdateReleasesNothing) {
    start();
    auto* const surface = services.makeSurface();
    auto* const first = services.makeUpdate({rect(0, 0, 10, 10)});
    frame(surface, first);
    services.merge = [](CGDisplayStreamUpdateRef held, CGDisplayStreamUpdateRef) {
        ++held->refs;
        return held;
    };
    services.deliver(surface, services.makeUpdate({rect(5, 5, 1, 1)}));
    EXPECT_THAT(calls(), Not(Contains("CFRelease(update1)")));
    engine->stop();
    EXPECT_EQ(first->refs, 2); // one too many, for good
}

TEST_F(Frame, MergeThatFailsKeepsTheHeldUpdate) {
    start();
    auto* const surface = services.makeSurface();
    frame(surface, services.makeUpdate({rect(0, 0, 10, 10)}));
    services.merge = [](CGDisplayStreamUpdateRef, CGDisplayStreamUpdateRef) {
        return CGDisplayStreamUpdateRef(nullptr);
    };
    services.deliver(surface, services.makeUpdate({rect(5, 5, 1, 1)}));
    EXPECT_THAT(calls(), Contains("client.rectsChanged(1, update1.dirty)"));
}

TEST_F(Frame, UpdatesAreNotHeldAfterAGrab) {
    start();
    auto* const surface = services.makeSurface();
    auto* const first = services.makeUpdate({rect(0, 0, 10, 10)});
    auto* const second = services.makeUpdate({rect(0, 0, 10, 10)});
    frame(surface, first);
    frame(surface, second);
    EXPECT_EQ(first->refs, 1);
    EXPECT_EQ(second->refs, 1);
    engine->grab();
    // All that is left is the test's own, the engine's surface, with one reference too many, the
    // stream and its source, and the dictionary.
    EXPECT_THAT(services.alive(), ElementsAre("dictionary1", "stream1", "source1", "surface1 x3",
                                              "update1", "update2"));
}

TEST_F(Frame, HandlerWorksOnAfterASecondStart) {
    start();
    CGDisplayStream* const first = services.streams[0];
    start();
    first->handler(kCGDisplayStreamFrameStatusFrameComplete, 0, services.makeSurface(),
                   services.makeUpdate({rect(0, 0, 1, 1)}));
    EXPECT_THAT(calls(), Contains("client.rectsChanged(1, update1.dirty)"));
}

TEST_F(Grab, BeforeAnyFrameDoesNothing) {
    engine->grab();
    EXPECT_THAT(calls(), ElementsAre("dispatch_semaphore_wait(semaphore1, forever)",
                                     "dispatch_semaphore_signal(semaphore1)"));
}

TEST_F(Grab, HandsOverTheBoxOfAllChanges) {
    start();
    auto* const surface = services.makeSurface();
    frame(surface, services.makeUpdate({rect(0, 0, 10, 10), rect(100, 100, 10, 10)}));
    engine->grab();
    EXPECT_THAT(calls(),
                ElementsAre("dispatch_semaphore_wait(semaphore1, forever)",
                            "CGDisplayStreamUpdateGetRects(update1, dirty)", "CGRectUnion()",
                            "CGRectUnion()", "IOSurfaceLock(surface1, read-only, no seed)",
                            "IOSurfaceGetBaseAddress(surface1)",
                            "IOSurfaceGetBytesPerRow(surface1)",
                            "client.pixelsGrabbed(0 0 110 110, 4, 7680)",
                            "IOSurfaceUnlock(surface1, read-only, no seed)", "CFRelease(update1)",
                            "dispatch_semaphore_signal(semaphore1)"));
    EXPECT_EQ(client.pixels, surface->base); // of the whole surface, not of the box
    EXPECT_EQ(surface->readLocks, 0);
    EXPECT_EQ(surface->useCount, 1);
}

TEST_F(Grab, FirstRectangleIsFoldedWithItself) {
    start();
    frame(services.makeSurface(), services.makeUpdate({rect(3, 4, 5, 6)}));
    engine->grab();
    const auto all = calls();
    EXPECT_EQ(std::count(all.begin(), all.end(), "CGRectUnion()"), 1);
    EXPECT_THAT(all, Contains("client.pixelsGrabbed(3 4 8 10, 4, 7680)"));
}

TEST_F(Grab, SecondOneHasNothingLeft) {
    start();
    frame(services.makeSurface(), services.makeUpdate({rect(0, 0, 10, 10)}));
    engine->grab();
    calls();
    engine->grab();
    EXPECT_THAT(calls(), ElementsAre("dispatch_semaphore_wait(semaphore1, forever)",
                                     "dispatch_semaphore_signal(semaphore1)"));
}

TEST_F(Grab, MovedAreasAloneAreNotHandedOver) {
    start();
    frame(services.makeSurface(), services.makeUpdate({}, {rect(0, 0, 5, 5)}, 1, 2));
    engine->grab();
    EXPECT_THAT(calls(),
                ElementsAre("dispatch_semaphore_wait(semaphore1, forever)",
                            "CGDisplayStreamUpdateGetRects(update1, dirty)", "CFRelease(update1)",
                            "dispatch_semaphore_signal(semaphore1)"));
}

struct BoxRow {
    const char* name;
    std::vector<CGRect> dirty;
    const char* box; // null: nothing is handed over
    friend void PrintTo(const BoxRow& row, std::ostream* out) { *out << row.name; }
};

class GrabbedBox : public DisplayStreamImplTest, public testing::WithParamInterface<BoxRow> {};

TEST_P(GrabbedBox, IsTruncatedNumberByNumber) {
    start();
    auto* const update = services.makeUpdate({});
    update->dirty = GetParam().dirty;
    frame(services.makeSurface(), update);
    engine->grab();
    const auto all = calls();
    if (GetParam().box == nullptr)
        EXPECT_THAT(all, Not(Contains(testing::StartsWith("client."))));
    else
        EXPECT_THAT(all,
                    Contains("client.pixelsGrabbed(" + std::string(GetParam().box) + ", 4, 7680)"));
    EXPECT_EQ(update->refs, 1) << "released in either case";
}
constexpr CGFloat infinite = std::numeric_limits<CGFloat>::infinity();
INSTANTIATE_TEST_SUITE_P(
    Rectangles, GrabbedBox,
    testing::Values(
        BoxRow{"Whole", {rect(1, 2, 3, 4)}, "1 2 4 6"},
        BoxRow{"Fractions", {rect(0.5, 0.5, 9.7, 9.7)}, "0 0 9 9"},
        BoxRow{"FractionsThatAddUp", {rect(1.9, 1.9, 1.9, 1.9)}, "1 1 2 2"},
        BoxRow{"NegativeOrigin", {rect(-1.5, -0.5, 10, 10)}, "-1 0 9 10"},
        BoxRow{"NarrowerThanAPixel", {rect(5, 5, 0.9, 10)}, nullptr},
        BoxRow{"LowerThanAPixel", {rect(5, 5, 10, 0.9)}, nullptr},
        BoxRow{"Empty", {rect(5, 5, 0, 0)}, nullptr},
        BoxRow{"Negative", {rect(5, 5, -3, 10)}, nullptr},
        BoxRow{"UnionOfThree",
               {rect(10, 10, 1, 1), rect(0, 20, 1, 1), rect(30, 0, 1, 1)},
               "0 0 31 21"},
        BoxRow{"Infinite", {rect(-infinite, -infinite, infinite, infinite)}, nullptr},
        BoxRow{"Huge", {rect(0, 0, 1e30, 1e30)}, "0 0 2147483647 2147483647"},
        BoxRow{"HugeFromTheRight", {rect(10, 10, 3e9, 3e9)}, "10 10 2147483647 2147483647"},
        BoxRow{"NotANumber", {rect(0, 0, notANumber, 10)}, nullptr}),
    [](const auto& row) { return row.param.name; });

TEST_F(Grab, AnswersOnTheCallingThread) {
    start();
    frame(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    std::thread::id told;
    client.onGrabbed = [&] { told = std::this_thread::get_id(); };
    std::thread grabber([&] { engine->grab(); });
    const std::thread::id grabberId = grabber.get_id();
    grabber.join();
    EXPECT_EQ(told, grabberId);
}

TEST(GrabDeathTest, NullClientIsAnAssertionAfterTheSemaphore) {
    Services::get().reset();
    EXPECT_DEATH(
        {
            DisplayStreamImpl engine(nullptr, 7);
            Services::get().tracing = true;
            engine.grab();
        },
        "^dispatch_semaphore_wait.semaphore1, forever.\n"
        "Assertion 'client' failed at [^ ]*DisplayStreamImpl.cpp:[0-9]+\n$");
}

TEST_F(Stop, BeforeStartDoesNothing) {
    EXPECT_TRUE(engine->stop());
    EXPECT_TRUE(engine->stop());
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Stop, LetsGoOfEverythingInOrder) {
    start();
    auto* const surface = services.makeSurface();
    auto* const update = services.makeUpdate({rect(0, 0, 1, 1)});
    frame(surface, update);
    EXPECT_TRUE(engine->stop());
    EXPECT_THAT(calls(), ElementsAre("IOSurfaceDecrementUseCount(surface1)", "CFRelease(surface1)",
                                     "CFRelease(update1)", "CGDisplayStreamStop(stream1)",
                                     "CFRunLoopGetCurrent()",
                                     "CFRunLoopRemoveSource(main loop, source1, common modes)"));
    EXPECT_EQ(surface->useCount, 0);
    EXPECT_EQ(surface->refs, 1);
    EXPECT_EQ(update->refs, 1);
    EXPECT_THAT(services.mainLoop.sources, IsEmpty());
}

TEST_F(Stop, ReleasesTheQueue) {
    engine->start("frames");
    calls();
    EXPECT_TRUE(engine->stop());
    EXPECT_THAT(calls(), ElementsAre("CGDisplayStreamStop(stream1)", "dispatch_release(queue1)"));
    EXPECT_EQ(services.queues[0].refs, 0);
}

TEST_F(Stop, TwiceDoesNothingTheSecondTime) {
    start();
    frame(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    engine->stop();
    calls();
    EXPECT_TRUE(engine->stop());
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Stop, GoesOnThoughTheSystemRefuses) {
    start();
    services.stopError = kCGErrorIllegalArgument;
    EXPECT_TRUE(engine->stop());
    EXPECT_THAT(logged(),
                ElementsAre(Line{0, "DisplayStreamImpl", "CGDisplayStreamStop failed (1001, 7)"}));
    EXPECT_THAT(calls(), ElementsAre("CGDisplayStreamStop(stream1)", "CFRunLoopGetCurrent()",
                                     "CFRunLoopRemoveSource(main loop, source1, common modes)"));
    engine->stop();
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Stop, RemovesTheSourceFromTheRunLoopOfTheThreadThatCallsIt) {
    start();
    leaveMainRunLoop();
    engine->stop();
    EXPECT_THAT(calls(), Contains("CFRunLoopRemoveSource(other loop, source1, common modes)"));
}

TEST_F(Stop, NeverReleasesTheStream) {
    start();
    engine->stop();
    EXPECT_EQ(services.streams[0]->refs, 1);
}

TEST_F(Stop, DoesNotTakeTheSemaphore) {
    start();
    services.semaphores[0].count = 0; // held elsewhere
    EXPECT_TRUE(engine->stop());
    services.semaphores[0].count = 1;
}

TEST_F(Stop, MayBeFollowedByAStart) {
    start();
    frame(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    engine->stop();
    start();
    services.deliver(services.makeSurface(), services.makeUpdate({rect(0, 0, 2, 2)}));
    EXPECT_THAT(calls(), Contains("client.rectsChanged(1, update2.dirty)"));
    engine->grab();
    EXPECT_THAT(calls(), Contains("client.pixelsGrabbed(0 0 2 2, 4, 7680)"));
}

TEST_F(Stop, GrabAfterwardsDoesNothing) {
    start();
    frame(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    engine->stop();
    calls();
    engine->grab();
    EXPECT_THAT(calls(), ElementsAre("dispatch_semaphore_wait(semaphore1, forever)",
                                     "dispatch_semaphore_signal(semaphore1)"));
}

TEST_F(Properties, HaveOneEntryWithTimingToo) {
    engine->updateProps(true);
    EXPECT_THAT(
        calls(),
        ElementsAre("CFNumberCreate(default, int 8) = number1",
                    "CFNumberCreate(default, float 0.0333333351) = number2",
                    "CFDictionaryCreate(default, ShowCursor = false, no callbacks) = dictionary1"));
    EXPECT_EQ(services.lastKeys[0], kCGDisplayStreamShowCursor);
    EXPECT_EQ(services.lastKeys[1], kCGDisplayStreamQueueDepth);
    EXPECT_EQ(services.lastKeys[2], kCGDisplayStreamMinimumFrameTime);
    EXPECT_EQ(services.lastKeys[3], nullptr);
    EXPECT_EQ(services.lastValues[0], kCFBooleanFalse);
    EXPECT_EQ(static_cast<CFNumberRef>(services.lastValues[1])->name, "number1");
    EXPECT_EQ(static_cast<CFNumberRef>(services.lastValues[2])->name, "number2");
    EXPECT_EQ(services.lastValues[3], nullptr);
}

TEST_F(Properties, WithoutTimingMakeNoNumbers) {
    engine->updateProps(false);
    EXPECT_THAT(
        calls(),
        ElementsAre("CFDictionaryCreate(default, ShowCursor = false, no callbacks) = dictionary1"));
    EXPECT_EQ(services.lastKeys[1], nullptr);
}

TEST_F(Properties, ReplaceWhatWasMadeBefore) {
    engine->updateProps(true);
    calls();
    engine->updateProps(true);
    EXPECT_THAT(
        calls(),
        ElementsAre("CFNumberCreate(default, int 8) = number3", "CFRelease(number1)",
                    "CFNumberCreate(default, float 0.0333333351) = number4", "CFRelease(number2)",
                    "CFDictionaryCreate(default, ShowCursor = false, no callbacks) = dictionary2",
                    "CFRelease(dictionary1)"));
}

TEST_F(Properties, TimingNeverReachesAStream) {
    engine->updateProps(true);
    calls();
    start();
    EXPECT_THAT(services.alive(),
                ElementsAre("number1", "number2", "dictionary2", "stream1", "source1"));
}

TEST_F(Start, StreamCanBeStartedAgainByItself) {
    start();
    engine->startStream();
    EXPECT_THAT(calls(), ElementsAre("CGDisplayStreamStart(stream1)"));
    services.startError = 1002;
    engine->startStream();
    EXPECT_THAT(logged(),
                ElementsAre(Line{0, "DisplayStreamImpl", "CGDisplayStreamStart failed (1002, 7)"}));
}

TEST_F(Lifetime, DestructorStopsAndReleasesInOrder) {
    engine->updateProps(true);
    start();
    frame(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    engine.reset();
    EXPECT_THAT(calls(),
                ElementsAre("IOSurfaceDecrementUseCount(surface1)", "CFRelease(surface1)",
                            "CFRelease(update1)", "CGDisplayStreamStop(stream1)",
                            "CFRunLoopGetCurrent()",
                            "CFRunLoopRemoveSource(main loop, source1, common modes)",
                            "CFRelease(number2)", "CFRelease(number1)", "CFRelease(dictionary2)"));
    // The test's own, and what is never released.
    EXPECT_THAT(services.alive(), ElementsAre("stream1", "source1", "surface1", "update1"));
    EXPECT_EQ(services.semaphores.size(), 1U);
}

TEST_F(Lifetime, NothingLeaksOverManyRounds) {
    for (int round = 0; round < 20; ++round) {
        start();
        for (int i = 0; i < 5; ++i) {
            auto* const surface = services.makeSurface();
            auto* const update = services.makeUpdate({rect(0, 0, 1, 1)});
            frame(surface, update);
            if (i % 2 == 0)
                engine->grab();
            CFRelease(surface); // the service's own
            CFRelease(update);
        }
        engine->stop();
    }
    engine.reset();
    std::vector<std::string> left;
    for (const std::string& name : services.alive()) {
        if (!name.starts_with("stream") && !name.starts_with("source"))
            left.push_back(name);
    }
    EXPECT_THAT(left, IsEmpty());
}

struct Refusal {};

TEST_F(Callback, ExceptionOutOfAReportGivesTheSemaphoreBackAndPassesOn) {
    start();
    auto* const surface = services.makeSurface();
    client.onChanged = [] { throw Refusal(); };
    EXPECT_THROW(services.deliver(surface, services.makeUpdate({rect(0, 0, 1, 1)})), Refusal);
    EXPECT_EQ(calls().back(), "dispatch_semaphore_signal(semaphore1)");
    client.onChanged = nullptr;
    client.onMoved = [] { throw Refusal(); };
    EXPECT_THROW(services.deliver(surface, services.makeUpdate({}, {rect(0, 0, 1, 1)}, 1, 1)),
                 Refusal);
    EXPECT_EQ(calls().back(), "dispatch_semaphore_signal(semaphore1)");
}

TEST_F(Callback, ExceptionOutOfALateReportIsNoAffairOfTheEngine) {
    start();
    leaveMainRunLoop();
    client.onChanged = [] { throw Refusal(); };
    services.deliver(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    EXPECT_THROW(services.runMainQueue(), Refusal);
}

TEST_F(Callback, ExceptionOutOfAHandOverUnlocksAndPassesOn) {
    start();
    auto* const surface = services.makeSurface();
    frame(surface, services.makeUpdate({rect(0, 0, 1, 1)}));
    client.onGrabbed = [] { throw Refusal(); };
    EXPECT_THROW(engine->grab(), Refusal);
    const auto all = calls();
    EXPECT_THAT(std::vector(all.end() - 2, all.end()),
                ElementsAre("IOSurfaceUnlock(surface1, read-only, no seed)",
                            "dispatch_semaphore_signal(semaphore1)"));
    client.onGrabbed = nullptr;
    engine->grab(); // what was not taken is handed over again
    EXPECT_THAT(calls(), Contains("client.pixelsGrabbed(0 0 1 1, 4, 7680)"));
}

TEST_F(Callback, MayStopInsideAReportOfChanges) {
    start();
    auto* const surface = services.makeSurface();
    client.onChanged = [&] { engine->stop(); };
    services.deliver(surface, services.makeUpdate({rect(0, 0, 1, 1)}, {rect(0, 0, 1, 1)}, 1, 1));
    EXPECT_THAT(calls(), Not(Contains(testing::StartsWith("client.rectsMoved"))));
    EXPECT_EQ(surface->useCount, 0);
    EXPECT_EQ(surface->refs, 1);
}

TEST_F(Callback, MayStopAndStartInsideAReport) {
    start();
    client.onChanged = [&] {
        engine->stop();
        engine->start(nullptr);
    };
    services.deliver(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    client.onChanged = nullptr;
    calls();
    services.deliver(services.makeSurface(), services.makeUpdate({rect(0, 0, 2, 2)}));
    EXPECT_THAT(calls(), Contains("client.rectsChanged(1, update2.dirty)"));
}

TEST_F(Callback, MayStopInsideAHandOver) {
    start();
    auto* const surface = services.makeSurface();
    frame(surface, services.makeUpdate({rect(0, 0, 1, 1)}));
    CFRelease(surface); // the engine's is the last reference
    client.onGrabbed = [&] { engine->stop(); };
    engine->grab();
    EXPECT_EQ(calls().back(), "dispatch_semaphore_signal(semaphore1)");
    EXPECT_EQ(surface->refs, 0); // and it was not touched afterwards: errors would say so
}

TEST_F(Callback, MayDeleteTheEngineInsideAReportOfChanges) {
    start();
    client.onChanged = [&] { engine.reset(); };
    services.deliver(services.makeSurface(),
                     services.makeUpdate({rect(0, 0, 1, 1)}, {rect(0, 0, 1, 1)}, 1, 1));
    EXPECT_FALSE(engine);
    EXPECT_THAT(calls(), Not(Contains(testing::StartsWith("client.rectsMoved"))));
}

TEST_F(Callback, MayDeleteTheEngineInsideAReportOfMoves) {
    start();
    client.onMoved = [&] { engine.reset(); };
    services.deliver(services.makeSurface(),
                     services.makeUpdate({rect(0, 0, 1, 1)}, {rect(0, 0, 1, 1)}, 1, 1));
    EXPECT_FALSE(engine);
}

TEST_F(Callback, MayDeleteTheEngineInsideAHandOver) {
    start();
    frame(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    client.onGrabbed = [&] { engine.reset(); };
    engine->grab();
    EXPECT_FALSE(engine);
    EXPECT_EQ(calls().back(), "dispatch_semaphore_signal(semaphore1)");
}

TEST_F(Callback, MayDeleteTheEngineAndThrow) {
    start();
    frame(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)}));
    client.onGrabbed = [&] {
        engine.reset();
        throw Refusal();
    };
    EXPECT_THROW(engine->grab(), Refusal);
}

TEST_F(Callback, MayUseAnotherEngine) {
    start();
    auto other = std::make_unique<DisplayStreamImpl>(&client, 8U);
    client.onChanged = [&] {
        client.onChanged = nullptr;
        other->grab();
        other.reset();
    };
    services.deliver(services.makeSurface(),
                     services.makeUpdate({rect(0, 0, 1, 1)}, {rect(0, 0, 1, 1)}, 1, 1));
    EXPECT_THAT(calls(), Contains("client.rectsMoved(1, 1, 1, update1.moved)"));
}

// The lock is not recursive: a grab from inside a direct report waits for ever.
TEST_F(Threads, GrabInsideAReportWaits) {
    start();
    fake::Semaphore& semaphore = services.semaphores[0];
    client.onChanged = [&] {
        client.onChanged = nullptr;
        engine->grab();
    };
    std::thread handler(
        [&] { services.deliver(services.makeSurface(), services.makeUpdate({rect(0, 0, 1, 1)})); });
    const auto isWaiting = [&] {
        const std::lock_guard lock(semaphore.mutex);
        return semaphore.waiters == 1;
    };
    while (!isWaiting())
        usleep(100);
    EXPECT_THAT(calls(), Not(Contains(testing::StartsWith("client.pixelsGrabbed"))));
    dispatch_semaphore_signal(&semaphore); // lets the test end
    handler.join();
    EXPECT_EQ(semaphore.count, 2);
    semaphore.count = 1;
}

TEST_F(Threads, FrameWaitsForAGrabInProgress) {
    start();
    auto* const first = services.makeSurface();
    frame(first, services.makeUpdate({rect(0, 0, 1, 1)}));
    auto* const second = services.makeSurface();
    auto* const update = services.makeUpdate({rect(5, 5, 1, 1)});
    fake::Semaphore& semaphore = services.semaphores[0];
    std::thread handler;
    client.onGrabbed = [&] {
        handler = std::thread([&] { services.deliver(second, update); });
        const auto isWaiting = [&] {
            const std::lock_guard lock(semaphore.mutex);
            return semaphore.waiters == 1;
        };
        while (!isWaiting())
            usleep(100);
        EXPECT_EQ(first->useCount, 1);
        EXPECT_EQ(second->useCount, 0);
    };
    engine->grab();
    handler.join();
    EXPECT_EQ(second->useCount, 1);
    client.onGrabbed = nullptr;
    calls();
    engine->grab(); // the frame that waited was not lost
    EXPECT_THAT(calls(), Contains("client.pixelsGrabbed(5 5 6 6, 4, 7680)"));
}

TEST_F(Threads, FramesAndGrabsExcludeEachOther) {
    constexpr int frames = 300;
    start();
    auto* const first = services.makeSurface();
    auto* const second = services.makeSurface();
    services.recording = false;
    std::thread handler([&] {
        Services::setCurrentRunLoop(&services.otherLoop);
        for (int i = 0; i < frames; ++i) {
            auto* const update = services.makeUpdate({rect(i, 0, 1, 1)});
            services.deliver(i % 2 == 0 ? first : second, update);
            CFRelease(update);
        }
    });
    for (int i = 0; i < frames; ++i)
        engine->grab();
    handler.join();
    engine->grab();
    services.runMainQueue();
    engine->stop();
    EXPECT_EQ(first->refs, 1);
    EXPECT_EQ(second->refs, 1);
    EXPECT_EQ(first->useCount, 0);
    EXPECT_EQ(second->useCount, 0);
}

} // namespace
