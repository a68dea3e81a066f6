#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace platform {

/// Finds by how much one sequence of hashes is shifted against another, from several pairs of
/// sequences that should agree. Only a value that stands once in the old sequence votes, and only
/// where the new one changed.
class MoveVotes {
public:
    /// `length` is that of every sequence.
    explicit MoveVotes(int length);

    void count(std::span<const std::uint64_t> before, std::span<const std::uint64_t> after);

    /// How far back (negative: forward) the old place lies, or null without a clear winner.
    std::optional<int> winner() const;

private:
    struct Slot {
        std::uint64_t hash = 0;
        std::int32_t place = empty;
    };
    static constexpr std::int32_t empty = -1;
    static constexpr std::int32_t ambiguous = -2;

    void remember(std::span<const std::uint64_t> before);
    Slot& slotFor(std::uint64_t hash);

    int length;
    std::vector<Slot> table;
    std::vector<std::int32_t> votes; ///< by offset + length
};

} // namespace platform
