#pragma once

#include <cstdint>
#include <string>

#include <xcb/xcb.h>

namespace support {

/// Changes a server's screen while it runs, through RANDR.
/// Errors: throws std::runtime_error when the server refuses or is gone.
class ScreenSetup {
public:
    explicit ScreenSetup(const std::string& display);
    ScreenSetup(const ScreenSetup&) = delete;
    ScreenSetup& operator=(const ScreenSetup&) = delete;
    ~ScreenSetup();

    /// Gives the first output a mode of this size, and the screen the same size; Xvfb allows up to
    /// the size that it started with. Units: pixels; pictures a second.
    void resize(int width, int height, int refreshHz = 60);

    /// Turns the first output off; the screen keeps its size.
    void turnOutputOff();

    /// Declares a monitor, or declares it anew; it takes the first output, or none.
    void setMonitor(const std::string& name, int x, int y, int width, int height,
                    bool isPrimary = false, bool takesOutput = false);
    void deleteMonitor(const std::string& name);

    /// The first output, and the atom of a name.
    std::uint32_t firstOutput();
    xcb_atom_t atomOf(const std::string& name);

private:
    void setMode(std::uint32_t mode);
    void require(xcb_void_cookie_t cookie, const char* what);

    xcb_connection_t* xcb;
    xcb_window_t root;
};

} // namespace support
