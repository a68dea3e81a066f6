#include "lumoscreenhelper/DisplayStreamPerDisplay.h"

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/mac/lumoscreenhelper/RecordingClient.h"
#include "apps/mac/lumoscreenhelper/fake/Services.h"
#include "lib1/plat/RecordingLogger.h"
#include "lib1/plat/VirtualSlot.h"

namespace {

using fake::Services;
using svr::DisplayStreamClient;
using svr::DisplayStreamSource;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

RecordingLogger recorder("recorder");

struct PerDisplay : testing::Test {
    PerDisplay() {
        services.reset();
        source.reset(NewDisplayStream(&client, 9));
    }
    ~PerDisplay() override {
        source.reset();
        EXPECT_THAT(services.errors, IsEmpty());
        services.reset();
    }

    Services& services = Services::get();
    RecordingClient client;
    std::unique_ptr<DisplayStreamSource> source;
};

TEST_F(PerDisplay, IsMadeButNotStarted) {
    EXPECT_NE(dynamic_cast<DisplayStreamPerDisplay*>(source.get()), nullptr);
    EXPECT_THAT(services.takeCalls(), ElementsAre("dispatch_semaphore_create(1) = semaphore1"));
}

TEST_F(PerDisplay, StartsOnTheRunLoopAndNeverOnAQueue) {
    EXPECT_TRUE(source->start());
    EXPECT_TRUE(source->start());
    const auto calls = services.takeCalls();
    EXPECT_THAT(calls, Contains("CGDisplayStreamCreate(9, 1920x1080, 0x42475241, dictionary1) = "
                                "stream1"));
    EXPECT_THAT(calls, Not(Contains(StartsWith("dispatch_queue_create"))));
    EXPECT_THAT(services.queues, IsEmpty());
}

TEST_F(PerDisplay, SaysWhenItCannotStart) {
    services.givesRunLoopSources = false;
    EXPECT_FALSE(source->start());
    services.givesRunLoopSources = true;
    services.startError = 1000;
    EXPECT_TRUE(source->start());
}

TEST_F(PerDisplay, WorksFromStartToStop) {
    source->start();
    services.takeCalls();
    services.deliver(services.makeSurface(),
                     services.makeUpdate({CGRectMake(1, 2, 3, 4)}, {CGRectMake(1, 2, 3, 4)}, 5, 6));
    source->grab();
    EXPECT_TRUE(source->stop());
    std::vector<std::string> told;
    for (const std::string& call : services.takeCalls()) {
        if (call.starts_with("client."))
            told.push_back(call);
    }
    EXPECT_THAT(told, ElementsAre("client.rectsChanged(1, update1.dirty)",
                                  "client.rectsMoved(5, 6, 1, update1.moved)",
                                  "client.pixelsGrabbed(1 2 4 6, 4, 7680)"));
}

TEST_F(PerDisplay, DeletionStopsIt) {
    source->start();
    auto* const surface = services.makeSurface();
    services.deliver(surface, services.makeUpdate({CGRectMake(1, 2, 3, 4)}));
    services.takeCalls();
    source.reset();
    EXPECT_THAT(services.takeCalls(),
                ElementsAre("IOSurfaceDecrementUseCount(surface1)", "CFRelease(surface1)",
                            "CFRelease(update1)", "CGDisplayStreamStop(stream1)",
                            "CFRunLoopGetCurrent()",
                            "CFRunLoopRemoveSource(main loop, source1, common modes)",
                            "CFRelease(dictionary1)"));
    EXPECT_EQ(surface->refs, 1);
}

TEST_F(PerDisplay, MayBeDeletedInsideACallback) {
    source->start();
    client.onChanged = [&] { source.reset(); };
    services.deliver(services.makeSurface(), services.makeUpdate({CGRectMake(1, 2, 3, 4)}));
    EXPECT_EQ(source, nullptr);
}

TEST_F(PerDisplay, ClientMayBeNullWhileItIsNotStarted) {
    const std::unique_ptr<DisplayStreamSource> other(NewDisplayStream(nullptr, 9));
    EXPECT_TRUE(other->stop());
}

TEST_F(PerDisplay, TwoSourcesAreIndependent) {
    RecordingClient otherClient;
    const std::unique_ptr<DisplayStreamSource> other(NewDisplayStream(&otherClient, 10));
    source->start();
    other->start();
    services.takeCalls();
    services.deliver(services.makeSurface(), services.makeUpdate({CGRectMake(1, 2, 3, 4)}));
    services.takeCalls();
    source->grab();
    EXPECT_THAT(services.takeCalls(), Not(Contains(StartsWith("client."))));
    other->grab();
    EXPECT_THAT(services.takeCalls(), Contains("client.pixelsGrabbed(1 2 4 6, 4, 7680)"));
}

TEST_F(PerDisplay, HostOperationIsNeverCalled) {
    source->start();
    services.deliver(services.makeSurface(), services.makeUpdate({CGRectMake(1, 2, 3, 4)}));
    source->grab();
    source->stop();
    EXPECT_THAT(services.takeCalls(), Not(Contains("client.hostOperation()")));
}

TEST(DisplayStreamSourceTable, HasItsOperationsInOrder) {
    EXPECT_EQ(virtualSlot(&DisplayStreamSource::grab), 2U);
    EXPECT_EQ(virtualSlot(&DisplayStreamSource::start), 3U);
    EXPECT_EQ(virtualSlot(&DisplayStreamSource::stop), 4U);
    EXPECT_TRUE(std::has_virtual_destructor_v<DisplayStreamSource>);
}

TEST(DisplayStreamClientTable, HasThreeEntriesBeforeTheCallbacks) {
    EXPECT_EQ(virtualSlot(&DisplayStreamClient::hostOperation), 2U);
    EXPECT_EQ(virtualSlot(&DisplayStreamClient::pixelsGrabbed), 3U);
    EXPECT_EQ(virtualSlot(&DisplayStreamClient::rectsChanged), 4U);
    EXPECT_EQ(virtualSlot(&DisplayStreamClient::rectsMoved), 5U);
    EXPECT_TRUE(std::has_virtual_destructor_v<DisplayStreamClient>);
}

} // namespace
