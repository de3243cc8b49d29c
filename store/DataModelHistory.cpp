// DataModel: the month-end balances of every asset, for the asset history chart.
#include <algorithm>
#include <limits>

#include "store/DataModel.h"

namespace {

// One row per asset and month: the money that came in (kinds 2 and 4) minus
// the money that went out (kinds 1 and 3). Other kinds count for nothing, as
// in a ledger read. NOT INDEXED: through the (SisanNo, Hizuke) index SQLite
// would fetch every row by a random read, several times slower on a large
// book than one pass over the table followed by the grouping sort.
constexpr const char* kMonthlySumsSql =
    "SELECT SisanNo, Nen, Tuki, SUM(CASE WHEN SyubetuNo IN (2,4) THEN Nyuukin"
    " WHEN SyubetuNo IN (1,3) THEN -Syukkin END) FROM Items NOT INDEXED GROUP BY SisanNo, Nen, Tuki";

struct MonthlySum {
    size_t row;     // position of the asset in sisanList
    int64_t month;  // monthNumber
    int64_t net;
};

// Balances from the opening amounts and the monthly sums, month by month.
MonthEndHistory accumulate(const std::vector<std::shared_ptr<Sisan>>& sisans, const std::vector<MonthlySum>& sums,
                           int64_t firstMonth, int64_t lastMonth)
{
    MonthEndHistory h;
    h.firstMonth = firstMonth;
    const size_t months = lastMonth >= firstMonth ? static_cast<size_t>(lastMonth - firstMonth + 1) : 0;
    std::vector<std::vector<int64_t>> net(sisans.size(), std::vector<int64_t>(months, 0));
    for (const MonthlySum& s : sums)
        if (s.month <= lastMonth) net[s.row][static_cast<size_t>(s.month - firstMonth)] += s.net;
    h.total.assign(months, 0);
    for (size_t r = 0; r < sisans.size(); ++r) {
        h.sisanIds.push_back(sisans[r]->Id);
        int64_t running = sisans[r]->SyokiKingaku;
        for (size_t c = 0; c < months; ++c) {
            running += net[r][c];
            net[r][c] = running;
            h.total[c] += running;
        }
        h.zankin.push_back(std::move(net[r]));
    }
    return h;
}

}  // namespace

bool DataModel::sisanHistoryFromItemsTable(int64_t nen, int64_t tuki)
{
    if (!prepare(kMonthlySumsSql, "error prepare select monthly sums from item: ", "stop the app")) return false;
    std::vector<MonthlySum> sums;
    int64_t firstMonth = std::numeric_limits<int64_t>::max();
    const bool read = readRows("error step select monthly sums from item: ", "stop the app", [&] {
        const int64_t* row = sisanId2Idx.find(stmt.columnInt64(0));
        if (!row) return;  // rows of an asset that is no longer listed
        const int64_t month = monthNumber(stmt.columnInt64(1), std::clamp<int64_t>(stmt.columnInt64(2), 1, 12));
        sums.push_back({static_cast<size_t>(*row), month, stmt.columnSum(3)});
        firstMonth = std::min(firstMonth, month);
    });
    if (!read) return false;
    if (sums.empty()) {
        sisanHistory = MonthEndHistory{};
        return true;
    }
    sisanHistory = accumulate(sisanList, sums, firstMonth, monthNumber(nen, tuki));
    return true;
}
