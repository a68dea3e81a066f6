#include "lib1/FreedBytes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    if (size == FreedBytes::watchedSize)
        *std::ranges::find(FreedBytes::watched, nullptr) = memory;
    return memory;
}
void operator delete(void* memory) noexcept {
    const auto entry = std::ranges::find(FreedBytes::watched, memory);
    if (memory != nullptr && entry != FreedBytes::watched.end()) {
        std::memcpy(FreedBytes::last.data(), memory, FreedBytes::watchedSize);
        *entry = nullptr;
    }
    std::free(memory);
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void operator delete[](void* memory) noexcept {
    operator delete(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    operator delete(memory);
}
