#pragma once

#include <QColor>
#include <QString>
#include <cstdint>

class QAbstractAxis;
class QChart;
class QChartView;
class QLabel;
class QPushButton;
class QStackedWidget;
class QValueAxis;

// Where a chart is shown: its view or, in its stead, a sentence saying why
// there is nothing to draw; the save button works only while the view shows.
struct ChartPlace {
    QStackedWidget* stack;
    QChartView* view;
    QLabel* sentence;
    QPushButton* save;
};
void showChart(const ChartPlace& place);
// Empties the chart and shows the sentence instead.
void showSentence(const ChartPlace& place, const QString& sentence);

// A chart drawn the Zenvora way: antialiased, no animation (a redraw must be
// finished when the call returns), Japanese number formatting.
void prepareChart(QChartView* view);

// Removes (and deletes) every series and axis of the chart.
void clearChart(QChart* chart);

// The i-th of ten colours far enough apart to tell lines, slices and their
// legend markers apart (repeating after ten).
QColor seriesColor(size_t i);

// Adds both axes to the chart and attaches every series to them.
void attachAxes(QChart* chart, QAbstractAxis* horizontal, QAbstractAxis* vertical);

// A vertical axis of yen amounts with digit grouping, spanning at least
// 0 and both given values, with round tick steps; both ends lie on a
// labelled tick, so a negative value has a negative label below it.
QValueAxis* yenAxis(QChart* chart, int64_t low, int64_t high);

// An amount with digit grouping and the yen sign's word: "12,345円".
QString yenText(int64_t amount);

// A share (0 to 1) as a percentage with one decimal: "23.4%".
QString shareText(double share);

// Asks where to save the view's picture, proposing baseName + ".png" (a
// name without an extension gets ".png"), and writes it there atomically at
// the view's size. A cancel writes nothing; a failed write is told in a
// message box. True when a file was written.
bool saveChartAsPng(QChartView* view, const QString& baseName);
