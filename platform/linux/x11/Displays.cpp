#include "platform/linux/x11/DisplayImage.h"
#include "platform/linux/x11/DisplayPlaces.h"
#include "platform/linux/x11/DisplayScale.h"
#include "platform/linux/x11/QueryConnection.h"

#include <CoreGraphics/CGDirectDisplay.h>

#include <algorithm>
#include <cmath>

using platform::PixelRect;
using platform::x11::Connection;
using platform::x11::DisplayPlace;
using platform::x11::DisplayPlacesQuery;
using platform::x11::displayScale;
using platform::x11::QueryConnection;

namespace {

std::vector<DisplayPlace> allPlaces(Connection& connection) {
    return DisplayPlacesQuery(connection).wait().value_or(std::vector<DisplayPlace>());
}

/// Empty for a display that is not there.
PixelRect placeOf(Connection& connection, CGDirectDisplayID display) {
    for (const DisplayPlace& candidate : allPlaces(connection)) {
        if (display == kCGNullDirectDisplay || candidate.id == display)
            return candidate.place;
    }
    return {};
}

/// Points to pixels; what no screen reaches is cut, so that the result can be added to.
int toPixels(CGFloat points, double (*rounded)(double)) {
    constexpr double beyondAnyScreen = 1 << 20;
    const double pixels = static_cast<double>(points) * displayScale();
    return static_cast<int>(rounded(std::clamp(pixels, -beyondAnyScreen, beyondAnyScreen)));
}

double roundedDown(double value) {
    return std::floor(value);
}
double roundedUp(double value) {
    return std::ceil(value);
}

/// Every pixel that the area touches; empty for what is no area.
PixelRect toPixels(const CGRect& area) {
    const CGFloat right = area.origin.x + area.size.width;
    const CGFloat bottom = area.origin.y + area.size.height;
    if (std::isnan(right) || std::isnan(bottom) || area.size.width == 0 || area.size.height == 0)
        return {};
    return {toPixels(std::min(area.origin.x, right), roundedDown),
            toPixels(std::min(area.origin.y, bottom), roundedDown),
            toPixels(std::max(area.origin.x, right), roundedUp),
            toPixels(std::max(area.origin.y, bottom), roundedUp)};
}

} // namespace

CGDirectDisplayID CGMainDisplayID() {
    const QueryConnection connection;
    if (!connection)
        return kCGNullDirectDisplay;
    const std::vector<DisplayPlace> places = allPlaces(*connection.get());
    return places.empty() ? kCGNullDirectDisplay : places.front().id;
}

CGError CGGetActiveDisplayList(uint32_t maxDisplays, CGDirectDisplayID* displays,
                               uint32_t* displayCount) {
    if (displayCount == nullptr)
        return kCGErrorIllegalArgument;
    *displayCount = 0;
    const QueryConnection connection;
    if (!connection)
        return kCGErrorInvalidConnection;
    const std::vector<DisplayPlace> places = allPlaces(*connection.get());
    const auto count = static_cast<uint32_t>(places.size());
    *displayCount = displays != nullptr ? std::min(maxDisplays, count) : count;
    for (uint32_t i = 0; displays != nullptr && i < *displayCount; ++i)
        displays[i] = places[i].id;
    return kCGErrorSuccess;
}

CGRect CGDisplayBounds(CGDirectDisplayID display) {
    const QueryConnection connection;
    if (!connection)
        return CGRectMake(0, 0, 0, 0);
    const PixelRect place = placeOf(*connection.get(), display);
    const CGFloat scale = displayScale();
    return CGRectMake(place.left / scale, place.top / scale, place.width() / scale,
                      place.height() / scale);
}

CGImageRef CGDisplayCreateImageForRect(CGDirectDisplayID display, CGRect area) {
    const QueryConnection connection;
    if (!connection)
        return nullptr;
    const PixelRect place = placeOf(*connection.get(), display);
    const PixelRect wanted = toPixels(area).moved(place.left, place.top).intersection(place);
    if (wanted.isEmpty())
        return nullptr;
    return platform::x11::readImage(*connection.get(), wanted).detach();
}
