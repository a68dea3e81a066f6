#pragma once

#include <atomic>
#include <cstddef>
#include <limits>

/// Replaces the program's operator new, to count allocations and to refuse them. Link it into
/// the program.
struct AllocationHook {
    static inline std::atomic<int> count{0};
    static inline std::atomic<std::size_t> lastSize{0};
    /// Larger requests throw std::bad_alloc.
    static inline std::atomic<std::size_t> largest{std::numeric_limits<std::size_t>::max()};
    /// This many more requests are granted, all later ones refused; -1: no limit.
    static inline std::atomic<int> remaining{-1};
};

/// Refuses allocations above a size for the length of a scope.
class LargestAllocation {
public:
    explicit LargestAllocation(std::size_t size) { AllocationHook::largest = size; }
    LargestAllocation(const LargestAllocation&) = delete;
    LargestAllocation& operator=(const LargestAllocation&) = delete;
    ~LargestAllocation() { AllocationHook::largest = std::numeric_limits<std::size_t>::max(); }
};

/// Grants a number of allocations and no more for the length of a scope.
class RemainingAllocations {
public:
    explicit RemainingAllocations(int count) { AllocationHook::remaining = count; }
    RemainingAllocations(const RemainingAllocations&) = delete;
    RemainingAllocations& operator=(const RemainingAllocations&) = delete;
    ~RemainingAllocations() { AllocationHook::remaining = -1; }
};
