#include "lumowatch/EventPrinter.h"

namespace lumowatch {
namespace {

/// More rectangles than these are counted, not listed.
constexpr std::size_t listedRects = 4;

std::string describe(const CGRect& rect) {
    char text[96];
    std::snprintf(text, sizeof text, "%gx%g+%g+%g", double{rect.size.width},
                  double{rect.size.height}, double{rect.origin.x}, double{rect.origin.y});
    return text;
}

std::string describe(std::span<const CGRect> rects) {
    std::string text;
    for (std::size_t i = 0; i < rects.size() && i < listedRects; ++i)
        text += (i == 0 ? "" : ", ") + describe(rects[i]);
    if (rects.size() > listedRects)
        text += " and " + std::to_string(rects.size() - listedRects) + " more";
    return text;
}

} // namespace

void EventPrinter::changed(double seconds, std::span<const CGRect> rects) const {
    std::fprintf(out, "%9.3f  changed  %s\n", seconds, describe(rects).c_str());
    std::fflush(out);
}

void EventPrinter::moved(double seconds, CGFloat dx, CGFloat dy,
                         std::span<const CGRect> rects) const {
    std::fprintf(out, "%9.3f  moved    %s from %+g,%+g\n", seconds, describe(rects).c_str(),
                 double{dx}, double{dy});
    std::fflush(out);
}

void EventPrinter::grabbed(double seconds, const plat::Rect& box, const std::string& file) const {
    std::fprintf(out, "%9.3f  grabbed  %dx%d+%d+%d%s%s\n", seconds, box.right - box.left,
                 box.bottom - box.top, box.left, box.top, file.empty() ? "" : "  ", file.c_str());
    std::fflush(out);
}

void EventPrinter::note(double seconds, const char* text) const {
    std::fprintf(out, "%9.3f  %s\n", seconds, text);
    std::fflush(out);
}

void EventPrinter::summary(const Statistics& seen) const {
    std::fprintf(out,
                 "%.1f s: %lld frames, %lld grabs, %lld changed pixels, %lld moved areas, "
                 "%lld pictures, %.3f s CPU time\n",
                 seen.seconds, static_cast<long long>(seen.frames),
                 static_cast<long long>(seen.grabs), static_cast<long long>(seen.changedPixels),
                 static_cast<long long>(seen.movedAreas), static_cast<long long>(seen.pictures),
                 seen.cpuSeconds);
    std::fflush(out);
}

} // namespace lumowatch
