#include "reports/YosanReport.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "household/HouseholdLabels.h"
#include "store/DataModel.h"

namespace {

void appendCell(std::string& csv, const std::optional<int64_t>& value)
{
    csv += ',';
    if (value) csv += std::to_string(*value);
}

}  // namespace

std::string yosanPeriodLabel(const DataModel& dm, int year, int month)
{
    const HouseholdMonths& months = dm.householdMonths;
    if (month) return householdMonthLabel(months, {year, month});
    const std::string label = std::to_string(year) + "年";
    if (months.isCalendarMonths()) return label;
    return label + "（" + periodLabel(months.year(year), true) + "）";
}

std::string yosanRowName(const YosanRow& row)
{
    if (row.level != YosanRow::Level::SubItem) return row.name;
    const size_t slash = row.name.find('/');
    return slash == std::string::npos ? row.name : row.name.substr(slash + 1);
}

std::string yosanShareText(const YosanRow& row)
{
    if (!row.share()) return {};
    // Tenths of a percent rounded half up in integers, so that 123.45% is
    // 123.5% as a person rounds it (in binary it is 123.4499...). Spending
    // beyond what the integers hold (no household's) is rounded in binary.
    const int64_t spent = row.jisseki, budget = *row.yosan;
    const int64_t tenths = std::abs(spent) < INT64_MAX / 2000
                               ? (spent * 2000 + (spent >= 0 ? budget : -budget)) / (2 * budget)
                               : static_cast<int64_t>(std::llround(*row.share() * 1000));
    char text[48];
    std::snprintf(text, sizeof text, "%s%lld.%lld%%", tenths < 0 && tenths > -10 ? "-" : "",
                  static_cast<long long>(tenths / 10), static_cast<long long>(std::abs(tenths % 10)));
    return text;
}

std::string yosanReportCsv(const std::string& period, const std::string& dateStamp, const std::vector<YosanRow>& rows)
{
    std::string csv = "予算と実績 " + period + " ,\u3000" + dateStamp + "\n";
    csv += "費 目 , 予\u3000算 , 実\u3000績 , 差\u3000額 , 使用率 \n";
    for (const YosanRow& row : rows) {
        csv += row.name;
        appendCell(csv, row.yosan);
        appendCell(csv, row.jisseki);
        appendCell(csv, row.difference());
        csv += ',' + yosanShareText(row) + " \n";
    }
    return csv;
}
