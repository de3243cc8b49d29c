#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "store/LargeBlock.h"

namespace {

TEST(LargeBlockTest, BlocksOfEverySizeAreWholeAndLargeOnesStartOnAHugePage)
{
    constexpr std::size_t kHugePage = std::size_t{2} << 20;
    // Neighbouring blocks, each filled to its last byte: a block that lost
    // its tail to the trimming of another would fault or be overwritten.
    const std::vector<std::size_t> sizes{100, kHugePage - 1, kHugePage, kHugePage + 1, 3 * kHugePage + 12345};
    std::vector<void*> blocks;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        blocks.push_back(allocateLargeBlock(sizes[i]));
        std::memset(blocks.back(), static_cast<int>(i + 1), sizes[i]);
    }
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const auto* bytes = static_cast<const unsigned char*>(blocks[i]);
        EXPECT_EQ(bytes[0], i + 1);
        EXPECT_EQ(bytes[sizes[i] - 1], i + 1);
        if (sizes[i] >= kHugePage) {
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks[i]) % kHugePage, 0u);
        }
        freeLargeBlock(blocks[i], sizes[i]);
    }

    // A vector that grows across the threshold keeps its contents.
    std::vector<int64_t, LargeBlockAllocator<int64_t>> grown;
    for (int64_t v = 0; v < 1000000; ++v) grown.push_back(v);
    EXPECT_EQ(grown[999999] + grown[262144], 999999 + 262144);
}

}  // namespace
