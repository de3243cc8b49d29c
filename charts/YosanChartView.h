#pragma once

#include <QWidget>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "charts/ChartSupport.h"

class DataModel;
namespace Ui {
class YosanChartView;
}

// The budget report's chart: the spending of each household month of a
// year as bars, red where it went over the month's total budget, and the
// budget as a line over them. Without a budget or spending in the year a
// sentence stands in its place.
class YosanChartView final : public QWidget {
    Q_OBJECT

public:
    explicit YosanChartView(DataModel& dm, QWidget* parent = nullptr);
    ~YosanChartView() override;

    // Reads and draws household year `year`; false when the store could not
    // read it (it has shown its message).
    bool showYear(int year);
    void btnYosanPNG();

    // What the chart shows, by month (index = month - 1).
    const std::array<std::optional<int64_t>, 12>& shownYosan() const { return yosan; }
    const std::array<int64_t, 12>& shownJisseki() const { return jisseki; }

private:
    DataModel& DM;
    std::unique_ptr<Ui::YosanChartView> ui;
    std::array<std::optional<int64_t>, 12> yosan{};
    std::array<int64_t, 12> jisseki{};
    int shownYear = 0;

    void draw();
    ChartPlace place() const;
};
