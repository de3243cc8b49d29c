// DataModel: budgets, and the spending they are held against.
#include <map>

#include "store/DataModel.h"
#include "store/FindById.h"
#include "store/Money.h"
#include "store/RecordedStep.h"
#include "store/StepLabels.h"

namespace {

constexpr const char* kTotalNamae = "合\u3000計";

bool isCategory(const Himoku& h)
{
    return h.Ucount > 0 || h.Hno == h.Id;
}

std::optional<int64_t> plus(std::optional<int64_t> a, std::optional<int64_t> b)
{
    if (!a) return b;
    if (!b) return a;
    return *a + *b;
}

}  // namespace

bool DataModel::readFromYosanTable()
{
    yosanList.clear();
    if (!householdTablesPresent()) return true;
    if (!prepare("SELECT Id, HimokuNo, Tuki, Kingaku FROM Yosan ORDER BY HimokuNo, Tuki",
                 "error prepare select yosan: ", "stop the app"))
        return false;
    std::vector<Yosan> read;
    if (!readRows("error step select yosan: ", "stop the app", [&] {
            read.push_back({stmt.columnInt(0), stmt.columnInt(1), stmt.columnInt(2), stmt.columnInt(3)});
        }))
        return false;
    yosanList = std::move(read);
    return true;
}

std::optional<int64_t> DataModel::yosanOf(int64_t himokuNo, int64_t tuki) const
{
    std::optional<int64_t> everyMonth;
    for (const Yosan& y : yosanList) {
        if (y.HimokuNo != himokuNo) continue;
        if (y.Tuki == tuki) return y.Kingaku;
        if (y.Tuki == kYosanEveryMonth) everyMonth = y.Kingaku;
    }
    return everyMonth;
}

bool DataModel::yosanReplace(int64_t himokuNo, std::optional<int64_t> everyMonth,
                             const std::array<std::optional<int64_t>, 12>& months)
{
    std::vector<std::pair<int64_t, int64_t>> rows;  // Tuki, Kingaku
    if (everyMonth) rows.emplace_back(kYosanEveryMonth, *everyMonth);
    for (size_t m = 0; m < months.size(); ++m)
        if (months[m]) rows.emplace_back(static_cast<int64_t>(m) + 1, *months[m]);
    for (const auto& [tuki, kingaku] : rows) {
        if (kingaku < 0 || !fitsInt32(kingaku)) {
            someMessageWithAlert("金額の欄に不正なデータがあります");
            return false;
        }
    }
    if (!allFitInt32({himokuNo})) return false;
    {
        const Himoku* himoku = findById(himokuList, himokuId2Idx, himokuNo);
        RecordedStep step(db, yosanStepLabel(himoku ? himoku->Namae : "月の合計"));
        if (!beganOrReport(step) || !createHouseholdTablesOrReport()) return false;
        const std::string h = std::to_string(himokuNo);
        if (!runWrite("DELETE FROM Yosan WHERE HimokuNo = " + h, "error prepare delete yosan: ", "information",
                      "failure deleting yosan: "))
            return false;
        for (const auto& [tuki, kingaku] : rows) {
            if (!runWrite("INSERT INTO Yosan (HimokuNo, Tuki, Kingaku) VALUES (" + h + "," + std::to_string(tuki) + "," +
                              std::to_string(kingaku) + ")",
                          "error prepare insert yosan: ", "information", "failure inserting yosan: "))
                return false;
        }
        if (!commitStep(step)) return false;
    }
    return readFromYosanTable();
}

bool DataModel::deleteYosanOf(const std::vector<int64_t>& himokuIds)
{
    if (himokuIds.empty() || !householdTablesPresent()) return true;
    std::string ids;
    for (int64_t id : himokuIds) ids += (ids.empty() ? "" : ",") + std::to_string(id);
    return runWrite("DELETE FROM Yosan WHERE HimokuNo IN (" + ids + ")", "error prepare delete yosan: ",
                    "information", "failure deleting yosan: ");
}

std::optional<int64_t> DataModel::totalYosanOf(int64_t tuki) const
{
    if (const auto total = yosanOf(kYosanTotal, tuki)) return total;
    // Without a total of its own, the categories' budgets added up; a
    // category without one counts its sub-items'.
    std::optional<int64_t> total;
    std::map<int64_t, std::optional<int64_t>> subItems;  // category Id -> its sub-items' budgets
    for (const auto& himoku : himokuList) {
        if (himoku->SyubetuNo != kSyubetuSisyutu) continue;
        if (isCategory(*himoku)) {
            total = plus(total, yosanOf(himoku->Id, tuki));
        } else if (!yosanOf(himoku->Hno, tuki)) {
            total = plus(total, yosanOf(himoku->Id, tuki));
        }
    }
    return total;
}

bool DataModel::yosanJissekiOf(int year, int month, std::vector<YosanRow>& rows)
{
    const DateRange range = month ? householdMonths.month({year, month}) : householdMonths.year(year);
    std::vector<RangeSum> sums;
    if (!readRangeSums({range}, false, sums)) return false;
    std::map<int64_t, int64_t> spent;  // sub-item -> spending
    for (const RangeSum& sum : sums) spent[sum.himokuNo] += sum.kingaku;
    // A year's budget is its months' budgets added up.
    const auto budget = [&](const auto& ofMonth) {
        if (month) return ofMonth(month);
        std::optional<int64_t> sum;
        for (int m = 1; m <= 12; ++m) sum = plus(sum, ofMonth(m));
        return sum;
    };
    const auto budgetOf = [&](int64_t himokuNo) { return budget([&](int m) { return yosanOf(himokuNo, m); }); };

    std::vector<YosanRow> built;
    std::map<int64_t, size_t> categoryRow;  // category Id -> position in built
    YosanRow total{kYosanTotal, kTotalNamae, YosanRow::Level::Total,
                   budget([&](int m) { return totalYosanOf(m); }), 0};
    for (const auto& himoku : himokuList) {
        if (himoku->SyubetuNo != kSyubetuSisyutu) continue;
        if (isCategory(*himoku)) {
            categoryRow[himoku->Id] = built.size();
            built.push_back({himoku->Id, himoku->Namae, YosanRow::Level::Category, budgetOf(himoku->Id), 0});
            continue;
        }
        const auto found = spent.find(himoku->Id);
        const int64_t jisseki = found == spent.end() ? 0 : found->second;
        total.jisseki += jisseki;
        const auto category = categoryRow.find(himoku->Hno);
        if (category == categoryRow.end()) continue;  // a sub-item outside the tree counts in the total only
        built[category->second].jisseki += jisseki;
        if (const std::optional<int64_t> own = budgetOf(himoku->Id))
            built.push_back({himoku->Id, himoku->Namae, YosanRow::Level::SubItem, own, jisseki});
    }
    built.push_back(total);
    rows = std::move(built);
    return true;
}

bool DataModel::yosanMonthlyOf(int year, std::array<std::optional<int64_t>, 12>& yosan,
                               std::array<int64_t, 12>& jisseki)
{
    const std::array<DateRange, 12> months = householdMonths.monthsOfYear(year);
    std::vector<RangeSum> sums;
    if (!readRangeSums({months.begin(), months.end()}, false, sums)) return false;
    jisseki.fill(0);
    for (const RangeSum& sum : sums) {
        const Himoku* himoku = findById(himokuList, himokuId2Idx, sum.himokuNo);
        if (himoku && himoku->SyubetuNo == kSyubetuSisyutu) jisseki[sum.range] += sum.kingaku;
    }
    for (size_t m = 0; m < yosan.size(); ++m) yosan[m] = totalYosanOf(static_cast<int64_t>(m) + 1);
    return true;
}
