#include <string>

#include <absl/strings/escaping.h>
#include <benchmark/benchmark.h>

#include "lib1/Corpus.h"
#include "plat/BinToHex.h"
#include "plat/HexToBin.h"

namespace {

constexpr std::size_t binarySize = 4096;

std::string binary() {
    std::mt19937 random(20261121); // NOLINT(bugprone-random-generator-seed): the same in every run
    std::string bytes(binarySize, '\0');
    for (char& byte : bytes)
        byte = char(random());
    return bytes;
}

void lumoEncode(benchmark::State& state) {
    const std::string bytes = binary();
    const plat::CBuf<unsigned char> view(reinterpret_cast<const unsigned char*>(bytes.data()),
                                         int(bytes.size()));
    for (auto _ : state) {
        const plat::String hex = plat::binToHexStr(view);
        benchmark::DoNotOptimize(hex.get());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(binarySize));
}
BENCHMARK(lumoEncode)->Name("HexEncode/4k/lumo");

void abslEncode(benchmark::State& state) {
    const std::string bytes = binary();
    for (auto _ : state) {
        const std::string hex = absl::BytesToHexString(bytes);
        benchmark::DoNotOptimize(hex.data());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(binarySize));
}
BENCHMARK(abslEncode)->Name("HexEncode/4k/absl");

void lumoDecode(benchmark::State& state) {
    const std::string hex = absl::BytesToHexString(binary());
    for (auto _ : state) {
        plat::MBuf<unsigned char> bytes;
        bool isHex = plat::hexStrToBin(hex.c_str(), &bytes);
        benchmark::DoNotOptimize(isHex);
        benchmark::DoNotOptimize(bytes.get());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(binarySize));
}
BENCHMARK(lumoDecode)->Name("HexDecode/4k/lumo");

void abslDecode(benchmark::State& state) {
    const std::string hex = absl::BytesToHexString(binary());
    for (auto _ : state) {
        const std::string bytes = absl::HexStringToBytes(hex);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(binarySize));
}
BENCHMARK(abslDecode)->Name("HexDecode/4k/absl");

} // namespace
