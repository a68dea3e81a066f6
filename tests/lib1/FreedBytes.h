#pragma once

#include <array>
#include <cstddef>

/// Replaces the program's operator new, to see what the freed arrays of one size held. Link it into
/// the program.
struct FreedBytes {
    static constexpr std::size_t watchedSize = 4242;
    using Bytes = std::array<char, watchedSize>;
    static inline Bytes last{}; ///< what the last array of that size held

    static inline std::array<void*, 8> watched{}; ///< those that live
};
