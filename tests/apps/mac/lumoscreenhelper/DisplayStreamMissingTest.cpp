// A system that cannot take pictures of its displays: the lookups of this program find nothing.
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/mac/lumoscreenhelper/RecordingClient.h"
#include "apps/mac/lumoscreenhelper/fake/Services.h"
#include "lumoscreenhelper/DisplayStreamImpl.h"
#include "os/mac/FrameworkPath.h"
#include "plat/DynamicFn.h"
#include "svr/mac/DisplayStreamSource.h"

namespace {

using fake::Services;
using svr::DisplayStreamImpl;
using testing::Contains;
using testing::ElementsAre;

struct MissingPictures : testing::Test {
    MissingPictures() {
        plat::DynamicFnBase::checkDllFn = [](const char*, const char*) { return false; };
        services.reset();
    }

    // The message of what start() throws.
    static std::string failureOf(DisplayStreamImpl& engine, const char* queueName) {
        try {
            engine.start(queueName);
        } catch (const plat::DynamicFnLoadFailed& failure) {
            return failure.message.get();
        }
        return "nothing";
    }

    Services& services = Services::get();
    RecordingClient client;
};

TEST_F(MissingPictures, ComeOutOfStart) {
    DisplayStreamImpl engine(&client, 7);
    EXPECT_EQ(failureOf(engine, nullptr), "Function CGDisplayCreateImageForRect not found in " +
                                              std::string(os::coreGraphicsPath().str()) +
                                              " library");
}

TEST_F(MissingPictures, ComeOutOfTheSourcesStart) {
    const std::unique_ptr<svr::DisplayStreamSource> source(NewDisplayStream(&client, 7));
    EXPECT_THROW(source->start(), plat::DynamicFnLoadFailed);
}

TEST_F(MissingPictures, LeaveQueueAndDictionaryInPlace) {
    {
        DisplayStreamImpl engine(&client, 7);
        services.takeCalls();
        failureOf(engine, "frames");
        EXPECT_THAT(services.takeCalls(),
                    ElementsAre("CFDictionaryCreate(default, ShowCursor = false, no callbacks) = "
                                "dictionary1",
                                "dispatch_queue_create(\"frames\", serial) = queue1",
                                "CGDisplayBounds(7)"));
        EXPECT_THAT(services.alive(), ElementsAre("dictionary1", "queue1"));
        engine.stop();
        EXPECT_THAT(services.takeCalls(), ElementsAre("dispatch_release(queue1)"));
    }
    EXPECT_THAT(services.alive(), testing::IsEmpty());
}

} // namespace
