#include "charts/SisanHistoryChartView.h"

#include <QApplication>
#include <QCategoryAxis>
#include <QCursor>
#include <QLineSeries>
#include <QShowEvent>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <QValueAxis>
#include <algorithm>
#include <cmath>

#include "charts/ChartSupport.h"
#include "charts/SisanCheckListModel.h"
#include "store/DataModel.h"
#include "ui/Clock.h"
#include "ui_SisanHistoryChartView.h"

namespace {

constexpr int kMaxMonthLabels = 8;
constexpr qsizetype kBottomLegendLines = 4;
const QColor kTotalColor(0x22, 0x22, 0x22);  // near black, apart from the asset lines

// Months between two labels of the time axis: a calendar-friendly step that
// keeps the labels few enough not to overlap.
int64_t labelStep(size_t months)
{
    for (int64_t step : {1, 2, 3, 6, 12, 24, 60, 120})
        if (static_cast<int64_t>(months) <= step * kMaxMonthLabels) return step;
    return 240;
}

QString monthLabel(int64_t nen, int64_t tuki, int64_t step)
{
    return step >= 12 ? QStringLiteral("%1年").arg(nen) : QStringLiteral("%1年%2月").arg(nen).arg(tuki);
}

// The time axis over columns 0 .. months-1, labelled at every step-th month
// (Januaries for steps of a year or more).
QCategoryAxis* monthAxis(QChart* chart, const MonthEndHistory& h)
{
    auto* axis = new QCategoryAxis(chart);
    const int64_t step = labelStep(h.months());
    for (size_t c = 0; c < h.months(); ++c) {
        const int64_t month = h.firstMonth + static_cast<int64_t>(c);
        if (month % step == 0) axis->append(monthLabel(h.nenOf(c), h.tukiOf(c), step), static_cast<qreal>(c));
    }
    axis->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
    const qreal last = static_cast<qreal>(h.months() - 1);
    axis->setRange(-0.5, std::max<qreal>(last + 0.5, 0.5));
    axis->setStartValue(-0.5);
    return axis;
}

// Rows as high as a row of Japanese text whatever the name: a Latin-only
// name would get a lower row, and its check box would touch the next one.
class EvenRowsDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        QStyleOptionViewItem sample = option;
        initStyleOption(&sample, index);
        sample.text = QStringLiteral("資産");
        const QWidget* widget = option.widget;
        const QStyle* style = widget ? widget->style() : QApplication::style();
        size.setHeight(std::max(size.height(), style->sizeFromContents(QStyle::CT_ItemViewItem, &sample, {}, widget).height()));
        return size;
    }
};

}  // namespace

SisanHistoryChartView::SisanHistoryChartView(DataModel& dm, QWidget* parent)
    : QWidget(parent), DM(dm), ui(std::make_unique<Ui::SisanHistoryChartView>())
{
    ui->setupUi(this);
    prepareChart(ui->chartHistory);
    sisanModel = new SisanCheckListModel(dm, this);
    ui->lstSisan->setModel(sisanModel);
    ui->lstSisan->setItemDelegate(new EvenRowsDelegate(ui->lstSisan));
    connect(sisanModel, &QAbstractItemModel::dataChanged, this, [this] { draw(); });
    connect(ui->btnHistoryPNG, &QPushButton::clicked, this, &SisanHistoryChartView::btnHistoryPNG);
    showSentence(place(), {});
}

SisanHistoryChartView::~SisanHistoryChartView() = default;

void SisanHistoryChartView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!loaded) reload();
}

bool SisanHistoryChartView::reload()
{
    loaded = true;
    sisanModel->reload();
    const QDate today = currentDateTime().date();
    QApplication::setOverrideCursor(Qt::WaitCursor);  // a large book takes a moment
    const bool read = DM.sisanHistoryFromItemsTable(today.year(), today.month());
    QApplication::restoreOverrideCursor();
    if (!read) {
        showSentence(place(), QStringLiteral("資産推移を読み込めませんでした。"));
        return false;
    }
    draw();
    return true;
}

QLineSeries* SisanHistoryChartView::line(const QString& name, const std::vector<int64_t>& zankin)
{
    auto* series = new QLineSeries;
    series->setName(name);
    QList<QPointF> points;
    points.reserve(static_cast<qsizetype>(zankin.size()));
    for (size_t c = 0; c < zankin.size(); ++c) points.append({static_cast<qreal>(c), static_cast<qreal>(zankin[c])});
    series->replace(points);
    series->setPointsVisible(zankin.size() <= 24);
    const MonthEndHistory& h = DM.sisanHistory;
    connect(series, &QLineSeries::hovered, this, [this, series, &h](const QPointF& point, bool state) {
        const qreal x = std::round(point.x());
        if (!state || x < 0 || x >= static_cast<qreal>(h.months())) return QToolTip::hideText();
        const auto c = static_cast<size_t>(x);
        const auto& p = series->at(static_cast<qsizetype>(c));
        QToolTip::showText(QCursor::pos(),
                           QStringLiteral("%1年%2月末 %3\n%4")
                               .arg(h.nenOf(c))
                               .arg(h.tukiOf(c))
                               .arg(series->name(), yenText(static_cast<int64_t>(p.y()))),
                           ui->chartHistory);
    });
    return series;
}

void SisanHistoryChartView::draw()
{
    const MonthEndHistory& h = DM.sisanHistory;
    if (h.empty()) {
        showSentence(place(), QStringLiteral("記録がまだないため、資産推移はありません。"));
        return;
    }
    QChart* chart = ui->chartHistory->chart();
    clearChart(chart);
    chart->setTitle(QStringLiteral("資産推移（%1年%2月〜%3年%4月の月末残高）")
                        .arg(h.nenOf(0))
                        .arg(h.tukiOf(0))
                        .arg(h.nenOf(h.months() - 1))
                        .arg(h.tukiOf(h.months() - 1)));
    QLineSeries* total = line(QStringLiteral("資産合計"), h.total);
    QPen pen(kTotalColor, 3);
    total->setPen(pen);
    chart->addSeries(total);
    auto [low, high] = std::minmax_element(h.total.begin(), h.total.end());
    int64_t lo = *low, hi = *high;
    for (size_t r = 0; r < h.sisanIds.size(); ++r) {
        if (!sisanModel->isChecked(h.sisanIds[r])) continue;
        const auto& zankin = h.zankin[r];
        QLineSeries* own = line(QString::fromStdString(DM.getSisanNamaeFromNo(h.sisanIds[r])), zankin);
        own->setPen(QPen(seriesColor(r), 1.5));  // by list position: an asset keeps its colour
        chart->addSeries(own);
        const auto [l, u] = std::minmax_element(zankin.begin(), zankin.end());
        lo = std::min(lo, *l);
        hi = std::max(hi, *u);
    }
    attachAxes(chart, monthAxis(chart, h), yenAxis(chart, lo, hi));
    // Beside the chart, a long legend keeps every name whole.
    chart->legend()->setAlignment(chart->series().size() > kBottomLegendLines ? Qt::AlignRight : Qt::AlignBottom);
    showChart(place());
}

ChartPlace SisanHistoryChartView::place() const
{
    return {ui->stackHistory, ui->chartHistory, ui->lblHistoryEmpty, ui->btnHistoryPNG};
}

void SisanHistoryChartView::btnHistoryPNG()
{
    saveChartAsPng(ui->chartHistory, QStringLiteral("資産推移_") + fileDateStamp(currentDateTime().date()));
}
