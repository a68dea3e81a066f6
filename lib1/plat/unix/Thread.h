#pragma once

#include <memory>

#include <pthread.h>

#include "plat/unix/Mutex.h"

namespace plat {

class Thread;

/// The body of a thread that is no subclass of Thread.
class ThreadRunner {
public:
    ThreadRunner() = default;
    ThreadRunner(const ThreadRunner&) = delete;
    ThreadRunner& operator=(const ThreadRunner&) = delete;
    virtual ~ThreadRunner();

    /// Executes the body. Threads: called on the new thread, which it receives.
    virtual void run(Thread* thread) = 0;
};

/// A thread with a name and a state; what happens to it is logged at debug level.
/// Errors: a plat::Exception out of the body is logged and ends the thread as a return does; any
/// other exception ends the process.
/// Threads: start(), detach() and getState() may be called from any thread; join() from one at a
/// time.
class Thread {
public:
    enum class State : int {
        Created = 0,  ///< not started
        Started = 1,  ///< the system thread was made
        Finished = 2, ///< the body has returned or failed
        Joined = 3,   ///< join() has completed
        Native = 4    ///< stands for a thread that was not started here
    };

    /// Ownership: copies the name; keeps the runner (which may be null) and does not own it: it
    /// must outlive the body.
    Thread(const char* threadName, ThreadRunner* body);
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;
    /// Joins first. A subclass with a body of its own joins in its own destructor: here its run()
    /// is gone already.
    virtual ~Thread();

    /// The body: calls the runner, if there is one.
    virtual void run();

    /// Makes the system thread, once; afterwards it does nothing.
    void start();

    /// Waits for the end of the body; returns at once if the thread was never started, and it can
    /// not be started any more. Returns the object, or null where there is nothing to wait for: a
    /// native thread, or one that deletes itself.
    Thread* join();

    /// Asks the thread to delete its own object, made with new, once its body has returned. False,
    /// and nothing changes, if the body has ended already or the thread is native: the object then
    /// stays with its owner. After true nobody may touch the object unless the body still waits for
    /// the one who does.
    bool detach();

    /// Logs what happens to the thread, with its name and handle; the detail may be null.
    void logAction(const char* action, const char* detail) const;

    State getState();
    const char* getName() const noexcept { return name.get(); }

    /// The object of the calling thread; for one that was not started here, a native object is made
    /// on first use. Ownership: not the caller's; native objects are never freed.
    static Thread* self();

private:
    struct Layout;

    explicit Thread(pthread_t native);
    void runBody();
    static void* threadProc(void* object);

    std::unique_ptr<char[]> name;
    pthread_t thread;
    ThreadRunner* runner;
    Mutex mutex; ///< guards state and autoDelete
    State state;
    bool autoDelete;
};

} // namespace plat
