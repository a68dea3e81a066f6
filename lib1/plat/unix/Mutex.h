#pragma once

#include <pthread.h>

namespace plat {

/// A lock that its owner may take again: the owner must give it back as often as it took it.
/// It fits std::lock_guard. Where the system has no recursive locks (said on standard error),
/// taking it again waits for good.
class Mutex {
public:
    Mutex() noexcept { pthread_mutex_init(&mutex, recAttr()); }
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;
    ~Mutex() { pthread_mutex_destroy(&mutex); }

    void lock() noexcept { pthread_mutex_lock(&mutex); }
    void unlock() noexcept { pthread_mutex_unlock(&mutex); }

    /// The attribute of recursive locks, one for the process. Threads: any.
    static const pthread_mutexattr_t* recAttr() noexcept;

private:
    friend class Condition; // it waits with the system's mutex

    pthread_mutex_t mutex;
};

} // namespace plat
