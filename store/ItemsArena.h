#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "store/Items.h"
#include "store/LargeBlock.h"

// Storage for the rows of one ledger read, in chunks that grow with the
// ledger. itemList holds aliasing pointers into it, so a ledger of 400,000
// rows costs a few dozen allocations instead of one per row, and the chunks
// live as long as any of their rows is still referenced.
//
// When nobody references the rows any more, recycle() hands the same rows
// out again for the next read, which overwrites them field by field: the
// rows are written in one pass over memory that is already there, and their
// texts reuse the buffers they had (no allocation per row for a long
// category name).
class ItemsArena {
public:
    // The next row of the read: a row of an earlier read, whose fields the
    // caller overwrites all, or a new one with empty fields.
    Items& next()
    {
        if (current_ < chunks_.size() && used_ == chunks_[current_].capacity()) {
            ++current_;
            used_ = 0;
        }
        if (current_ == chunks_.size()) {
            const size_t size = chunks_.empty() ? 64 : std::min<size_t>(2 * chunks_.back().capacity(), kMaxChunk);
            chunks_.emplace_back().reserve(size);
        }
        Chunk& chunk = chunks_[current_];
        if (used_ == chunk.size()) chunk.emplace_back(0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, "", "", "", "", 0);
        return chunk[used_++];
    }

    // Rewinds to the first row; the rows stay, to be overwritten by next().
    void recycle()
    {
        current_ = 0;
        used_ = 0;
    }

    // Destroys the rows not handed out since the last recycle() and frees
    // the chunks after the one in use: a short ledger read after a long one
    // does not keep the long one's rows.
    void releaseUnused()
    {
        if (chunks_.empty()) return;
        Chunk& chunk = chunks_[current_];
        chunk.erase(chunk.begin() + static_cast<std::ptrdiff_t>(used_), chunk.end());
        chunks_.resize(current_ + 1);
    }

private:
    using Chunk = std::vector<Items, LargeBlockAllocator<Items>>;
    static constexpr size_t kMaxChunk = 16384;  // 4 MiB of rows
    std::vector<Chunk> chunks_;
    size_t current_ = 0;  // the chunk next() takes from
    size_t used_ = 0;     // rows of that chunk handed out since recycle()
};
