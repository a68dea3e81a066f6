#pragma once

#include <pthread.h>

namespace plat {

class Mutex;

/// Lets threads wait until another one says that something has changed.
/// Ownership: keeps the pointer to its mutex, which must outlive it.
class Condition {
public:
    explicit Condition(Mutex* heldMutex) noexcept;
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;
    ~Condition();

    /// Gives the mutex back, waits for signal() or broadcast(), and takes the mutex again. It may
    /// also return without either: the caller looks whether what it waits for has come.
    /// Shape: `timeoutMs` is -1, for ever; the caller holds the mutex, taken once.
    /// Errors: any other time asserts. Always true.
    bool wait(int timeoutMs);

    /// Wakes one waiting thread, if there is one. Threads: any.
    void signal() noexcept;

    /// Wakes all waiting threads. Threads: any.
    void broadcast() noexcept;

private:
    struct Layout;

    Mutex* mutex;
    pthread_cond_t cond;
};

} // namespace plat
