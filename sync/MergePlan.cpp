#include "sync/MergePlan.h"

#include <algorithm>
#include <iterator>

MergePlan planMerge(const std::vector<OpKey>& appliedInOrder, std::vector<OpKey> arrived)
{
    std::sort(arrived.begin(), arrived.end());
    arrived.erase(std::unique(arrived.begin(), arrived.end()), arrived.end());
    std::erase_if(arrived, [&](const OpKey& key) {
        return std::binary_search(appliedInOrder.begin(), appliedInOrder.end(), key);
    });
    MergePlan plan;
    if (arrived.empty()) return plan;
    const auto firstLater = std::upper_bound(appliedInOrder.begin(), appliedInOrder.end(), arrived.front());
    plan.rewind = static_cast<size_t>(std::distance(firstLater, appliedInOrder.end()));
    std::merge(firstLater, appliedInOrder.end(), arrived.begin(), arrived.end(), std::back_inserter(plan.replay));
    return plan;
}
