#pragma once

#include <QWidget>
#include <cstdint>
#include <memory>

#include "charts/ChartSupport.h"

class DataModel;
class QLineSeries;
class SisanCheckListModel;
namespace Ui {
class SisanHistoryChartView;
}

// The asset report's chart 資産推移: the total of all asset balances at the
// end of each month, from the month of the first entry to this month (from
// ui/Clock.h), as a line; the assets checked in the list beside it add a
// line each. It reads the store's month-end history when it is first shown
// or on reload(); without entries it shows a sentence instead.
class SisanHistoryChartView final : public QWidget {
    Q_OBJECT

public:
    explicit SisanHistoryChartView(DataModel& dm, QWidget* parent = nullptr);
    ~SisanHistoryChartView() override;

    // Reads the history up to the current month and draws it; false when the
    // store could not read it (it has shown its message).
    bool reload();
    // Saves the chart as a PNG picture through the save dialog.
    void btnHistoryPNG();

protected:
    void showEvent(QShowEvent* event) override;

private:
    DataModel& DM;
    std::unique_ptr<Ui::SisanHistoryChartView> ui;
    SisanCheckListModel* sisanModel = nullptr;
    bool loaded = false;

    void draw();
    ChartPlace place() const;
    QLineSeries* line(const QString& name, const std::vector<int64_t>& zankin);
};
