#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "reports/PageCanvas.h"
#include "reports/ReportPage.h"

struct AnnualReportRows;

// One landscape A4 page of the annual report: the title with the date
// stamp (and beside it the household months, when they are the columns), a frame of 25 rows (the heading and 24 data rows), the headings,
// up to 24 labelled rows of 12 months and the year, and a thin line under
// each total row that falls on the page. Every label and amount lies inside
// its own cell, whole, in a smaller size when the cell is too narrow.
class AnnualReportPDFPage final : public ReportPage {
public:
    static constexpr int kRowsPerPage = 24;

    const double pageHeight = 595.0;
    const double pageWidth = 842.0;
    const PagePoint titlePos{50.0, 50.0};
    const PagePoint tableLeftPos0{20.0, 70.0};
    const int nameWidth = 160;
    const int amountWidth = 50;
    const int totalWidth = 55;
    const int rowHeight = 20;
    const int numberOfRows = 25;
    const std::string nendo;
    const std::vector<std::string> names;
    const std::vector<std::vector<int64_t>> data;
    // Grid row along which the line under a total row is drawn, or -1 when
    // that total is not on the page.
    const int rowOffsetOfIncomeTotal;
    const int rowOffsetOfSpenddingTotal;
    // Which months the columns are when they are the household's own
    // ("月の始まり: 25日（土日祝は前営業日）　2025年12月25日〜2026年12月24日"),
    // printed right of the title; empty for calendar months.
    const std::string monthsNote;

    AnnualReportPDFPage(std::string nendo, std::vector<std::string> names, std::vector<std::vector<int64_t>> data,
                        int rowOffsetOfIncomeTotal, int rowOffsetOfSpenddingTotal, DateStamp dateStamp,
                        std::string monthsNote = {});

    // The top-down corner of grid row `row` (0 to 25) and column edge `col`
    // (0 to 14), plus the paddings. Another column prints "error in rcPoint"
    // and the column on standard output and uses the left edge.
    PagePoint rcPoint(int row, int col, int wPadding = 0, int hPadding = 0) const;
    void drawTableLines(PageCanvas& canvas) const;
    void drawTableData(PageCanvas& canvas) const;

    PageSize bounds() const override { return {pageWidth, pageHeight}; }
    void draw(PageCanvas& canvas) const override;

private:
    DateStamp dateStamp;

    void drawRow(PageCanvas& canvas, int gridRow, const std::string& label, const std::vector<int64_t>& cells) const;
    // The text rectangle of a cell: its grid corner moved 5 right, 2 down.
    PageRect cellRect(int gridRow, int col, int width) const;
    // The rectangle an amount fits into: its column between the two rules,
    // less a small margin on each side, at the height of cellRect.
    PageRect amountRect(int gridRow, int edge) const;
};

// The pages of the annual report of year `nendo`: 24 rows to a page, each
// page told where the lines under the two totals fall on it.
std::vector<std::unique_ptr<AnnualReportPDFPage>> annualReportPages(const std::string& nendo,
                                                                    const AnnualReportRows& rows,
                                                                    const DateStamp& dateStamp,
                                                                    const std::string& monthsNote = {});
