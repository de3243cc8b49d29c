#include "store/LargeBlock.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

bool isLarge(std::size_t bytes) { return bytes >= kHugePage; }

std::size_t roundedUp(std::size_t bytes) { return (bytes + kHugePage - 1) / kHugePage * kHugePage; }

}  // namespace

void* allocateLargeBlock(std::size_t bytes)
{
    if (!isLarge(bytes)) return ::operator new(bytes);
    // Map one huge page more than needed, then unmap the unaligned head
    // and the rest of the tail.
    const std::size_t size = roundedUp(bytes);
    void* mapped = mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    const auto start = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t aligned = (start + kHugePage - 1) / kHugePage * kHugePage;
    if (aligned > start) munmap(mapped, aligned - start);
    const std::size_t tail = kHugePage - (aligned - start);
    if (tail > 0) munmap(reinterpret_cast<void*>(aligned + size), tail);
    // Only advice: without huge pages the block works as ordinary memory.
    madvise(reinterpret_cast<void*>(aligned), size, MADV_HUGEPAGE);
    return reinterpret_cast<void*>(aligned);
}

void freeLargeBlock(void* block, std::size_t bytes)
{
    if (!isLarge(bytes)) {
        ::operator delete(block);
        return;
    }
    munmap(block, roundedUp(bytes));
}
