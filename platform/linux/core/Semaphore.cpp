#include "platform/linux/core/Object.h"

#include <dispatch/dispatch.h>

#include <cerrno>
#include <semaphore.h>

namespace platform {

namespace {

/// Counts in one atomic word: below zero it says how many wait. Only those that must wait, and who
/// wakes them, meet in the kernel's semaphore.
class Semaphore final : public Object {
public:
    explicit Semaphore(std::intptr_t initial) noexcept
        : Object(ObjectType::Semaphore), count(initial) {
        sem_init(&waiters, 0, 0);
    }
    ~Semaphore() override { sem_destroy(&waiters); }

    static Semaphore* of(dispatch_semaphore_t handle) noexcept {
        return static_cast<Semaphore*>(reinterpret_cast<Object*>(handle));
    }

    bool tryWait() noexcept {
        std::intptr_t seen = count.load(std::memory_order_relaxed);
        while (seen > 0) {
            if (count.compare_exchange_weak(seen, seen - 1, std::memory_order_acquire,
                                            std::memory_order_relaxed))
                return true;
        }
        return false;
    }

    void wait() noexcept {
        if (count.fetch_sub(1, std::memory_order_acquire) > 0)
            return;
        while (sem_wait(&waiters) != 0 && errno == EINTR) {
        }
    }

    /// Whether somebody was waiting.
    bool signal() noexcept {
        if (count.fetch_add(1, std::memory_order_release) >= 0)
            return false;
        sem_post(&waiters);
        return true;
    }

private:
    std::atomic<std::intptr_t> count;
    sem_t waiters;
};

} // namespace

} // namespace platform

dispatch_semaphore_t dispatch_semaphore_create(intptr_t count) {
    if (count < 0)
        return nullptr;
    platform::Object* semaphore = new platform::Semaphore(count);
    return reinterpret_cast<dispatch_semaphore_t>(semaphore);
}

intptr_t dispatch_semaphore_wait(dispatch_semaphore_t semaphore, dispatch_time_t timeout) {
    if (timeout == DISPATCH_TIME_NOW)
        return platform::Semaphore::of(semaphore)->tryWait() ? 0 : 1;
    platform::Semaphore::of(semaphore)->wait();
    return 0;
}

intptr_t dispatch_semaphore_signal(dispatch_semaphore_t semaphore) {
    return platform::Semaphore::of(semaphore)->signal() ? 1 : 0;
}
