#include "charts/ChartSupport.h"

#include <QBuffer>
#include <QChart>
#include <QChartView>
#include <QLabel>
#include <QLocale>
#include <QPixmap>
#include <QPushButton>
#include <QStackedWidget>
#include <QValueAxis>
#include <algorithm>
#include <cmath>
#include <iterator>

#include "reports/AtomicFile.h"
#include "ui/AmountText.h"
#include "ui/SaveFileService.h"

namespace {

// The step of about `ticks` intervals over span: 1, 2 or 5 times a power of ten.
double roundStep(double span, int ticks)
{
    const double raw = span / ticks;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    for (double factor : {1.0, 2.0, 5.0})
        if (raw <= factor * power) return factor * power;
    return 10.0 * power;
}

const QColor kPalette[] = {{0x4e, 0x79, 0xa7}, {0xf2, 0x8e, 0x2b}, {0xe1, 0x57, 0x59}, {0x76, 0xb7, 0xb2},
                          {0x59, 0xa1, 0x4f}, {0xed, 0xc9, 0x48}, {0xb0, 0x7a, 0xa1}, {0xff, 0x9d, 0xa7},
                          {0x9c, 0x75, 0x5f}, {0xba, 0xb0, 0xac}};

}  // namespace

QColor seriesColor(size_t i)
{
    return kPalette[i % std::size(kPalette)];
}

void prepareChart(QChartView* view)
{
    view->setRenderHint(QPainter::Antialiasing);
    QChart* chart = view->chart();
    chart->setAnimationOptions(QChart::NoAnimation);
    chart->setLocalizeNumbers(true);
    chart->setLocale(QLocale(QLocale::Japanese, QLocale::Japan));
    chart->setMargins(QMargins(6, 6, 6, 6));
}

void clearChart(QChart* chart)
{
    chart->removeAllSeries();
    for (QAbstractAxis* axis : chart->axes()) {
        chart->removeAxis(axis);
        delete axis;
    }
    chart->setTitle({});
}

void showChart(const ChartPlace& place)
{
    place.stack->setCurrentWidget(place.view);
    place.save->setEnabled(true);
}

void showSentence(const ChartPlace& place, const QString& sentence)
{
    clearChart(place.view->chart());
    place.sentence->setText(sentence);
    place.stack->setCurrentWidget(place.sentence);
    place.save->setEnabled(false);
}

void attachAxes(QChart* chart, QAbstractAxis* horizontal, QAbstractAxis* vertical)
{
    chart->addAxis(horizontal, Qt::AlignBottom);
    chart->addAxis(vertical, Qt::AlignLeft);
    for (QAbstractSeries* s : chart->series()) {
        s->attachAxis(horizontal);
        s->attachAxis(vertical);
    }
}

QValueAxis* yenAxis(QChart* chart, int64_t low, int64_t high)
{
    auto* axis = new QValueAxis(chart);
    double lo = static_cast<double>(std::min<int64_t>(0, low));
    double hi = static_cast<double>(std::max<int64_t>(0, high));
    if (hi - lo < 1) hi = lo + 1000;  // a flat line of zeros still gets an axis
    const double step = roundStep(hi - lo, 6);
    // Both ends on a tick, the ticks on multiples of the step from zero: a
    // negative month always gets a labelled negative tick below it.
    lo = std::floor(lo / step) * step;
    hi = std::ceil(hi / step) * step;
    axis->setRange(lo, hi);
    axis->setTickType(QValueAxis::TicksDynamic);
    axis->setTickAnchor(0);
    axis->setTickInterval(step);
    axis->setLabelFormat(QStringLiteral("%.0f円"));
    return axis;
}

QString yenText(int64_t amount)
{
    return groupedKingaku(amount) + QStringLiteral("円");
}

QString shareText(double share)
{
    return QString::number(share * 100.0, 'f', 1) + QLatin1Char('%');
}

bool saveChartAsPng(QChartView* view, const QString& baseName)
{
    const QString path = savePathWithExtension({QStringLiteral("png")}, baseName + QStringLiteral(".png"));
    if (path.isEmpty()) return false;
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    std::string error;
    int errorNumber = 0;
    if (view->grab().save(&buffer, "PNG") &&
        writeFileAtomically(path.toStdString(), png.toStdString(), &error, &errorNumber))
        return true;
    tellSaveFailed(path, errorNumber, QString::fromStdString(error));
    return false;
}
