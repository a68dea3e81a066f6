#include "platform/linux/x11/FramePacer.h"

#include <algorithm>

namespace platform::x11 {

FramePacer::Step FramePacer::nextStep(Micros now, bool isSurfaceFree) const noexcept {
    if (isSurfaceFree && (isDamaged || isChanged) && now >= nextFrame)
        return Step::Frame;
    return isDamaged && now >= nextTake() ? Step::Take : Step::Wait;
}

std::optional<FramePacer::Micros> FramePacer::wakeTime(bool isSurfaceFree) const noexcept {
    std::optional<Micros> time;
    if (isSurfaceFree && (isDamaged || isChanged))
        time = nextFrame;
    if (isDamaged)
        time = std::min(time.value_or(nextTake()), nextTake());
    return time;
}

void FramePacer::onTaken(Micros now, std::size_t rects) noexcept {
    takeInterval = rects >= manyRects ? shortestTake : std::min(takeInterval * 2, interval);
    takeInterval = std::max(takeInterval, shortestTake);
    lastTake = now;
    if (rects != 0)
        isChanged = true;
}

// The grid of due times is kept while frames come steadily, so that rounding by the timer does not
// add up; after a pause it starts anew.
void FramePacer::onDelivered(Micros now) noexcept {
    isChanged = false;
    const bool isSteady = now - nextFrame < interval;
    if (!isSteady)
        takeInterval = shortestTake;
    nextFrame = (isSteady ? nextFrame : now) + interval;
}

} // namespace platform::x11
