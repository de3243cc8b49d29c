#pragma once

#include <cstdint>
#include <string>

// Amounts are whole yen held as int64_t; the database exchanges 32-bit values.
inline bool fitsInt32(int64_t v) { return v >= INT32_MIN && v <= INT32_MAX; }

// Decimal text with "," between groups of three digits: 12300 -> "12,300",
// -3000 -> "-3,000".
std::string formatWithGrouping(int64_t value);
