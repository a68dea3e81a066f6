#include "platform/linux/core/RunLoop.h"

#include "plat/LogWriter.h"
#include "platform/linux/core/String.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <glib.h>
#include <mutex>
#include <optional>
#include <unistd.h>
#include <unordered_map>

static plat::LogWriter vlog("RunLoop");

using platform::Ref;
using platform::RunLoop;
using platform::RunLoopSource;

namespace {

[[clang::no_destroy]] constinit const __CFString defaultMode("kCFRunLoopDefaultMode");
[[clang::no_destroy]] constinit const __CFString commonModes("kCFRunLoopCommonModes");

/// Guards what all loops hold: which loops there are, which sources are in them, which runs are
/// under way. Never held while a source is called. Never destroyed: threads may outlive exit.
[[clang::no_destroy]] constinit std::mutex loopsMutex;

std::unordered_map<GMainContext*, RunLoop*>& loopsByContext() {
    [[clang::no_destroy]] static std::unordered_map<GMainContext*, RunLoop*> loops;
    return loops;
}

bool isMainThread() {
    return gettid() == getpid();
}

/// A context that was pushed for a thread which had none.
class OwnContext {
public:
    OwnContext() = default;
    OwnContext(const OwnContext&) = delete;
    OwnContext& operator=(const OwnContext&) = delete;
    ~OwnContext() {
        if (context == nullptr)
            return;
        if (g_main_context_get_thread_default() == context)
            g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
    }

    GMainContext* push() {
        if (context == nullptr)
            context = g_main_context_new();
        g_main_context_push_thread_default(context);
        return context;
    }

private:
    GMainContext* context = nullptr;
};

thread_local OwnContext ownContext;

gboolean neverCalled(gpointer) {
    return G_SOURCE_CONTINUE;
}

gboolean dispatchNothing(GSource*, GSourceFunc, gpointer) {
    return G_SOURCE_CONTINUE;
}

/// Never ready; its callback data are freed when the context goes.
GSourceFuncs anchorFuncs{nullptr, nullptr, dispatchNothing, nullptr, nullptr, nullptr};

/// Wakes a context at a given time, once; but only when nothing else is to be done, so that what
/// happened before the deadline is served before it.
class Alarm {
public:
    Alarm(GMainContext* context, gint64 time) : source(g_source_new(&alarmFuncs, sizeof(GSource))) {
        g_source_set_ready_time(source, time);
        g_source_set_priority(source, G_MAXINT);
        g_source_set_callback(source, ring, this, nullptr);
        g_source_attach(source, context);
    }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
    ~Alarm() {
        g_source_destroy(source);
        g_source_unref(source);
    }

    bool hasRung() const noexcept { return rung; }

private:
    static gboolean ring(gpointer alarm) {
        static_cast<Alarm*>(alarm)->rung = true;
        return G_SOURCE_REMOVE;
    }

    static gboolean dispatch(GSource*, GSourceFunc callback, gpointer data) {
        return callback(data);
    }

    static inline GSourceFuncs alarmFuncs{nullptr, nullptr, dispatch, nullptr, nullptr, nullptr};

    GSource* source;
    bool rung = false;
};

constexpr double microsPerSecond = 1e6;

/// When a run of so many seconds ends, or null if that is beyond all clocks.
std::optional<gint64> deadlineAfter(double seconds) {
    constexpr double forever = 1e9;
    if (seconds >= forever)
        return std::nullopt;
    return g_get_monotonic_time() + static_cast<gint64>(seconds * microsPerSecond);
}

} // namespace

const CFRunLoopMode kCFRunLoopDefaultMode = &defaultMode;
const CFRunLoopMode kCFRunLoopCommonModes = &commonModes;

/// One call of run(); they nest.
struct __CFRunLoop::Run {
    explicit Run(RunLoop& owner) : loop(owner), context(g_main_context_ref(owner.context)) {
        const std::lock_guard lock(loopsMutex);
        outer = std::exchange(loop.innermost, this);
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() {
        {
            const std::lock_guard lock(loopsMutex);
            loop.innermost = outer;
        }
        g_main_context_unref(context); // perhaps the end of the loop
    }

    RunLoop& loop;
    GMainContext* const context;
    Run* outer;
    std::atomic<bool> isStopped = false;
};

__CFRunLoop::__CFRunLoop(GMainContext* owner)
    : Object(platform::ObjectType::RunLoop), context(owner) {}

RunLoop* __CFRunLoop::main() {
    static RunLoop* const loop = of(g_main_context_default());
    return loop;
}

RunLoop* __CFRunLoop::current() {
    if (isMainThread())
        return main();
    if (GMainContext* pushed = g_main_context_get_thread_default())
        return of(pushed);
    if (g_main_context_is_owner(g_main_context_default()) != FALSE)
        return main();
    return of(ownContext.push());
}

RunLoop* __CFRunLoop::of(GMainContext* context) {
    RunLoop* loop = nullptr;
    {
        const std::lock_guard lock(loopsMutex);
        RunLoop*& entry = loopsByContext()[context];
        if (entry != nullptr)
            return entry;
        entry = loop = new RunLoop(context);
    }
    if (context == g_main_context_default())
        return loop;
    GSource* anchor = g_source_new(&anchorFuncs, sizeof(GSource));
    g_source_set_callback(anchor, neverCalled, loop, onContextGone);
    g_source_attach(anchor, context);
    g_source_unref(anchor);
    return loop;
}

void __CFRunLoop::onContextGone(void* data) {
    auto* loop = static_cast<RunLoop*>(data);
    {
        const std::lock_guard lock(loopsMutex);
        loopsByContext().erase(loop->context);
        loop->context = nullptr;
    }
    loop->dropSources();
    loop->release();
}

void __CFRunLoop::dropSources() {
    std::vector<Ref<RunLoopSource>> dropped;
    {
        const std::lock_guard lock(loopsMutex);
        dropped.swap(sources);
        for (const Ref<RunLoopSource>& source : dropped)
            source->loop = nullptr;
    }
    for (const Ref<RunLoopSource>& source : dropped)
        source->detach();
}

void __CFRunLoop::add(RunLoopSource* source) {
    GMainContext* target = nullptr;
    {
        const std::lock_guard lock(loopsMutex);
        if (source->loop == this || context == nullptr)
            return;
        if (source->loop == nullptr) {
            source->loop = this;
            sources.push_back(Ref<RunLoopSource>::share(source));
            target = context;
        }
    }
    if (target == nullptr)
        vlog.error("A run-loop source that is in another run loop stays there");
    else
        source->attach(target);
}

void __CFRunLoop::remove(RunLoopSource* source) {
    Ref<RunLoopSource> removed;
    {
        const std::lock_guard lock(loopsMutex);
        const auto found =
            std::find_if(sources.begin(), sources.end(),
                         [source](const auto& candidate) { return candidate.get() == source; });
        if (found == sources.end())
            return;
        removed = std::move(*found);
        sources.erase(found);
        source->loop = nullptr;
        // A run that has nothing left to wait for ends.
        if (sources.empty() && innermost != nullptr)
            g_main_context_wakeup(context);
    }
    removed->detach();
}

bool __CFRunLoop::isEmpty() const {
    const std::lock_guard lock(loopsMutex);
    return sources.empty() && context != g_main_context_default();
}

CFRunLoopRunResult __CFRunLoop::run(double seconds, bool returnAfterSourceHandled) {
    if (isEmpty())
        return kCFRunLoopRunFinished;
    const bool isOnePass = !(seconds > 0);
    const std::optional<gint64> deadline = deadlineAfter(isOnePass ? 0 : seconds);
    Run run(*this);
    std::optional<Alarm> alarm;
    if (deadline && !isOnePass)
        alarm.emplace(run.context, *deadline);
    for (;;) {
        const bool wasRung = alarm && alarm->hasRung();
        const bool served =
            g_main_context_iteration(run.context, isOnePass ? FALSE : TRUE) != FALSE;
        const bool isAlarm = alarm && alarm->hasRung() != wasRung;
        if (served && !isAlarm && returnAfterSourceHandled)
            return kCFRunLoopRunHandledSource;
        if (isOnePass || (deadline && g_get_monotonic_time() >= *deadline))
            return kCFRunLoopRunTimedOut;
        if (run.isStopped)
            return kCFRunLoopRunStopped;
        if (isEmpty())
            return kCFRunLoopRunFinished;
    }
}

void __CFRunLoop::stop() {
    const std::lock_guard lock(loopsMutex);
    if (innermost == nullptr)
        return;
    innermost->isStopped = true;
    g_main_context_wakeup(context);
}

CFRunLoopRef CFRunLoopGetCurrent() {
    return RunLoop::current();
}

CFRunLoopRef CFRunLoopGetMain() {
    return RunLoop::main();
}

void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode) {
    if (loop != nullptr && source != nullptr)
        loop->add(source);
}

void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode) {
    if (loop != nullptr && source != nullptr)
        loop->remove(source);
}

void CFRunLoopRun() {
    RunLoop::current()->run(HUGE_VAL, false);
}

CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode, CFTimeInterval seconds,
                                      Boolean returnAfterSourceHandled) {
    return RunLoop::current()->run(seconds, returnAfterSourceHandled != 0);
}

void CFRunLoopStop(CFRunLoopRef loop) {
    if (loop != nullptr)
        loop->stop();
}
