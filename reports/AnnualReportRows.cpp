#include "reports/AnnualReportRows.h"

#include <algorithm>

#include "household/HouseholdLabels.h"
#include "store/DataModel.h"

namespace {

// Appends the pairs of two lists; returns how many.
int appendPairs(AnnualReportRows& rows, const std::vector<std::string>& names,
                const std::vector<std::vector<int64_t>>& data, size_t from = 0, size_t count = SIZE_MAX)
{
    const size_t end = std::min({names.size(), data.size(), from + std::min(count, names.size())});
    for (size_t i = from; i < end; ++i) {
        rows.names.push_back(names[i]);
        rows.data.push_back(data[i]);
    }
    return end > from ? static_cast<int>(end - from) : 0;
}

}  // namespace

AnnualReportRows annualReportRows(const DataModel& dm)
{
    AnnualReportRows rows;
    const auto& totalNames = dm.annualTotalNameList;
    const auto& totals = dm.annualTotalDataList;
    rows.incomeRows = appendPairs(rows, dm.annualInNameList, dm.annualInDataList);
    appendPairs(rows, totalNames, totals, 0, 1);
    rows.expenseRows = appendPairs(rows, dm.annualOutNameList, dm.annualOutDataList);
    appendPairs(rows, totalNames, totals, 1, 2);
    return rows;
}

std::string annualMonthsNote(const DataModel& dm, const std::string& nen)
{
    const HouseholdMonths& months = dm.householdMonths;
    if (months.isCalendarMonths() || nen.empty()) return {};
    return householdMonthSettingLabel(months.setting()) + "\u3000" + periodLabel(months.year(std::stoi(nen)), true);
}
