#include "bench/ChartsBench.h"

#include <QApplication>
#include <string>

#include "bench/Compare.h"
#include "charts/AnnualChartsView.h"
#include "store/DataModel.h"

void benchCharts(DataModel& dm, int nen, int runs, int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    AnnualChartsView view(dm);
    view.resize(1000, 700);
    const std::string year = std::to_string(nen);
    compare(
        "annual_chart_year", runs,
        [&](int) {
            dm.annualInOutFromItemsTable(year);
            view.showYear(year);
        },
        [&](int) { dm.annualInOutFromItemsTable(year); });
}
