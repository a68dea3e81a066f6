#pragma once

#include <bit>
#include <cstddef>

/// The place of a virtual operation in its class's table, from 0.
/// Shape: as the Itanium C++ ABI stores a pointer to a virtual member on x86.
template <typename Member>
std::size_t virtualSlot(Member member) {
    struct Stored {
        std::ptrdiff_t offsetPlusOne;
        std::ptrdiff_t adjustment;
    };
    return std::size_t(std::bit_cast<Stored>(member).offsetPlusOne - 1) / sizeof(void*);
}
