#include "platform/linux/x11/DamageWatch.h"

#include "plat/LogWriter.h"

static plat::LogWriter vlog("DamageWatch");

namespace platform::x11 {

std::unique_ptr<DamageWatch> DamageWatch::open(Connection& connection) {
    const Extensions& has = connection.extensions();
    if (!has.damage || !has.xfixes) {
        vlog.info("The server has no %s", has.damage ? "XFIXES" : "DAMAGE");
        return nullptr;
    }
    std::unique_ptr<DamageWatch> watch(new DamageWatch(connection));
    const auto created = xcb_damage_create_checked(
        connection.get(), watch->damage, connection.root(), XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    return connection.check(created, "Watching the screen for damage") ? std::move(watch) : nullptr;
}

DamageWatch::DamageWatch(Connection& server)
    : connection(server), damage(server.newId()), region(server.newId()) {
    xcb_xfixes_create_region(server.get(), region, 0, nullptr);
}

DamageWatch::~DamageWatch() {
    xcb_damage_destroy(connection.get(), damage);
    xcb_xfixes_destroy_region(connection.get(), region);
}

bool DamageWatch::isNotify(const xcb_generic_event_t& event) const noexcept {
    return (event.response_type & 0x7f) ==
           connection.extensions().damageFirstEvent + XCB_DAMAGE_NOTIFY;
}

void DamageWatch::sendTake() {
    xcb_damage_subtract(connection.get(), damage, XCB_NONE, region);
}

unsigned DamageWatch::sendFetch() {
    return xcb_xfixes_fetch_region(connection.get(), region).sequence;
}

std::vector<PixelRect> DamageWatch::rectsOf(const xcb_xfixes_fetch_region_reply_t& answer) {
    const xcb_rectangle_t* from = xcb_xfixes_fetch_region_rectangles(&answer);
    const int count = xcb_xfixes_fetch_region_rectangles_length(&answer);
    std::vector<PixelRect> rects;
    rects.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        rects.push_back(PixelRect::ofSize(from[i].x, from[i].y, from[i].width, from[i].height));
    return rects;
}

} // namespace platform::x11
