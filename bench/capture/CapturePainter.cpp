// Draws a known load on DISPLAY.
//   rect HZ SECONDS     a 64x32 rectangle in changing colours
//   screen HZ SECONDS   every pixel of the screen
//   burst COUNT         so many scattered 8x8 rectangles; prints the milliseconds until all are
//   drawn

#include <xcb/xcb.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

class Painter {
public:
    Painter()
        : xcb(xcb_connect(nullptr, nullptr)),
          screen(xcb_setup_roots_iterator(xcb_get_setup(xcb)).data), gc(xcb_generate_id(xcb)) {
        // Over windows too, as a screen without any would be drawn on.
        const std::uint32_t mode = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
        xcb_create_gc(xcb, gc, screen->root, XCB_GC_SUBWINDOW_MODE, &mode);
    }

    void fill(const std::vector<xcb_rectangle_t>& rects, std::uint32_t colour) {
        xcb_change_gc(xcb, gc, XCB_GC_FOREGROUND, &colour);
        xcb_poly_fill_rectangle(xcb, screen->root, gc, static_cast<std::uint32_t>(rects.size()),
                                rects.data());
    }

    void flush() { xcb_flush(xcb); }
    void sync() { std::free(xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr)); }

    xcb_connection_t* xcb;
    const xcb_screen_t* screen;
    xcb_gcontext_t gc;
};

void paintSteadily(Painter& painter, const xcb_rectangle_t& rect, double hz, double seconds) {
    const auto start = Clock::now();
    const auto step = std::chrono::duration<double>(1 / hz);
    for (int i = 0; i < seconds * hz; ++i) {
        painter.fill({rect}, static_cast<std::uint32_t>(i * 40503) & 0xffffff);
        painter.flush();
        std::this_thread::sleep_until(start +
                                      std::chrono::duration_cast<Clock::duration>(step * (i + 1)));
    }
}

double burst(Painter& painter, int count) {
    std::mt19937 random(17);
    const auto upTo = [&](int last) {
        return static_cast<std::int16_t>(random() % static_cast<unsigned>(last));
    };
    painter.sync();
    const auto start = Clock::now();
    for (int i = 0; i < count; ++i)
        painter.fill({{upTo(painter.screen->width_in_pixels - 8),
                       upTo(painter.screen->height_in_pixels - 8), 8, 8}},
                     random() & 0xffffff);
    painter.sync();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

} // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 2 ? argv[1] : "";
    Painter painter;
    if (xcb_connection_has_error(painter.xcb) != 0)
        return 2;
    const double hz = std::atof(argc > 2 ? argv[2] : "0");
    const double seconds = std::atof(argc > 3 ? argv[3] : "0");
    if (what == "rect")
        paintSteadily(painter, {200, 100, 64, 32}, hz, seconds);
    else if (what == "screen")
        paintSteadily(painter,
                      {0, 0, painter.screen->width_in_pixels, painter.screen->height_in_pixels}, hz,
                      seconds);
    else if (what == "burst")
        std::printf("%.2f\n", burst(painter, static_cast<int>(hz)));
    else
        return 1;
    xcb_disconnect(painter.xcb);
    return 0;
}
