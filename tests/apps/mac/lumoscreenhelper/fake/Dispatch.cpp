#include <string>

#include "apps/mac/lumoscreenhelper/fake/Services.h"

using fake::Queue;
using fake::Semaphore;
using fake::Services;

dispatch_semaphore_t dispatch_semaphore_create(std::intptr_t count) {
    Semaphore* const semaphore = Services::get().makeSemaphore(count);
    Services::get().record([&] {
        return "dispatch_semaphore_create(" + std::to_string(count) + ") = " + semaphore->name;
    });
    return semaphore;
}

std::intptr_t dispatch_semaphore_wait(dispatch_semaphore_t waited, dispatch_time_t timeout) {
    auto* const semaphore = static_cast<Semaphore*>(waited);
    Services::get().record([&] {
        return "dispatch_semaphore_wait(" + semaphore->name +
               (timeout == DISPATCH_TIME_FOREVER ? ", forever)" : ", not forever)");
    });
    std::unique_lock lock(semaphore->mutex);
    ++semaphore->waiters;
    semaphore->raised.wait(lock, [&] { return semaphore->count > 0; });
    --semaphore->waiters;
    --semaphore->count;
    return 0;
}

std::intptr_t dispatch_semaphore_signal(dispatch_semaphore_t signalled) {
    auto* const semaphore = static_cast<Semaphore*>(signalled);
    Services::get().record([&] { return "dispatch_semaphore_signal(" + semaphore->name + ")"; });
    const std::lock_guard lock(semaphore->mutex);
    ++semaphore->count;
    semaphore->raised.notify_one();
    return 0;
}

dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attributes) {
    Queue* const queue = Services::get().makeQueue(label);
    Services::get().record([&] {
        return std::string("dispatch_queue_create(\"") + label +
               (attributes == DISPATCH_QUEUE_SERIAL ? "\", serial) = " : "\", other) = ") +
               queue->name;
    });
    return queue;
}

dispatch_queue_t dispatch_get_main_queue() {
    return &Services::get().mainQueue;
}

void dispatch_release(dispatch_object_t object) {
    Services& services = Services::get();
    for (Queue& queue : services.queues) {
        if (static_cast<dispatch_object_t>(&queue) != object)
            continue;
        services.record([&] { return "dispatch_release(" + queue.name + ")"; });
        if (--queue.refs < 0)
            services.addError("dispatch_release(" + queue.name + "): gone");
        return;
    }
    services.addError("dispatch_release: no queue");
}

void dispatch_async(dispatch_queue_t queue, dispatch_block_t block) {
    Services::get().record(
        [&] { return "dispatch_async(" + static_cast<Queue*>(queue)->name + ")"; });
    Services::get().addBlock(block);
}
