#pragma once

#include <string>

struct AnnualReportRows;
class DataModel;

// The annual report as CSV text (UTF-8, line feeds): the year and the date
// stamp, the heading, then every row of `rows` as its label and 13 plain
// decimal cells, each line ending in a blank and a line feed. Labels are
// written as they are, unquoted.
std::string annualReportCsv(const std::string& nen, const std::string& dateStamp, const AnnualReportRows& rows);

// The asset report as CSV text: the title and the date stamp, the heading,
// each asset of sisanList with its balance, and GrandTotalSisan.
std::string sisanReportCsv(const DataModel& dm, const std::string& dateStamp);
