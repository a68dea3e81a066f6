#include "platform/linux/x11/DisplayImage.h"

#include "plat/LogWriter.h"
#include "platform/linux/x11/ScreenFormat.h"

#include <limits>
#include <vector>

static plat::LogWriter vlog("DisplayImage");

namespace platform::x11 {

namespace {

/// The size that the set-up told may be an old one, and a pixel beyond the screen is refused.
PixelRect screenNow(Connection& connection) {
    const auto size = connection.wait<xcb_get_geometry_reply_t>(
        xcb_get_geometry(connection.get(), connection.root()).sequence, "The screen's size");
    return size != nullptr ? PixelRect::ofSize(0, 0, size->width, size->height) : PixelRect{};
}

bool isAskable(const PixelFormat& format, const PixelRect& area, int depth) {
    if (!format.isSupported()) {
        vlog.error("No picture of a screen of depth %d whose pixels are no colours", depth);
        return false;
    }
    constexpr std::size_t largestReply = std::numeric_limits<int>::max();
    if (format.strideBytes(area.width()) > largestReply / static_cast<std::size_t>(area.height())) {
        vlog.error("No picture of %d x %d pixels: it would not fit into an answer", area.width(),
                   area.height());
        return false;
    }
    return true;
}

} // namespace

Ref<CGImage> readImage(Connection& connection, const PixelRect& wanted) {
    const PixelRect area = wanted.intersection(screenNow(connection));
    if (area.isEmpty())
        return {};
    const PixelFormat format = screenFormat(connection);
    if (!isAskable(format, area, connection.screen().root_depth))
        return {};
    constexpr std::uint32_t allPlanes = ~0U;
    const auto answer = connection.wait<xcb_get_image_reply_t>(
        xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, connection.root(),
                      static_cast<std::int16_t>(area.left), static_cast<std::int16_t>(area.top),
                      static_cast<std::uint16_t>(area.width()),
                      static_cast<std::uint16_t>(area.height()), allPlanes)
            .sequence,
        "A picture of the screen");
    if (answer == nullptr)
        return {};
    const std::size_t stride = format.strideBytes(area.width());
    const auto height = static_cast<std::size_t>(area.height());
    const auto length = static_cast<std::size_t>(xcb_get_image_data_length(answer.get()));
    if (length < stride * height) {
        vlog.error("A picture of the screen came with %zu of %zu bytes", length, stride * height);
        return {};
    }
    const std::size_t bgraStride = static_cast<std::size_t>(area.width()) * 4;
    std::vector<std::uint8_t> pixels(bgraStride * height);
    format.toBgra(xcb_get_image_data(answer.get()), stride, pixels.data(), bgraStride, area.width(),
                  area.height());
    return Ref<CGImage>::adopt(new CGImage(area.width(), area.height(), std::move(pixels)));
}

} // namespace platform::x11
