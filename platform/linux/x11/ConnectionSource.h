#pragma once

#include "platform/linux/x11/Connection.h"

#include <cstdint>
#include <functional>
#include <optional>

#include <glib.h>

namespace platform::x11 {

/// A connection as a GLib source: wakes a main context when the server has sent something, when a
/// set time has come, or when the server is gone; at no other time.
/// Threads: attach, detach and the work on one thread at a time.
class ConnectionSource {
public:
    /// Called in the context's dispatch. It takes all events (nextEvent) and polls for its replies:
    /// what is left in xcb's queues no longer shows on the socket. It may destroy the source.
    using Work = std::function<void()>;

    /// Ownership: the connection outlives the source.
    ConnectionSource(Connection& connection, const char* name, Work work);
    ~ConnectionSource() { detach(); }
    ConnectionSource(const ConnectionSource&) = delete;
    ConnectionSource& operator=(const ConnectionSource&) = delete;

    /// Lets the context serve it, and calls the work once as soon as that runs.
    void attach(GMainContext* context);
    void detach();

    /// The GLib source while attached, else null. Ownership: this object's.
    GSource* get() const noexcept { return source; }

    /// Calls the work at this time, too; null: not for the time alone.
    /// Units: microseconds of g_get_monotonic_time.
    void wakeAt(std::optional<std::int64_t> time) noexcept;

    /// The next event that is there, or null. Does not wait.
    Reply<xcb_generic_event_t> nextEvent();

private:
    struct Wrapper;

    Connection& connection;
    const char* const name;
    const Work work;
    GSource* source = nullptr;
    gpointer fdTag = nullptr;
    Reply<xcb_generic_event_t> stash; ///< found by prepare
};

} // namespace platform::x11
