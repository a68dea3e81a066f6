#include "platform/linux/core/DispatchQueue.h"

#include "plat/LogWriter.h"
#include "platform/linux/core/BlockList.h"

#include <array>
#include <atomic>
#include <csignal>
#include <glib.h>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

static plat::LogWriter vlog("DispatchQueue");

namespace platform {

namespace {

/// Signals that the host handles are for its own threads; those that a fault of the running code
/// raises cannot be put off.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t most;
        sigfillset(&most);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT})
            sigdelset(&most, fault);
        pthread_sigmask(SIG_SETMASK, &most, &before);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }

private:
    sigset_t before;
};

struct ContextDeleter {
    void operator()(GMainContext* context) const noexcept { g_main_context_unref(context); }
};
using ContextPtr = std::unique_ptr<GMainContext, ContextDeleter>;

/// The system takes at most 15 bytes.
void nameThisThread(const std::string& label) {
    std::array<char, 16> name{};
    label.copy(name.data(), name.size() - 1);
    pthread_setname_np(pthread_self(), name.data());
}

} // namespace

/// A serial queue's inside: shared by the queue and its thread, so that either may go first.
class QueueThread {
public:
    explicit QueueThread(const std::string& label)
        : name(label), context(g_main_context_new()), blocks(label, context.get()) {}
    QueueThread(const QueueThread&) = delete;
    QueueThread& operator=(const QueueThread&) = delete;
    ~QueueThread() = default;

    /// Errors: throws std::system_error when there is no thread to be had.
    static void start(const std::shared_ptr<QueueThread>& queue) {
        const SignalsBlocked signals;
        std::thread([queue] { queue->run(); }).detach();
    }

    void finish() {
        isFinishing = true;
        g_main_context_wakeup(context.get());
    }

    void add(dispatch_block_t block) { blocks.add(block); }
    GMainContext* mainContext() const noexcept { return context.get(); }

private:
    void run() {
        nameThisThread(name);
        g_main_context_push_thread_default(context.get());
        while (!isFinishing || !blocks.isEmpty())
            g_main_context_iteration(context.get(), TRUE);
        g_main_context_pop_thread_default(context.get());
    }

    const std::string name;
    const ContextPtr context;
    BlockList blocks;
    std::atomic<bool> isFinishing = false;
};

namespace {

class SerialQueue final : public DispatchQueue {
public:
    explicit SerialQueue(std::shared_ptr<QueueThread> queueThread) noexcept
        : DispatchQueue(Lifetime::Counted), thread(std::move(queueThread)) {}
    /// Also on the queue's own thread, inside a block: the thread ends when the block has.
    ~SerialQueue() override { thread->finish(); }

    void async(dispatch_block_t block) override {
        // The block may run, and give the queue back, before add() has returned here.
        const std::shared_ptr<QueueThread> held = thread;
        held->add(block);
    }
    GMainContext* context() const noexcept override { return thread->mainContext(); }

private:
    const std::shared_ptr<QueueThread> thread;
};

class MainQueue final : public DispatchQueue {
public:
    MainQueue()
        : DispatchQueue(Lifetime::Immortal), blocks("main queue", g_main_context_default()) {}

    void async(dispatch_block_t block) override { blocks.add(block); }
    GMainContext* context() const noexcept override { return g_main_context_default(); }

private:
    BlockList blocks;
};

} // namespace

DispatchQueue& DispatchQueue::main() {
    [[clang::no_destroy]] static MainQueue queue;
    return queue;
}

Ref<DispatchQueue> DispatchQueue::createSerial(const char* label) {
    try {
        auto thread = std::make_shared<QueueThread>(label != nullptr ? label : "");
        QueueThread::start(thread);
        return Ref<DispatchQueue>::adopt(new SerialQueue(std::move(thread)));
    } catch (const std::system_error& error) {
        vlog.error("A queue's thread could not be started (%d)", error.code().value());
        return {};
    }
}

// A handle is the object's address under another name: the public type has no content.
DispatchQueue* DispatchQueue::of(dispatch_queue_t handle) noexcept {
    return static_cast<DispatchQueue*>(reinterpret_cast<Object*>(handle));
}

dispatch_queue_t DispatchQueue::handle() noexcept {
    return reinterpret_cast<dispatch_queue_t>(static_cast<Object*>(this));
}

GMainContext* contextOf(dispatch_queue_t queue) noexcept {
    return DispatchQueue::of(queue)->context();
}

Ref<DispatchQueue> retainQueue(dispatch_queue_t queue) noexcept {
    return Ref<DispatchQueue>::share(DispatchQueue::of(queue));
}

} // namespace platform

void dispatch_release(dispatch_object_t object) {
    reinterpret_cast<platform::Object*>(object)->release();
}

dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t) {
    auto queue = platform::DispatchQueue::createSerial(label);
    return queue ? queue.detach()->handle() : nullptr;
}

dispatch_queue_t dispatch_get_main_queue() {
    return platform::DispatchQueue::main().handle();
}

void dispatch_async(dispatch_queue_t queue, dispatch_block_t block) {
    platform::DispatchQueue::of(queue)->async(block);
}
