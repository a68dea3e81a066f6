#include "platform/linux/graphics/Region.h"

#include <iterator>
#include <limits>
#include <optional>

namespace platform {

namespace {

using Rects = std::vector<PixelRect>;

constexpr int beyondAll = std::numeric_limits<int>::max();

/// Walks over the bands of a region: runs of rectangles between the same two rows.
class BandReader {
public:
    explicit BandReader(const Rects& rects) : rects(rects) { findEnd(); }

    bool atEnd() const { return first == rects.size(); }
    int top() const { return atEnd() ? beyondAll : rects[first].top; }
    int bottom() const { return atEnd() ? beyondAll : rects[first].bottom; }
    std::span<const PixelRect> spans() const { return {rects.data() + first, end - first}; }

    void passBandsAbove(int y) {
        if (bottom() > y)
            return;
        first = end;
        findEnd();
    }

private:
    void findEnd() {
        end = first;
        while (end < rects.size() && rects[end].top == rects[first].top)
            ++end;
    }

    const Rects& rects;
    std::size_t first = 0;
    std::size_t end = 0;
};

/// Walks over the left and right edges of one band.
class EdgeReader {
public:
    explicit EdgeReader(std::span<const PixelRect> spans) : spans(spans) {}

    int next() const {
        if (index == spans.size())
            return beyondAll;
        return inside ? spans[index].right : spans[index].left;
    }

    /// Passes the edge at x, if the next one is there; whether what follows lies inside.
    bool isInsideAfter(int x) {
        if (next() == x) {
            inside = !inside;
            if (!inside)
                ++index;
        }
        return inside;
    }

private:
    std::span<const PixelRect> spans;
    std::size_t index = 0;
    bool inside = false;
};

bool haveEqualSpans(std::span<const PixelRect> a, std::span<const PixelRect> b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const PixelRect& one, const PixelRect& other) {
                          return one.left == other.left && one.right == other.right;
                      });
}

/// Appends bands to a region, and joins those that only continue the one above.
class BandWriter {
public:
    template <class Keep>
    void append(int top, int bottom, std::span<const PixelRect> a, std::span<const PixelRect> b,
                Keep keep) {
        const std::size_t start = rects.size();
        EdgeReader edgesOfA(a);
        EdgeReader edgesOfB(b);
        bool isKept = false;
        int left = 0;
        for (;;) {
            const int x = std::min(edgesOfA.next(), edgesOfB.next());
            if (x == beyondAll)
                break;
            const bool isInA = edgesOfA.isInsideAfter(x);
            const bool isInB = edgesOfB.isInsideAfter(x);
            const bool wasKept = isKept;
            isKept = keep(isInA, isInB);
            if (isKept && !wasKept)
                left = x;
            else if (wasKept && !isKept)
                rects.push_back({left, top, x, bottom});
        }
        joinWithBandAbove(start, top, bottom);
    }

    Rects take() { return std::move(rects); }

private:
    void joinWithBandAbove(std::size_t start, int top, int bottom) {
        const std::span<PixelRect> band{rects.data() + start, rects.size() - start};
        const std::span<PixelRect> above{rects.data() + lastBand, start - lastBand};
        if (band.empty())
            return;
        if (above.empty() || above.front().bottom != top || !haveEqualSpans(above, band)) {
            lastBand = start;
            return;
        }
        for (PixelRect& rect : above)
            rect.bottom = bottom;
        rects.resize(start);
    }

    Rects rects;
    std::size_t lastBand = 0;
};

/// The pixels for which keep(is in a, is in b) holds; keep(false, false) must be false.
template <class Keep>
Rects combined(const Rects& a, const Rects& b, Keep keep) {
    BandWriter out;
    BandReader bandsOfA(a);
    BandReader bandsOfB(b);
    int y = std::min(bandsOfA.top(), bandsOfB.top());
    while (!bandsOfA.atEnd() || !bandsOfB.atEnd()) {
        const bool isInA = bandsOfA.top() <= y;
        const bool isInB = bandsOfB.top() <= y;
        const int nextY = std::min(isInA ? bandsOfA.bottom() : bandsOfA.top(),
                                   isInB ? bandsOfB.bottom() : bandsOfB.top());
        if (isInA || isInB)
            out.append(y, nextY, isInA ? bandsOfA.spans() : std::span<const PixelRect>(),
                       isInB ? bandsOfB.spans() : std::span<const PixelRect>(), keep);
        y = nextY;
        bandsOfA.passBandsAbove(y);
        bandsOfB.passBandsAbove(y);
    }
    return out.take();
}

Rects unitedRects(const Rects& a, const Rects& b) {
    if (a.empty())
        return b;
    if (b.empty())
        return a;
    return combined(a, b, [](bool isInA, bool isInB) { return isInA || isInB; });
}

/// The union of any rectangles, or nothing once a part of it takes more than `limit` rectangles.
std::optional<Rects> unionWithin(std::span<const PixelRect> rects, std::size_t limit) {
    if (rects.empty())
        return Rects();
    if (rects.size() == 1)
        return rects.front().isEmpty() ? Rects() : Rects(1, rects.front());
    const std::size_t half = rects.size() / 2;
    const std::optional<Rects> first = unionWithin(rects.first(half), limit);
    if (!first)
        return std::nullopt;
    const std::optional<Rects> second = unionWithin(rects.subspan(half), limit);
    if (!second)
        return std::nullopt;
    Rects both = unitedRects(*first, *second);
    if (both.size() > limit)
        return std::nullopt;
    return both;
}

/// Beyond so many, rectangles are sorted into cells first: what follows compares them in pairs.
constexpr std::size_t maxCompared = 128;

/// Cuts the bounding box into cells and keeps, for each cell, the bounding box of what lies in it:
/// disjoint boxes, at most maxCompared, in one pass over any number of rectangles.
class CellGrid {
public:
    explicit CellGrid(const PixelRect& around)
        : box(around), cellWidth((box.width() + cells - 1) / cells),
          cellHeight((box.height() + cells - 1) / cells), boxes(allCells) {}

    void add(const PixelRect& rect) {
        const int firstColumn = (rect.left - box.left) / cellWidth;
        const int lastColumn = (rect.right - 1 - box.left) / cellWidth;
        const int firstRow = (rect.top - box.top) / cellHeight;
        const int lastRow = (rect.bottom - 1 - box.top) / cellHeight;
        for (int row = firstRow; row <= lastRow; ++row) {
            for (int column = firstColumn; column <= lastColumn; ++column) {
                PixelRect& cell =
                    boxes[static_cast<std::size_t>(row) * cells + static_cast<std::size_t>(column)];
                cell = cell.boundingWith(rect.intersection(cellAt(column, row)));
            }
        }
    }

    Rects take() {
        std::erase_if(boxes, [](const PixelRect& rect) { return rect.isEmpty(); });
        return std::move(boxes);
    }

private:
    static constexpr int cells = 11;
    static constexpr std::size_t allCells = 121;
    static_assert(allCells <= maxCompared);

    PixelRect cellAt(int column, int row) const {
        return PixelRect::ofSize(box.left + column * cellWidth, box.top + row * cellHeight,
                                 cellWidth, cellHeight);
    }

    PixelRect box;
    int cellWidth;
    int cellHeight;
    Rects boxes;
};

void sortFromTopLeft(Rects& rects) {
    std::sort(rects.begin(), rects.end(), [](const PixelRect& a, const PixelRect& b) {
        return a.top != b.top ? a.top < b.top : a.left < b.left;
    });
}

/// Whether some overlap. The rectangles are ordered from the top.
bool doOverlap(const Rects& rects) {
    for (std::size_t i = 0; i < rects.size(); ++i) {
        for (std::size_t j = i + 1; j < rects.size() && rects[j].top < rects[i].bottom; ++j) {
            if (rects[i].overlaps(rects[j]))
                return true;
        }
    }
    return false;
}

/// Disjoint rectangles, at most maxCompared, that cover the given ones, ordered from the top.
Rects disjoint(std::span<const PixelRect> rects) {
    Rects boxes;
    boxes.reserve(rects.size());
    std::copy_if(rects.begin(), rects.end(), std::back_inserter(boxes),
                 [](const PixelRect& rect) { return !rect.isEmpty(); });
    if (boxes.size() <= maxCompared) {
        sortFromTopLeft(boxes);
        if (!doOverlap(boxes))
            return boxes;
        if (std::optional<Rects> exact = unionWithin(boxes, maxCompared))
            return std::move(*exact);
    }
    CellGrid grid(boundingBoxOf(boxes));
    for (const PixelRect& rect : boxes)
        grid.add(rect);
    Rects cells = grid.take();
    sortFromTopLeft(cells);
    return cells;
}

/// Joins disjoint boxes: all that make one rectangle together, and then always the two whose common
/// box adds the fewest pixels, until there are few enough. The boxes are and stay ordered from the
/// top: a join goes into the one in front. Each remembers its best partner among those behind it,
/// so that a join costs a pass over the boxes and not over all pairs.
class BoxJoiner {
public:
    explicit BoxJoiner(const Rects& rects) : left(rects.size()) {
        boxes.reserve(rects.size());
        for (const PixelRect& rect : rects)
            boxes.push_back({rect, rect.area()});
        for (std::size_t i = 0; i < boxes.size(); ++i)
            findPartner(i);
    }

    Rects reducedTo(std::size_t limit) {
        for (std::size_t i = cheapest(); left > 1 && (left > limit || boxes[i].cost == 0);
             i = cheapest())
            join(i);
        Rects result;
        result.reserve(left);
        for (const Box& box : boxes) {
            if (!box.isGone)
                result.push_back(box.rect);
        }
        return result;
    }

private:
    static constexpr std::int64_t noCost = std::numeric_limits<std::int64_t>::max();

    struct Box {
        PixelRect rect;
        std::int64_t area = 0;
        bool isGone = false;
        std::size_t partner = 0;
        std::int64_t cost = noCost;
    };

    void findPartner(std::size_t i) {
        Box& box = boxes[i];
        box.cost = noCost;
        for (std::size_t j = i + 1; j < boxes.size(); ++j) {
            // The rows between the two are added over the whole width; further down it gets worse.
            const std::int64_t rowsBetween =
                std::int64_t{boxes[j].rect.top} - std::int64_t{box.rect.bottom};
            if (rowsBetween > 0 && rowsBetween * box.rect.width() >= box.cost)
                break;
            if (!boxes[j].isGone)
                offer(i, j);
        }
    }

    void offer(std::size_t i, std::size_t j) {
        const std::int64_t cost =
            boxes[i].rect.boundingWith(boxes[j].rect).area() - boxes[i].area - boxes[j].area;
        if (cost >= boxes[i].cost)
            return;
        boxes[i].cost = cost;
        boxes[i].partner = j;
    }

    std::size_t cheapest() const {
        std::size_t best = 0;
        for (std::size_t i = 1; i < boxes.size(); ++i) {
            if (boxes[i].cost < boxes[best].cost)
                best = i;
        }
        return best;
    }

    void join(std::size_t i) {
        const bool isExact = boxes[i].cost == 0;
        absorb(i, boxes[i].partner);
        // What the common box covers in passing has to go into it too, or boxes would overlap.
        while (!isExact) {
            const std::size_t other = firstOverlapping(i);
            if (other == boxes.size())
                break;
            absorb(std::min(i, other), std::max(i, other));
            i = std::min(i, other);
        }
        refreshPartners(i);
    }

    void absorb(std::size_t into, std::size_t other) {
        boxes[into].rect = boxes[into].rect.boundingWith(boxes[other].rect);
        boxes[into].area = boxes[into].rect.area();
        boxes[other].isGone = true;
        boxes[other].cost = noCost;
        --left;
    }

    std::size_t firstOverlapping(std::size_t box) const {
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            if (i != box && !boxes[i].isGone && boxes[i].rect.overlaps(boxes[box].rect))
                return i;
        }
        return boxes.size();
    }

    void refreshPartners(std::size_t changed) {
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            if (boxes[i].isGone)
                continue;
            const bool isStale = boxes[i].cost != noCost &&
                                 (boxes[i].partner == changed || boxes[boxes[i].partner].isGone);
            if (i == changed || isStale)
                findPartner(i);
            else if (i < changed)
                offer(i, changed);
        }
    }

    std::vector<Box> boxes;
    std::size_t left;
};

} // namespace

Region::Region(const PixelRect& rect) {
    if (!rect.isEmpty())
        rects.push_back(rect);
}

Region::Region(std::span<const PixelRect> list)
    : rects(unionWithin(list, std::numeric_limits<std::size_t>::max()).value_or(Rects())) {}

bool Region::contains(int x, int y) const noexcept {
    return std::any_of(rects.begin(), rects.end(),
                       [x, y](const PixelRect& rect) { return rect.contains(x, y); });
}

bool Region::contains(const PixelRect& rect) const {
    return Region(rect).minus(*this).isEmpty();
}

bool Region::overlaps(const PixelRect& rect) const noexcept {
    return std::any_of(rects.begin(), rects.end(),
                       [&rect](const PixelRect& own) { return own.overlaps(rect); });
}

PixelRect Region::boundingBox() const noexcept {
    return boundingBoxOf(rects);
}

std::int64_t Region::area() const noexcept {
    std::int64_t sum = 0;
    for (const PixelRect& rect : rects)
        sum += rect.area();
    return sum;
}

Region Region::united(const Region& other) const {
    Region result;
    result.rects = unitedRects(rects, other.rects);
    return result;
}

Region Region::minus(const Region& other) const {
    Region result;
    result.rects = combined(rects, other.rects,
                            [](bool isInOwn, bool isInOther) { return isInOwn && !isInOther; });
    return result;
}

Region Region::intersected(const Region& other) const {
    Region result;
    result.rects = combined(rects, other.rects,
                            [](bool isInOwn, bool isInOther) { return isInOwn && isInOther; });
    return result;
}

Region Region::moved(int dx, int dy) const {
    Region result;
    result.rects.reserve(rects.size());
    for (const PixelRect& rect : rects)
        result.rects.push_back(rect.moved(dx, dy));
    return result;
}

PixelRect boundingBoxOf(std::span<const PixelRect> rects) noexcept {
    PixelRect box;
    for (const PixelRect& rect : rects)
        box = box.boundingWith(rect);
    return box;
}

std::vector<PixelRect> coalesce(std::span<const PixelRect> rects, std::size_t limit) {
    if (rects.size() == 1 && !rects.front().isEmpty())
        return {rects.front()};
    const Rects boxes = disjoint(rects);
    return boxes.size() > 1 ? BoxJoiner(boxes).reducedTo(limit) : boxes;
}

DamageList::DamageList(std::size_t limit) : limit(limit) {}

void DamageList::add(const PixelRect& rect) {
    add({&rect, 1});
}

void DamageList::add(std::span<const PixelRect> rects) {
    // As many as this are cheap to keep, and rare to reach.
    constexpr std::size_t maxPending = 4096;
    for (const PixelRect& rect : rects) {
        if (rect.isEmpty() || (!pending.empty() && pending.back().contains(rect)))
            continue;
        pending.push_back(rect);
        box = box.boundingWith(rect);
        isCoalesced = false;
    }
    if (pending.size() <= maxPending)
        return;
    rectangles();
    pending.shrink_to_fit();
}

void DamageList::clear() noexcept {
    pending.clear();
    isCoalesced = true;
    box = {};
}

const std::vector<PixelRect>& DamageList::rectangles() {
    if (!isCoalesced) {
        pending = coalesce(pending, limit);
        isCoalesced = true;
    }
    return pending;
}

} // namespace platform
