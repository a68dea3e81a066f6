#include "lumowatch/TextPrinter.h"

#include "lumowatch/Texts.h"

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
    std::string list;
    for (std::size_t i = 0; i < rects.size() && i < listedRects; ++i)
        list += (i == 0 ? "" : ", ") + describe(rects[i]);
    if (rects.size() <= listedRects)
        return list;
    const auto more = static_cast<int>(rects.size() - listedRects);
    return formatted("lumowatch_and_more", list.c_str(), more);
}

std::string decimal(double value, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

} // namespace

void TextPrinter::print(double seconds, const std::string& text) {
    std::fprintf(out, "%9.3f  %s\n", seconds, text.c_str());
    std::fflush(out);
}

void TextPrinter::changed(double seconds, std::span<const CGRect> rects) {
    print(seconds, formatted("lumowatch_changed", describe(rects).c_str()));
}

void TextPrinter::moved(double seconds, CGFloat dx, CGFloat dy, std::span<const CGRect> rects) {
    char offset[64];
    std::snprintf(offset, sizeof offset, "%+g,%+g", double{dx}, double{dy});
    const char* const from = offset;
    print(seconds, formatted("lumowatch_moved", describe(rects).c_str(), from));
}

void TextPrinter::grabbed(double seconds, const plat::Rect& box, const std::string& file) {
    std::string text = formatted(
        "lumowatch_grabbed",
        describe(CGRectMake(box.left, box.top, box.right - box.left, box.bottom - box.top))
            .c_str());
    if (!file.empty())
        text += "  " + file;
    print(seconds, text);
}

void TextPrinter::note(double seconds, const std::string& text) {
    print(seconds, text);
}

void TextPrinter::summary(const Statistics& seen) {
    const std::string duration = decimal(seen.seconds, 1);
    const std::string cpu = decimal(seen.cpuSeconds, 3);
    std::string text = formatted("lumowatch_summary_seconds", duration.c_str()) + " ";
    text += counted("lumowatch_frames", seen.frames) + ", ";
    text += counted("lumowatch_grabs", seen.grabs) + ", ";
    text += counted("lumowatch_changed_pixels", seen.changedPixels) + ", ";
    text += counted("lumowatch_moved_areas", seen.movedAreas) + ", ";
    text += counted("lumowatch_pictures", seen.pictures) + ", ";
    text += formatted("lumowatch_cpu_time", cpu.c_str());
    std::fprintf(out, "%s\n", text.c_str());
    std::fflush(out);
}

} // namespace lumowatch
