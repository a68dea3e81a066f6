#pragma once

#include "platform/linux/x11/Connection.h"
#include "platform/linux/x11/Viewport.h"

#include <CoreGraphics/CGDirectDisplay.h>

#include <optional>

namespace platform::x11 {

/// Follows one display as the screen changes its size and its displays move, come and go, and notes
/// when windows move. Asks the server without waiting.
/// Threads: one at a time.
class GeometryWatch {
public:
    /// `where` is where the display is now, in root coordinates; on a server that knows no displays
    /// it stays where it is.
    GeometryWatch(Connection& server, CGDirectDisplayID id, const PixelRect& where);
    ~GeometryWatch();
    GeometryWatch(const GeometryWatch&) = delete;
    GeometryWatch& operator=(const GeometryWatch&) = delete;

    /// Whether the event was about the screen's shape; then a question is sent.
    bool onEvent(const xcb_generic_event_t& event);

    /// A question is under way: what is read meanwhile may show the wrong place.
    bool isAsking() const noexcept { return asked.has_value(); }

    /// Looks for the answer; true when the display or the screen has another shape or place now.
    bool poll();

    /// Whether a window on the root was moved, resized or restacked since the last such question.
    bool takeWindowsMoved() noexcept;

    /// Where a frame of this size lies now: at the display's corner.
    Viewport viewport(int width, int height) const noexcept;

private:
    struct Question {
        unsigned rootSize;
        unsigned monitors; ///< 0: the server knows none
    };

    void ask();
    void discardAnswers();
    bool apply(const PixelRect& newRoot, const PixelRect& newPlace);

    Connection& connection;
    const CGDirectDisplayID display;
    PixelRect place; ///< empty: the display is gone
    PixelRect root;
    std::optional<Question> asked; ///< sequence numbers of the question under way
    bool isStale = false;          ///< it was asked before the last event
    bool haveWindowsMoved = false;
};

} // namespace platform::x11
