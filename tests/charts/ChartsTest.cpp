#include <QAbstractItemModelTester>
#include <QBarSeries>
#include <QBarSet>
#include <QChartView>
#include <QImage>
#include <QLabel>
#include <QLineSeries>
#include <QListView>
#include <QPieSeries>
#include <QPushButton>
#include <QStackedWidget>
#include <QValueAxis>
#include <cmath>
#include <filesystem>

#include "charts/AnnualChartsView.h"
#include "charts/SisanHistoryChartView.h"
#include "tests/app/GuiFixture.h"

namespace {

// The charts on a temporary book, with the clock in April 2024.
class ChartsTest : public GuiFixture {
protected:
    void SetUp() override
    {
        GuiFixture::SetUp();
        setClockTo({2024, 4, 15});
    }

    // The sentence shown in place of a chart, or "" while the chart shows.
    static QString sentence(QWidget* view, const char* stack, const char* label)
    {
        auto* text = in<QLabel>(view, label);
        return in<QStackedWidget>(view, stack)->currentWidget() == text ? text->text() : QString();
    }
    template <typename S>
    static QList<S*> seriesOf(QWidget* view, const char* chart)
    {
        QList<S*> out;
        for (QAbstractSeries* s : in<QChartView>(view, chart)->chart()->series())
            if (auto* typed = qobject_cast<S*>(s)) out.push_back(typed);
        return out;
    }
};

std::vector<int64_t> ys(const QXYSeries* line)
{
    std::vector<int64_t> out;
    for (const QPointF& p : line->points()) out.push_back(static_cast<int64_t>(p.y()));
    return out;
}

std::vector<int64_t> months(const std::vector<int64_t>& row)
{
    return {row.begin(), row.begin() + 12};
}

std::vector<int64_t> values(const QBarSet* set)
{
    std::vector<int64_t> out;
    for (int i = 0; i < set->count(); ++i) out.push_back(static_cast<int64_t>(set->at(i)));
    return out;
}

TEST_F(ChartsTest, AnnualChartsHoldTheYearsFiguresWithTheSmallCategoriesAsTheRest)
{
    const int64_t genkin = addSisan("現金", 0, 0);
    const int64_t ginkou = addSisan("銀行", 0, 0);
    // Ten expense categories: 食費 has two sub-items, the two smallest go into その他.
    const char* names[] = {"食費", "住居", "光熱", "通信", "交通", "医療", "教育", "娯楽", "衣服", "雑費"};
    std::vector<int64_t> ids;
    for (const char* n : names) ids.push_back(addCategory(1, n, {"外食"}));
    const int64_t kyuyo = addCategory(2, "給与");
    for (size_t i = 0; i < ids.size(); ++i) addEntry(genkin, "2024-02-10", 1, ids[i] + 1, 1000 * (10 - i));
    addEntry(genkin, "2024-03-10", 1, ids[0] + 2, 500);  // 食費/外食 adds to 食費
    addEntry(genkin, "2024-01-25", 2, kyuyo + 1, 30000);
    addEntry(genkin, "2024-01-26", 3, 0, 7777);  // a transfer's rows are no expense
    addEntry(ginkou, "2024-01-26", 4, 0, 7777);
    addEntry(genkin, "2023-05-01", 2, kyuyo + 1, 100);  // a year of income only
    addEntry(genkin, "2022-05-01", 3, 0, 5);            // a year of a transfer only
    DataModel& dm = open();
    AnnualChartsView view(dm);
    view.resize(1000, 700);
    EXPECT_FALSE(sentence(&view, "stackMonthly", "lblMonthlyEmpty").isEmpty());  // before any year

    ASSERT_TRUE(dm.annualInOutFromItemsTable("2024"));
    view.showYear("2024");
    const auto bars = seriesOf<QBarSeries>(&view, "chartMonthly");
    const auto lines = seriesOf<QLineSeries>(&view, "chartMonthly");
    ASSERT_EQ(bars.size(), 1);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(values(bars[0]->barSets()[0]), months(dm.annualTotalDataList[0]));
    EXPECT_EQ(values(bars[0]->barSets()[1]), months(dm.annualTotalDataList[1]));
    EXPECT_EQ(ys(lines[0]), months(dm.annualTotalDataList[2]));
    EXPECT_EQ(ys(lines[0])[1], -55000);  // February ends in the red
    // The value axis reaches below it to a labelled tick.
    const auto* axis = qobject_cast<QValueAxis*>(in<QChartView>(&view, "chartMonthly")->chart()->axes(Qt::Vertical).front());
    ASSERT_NE(axis, nullptr);
    EXPECT_LE(axis->min(), -55000);
    EXPECT_EQ(std::fmod(axis->min(), axis->tickInterval()), 0);

    const auto pies = seriesOf<QPieSeries>(&view, "chartExpense");
    ASSERT_EQ(pies.size(), 1);
    QStringList labels;
    std::vector<int64_t> amounts;
    for (QPieSlice* s : pies[0]->slices()) {
        labels << s->label();
        amounts.push_back(static_cast<int64_t>(s->value()));
    }
    EXPECT_EQ(amounts, (std::vector<int64_t>{10500, 9000, 8000, 7000, 6000, 5000, 4000, 3000, 3000}));
    EXPECT_EQ(labels.front(), QStringLiteral("食費　10,500円（18.9%）"));
    EXPECT_EQ(labels.back(), QStringLiteral("その他の費目　3,000円（5.4%）"));
    EXPECT_EQ(view.sliceToolTip(1), QStringLiteral("住居\n9,000円（16.2%）"));

    ASSERT_TRUE(dm.annualInOutFromItemsTable("2023"));
    view.showYear("2023");
    EXPECT_EQ(sentence(&view, "stackMonthly", "lblMonthlyEmpty"), QString());
    EXPECT_EQ(sentence(&view, "stackExpense", "lblExpenseEmpty"), QStringLiteral("2023年には支出の記録がありません。"));
    EXPECT_FALSE(in<QPushButton>(&view, "btnExpensePNG")->isEnabled());

    ASSERT_TRUE(dm.annualInOutFromItemsTable("2022"));
    view.showYear("2022");
    EXPECT_EQ(sentence(&view, "stackMonthly", "lblMonthlyEmpty"),
              QStringLiteral("2022年には収入と支出の記録がありません。"));
    EXPECT_FALSE(in<QPushButton>(&view, "btnMonthlyPNG")->isEnabled());
}

TEST_F(ChartsTest, HistoryDrawsTheStoresTotalAndTheCheckedAssetsAndSavesAPngOfItsSize)
{
    const int64_t genkin = addSisan("現金", 1000, 0);
    const int64_t ginkou = addSisan("銀行", 0, 0);
    addSisan("Bank", 0, 0);
    addCategory(1, "食費");
    DataModel& dm = open();
    SisanHistoryChartView view(dm);
    view.resize(900, 600);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    ASSERT_TRUE(view.reload());
    EXPECT_EQ(sentence(&view, "stackHistory", "lblHistoryEmpty"), QStringLiteral("記録がまだないため、資産推移はありません。"));
    EXPECT_FALSE(in<QPushButton>(&view, "btnHistoryPNG")->isEnabled());

    addEntry(ginkou, "2024-01-05", 1, 2, 3000);
    ASSERT_TRUE(dm.itemIdouSisanInsert("2024-02-10", 2024, 2, 10, genkin, 3, ginkou, 800, ""));
    ASSERT_TRUE(view.reload());
    auto lines = seriesOf<QLineSeries>(&view, "chartHistory");
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0]->name(), QStringLiteral("資産合計"));
    EXPECT_EQ(ys(lines[0]), (std::vector<int64_t>{-2000, -2000, -2000, -2000}));  // January to April

    auto* list = in<QListView>(&view, "lstSisan");
    QAbstractItemModelTester tester(list->model());
    ASSERT_EQ(list->model()->rowCount(), 3);
    // A Latin-only name gets as high a row as a Japanese one.
    EXPECT_EQ(list->visualRect(list->model()->index(2, 0)).height(), list->visualRect(list->model()->index(0, 0)).height());
    list->model()->setData(list->model()->index(1, 0), Qt::Checked, Qt::CheckStateRole);
    lines = seriesOf<QLineSeries>(&view, "chartHistory");
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[1]->name(), QStringLiteral("銀行"));
    EXPECT_EQ(ys(lines[1]), (std::vector<int64_t>{-3000, -2200, -2200, -2200}));

    // Saving: a cancel writes nothing, the extension is added, a failure is told.
    const std::string missing = dir + "/no-such-folder/history.png";
    savePaths = {QString(), QString::fromStdString(dir + "/history"), QString::fromStdString(missing)};
    for (int i = 0; i < 3; ++i) {
        in<QPushButton>(&view, "btnHistoryPNG")->click();
        EXPECT_EQ(std::filesystem::exists(dir + "/history.png"), i > 0);
    }
    const QImage saved(QString::fromStdString(dir + "/history.png"));
    EXPECT_EQ(saved.size(), in<QChartView>(&view, "chartHistory")->size());
    // No Documents folder at home: the first dialogs start at home.
    EXPECT_EQ(proposedPaths, (QStringList{QString::fromStdString(dir + "/資産推移_20240415.png"),
                                          QString::fromStdString(dir + "/資産推移_20240415.png"),
                                          QString::fromStdString(dir + "/資産推移_20240415.png")}));
    EXPECT_EQ(takeMessages(), (Messages{{"「" + missing + "」を保存できませんでした。", "保存先のフォルダがありません。"}}));
}

}  // namespace
