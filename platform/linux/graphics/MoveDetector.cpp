#include "platform/linux/graphics/MoveDetector.h"

#include "platform/linux/graphics/MoveVotes.h"
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

/// Samples: so many strips across the changed box, each so many pixels wide.
constexpr int stripCount = 8;
constexpr int stripWidth = 16;

/// What a moved part is put together from. Units: pixels.
constexpr int tileWidth = 16;
constexpr int smallestRows = 8;

/// The largest area in which a moved window is looked for.
constexpr std::int64_t largestWindowSearch = 2'000'000;
constexpr int anchorCount = 48;
constexpr int anchorVotes = 4;

const std::uint32_t* pixelAt(const Surface& surface, int x, int y) {
    return reinterpret_cast<const std::uint32_t*>(surface.pixels() + static_cast<std::size_t>(y) *
                                                                         surface.strideBytes()) +
           x;
}

std::uint64_t mix(std::uint64_t hash, std::uint64_t value) {
    hash = (hash ^ value) * 0x9e3779b97f4a7c15ULL;
    return hash ^ (hash >> 29);
}

/// One hash a row, of the strip of pixels that starts at x.
std::vector<std::uint64_t> rowHashes(const Surface& surface, const PixelRect& box, int x) {
    std::vector<std::uint64_t> hashes;
    hashes.reserve(static_cast<std::size_t>(box.height()));
    for (int y = box.top; y < box.bottom; ++y) {
        std::array<std::uint64_t, stripWidth / 2> words;
        std::memcpy(words.data(), pixelAt(surface, x, y), sizeof words);
        std::uint64_t hash = 0;
        for (const std::uint64_t word : words)
            hash = mix(hash, word);
        hashes.push_back(hash);
    }
    return hashes;
}

/// One hash a column, of the strip of pixels that starts at y.
std::vector<std::uint64_t> columnHashes(const Surface& surface, const PixelRect& box, int y) {
    std::vector<std::uint64_t> hashes(static_cast<std::size_t>(box.width()));
    for (int row = y; row < y + stripWidth; ++row) {
        const std::uint32_t* pixels = pixelAt(surface, box.left, row);
        for (std::size_t i = 0; i < hashes.size(); ++i)
            hashes[i] = mix(hashes[i], pixels[i]);
    }
    return hashes;
}

/// Where the strips start: spread over the side, the first close to its beginning, where text is.
std::vector<int> stripStarts(int first, int last) {
    std::vector<int> starts;
    const int room = last - first - stripWidth;
    for (int i = 0; i < stripCount; ++i) {
        const int start = first + std::min(room, room * i / stripCount + stripWidth / 2);
        if (starts.empty() || start >= starts.back() + stripWidth)
            starts.push_back(start);
    }
    return starts;
}

std::optional<Shift> findVertical(const Surface& before, const Surface& after,
                                  const PixelRect& box) {
    MoveVotes votes(box.height());
    for (const int x : stripStarts(box.left, box.right))
        votes.count(rowHashes(before, box, x), rowHashes(after, box, x));
    const auto offset = votes.winner();
    return offset ? std::optional(Shift{0, *offset}) : std::nullopt;
}

std::optional<Shift> findHorizontal(const Surface& before, const Surface& after,
                                    const PixelRect& box) {
    MoveVotes votes(box.width());
    for (const int y : stripStarts(box.top, box.bottom))
        votes.count(columnHashes(before, box, y), columnHashes(after, box, y));
    const auto offset = votes.winner();
    return offset ? std::optional(Shift{*offset, 0}) : std::nullopt;
}

/// A polynomial over a run of pixels, so that the next run's value follows from this one's.
class RollingHash {
public:
    explicit RollingHash(const std::uint32_t* pixels) {
        for (int i = 0; i < stripWidth; ++i)
            value = value * base + pixels[i];
    }

    void roll(std::uint32_t out, std::uint32_t in) { value = value * base + in - outFactor * out; }

    std::uint64_t get() const { return value; }

private:
    static constexpr std::uint64_t base = 0xd6e8feb86659fd93ULL;
    static constexpr std::uint64_t outFactor = [] {
        std::uint64_t power = 1;
        for (int i = 0; i < stripWidth; ++i)
            power *= base;
        return power;
    }();

    std::uint64_t value = 0;
};

/// Runs of pixels in the new frame that are looked for in the old one.
class Anchors {
public:
    void collect(const Surface& after, std::span<const PixelRect> area) {
        for (const PixelRect& rect : area) {
            const int dx = std::max(stripWidth, rect.width() / 8);
            const int dy = std::max(4, rect.height() / 12);
            for (int y = rect.top + dy / 2; y < rect.bottom; y += dy) {
                for (int x = rect.left + dx / 4; x + stripWidth <= rect.right; x += dx)
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
        for (int i = 1; i < stripWidth; ++i)
            changes += pixels[i] != pixels[i - 1] ? 1 : 0;
        return changes >= 4;
    }

    void add(const Surface& after, int x, int y) {
        const std::uint32_t* pixels = pixelAt(after, x, y);
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
        if (rect.width() < stripWidth)
            continue;
        for (int y = rect.top; y < rect.bottom; ++y) {
            const std::uint32_t* row = pixelAt(before, 0, y);
            RollingHash hash(row + rect.left);
            for (int x = rect.left;; ++x) {
                if (const auto* place = anchors.find(hash.get()))
                    vote(*place, x, y);
                if (x + stripWidth >= rect.right)
                    break;
                hash.roll(row[x], row[x + stripWidth]);
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
        const std::uint32_t* now = pixelAt(after, area.left, y);
        const std::uint32_t* then = pixelAt(before, area.left + shift.dx, y + shift.dy);
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
