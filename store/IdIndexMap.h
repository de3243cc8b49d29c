#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "store/LargeBlock.h"

// A map from a row Id to the row's position in a list. Open addressing over
// one flat array of (Id, position) slots: a ledger of hundreds of thousands
// of rows is mapped with one allocation instead of one node per row, and
// each insertion or lookup touches one cache line.
class IdIndexMap {
public:
    // The position stored for id, inserting 0 when id is new.
    int64_t& operator[](int64_t id);
    // The position of id, or nullptr when id is not mapped.
    const int64_t* find(int64_t id) const;
    // The position of id; throws std::out_of_range when id is not mapped.
    int64_t at(int64_t id) const;
    size_t count(int64_t id) const { return find(id) ? 1 : 0; }
    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    void clear();
    // Replaces the contents with ids[p] -> p for every position p.
    void assignPositions(const std::vector<int64_t>& ids);

private:
    static constexpr int64_t kFree = INT64_MIN;  // no Id of a 32-bit column takes this value
    struct Slot {
        int64_t id;
        int64_t position;
    };
    using Slots = std::vector<Slot, LargeBlockAllocator<Slot>>;
    Slots slots_;
    size_t size_ = 0;
    unsigned bits_ = 0;  // log2 of the table size

    size_t slotOf(int64_t id) const;
    void grow();
};

// A map from a list position to the row's Id: positions run 0, 1, 2, ...
using IndexIdMap = std::vector<int64_t>;
