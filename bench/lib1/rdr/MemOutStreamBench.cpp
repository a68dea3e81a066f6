#include "rdr/MemOutStream.h"

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "lib1/Corpus.h"

namespace {

constexpr int rounds = 250;
constexpr int piecesPerRound = 4000;

// Pieces of 1 to 16 bytes, in an order that no predictor learns.
std::vector<std::string> pieces() {
    std::mt19937 random(20261121); // NOLINT(bugprone-random-generator-seed): the same in every run
    std::vector<std::string> all;
    for (int i = 0; i < piecesPerRound; ++i)
        all.emplace_back(1 + random() % 16, 'x');
    return all;
}

// What growing costs is in it, unless the room is there from the start.
constexpr int allBytes = 9 * rounds * piecesPerRound;

void lumoAppend(benchmark::State& state, int room) {
    const std::vector<std::string> all = pieces();
    for (auto _ : state) {
        rdr::MemOutStream stream(room);
        for (int i = 0; i < rounds; ++i) {
            for (const std::string& piece : all)
                stream.writeBytes(piece.data(), int(piece.size()));
        }
        benchmark::DoNotOptimize(stream.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * rounds * piecesPerRound);
}

void stdAppend(benchmark::State& state, int room) {
    const std::vector<std::string> all = pieces();
    for (auto _ : state) {
        std::string text;
        text.reserve(std::size_t(room));
        for (int i = 0; i < rounds; ++i) {
            for (const std::string& piece : all)
                text.append(piece.data(), piece.size());
        }
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * rounds * piecesPerRound);
}

[[maybe_unused]] const bool registered = [] {
    benchmark::RegisterBenchmark("SmallAppends/1m/lumo", lumoAppend, 256);
    benchmark::RegisterBenchmark("SmallAppends/1m/std_string", stdAppend, 0);
    benchmark::RegisterBenchmark("SmallAppends/1m_reserved/lumo", lumoAppend, allBytes);
    benchmark::RegisterBenchmark("SmallAppends/1m_reserved/std_string", stdAppend, allBytes);
    return true;
}();

} // namespace
