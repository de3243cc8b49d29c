#include "reports/AnnualReportPDFPage.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

#include "reports/AnnualReportRows.h"
#include "reports/PageRoutines.h"
#include "store/Money.h"

namespace {

const PageFont kTitleFont{"Helvetica", 12};
const PageFont kTableFont{"Helvetica", 10};
constexpr int kLastEdge = 14;  // the right edge of the year total column
constexpr int kCellHeight = 20;
constexpr int kTextInset = 5;  // texts start this far right of their column's left rule
// An amount keeps this far from the rules on both sides of its column, so
// that figures of neighbouring columns never touch; every column's figures
// line up on the right whatever their width.
constexpr double kAmountLeftInset = 1.5;
constexpr double kAmountRightInset = 3;

}  // namespace

AnnualReportPDFPage::AnnualReportPDFPage(std::string nendo, std::vector<std::string> names,
                                         std::vector<std::vector<int64_t>> data, int rowOffsetOfIncomeTotal,
                                         int rowOffsetOfSpenddingTotal, DateStamp dateStamp, std::string monthsNote)
    : nendo(std::move(nendo)), names(std::move(names)), data(std::move(data)),
      rowOffsetOfIncomeTotal(rowOffsetOfIncomeTotal), rowOffsetOfSpenddingTotal(rowOffsetOfSpenddingTotal),
      monthsNote(std::move(monthsNote)), dateStamp(std::move(dateStamp))
{
}

PagePoint AnnualReportPDFPage::rcPoint(int row, int col, int wPadding, int hPadding) const
{
    int x = 0;
    if (col == 0) {
        x = 0;
    } else if (col >= 1 && col <= 13) {
        x = nameWidth + amountWidth * (col - 1);
    } else if (col == kLastEdge) {
        x = nameWidth + amountWidth * 12 + totalWidth;
    } else {
        std::cout << "error in rcPoint " << col << std::endl;
    }
    const int y = rowHeight * row;
    return {static_cast<double>(x) + tableLeftPos0.x + wPadding, static_cast<double>(y) + tableLeftPos0.y + hPadding};
}

void AnnualReportPDFPage::drawTableLines(PageCanvas& canvas) const
{
    const auto line = [&](double width, int r0, int c0, int r1, int c1) {
        drawLine(canvas, pageHeight, width, rcPoint(r0, c0), rcPoint(r1, c1));
    };
    line(1.0, 0, 0, 0, kLastEdge);
    line(1.0, 1, 0, 1, kLastEdge);
    line(1.0, numberOfRows, 0, numberOfRows, kLastEdge);
    line(1.0, 0, 0, numberOfRows, 0);
    line(1.0, 0, kLastEdge, numberOfRows, kLastEdge);
    line(0.5, 0, 1, numberOfRows, 1);
    if (rowOffsetOfIncomeTotal >= 0) line(0.5, rowOffsetOfIncomeTotal, 0, rowOffsetOfIncomeTotal, kLastEdge);
    if (rowOffsetOfSpenddingTotal >= 0) line(0.5, rowOffsetOfSpenddingTotal, 0, rowOffsetOfSpenddingTotal, kLastEdge);
}

PageRect AnnualReportPDFPage::cellRect(int gridRow, int col, int width) const
{
    const PagePoint corner = rcPoint(gridRow, col, kTextInset, 2);
    return makeRect(pageHeight, corner.x, corner.y, width, kCellHeight);
}

PageRect AnnualReportPDFPage::amountRect(int gridRow, int edge) const
{
    PageRect rect = cellRect(gridRow, edge, 0);
    rect.x = rcPoint(gridRow, edge).x + kAmountLeftInset;
    rect.w = rcPoint(gridRow, edge + 1).x - kAmountRightInset - rect.x;
    return rect;
}

void AnnualReportPDFPage::drawRow(PageCanvas& canvas, int gridRow, const std::string& label,
                                  const std::vector<int64_t>& cells) const
{
    // A name or a figure too wide for its column is drawn smaller, never
    // cut: a cut figure reads as another amount (-12,345,678 as 12,345,678).
    canvas.drawText(label, cellRect(gridRow, 0, nameWidth - 2 * kTextInset), kTableFont, TextFit::ShrinkLeft);
    const size_t count = std::min<size_t>(cells.size(), 13);
    for (size_t c = 0; c < count; ++c)
        canvas.drawText(formatWithGrouping(cells[c]), amountRect(gridRow, static_cast<int>(c) + 1), kTableFont,
                        TextFit::ShrinkRight);
}

void AnnualReportPDFPage::drawTableData(PageCanvas& canvas) const
{
    const std::string title = nendo + " 年度\u3000レポート\u3000" + (dateStamp ? dateStamp() : std::string());
    canvas.drawText(title, makeRect(pageHeight, titlePos.x, titlePos.y, 300, 30), kTitleFont);
    // The household months beside the title, from its end to the frame's right edge.
    if (!monthsNote.empty()) {
        const double noteX = titlePos.x + 310;
        const int noteWidth = static_cast<int>(rcPoint(0, kLastEdge).x - noteX);
        canvas.drawText(monthsNote, makeRect(pageHeight, noteX, titlePos.y, noteWidth, 30), kTableFont,
                        TextFit::ShrinkLeft);
    }

    canvas.drawText(" 名\u3000称", cellRect(1, 0, nameWidth), kTableFont);
    for (int m = 1; m <= 12; ++m) {
        char heading[32];
        std::snprintf(heading, sizeof heading, "%6d 月", m);
        canvas.drawText(heading, cellRect(1, m, amountWidth), kTableFont);
    }
    canvas.drawText("      計", cellRect(1, 13, totalWidth), kTableFont);

    const size_t count = std::min(names.size(), data.size());
    for (size_t k = 0; k < count; ++k) drawRow(canvas, static_cast<int>(k) + 2, names[k], data[k]);
}

void AnnualReportPDFPage::draw(PageCanvas& canvas) const
{
    drawTableLines(canvas);
    drawTableData(canvas);
}

namespace {

// The grid row of the line under a total at combined position `at` + 2 on a
// page holding rows lo to hi - 1, or -1. A total in the last place of a page
// gives 25 there and 1 on the next page: the bottom border and the heading
// line already run along it.
int offsetOn(int lineRow, int lo, int hi)
{
    return lo <= lineRow && lineRow <= hi ? lineRow - lo : -1;
}

}  // namespace

std::vector<std::unique_ptr<AnnualReportPDFPage>> annualReportPages(const std::string& nendo,
                                                                    const AnnualReportRows& rows,
                                                                    const DateStamp& dateStamp,
                                                                    const std::string& monthsNote)
{
    const int n = static_cast<int>(rows.names.size());
    const int a = rows.incomeRows + 2;
    const int b = rows.incomeRows + rows.expenseRows + 3;
    const int per = AnnualReportPDFPage::kRowsPerPage;
    std::vector<std::unique_ptr<AnnualReportPDFPage>> pages;
    for (int lo = 0; lo < n; lo += per) {
        const int hi = std::min(lo + per, n);
        pages.push_back(std::make_unique<AnnualReportPDFPage>(
            nendo, std::vector<std::string>(rows.names.begin() + lo, rows.names.begin() + hi),
            std::vector<std::vector<int64_t>>(rows.data.begin() + lo, rows.data.begin() + hi), offsetOn(a, lo, hi),
            offsetOn(b, lo, hi), dateStamp, monthsNote));
    }
    return pages;
}
