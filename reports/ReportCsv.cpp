#include "reports/ReportCsv.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "store/DataModel.h"

namespace {

void appendNumber(std::string& out, int64_t value)
{
    char buf[24];
    const auto end = std::to_chars(buf, buf + sizeof buf, value).ptr;
    out.append(buf, end);
}

// Each cell after a comma, then a blank and the line feed. The cells are
// gathered in a small buffer first: a year has thousands of them.
void appendCells(std::string& csv, const std::vector<int64_t>& cells)
{
    constexpr size_t kCell = 21;  // a comma and the longest int64_t
    char buf[16 * kCell];
    char* p = buf;
    for (const int64_t cell : cells) {
        if (static_cast<size_t>(buf + sizeof buf - p) < kCell) {
            csv.append(buf, p);
            p = buf;
        }
        *p++ = ',';
        p = std::to_chars(p, buf + sizeof buf, cell).ptr;
    }
    csv.append(buf, p);
    csv += " \n";
}

// The lines of the pairs from..to of a name list and a data list, stopping
// at the shorter of the two.
void appendRows(std::string& csv, const std::vector<std::string>& names, const std::vector<std::vector<int64_t>>& data,
                size_t from = 0, size_t to = SIZE_MAX)
{
    const size_t end = std::min({names.size(), data.size(), to});
    for (size_t r = from; r < end; ++r) {
        csv += names[r];
        appendCells(csv, data[r]);
    }
}

}  // namespace

std::string annualReportCsv(const std::string& nen, const std::string& dateStamp, const DataModel& dm)
{
    std::string csv;
    csv.reserve(512 + (dm.annualInNameList.size() + dm.annualOutNameList.size()) * 160);
    csv += nen + " 年度 ,\u3000" + dateStamp + "\n";
    csv += "名 称 ,";
    for (int m = 1; m <= 12; ++m) {
        appendNumber(csv, m);
        csv += "月,";
    }
    csv += " 金\u3000額 \n";
    appendRows(csv, dm.annualInNameList, dm.annualInDataList);
    appendRows(csv, dm.annualTotalNameList, dm.annualTotalDataList, 0, 1);
    appendRows(csv, dm.annualOutNameList, dm.annualOutDataList);
    appendRows(csv, dm.annualTotalNameList, dm.annualTotalDataList, 1, 3);
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
