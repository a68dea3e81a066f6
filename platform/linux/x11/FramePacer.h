#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace platform::x11 {

/// Decides when a stream asks the server for damage, and when for a frame. Pure arithmetic: the
/// caller passes the time.
///
/// The first change after quiet is asked for at once; under steady change frames keep to the frame
/// interval. Between two frames damage is only taken, so that the server's region stays small:
/// adding to a region costs the programs that draw, by its size. A region that turned out small
/// lets the next take wait longer.
/// Units: microseconds of one steady clock.
class FramePacer {
public:
    using Micros = std::int64_t;

    enum class Step {
        Wait, ///< nothing to do before wakeTime()
        Take, ///< take the damage, leave the pixels for later
        Frame ///< take the damage and bring a frame up to date
    };

    explicit FramePacer(Micros frameInterval) noexcept : interval(frameInterval) {}

    /// The server says that something changed since the last take.
    void onDamage() noexcept { isDamaged = true; }

    /// Something else calls for a frame (a change of the screen's size, say).
    void onChange() noexcept { isChanged = true; }

    /// What to do now. Without a surface that may be written there is no frame, but damage is taken
    /// all the same.
    Step nextStep(Micros now, bool isSurfaceFree) const noexcept;

    /// When nextStep() will have something to do, or null for never: nothing then needs to wake up.
    std::optional<Micros> wakeTime(bool isSurfaceFree) const noexcept;

    /// A request for damage went out; the server reports later damage anew.
    void onTakeSent() noexcept { isDamaged = false; }

    /// Its answer came.
    void onTaken(Micros now, std::size_t rects) noexcept;

    /// A frame went out to the host.
    void onDelivered(Micros now) noexcept;

    /// A frame was asked for, but nothing had changed.
    void onIdle() noexcept { isChanged = false; }

    Micros frameInterval() const noexcept { return interval; }

private:
    Micros nextTake() const noexcept { return lastTake + takeInterval; }

    /// The shortest time between two takes, and how many rectangles keep it that short.
    static constexpr Micros shortestTake = 4000;
    static constexpr std::size_t manyRects = 32;

    Micros interval;
    Micros nextFrame = 0;
    Micros lastTake = 0;
    Micros takeInterval = shortestTake;
    bool isDamaged = false; ///< the server holds damage
    bool isChanged = false; ///< damage was taken that no frame has shown
};

} // namespace platform::x11
