#include "platform/linux/x11/DisplayList.h"

#include "platform/linux/x11/Monitors.h"

#include <xcb/randr.h>

#include <algorithm>

namespace platform::x11 {
namespace {

std::string nameOfAtom(Connection& connection, xcb_atom_t atom) {
    const auto answer = connection.wait<xcb_get_atom_name_reply_t>(
        xcb_get_atom_name(connection.get(), atom).sequence, "A display's name");
    if (answer == nullptr)
        return "";
    const auto length = static_cast<std::size_t>(xcb_get_atom_name_name_length(answer.get()));
    return {xcb_get_atom_name_name(answer.get()), length};
}

/// From the timings of one mode; 0 where they do not say.
double refreshOf(const xcb_randr_mode_info_t& mode) {
    double lines = static_cast<double>(mode.htotal) * mode.vtotal;
    if ((mode.mode_flags & XCB_RANDR_MODE_FLAG_DOUBLE_SCAN) != 0)
        lines *= 2;
    if ((mode.mode_flags & XCB_RANDR_MODE_FLAG_INTERLACE) != 0)
        lines /= 2;
    return lines > 0 ? mode.dot_clock / lines : 0;
}

/// Answers how often each output refreshes its display. Asks for all outputs at once.
class RefreshRates {
public:
    explicit RefreshRates(Connection& server)
        : connection(server),
          resources(server.wait<xcb_randr_get_screen_resources_current_reply_t>(
              xcb_randr_get_screen_resources_current(server.get(), server.root()).sequence,
              "The screen's modes")) {}

    double of(xcb_randr_output_t output) const {
        const auto mode = output != 0 && resources != nullptr ? modeOf(output) : xcb_randr_mode_t{};
        if (mode == 0)
            return unknown;
        for (auto it = xcb_randr_get_screen_resources_current_modes_iterator(resources.get());
             it.rem != 0; xcb_randr_mode_info_next(&it)) {
            const double rate = it.data->id == mode ? refreshOf(*it.data) : 0;
            if (rate >= 1)
                return rate;
        }
        return unknown;
    }

private:
    static constexpr double unknown = 60;

    xcb_randr_mode_t modeOf(xcb_randr_output_t output) const {
        const auto info = connection.wait<xcb_randr_get_output_info_reply_t>(
            xcb_randr_get_output_info(connection.get(), output, resources->config_timestamp)
                .sequence,
            "An output");
        if (info == nullptr || info->crtc == 0)
            return 0;
        const auto crtc = connection.wait<xcb_randr_get_crtc_info_reply_t>(
            xcb_randr_get_crtc_info(connection.get(), info->crtc, resources->config_timestamp)
                .sequence,
            "A display's mode");
        return crtc != nullptr ? crtc->mode : 0;
    }

    Connection& connection;
    Reply<xcb_randr_get_screen_resources_current_reply_t> resources;
};

DisplayInfo wholeScreen(Connection& connection) {
    DisplayInfo display;
    display.id = wholeScreenId;
    display.isPrimary = true;
    display.name = "screen";
    const auto size = connection.wait<xcb_get_geometry_reply_t>(
        xcb_get_geometry(connection.get(), connection.root()).sequence, "The screen's size");
    if (size != nullptr)
        display.place = PixelRect::ofSize(0, 0, size->width, size->height);
    return display;
}

} // namespace

std::vector<DisplayInfo> listDisplays(Connection& connection) {
    if (!connection.extensions().randrMonitors)
        return {wholeScreen(connection)};
    const auto answer = connection.wait<xcb_randr_get_monitors_reply_t>(
        xcb_randr_get_monitors(connection.get(), connection.root(), 1).sequence, "The displays");
    if (answer == nullptr)
        return {};
    const RefreshRates rates(connection);
    std::vector<DisplayInfo> displays;
    for (const Monitor& monitor : monitorsOf(*answer))
        displays.push_back({monitor.id, monitor.place, monitor.isPrimary, rates.of(monitor.output),
                            nameOfAtom(connection, monitor.name)});
    const auto primary = std::ranges::find_if(displays, &DisplayInfo::isPrimary);
    if (primary != displays.end())
        std::rotate(displays.begin(), primary, primary + 1);
    return displays;
}

std::optional<DisplayInfo> findDisplay(Connection& connection, CGDirectDisplayID id) {
    for (const DisplayInfo& display : listDisplays(connection)) {
        if (id == 0 || display.id == id)
            return display;
    }
    return std::nullopt;
}

} // namespace platform::x11
