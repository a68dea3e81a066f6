#pragma once

#include "platform/linux/core/Object.h"

#include <CoreFoundation/CFRunLoop.h>

struct _GMainContext;

/// What a run loop serves: something that can hang itself into a GLib main context, usually as one
/// GSource. The run loop decides when: it attaches a source that was not in a loop yet, and keeps a
/// reference while the source is in the loop. Whoever adds and removes one source on two threads
/// sees to the order.
struct __CFRunLoopSource : platform::Object {
    /// Attach a GSource of your own to the context. Called once; detach comes before any other
    /// attach. Threads: the thread that adds the source, which need not be the one that runs the
    /// context: from now on the GSource may be dispatched there. No lock is held.
    virtual void attach(_GMainContext* context) = 0;

    /// Destroy that GSource. Threads: the thread that removes the source, or the one in which the
    /// run loop ends. A dispatch that is under way on another thread may still finish afterwards.
    /// No lock is held.
    virtual void detach() = 0;

protected:
    __CFRunLoopSource() noexcept : Object(platform::ObjectType::RunLoopSource) {}

private:
    friend struct __CFRunLoop;

    struct __CFRunLoop* loop = nullptr; ///< the one that it is in
};

namespace platform {
using RunLoopSource = __CFRunLoopSource;
}
