#pragma once

#include <cstdint>
#include <span>
#include <string>

#include <xcb/xcb.h>

namespace support {

/// A client that draws on a server's root window and in windows of its own. Colours are 0xRRGGBB,
/// whatever the screen's depth; places are pixels. Nothing is sent before flush() or sync().
/// Errors: the constructor throws std::runtime_error when there is no such server; later ones are
/// not looked at, except by sync().
/// Threads: one at a time.
class Painter {
public:
    explicit Painter(const std::string& display);
    Painter(const Painter&) = delete;
    Painter& operator=(const Painter&) = delete;
    ~Painter();

    /// The size of the screen when the painter connected.
    int width() const noexcept { return screen->width_in_pixels; }
    int height() const noexcept { return screen->height_in_pixels; }
    xcb_window_t root() const noexcept { return screen->root; }
    xcb_connection_t* connection() const noexcept { return xcb; }

    /// Draw on the root window, or on the window given. The root's own area only: windows above it
    /// are left alone unless includeInferiors(true) was called.
    void fill(int x, int y, int width, int height, std::uint32_t colour, xcb_window_t on = 0);
    void fillAll(std::uint32_t colour, std::span<const xcb_rectangle_t> rects, xcb_window_t on = 0);
    void copyArea(int x, int y, int width, int height, int toX, int toY, xcb_window_t on = 0);
    /// One line of text in the server's built-in font; `y` is its base line.
    void text(int x, int y, const std::string& line, std::uint32_t colour, std::uint32_t background,
              xcb_window_t on = 0);
    void includeInferiors(bool yes);

    /// A mapped window without border or window manager.
    xcb_window_t createWindow(int x, int y, int width, int height, std::uint32_t colour);
    void moveWindow(xcb_window_t window, int x, int y);
    void resizeWindow(xcb_window_t window, int width, int height);
    void raiseWindow(xcb_window_t window);
    void destroyWindow(xcb_window_t window);

    /// Without XFIXES nobody else hides the pointer, and the server draws it into its frame buffer.
    void hidePointer();

    void flush();

    /// Returns when the server has served everything; false if it is gone.
    bool sync();

private:
    std::uint32_t pixelOf(std::uint32_t colour);
    std::uint32_t allocated(std::uint32_t colour);
    void use(std::uint32_t foreground, std::uint32_t background);
    xcb_drawable_t target(xcb_window_t on) const { return on != 0 ? on : screen->root; }

    xcb_connection_t* xcb;
    xcb_screen_t* screen = nullptr;
    xcb_visualtype_t* visual = nullptr;
    xcb_gcontext_t gc = 0;
};

} // namespace support
