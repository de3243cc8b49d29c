#include <gtest/gtest.h>

#include "reports/RecordingCanvas.h"
#include "reports/SisanReportPDFPage.h"
#include "store/Sisan.h"

namespace {

using Line = RecordingCanvas::Line;
using Text = RecordingCanvas::Text;

constexpr double kGrey = 1.0 / 3.0;
const PageFont kText{"Helvetica", 12};

std::vector<std::shared_ptr<Sisan>> assets(int count)
{
    std::vector<std::shared_ptr<Sisan>> list;
    for (int i = 0; i < count; ++i) list.push_back(std::make_shared<Sisan>(i + 1, "asset" + std::to_string(i), 0, -3000));
    return list;
}

std::string stamp()
{
    return "2019年01月15日";
}

}  // namespace

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
    EXPECT_EQ(t[0], (Text{"資産レポート", {100, 740, 120, 30}, {"Helvetica", 14}, {}}));
    EXPECT_EQ(t[1], (Text{"2019年01月15日", {300, 740, 140, 20}, kText, {}}));
    EXPECT_EQ(t[2], (Text{" 名\u3000称", {54, 661, 60, 20}, kText, {}}));
    EXPECT_EQ(t[3], (Text{"   金額（円）", {254, 661, 100, 20}, kText, {}}));
    EXPECT_EQ(t[4], (Text{"asset0", {54, 640, 200, 20}, kText, {}}));
    EXPECT_EQ(t[5], (Text{"    -3,000", {266, 640, 100, 20}, kText, 342.0}));
    EXPECT_EQ(t[16], (Text{"asset6", {54, 490, 200, 20}, kText, {}}));
    EXPECT_EQ(t[18], (Text{"合\u3000計\u3000\u3000 1,234,567 円", {210, 140, 160, 20}, kText, {}}));
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
            RecordingCanvas canvas;
            pages[p]->draw(canvas);
            EXPECT_EQ(canvas.lines.size(), 9u);
            EXPECT_EQ(canvas.texts.back().text, "合\u3000計\u3000\u3000   -60,000 円");
        }
    }
    // The 21st asset opens the second page in the first row.
    EXPECT_EQ(sisanReportPages(assets(21), 0, stamp)[1]->sisanData[0]->Namae, "asset20");
}
