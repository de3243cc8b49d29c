#pragma once

#include <compare>
#include <cstdint>

// An operation's place in the one order that every PC applies operations
// in: by hybrid logical timestamp, then device number, then the device's
// sequence number. Two operations never share a key: a device numbers its
// own operations 1, 2, 3 ... without gaps.
struct OpKey {
    int64_t ts = 0;      // hybrid logical timestamp, milliseconds since 1970 (HybridClock.h)
    int64_t device = 0;  // 1..15
    int64_t seq = 0;     // 1, 2, 3 ... per device

    auto operator<=>(const OpKey&) const = default;
};
