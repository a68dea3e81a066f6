#include "platform/linux/x11/QueryConnection.h"

#include <string>
#include <unistd.h>

namespace platform::x11 {

namespace {

[[clang::no_destroy]] constinit std::mutex connectionMutex;

/// The connection, and what it was opened for. Guarded by connectionMutex.
struct Kept {
    std::unique_ptr<Connection> connection;
    std::string display;
    pid_t process = -1;
};

Kept& kept() {
    [[clang::no_destroy]] static Kept instance;
    return instance;
}

std::string displayName() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): a host that changes its environment does so early
    const char* name = std::getenv("DISPLAY");
    return name != nullptr ? name : "";
}

/// To disconnect would shut the socket down for the parent too.
void forgetParents(Kept& state) {
    if (state.connection == nullptr || state.process == getpid())
        return;
    close(state.connection->fd());
    (void)state.connection.release(); // NOLINT(bugprone-unused-return-value): left alone for good
}

/// What the server tells every client (a new keyboard layout, say) would pile up. Also the way to
/// learn that the server is gone before it is asked anything.
void dropEvents(Connection& connection) {
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection.get())}) {
    }
}

Connection* current(Kept& state) {
    forgetParents(state);
    if (state.connection != nullptr)
        dropEvents(*state.connection);
    std::string name = displayName();
    if (state.connection != nullptr && !state.connection->isBroken() && name == state.display)
        return state.connection.get();
    state.connection = Connection::open(name.c_str());
    state.display = std::move(name);
    state.process = getpid();
    return state.connection.get();
}

} // namespace

QueryConnection::QueryConnection() : lock(connectionMutex), connection(current(kept())) {
    if (connection != nullptr)
        guard.emplace(*connection);
}

} // namespace platform::x11
