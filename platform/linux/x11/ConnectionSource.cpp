#include "platform/linux/x11/ConnectionSource.h"

#include <utility>

namespace platform::x11 {

struct ConnectionSource::Wrapper {
    GSource base;
    ConnectionSource* owner;

    static ConnectionSource& ownerOf(GSource* source) noexcept {
        return *reinterpret_cast<Wrapper*>(source)->owner;
    }

    // An event that another request's reply brought along no longer shows on the socket.
    static gboolean prepare(GSource* source, gint* timeout) {
        ConnectionSource& owner = ownerOf(source);
        *timeout = -1;
        if (owner.stash == nullptr)
            owner.stash.reset(xcb_poll_for_queued_event(owner.connection.get()));
        return owner.stash != nullptr || owner.connection.isBroken();
    }

    static gboolean check(GSource* source) {
        const ConnectionSource& owner = ownerOf(source);
        return owner.stash != nullptr || g_source_query_unix_fd(source, owner.fdTag) != 0;
    }

    static gboolean dispatch(GSource* source, GSourceFunc /*unused*/, gpointer /*unused*/) {
        const Work work = ownerOf(source).work; // the owner may end inside
        work();
        return G_SOURCE_CONTINUE;
    }

    static GSourceFuncs functions;
};

GSourceFuncs ConnectionSource::Wrapper::functions = {
    .prepare = prepare,
    .check = check,
    .dispatch = dispatch,
    .finalize = nullptr,
    .closure_callback = nullptr,
    .closure_marshal = nullptr,
};

ConnectionSource::ConnectionSource(Connection& served, const char* sourceName, Work onActivity)
    : connection(served), name(sourceName), work(std::move(onActivity)) {}

void ConnectionSource::attach(GMainContext* context) {
    source = g_source_new(&Wrapper::functions, sizeof(Wrapper));
    reinterpret_cast<Wrapper*>(source)->owner = this;
    g_source_set_name(source, name);
    // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange): GLib's flags are an enum
    const auto conditions = static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR);
    fdTag = g_source_add_unix_fd(source, connection.fd(), conditions);
    g_source_set_ready_time(source, 0);
    g_source_attach(source, context);
}

void ConnectionSource::detach() {
    if (source == nullptr)
        return;
    g_source_destroy(source);
    g_source_unref(std::exchange(source, nullptr));
}

void ConnectionSource::wakeAt(std::optional<std::int64_t> time) noexcept {
    if (source != nullptr)
        g_source_set_ready_time(source, time.value_or(-1));
}

Reply<xcb_generic_event_t> ConnectionSource::nextEvent() {
    if (stash != nullptr)
        return std::exchange(stash, nullptr);
    return Reply<xcb_generic_event_t>(xcb_poll_for_event(connection.get()));
}

} // namespace platform::x11
