#pragma once

namespace plat {

/// What a processor may have beyond the instructions that every one of its kind has.
struct CpuFeatures {
    bool avx2 = false; ///< vectors of 32 bytes, which the system saves with a thread
    bool bmi2 = false; ///< gathering and spreading of bits
};

/// Asks the processor the first time, and remembers its answer: in a virtual machine, asking takes
/// as long as a kilobyte of text.
CpuFeatures cpuFeatures() noexcept;

} // namespace plat
