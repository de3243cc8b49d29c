// DataModel: the annual aggregation behind the annual report.
#include "store/DataModel.h"

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
    return true;
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
    if (!readAnnualSide(nen, "Nyuukin", kSyubetuSyuunyuu, "error prepare select annual income of nen from item: ",
                        "error step select annual income of nen from item: ", annualInNameList, annualInDataList))
        return false;
    if (!readAnnualSide(nen, "Syukkin", kSyubetuSisyutu, "error prepare select annual spending of nen from item: ",
                        "error step select annual spending of nen from item: ", annualOutNameList,
                        annualOutDataList))
        return false;
    annualTotalDataList.assign(3, std::vector<int64_t>(kCells, 0));
    addInto(annualTotalDataList[0], annualInDataList);
    addInto(annualTotalDataList[1], annualOutDataList);
    for (size_t c = 0; c < kCells; ++c)
        annualTotalDataList[2][c] = annualTotalDataList[0][c] - annualTotalDataList[1][c];
    return true;
}
