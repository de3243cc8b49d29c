#pragma once

#include <cstddef>

// Memory for the big chunks of a ledger read. A block of 2 MiB or more is
// mapped on a 2 MiB boundary and offered to the kernel for huge pages, so
// that writing hundreds of thousands of fresh rows costs a few dozen page
// faults instead of one per 4 KiB; smaller blocks come from operator new.
void* allocateLargeBlock(std::size_t bytes);
void freeLargeBlock(void* block, std::size_t bytes);

// An allocator for std::vector over allocateLargeBlock.
template <typename T>
struct LargeBlockAllocator {
    using value_type = T;

    LargeBlockAllocator() = default;
    template <typename U>
    LargeBlockAllocator(const LargeBlockAllocator<U>&) {}

    T* allocate(std::size_t n) { return static_cast<T*>(allocateLargeBlock(n * sizeof(T))); }
    void deallocate(T* p, std::size_t n) { freeLargeBlock(p, n * sizeof(T)); }

    template <typename U>
    bool operator==(const LargeBlockAllocator<U>&) const { return true; }
};
