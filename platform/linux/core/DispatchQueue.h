#pragma once

#include "platform/linux/core/Object.h"
#include "platform/linux/core/Ref.h"

#include <dispatch/dispatch.h>

struct _GMainContext;

namespace platform {

/// Runs blocks one after the other in a GLib main context: the main queue in the default one, a
/// serial queue in one of its own, which a thread of its own runs until the queue is given back and
/// has run what it holds. That thread receives no signals of the host.
/// Threads: any.
class DispatchQueue : public Object {
public:
    static DispatchQueue& main();

    /// Errors: null, with a log line, when the system gives no thread.
    static Ref<DispatchQueue> createSerial(const char* label);

    /// The queue behind a handle, and back.
    static DispatchQueue* of(dispatch_queue_t handle) noexcept;
    dispatch_queue_t handle() noexcept;

    virtual void async(dispatch_block_t block) = 0;

    /// Where GSources of a stream on this queue belong. Lives as long as the queue.
    virtual _GMainContext* context() const noexcept = 0;

protected:
    explicit DispatchQueue(Lifetime lifetime) noexcept : Object(ObjectType::Queue, lifetime) {}
};

/// The main context of the queue behind the handle. Lives as long as the queue; a stream retains
/// the queue while it uses it.
_GMainContext* contextOf(dispatch_queue_t queue) noexcept;

/// One reference to the queue behind the handle.
Ref<DispatchQueue> retainQueue(dispatch_queue_t queue) noexcept;

} // namespace platform
