#include "plat/SecureString.h"

#include <cstring>
#include <string>

#include <benchmark/benchmark.h>
#include <openssl/crypto.h>

namespace {

template <bool (*Compare)(const void*, const void*, std::size_t)>
void compare(benchmark::State& state) {
    const auto size = std::size_t(state.range(0));
    std::string a(size, 'a');
    std::string b(size, 'a');
    for (auto _ : state) {
        benchmark::DoNotOptimize(a.data());
        benchmark::DoNotOptimize(b.data());
        bool isEqual = Compare(a.data(), b.data(), size);
        benchmark::DoNotOptimize(isEqual);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(size));
}

bool lumoCompare(const void* a, const void* b, std::size_t n) {
    return plat::secureMemEq(a, b, n);
}
bool opensslCompare(const void* a, const void* b, std::size_t n) {
    return CRYPTO_memcmp(a, b, n) == 0;
}
BENCHMARK(compare<lumoCompare>)->Name("SecureCompare/32/lumo")->Arg(32);
BENCHMARK(compare<opensslCompare>)->Name("SecureCompare/32/openssl")->Arg(32);
BENCHMARK(compare<lumoCompare>)->Name("SecureCompare/4k/lumo")->Arg(4096);
BENCHMARK(compare<opensslCompare>)->Name("SecureCompare/4k/openssl")->Arg(4096);

template <void (*Wipe)(void*, std::size_t)>
void wipe(benchmark::State& state) {
    std::string bytes(std::size_t(state.range(0)), 'a');
    for (auto _ : state) {
        Wipe(bytes.data(), bytes.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}

void lumoWipe(void* p, std::size_t n) {
    plat::secureZeroMemory(p, n);
}
void libcWipe(void* p, std::size_t n) {
    ::explicit_bzero(p, n);
}
BENCHMARK(wipe<lumoWipe>)->Name("Wipe/32/lumo")->Arg(32);
BENCHMARK(wipe<libcWipe>)->Name("Wipe/32/explicit_bzero")->Arg(32);
BENCHMARK(wipe<lumoWipe>)->Name("Wipe/4k/lumo")->Arg(4096);
BENCHMARK(wipe<libcWipe>)->Name("Wipe/4k/explicit_bzero")->Arg(4096);

} // namespace
