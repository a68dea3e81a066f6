#pragma once

#include "platform/linux/core/Ref.h"
#include "platform/linux/core/RunLoopSource.h"

#include <CoreFoundation/CFRunLoop.h>

#include <vector>

/// The run loop of one GLib main context: it lives exactly as long as that context, and there is
/// one for each. It serves everything in the context, the host's own GLib sources included; modes
/// are not told apart.
/// Threads: any, but run() only on the thread whose loop it is.
struct __CFRunLoop final : platform::Object {
    /// The main thread has the default context's. Any other thread has that of its thread-default
    /// context, if the host pushed one; the main loop, while it is the one that runs the default
    /// context; else one of its own, pushed now and dropped when the thread ends.
    static __CFRunLoop* current();
    static __CFRunLoop* main();

    /// The loop of a context that is alive.
    static __CFRunLoop* of(_GMainContext* context);

    /// A source that is in another loop stays there, with a log line.
    void add(platform::RunLoopSource* source);
    void remove(platform::RunLoopSource* source);

    /// Without sources there is nothing to run for, the main loop excepted: it serves the main
    /// queue. Units: seconds; 0 or less is one pass that does not wait.
    CFRunLoopRunResult run(double seconds, bool returnAfterSourceHandled);
    void stop();

private:
    struct Run;

    explicit __CFRunLoop(_GMainContext* context);
    static void onContextGone(void* loop);
    void dropSources();
    bool isEmpty() const;

    _GMainContext* context; ///< null once it is gone
    std::vector<platform::Ref<platform::RunLoopSource>> sources;
    Run* innermost = nullptr;
};

namespace platform {
using RunLoop = __CFRunLoop;
}
