#include "platform/linux/x11/Monitors.h"

namespace platform::x11 {

std::vector<Monitor> monitorsOf(const xcb_randr_get_monitors_reply_t& answer) {
    std::vector<Monitor> monitors;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(&answer); it.rem != 0;
         xcb_randr_monitor_info_next(&it)) {
        const xcb_randr_monitor_info_t& info = *it.data;
        Monitor monitor;
        if (xcb_randr_monitor_info_outputs_length(&info) > 0)
            monitor.output = xcb_randr_monitor_info_outputs(&info)[0];
        monitor.id = monitor.output != 0 ? monitor.output : nameFlag | info.name;
        monitor.place = PixelRect::ofSize(info.x, info.y, info.width, info.height);
        monitor.isPrimary = info.primary != 0;
        monitor.name = info.name;
        monitors.push_back(monitor);
    }
    return monitors;
}

const Monitor* findMonitor(const std::vector<Monitor>& monitors, CGDirectDisplayID id) noexcept {
    for (const Monitor& monitor : monitors) {
        if (id != 0 ? monitor.id == id : monitor.isPrimary)
            return &monitor;
    }
    return id == 0 && !monitors.empty() ? &monitors.front() : nullptr;
}

} // namespace platform::x11
