// lumopaint: draws on a display until it is stopped: a clock of squares, a window that wanders, and
// a page that scrolls. It is what the demonstration watches.

#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

namespace {

constexpr auto stepTime = std::chrono::milliseconds(50);
constexpr std::uint32_t paper = 0xfaf6ec;
constexpr std::uint32_t ink = 0x2b2b33;

constexpr std::array<const char*, 6> lines = {
    "A change is told as a rectangle.",        "A scroll is told as a move.",
    "A grab hands over the pixels of both.",   "Nothing is copied on the way.",
    "Nothing wakes up while nothing changes.", "",
};

struct Place {
    std::int16_t x;
    std::int16_t y;
    std::uint16_t width;
    std::uint16_t height;
};

class Painter {
public:
    explicit Painter(xcb_connection_t* connection)
        : xcb(connection), screen(xcb_setup_roots_iterator(xcb_get_setup(connection)).data),
          gc(xcb_generate_id(connection)), page(xcb_generate_id(connection)),
          wanderer(xcb_generate_id(connection)) {
        xcb_create_gc(xcb, gc, screen->root, XCB_GC_GRAPHICS_EXPOSURES, std::array{0U}.data());
        open(page, pagePlace, paper);
        open(wanderer, {40, 40, 160, 120}, 0x3a6ea5);
        fill(wanderer, {20, 20, 60, 30}, 0xffd166);
        fill(wanderer, {90, 70, 50, 30}, 0xef476f);
    }

    bool step(int number) {
        paintClock(number);
        if (number % 4 == 0)
            scrollPage(number / 4);
        if (number % 2 == 0)
            wander(number / 2);
        xcb_flush(xcb);
        return xcb_connection_has_error(xcb) == 0;
    }

private:
    static constexpr Place pagePlace{320, 80, 420, 300};
    static constexpr std::int16_t lineHeight = 20;

    void open(xcb_window_t window, const Place& place, std::uint32_t colour) {
        const std::array<std::uint32_t, 2> values{colour, 1U}; // no window manager in between
        xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window, screen->root, place.x, place.y,
                          place.width, place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                          values.data());
        xcb_map_window(xcb, window);
    }

    void fill(xcb_drawable_t on, const xcb_rectangle_t& rect, std::uint32_t colour) {
        xcb_change_gc(xcb, gc, XCB_GC_FOREGROUND, &colour);
        xcb_poly_fill_rectangle(xcb, on, gc, 1, &rect);
    }

    void paintClock(int number) {
        const auto x = static_cast<std::int16_t>(40 + number % 10 * 24);
        const auto shade = static_cast<std::uint32_t>(number * 40503) & 0xffffff;
        fill(screen->root, {x, 300, 20, 20}, shade);
    }

    void scrollPage(int number) {
        const auto rest = static_cast<std::uint16_t>(pagePlace.height - lineHeight);
        xcb_copy_area(xcb, page, page, gc, 0, lineHeight, 0, 0, pagePlace.width, rest);
        const auto top = static_cast<std::int16_t>(rest);
        fill(page, {0, top, pagePlace.width, lineHeight}, paper);
        const std::string line =
            std::to_string(number) + "  " + lines[static_cast<std::size_t>(number) % lines.size()];
        const std::array<std::uint32_t, 2> colours{ink, paper};
        xcb_change_gc(xcb, gc, XCB_GC_FOREGROUND | XCB_GC_BACKGROUND, colours.data());
        xcb_image_text_8(xcb, static_cast<std::uint8_t>(line.size()), page, gc, 12,
                         static_cast<std::int16_t>(top + 14), line.c_str());
    }

    void wander(int number) {
        const int turn = number % 100;
        const auto x = static_cast<std::uint32_t>(40 + (turn < 50 ? turn : 100 - turn) * 2);
        const std::array<std::uint32_t, 2> place{x, 40};
        xcb_configure_window(xcb, wanderer, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
                             place.data());
    }

    xcb_connection_t* xcb;
    const xcb_screen_t* screen;
    xcb_gcontext_t gc;
    xcb_window_t page;
    xcb_window_t wanderer;
};

int usage(std::FILE* stream, int code) {
    std::fputs("usage: lumopaint            draw on DISPLAY until stopped\n"
               "       lumopaint --probe    only say, by the exit code, whether DISPLAY works\n",
               stream);
    return code;
}

} // namespace

int main(int argc, char** argv) {
    const std::string argument = argc > 1 ? argv[1] : "";
    if (argument == "--help")
        return usage(stdout, 0);
    if (argc > 2 || (argc == 2 && argument != "--probe"))
        return usage(stderr, 1);
    xcb_connection_t* xcb = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(xcb) != 0) {
        std::fputs("lumopaint: the display cannot be opened\n", stderr);
        xcb_disconnect(xcb);
        return 2;
    }
    if (argument.empty()) {
        Painter painter(xcb);
        for (int number = 0; painter.step(number); ++number)
            std::this_thread::sleep_for(stepTime);
    }
    xcb_disconnect(xcb);
    return 0;
}
