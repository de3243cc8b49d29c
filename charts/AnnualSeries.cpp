#include "charts/AnnualSeries.h"

#include <algorithm>
#include <unordered_map>

#include "store/DataModel.h"

namespace {

constexpr size_t kYearCell = 12;

void copyMonths(const std::vector<int64_t>& row, std::array<int64_t, 12>& months)
{
    for (size_t m = 0; m < months.size() && m < row.size(); ++m) months[m] = row[m];
}

}  // namespace

MonthlyInOut monthlyInOut(const DataModel& dm)
{
    MonthlyInOut out;
    const auto& rows = dm.annualTotalDataList;
    if (rows.size() < 3) return out;
    copyMonths(rows[0], out.income);
    copyMonths(rows[1], out.expense);
    copyMonths(rows[2], out.balance);
    return out;
}

bool annualHasNoEntries(const DataModel& dm)
{
    return dm.annualInDataList.empty() && dm.annualOutDataList.empty();
}

std::string categoryOfSubItem(const DataModel& dm, const std::string& subItem)
{
    for (const auto& h : dm.himokuList) {
        if (h->Ucount != 0 || h->Namae != subItem) continue;
        if (const int64_t* idx = dm.himokuId2Idx.find(h->Hno)) return dm.himokuList[static_cast<size_t>(*idx)]->Namae;
    }
    return subItem.substr(0, subItem.find('/'));
}

std::vector<ExpenseSlice> expenseByCategory(const DataModel& dm)
{
    std::vector<ExpenseSlice> slices;
    std::unordered_map<std::string, size_t> slot;
    const size_t rows = std::min(dm.annualOutNameList.size(), dm.annualOutDataList.size());
    for (size_t r = 0; r < rows; ++r) {
        const std::string category = categoryOfSubItem(dm, dm.annualOutNameList[r]);
        auto [it, added] = slot.try_emplace(category, slices.size());
        if (added) slices.push_back({category, 0, 0});
        slices[it->second].amount += dm.annualOutDataList[r][kYearCell];
    }
    std::erase_if(slices, [](const ExpenseSlice& s) { return s.amount <= 0; });
    std::stable_sort(slices.begin(), slices.end(),
                     [](const ExpenseSlice& a, const ExpenseSlice& b) { return a.amount > b.amount; });
    if (slices.size() > kNamedSlices) {
        ExpenseSlice rest{kRestSliceName, 0, 0};
        for (size_t i = kNamedSlices; i < slices.size(); ++i) rest.amount += slices[i].amount;
        slices.resize(kNamedSlices);
        slices.push_back(rest);
    }
    int64_t total = 0;
    for (const auto& s : slices) total += s.amount;
    for (auto& s : slices) s.share = static_cast<double>(s.amount) / static_cast<double>(total);
    return slices;
}
