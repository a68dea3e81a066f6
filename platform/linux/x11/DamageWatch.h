#pragma once

#include "platform/linux/graphics/PixelRect.h"
#include "platform/linux/x11/Connection.h"

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include <memory>
#include <vector>

namespace platform::x11 {

/// What changes on the whole screen, as the server's own damage object collects it. It reports once
/// that there is something (level NonEmpty), and again only after that was taken: however much is
/// drawn, at most one event waits. A new one reports the whole screen at once.
/// Threads: one at a time.
class DamageWatch {
public:
    /// Errors: null, with the reason in the log, when the server lacks DAMAGE or XFIXES.
    static std::unique_ptr<DamageWatch> open(Connection& connection);
    ~DamageWatch();
    DamageWatch(const DamageWatch&) = delete;
    DamageWatch& operator=(const DamageWatch&) = delete;

    bool isNotify(const xcb_generic_event_t& event) const noexcept;

    /// Sends: move what was collected into taken(), and collect anew.
    void sendTake();

    /// Sends the question for the rectangles of taken(), and returns its sequence number. The
    /// answer also proves that everything sent before has been served.
    unsigned sendFetch();

    /// The server's region with what the last take brought; root coordinates.
    xcb_xfixes_region_t taken() const noexcept { return region; }

    /// The rectangles of an answer; root coordinates.
    static std::vector<PixelRect> rectsOf(const xcb_xfixes_fetch_region_reply_t& answer);

private:
    explicit DamageWatch(Connection& server);

    Connection& connection;
    xcb_damage_damage_t damage;
    xcb_xfixes_region_t region;
};

} // namespace platform::x11
