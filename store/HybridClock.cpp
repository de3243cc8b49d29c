#include "store/HybridClock.h"

#include <algorithm>

int64_t nextTimestamp(int64_t wallMs, int64_t largestApplied, int64_t largestInFolder)
{
    const int64_t wall = largestInFolder > 0 ? std::min(wallMs, largestInFolder + kClockClampMs) : wallMs;
    return std::max(wall, largestApplied + 1);
}
