#include "store/IdIndexMap.h"

#include <algorithm>
#include <stdexcept>
#include <string>

size_t IdIndexMap::slotOf(int64_t id) const
{
    // Fibonacci hashing spreads consecutive Ids over the table.
    return static_cast<size_t>((static_cast<uint64_t>(id) * 0x9E3779B97F4A7C15ull) >> shift_);
}

const int64_t* IdIndexMap::find(int64_t id) const
{
    if (ids_.empty()) return nullptr;
    const size_t mask = ids_.size() - 1;
    for (size_t slot = slotOf(id);; slot = (slot + 1) & mask) {
        if (ids_[slot] == id) return &positions_[slot];
        if (ids_[slot] == kFree) return nullptr;
    }
}

int64_t IdIndexMap::at(int64_t id) const
{
    if (const int64_t* position = find(id)) return *position;
    throw std::out_of_range("IdIndexMap: no row with Id " + std::to_string(id));
}

int64_t& IdIndexMap::operator[](int64_t id)
{
    if (2 * (size_ + 1) > ids_.size()) grow();  // keep at most half the slots in use
    const size_t mask = ids_.size() - 1;
    size_t slot = slotOf(id);
    while (ids_[slot] != id && ids_[slot] != kFree) slot = (slot + 1) & mask;
    if (ids_[slot] == kFree) {
        ids_[slot] = id;
        positions_[slot] = 0;
        ++size_;
    }
    return positions_[slot];
}

void IdIndexMap::clear()
{
    // The arrays stay: the next read of a list of the same length reuses them.
    std::fill(ids_.begin(), ids_.end(), kFree);
    size_ = 0;
}

void IdIndexMap::assignPositions(const std::vector<int64_t>& ids)
{
    // Size the table once for all ids, keeping the old arrays when they fit.
    size_t capacity = 16;
    while (capacity < 2 * ids.size()) capacity *= 2;
    if (ids_.size() == capacity) {
        std::fill(ids_.begin(), ids_.end(), kFree);
    } else {
        ids_.assign(capacity, kFree);
        positions_.assign(capacity, 0);
        ids_.shrink_to_fit();
        positions_.shrink_to_fit();
    }
    shift_ = 64;
    for (size_t c = capacity; c > 1; c >>= 1) --shift_;
    size_ = 0;
    for (size_t p = 0; p < ids.size(); ++p) (*this)[ids[p]] = static_cast<int64_t>(p);
}

void IdIndexMap::grow()
{
    Slots oldIds = std::move(ids_);
    Slots oldPositions = std::move(positions_);
    const size_t capacity = oldIds.empty() ? 16 : 2 * oldIds.size();
    ids_.assign(capacity, kFree);
    positions_.assign(capacity, 0);
    shift_ = 64;
    for (size_t c = capacity; c > 1; c >>= 1) --shift_;
    size_ = 0;
    for (size_t i = 0; i < oldIds.size(); ++i)
        if (oldIds[i] != kFree) (*this)[oldIds[i]] = oldPositions[i];
}
