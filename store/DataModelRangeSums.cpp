// DataModel: sums of the entries per sub-item over ranges of dates, the
// figures of household months and budgets.
#include "store/DataModel.h"

namespace {

// The range a date falls in, by the first days of ranges 1 to n-1 (bound as
// ?2 to ?n): 0 before the second range's first day, and so on.
std::string rangeCase(size_t ranges)
{
    if (ranges < 2) return "0";
    std::string sql = "CASE";
    for (size_t r = 1; r < ranges; ++r)
        sql += " WHEN Hizuke < ?" + std::to_string(r + 1) + " THEN " + std::to_string(r - 1);
    return sql + " ELSE " + std::to_string(ranges - 1) + " END";
}

}  // namespace

std::string DataModel::listedSisanIds() const
{
    std::string ids;
    for (const auto& sisan : sisanList) ids += (ids.empty() ? "" : ",") + std::to_string(sisan->Id);
    return ids;
}

bool DataModel::readRangeSums(const std::vector<DateRange>& ranges, bool withIncome, std::vector<RangeSum>& sums)
{
    sums.clear();
    if (ranges.empty()) return true;
    // Grouped by kind, sub-item and range, so the rows come in that order.
    const std::string last = std::to_string(ranges.size() + 1);
    const std::string sql = "SELECT SyubetuNo, HimokuNo, " + rangeCase(ranges.size()) +
                            ", SUM(CASE SyubetuNo WHEN 1 THEN Syukkin ELSE Nyuukin END) FROM Items WHERE SisanNo IN (" +
                            listedSisanIds() + ") AND Hizuke BETWEEN ?1 AND ?" + last + " AND SyubetuNo " +
                            (withIncome ? "IN (1,2)" : "= 1") + " GROUP BY 1, 2, 3";
    if (!prepare(sql, "error prepare select sums of dates from item: ", "stop the app")) return false;
    bool bound = bind_text(1, ranges.front().first.iso());
    for (size_t r = 1; bound && r < ranges.size(); ++r) bound = bind_text(static_cast<int>(r) + 1, ranges[r].first.iso());
    if (!bound || !bind_text(static_cast<int>(ranges.size()) + 1, ranges.back().last.iso())) {
        finalize();
        return false;
    }
    std::vector<RangeSum> read;
    if (!readRows("error step select sums of dates from item: ", "stop the app", [&] {
            read.push_back({stmt.columnInt(0), stmt.columnInt(1), static_cast<size_t>(stmt.columnInt(2)),
                            stmt.columnSum(3)});
        }))
        return false;
    sums = std::move(read);
    return true;
}
