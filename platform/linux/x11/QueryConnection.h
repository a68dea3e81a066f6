#pragma once

#include "platform/linux/x11/Connection.h"

#include <mutex>
#include <optional>

namespace platform::x11 {

/// Lends the one connection that this process keeps for short questions about displays; opened on
/// first use, and anew when DISPLAY names another server, when the server went away, and in a
/// forked child, which must not touch its parent's.
/// Threads: any; one borrows it at a time, the others wait. Nobody's signals are touched.
class QueryConnection {
public:
    QueryConnection();
    QueryConnection(const QueryConnection&) = delete;
    QueryConnection& operator=(const QueryConnection&) = delete;

    /// Null, with the reason in the log, when there is no server.
    Connection* get() const noexcept { return connection; }
    explicit operator bool() const noexcept { return connection != nullptr; }

private:
    std::unique_lock<std::mutex> lock;
    Connection* connection;
    std::optional<SigpipeGuard> guard;
};

} // namespace platform::x11
