#include "reports/YosanReportPDFPage.h"

#include <algorithm>
#include <array>

#include "reports/PageRoutines.h"
#include "reports/YosanReport.h"
#include "store/Money.h"

namespace {

const PageFont kTitleFont{"Helvetica", 14};
const PageFont kHeadFont{"Helvetica", 12};
const PageFont kTableFont{"Helvetica", 10};
constexpr double kTop = 120;
constexpr double kRowHeight = 24;
constexpr double kTextHeight = 20;
constexpr double kInset = 5;
constexpr double kSubItemIndent = 12;
// Column edges: name, budget, spent, difference, share, bar.
constexpr std::array<double, 7> kEdges = {30, 180, 260, 340, 420, 475, 560};
enum Column { kName = 0, kYosan, kJisseki, kSagaku, kShare, kBar };

const PageColor kBarBack{0.90, 0.90, 0.90};
const PageColor kBarWithin{0.31, 0.47, 0.65};
const PageColor kBarOver{0.88, 0.34, 0.35};

double rowTop(int gridRow)
{
    return kTop + kRowHeight * gridRow;
}

}  // namespace

YosanReportPDFPage::YosanReportPDFPage(std::string period, std::vector<YosanRow> rows, DateStamp dateStamp)
    : period(std::move(period)), rows(std::move(rows)), dateStamp(std::move(dateStamp))
{
}

PageColor YosanReportPDFPage::barColor(const YosanRow& row)
{
    return row.over() ? kBarOver : kBarWithin;
}

PageRect YosanReportPDFPage::cellRect(int gridRow, int from, int to) const
{
    const double left = kEdges[static_cast<size_t>(from)] + kInset;
    const double right = kEdges[static_cast<size_t>(to)] - kInset;
    return makeRect(pageHeight, left, rowTop(gridRow + 1) - 2, static_cast<int>(right - left), static_cast<int>(kTextHeight));
}

void YosanReportPDFPage::drawTableLines(PageCanvas& canvas) const
{
    const double left = kEdges.front(), right = kEdges.back();
    const double bottom = rowTop(kRowsPerPage + 1);
    const auto across = [&](double width, double y) { drawLine(canvas, pageHeight, width, {left, y}, {right, y}); };
    across(1.0, rowTop(0));
    across(1.0, rowTop(1));
    for (size_t r = 0; r + 1 < rows.size(); ++r) {
        // A firm rule above the total, a thin one under every other row.
        const bool aboveTotal = rows[r + 1].level == YosanRow::Level::Total;
        across(aboveTotal ? 1.0 : 0.3, rowTop(static_cast<int>(r) + 2));
    }
    across(1.0, bottom);
    for (size_t e = 0; e < kEdges.size(); ++e) {
        const bool outer = e == 0 || e + 1 == kEdges.size();
        drawLine(canvas, pageHeight, outer ? 1.0 : 0.5, {kEdges[e], rowTop(0)}, {kEdges[e], bottom});
    }
}

void YosanReportPDFPage::drawBar(PageCanvas& canvas, int gridRow, const YosanRow& row) const
{
    const auto share = row.share();
    if (!share && !row.over()) return;
    const double left = kEdges[kBar] + kInset, width = kEdges[kBar + 1] - kInset - left;
    const double barHeight = 8;
    const double y = pageHeight - (rowTop(gridRow) + (kRowHeight + barHeight) / 2);
    canvas.fillRect({left, y, width, barHeight}, kBarBack);
    const double filled = row.over() ? width : width * std::clamp(*share, 0.0, 1.0);
    if (filled > 0) canvas.fillRect({left, y, filled, barHeight}, barColor(row));
}

void YosanReportPDFPage::drawTableData(PageCanvas& canvas) const
{
    canvas.drawText("予算と実績", makeRect(pageHeight, 40, 60, 150, 30), kTitleFont);
    canvas.drawText(dateStamp ? dateStamp() : std::string(), makeRect(pageHeight, 400, 60, 150, 20), kHeadFont);
    canvas.drawText(period, makeRect(pageHeight, 40, 90, 510, 20), kHeadFont, TextFit::ShrinkLeft);

    canvas.drawText(" 費\u3000目", cellRect(0, kName, kYosan), kTableFont, TextFit::ShrinkLeft);
    const char* headings[] = {"予\u3000算", "実\u3000績", "差\u3000額", "使用率"};
    for (int c = kYosan; c <= kShare; ++c)
        canvas.drawText(headings[c - kYosan], cellRect(0, c, c + 1), kTableFont, TextFit::ShrinkRight);

    const auto amount = [](const std::optional<int64_t>& value) { return value ? formatWithGrouping(*value) : ""; };
    for (size_t r = 0; r < rows.size(); ++r) {
        const YosanRow& row = rows[r];
        const int gridRow = static_cast<int>(r) + 1;
        PageRect name = cellRect(gridRow, kName, kYosan);
        if (row.level == YosanRow::Level::SubItem) {
            name.x += kSubItemIndent;
            name.w -= kSubItemIndent;
        }
        canvas.drawText(yosanRowName(row), name, kTableFont, TextFit::ShrinkLeft);
        const std::string cells[] = {amount(row.yosan), formatWithGrouping(row.jisseki), amount(row.difference()),
                                     yosanShareText(row)};
        for (int c = kYosan; c <= kShare; ++c)
            if (!cells[c - kYosan].empty())
                canvas.drawText(cells[c - kYosan], cellRect(gridRow, c, c + 1), kTableFont, TextFit::ShrinkRight);
        drawBar(canvas, gridRow, row);
    }
}

void YosanReportPDFPage::draw(PageCanvas& canvas) const
{
    drawTableLines(canvas);
    drawTableData(canvas);
}

std::vector<std::unique_ptr<YosanReportPDFPage>> yosanReportPages(const std::string& period,
                                                                  const std::vector<YosanRow>& rows,
                                                                  const DateStamp& dateStamp)
{
    const size_t per = YosanReportPDFPage::kRowsPerPage;
    std::vector<std::unique_ptr<YosanReportPDFPage>> pages;
    size_t lo = 0;
    do {
        const size_t hi = std::min(lo + per, rows.size());
        pages.push_back(std::make_unique<YosanReportPDFPage>(
            period, std::vector<YosanRow>(rows.begin() + static_cast<ptrdiff_t>(lo), rows.begin() + static_cast<ptrdiff_t>(hi)),
            dateStamp));
        lo = hi;
    } while (lo < rows.size());
    return pages;
}
