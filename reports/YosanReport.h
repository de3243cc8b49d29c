#pragma once

#include <string>
#include <vector>

#include "store/Yosan.h"

class DataModel;

// The texts of the budget report, shared by its window and its exports.

// The period a budget table covers: household month `month` (1 to 12) of
// household year `year`, or the whole year with month 0.
// "2026年12月分（11月25日〜12月24日）", "2026年12月" for calendar months;
// "2026年（2025年12月25日〜2026年12月24日）", "2026年" for a calendar year.
std::string yosanPeriodLabel(const DataModel& dm, int year, int month);

// A row's name as the table shows it: a category's name, a sub-item's own
// name (after its category's "/"), 合計.
std::string yosanRowName(const YosanRow& row);

// A share of the budget as a percentage with one decimal: "61.7%"; "" without one.
std::string yosanShareText(const YosanRow& row);

// The budget report as CSV text (UTF-8, line feeds): the title with the
// period and the date stamp, the heading, then one line per row: the name
// (a sub-item as category/sub-item), budget, spent, difference and share
// used, each line ending in a blank and a line feed. A row without a budget
// leaves budget, difference and share empty. Numbers are plain decimals.
std::string yosanReportCsv(const std::string& period, const std::string& dateStamp, const std::vector<YosanRow>& rows);
