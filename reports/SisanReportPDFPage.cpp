#include "reports/SisanReportPDFPage.h"

#include <algorithm>

#include "reports/PageRoutines.h"
#include "store/Money.h"
#include "store/Sisan.h"

namespace {

const PageFont kTitleFont{"Helvetica", 14};
const PageFont kTextFont{"Helvetica", 12};
constexpr int kTextHeight = 20;
// Balances end this far left of the frame's right border.
constexpr double kAmountRightInset = 8;

}  // namespace

SisanReportPDFPage::SisanReportPDFPage(std::vector<std::shared_ptr<Sisan>> sisanData, int64_t total,
                                       DateStamp dateStamp)
    : sisanData(std::move(sisanData)), total(total), dateStamp(std::move(dateStamp))
{
}

void SisanReportPDFPage::drawTableLines(PageCanvas& canvas) const
{
    const double left = tableLeftPos0.x;
    const double right = tableRightPos0.x;
    const double top = tableLeftPos0.y;
    const double bottom = top + rowHeight * numberOfRows;
    const auto across = [&](double width, double y) { drawLine(canvas, pageHeight, width, {left, y}, {right, y}); };
    const auto down = [&](double x) { drawLine(canvas, pageHeight, 1.0, {x, top}, {x, bottom}); };
    across(1.0, top);
    across(1.0, top + rowHeight);
    for (int rule = 1; rule <= 3; ++rule) across(0.3, top + rowHeight * (1 + 5 * rule));
    across(1.0, bottom);
    down(left);
    down(left + nameWidth);
    down(right);
}

void SisanReportPDFPage::drawTableData(PageCanvas& canvas) const
{
    const auto rect = [&](double x, double y, double w) {
        return makeRect(pageHeight, x, y, static_cast<int>(w), kTextHeight);
    };
    canvas.drawText("資産レポート", makeRect(pageHeight, titlePos.x, titlePos.y, 120, 30), kTitleFont);
    canvas.drawText(dateStamp ? dateStamp() : std::string(), rect(datePos.x, datePos.y, 140), kTextFont);

    const double textX = tableLeftPos0.x + textInSet;
    const double headingY = tableLeftPos0.y + verticalPadding + rowHeight;
    canvas.drawText(" 名\u3000称", rect(textX, headingY, 60), kTextFont);
    canvas.drawText("   金額（円）", rect(textX + nameWidth, headingY, 100), kTextFont);

    // A name or a balance too wide for its column, and a total too wide for
    // its line, is drawn smaller, never cut.
    const double nameText = nameWidth - 2 * textInSet;
    const double amountX = tableLeftPos0.x + nameWidth + textInSet;
    const double amountText = tableRightPos0.x - kAmountRightInset - amountX;
    double y = tableLeftPos0.y + 2 * rowHeight;
    for (const auto& sisan : sisanData) {
        canvas.drawText(sisan->Namae, rect(textX, y, nameText), kTextFont, TextFit::ShrinkLeft);
        canvas.drawText(formatWithGrouping(sisan->Zankin), rect(amountX, y, amountText), kTextFont,
                        TextFit::ShrinkRight);
        y += rowHeight;
    }
    canvas.drawText("合\u3000計\u3000\u3000" + int2stringWithComma(total, 10) + " 円",
                    rect(totalPos.x, totalPos.y, 160), kTextFont, TextFit::ShrinkLeft);
}

void SisanReportPDFPage::draw(PageCanvas& canvas) const
{
    drawTableLines(canvas);
    drawTableData(canvas);
}

std::vector<std::unique_ptr<SisanReportPDFPage>> sisanReportPages(const std::vector<std::shared_ptr<Sisan>>& sisanList,
                                                                  int64_t grandTotal, const DateStamp& dateStamp)
{
    const size_t per = SisanReportPDFPage::kAssetsPerPage;
    std::vector<std::unique_ptr<SisanReportPDFPage>> pages;
    size_t lo = 0;
    do {
        const size_t hi = std::min(lo + per, sisanList.size());
        pages.push_back(std::make_unique<SisanReportPDFPage>(
            std::vector<std::shared_ptr<Sisan>>(sisanList.begin() + static_cast<ptrdiff_t>(lo),
                                                sisanList.begin() + static_cast<ptrdiff_t>(hi)),
            grandTotal, dateStamp));
        lo = hi;
    } while (lo < sisanList.size());
    return pages;
}
