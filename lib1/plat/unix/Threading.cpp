#include "plat/unix/Thread.h"

#include <bit>
#include <cstddef>
#include <cstdio>
#include <mutex>

#include "plat/Assertion.h"
#include "plat/LogWriter.h"
#include "plat/StringUtil.h"
#include "plat/unix/Condition.h"
#include "plat/unix/ThreadLocalPtr.h"

namespace plat {

static LogWriter vlog("Threading");

static_assert(sizeof(Mutex) == sizeof(pthread_mutex_t), "the system's mutex and nothing else");
static_assert(sizeof(ThreadLocalPtr<Thread>) == sizeof(pthread_key_t));

struct Condition::Layout {
    static_assert(offsetof(Condition, mutex) == 0);
    static_assert(offsetof(Condition, cond) >= sizeof(Mutex*));
};

struct Thread::Layout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // both compilers lay out polymorphic types so
    static_assert(offsetof(Thread, name) == sizeof(void*));
    static_assert(offsetof(Thread, thread) == 2 * sizeof(void*));
    static_assert(offsetof(Thread, runner) == 3 * sizeof(void*));
    static_assert(offsetof(Thread, mutex) == 4 * sizeof(void*));
    static_assert(offsetof(Thread, state) == 4 * sizeof(void*) + sizeof(Mutex));
    static_assert(offsetof(Thread, autoDelete) == 4 * sizeof(void*) + sizeof(Mutex) + sizeof(int));
#pragma GCC diagnostic pop
};

namespace {

class RecursiveAttribute {
public:
    RecursiveAttribute() noexcept {
        pthread_mutexattr_init(&attribute);
        if (pthread_mutexattr_settype(&attribute, PTHREAD_MUTEX_RECURSIVE) == 0)
            return;
        std::fputs("WARNING: system libpthread has no recursive mutexes; deadlock may result.",
                   stderr);
    }
    RecursiveAttribute(const RecursiveAttribute&) = delete;
    RecursiveAttribute& operator=(const RecursiveAttribute&) = delete;
    ~RecursiveAttribute() { pthread_mutexattr_destroy(&attribute); }

    const pthread_mutexattr_t* get() const noexcept { return &attribute; }

private:
    pthread_mutexattr_t attribute;
};

// Not at file level: an initialiser of another file may ask for its thread before this file's turn.
ThreadLocalPtr<Thread>& thisThread() noexcept {
    static ThreadLocalPtr<Thread> slot;
    return slot;
}

} // namespace

const pthread_mutexattr_t* Mutex::recAttr() noexcept {
    static const RecursiveAttribute attribute;
    return attribute.get();
}

Condition::Condition(Mutex* heldMutex) noexcept : mutex(heldMutex) {
    pthread_cond_init(&cond, nullptr);
}

Condition::~Condition() {
    pthread_cond_destroy(&cond);
}

bool Condition::wait(int timeoutMs) {
    LUMO_ASSERT_FATAL_MSG(timeoutMs == -1, "Condition timed wait not implemented yet");
    pthread_cond_wait(&cond, &mutex->mutex);
    return true;
}

void Condition::signal() noexcept {
    pthread_cond_signal(&cond);
}

void Condition::broadcast() noexcept {
    pthread_cond_broadcast(&cond);
}

ThreadRunner::~ThreadRunner() = default;

Thread::Thread(const char* threadName, ThreadRunner* body)
    : name(strDup(threadName)), thread(), runner(body), state(State::Created), autoDelete(false) {
    logAction("created", nullptr);
}

Thread::Thread(pthread_t native)
    : name(strDup("Native")), thread(native), runner(nullptr), state(State::Native),
      autoDelete(false) {
    logAction("native", nullptr);
}

Thread::~Thread() {
    logAction("destroy", nullptr);
    join();
    logAction("destroyed", nullptr);
}

void Thread::run() {
    if (runner != nullptr)
        runner->run(this);
}

void Thread::start() {
    const std::lock_guard lock(mutex);
    if (state != State::Created)
        return;
    state = State::Started;
    // A refusal is nobody's business but the handle's: the system may have stored one all the same,
    // and join() must not wait for a thread that never was.
    if (pthread_create(&thread, nullptr, threadProc, this) != 0)
        thread = pthread_t();
}

Thread* Thread::join() {
    pthread_t handle;
    {
        const std::lock_guard lock(mutex);
        if (autoDelete || state == State::Native)
            return nullptr;
        if (state == State::Joined)
            return this;
        handle = thread;
    }
    logAction("join", nullptr);
    if (handle != pthread_t())
        pthread_join(handle, nullptr);
    {
        const std::lock_guard lock(mutex);
        state = State::Joined;
    }
    logAction("joined", nullptr);
    return this;
}

bool Thread::detach() {
    const std::lock_guard lock(mutex);
    if (state != State::Created && state != State::Started)
        return false;
    autoDelete = true;
    return true;
}

Thread::State Thread::getState() {
    const std::lock_guard lock(mutex);
    return state;
}

Thread* Thread::self() {
    Thread* current = thisThread().get();
    if (current == nullptr) {
        current = new Thread(pthread_self());
        thisThread().set(current);
    }
    return current;
}

void Thread::logAction(const char* action, const char* detail) const {
    vlog.debug("%-9s %s %lx%s%s", action, name.get(), std::bit_cast<unsigned long>(thread),
               detail == nullptr ? "" : ": ", detail == nullptr ? "" : detail);
}

// Only our own family is caught: a catch-all would also stop the unwinding of a cancelled thread.
void Thread::runBody() {
    try {
        run();
    } catch (const Exception& failure) {
        logAction("failed", failure.message.get());
        return;
    }
    logAction("stopped", nullptr);
}

void* Thread::threadProc(void* object) {
    auto* const current = static_cast<Thread*>(object);
    thisThread().set(current);
    current->logAction("started", nullptr);
    current->runBody();
    bool deleteIt = false;
    {
        const std::lock_guard lock(current->mutex);
        current->state = State::Finished;
        deleteIt = current->autoDelete;
    }
    if (deleteIt) {
        pthread_detach(current->thread);
        delete current;
    }
    return nullptr;
}

} // namespace plat
