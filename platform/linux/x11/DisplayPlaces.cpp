#include "platform/linux/x11/DisplayPlaces.h"

#include "platform/linux/x11/DisplayList.h"
#include "platform/linux/x11/Monitors.h"

#include <utility>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

namespace platform::x11 {

namespace {

DisplayPlacesQuery::Answer placesOf(const xcb_randr_get_monitors_reply_t& reply) {
    const std::vector<Monitor> monitors = monitorsOf(reply);
    const Monitor* primary = findMonitor(monitors, 0);
    DisplayPlacesQuery::Answer places;
    places.reserve(monitors.size());
    if (primary != nullptr)
        places.push_back({primary->id, primary->place});
    for (const Monitor& monitor : monitors) {
        if (&monitor != primary)
            places.push_back({monitor.id, monitor.place});
    }
    return places;
}

} // namespace

DisplayPlacesQuery::~DisplayPlacesQuery() {
    if (isAsking())
        xcb_discard_reply(connection.get(), sequence);
}

void DisplayPlacesQuery::ask() {
    if (connection.extensions().randrMonitors)
        sequence = xcb_randr_get_monitors(connection.get(), connection.root(), 1).sequence;
    else
        sequence = xcb_get_geometry(connection.get(), connection.root()).sequence;
}

std::optional<DisplayPlacesQuery::Answer> DisplayPlacesQuery::answerOf(const void* reply) const {
    if (reply == nullptr)
        return std::nullopt;
    if (connection.extensions().randrMonitors)
        return placesOf(*static_cast<const xcb_randr_get_monitors_reply_t*>(reply));
    const auto& size = *static_cast<const xcb_get_geometry_reply_t*>(reply);
    return Answer{{wholeScreenId, PixelRect::ofSize(0, 0, size.width, size.height)}};
}

std::optional<DisplayPlacesQuery::Answer> DisplayPlacesQuery::poll() {
    void* reply = nullptr;
    xcb_generic_error_t* problem = nullptr;
    if (!isAsking() || xcb_poll_for_reply(connection.get(), sequence, &reply, &problem) == 0)
        return std::nullopt;
    sequence = 0;
    const Reply<void> ownedReply(reply);
    if (const Reply<xcb_generic_error_t> error(problem); error != nullptr)
        logError("The displays", *error);
    return answerOf(reply);
}

std::optional<DisplayPlacesQuery::Answer> DisplayPlacesQuery::wait() {
    ask();
    const auto reply =
        connection.wait<xcb_generic_reply_t>(std::exchange(sequence, 0), "The displays");
    return answerOf(reply.get());
}

} // namespace platform::x11
