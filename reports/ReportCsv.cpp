#include "reports/ReportCsv.h"

#include <charconv>

#include "reports/AnnualReportRows.h"
#include "store/DataModel.h"

namespace {

void appendNumber(std::string& out, int64_t value)
{
    char buf[24];
    const auto end = std::to_chars(buf, buf + sizeof buf, value).ptr;
    out.append(buf, end);
}

}  // namespace

std::string annualReportCsv(const std::string& nen, const std::string& dateStamp, const AnnualReportRows& rows)
{
    std::string csv;
    csv.reserve(256 + rows.names.size() * 160);
    csv += nen + " 年度 ,\u3000" + dateStamp + "\n";
    csv += "名 称 ,";
    for (int m = 1; m <= 12; ++m) {
        appendNumber(csv, m);
        csv += "月,";
    }
    csv += " 金\u3000額 \n";
    for (size_t r = 0; r < rows.names.size(); ++r) {
        csv += rows.names[r];
        for (const int64_t cell : rows.data[r]) {
            csv += ',';
            appendNumber(csv, cell);
        }
        csv += " \n";
    }
    return csv;
}

std::string sisanReportCsv(const DataModel& dm, const std::string& dateStamp)
{
    std::string csv = "資産レポート ,\u3000" + dateStamp + "\n名 称 , 金\u3000額 \n";
    for (const auto& sisan : dm.sisanList) {
        csv += sisan->Namae;
        csv += ',';
        appendNumber(csv, sisan->Zankin);
        csv += " \n";
    }
    csv += "合計 , ";
    appendNumber(csv, dm.GrandTotalSisan);
    csv += " \n";
    return csv;
}
