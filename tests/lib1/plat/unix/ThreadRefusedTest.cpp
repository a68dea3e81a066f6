// A system that has no thread to give, played by a pthread_create of this program's own. Sanitizers
// put themselves in the same place, so this test is built without them.
#include "plat/unix/Thread.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace {

int asked = 0;

} // namespace

extern "C" __attribute__((visibility("default"))) int
pthread_create(pthread_t* thread, const pthread_attr_t*, void* (*)(void*), void*) noexcept {
    ++asked;
    *thread = pthread_t(0x1234); // the system leaves the handle undefined
    return EAGAIN;
}

namespace {

TEST(RefusedThread, CountsAsStartedAndIsJoinedWithoutWaiting) {
    plat::Thread thread("worker", nullptr);
    thread.start();
    thread.start();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(thread.getState(), plat::Thread::State::Started);
    EXPECT_EQ(thread.join(), &thread);
    EXPECT_EQ(thread.getState(), plat::Thread::State::Joined);
}

} // namespace
