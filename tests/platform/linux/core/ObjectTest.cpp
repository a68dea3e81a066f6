#include "platform/linux/core/Object.h"
#include "platform/linux/core/Ref.h"

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace platform {
namespace {

class Probe : public Object {
public:
    explicit Probe(int& ends, Lifetime lifetime = Lifetime::Counted)
        : Object(ObjectType::Data, lifetime), deaths(ends) {}
    ~Probe() override { ++deaths; }

    static Lifetime immortal() { return Lifetime::Immortal; }

private:
    int& deaths;
};

TEST(Object, StartsWithOneReferenceAndEndsWithTheLast) {
    int deaths = 0;
    const auto* probe = new Probe(deaths);
    EXPECT_EQ(CFGetRetainCount(probe), 1);
    EXPECT_EQ(CFRetain(probe), probe);
    EXPECT_EQ(CFGetRetainCount(probe), 2);
    CFRelease(probe);
    EXPECT_EQ(deaths, 0);
    CFRelease(probe);
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): it does not follow the count
    EXPECT_EQ(deaths, 1);
}

TEST(Object, NeverEndsWhenImmortal) {
    int deaths = 0;
    {
        const Probe probe(deaths, Probe::immortal());
        CFRelease(&probe);
        CFRelease(&probe);
        CFRetain(&probe);
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(Object, CountsOnManyThreads) {
    int deaths = 0;
    const auto* probe = new Probe(deaths);
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        CFRetain(probe);
        threads.emplace_back([probe] {
            for (int n = 0; n < 10000; ++n) {
                CFRetain(probe);
                CFRelease(probe);
            }
            CFRelease(probe);
        });
    }
    CFRelease(probe);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(deaths, 1);
}

TEST(Object, TellsItsKind) {
    EXPECT_EQ(CFGetTypeID(kCFBooleanTrue), CFBooleanGetTypeID());
    EXPECT_EQ(CFGetTypeID(kCFRunLoopCommonModes), CFStringGetTypeID());
    EXPECT_NE(CFStringGetTypeID(), CFBooleanGetTypeID());
    EXPECT_NE(CFStringGetTypeID(), CFNumberGetTypeID());
    EXPECT_NE(CFStringGetTypeID(), CFDictionaryGetTypeID());
    EXPECT_NE(CFStringGetTypeID(), CFDataGetTypeID());
}

TEST(Ref, OwnsWhatItAdopts) {
    int deaths = 0;
    {
        const auto ref = Ref<Probe>::adopt(new Probe(deaths));
    }
    EXPECT_EQ(deaths, 1);
}

TEST(Ref, AddsAReferenceWhenItSharesOrIsCopied) {
    int deaths = 0;
    auto first = Ref<Probe>::adopt(new Probe(deaths));
    Ref<Probe> copy = first;
    const auto shared = Ref<Probe>::share(first.get());
    EXPECT_EQ(first->retainCount(), 3);
    EXPECT_EQ(copy, first);
    copy.reset();
    EXPECT_FALSE(copy);
    EXPECT_EQ(first->retainCount(), 2);
    const Ref<Probe>& itself = first;
    first = itself;
    EXPECT_EQ(first->retainCount(), 2);
}

TEST(Ref, GivesItsReferenceAway) {
    int deaths = 0;
    auto first = Ref<Probe>::adopt(new Probe(deaths));
    Ref<Probe> moved = std::move(first);
    EXPECT_EQ(moved->retainCount(), 1);
    const Probe* bare = moved.detach();
    EXPECT_FALSE(moved);
    EXPECT_EQ(deaths, 0);
    bare->release();
    EXPECT_EQ(deaths, 1);
}

TEST(Ref, IsEmptyAtFirst) {
    Ref<Probe> ref;
    EXPECT_EQ(ref.get(), nullptr);
    ref.reset();
    const Ref<Probe> copy = ref;
    EXPECT_FALSE(copy);
}

} // namespace
} // namespace platform
