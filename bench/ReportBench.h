#pragma once

#include <string>

class DataModel;

// Times the annual report's exports for a year of 300 sub-items (13 PDF
// pages), written into dir:
//   annual_pdf_300  the PDF document (pages, Pango layout, embedded font
//                   subsets, atomic write), against cairo drawing the same
//                   lines and strings with its plain text calls and one font;
//   annual_csv_300  the CSV text and its atomic write, against writing the
//                   same bytes with one buffer and one write.
// The year's figures are put into dm's annual lists directly; the aggregation
// itself is timed as annual_year.
void benchReports(DataModel& dm, const std::string& dir, int runs);
