#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <tuple>

#include "reports/AnnualReportPDFPage.h"
#include "reports/AnnualReportRows.h"
#include "reports/PageRoutines.h"
#include "reports/PdfDocument.h"
#include "reports/RecordingCanvas.h"
#include "reports/SisanReportPDFPage.h"
#include "reports/YosanReport.h"
#include "reports/YosanReportPDFPage.h"
#include "store/Money.h"
#include "store/Sisan.h"

namespace {

using Line = RecordingCanvas::Line;
using Text = RecordingCanvas::Text;

constexpr double kGrey = 1.0 / 3.0;

std::string stamp()
{
    return "2019年01月15日";
}

TEST(PageRoutinesTest, AmountsFillTheirFieldFromTheRightAndPointsBecomePdfSpace)
{
    const struct {
        int64_t amount;
        int digits;
        const char* field;
    } cases[] = {
        {0, 10, "         0"},           {-500, 10, "      -500"},    {1234567, 10, " 1,234,567"},
        {123456789, 10, "123,456,789"}, {-10000000, 10, "-10,000,000"}, {1234, 3, "1,234"},
        {7, 0, "7"},
    };
    for (const auto& c : cases) EXPECT_EQ(int2stringWithComma(c.amount, c.digits), c.field) << c.amount;
    EXPECT_EQ(int2stringWithComma(-500), "      -500");  // 10 by default

    EXPECT_EQ(makeRect(595, 50, 50, 300, 30), (PageRect{50, 545, 300, 30}));
    RecordingCanvas canvas;
    drawLine(canvas, 840, 0.3, {50, 300}, {350, 300});
    // Drawn from the second point to the first, in dark grey.
    EXPECT_EQ(canvas.lines, (std::vector<Line>{{{350, 540}, {50, 540}, 0.3, kGrey}}));
}

const PageFont kTable{"Helvetica", 10};

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
    const TextFit wrap = TextFit::Wrap;
    EXPECT_EQ(t[0], (Text{"2019 年度\u3000レポート\u30002019年01月15日", {50, 545, 300, 30}, {"Helvetica", 12}, wrap}));
    EXPECT_EQ(t[1], (Text{" 名\u3000称", {25, 503, 160, 20}, kTable, wrap}));
    EXPECT_EQ(t[2], (Text{"     1 月", {185, 503, 50, 20}, kTable, wrap}));
    EXPECT_EQ(t[13], (Text{"    12 月", {735, 503, 50, 20}, kTable, wrap}));
    EXPECT_EQ(t[14], (Text{"      計", {785, 503, 55, 20}, kTable, wrap}));
    // The first row: its label inside the label column, January between
    // its rules (1.5 points from the left one, 3 from the right one), and
    // the year total before the right border.
    EXPECT_EQ(t[15], (Text{"row0", {25, 483, 150, 20}, kTable, TextFit::ShrinkLeft}));
    EXPECT_EQ(t[16], (Text{"0", {181.5, 483, 45.5, 20}, kTable, TextFit::ShrinkRight}));
    EXPECT_EQ(t[28], (Text{"0", {781.5, 483, 50.5, 20}, kTable, TextFit::ShrinkRight}));
    // The last row (the balance) 11 rows further down.
    EXPECT_EQ(t[15 + 11 * 14], (Text{"row11", {25, 263, 150, 20}, kTable, TextFit::ShrinkLeft}));
    EXPECT_EQ(t[15 + 11 * 14 + 1].text, "11");

    // An impossible grid column is reported and drawn at the left edge.
    testing::internal::CaptureStdout();
    const PagePoint point = page.rcPoint(2, 15, 5, 2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "error in rcPoint 15\n");
    EXPECT_EQ(point, (PagePoint{25, 112}));
}

TEST(AnnualReportPDFPageTest, RowsGoTwentyFourToAPageWithTheTotalsLinesWhereTheirRowsFall)
{
    const struct {
        int nIn, nOut;
        std::vector<size_t> rowsPerPage;
        std::vector<std::pair<int, int>> offsets;  // (income, expense) per page
    } cases[] = {
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
    EXPECT_EQ(canvas.texts.back().rect, (PageRect{781.5, 23, 50.5, 20}));
    EXPECT_EQ(canvas.lines.back(), underTotal(24));
}

const PageFont kText{"Helvetica", 12};

std::vector<std::shared_ptr<Sisan>> assets(int count)
{
    std::vector<std::shared_ptr<Sisan>> list;
    for (int i = 0; i < count; ++i) list.push_back(std::make_shared<Sisan>(i + 1, "asset" + std::to_string(i), 0, -3000));
    return list;
}

TEST(SisanReportPDFPageTest, APageDrawsTheFullFrameTheAssetsAndTheTotal)
{
    const auto pages = sisanReportPages(assets(7), 1234567, stamp);
    ASSERT_EQ(pages.size(), 1u);
    RecordingCanvas canvas;
    pages[0]->draw(canvas);
    EXPECT_EQ(pages[0]->bounds(), (PageSize{590, 840}));

    const auto across = [](double y, double width) { return Line{{350, 840 - y}, {50, 840 - y}, width, kGrey}; };
    const auto down = [](double x) { return Line{{x, 165}, {x, 690}, 1.0, kGrey}; };
    EXPECT_EQ(canvas.lines, (std::vector<Line>{across(150, 1.0), across(175, 1.0), across(300, 0.3),
                                               across(425, 0.3), across(550, 0.3), across(675, 1.0), down(50),
                                               down(250), down(350)}));

    // Title, date, two headings, 7 assets of two texts, the total.
    ASSERT_EQ(canvas.texts.size(), 4u + 14u + 1u);
    const auto& t = canvas.texts;
    const TextFit wrap = TextFit::Wrap;
    EXPECT_EQ(t[0], (Text{"資産レポート", {100, 740, 120, 30}, {"Helvetica", 14}, wrap}));
    EXPECT_EQ(t[1], (Text{"2019年01月15日", {300, 740, 140, 20}, kText, wrap}));
    EXPECT_EQ(t[2], (Text{" 名\u3000称", {54, 661, 60, 20}, kText, wrap}));
    EXPECT_EQ(t[3], (Text{"   金額（円）", {254, 661, 100, 20}, kText, wrap}));
    // Names and balances inside their columns, 4 points from the rules on
    // the left, the balance 8 from the right border.
    EXPECT_EQ(t[4], (Text{"asset0", {54, 640, 192, 20}, kText, TextFit::ShrinkLeft}));
    EXPECT_EQ(t[5], (Text{"-3,000", {254, 640, 88, 20}, kText, TextFit::ShrinkRight}));
    EXPECT_EQ(t[16], (Text{"asset6", {54, 490, 192, 20}, kText, TextFit::ShrinkLeft}));
    EXPECT_EQ(t[18], (Text{"合\u3000計\u3000\u3000 1,234,567 円", {210, 140, 160, 20}, kText, TextFit::ShrinkLeft}));
}

TEST(SisanReportPDFPageTest, AssetsGoTwentyToAPageEachWithTheGrandTotal)
{
    const struct {
        int assets;
        std::vector<size_t> perPage;
    } cases[] = {{0, {0}}, {20, {20}}, {21, {20, 1}}};
    for (const auto& c : cases) {
        const auto pages = sisanReportPages(assets(c.assets), -60000, stamp);
        ASSERT_EQ(pages.size(), c.perPage.size()) << c.assets;
        for (size_t p = 0; p < pages.size(); ++p) {
            EXPECT_EQ(pages[p]->sisanData.size(), c.perPage[p]) << c.assets;
            EXPECT_EQ(pages[p]->sisanData.empty() ? "" : pages[p]->sisanData[0]->Namae,
                      c.perPage[p] ? "asset" + std::to_string(20 * p) : "");
            RecordingCanvas canvas;
            pages[p]->draw(canvas);
            EXPECT_EQ(canvas.lines.size(), 9u);
            EXPECT_EQ(canvas.texts.back().text, "合\u3000計\u3000\u3000   -60,000 円");
        }
    }
}

// A page that draws a few texts in 10-point "Helvetica".
class TextPage final : public ReportPage {
public:
    explicit TextPage(std::vector<Text> items) : items(std::move(items)) {}
    PageSize bounds() const override { return {400, 300}; }
    void draw(PageCanvas& canvas) const override
    {
        for (const Text& item : items) canvas.drawText(item.text, item.rect, item.font, item.fit);
    }

private:
    std::vector<Text> items;
};

// What a command prints on standard output.
std::string outputOf(const std::string& command)
{
    std::string text;
    FILE* out = popen(command.c_str(), "r");
    char buffer[4096];
    for (size_t n; out && (n = fread(buffer, 1, sizeof buffer, out)) > 0;) text.append(buffer, n);
    if (out) pclose(out);
    return text;
}

// The pages written to a temporary PDF file, whose path is returned.
template <typename Pages>
std::string writePdf(Pages pages, const char* name)
{
    const std::string pdf = std::filesystem::temp_directory_path() / name;
    PdfDocument document;
    size_t index = 0;
    for (auto& page : pages) document.insertPage(std::move(page), index++);
    std::string error;
    EXPECT_TRUE(document.writeToFile(pdf, &error)) << error;
    return pdf;
}

TEST(PdfDocumentTest, TextWrapsAtItsRectangleAndLinesBeyondItsHeightAreLeftOut)
{
    const PageFont font{"Helvetica", 10};
    std::vector<std::unique_ptr<TextPage>> pages;
    pages.push_back(std::make_unique<TextPage>(std::vector<Text>{
        {"あいうえおかきくけこ", {20, 200, 50, 20}, font, TextFit::Wrap},  // 5 to a line, room for one line
        {"さしすせそたちつてと", {20, 100, 50, 40}, font, TextFit::Wrap},  // room for two lines
        {"23,456,789", {200, 200, 40, 20}, font, TextFit::ShrinkRight},  // smaller, on one line
    }));
    const std::string pdf = writePdf(std::move(pages), "zenvora-pdf-document-test.pdf");
    EXPECT_EQ(outputOf("pdftotext -raw '" + pdf + "' -"), "あいうえお\nさしすせそ\nたちつてと\n23,456,789\n\f");
    std::filesystem::remove(pdf);
}

// A word of a PDF's text layer and its box, in points from the page's
// top-left corner, as pdftotext -bbox gives them.
struct Word {
    int page;
    double xMin, yMin, xMax, yMax;
    std::string text;
};

std::vector<Word> wordsOf(const std::string& pdf)
{
    static const std::regex word(R"re(<word xMin="([0-9.]+)" yMin="([0-9.]+)" xMax="([0-9.]+)" yMax="([0-9.]+)">([^<]*)</word>)re");
    std::vector<Word> words;
    int page = -1;
    std::istringstream lines(outputOf("pdftotext -bbox '" + pdf + "' -"));
    for (std::string line; std::getline(lines, line);) {
        std::smatch m;
        if (line.find("<page ") != std::string::npos) ++page;
        if (std::regex_search(line, m, word))
            words.push_back({page, std::stod(m[1]), std::stod(m[2]), std::stod(m[3]), std::stod(m[4]), m[5]});
    }
    return words;
}

// The texts of a table's cells as the text layer reads them: each word
// belongs to the cell under its middle and must lie inside that cell, with
// a hundredth of a point for rounding; the words of a cell are joined in
// reading order. Keys are (page, row, column), rows counted from `top`.
using CellTexts = std::map<std::tuple<int, int, int>, std::string>;

CellTexts cellTextsOf(const std::vector<Word>& words, const std::vector<double>& columnEdges, double top,
                      double rowHeight, int rows)
{
    constexpr double kSlack = 0.01;
    CellTexts cells;
    for (const Word& w : words) {
        const double midX = (w.xMin + w.xMax) / 2, midY = (w.yMin + w.yMax) / 2;
        const auto right = std::upper_bound(columnEdges.begin(), columnEdges.end(), midX);
        const int row = static_cast<int>((midY - top) / rowHeight);
        if (midY < top || row >= rows || right == columnEdges.begin() || right == columnEdges.end()) continue;
        const int column = static_cast<int>(right - columnEdges.begin()) - 1;
        SCOPED_TRACE(w.text);
        EXPECT_GE(w.xMin, *(right - 1) - kSlack);
        EXPECT_LE(w.xMax, *right + kSlack);
        EXPECT_GE(w.yMin, top + row * rowHeight - kSlack);
        EXPECT_LE(w.yMax, top + (row + 1) * rowHeight + kSlack);
        cells[{w.page, row, column}] += w.text;
    }
    return cells;
}

// Figures of 9 to 12 characters, negatives among them, and sums beyond.
const int64_t kWideFigures[] = {123456789,  -12345678,  1234567,    -123456789, 99999999, -1234567,   999999999,
                                -99999999,  2147483647, -999999999, 12345678,   -9999999, 233366381};

TEST(PdfDocumentTest, EveryFigureAndNameOfTheAnnualReportLiesWholeInsideItsCell)
{
    AnnualReportRows rows;
    rows.incomeRows = 12;
    rows.expenseRows = 15;
    for (int r = 0; r < 30; ++r) {
        rows.names.push_back(r == 1 ? "とても長い名前の費目をここに置いてみる/さらに長い内訳の名前" : "給与/その他" + std::to_string(r));
        std::vector<int64_t> cells;
        for (size_t c = 0; c < 13; ++c) cells.push_back(kWideFigures[(r + c) % std::size(kWideFigures)] * (c == 12 ? 10 : 1));
        rows.data.push_back(cells);
    }
    const std::string pdf = writePdf(annualReportPages("2025", rows, stamp), "zenvora-annual-cells-test.pdf");
    std::vector<double> edges{20, 180};
    for (int m = 1; m <= 12; ++m) edges.push_back(edges.back() + 50);
    edges.push_back(835);

    // Grid rows 1 to 24 hold the data rows of each page.
    const CellTexts cells = cellTextsOf(wordsOf(pdf), edges, 90, 20, 24);
    EXPECT_EQ(cells.size(), 30u * 14u);
    for (int r = 0; r < 30; ++r) {
        const int page = r / 24, row = r % 24;
        EXPECT_EQ(cells.at({page, row, 0}), rows.names[static_cast<size_t>(r)]);
        for (int c = 0; c < 13; ++c)
            EXPECT_EQ(cells.at({page, row, c + 1}), formatWithGrouping(rows.data[static_cast<size_t>(r)][static_cast<size_t>(c)]))
                << "row " << r << ", column " << c;
    }
    std::filesystem::remove(pdf);
}

TEST(PdfDocumentTest, EveryNameBalanceAndTotalOfTheAssetReportLiesWholeInsideItsPlace)
{
    std::vector<std::shared_ptr<Sisan>> list;
    for (int i = 0; i < 21; ++i) {
        const std::string namae = i == 2 ? "とても長い資産の名前をここに置いてみるとどうなるか" : "現金" + std::to_string(i);
        list.push_back(std::make_shared<Sisan>(i + 1, namae, 0, kWideFigures[i % std::size(kWideFigures)] * 10));
    }
    const int64_t total = -9223372036854775807;
    const std::string pdf = writePdf(sisanReportPages(list, total, stamp), "zenvora-sisan-cells-test.pdf");
    const std::vector<Word> words = wordsOf(pdf);

    // Asset rows start one row below the frame's top at 150.
    const CellTexts cells = cellTextsOf(words, {50, 250, 350}, 175, 25, 20);
    EXPECT_EQ(cells.size(), 21u * 2u);
    for (int i = 0; i < 21; ++i) {
        EXPECT_EQ(cells.at({i / 20, i % 20, 0}), list[static_cast<size_t>(i)]->Namae);
        EXPECT_EQ(cells.at({i / 20, i % 20, 1}), formatWithGrouping(list[static_cast<size_t>(i)]->Zankin));
    }
    // The total line of each page, within its 160 points from x = 210.
    std::map<int, std::string> totals;
    for (const Word& w : words) {
        if (w.yMin < 675) continue;
        EXPECT_GE(w.xMin, 210 - 0.01) << w.text;
        EXPECT_LE(w.xMax, 370 + 0.01) << w.text;
        totals[w.page] += w.text;
    }
    EXPECT_EQ(totals, (std::map<int, std::string>{{0, "合計-9,223,372,036,854,775,807円"}, {1, "合計-9,223,372,036,854,775,807円"}}));
    std::filesystem::remove(pdf);
}

// The budget report: 30 rows over two pages, every name and figure whole in
// its cell, sub-items indented, and per row a bar of its share: blue up to
// the share, red across the column when over, none without a budget.
TEST(YosanReportPDFPageTest, RowsLieInTheirCellsAndBarsShowTheShareRedWhenOver)
{
    std::vector<YosanRow> rows;
    for (int r = 0; r < 29; ++r) {
        YosanRow row;
        row.name = r % 3 == 1 ? "食費/外食" + std::to_string(r) : "とても長い名前の費目" + std::to_string(r);
        row.level = r % 3 == 1 ? YosanRow::Level::SubItem : YosanRow::Level::Category;
        if (r % 4 != 3) row.yosan = kWideFigures[r % std::size(kWideFigures)] < 0 ? 50000 : 2000000000;
        row.jisseki = r % 2 ? 1234567 : 60000;
        rows.push_back(row);
    }
    rows.push_back({kYosanTotal, "合\u3000計", YosanRow::Level::Total, 100000000, 99999999});
    auto pages = yosanReportPages("2026年12月分（11月25日〜12月24日）", rows, stamp);
    ASSERT_EQ(pages.size(), 2u);

    RecordingCanvas first;
    pages[0]->draw(first);
    const auto fillsOfRow = [&](int r) {
        std::vector<RecordingCanvas::Fill> fills;
        const double y = 840 - (120 + 24 * (r + 1) + 16);  // the bar's bottom in its row
        for (const auto& f : first.fills)
            if (f.rect.y == y) fills.push_back(f);
        return fills;
    };
    // Row 0: 60,000 of 2,000,000,000; row 1: 1,234,567 over 50,000; row 3: no budget.
    ASSERT_EQ(fillsOfRow(0).size(), 2u);
    EXPECT_EQ(fillsOfRow(0)[1].color, YosanReportPDFPage::barColor(rows[0]));
    EXPECT_LT(fillsOfRow(0)[1].rect.w, fillsOfRow(0)[0].rect.w / 100);
    ASSERT_EQ(fillsOfRow(1).size(), 2u);
    EXPECT_EQ(fillsOfRow(1)[1].rect.w, fillsOfRow(1)[0].rect.w);
    EXPECT_NE(fillsOfRow(1)[1].color, fillsOfRow(0)[1].color);
    EXPECT_TRUE(fillsOfRow(3).empty());

    const std::string pdf = writePdf(std::move(pages), "zenvora-yosan-cells-test.pdf");
    const CellTexts cells = cellTextsOf(wordsOf(pdf), {30, 180, 260, 340, 420, 475, 560}, 144, 24, 26);
    for (size_t r = 0; r < rows.size(); ++r) {
        const YosanRow& row = rows[r];
        const int page = static_cast<int>(r) / 26, line = static_cast<int>(r) % 26;
        SCOPED_TRACE(r);
        // pdftotext takes the ideographic space of 合　計 for a word gap.
        EXPECT_EQ(cells.at({page, line, 0}), std::regex_replace(yosanRowName(row), std::regex("\u3000"), ""));
        EXPECT_EQ(cells.at({page, line, 2}), formatWithGrouping(row.jisseki));
        if (!row.yosan) {
            EXPECT_EQ(cells.count({page, line, 1}) + cells.count({page, line, 3}), 0u);
            continue;
        }
        EXPECT_EQ(cells.at({page, line, 1}), formatWithGrouping(*row.yosan));
        EXPECT_EQ(cells.at({page, line, 3}), formatWithGrouping(*row.difference()));
        if (row.share()) {
            EXPECT_EQ(cells.at({page, line, 4}), yosanShareText(row));
        }
    }
    std::filesystem::remove(pdf);
}

// A household year's page names its months beside the title, inside the
// page; calendar months draw nothing there.
TEST(AnnualReportPDFPageTest, HouseholdMonthsAreNamedBesideTheTitle)
{
    const std::string note = "月の始まり: 25日（土日祝は前営業日）\u30002025年12月25日〜2026年12月24日";
    RecordingCanvas calendar, household;
    annualReportPages("2026", combined(1, 1), stamp).front()->draw(calendar);
    annualReportPages("2026", combined(1, 1), stamp, note).front()->draw(household);
    ASSERT_EQ(household.texts.size(), calendar.texts.size() + 1);
    const Text& drawn = household.texts[1];
    EXPECT_EQ(drawn.text, note);
    EXPECT_EQ(drawn.fit, TextFit::ShrinkLeft);
    EXPECT_GE(drawn.rect.x, 350);
    EXPECT_LE(drawn.rect.x + drawn.rect.w, 835);
}

}  // namespace
