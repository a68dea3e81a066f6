#if defined(__x86_64__) || defined(__i386__) // nothing is left of this file elsewhere

#include "plat/x86/Cpu.h"

#include <cpuid.h>

#include <atomic>

// The compilers' own __builtin_cpu_supports needs a run-time library that a macOS system lacks.

namespace plat {

namespace {

constexpr unsigned known = 1;
constexpr unsigned hasAvx2 = 2;
constexpr unsigned hasBmi2 = 4;

// Constant-initialised: a file's static initialiser may ask before this file's turn comes.
constinit std::atomic<unsigned> features = 0;

/// Tells whether the system saves the registers that 32-byte vectors stand in.
bool systemSavesVectors() noexcept {
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & bit_OSXSAVE) == 0)
        return false;
    unsigned low = 0;
    unsigned high = 0;
    asm("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    constexpr unsigned bothHalves = 6;
    return (low & bothHalves) == bothHalves;
}

unsigned askCpu() noexcept {
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0)
        return known;
    const bool avx2 = (ebx & bit_AVX2) != 0 && systemSavesVectors();
    return known | (avx2 ? hasAvx2 : 0) | ((ebx & bit_BMI2) != 0 ? hasBmi2 : 0);
}

} // namespace

CpuFeatures cpuFeatures() noexcept {
    unsigned all = features.load(std::memory_order_relaxed);
    if (all == 0) {
        all = askCpu(); // two threads at once get the same answer
        features.store(all, std::memory_order_relaxed);
    }
    return {(all & hasAvx2) != 0, (all & hasBmi2) != 0};
}

} // namespace plat

#endif
