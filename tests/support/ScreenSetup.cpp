#include "support/ScreenSetup.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <sys/uio.h>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

namespace support {

namespace {

struct FreeDeleter {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

template <class T>
using Reply = std::unique_ptr<T, FreeDeleter>;

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error("The X server refuses: " + what);
}

Reply<xcb_randr_get_screen_resources_reply_t> resourcesOf(xcb_connection_t* xcb,
                                                          xcb_window_t root) {
    Reply<xcb_randr_get_screen_resources_reply_t> reply(xcb_randr_get_screen_resources_reply(
        xcb, xcb_randr_get_screen_resources(xcb, root), nullptr));
    if (!reply || reply->num_outputs == 0 || reply->num_crtcs == 0)
        fail("screen resources");
    return reply;
}

/// The whole request; the server counts its words.
struct SetMonitorRequest {
    std::uint8_t majorOpcode; ///< this and the next two are filled in by xcb
    std::uint8_t minorOpcode;
    std::uint16_t words;
    xcb_window_t window;
    xcb_randr_monitor_info_t info;
    std::uint32_t output;
};

/// By hand, because xcb_randr_set_monitor of libxcb 1.15 sends a part that it never set.
xcb_void_cookie_t sendSetMonitor(xcb_connection_t* xcb, SetMonitorRequest& request) {
    static constexpr xcb_protocol_request_t protocol{1, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
    const std::size_t size =
        sizeof request - (request.info.nOutput == 0 ? sizeof request.output : 0);
    // xcb uses the two parts in front of those that it is given.
    std::array<iovec, 4> parts{};
    parts[2] = {&request, size};
    return {xcb_send_request(xcb, XCB_REQUEST_CHECKED, &parts[2], &protocol)};
}

} // namespace

ScreenSetup::ScreenSetup(const std::string& display)
    : xcb(xcb_connect(display.c_str(), nullptr)), root(0) {
    if (xcb_connection_has_error(xcb) != 0) {
        xcb_disconnect(xcb);
        throw std::runtime_error("No X server at " + display);
    }
    root = xcb_setup_roots_iterator(xcb_get_setup(xcb)).data->root;
    const Reply<xcb_randr_query_version_reply_t> version(
        xcb_randr_query_version_reply(xcb, xcb_randr_query_version(xcb, 1, 5), nullptr));
}

ScreenSetup::~ScreenSetup() {
    xcb_disconnect(xcb);
}

void ScreenSetup::require(xcb_void_cookie_t cookie, const char* what) {
    const Reply<xcb_generic_error_t> error(xcb_request_check(xcb, cookie));
    if (error || xcb_connection_has_error(xcb) != 0)
        fail(what);
}

void ScreenSetup::resize(int width, int height, int refreshHz) {
    const auto resources = resourcesOf(xcb, root);
    const std::uint32_t output = xcb_randr_get_screen_resources_outputs(resources.get())[0];
    static int number = 0;
    const std::string name = std::to_string(width) + "x" + std::to_string(height) + "-" +
                             std::to_string(getpid()) + "-" + std::to_string(++number);
    xcb_randr_mode_info_t mode{};
    mode.width = static_cast<std::uint16_t>(width);
    mode.height = static_cast<std::uint16_t>(height);
    mode.hsync_start = mode.width;
    mode.hsync_end = mode.width;
    mode.htotal = static_cast<std::uint16_t>(width + 100);
    mode.vsync_start = mode.height;
    mode.vsync_end = mode.height;
    mode.vtotal = static_cast<std::uint16_t>(height + 20);
    mode.dot_clock = std::uint32_t{mode.htotal} * mode.vtotal * static_cast<unsigned>(refreshHz);
    mode.name_len = static_cast<std::uint16_t>(name.size());
    const Reply<xcb_randr_create_mode_reply_t> made(xcb_randr_create_mode_reply(
        xcb,
        xcb_randr_create_mode(xcb, root, mode, static_cast<std::uint32_t>(name.size()),
                              name.c_str()),
        nullptr));
    if (!made)
        fail("a new mode");
    require(xcb_randr_add_output_mode_checked(xcb, output, made->mode), "a mode of the output");
    // As one step for whoever watches: the output is off while the screen changes its size.
    xcb_grab_server(xcb);
    setMode(XCB_NONE);
    require(xcb_randr_set_screen_size_checked(xcb, root, mode.width, mode.height,
                                              static_cast<std::uint32_t>(width),
                                              static_cast<std::uint32_t>(height)),
            "a screen size");
    setMode(made->mode);
    xcb_ungrab_server(xcb);
    xcb_flush(xcb);
}

void ScreenSetup::turnOutputOff() {
    setMode(XCB_NONE);
}

void ScreenSetup::setMode(std::uint32_t mode) {
    const auto resources = resourcesOf(xcb, root);
    const std::uint32_t* outputs = xcb_randr_get_screen_resources_outputs(resources.get());
    const std::uint32_t crtc = xcb_randr_get_screen_resources_crtcs(resources.get())[0];
    const Reply<xcb_randr_set_crtc_config_reply_t> reply(xcb_randr_set_crtc_config_reply(
        xcb,
        xcb_randr_set_crtc_config(xcb, crtc, XCB_CURRENT_TIME, resources->config_timestamp, 0, 0,
                                  mode, XCB_RANDR_ROTATION_ROTATE_0, mode == XCB_NONE ? 0 : 1,
                                  outputs),
        nullptr));
    if (!reply || reply->status != XCB_RANDR_SET_CONFIG_SUCCESS)
        fail("a mode");
}

void ScreenSetup::setMonitor(const std::string& name, int x, int y, int width, int height,
                             bool isPrimary, bool takesOutput) {
    SetMonitorRequest monitor{};
    monitor.window = root;
    monitor.info.name = atomOf(name);
    monitor.info.primary = isPrimary;
    monitor.info.nOutput = takesOutput ? 1 : 0;
    monitor.info.x = static_cast<std::int16_t>(x);
    monitor.info.y = static_cast<std::int16_t>(y);
    monitor.info.width = static_cast<std::uint16_t>(width);
    monitor.info.height = static_cast<std::uint16_t>(height);
    monitor.output = takesOutput ? firstOutput() : 0;
    // One of that name is refused, so it goes first; nobody sees the step between.
    xcb_grab_server(xcb);
    const Reply<xcb_generic_error_t> notThere(
        xcb_request_check(xcb, xcb_randr_delete_monitor_checked(xcb, root, monitor.info.name)));
    const xcb_void_cookie_t sent = sendSetMonitor(xcb, monitor);
    xcb_ungrab_server(xcb);
    require(sent, "a monitor");
}

void ScreenSetup::deleteMonitor(const std::string& name) {
    require(xcb_randr_delete_monitor_checked(xcb, root, atomOf(name)), "a monitor less");
}

std::uint32_t ScreenSetup::firstOutput() {
    return xcb_randr_get_screen_resources_outputs(resourcesOf(xcb, root).get())[0];
}

xcb_atom_t ScreenSetup::atomOf(const std::string& name) {
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        xcb, xcb_intern_atom(xcb, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
        nullptr));
    if (!reply)
        fail("an atom");
    return reply->atom;
}

} // namespace support
