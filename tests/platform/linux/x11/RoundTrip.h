#pragma once

#include "platform/linux/x11/Connection.h"

#include <vector>

namespace platform::x11 {

/// Returns when the server has served everything that was sent, and when what it sent meanwhile is
/// here; false if it is gone.
inline bool roundTrip(Connection& connection) {
    const unsigned sequence = xcb_get_input_focus(connection.get()).sequence;
    return connection.wait<xcb_get_input_focus_reply_t>(sequence, "Round trip") != nullptr;
}

/// The events that are here after a round trip, the oldest first.
inline std::vector<Reply<xcb_generic_event_t>> eventsOf(Connection& connection) {
    std::vector<Reply<xcb_generic_event_t>> events;
    roundTrip(connection);
    while (xcb_generic_event_t* event = xcb_poll_for_queued_event(connection.get()))
        events.emplace_back(event);
    return events;
}

} // namespace platform::x11
