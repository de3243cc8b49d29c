#pragma once

#include <cstdint>

// The timestamp of a new local operation, in milliseconds since 1970:
// max(wall clock, largest timestamp already applied + 1), so that a local
// operation never sorts before anything this PC has applied and recording
// it never needs a rewind.
//
// The wall clock is first clamped to the largest timestamp seen in the sync
// folder + 1 day, so that a PC whose clock runs far ahead cannot stamp its
// operations months into the future (and so win every concurrent edit for
// months): each operation can move the folder's newest timestamp by a day
// at most. largestInFolder 0 means nothing is known yet: no clamp.
int64_t nextTimestamp(int64_t wallMs, int64_t largestApplied, int64_t largestInFolder);

constexpr int64_t kClockClampMs = int64_t{24} * 3600 * 1000;
