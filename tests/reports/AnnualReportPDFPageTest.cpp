#include <gtest/gtest.h>

#include "reports/AnnualReportPDFPage.h"
#include "reports/AnnualReportRows.h"
#include "reports/RecordingCanvas.h"

namespace {

using Line = RecordingCanvas::Line;
using Text = RecordingCanvas::Text;

constexpr double kGrey = 1.0 / 3.0;
const PageFont kTable{"Helvetica", 10};

std::string stamp()
{
    return "2019年01月15日";
}

// nIn income rows, the income total, nOut expense rows, the two last totals;
// every label names its position in the combined list.
AnnualReportRows combined(int nIn, int nOut)
{
    AnnualReportRows rows;
    rows.incomeRows = nIn;
    rows.expenseRows = nOut;
    for (int i = 0; i < nIn + nOut + 3; ++i) {
        rows.names.push_back("row" + std::to_string(i));
        rows.data.push_back(std::vector<int64_t>(13, i));
    }
    return rows;
}

// The line under a total: along grid row o, at y = 595 - (70 + 20 o).
Line underTotal(int o)
{
    const double y = 525 - 20.0 * o;
    return {{835, y}, {20, y}, 0.5, kGrey};
}

}  // namespace

TEST(AnnualReportPDFPageTest, APageDrawsItsFrameTitleHeadingsAndRowsWhereTheyBelong)
{
    // 5 income and 4 expense sub-items: the totals' lines at grid rows 7 and 12.
    auto pages = annualReportPages("2019", combined(5, 4), stamp);
    ASSERT_EQ(pages.size(), 1u);
    const AnnualReportPDFPage& page = *pages[0];
    EXPECT_EQ(page.bounds(), (PageSize{842, 595}));
    RecordingCanvas canvas;
    page.draw(canvas);

    EXPECT_EQ(canvas.lines, (std::vector<Line>{
                                {{835, 525}, {20, 525}, 1.0, kGrey},  // top border
                                {{835, 505}, {20, 505}, 1.0, kGrey},  // under the headings
                                {{835, 25}, {20, 25}, 1.0, kGrey},    // bottom border
                                {{20, 25}, {20, 525}, 1.0, kGrey},    // left border
                                {{835, 25}, {835, 525}, 1.0, kGrey},  // right border
                                {{180, 25}, {180, 525}, 0.5, kGrey},  // right of the labels
                                underTotal(7),
                                underTotal(12),
                            }));

    // Title, 14 headings, 12 rows of a label and 13 amounts.
    ASSERT_EQ(canvas.texts.size(), 1u + 14u + 12u * 14u);
    const auto& t = canvas.texts;
    EXPECT_EQ(t[0], (Text{"2019 年度\u3000レポート\u30002019年01月15日", {50, 545, 300, 30}, {"Helvetica", 12}, {}}));
    EXPECT_EQ(t[1], (Text{" 名\u3000称", {25, 503, 160, 20}, kTable, {}}));
    EXPECT_EQ(t[2], (Text{"     1 月", {185, 503, 50, 20}, kTable, {}}));
    EXPECT_EQ(t[13], (Text{"    12 月", {735, 503, 50, 20}, kTable, {}}));
    EXPECT_EQ(t[14], (Text{"      計", {785, 503, 55, 20}, kTable, {}}));
    // The first row: its label, January ending 3 points before February's
    // edge, and the year total ending before the right border.
    EXPECT_EQ(t[15], (Text{"row0", {25, 483, 160, 20}, kTable, {}}));
    EXPECT_EQ(t[16], (Text{"         0", {185, 483, 50, 20}, kTable, 227.0}));
    EXPECT_EQ(t[28], (Text{"         0", {785, 483, 55, 20}, kTable, 832.0}));
    // The last row (the balance) 11 rows further down.
    EXPECT_EQ(t[15 + 11 * 14], (Text{"row11", {25, 263, 160, 20}, kTable, {}}));
    EXPECT_EQ(t[15 + 11 * 14 + 1].text, "        11");
}

TEST(AnnualReportPDFPageTest, RowsGoTwentyFourToAPageWithTheTotalsLinesWhereTheirRowsFall)
{
    const struct {
        int nIn, nOut;
        std::vector<size_t> rowsPerPage;
        std::vector<std::pair<int, int>> offsets;  // (income, expense) per page
    } cases[] = {
        {5, 4, {12}, {{7, 12}}},
        {10, 11, {24}, {{12, 24}}},                 // n = 24: one page
        {10, 12, {24, 1}, {{12, -1}, {-1, 1}}},     // n = 25: the balance alone on page 2
        {23, 5, {24, 7}, {{-1, -1}, {1, 7}}},       // income total in the last place of page 1
        {24, 0, {24, 3}, {{-1, -1}, {2, 3}}},       // income total in the first place of page 2
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.nIn << " income rows, " << c.nOut << " expense rows");
        const auto pages = annualReportPages("2019", combined(c.nIn, c.nOut), stamp);
        ASSERT_EQ(pages.size(), c.rowsPerPage.size());
        for (size_t p = 0; p < pages.size(); ++p) {
            EXPECT_EQ(pages[p]->names.size(), c.rowsPerPage[p]);
            EXPECT_EQ(pages[p]->names.front(), "row" + std::to_string(24 * p));
            EXPECT_EQ(pages[p]->rowOffsetOfIncomeTotal, c.offsets[p].first) << "page " << p;
            EXPECT_EQ(pages[p]->rowOffsetOfSpenddingTotal, c.offsets[p].second) << "page " << p;
        }
    }
    // A page of 24 rows fills its frame to the last row.
    RecordingCanvas canvas;
    annualReportPages("2019", combined(10, 11), stamp)[0]->draw(canvas);
    EXPECT_EQ(canvas.texts.back().rect, (PageRect{785, 23, 55, 20}));
    EXPECT_EQ(canvas.lines.back(), underTotal(24));
}

TEST(AnnualReportPDFPageTest, AnImpossibleGridColumnIsReportedAndDrawnAtTheLeftEdge)
{
    const auto pages = annualReportPages("2019", combined(0, 0), stamp);
    testing::internal::CaptureStdout();
    const PagePoint point = pages[0]->rcPoint(2, 15, 5, 2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "error in rcPoint 15\n");
    EXPECT_EQ(point, (PagePoint{25, 112}));
}
