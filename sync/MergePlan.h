#pragma once

#include <cstddef>
#include <vector>

#include "store/OpKey.h"

// How to bring newly arrived operations into the one order: rewind the
// newest `rewind` operations applied here (newest first), then apply
// `replay` in order: the rewound ones again, merged with the new ones.
// Arrived operations already applied here are left out.
struct MergePlan {
    size_t rewind = 0;
    std::vector<OpKey> replay;
};

// appliedInOrder: the keys applied here, oldest first (only those after the
// oldest arrival matter). arrived: in any order.
MergePlan planMerge(const std::vector<OpKey>& appliedInOrder, std::vector<OpKey> arrived);
