#include "platform/linux/graphics/MoveDetector.h"

#include "platform/linux/graphics/MoveVotes.h"
#include "platform/linux/graphics/PixelHashes.h"
#include "platform/linux/graphics/Region.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <unordered_map>

namespace platform {
namespace {

/// Smaller changes are cheaper to send than to look at.
constexpr std::int64_t smallestArea = 4096;
constexpr int smallestSide = 16;

/// Samples of the changed box: so many columns of runs, and so many rows.
constexpr int columnSamples = 8;
constexpr int rowSamples = 8;

/// What a moved part is put together from. Units: pixels.
constexpr int tileWidth = 16;
constexpr int smallestRows = 8;

/// The largest area in which a moved window is looked for.
constexpr std::int64_t largestWindowSearch = 2'000'000;
constexpr int anchorCount = 48;
constexpr int anchorVotes = 4;

/// Where the sampled columns start: spread over the box, the first close to its left, where text
/// is. Each is one line of the processor's cache, which is what looking at pixels costs.
std::vector<int> sampleColumns(const PixelRect& box) {
    std::vector<int> columns;
    const int room = box.width() - hashedPixels;
    const int first = box.left + hashedPixels - 1;
    for (int i = 0; i < columnSamples; ++i) {
        const int place = std::min(first + room * i / columnSamples, box.left + room);
        const int left = place / hashedPixels * hashedPixels;
        if (columns.empty() || left > columns.back())
            columns.push_back(left);
    }
    return columns;
}

/// What has the same value everywhere can show no move, and old pixels are not looked at for it.
void keepTelling(std::vector<int>& places, std::vector<PixelHashes>& hashes) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < hashes.size(); ++i) {
        if (isUniform(hashes[i]))
            continue;
        places[kept] = places[i];
        std::swap(hashes[kept++], hashes[i]);
    }
    places.resize(kept);
    hashes.resize(kept);
}

std::optional<Shift> findVertical(const Surface& before, const Surface& after,
                                  const PixelRect& box) {
    std::vector<int> columns = sampleColumns(box);
    std::vector<PixelHashes> now = rowHashes(after, box, columns);
    keepTelling(columns, now);
    const std::vector<PixelHashes> then = rowHashes(before, box, columns);
    MoveVotes votes(box.height());
    for (std::size_t i = 0; i < columns.size(); ++i)
        votes.count(then[i], now[i]);
    const auto offset = votes.winner();
    return offset ? std::optional(Shift{0, *offset}) : std::nullopt;
}

std::optional<Shift> findHorizontal(const Surface& before, const Surface& after,
                                    const PixelRect& box) {
    MoveVotes votes(box.width() - hashedPixels + 1);
    for (int i = 0; i < rowSamples; ++i) {
        // Not evenly spread, or every one could lie between two lines of text.
        const int y = box.top + std::min(box.height() - 1, box.height() * i / rowSamples + i);
        const PixelHashes now = runHashes(after, box, y);
        if (!isUniform(now))
            votes.count(runHashes(before, box, y), now);
    }
    const auto offset = votes.winner();
    return offset ? std::optional(Shift{*offset, 0}) : std::nullopt;
}

/// Runs of pixels in the new frame that are looked for in the old one.
class Anchors {
public:
    void collect(const Surface& after, std::span<const PixelRect> area) {
        for (const PixelRect& rect : area) {
            const int dx = std::max(hashedPixels, rect.width() / 8);
            const int dy = std::max(4, rect.height() / 12);
            for (int y = rect.top + dy / 2; y < rect.bottom; y += dy) {
                for (int x = rect.left + dx / 4; x + hashedPixels <= rect.right; x += dx)
                    add(after, x, y);
            }
        }
    }

    bool isEmpty() const { return places.empty(); }

    struct Place {
        int x;
        int y;
    };

    /// Null almost always; the filter answers most questions.
    const Place* find(std::uint64_t hash) const {
        const std::size_t bit = hash >> 52;
        if (((filter[bit / 64] >> (bit % 64)) & 1) == 0)
            return nullptr;
        const auto it = places.find(hash);
        return it != places.end() ? &it->second : nullptr;
    }

private:
    // A run of few changes looks like too many others.
    static bool isDistinctive(const std::uint32_t* pixels) {
        int changes = 0;
        for (int i = 1; i < hashedPixels; ++i)
            changes += pixels[i] != pixels[i - 1] ? 1 : 0;
        return changes >= 4;
    }

    void add(const Surface& after, int x, int y) {
        const std::uint32_t* pixels = after.row(y) + x;
        if (places.size() >= anchorCount || !isDistinctive(pixels))
            return;
        const std::uint64_t hash = RollingHash(pixels).get();
        const std::size_t bit = hash >> 52;
        filter[bit / 64] |= std::uint64_t{1} << (bit % 64);
        places.emplace(hash, Place{x, y});
    }

    std::array<std::uint64_t, 64> filter{};
    std::unordered_map<std::uint64_t, Place> places;
};

/// The offset that most anchors agree on, from every run of pixels in the changed areas.
std::optional<Shift> findWindow(const Surface& before, const Surface& after,
                                std::span<const PixelRect> area) {
    Anchors anchors;
    anchors.collect(after, area);
    if (anchors.isEmpty())
        return std::nullopt;
    std::unordered_map<std::int64_t, int> votes;
    Shift best;
    int most = 0;
    const auto vote = [&](const Anchors::Place& place, int x, int y) {
        const Shift shift{x - place.x, y - place.y};
        const int count = ++votes[(std::int64_t{shift.dy} << 32) + shift.dx];
        if (count > most && shift != Shift{}) {
            most = count;
            best = shift;
        }
    };
    for (const PixelRect& rect : area) {
        if (rect.width() < hashedPixels)
            continue;
        for (int y = rect.top; y < rect.bottom; ++y) {
            const std::uint32_t* row = before.row(y);
            RollingHash hash(row + rect.left);
            for (int x = rect.left;; ++x) {
                if (const auto* place = anchors.find(hash.get()))
                    vote(*place, x, y);
                if (x + hashedPixels >= rect.right)
                    break;
                hash.roll(row[x], row[x + hashedPixels]);
            }
        }
    }
    return most >= anchorVotes ? std::optional(best) : std::nullopt;
}

/// The largest rectangle of tiles that equal their source, found row by row: over each tile stands
/// how many rows up to here are equal.
class Skyline {
public:
    Skyline(const Surface& oldFrame, const Surface& newFrame, const PixelRect& bounds, Shift offset)
        : before(oldFrame), after(newFrame), shift(offset), area(withSource(bounds)),
          heights(static_cast<std::size_t>((area.width() + tileWidth - 1) / tileWidth)),
          isTileEqual(heights.size()) {}

    PixelRect largest() {
        for (int y = area.top; y < area.bottom; ++y)
            addRow(y);
        measure(area.bottom);
        return best;
    }

private:
    /// The part whose source lies inside the frame.
    PixelRect withSource(const PixelRect& bounds) const {
        const PixelRect frame = PixelRect::ofSize(0, 0, before.width(), before.height());
        const PixelRect part = bounds.intersection(frame.moved(-shift.dx, -shift.dy));
        return part.isEmpty() ? PixelRect{} : part;
    }

    void addRow(int y) {
        compareRow(y);
        for (std::size_t tile = 0; tile < heights.size(); ++tile) {
            if (heights[tile] != 0 && isTileEqual[tile] == 0) {
                measure(y);
                break;
            }
        }
        for (std::size_t tile = 0; tile < heights.size(); ++tile)
            heights[tile] = isTileEqual[tile] != 0 ? heights[tile] + 1 : 0;
    }

    void compareRow(int y) {
        const std::uint32_t* now = after.row(y) + area.left;
        const std::uint32_t* then = before.row(y + shift.dy) + area.left + shift.dx;
        const auto width = static_cast<std::size_t>(area.width());
        if (std::memcmp(now, then, width * 4) == 0) {
            std::ranges::fill(isTileEqual, 1);
            return;
        }
        for (std::size_t tile = 0; tile < heights.size(); ++tile) {
            const std::size_t left = tile * tileWidth;
            const std::size_t count = std::min<std::size_t>(tileWidth, width - left);
            isTileEqual[tile] = std::memcmp(now + left, then + left, count * 4) == 0 ? 1 : 0;
        }
    }

    /// Looks at every rectangle that ends above this row: the widest one of each height.
    void measure(int bottom) {
        open.clear();
        for (std::size_t tile = 0; tile <= heights.size(); ++tile) {
            const int height = tile < heights.size() ? heights[tile] : 0;
            std::size_t start = tile;
            while (!open.empty() && open.back().height >= height) {
                start = open.back().start;
                consider(start, tile, open.back().height, bottom);
                open.pop_back();
            }
            open.push_back({start, height});
        }
    }

    void consider(std::size_t fromTile, std::size_t toTile, int height, int bottom) {
        const int left = area.left + static_cast<int>(fromTile) * tileWidth;
        const int right = std::min(area.left + static_cast<int>(toTile) * tileWidth, area.right);
        const PixelRect rect{left, bottom - height, right, bottom};
        if (rect.area() > best.area())
            best = rect;
    }

    struct Step {
        std::size_t start;
        int height;
    };

    const Surface& before;
    const Surface& after;
    const Shift shift;
    const PixelRect area;
    std::vector<int> heights;
    std::vector<std::uint8_t> isTileEqual;
    std::vector<Step> open;
    PixelRect best;
};

} // namespace

std::vector<PixelRect> movedParts(const Surface& before, const Surface& after,
                                  std::span<const PixelRect> area, Shift shift) {
    std::vector<PixelRect> parts;
    for (const PixelRect& rect : area) {
        const PixelRect part = Skyline(before, after, rect, shift).largest();
        if (part.width() >= smallestSide && part.height() >= smallestRows)
            parts.push_back(part);
    }
    return parts;
}

void findMoves(const Surface& before, const Surface& after, MoveSearch search,
               FrameChange& change) {
    const PixelRect box = boundingBoxOf(change.dirty);
    if (box.area() < smallestArea || box.width() < smallestSide * 2 ||
        box.height() < smallestSide * 2)
        return;
    std::optional<Shift> shift = findVertical(before, after, box);
    if (!shift)
        shift = findHorizontal(before, after, box);
    if (!shift && search == MoveSearch::ScrollsAndWindows && box.area() <= largestWindowSearch)
        shift = findWindow(before, after, change.dirty);
    if (!shift)
        return;
    change.moved = movedParts(before, after, change.dirty, *shift);
    if (!change.moved.empty())
        change.shift = *shift;
}

} // namespace platform
