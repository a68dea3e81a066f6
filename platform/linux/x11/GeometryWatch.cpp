#include "platform/linux/x11/GeometryWatch.h"

#include "plat/LogWriter.h"
#include "platform/linux/x11/Monitors.h"

#include <xcb/randr.h>
#include <xcb/xcbext.h>

#include <utility>

static plat::LogWriter vlog("GeometryWatch");

namespace platform::x11 {
namespace {

/// Null while the answer is not there; an empty one when the server refused.
template <typename T>
std::optional<Reply<T>> pollFor(Connection& connection, unsigned sequence) {
    void* answer = nullptr;
    xcb_generic_error_t* problem = nullptr;
    if (xcb_poll_for_reply(connection.get(), sequence, &answer, &problem) == 0)
        return std::nullopt;
    const Reply<xcb_generic_error_t> error(problem);
    return Reply<T>(static_cast<T*>(answer));
}

} // namespace

GeometryWatch::GeometryWatch(Connection& server, CGDirectDisplayID id, const PixelRect& where)
    : connection(server), display(id), place(where),
      root(PixelRect::ofSize(0, 0, server.screen().width_in_pixels,
                             server.screen().height_in_pixels)) {
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(server.get(), server.root(), XCB_CW_EVENT_MASK, &mask);
    if (server.extensions().randr)
        xcb_randr_select_input(server.get(), server.root(), XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE);
    // What changed since `where` was found went by without an event.
    ask();
}

GeometryWatch::~GeometryWatch() {
    discardAnswers();
}

bool GeometryWatch::onEvent(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7f;
    if (type == XCB_CONFIGURE_NOTIFY) {
        const auto& configured = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        if (configured.window != connection.root()) {
            haveWindowsMoved = true;
            return false;
        }
    } else if (!connection.extensions().randr ||
               type != connection.extensions().randrFirstEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY) {
        return false;
    }
    // The sizes in such events may be a step behind each other: what counts is asked for.
    if (asked)
        isStale = true;
    else
        ask();
    return true;
}

void GeometryWatch::ask() {
    isStale = false;
    asked = Question{};
    asked->rootSize = xcb_get_geometry(connection.get(), connection.root()).sequence;
    if (connection.extensions().randrMonitors)
        asked->monitors = xcb_randr_get_monitors(connection.get(), connection.root(), 1).sequence;
}

void GeometryWatch::discardAnswers() {
    if (!asked)
        return;
    for (const unsigned sequence : {asked->rootSize, asked->monitors}) {
        if (sequence != 0)
            xcb_discard_reply(connection.get(), sequence);
    }
    asked.reset();
}

bool GeometryWatch::takeWindowsMoved() noexcept {
    return std::exchange(haveWindowsMoved, false);
}

bool GeometryWatch::poll() {
    if (!asked)
        return false;
    PixelRect newPlace = place;
    if (asked->monitors != 0) {
        const auto answer = pollFor<xcb_randr_get_monitors_reply_t>(connection, asked->monitors);
        if (!answer)
            return false;
        asked->monitors = 0;
        if (*answer != nullptr) {
            const auto monitors = monitorsOf(**answer);
            const Monitor* monitor = findMonitor(monitors, display);
            newPlace = monitor != nullptr ? monitor->place : PixelRect{};
        }
    }
    // Asked first, so answered first.
    const auto size = pollFor<xcb_get_geometry_reply_t>(connection, asked->rootSize);
    if (!size)
        return false;
    PixelRect newRoot = root;
    if (*size != nullptr)
        newRoot = PixelRect::ofSize(0, 0, (*size)->width, (*size)->height);
    asked.reset();
    if (isStale)
        ask();
    return apply(newRoot, newPlace);
}

bool GeometryWatch::apply(const PixelRect& newRoot, const PixelRect& newPlace) {
    if (newRoot == root && newPlace == place)
        return false;
    if (newPlace.isEmpty() && !place.isEmpty())
        vlog.error("Display %u is gone; its picture is black until it is back", display);
    else if (place.isEmpty() && !newPlace.isEmpty())
        vlog.info("Display %u is back", display);
    else
        vlog.info("Display %u is now %d x %d pixels at (%d, %d), on a screen of %d x %d", display,
                  newPlace.width(), newPlace.height(), newPlace.left, newPlace.top, newRoot.width(),
                  newRoot.height());
    root = newRoot;
    place = newPlace;
    return true;
}

Viewport GeometryWatch::viewport(int width, int height) const noexcept {
    Viewport viewport;
    viewport.x = place.left;
    viewport.y = place.top;
    viewport.visible = viewport.toFrame(place.intersection(root))
                           .intersection(PixelRect::ofSize(0, 0, width, height));
    if (viewport.visible.isEmpty())
        viewport.visible = {};
    return viewport;
}

} // namespace platform::x11
