#include "lumowatch/DisplayChoice.h"

#include "lumowatch/Texts.h"

#include <algorithm>
#include <vector>

namespace lumowatch {
namespace {

std::vector<CGDirectDisplayID> activeDisplays() {
    std::uint32_t count = 0;
    CGGetActiveDisplayList(0, nullptr, &count);
    std::vector<CGDirectDisplayID> displays(count);
    CGGetActiveDisplayList(count, displays.data(), &count);
    displays.resize(std::min<std::size_t>(count, displays.size()));
    return displays;
}

} // namespace

CGDirectDisplayID chooseDisplay(int identifier) {
    if (identifier == 0)
        return CGMainDisplayID();
    const auto wanted = static_cast<CGDirectDisplayID>(identifier);
    const std::vector<CGDirectDisplayID> displays = activeDisplays();
    return std::ranges::find(displays, wanted) != displays.end() ? wanted : kCGNullDirectDisplay;
}

bool listDisplays(std::FILE* out) {
    const CGDirectDisplayID main = CGMainDisplayID();
    const std::vector<CGDirectDisplayID> displays = activeDisplays();
    for (const CGDirectDisplayID display : displays) {
        const CGRect bounds = CGDisplayBounds(display);
        const std::string note = display == main ? "  " + text("lumowatch_main_display") : "";
        std::fprintf(out, "%10u  %gx%g+%g+%g%s\n", display, double{bounds.size.width},
                     double{bounds.size.height}, double{bounds.origin.x}, double{bounds.origin.y},
                     note.c_str());
    }
    return !displays.empty();
}

} // namespace lumowatch
