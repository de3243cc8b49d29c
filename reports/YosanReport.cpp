#include "reports/YosanReport.h"

#include <cstdio>

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
    const auto share = row.share();
    if (!share) return {};
    char text[32];
    std::snprintf(text, sizeof text, "%.1f%%", *share * 100.0);
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
