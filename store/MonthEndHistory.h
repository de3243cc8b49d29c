#pragma once

#include <cstdint>
#include <vector>

// Every asset's balance at the end of each month, from the month of the
// first entry to a given month. A month is counted as Nen * 12 + Tuki - 1,
// so consecutive months are consecutive numbers.
struct MonthEndHistory {
    int64_t firstMonth = 0;                    // month number of column 0
    std::vector<int64_t> sisanIds;             // one row per asset, sisanList order
    std::vector<std::vector<int64_t>> zankin;  // [row][column] balance at that month's end
    std::vector<int64_t> total;                // [column] sum of the rows

    size_t months() const { return total.size(); }
    bool empty() const { return total.empty(); }
    int64_t nenOf(size_t column) const { return (firstMonth + static_cast<int64_t>(column)) / 12; }
    int64_t tukiOf(size_t column) const { return (firstMonth + static_cast<int64_t>(column)) % 12 + 1; }
};

inline int64_t monthNumber(int64_t nen, int64_t tuki)
{
    return nen * 12 + tuki - 1;
}
