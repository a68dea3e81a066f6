#include "lib1/AllocationHook.h"

#include <dispatch/dispatch.h>

#include <gtest/gtest.h>

namespace {

TEST(Semaphore, AllocatesNothingToWaitOrSignal) {
    dispatch_semaphore_t semaphore = dispatch_semaphore_create(1);
    const int before = AllocationHook::count;
    dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
    dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW);
    dispatch_semaphore_signal(semaphore);
    EXPECT_EQ(AllocationHook::count, before);
    dispatch_release(semaphore);
}

} // namespace
