#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "reports/PageCanvas.h"
#include "reports/ReportPage.h"

struct Sisan;

// One portrait page of the asset report (590 x 840 points): the title and
// the date stamp, a two-column frame of 21 rows (the heading and 20 assets)
// with a thin rule after every fifth asset, the assets' names and balances,
// and the grand total below the frame. Names, balances and the total are
// drawn whole, in a smaller size where their place is too narrow.
class SisanReportPDFPage final : public ReportPage {
public:
    static constexpr int kAssetsPerPage = 20;

    const double pageHeight = 840.0;
    const double pageWidth = 590.0;
    const PagePoint titlePos{100.0, 100.0};
    const PagePoint datePos{300.0, 100.0};
    const PagePoint tableLeftPos0{50.0, 150.0};
    const double nameWidth = 200.0;
    const double amountWidth = 100.0;
    const PagePoint tableRightPos0{nameWidth + 50.0 + amountWidth, 150.0};
    const double rowHeight = 25.0;
    const double verticalPadding = 4.0;
    const double textInSet = 4.0;
    const int numberOfRows = 21;
    const PagePoint totalPos{210.0, rowHeight * (numberOfRows + 1) + 150.0};
    const std::vector<std::shared_ptr<Sisan>> sisanData;  // at most 20
    const int64_t total;

    SisanReportPDFPage(std::vector<std::shared_ptr<Sisan>> sisanData, int64_t total, DateStamp dateStamp);

    void drawTableLines(PageCanvas& canvas) const;
    void drawTableData(PageCanvas& canvas) const;

    PageSize bounds() const override { return {pageWidth, pageHeight}; }
    void draw(PageCanvas& canvas) const override;

private:
    DateStamp dateStamp;
};

// The pages of the asset report: 20 assets to a page, every page with the
// same grand total; with no assets one page with the frame and the total.
std::vector<std::unique_ptr<SisanReportPDFPage>> sisanReportPages(const std::vector<std::shared_ptr<Sisan>>& sisanList,
                                                                  int64_t grandTotal, const DateStamp& dateStamp);
