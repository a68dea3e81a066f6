#pragma once

#include <dispatch/dispatch.h>

namespace svr {

/// Takes a semaphore for the length of a scope, however long that takes, and gives it back on every
/// way out. The semaphore must outlive the scope.
class SemaphoreLock {
public:
    explicit SemaphoreLock(dispatch_semaphore_t semaphore) noexcept : sem(semaphore) {
        dispatch_semaphore_wait(sem, DISPATCH_TIME_FOREVER);
    }
    SemaphoreLock(const SemaphoreLock&) = delete;
    SemaphoreLock& operator=(const SemaphoreLock&) = delete;
    ~SemaphoreLock() { dispatch_semaphore_signal(sem); }

private:
    dispatch_semaphore_t sem;
};

/// Runs a block on the main thread: at once if the caller says that it is there, otherwise later,
/// through the main queue, which copies the block.
void runOnMainThread(bool isMainThread, dispatch_block_t block);

} // namespace svr
