#include "platform/linux/x11/Connection.h"

#include "plat/LogWriter.h"

#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/shm.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <poll.h>

static plat::LogWriter vlog("X11Connection");

namespace platform::x11 {
namespace {

using Clock = std::chrono::steady_clock;

const xcb_screen_t* screenAt(xcb_connection_t* xcb, int number) {
    for (auto it = xcb_setup_roots_iterator(xcb_get_setup(xcb)); it.rem != 0;
         xcb_screen_next(&it)) {
        if (number-- == 0)
            return it.data;
    }
    return nullptr;
}

/// Sleeps until the server has sent something; false when the deadline has passed.
bool waitForInput(int fd, Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0)
        return false;
    pollfd input{fd, POLLIN, 0};
    return poll(&input, 1, static_cast<int>(left)) >= 0 || errno == EINTR;
}

const char* connectError(int code) {
    switch (code) {
    case XCB_CONN_ERROR:
        return "no server answers there";
    case XCB_CONN_CLOSED_PARSE_ERR:
        return "the display name is malformed";
    case XCB_CONN_CLOSED_INVALID_SCREEN:
        return "the server has no such screen";
    default:
        return "the connection failed";
    }
}

} // namespace

void logError(const char* what, const xcb_generic_error_t& error) {
    const int code = error.error_code;
    const int major = error.major_code;
    const int minor = error.minor_code;
    vlog.error("%s failed: X error %d, request %d.%d, resource 0x%x", what, code, major, minor,
               error.resource_id);
}

std::unique_ptr<Connection> Connection::open(const char* displayName) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): xcb reads it the same way; a host sets it before
    const char* name = displayName != nullptr ? displayName : std::getenv("DISPLAY");
    if (name == nullptr || *name == '\0') {
        vlog.error("No display: DISPLAY is not set");
        return nullptr;
    }
    int screenNumber = 0;
    xcb_connection_t* xcb = xcb_connect(name, &screenNumber);
    if (const int code = xcb_connection_has_error(xcb); code != 0) {
        vlog.error("Cannot open display %s: %s", name, connectError(code));
        xcb_disconnect(xcb);
        return nullptr;
    }
    std::unique_ptr<Connection> connection(new Connection(xcb, screenNumber));
    if (connection->rootScreen == nullptr) {
        vlog.error("Cannot open display %s: the server has no such screen", name);
        return nullptr;
    }
    const SigpipeGuard guard(*connection);
    connection->findExtensions();
    if (connection->isBroken()) {
        vlog.error("Display %s went away while it was asked for its extensions", name);
        return nullptr;
    }
    return connection;
}

Connection::Connection(xcb_connection_t* connection, int screenNumber)
    : xcb(connection), rootScreen(screenAt(connection, screenNumber)) {}

Connection::~Connection() {
    xcb_disconnect(xcb);
}

// Two rounds for all of them together: the names, then the versions. A version query also has to
// come before any other request of its extension.
void Connection::findExtensions() {
    xcb_extension_t* const all[] = {&xcb_damage_id, &xcb_xfixes_id, &xcb_render_id, &xcb_randr_id,
                                    &xcb_shm_id};
    for (xcb_extension_t* extension : all)
        xcb_prefetch_extension_data(xcb, extension);
    const auto find = [this](xcb_extension_t* extension) -> const xcb_query_extension_reply_t* {
        const auto* data = xcb_get_extension_data(xcb, extension);
        return data != nullptr && data->present != 0 ? data : nullptr;
    };
    const auto* damage = find(&xcb_damage_id);
    const auto* xfixes = find(&xcb_xfixes_id);
    const auto* render = find(&xcb_render_id);
    const auto* randr = find(&xcb_randr_id);
    const auto* shm = find(&xcb_shm_id);

    const unsigned damageAsked =
        damage != nullptr ? xcb_damage_query_version(xcb, 1, 1).sequence : 0;
    const unsigned xfixesAsked =
        xfixes != nullptr ? xcb_xfixes_query_version(xcb, 5, 0).sequence : 0;
    const unsigned renderAsked =
        render != nullptr ? xcb_render_query_version(xcb, 0, 11).sequence : 0;
    const unsigned randrAsked = randr != nullptr ? xcb_randr_query_version(xcb, 1, 5).sequence : 0;
    const unsigned shmAsked = shm != nullptr ? xcb_shm_query_version(xcb).sequence : 0;

    if (damage != nullptr) {
        found.damage =
            wait<xcb_damage_query_version_reply_t>(damageAsked, "DAMAGE version") != nullptr;
        found.damageFirstEvent = damage->first_event;
    }
    if (xfixes != nullptr) {
        const auto reply = wait<xcb_xfixes_query_version_reply_t>(xfixesAsked, "XFIXES version");
        found.xfixes = reply != nullptr && reply->major_version >= 2;
    }
    if (render != nullptr)
        found.render =
            wait<xcb_render_query_version_reply_t>(renderAsked, "RENDER version") != nullptr;
    if (randr != nullptr) {
        const auto reply = wait<xcb_randr_query_version_reply_t>(randrAsked, "RANDR version");
        found.randr = reply != nullptr && (reply->major_version > 1 || reply->minor_version >= 2);
        found.randrMonitors =
            found.randr && (reply->major_version > 1 || reply->minor_version >= 5);
        found.randrFirstEvent = randr->first_event;
    }
    if (shm != nullptr) {
        const auto reply = wait<xcb_shm_query_version_reply_t>(shmAsked, "MIT-SHM version");
        found.shm = reply != nullptr;
        found.shmFds = found.shm && (reply->major_version > 1 || reply->minor_version >= 2);
        found.sharedPixmaps = found.shm && reply->shared_pixmaps != 0 &&
                              reply->pixmap_format == XCB_IMAGE_FORMAT_Z_PIXMAP;
    }
}

void* Connection::waitForReply(unsigned sequence, const char* what,
                               std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    xcb_flush(xcb);
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    while (xcb_poll_for_reply(xcb, sequence, &reply, &error) == 0) {
        if (!waitForInput(fd(), deadline)) {
            vlog.error("%s: the server does not answer", what);
            xcb_discard_reply(xcb, sequence);
            return nullptr;
        }
    }
    if (const Reply<xcb_generic_error_t> owned(error); owned != nullptr)
        logError(what, *owned);
    return reply;
}

// A request without a reply is known to be served once a later one is answered; after that the
// check itself cannot block.
bool Connection::check(xcb_void_cookie_t cookie, const char* what) {
    const auto later = xcb_get_input_focus(xcb);
    const bool answered = wait<xcb_get_input_focus_reply_t>(later.sequence, what) != nullptr;
    if (!answered) {
        xcb_discard_reply(xcb, cookie.sequence);
        return false;
    }
    const Reply<xcb_generic_error_t> error(xcb_request_check(xcb, cookie));
    if (error == nullptr)
        return true;
    logError(what, *error);
    return false;
}

SigpipeGuard::SigpipeGuard(const Connection& watched) noexcept
    : connection(watched), wasBroken(watched.isBroken()) {
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &oldMask);
}

SigpipeGuard::~SigpipeGuard() {
    // A host that blocks the signal itself may be waiting for it: then it is not ours to take.
    if (!wasBroken && connection.isBroken() && sigismember(&oldMask, SIGPIPE) == 0) {
        sigset_t pipe;
        sigemptyset(&pipe);
        sigaddset(&pipe, SIGPIPE);
        const timespec now{0, 0};
        while (sigtimedwait(&pipe, nullptr, &now) == -1 && errno == EINTR) {
        }
    }
    pthread_sigmask(SIG_SETMASK, &oldMask, nullptr);
}

} // namespace platform::x11
