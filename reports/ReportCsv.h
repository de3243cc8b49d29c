#pragma once

#include <string>

class DataModel;

// The computed year of the store as CSV text (UTF-8, line feeds): the year
// and the date stamp, the heading, then the income rows, the income total,
// the expense rows, the expense total and the balance, each as its label and
// 13 plain decimal cells, each line ending in a blank and a line feed.
// Labels are written as they are, unquoted. Read straight from the store's
// lists: no copy of the rows is made.
std::string annualReportCsv(const std::string& nen, const std::string& dateStamp, const DataModel& dm);

// The asset report as CSV text: the title and the date stamp, the heading,
// each asset of sisanList with its balance, and GrandTotalSisan.
std::string sisanReportCsv(const DataModel& dm, const std::string& dateStamp);
