#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "store/IdIndexMap.h"

// The first row of the list with this Id, or nullptr. The list's Id map
// finds it in one step; the walk covers a list that a screen changed
// without a re-read.
template <typename Record>
Record* findById(const std::vector<std::shared_ptr<Record>>& list, const IdIndexMap& id2Idx, int64_t id)
{
    if (const int64_t* p = id2Idx.find(id); p && *p < static_cast<int64_t>(list.size())) {
        Record* row = list[static_cast<size_t>(*p)].get();
        if (row->Id == id) return row;
    }
    for (const auto& row : list)
        if (row->Id == id) return row.get();
    return nullptr;
}
