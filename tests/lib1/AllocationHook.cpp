#include "lib1/AllocationHook.h"

#include <cstdlib>
#include <new>

void* operator new(std::size_t size) {
    ++AllocationHook::count;
    AllocationHook::lastSize = size;
    if (size > AllocationHook::largest || AllocationHook::remaining == 0)
        throw std::bad_alloc();
    if (AllocationHook::remaining > 0)
        --AllocationHook::remaining;
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
