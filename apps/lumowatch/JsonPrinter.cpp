#include "lumowatch/JsonPrinter.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace lumowatch {
namespace {

using Json = nlohmann::ordered_json;

Json area(const CGRect& rect) {
    return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

Json list(std::span<const CGRect> rects) {
    Json areas = Json::array();
    for (const CGRect& rect : rects)
        areas.push_back(area(rect));
    return areas;
}

Json event(const char* name, double seconds) {
    return {{"event", name}, {"seconds", std::round(seconds * 1000) / 1000}};
}

// In ASCII, so that no reader's encoding matters; what is no UTF-8 in a file's name is replaced.
void print(std::FILE* out, const Json& object) {
    const std::string line = object.dump(-1, ' ', true, Json::error_handler_t::replace);
    std::fprintf(out, "%s\n", line.c_str());
    std::fflush(out);
}

} // namespace

void JsonPrinter::changed(double seconds, std::span<const CGRect> rects) {
    Json object = event("changed", seconds);
    object["rects"] = list(rects);
    print(out, object);
}

void JsonPrinter::moved(double seconds, CGFloat dx, CGFloat dy, std::span<const CGRect> rects) {
    Json object = event("moved", seconds);
    object["rects"] = list(rects);
    object["dx"] = dx;
    object["dy"] = dy;
    print(out, object);
}

void JsonPrinter::grabbed(double seconds, const plat::Rect& box, const std::string& file) {
    Json object = event("grab", seconds);
    object["box"] = {box.left, box.top, box.right - box.left, box.bottom - box.top};
    if (!file.empty())
        object["file"] = file;
    print(out, object);
}

void JsonPrinter::note(double seconds, const std::string& text) {
    Json object = event("note", seconds);
    object["text"] = text;
    print(out, object);
}

void JsonPrinter::summary(const Statistics& seen) {
    Json object = event("summary", seen.seconds);
    object["frames"] = seen.frames;
    object["grabs"] = seen.grabs;
    object["changedPixels"] = seen.changedPixels;
    object["movedAreas"] = seen.movedAreas;
    object["pictures"] = seen.pictures;
    object["cpuSeconds"] = seen.cpuSeconds;
    print(out, object);
}

} // namespace lumowatch
