#include "platform/linux/x11/ReconfigurationWatch.h"

#include "plat/LogWriter.h"
#include "platform/linux/core/Guard.h"

#include <algorithm>
#include <glib.h>
#include <utility>
#include <xcb/randr.h>

static plat::LogWriter vlog("DisplayReconfiguration");

namespace platform::x11 {

namespace {

const DisplayPlace* findPlace(const std::vector<DisplayPlace>& places, CGDirectDisplayID id) {
    const auto found = std::find_if(places.begin(), places.end(),
                                    [id](const DisplayPlace& place) { return place.id == id; });
    return found != places.end() ? &*found : nullptr;
}

CGDisplayChangeSummaryFlags flagsBetween(const PixelRect& before, const PixelRect& after) {
    CGDisplayChangeSummaryFlags flags = 0;
    if (before.left != after.left || before.top != after.top)
        flags |= kCGDisplayMovedFlag;
    if (before.width() != after.width() || before.height() != after.height())
        flags |= kCGDisplayDesktopShapeChangedFlag;
    return flags;
}

} // namespace

std::vector<DisplayChange> changesBetween(const std::vector<DisplayPlace>& before,
                                          const std::vector<DisplayPlace>& after) {
    std::vector<DisplayChange> changes;
    for (const DisplayPlace& old : before) {
        if (findPlace(after, old.id) == nullptr)
            changes.push_back({old.id, kCGDisplayRemoveFlag});
    }
    for (const DisplayPlace& now : after) {
        const DisplayPlace* old = findPlace(before, now.id);
        const CGDisplayChangeSummaryFlags flags =
            old != nullptr ? flagsBetween(old->place, now.place) : kCGDisplayAddFlag;
        if (flags != 0)
            changes.push_back({now.id, flags});
    }
    return changes;
}

/// One connection and its source in the default context. The source keeps the session alive.
/// Threads: made on the thread that registers, then used by the context's alone; the lock of its
/// own only hands it from one to the other.
class ReconfigurationWatch::Session : public std::enable_shared_from_this<Session> {
public:
    /// Errors: null, with the reason in the log.
    static std::shared_ptr<Session> open(ReconfigurationWatch& watch);

    Session(ReconfigurationWatch& owner, std::unique_ptr<Connection> server)
        : watch(owner), connection(std::move(server)), query(*connection) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() = default;

    /// Ends it: no dispatch begins after this.
    void close();
    bool hasEnded();

private:
    struct Source {
        GSource base;
        gpointer fdTag;
        std::shared_ptr<Session> session;
    };

    void attach();
    void selectEvents();
    static gboolean prepare(GSource* base, gint* timeout);
    static gboolean check(GSource* base);
    static gboolean dispatch(GSource* base, GSourceFunc callback, gpointer data);
    static void finalize(GSource* base);

    bool hasNews();
    void serve();
    std::vector<DisplayChange> readNews();
    void handle(const xcb_generic_event_t& event);
    void askAgain();

    ReconfigurationWatch& watch;
    std::mutex mutex;
    const std::unique_ptr<Connection> connection;
    DisplayPlacesQuery query;
    std::vector<DisplayPlace> known;
    Reply<xcb_generic_event_t> stash; ///< found by prepare
    bool isStale = false;             ///< something changed since the question under way was sent
    bool isOver = false;
    GSource* source = nullptr;
};

std::shared_ptr<ReconfigurationWatch::Session>
ReconfigurationWatch::Session::open(ReconfigurationWatch& watch) {
    std::unique_ptr<Connection> connection = Connection::open();
    if (connection == nullptr)
        return nullptr;
    auto session = std::make_shared<Session>(watch, std::move(connection));
    const SigpipeGuard guard(*session->connection);
    // In this order: what changes after the answer has an event.
    session->selectEvents();
    auto answer = session->query.wait();
    if (!answer)
        return nullptr;
    session->known = std::move(*answer);
    session->attach();
    return session;
}

void ReconfigurationWatch::Session::selectEvents() {
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection->get(), connection->root(), XCB_CW_EVENT_MASK, &mask);
    if (connection->extensions().randr)
        xcb_randr_select_input(connection->get(), connection->root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE);
}

void ReconfigurationWatch::Session::attach() {
    static GSourceFuncs functions{prepare, check, dispatch, finalize, nullptr, nullptr};
    const std::lock_guard lock(mutex);
    source = g_source_new(&functions, sizeof(Source));
    auto* own = reinterpret_cast<Source*>(source);
    std::construct_at(&own->session, shared_from_this());
    // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange): GLib's flags are an enum
    const auto conditions = static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR);
    own->fdTag = g_source_add_unix_fd(source, connection->fd(), conditions);
    g_source_set_name(source, "display reconfiguration");
    g_source_attach(source, g_main_context_default());
}

void ReconfigurationWatch::Session::close() {
    GSource* attached = nullptr;
    {
        const std::lock_guard lock(mutex);
        attached = std::exchange(source, nullptr);
    }
    if (attached == nullptr)
        return;
    g_source_destroy(attached);
    g_source_unref(attached);
}

bool ReconfigurationWatch::Session::hasEnded() {
    const std::lock_guard lock(mutex);
    return isOver;
}

void ReconfigurationWatch::Session::finalize(GSource* base) {
    std::destroy_at(&reinterpret_cast<Source*>(base)->session);
}

gboolean ReconfigurationWatch::Session::prepare(GSource* base, gint* timeout) {
    *timeout = -1;
    return reinterpret_cast<Source*>(base)->session->hasNews() ? TRUE : FALSE;
}

gboolean ReconfigurationWatch::Session::check(GSource* base) {
    auto* own = reinterpret_cast<Source*>(base);
    return g_source_query_unix_fd(base, own->fdTag) != 0 || own->session->hasNews() ? TRUE : FALSE;
}

gboolean ReconfigurationWatch::Session::dispatch(GSource* base, GSourceFunc, gpointer) {
    const std::shared_ptr<Session> session = reinterpret_cast<Source*>(base)->session;
    runGuarded("Display reconfiguration", [&] { session->serve(); });
    return G_SOURCE_CONTINUE;
}

/// Reading a reply pulls events off the socket, which then stays silent: so they are looked for in
/// the queue too.
bool ReconfigurationWatch::Session::hasNews() {
    const std::lock_guard lock(mutex);
    if (stash == nullptr)
        stash.reset(xcb_poll_for_queued_event(connection->get()));
    return stash != nullptr || connection->isBroken();
}

void ReconfigurationWatch::Session::serve() {
    const std::vector<DisplayChange> changes = readNews();
    if (hasEnded()) {
        close();
        vlog.error("The X server is gone, and its displays with it");
    }
    watch.tell(changes);
}

std::vector<DisplayChange> ReconfigurationWatch::Session::readNews() {
    const std::lock_guard lock(mutex);
    const SigpipeGuard guard(*connection);
    Reply<xcb_generic_event_t> event = std::move(stash);
    if (event == nullptr)
        event.reset(xcb_poll_for_event(connection->get()));
    for (; event != nullptr; event.reset(xcb_poll_for_event(connection->get())))
        handle(*event);
    std::vector<DisplayChange> changes;
    if (auto answer = query.poll()) {
        changes = changesBetween(known, *answer);
        known = std::move(*answer);
    }
    if (isStale && !query.isAsking())
        askAgain();
    xcb_flush(connection->get());
    isOver = connection->isBroken();
    if (isOver) {
        for (const DisplayChange& change : changesBetween(std::exchange(known, {}), {}))
            changes.push_back(change);
    }
    return changes;
}

void ReconfigurationWatch::Session::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7f;
    const Extensions& extensions = connection->extensions();
    const bool isScreenChange =
        extensions.randr && type == extensions.randrFirstEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY;
    if (!isScreenChange && type != XCB_CONFIGURE_NOTIFY)
        return;
    if (query.isAsking())
        isStale = true;
    else
        askAgain();
}

void ReconfigurationWatch::Session::askAgain() {
    isStale = false;
    query.ask();
}

ReconfigurationWatch& ReconfigurationWatch::instance() {
    [[clang::no_destroy]] static ReconfigurationWatch watch;
    return watch;
}

CGError ReconfigurationWatch::add(CGDisplayReconfigurationCallBack callback, void* userInfo) {
    if (callback == nullptr)
        return kCGErrorIllegalArgument;
    const std::lock_guard lock(mutex);
    if (session != nullptr && session->hasEnded())
        session.reset();
    if (session == nullptr)
        session = Session::open(*this);
    if (session == nullptr)
        return kCGErrorInvalidConnection;
    registrations.push_back({callback, userInfo});
    return kCGErrorSuccess;
}

CGError ReconfigurationWatch::remove(CGDisplayReconfigurationCallBack callback, void* userInfo) {
    std::shared_ptr<Session> unused;
    {
        const std::lock_guard lock(mutex);
        const auto found =
            std::find(registrations.begin(), registrations.end(), Registration{callback, userInfo});
        if (found == registrations.end())
            return kCGErrorIllegalArgument;
        registrations.erase(found);
        if (registrations.empty())
            unused = std::move(session);
    }
    if (unused != nullptr)
        unused->close();
    return kCGErrorSuccess;
}

bool ReconfigurationWatch::isRegistered(const Registration& registration) {
    const std::lock_guard lock(mutex);
    return std::find(registrations.begin(), registrations.end(), registration) !=
           registrations.end();
}

void ReconfigurationWatch::tell(const std::vector<DisplayChange>& changes) {
    std::vector<Registration> told;
    if (!changes.empty()) {
        const std::lock_guard lock(mutex);
        told = registrations;
    }
    for (const DisplayChange& change : changes) {
        for (const Registration& registration : told) {
            // An earlier callback may have removed it.
            if (!isRegistered(registration))
                continue;
            runGuarded("Display reconfiguration", [&] {
                registration.callback(change.display, change.flags, registration.userInfo);
            });
        }
    }
}

} // namespace platform::x11

CGError CGDisplayRegisterReconfigurationCallback(CGDisplayReconfigurationCallBack callback,
                                                 void* userInfo) {
    return platform::x11::ReconfigurationWatch::instance().add(callback, userInfo);
}

CGError CGDisplayRemoveReconfigurationCallback(CGDisplayReconfigurationCallBack callback,
                                               void* userInfo) {
    return platform::x11::ReconfigurationWatch::instance().remove(callback, userInfo);
}
