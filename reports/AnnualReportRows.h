#pragma once

#include <cstdint>
#include <string>
#include <vector>

class DataModel;

// The computed year of the store as one list of labelled rows, in the order
// both exports write them: the income rows, the income total, the expense
// rows, the expense total and the balance. Labels and figures are paired by
// position, stopping at the shorter list of each pair.
struct AnnualReportRows {
    std::vector<std::string> names;
    std::vector<std::vector<int64_t>> data;  // 13 cells: months 1 to 12, the year
    int incomeRows = 0;                      // rows before the income total
    int expenseRows = 0;                     // rows between the two totals
};

AnnualReportRows annualReportRows(const DataModel& dm);

// Which months the columns of household year `nen` are, when the book's
// household months start on a day other than the 1st: the setting and the
// year's days ("月の始まり: 25日（土日祝は前営業日）　2025年12月25日〜2026年12月24日");
// empty for calendar months. The exports print it beside their date.
std::string annualMonthsNote(const DataModel& dm, const std::string& nen);
