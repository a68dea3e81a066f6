#include "platform/linux/graphics/MoveVotes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace platform {
namespace {

using Hashes = std::vector<std::uint64_t>;

constexpr int length = 64;

/// No value stands twice, here or in a sequence of another seed.
Hashes unique(std::uint64_t seed) {
    Hashes hashes(length);
    std::iota(hashes.begin(), hashes.end(), 1);
    for (std::uint64_t& hash : hashes)
        hash = (hash + seed * 1000) * 0x9e3779b97f4a7c15ULL;
    return hashes;
}

/// What lies `back` places further on comes into the first `count` places from `first` on.
Hashes shifted(const Hashes& before, int back, int first, int count) {
    Hashes after = before;
    const auto from = before.begin() + first + back;
    std::copy(from, from + count, after.begin() + first);
    return after;
}

std::optional<int> winnerOf(const Hashes& before, const Hashes& after) {
    MoveVotes votes(length);
    votes.count(before, after);
    return votes.winner();
}

struct ShiftRow {
    const char* name;
    int back;
    int first;
    int count;
    friend void PrintTo(const ShiftRow& row, std::ostream* out) { *out << row.name; }
};

class ShiftedSequence : public testing::TestWithParam<ShiftRow> {};

TEST_P(ShiftedSequence, VotesForItsShift) {
    const ShiftRow& row = GetParam();
    const Hashes before = unique(1);
    EXPECT_EQ(winnerOf(before, shifted(before, row.back, row.first, row.count)), row.back);
}

INSTANTIATE_TEST_SUITE_P(
    Shifts, ShiftedSequence,
    testing::Values(ShiftRow{"ByOne", 1, 0, length - 1},
                    ShiftRow{"ByOneForward", -1, 1, length - 1}, ShiftRow{"ByMany", 20, 5, 30},
                    ShiftRow{"ByManyForward", -20, 25, 30},
                    ShiftRow{"AsFarAsItGoes", length - 8, 0, 8},
                    ShiftRow{"AsFarForwardAsItGoes", 8 - length, length - 8, 8}),
    [](const auto& row) { return row.param.name; });

TEST(MoveVotes, FewVotesAreNoWinner) {
    const Hashes before = unique(1);
    EXPECT_EQ(winnerOf(before, shifted(before, 10, 0, 7)), std::nullopt);
    EXPECT_EQ(winnerOf(before, shifted(before, 10, 0, 8)), 10);
}

TEST(MoveVotes, NothingCountedIsNoWinner) {
    EXPECT_EQ(MoveVotes(length).winner(), std::nullopt);
}

TEST(MoveVotes, WhatStayedDoesNotVote) {
    const Hashes before = unique(1);
    EXPECT_EQ(winnerOf(before, before), std::nullopt);
    // Most of it stays, and yet the small part that moved wins.
    EXPECT_EQ(winnerOf(before, shifted(before, 5, 0, 8)), 5);
}

TEST(MoveVotes, NewValuesDoNotVote) {
    EXPECT_EQ(winnerOf(unique(1), unique(2)), std::nullopt);
}

TEST(MoveVotes, ValueThatStandsTwiceDoesNotVote) {
    Hashes before(length);
    for (std::size_t i = 0; i < before.size(); ++i)
        before[i] = i / 2 + 1; // each stands twice, side by side
    EXPECT_EQ(winnerOf(before, shifted(before, 10, 0, 40)), std::nullopt);
    for (std::size_t i = 0; i < before.size(); ++i)
        before[i] = i / 3 + 1; // a third time must not make it new again
    EXPECT_EQ(winnerOf(before, shifted(before, 9, 0, 40)), std::nullopt);
}

TEST(MoveVotes, SeveralPairsAddUp) {
    MoveVotes votes(length);
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        EXPECT_EQ(votes.winner(), std::nullopt) << seed;
        const Hashes before = unique(seed);
        votes.count(before, shifted(before, -3, 10, 2));
    }
    EXPECT_EQ(votes.winner(), -3);
}

TEST(MoveVotes, MostVotesWin) {
    MoveVotes votes(length);
    const Hashes before = unique(1);
    votes.count(before, shifted(before, 7, 0, 20));
    votes.count(before, shifted(before, -4, 10, 21));
    EXPECT_EQ(votes.winner(), -4);
}

TEST(MoveVotes, HashesThatCollideInTheTableAreToldApart) {
    Hashes before(length);
    std::iota(before.begin(), before.end(), 1); // they differ in the lowest bits only
    EXPECT_EQ(winnerOf(before, shifted(before, 12, 0, 30)), 12);
}

TEST(MoveVotes, ZeroIsAValueLikeOthers) {
    Hashes before = unique(1);
    before[10] = 0;
    EXPECT_EQ(winnerOf(before, shifted(before, 10, 0, 8)), 10);
    EXPECT_EQ(winnerOf(before, shifted(before, 3, 7, 7)), std::nullopt);
    EXPECT_EQ(winnerOf(before, shifted(before, 3, 7, 8)), 3);
}

} // namespace
} // namespace platform
