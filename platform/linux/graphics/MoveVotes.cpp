#include "platform/linux/graphics/MoveVotes.h"

#include <algorithm>
#include <bit>

namespace platform {
namespace {

constexpr int fewestVotes = 8;

} // namespace

MoveVotes::MoveVotes(int sequenceLength)
    : length(sequenceLength),
      table(std::bit_ceil(static_cast<std::size_t>(sequenceLength) * 2 + 1)),
      votes(static_cast<std::size_t>(sequenceLength) * 2 + 1) {}

MoveVotes::Slot& MoveVotes::slotFor(std::uint64_t hash) {
    const std::size_t mask = table.size() - 1;
    std::size_t at = (hash >> 20) & mask;
    while (table[at].place != empty && table[at].hash != hash)
        at = (at + 1) & mask;
    return table[at];
}

void MoveVotes::remember(std::span<const std::uint64_t> before) {
    std::ranges::fill(table, Slot{});
    for (std::size_t i = 0; i < before.size(); ++i) {
        Slot& slot = slotFor(before[i]);
        slot.place = slot.place == empty ? static_cast<std::int32_t>(i) : ambiguous;
        slot.hash = before[i];
    }
}

void MoveVotes::count(std::span<const std::uint64_t> before, std::span<const std::uint64_t> after) {
    remember(before);
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (after[i] == before[i])
            continue;
        const Slot& slot = slotFor(after[i]);
        if (slot.place >= 0)
            ++votes[static_cast<std::size_t>(slot.place + length) - i];
    }
}

std::optional<int> MoveVotes::winner() const {
    const auto most = std::ranges::max_element(votes);
    if (*most < fewestVotes)
        return std::nullopt;
    return static_cast<int>(most - votes.begin()) - length;
}

} // namespace platform
