#include "charts/AnnualChartsView.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QCursor>
#include <QLegend>
#include <QLineSeries>
#include <QPieSeries>
#include <QToolTip>
#include <QValueAxis>
#include <algorithm>

#include "charts/ChartSupport.h"
#include "store/DataModel.h"
#include "ui_AnnualChartsView.h"

namespace {

const QColor kIncomeColor(0x3b, 0x7d, 0xd8);
const QColor kExpenseColor(0xe0, 0x6c, 0x4c);
const QColor kBalanceColor(0x30, 0x30, 0x30);
const QColor kRestColor(0xba, 0xb0, 0xac);  // grey: the rest slice

QBarSet* barSet(const QString& name, const std::array<int64_t, 12>& months, const QColor& color)
{
    auto* set = new QBarSet(name);
    for (int64_t v : months) set->append(static_cast<qreal>(v));
    set->setColor(color);
    set->setBorderColor(color);
    return set;
}

// "食費", separator, "12,345円（23.4%）": a slice's legend line and tooltip.
QString sliceText(const ExpenseSlice& s, const QString& separator)
{
    return QString::fromStdString(s.name) + separator + yenText(s.amount) + QStringLiteral("（") + shareText(s.share) +
           QStringLiteral("）");
}

QStringList monthNames()
{
    QStringList names;
    for (int m = 1; m <= 12; ++m) names << QString::number(m) + QStringLiteral("月");
    return names;
}

}  // namespace

AnnualChartsView::AnnualChartsView(DataModel& dm, QWidget* parent)
    : QWidget(parent), DM(dm), ui(std::make_unique<Ui::AnnualChartsView>())
{
    ui->setupUi(this);
    prepareChart(ui->chartMonthly);
    prepareChart(ui->chartExpense);
    QLegend* legend = ui->chartExpense->chart()->legend();
    legend->setAlignment(Qt::AlignRight);
    QFont small = legend->font();  // nine lines must fit beside the donut
    small.setPointSizeF(small.pointSizeF() * 0.9);
    legend->setFont(small);
    connect(ui->btnMonthlyPNG, &QPushButton::clicked, this, &AnnualChartsView::btnMonthlyPNG);
    connect(ui->btnExpensePNG, &QPushButton::clicked, this, &AnnualChartsView::btnExpensePNG);
    const QString pick = QStringLiteral("年を選ぶと、その年のグラフを表示します。");
    showSentence(monthlyPlace(), pick);
    showSentence(expensePlace(), pick);
}

AnnualChartsView::~AnnualChartsView() = default;

void AnnualChartsView::showYear(const std::string& nen, const std::string& monthsNote)
{
    const QString year = QString::fromStdString(nen);
    shownYear = year;
    if (annualHasNoEntries(DM)) {
        showSentence(monthlyPlace(), year + QStringLiteral("年には収入と支出の記録がありません。"));
    } else {
        drawMonthly(year, QString::fromStdString(monthsNote));
    }
    drawExpense(year);
}

void AnnualChartsView::drawMonthly(const QString& year, const QString& monthsNote)
{
    const MonthlyInOut m = monthlyInOut(DM);
    QChart* chart = ui->chartMonthly->chart();
    clearChart(chart);
    chart->setTitle(year + QStringLiteral("年 月別収支") +
                    (monthsNote.isEmpty() ? QString() : QStringLiteral("（") + monthsNote + QStringLiteral("）")));

    auto* bars = new QBarSeries;
    bars->append(barSet(QStringLiteral("収入"), m.income, kIncomeColor));
    bars->append(barSet(QStringLiteral("支出"), m.expense, kExpenseColor));
    auto* balance = new QLineSeries;
    balance->setName(QStringLiteral("収支（収入−支出）"));
    balance->setPen(QPen(kBalanceColor, 2));
    balance->setPointsVisible(true);
    for (size_t i = 0; i < m.balance.size(); ++i) balance->append(static_cast<qreal>(i), static_cast<qreal>(m.balance[i]));
    chart->addSeries(bars);
    chart->addSeries(balance);

    auto* months = new QBarCategoryAxis(chart);
    months->append(monthNames());
    int64_t low = 0, high = 0;
    for (size_t i = 0; i < m.balance.size(); ++i) {
        low = std::min(low, m.balance[i]);
        high = std::max({high, m.income[i], m.expense[i], m.balance[i]});
    }
    attachAxes(chart, months, yenAxis(chart, low, high));
    chart->legend()->setAlignment(Qt::AlignBottom);
    connect(bars, &QBarSeries::hovered, this, [this](bool state, int index, QBarSet* set) {
        if (!state) return QToolTip::hideText();
        QToolTip::showText(QCursor::pos(), QStringLiteral("%1月 %2\n%3")
                                               .arg(index + 1)
                                               .arg(set->label(), yenText(static_cast<int64_t>(set->at(index)))),
                           ui->chartMonthly);
    });
    showChart(monthlyPlace());
}

void AnnualChartsView::drawExpense(const QString& year)
{
    slices = expenseByCategory(DM);
    if (slices.empty()) {
        showSentence(expensePlace(), year + QStringLiteral("年には支出の記録がありません。"));
        return;
    }
    QChart* chart = ui->chartExpense->chart();
    clearChart(chart);
    int64_t total = 0;
    for (const auto& s : slices) total += s.amount;
    chart->setTitle(year + QStringLiteral("年 支出の内訳（合計 ") + yenText(total) + QStringLiteral("）"));

    auto* donut = new QPieSeries;
    donut->setHoleSize(0.45);
    donut->setPieSize(0.9);
    for (size_t i = 0; i < slices.size(); ++i) {
        const ExpenseSlice& s = slices[i];
        QPieSlice* slice = donut->append(sliceText(s, QStringLiteral("　")), static_cast<qreal>(s.amount));
        slice->setLabelVisible(false);
        const bool rest = i == kNamedSlices;
        slice->setColor(rest ? kRestColor : seriesColor(i));
        slice->setBorderColor(Qt::white);
    }
    chart->addSeries(donut);
    connect(donut, &QPieSeries::hovered, this, &AnnualChartsView::sliceHovered);
    showChart(expensePlace());
}

QString AnnualChartsView::sliceToolTip(int position) const
{
    if (position < 0 || static_cast<size_t>(position) >= slices.size()) return {};
    return sliceText(slices[static_cast<size_t>(position)], QStringLiteral("\n"));
}

void AnnualChartsView::sliceHovered(QPieSlice* slice, bool state)
{
    slice->setExploded(state);
    if (!state) return QToolTip::hideText();
    QToolTip::showText(QCursor::pos(), sliceToolTip(static_cast<int>(slice->series()->slices().indexOf(slice))),
                       ui->chartExpense);
}

ChartPlace AnnualChartsView::monthlyPlace() const
{
    return {ui->stackMonthly, ui->chartMonthly, ui->lblMonthlyEmpty, ui->btnMonthlyPNG};
}

ChartPlace AnnualChartsView::expensePlace() const
{
    return {ui->stackExpense, ui->chartExpense, ui->lblExpenseEmpty, ui->btnExpensePNG};
}

void AnnualChartsView::btnMonthlyPNG()
{
    saveChartAsPng(ui->chartMonthly, QStringLiteral("月別収支_") + shownYear);
}

void AnnualChartsView::btnExpensePNG()
{
    saveChartAsPng(ui->chartExpense, QStringLiteral("支出の内訳_") + shownYear);
}
