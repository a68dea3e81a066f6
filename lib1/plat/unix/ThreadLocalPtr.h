#pragma once

#include <pthread.h>

namespace plat {

/// One pointer a thread, null at first.
/// Ownership: frees nothing of what is stored in it, neither at the end of a thread nor at its own.
/// Errors: a system that has no slot left makes a slot that stays null.
template <typename T>
class ThreadLocalPtr {
public:
    ThreadLocalPtr() noexcept { pthread_key_create(&key, nullptr); }
    ThreadLocalPtr(const ThreadLocalPtr&) = delete;
    ThreadLocalPtr& operator=(const ThreadLocalPtr&) = delete;
    ~ThreadLocalPtr() { pthread_key_delete(key); }

    T* get() const noexcept { return static_cast<T*>(pthread_getspecific(key)); }
    void set(T* value) noexcept { pthread_setspecific(key, value); }

private:
    pthread_key_t key = static_cast<pthread_key_t>(-1); // no slot's: the system refuses it
};

} // namespace plat
