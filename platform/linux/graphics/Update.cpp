#include "platform/linux/graphics/Update.h"

#include <algorithm>
#include <array>
#include <tuple>

using platform::PixelRect;
using platform::Ref;
using platform::Region;

namespace {

/// Reduced rectangles trade precision for shortness.
constexpr std::size_t maxReducedRects = 8;

/// A set of pixels that all came from the same offset away.
struct Move {
    Region area;
    int dx = 0;
    int dy = 0;

    bool isTrivial() const noexcept { return dx == 0 && dy == 0; }
};

std::vector<PixelRect> bothOf(std::span<const PixelRect> a, std::span<const PixelRect> b) {
    std::vector<PixelRect> all(a.begin(), a.end());
    all.insert(all.end(), b.begin(), b.end());
    return all;
}

/// A rectangle that is left out is still dirty; the large ones are worth telling.
std::vector<PixelRect> largestOf(std::vector<PixelRect> rects) {
    if (rects.size() <= platform::maxListedRects)
        return rects;
    std::sort(rects.begin(), rects.end(), [](const PixelRect& a, const PixelRect& b) {
        return std::tuple(-a.area(), a.top, a.left) < std::tuple(-b.area(), b.top, b.left);
    });
    rects.resize(platform::maxListedRects);
    return rects;
}

std::vector<PixelRect> movedList(std::span<const PixelRect> moved, int dx, int dy) {
    if (dx == 0 && dy == 0)
        return {};
    return largestOf(Region(moved).rectangles());
}

CGRect toCgRect(const PixelRect& rect) {
    return CGRectMake(rect.left, rect.top, rect.width(), rect.height());
}

std::vector<CGRect> toCgRects(std::span<const PixelRect> rects) {
    std::vector<CGRect> result;
    result.reserve(rects.size());
    for (const PixelRect& rect : rects)
        result.push_back(toCgRect(rect));
    return result;
}

/// The moves of the first update that the second has not painted over.
Move survivingMove(const CGDisplayStreamUpdate& first, const CGDisplayStreamUpdate& second) {
    if (first.moved().empty())
        return {};
    return {Region(first.moved()).minus(Region(second.dirty())), first.dx(), first.dy()};
}

/// The moves of the second update whose source the first has not touched.
Move directMove(const CGDisplayStreamUpdate& first, const CGDisplayStreamUpdate& second) {
    if (second.moved().empty())
        return {};
    // A pixel's source is dirty if the pixel lies in the dirty area, shifted back by the offset.
    const Region spoilt = Region(first.dirty()).moved(-second.dx(), -second.dy());
    return {Region(second.moved()).minus(spoilt), second.dx(), second.dy()};
}

/// The moves of the second update whose source the first had moved there.
Move chainedMove(const CGDisplayStreamUpdate& first, const CGDisplayStreamUpdate& second) {
    if (first.moved().empty() || second.moved().empty())
        return {};
    const Region movedTwice =
        Region(second.moved()).intersected(Region(first.moved()).moved(-second.dx(), -second.dy()));
    return {movedTwice, first.dx() + second.dx(), first.dy() + second.dy()};
}

/// The offset that explains the most pixels: an update can name only one.
Move bestOf(std::array<Move, 3> moves) {
    for (std::size_t i = 0; i < moves.size(); ++i) {
        for (std::size_t j = i + 1; j < moves.size(); ++j) {
            if (moves[i].dx != moves[j].dx || moves[i].dy != moves[j].dy)
                continue;
            moves[i].area = moves[i].area.united(moves[j].area);
            moves[j].area = Region();
        }
    }
    const Move* best = nullptr;
    for (const Move& move : moves) {
        if (!move.isTrivial() && (best == nullptr || move.area.area() > best->area.area()))
            best = &move;
    }
    return best != nullptr && !best->area.isEmpty() ? *best : Move{};
}

Move moveOf(const CGDisplayStreamUpdate& first, const CGDisplayStreamUpdate& second) {
    return bestOf(
        {directMove(first, second), chainedMove(first, second), survivingMove(first, second)});
}

} // namespace

CGDisplayStreamUpdate::CGDisplayStreamUpdate(std::span<const PixelRect> dirty,
                                             std::span<const PixelRect> moved, int dx, int dy)
    : Object(platform::ObjectType::StreamUpdate), movedPixels(movedList(moved, dx, dy)),
      offsetX(movedPixels.empty() ? 0 : dx), offsetY(movedPixels.empty() ? 0 : dy) {
    dirtyPixels = platform::coalesce(moved.empty() ? dirty : bothOf(dirty, moved));
    dirtyRects = toCgRects(dirtyPixels);
    movedRects = toCgRects(movedPixels);
}

Ref<const CGDisplayStreamUpdate>
CGDisplayStreamUpdate::merged(const CGDisplayStreamUpdate& first,
                              const CGDisplayStreamUpdate& second) {
    const Move move = moveOf(first, second);
    return Ref<const CGDisplayStreamUpdate>::adopt(new CGDisplayStreamUpdate(
        bothOf(first.dirty(), second.dirty()), move.area.rectangles(), move.dx, move.dy));
}

const std::vector<CGRect>& CGDisplayStreamUpdate::rects(CGDisplayStreamUpdateRectType type) const {
    switch (type) {
    case kCGDisplayStreamUpdateMovedRects:
        return movedRects;
    case kCGDisplayStreamUpdateRefreshedRects:
        std::call_once(seldomListsMade, [this] { makeSeldomLists(); });
        return refreshedRects;
    case kCGDisplayStreamUpdateReducedDirtyRects:
        std::call_once(seldomListsMade, [this] { makeSeldomLists(); });
        return reducedRects;
    default:
        return dirtyRects;
    }
}

void CGDisplayStreamUpdate::makeSeldomLists() const {
    const Region refreshed = Region(dirtyPixels).minus(Region(movedPixels));
    refreshedRects = toCgRects(platform::coalesce(refreshed.rectangles()));
    reducedRects = toCgRects(platform::coalesce(dirtyPixels, maxReducedRects));
}

const CGRect* CGDisplayStreamUpdateGetRects(CGDisplayStreamUpdateRef update,
                                            CGDisplayStreamUpdateRectType type, size_t* rectCount) {
    if (update == nullptr)
        return nullptr;
    const std::vector<CGRect>& rects = update->rects(type);
    if (rectCount != nullptr)
        *rectCount = rects.size();
    return rects.empty() ? nullptr : rects.data();
}

CGDisplayStreamUpdateRef CGDisplayStreamUpdateCreateMergedUpdate(CGDisplayStreamUpdateRef first,
                                                                 CGDisplayStreamUpdateRef second) {
    if (first == nullptr || second == nullptr) {
        CGDisplayStreamUpdateRef other = first != nullptr ? first : second;
        return Ref<const CGDisplayStreamUpdate>::share(other).detach();
    }
    return CGDisplayStreamUpdate::merged(*first, *second).detach();
}

void CGDisplayStreamUpdateGetMovedRectsDelta(CGDisplayStreamUpdateRef update, CGFloat* dx,
                                             CGFloat* dy) {
    if (update == nullptr)
        return;
    if (dx != nullptr)
        *dx = update->dx();
    if (dy != nullptr)
        *dy = update->dy();
}
