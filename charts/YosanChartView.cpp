#include "charts/YosanChartView.h"

#include <QBarCategoryAxis>
#include <QStackedBarSeries>
#include <QValueAxis>
#include <QBarSet>
#include <QLegend>
#include <QLineSeries>
#include <algorithm>

#include "store/DataModel.h"
#include "ui_YosanChartView.h"

namespace {

const QColor kWithinColor(0x4e, 0x79, 0xa7);
const QColor kOverColor(0xe1, 0x57, 0x59);
const QColor kYosanColor(0x30, 0x30, 0x30);

}  // namespace

YosanChartView::YosanChartView(DataModel& dm, QWidget* parent)
    : QWidget(parent), DM(dm), ui(std::make_unique<Ui::YosanChartView>())
{
    ui->setupUi(this);
    prepareChart(ui->chartYosan);
    connect(ui->btnYosanPNG, &QPushButton::clicked, this, &YosanChartView::btnYosanPNG);
}

YosanChartView::~YosanChartView() = default;

ChartPlace YosanChartView::place() const
{
    return {ui->stackYosan, ui->chartYosan, ui->lblYosanEmpty, ui->btnYosanPNG};
}

bool YosanChartView::showYear(int year)
{
    if (!DM.yosanMonthlyOf(year, yosan, jisseki)) return false;
    shownYear = year;
    draw();
    return true;
}

void YosanChartView::draw()
{
    const QString year = QString::number(shownYear) + QStringLiteral("年");
    const bool anyYosan = std::any_of(yosan.begin(), yosan.end(), [](const auto& y) { return y.has_value(); });
    const bool anyJisseki = std::any_of(jisseki.begin(), jisseki.end(), [](int64_t j) { return j != 0; });
    if (!anyYosan && !anyJisseki) {
        showSentence(place(), year + QStringLiteral("には予算も支出もありません。"));
        return;
    }
    QChart* chart = ui->chartYosan->chart();
    clearChart(chart);
    chart->setTitle(year + QStringLiteral(" 予算と実績（月ごとの支出の合計）"));

    // Spending within the budget and over it are two stacked sets, one of
    // them zero in every month: one bar a month, coloured by its side.
    auto* within = new QBarSet(QStringLiteral("支出"));
    auto* over = new QBarSet(QStringLiteral("予算超過の月の支出"));
    within->setColor(kWithinColor);
    over->setColor(kOverColor);
    auto* budget = new QLineSeries;
    budget->setName(QStringLiteral("予算"));
    budget->setPen(QPen(kYosanColor, 2, Qt::DashLine));
    budget->setPointsVisible(true);
    int64_t high = 0;
    for (size_t m = 0; m < jisseki.size(); ++m) {
        const bool isOver = yosan[m] && jisseki[m] > *yosan[m];
        within->append(isOver ? 0 : static_cast<qreal>(jisseki[m]));
        over->append(isOver ? static_cast<qreal>(jisseki[m]) : 0);
        if (yosan[m]) budget->append(static_cast<qreal>(m), static_cast<qreal>(*yosan[m]));
        high = std::max({high, jisseki[m], yosan[m].value_or(0)});
    }
    auto* bars = new QStackedBarSeries;
    bars->setBarWidth(0.6);
    bars->append(within);
    bars->append(over);
    chart->addSeries(bars);
    if (anyYosan) chart->addSeries(budget);
    else delete budget;

    auto* months = new QBarCategoryAxis(chart);
    for (int m = 1; m <= 12; ++m) months->append(QString::number(m) + QStringLiteral("月"));
    attachAxes(chart, months, yenAxis(chart, 0, high));
    chart->legend()->setAlignment(Qt::AlignBottom);
    showChart(place());
}

void YosanChartView::btnYosanPNG()
{
    saveChartAsPng(ui->chartYosan, QStringLiteral("予算と実績_") + QString::number(shownYear));
}
