#pragma once

#include <cstdint>
#include <cstring>

/// Sixteen bytes at once, by the compilers' own vector types: whatever the processor has for them.
/// For source files only.
namespace plat {

using ByteVector = unsigned char __attribute__((vector_size(16)));

inline ByteVector loadVector(const void* from) noexcept {
    ByteVector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
}

inline void storeVector(void* to, ByteVector vector) noexcept {
    std::memcpy(to, &vector, sizeof vector);
}

/// All bits of both halves, ORed together: 0 if the vector is.
inline std::uint64_t anyBits(ByteVector vector) noexcept {
    std::uint64_t halves[2];
    std::memcpy(halves, &vector, sizeof halves);
    return halves[0] | halves[1];
}

} // namespace plat
