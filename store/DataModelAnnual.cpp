// DataModel: the annual aggregation behind the annual report, by calendar
// months or by the household's own months.
#include "store/DataModel.h"
#include "store/FindById.h"

namespace {

constexpr size_t kCells = 13;  // months 1 to 12, then the year

// The grouped statement of one side of the year: one row per sub-item with
// entries of the kind, a sum per month and one for the year.
std::string annualSql(const std::string& nen, const char* column, int kind)
{
    std::string sql = "Select Himoku.Namae ";
    for (int m = 1; m <= 12; ++m) {
        const std::string month = std::to_string(m);
        sql += " , SUM(CASE WHEN Tuki = " + month + " THEN " + column + " END) AS g" + month;
    }
    sql += ",SUM(CASE WHEN Nen=" + nen + " THEN " + column + " END) AS N" + nen;
    sql += "  FROM Items JOIN Himoku ON Items.HimokuNo=Himoku.Id WHERE Nen=" + nen;
    sql += " AND Items.SyubetuNo=" + std::to_string(kind);
    sql += " GROUP BY Items.HimokuNo";
    return sql;
}

// The year is spliced into the statement, so only plain digits may pass.
bool isYearText(const std::string& nen)
{
    if (nen.empty() || nen.size() > 9) return false;
    for (char c : nen)
        if (c < '0' || c > '9') return false;
    return true;
}

void addInto(std::vector<int64_t>& total, const std::vector<std::vector<int64_t>>& rows)
{
    for (const auto& row : rows)
        for (size_t c = 0; c < kCells; ++c) total[c] += row[c];
}

// The summary rows of a year: income total, expense total, balance.
std::vector<std::vector<int64_t>> totalsOf(const std::vector<std::vector<int64_t>>& in,
                                           const std::vector<std::vector<int64_t>>& out)
{
    std::vector<std::vector<int64_t>> totals(3, std::vector<int64_t>(kCells, 0));
    addInto(totals[0], in);
    addInto(totals[1], out);
    for (size_t c = 0; c < kCells; ++c) totals[2][c] = totals[0][c] - totals[1][c];
    return totals;
}

}  // namespace

bool DataModel::readYearsFromItemsTable()
{
    if (!prepare("SELECT DISTINCT Nen FROM Items ORDER BY Nen", "error prepare select distinct nen from item: ",
                 "stop the app"))
        return false;
    std::vector<std::string> years;
    if (!readRows("error step select distinct nen from item: ", "stop the app",
                  [&] { years.push_back(std::to_string(stmt.columnInt(0))); }))
        return false;
    yearsList = std::move(years);
    return householdMonths.isCalendarMonths() || readHouseholdYears();
}

bool DataModel::readAnnualSide(const std::string& nen, const char* column, int kind, const char* prepareMessage,
                               const char* stepMessage, std::vector<std::string>& names,
                               std::vector<std::vector<int64_t>>& data)
{
    if (!isYearText(nen)) {
        someMessageWithAlert(std::string(prepareMessage) + "not a year: " + nen, "stop the app");
        return false;
    }
    if (!prepare(annualSql(nen, column, kind), prepareMessage, "stop the app")) return false;
    std::vector<std::string> readNames;
    std::vector<std::vector<int64_t>> readData;
    const bool read = readRows(stepMessage, "stop the app", [&] {
        readNames.push_back(stmt.columnText(0));
        std::vector<int64_t> row(kCells);
        for (size_t c = 0; c < kCells; ++c) row[c] = stmt.columnSum(static_cast<int>(c) + 1);
        readData.push_back(std::move(row));
    });
    if (!read) return false;
    names = std::move(readNames);
    data = std::move(readData);
    return true;
}

bool DataModel::annualInOutFromItemsTable(const std::string& nen)
{
    if (!householdMonths.isCalendarMonths() && isYearText(nen)) return annualOfHouseholdYear(std::stoi(nen));
    if (!readAnnualSide(nen, "Nyuukin", kSyubetuSyuunyuu, "error prepare select annual income of nen from item: ",
                        "error step select annual income of nen from item: ", annualInNameList, annualInDataList))
        return false;
    if (!readAnnualSide(nen, "Syukkin", kSyubetuSisyutu, "error prepare select annual spending of nen from item: ",
                        "error step select annual spending of nen from item: ", annualOutNameList,
                        annualOutDataList))
        return false;
    annualTotalDataList = totalsOf(annualInDataList, annualOutDataList);
    return true;
}

bool DataModel::readHouseholdYears()
{
    // A household year overlaps the calendar year of its name and one
    // beside it: the candidates are the years around those with entries, and
    // a candidate is listed when entries fall within its months.
    std::vector<int> candidates;
    for (const std::string& nen : yearsList)
        for (int year = std::stoi(nen) - 1; year <= std::stoi(nen) + 1; ++year)
            if (candidates.empty() || candidates.back() < year) candidates.push_back(year);
    std::vector<std::string> years;
    for (int year : candidates) {
        const DateRange range = householdMonths.year(year);
        bool any = false;
        if (!prepare("SELECT 1 FROM Items WHERE SisanNo IN (" + listedSisanIds() + ") AND Hizuke BETWEEN '" +
                         range.first.iso() + "' AND '" + range.last.iso() + "' LIMIT 1",
                     "error prepare select distinct nen from item: ", "stop the app") ||
            !readRows("error step select distinct nen from item: ", "stop the app", [&] { any = true; }))
            return false;
        if (any) years.push_back(std::to_string(year));
    }
    yearsList = std::move(years);
    return true;
}

bool DataModel::annualOfHouseholdYear(int year)
{
    const std::array<DateRange, 12> months = householdMonths.monthsOfYear(year);
    std::vector<RangeSum> sums;
    if (!readRangeSums({months.begin(), months.end()}, true, sums)) return false;
    std::vector<std::string> names[2];
    std::vector<std::vector<int64_t>> data[2];
    // The sums come by kind, then sub-item, then month: one row per sub-item
    // of the tree, in the order of their Ids, as the calendar year's rows.
    int64_t lastKind = 0, lastHimoku = 0;
    for (const RangeSum& sum : sums) {
        const Himoku* himoku = findById(himokuList, himokuId2Idx, sum.himokuNo);
        if (!himoku) continue;  // entries of no sub-item of the tree make no row
        const size_t side = sum.syubetuNo == kSyubetuSyuunyuu ? 0 : 1;
        if (sum.syubetuNo != lastKind || sum.himokuNo != lastHimoku) {
            names[side].push_back(himoku->Namae);
            data[side].emplace_back(kCells, 0);
            lastKind = sum.syubetuNo;
            lastHimoku = sum.himokuNo;
        }
        data[side].back()[sum.range] += sum.kingaku;
        data[side].back()[kCells - 1] += sum.kingaku;
    }
    annualInNameList = std::move(names[0]);
    annualInDataList = std::move(data[0]);
    annualOutNameList = std::move(names[1]);
    annualOutDataList = std::move(data[1]);
    annualTotalDataList = totalsOf(annualInDataList, annualOutDataList);
    return true;
}
