#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace platform::x11 {

struct FreeDeleter {
    void operator()(void* p) const noexcept { std::free(p); }
};

/// A reply, event or error of the server; xcb allocates them with malloc.
template <typename T>
using Reply = std::unique_ptr<T, FreeDeleter>;

/// What the server offers beyond the core protocol, found out once, before any request that needs
/// it: a request of an absent extension would cost the whole connection.
struct Extensions {
    bool damage = false;
    bool xfixes = false; ///< regions, version 2 or later
    bool render = false;
    bool randr = false;
    bool randrMonitors = false; ///< RANDR 1.5
    bool shm = false;
    bool shmFds = false;        ///< segments may be passed as descriptors
    bool sharedPixmaps = false; ///< the server can draw straight into a segment
    std::uint8_t damageFirstEvent = 0;
    std::uint8_t randrFirstEvent = 0;
};

/// Owns one connection to an X server.
/// Errors: a server that is gone makes the connection broken, which every operation answers with a
/// null or failed result; nothing throws, and no signal reaches the host (see SigpipeGuard).
/// Threads: one at a time.
class Connection {
public:
    /// How long a start-up question may take before the server counts as unresponsive.
    static constexpr std::chrono::milliseconds answerTime{5000};

    /// Connects to the display of this name, or to the one that DISPLAY names.
    /// Errors: null, with the reason in the log.
    static std::unique_ptr<Connection> open(const char* displayName = nullptr);

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    xcb_connection_t* get() const noexcept { return xcb; }
    const xcb_screen_t& screen() const noexcept { return *rootScreen; }
    xcb_window_t root() const noexcept { return rootScreen->root; }
    const Extensions& extensions() const noexcept { return found; }
    int fd() const noexcept { return xcb_get_file_descriptor(xcb); }
    bool isBroken() const noexcept { return xcb_connection_has_error(xcb) != 0; }
    std::uint32_t newId() const noexcept { return xcb_generate_id(xcb); }

    /// Sends what is buffered and waits for the reply to this request.
    /// Errors: null when the server reports an error (then logged under `what`), does not answer in
    /// time, or is gone.
    template <typename T>
    Reply<T> wait(unsigned sequence, const char* what,
                  std::chrono::milliseconds limit = answerTime) {
        return Reply<T>(static_cast<T*>(waitForReply(sequence, what, limit)));
    }

    /// Waits until the server has served a checked request that has no reply.
    /// Errors: false as for wait().
    bool check(xcb_void_cookie_t cookie, const char* what);

private:
    Connection(xcb_connection_t* connection, int screenNumber);
    void findExtensions();
    void* waitForReply(unsigned sequence, const char* what, std::chrono::milliseconds limit);

    xcb_connection_t* xcb;
    const xcb_screen_t* rootScreen = nullptr;
    Extensions found;
};

/// Logs an error that the server reported for a request.
void logError(const char* what, const xcb_generic_error_t& error);

/// Keeps SIGPIPE from the host while xcb writes to a server that may have died: xcb writes without
/// MSG_NOSIGNAL. Every entry from outside that may write holds one.
/// Threads: for the calling thread only.
class SigpipeGuard {
public:
    explicit SigpipeGuard(const Connection& watched) noexcept;
    SigpipeGuard(const SigpipeGuard&) = delete;
    SigpipeGuard& operator=(const SigpipeGuard&) = delete;
    ~SigpipeGuard();

private:
    const Connection& connection;
    bool wasBroken;
    sigset_t oldMask;
};

} // namespace platform::x11
