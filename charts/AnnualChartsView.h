#pragma once

#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "charts/AnnualSeries.h"
#include "charts/ChartSupport.h"

class DataModel;
class QChart;
class QPieSlice;
namespace Ui {
class AnnualChartsView;
}

// The annual report's charts: 月別収支 (income and expense bars per month with
// the balance as a line) and 支出の内訳 (a donut of the expense per category).
// It draws the year the store's annual lists hold; the report computes the
// year first and then calls showYear. A year without figures shows a sentence
// in place of the chart.
class AnnualChartsView final : public QWidget {
    Q_OBJECT

public:
    explicit AnnualChartsView(DataModel& dm, QWidget* parent = nullptr);
    ~AnnualChartsView() override;

    // Redraws both charts from the annual lists; nen (decimal text, as in
    // yearsList) names the year in the titles and sentences, and a months
    // note (household months) follows the monthly chart's title.
    void showYear(const std::string& nen, const std::string& monthsNote = {});

    // Save each chart as a PNG picture through the save dialog.
    void btnMonthlyPNG();
    void btnExpensePNG();

    // What hovering the slice at this position shows: name, amount, share.
    QString sliceToolTip(int position) const;

private:
    DataModel& DM;
    std::unique_ptr<Ui::AnnualChartsView> ui;
    std::vector<ExpenseSlice> slices;  // the donut's, in slice order
    QString shownYear;                 // the year the charts show, for the saved files' names

    void drawMonthly(const QString& year, const QString& monthsNote);
    void drawExpense(const QString& year);
    ChartPlace monthlyPlace() const;
    ChartPlace expensePlace() const;
    void sliceHovered(QPieSlice* slice, bool state);
};
