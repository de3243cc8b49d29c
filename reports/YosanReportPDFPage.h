#pragma once

#include <memory>
#include <string>
#include <vector>

#include "reports/PageCanvas.h"
#include "reports/ReportPage.h"
#include "store/Yosan.h"

// One portrait page of the budget report (590 x 840 points, as the asset
// report): the title, the date stamp and the period, a frame of a heading
// and up to 26 rows (name, budget, spent, difference, share used and a bar
// of the share, red when over the budget), a thin rule under each row and a
// firm one above the total. Names and figures lie whole inside their cells,
// smaller where a cell is too narrow, as in the other reports.
class YosanReportPDFPage final : public ReportPage {
public:
    static constexpr int kRowsPerPage = 26;

    const double pageHeight = 840.0;
    const double pageWidth = 590.0;
    const std::string period;
    const std::vector<YosanRow> rows;  // at most kRowsPerPage

    YosanReportPDFPage(std::string period, std::vector<YosanRow> rows, DateStamp dateStamp);

    PageSize bounds() const override { return {pageWidth, pageHeight}; }
    void draw(PageCanvas& canvas) const override;

    // The bar of a row: its share of the budget across the bar column, all
    // of it and red when over; none without a budget.
    static PageColor barColor(const YosanRow& row);

private:
    DateStamp dateStamp;

    void drawTableLines(PageCanvas& canvas) const;
    void drawTableData(PageCanvas& canvas) const;
    void drawBar(PageCanvas& canvas, int gridRow, const YosanRow& row) const;
    // The text rectangle between column edges `from` and `to` of a row (0:
    // the heading), inset from the rules.
    PageRect cellRect(int gridRow, int from, int to) const;
};

// The pages of the budget report: 26 rows to a page, at least one page.
std::vector<std::unique_ptr<YosanReportPDFPage>> yosanReportPages(const std::string& period,
                                                                  const std::vector<YosanRow>& rows,
                                                                  const DateStamp& dateStamp);
