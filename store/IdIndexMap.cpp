#include "store/IdIndexMap.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace {

unsigned bitsFor(size_t capacity)
{
    unsigned bits = 0;
    for (size_t c = capacity; c > 1; c >>= 1) ++bits;
    return bits;
}

}  // namespace

size_t IdIndexMap::slotOf(int64_t id) const
{
    // The Id's low bits with its higher bits folded onto them: the Ids of a
    // ledger read come mostly in ascending order and then fill the table
    // from one end to the other, one cache line after the next, while Ids
    // a table's size apart still land apart.
    auto key = static_cast<uint64_t>(id);
    for (uint64_t higher = key >> bits_; higher != 0; higher >>= bits_) key ^= higher;
    return static_cast<size_t>(key & (slots_.size() - 1));
}

const int64_t* IdIndexMap::find(int64_t id) const
{
    if (slots_.empty()) return nullptr;
    const size_t mask = slots_.size() - 1;
    for (size_t slot = slotOf(id);; slot = (slot + 1) & mask) {
        if (slots_[slot].id == id) return &slots_[slot].position;
        if (slots_[slot].id == kFree) return nullptr;
    }
}

int64_t IdIndexMap::at(int64_t id) const
{
    if (const int64_t* position = find(id)) return *position;
    throw std::out_of_range("IdIndexMap: no row with Id " + std::to_string(id));
}

int64_t& IdIndexMap::operator[](int64_t id)
{
    if (2 * (size_ + 1) > slots_.size()) grow();  // keep at most half the slots in use
    const size_t mask = slots_.size() - 1;
    size_t slot = slotOf(id);
    while (slots_[slot].id != id && slots_[slot].id != kFree) slot = (slot + 1) & mask;
    if (slots_[slot].id == kFree) {
        slots_[slot] = {id, 0};
        ++size_;
    }
    return slots_[slot].position;
}

void IdIndexMap::clear()
{
    // The array stays: the next read of a list of the same length reuses it.
    std::fill(slots_.begin(), slots_.end(), Slot{kFree, 0});
    size_ = 0;
}

void IdIndexMap::assignPositions(const std::vector<int64_t>& ids)
{
    // Size the table once for all ids, keeping the old array when it fits.
    size_t capacity = 16;
    while (capacity < 2 * ids.size()) capacity *= 2;
    if (slots_.size() == capacity) {
        std::fill(slots_.begin(), slots_.end(), Slot{kFree, 0});
    } else {
        slots_.assign(capacity, Slot{kFree, 0});
        slots_.shrink_to_fit();
    }
    bits_ = bitsFor(capacity);
    size_ = 0;
    for (size_t p = 0; p < ids.size(); ++p) (*this)[ids[p]] = static_cast<int64_t>(p);
}

void IdIndexMap::grow()
{
    Slots old = std::move(slots_);
    const size_t capacity = old.empty() ? 16 : 2 * old.size();
    slots_.assign(capacity, Slot{kFree, 0});
    bits_ = bitsFor(capacity);
    size_ = 0;
    for (const Slot& slot : old)
        if (slot.id != kFree) (*this)[slot.id] = slot.position;
}
