#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "store/Items.h"
#include "store/LargeBlock.h"

// Storage for the rows of one ledger read, in chunks that grow with the
// ledger. itemList holds aliasing pointers into it, so a ledger of 400,000
// rows costs a few dozen allocations instead of one per row, and the chunks
// live as long as any of their rows is still referenced.
//
// When nobody references the rows any more, recycle() empties the chunks but
// keeps their memory for the next read of a ledger: re-reading the same
// ledger after a write then touches no fresh pages.
class ItemsArena {
public:
    template <typename... Args>
    Items& emplace(Args&&... args)
    {
        if (current_ == chunks_.size()) {
            const size_t next = chunks_.empty() ? 64 : std::min<size_t>(2 * chunks_.back().capacity(), kMaxChunk);
            chunks_.emplace_back().reserve(next);
        } else if (chunks_[current_].size() == chunks_[current_].capacity()) {
            ++current_;
            return emplace(std::forward<Args>(args)...);
        }
        return chunks_[current_].emplace_back(std::forward<Args>(args)...);
    }

    // Destroys every row and rewinds to the first chunk.
    void recycle()
    {
        for (auto& chunk : chunks_) chunk.clear();
        current_ = 0;
    }

    // Frees the chunks after the one in use: a short ledger read after a long
    // one does not keep the long one's memory.
    void releaseUnused()
    {
        if (current_ + 1 < chunks_.size()) chunks_.resize(current_ + 1);
    }

private:
    using Chunk = std::vector<Items, LargeBlockAllocator<Items>>;
    static constexpr size_t kMaxChunk = 16384;  // 4 MiB of rows
    std::vector<Chunk> chunks_;
    size_t current_ = 0;
};
