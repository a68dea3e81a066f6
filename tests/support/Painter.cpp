#include "support/Painter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace support {

namespace {

struct FreeDeleter {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

xcb_screen_t* screenAt(xcb_connection_t* xcb, int number) {
    auto it = xcb_setup_roots_iterator(xcb_get_setup(xcb));
    for (; number > 0 && it.rem > 1; --number)
        xcb_screen_next(&it);
    return it.data;
}

xcb_visualtype_t* rootVisual(const xcb_screen_t* screen) {
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem != 0;
         xcb_depth_next(&depth)) {
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem != 0;
             xcb_visualtype_next(&visual)) {
            if (visual.data->visual_id == screen->root_visual)
                return visual.data;
        }
    }
    return nullptr;
}

/// The 8 bits of a channel, put where the mask has room: upper bits only, or padded by repetition.
std::uint32_t placed(std::uint32_t value8, std::uint32_t mask) {
    const int bits = std::popcount(mask);
    const std::uint32_t wide = value8 << 24 | value8 << 16;
    return (wide >> (32 - bits)) << std::countr_zero(mask);
}

std::int16_t asInt16(int value) {
    return static_cast<std::int16_t>(value);
}
std::uint16_t asUint16(int value) {
    return static_cast<std::uint16_t>(value);
}

} // namespace

Painter::Painter(const std::string& display) {
    int number = 0;
    xcb = xcb_connect(display.c_str(), &number);
    if (xcb_connection_has_error(xcb) != 0) {
        xcb_disconnect(xcb);
        throw std::runtime_error("The painter finds no X server at " + display);
    }
    screen = screenAt(xcb, number);
    visual = rootVisual(screen);
    gc = xcb_generate_id(xcb);
    const std::uint32_t noExposures = 0;
    xcb_create_gc(xcb, gc, screen->root, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    const std::string name = "fixed";
    const xcb_font_t font = xcb_generate_id(xcb);
    xcb_open_font(xcb, font, asUint16(static_cast<int>(name.size())), name.c_str());
    xcb_change_gc(xcb, gc, XCB_GC_FONT, &font);
    xcb_close_font(xcb, font);
}

Painter::~Painter() {
    xcb_disconnect(xcb);
}

std::uint32_t Painter::pixelOf(std::uint32_t colour) {
    if (visual->_class != XCB_VISUAL_CLASS_TRUE_COLOR &&
        visual->_class != XCB_VISUAL_CLASS_DIRECT_COLOR)
        return allocated(colour);
    return placed(colour >> 16 & 0xff, visual->red_mask) |
           placed(colour >> 8 & 0xff, visual->green_mask) |
           placed(colour & 0xff, visual->blue_mask);
}

std::uint32_t Painter::allocated(std::uint32_t colour) {
    const auto wide = [](std::uint32_t value8) {
        return static_cast<std::uint16_t>((value8 & 0xff) * 0x101);
    };
    const std::unique_ptr<xcb_alloc_color_reply_t, FreeDeleter> reply(
        xcb_alloc_color_reply(xcb,
                              xcb_alloc_color(xcb, screen->default_colormap, wide(colour >> 16),
                                              wide(colour >> 8), wide(colour)),
                              nullptr));
    return reply ? reply->pixel : screen->black_pixel;
}

void Painter::use(std::uint32_t foreground, std::uint32_t background) {
    const std::array<std::uint32_t, 2> values{pixelOf(foreground), pixelOf(background)};
    xcb_change_gc(xcb, gc, XCB_GC_FOREGROUND | XCB_GC_BACKGROUND, values.data());
}

void Painter::fill(int x, int y, int width, int height, std::uint32_t colour, xcb_window_t on) {
    const xcb_rectangle_t rect{asInt16(x), asInt16(y), asUint16(width), asUint16(height)};
    fillAll(colour, {&rect, 1}, on);
}

void Painter::fillAll(std::uint32_t colour, std::span<const xcb_rectangle_t> rects,
                      xcb_window_t on) {
    use(colour, 0);
    // A request holds 64 Ki words; a rectangle takes two.
    constexpr std::size_t maxPerRequest = 8192;
    while (!rects.empty()) {
        const std::size_t count = std::min(rects.size(), maxPerRequest);
        xcb_poly_fill_rectangle(xcb, target(on), gc, static_cast<std::uint32_t>(count),
                                rects.data());
        rects = rects.subspan(count);
    }
}

void Painter::copyArea(int x, int y, int width, int height, int toX, int toY, xcb_window_t on) {
    xcb_copy_area(xcb, target(on), target(on), gc, asInt16(x), asInt16(y), asInt16(toX),
                  asInt16(toY), asUint16(width), asUint16(height));
}

void Painter::text(int x, int y, const std::string& line, std::uint32_t colour,
                   std::uint32_t background, xcb_window_t on) {
    use(colour, background);
    const std::size_t length = std::min<std::size_t>(line.size(), 255);
    xcb_image_text_8(xcb, static_cast<std::uint8_t>(length), target(on), gc, asInt16(x), asInt16(y),
                     line.data());
}

void Painter::includeInferiors(bool yes) {
    const std::uint32_t mode =
        yes ? XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS : XCB_SUBWINDOW_MODE_CLIP_BY_CHILDREN;
    xcb_change_gc(xcb, gc, XCB_GC_SUBWINDOW_MODE, &mode);
}

xcb_window_t Painter::createWindow(int x, int y, int width, int height, std::uint32_t colour) {
    const xcb_window_t window = xcb_generate_id(xcb);
    const std::array<std::uint32_t, 2> values{pixelOf(colour), 1};
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window, screen->root, asInt16(x), asInt16(y),
                      asUint16(width), asUint16(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      screen->root_visual, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                      values.data());
    xcb_map_window(xcb, window);
    return window;
}

void Painter::moveWindow(xcb_window_t window, int x, int y) {
    const std::array<std::uint32_t, 2> values{static_cast<std::uint32_t>(x),
                                              static_cast<std::uint32_t>(y)};
    xcb_configure_window(xcb, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values.data());
}

void Painter::resizeWindow(xcb_window_t window, int width, int height) {
    const std::array<std::uint32_t, 2> values{static_cast<std::uint32_t>(width),
                                              static_cast<std::uint32_t>(height)};
    xcb_configure_window(xcb, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values.data());
}

void Painter::raiseWindow(xcb_window_t window) {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(xcb, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
}

void Painter::destroyWindow(xcb_window_t window) {
    xcb_destroy_window(xcb, window);
}

void Painter::hidePointer() {
    const xcb_pixmap_t nothing = xcb_generate_id(xcb);
    const xcb_cursor_t cursor = xcb_generate_id(xcb);
    xcb_create_pixmap(xcb, 1, nothing, root(), 1, 1);
    const xcb_gcontext_t black = xcb_generate_id(xcb);
    const std::uint32_t colour = 0;
    xcb_create_gc(xcb, black, nothing, XCB_GC_FOREGROUND, &colour);
    const xcb_rectangle_t all{0, 0, 1, 1};
    xcb_poly_fill_rectangle(xcb, nothing, black, 1, &all);
    xcb_create_cursor(xcb, cursor, nothing, nothing, 0, 0, 0, 0, 0, 0, 0, 0);
    xcb_change_window_attributes(xcb, root(), XCB_CW_CURSOR, &cursor);
}

void Painter::flush() {
    xcb_flush(xcb);
}

bool Painter::sync() {
    const std::unique_ptr<xcb_get_input_focus_reply_t, FreeDeleter> reply(
        xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    // Events and errors that nobody asked for would pile up.
    while (xcb_generic_event_t* event = xcb_poll_for_event(xcb))
        std::free(event);
    return reply != nullptr;
}

} // namespace support
