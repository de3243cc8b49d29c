#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "store/Yosan.h"

class DataModel;
class ListTableModel;
class YosanChartView;
namespace Ui {
class YosanReportViewController;
}

// レポート → 予算と実績: a household month (the current one when it opens)
// or a whole household year picked from the years with entries and this
// year. Per expense category (and sub-item with a budget of its own) the
// budget, the spending, the difference and the share used, with a bar per
// row that turns red when over; the total last. The グラフ tab shows budget
// against spending per month of the year. Saved as CSV and PDF.
class YosanReportViewController final : public QDialog {
    Q_OBJECT

public:
    explicit YosanReportViewController(DataModel& dm, QWidget* parent = nullptr);
    ~YosanReportViewController() override;

    // Shows household month `month` of household year `year` (0: the whole
    // year); false when the store could not read it (the tables keep what
    // they showed).
    bool showPeriod(int year, int month);
    void btnYosanThisMonth();
    void btnCSV();
    void btnPDF();

    const std::vector<YosanRow>& shownRows() const { return rows; }

private:
    DataModel& DM;
    std::unique_ptr<Ui::YosanReportViewController> ui;
    ListTableModel* model = nullptr;
    YosanChartView* chart = nullptr;
    std::vector<YosanRow> rows;
    std::vector<int> years;  // the year list's choices
    int shownYear = 0;
    int shownMonth = 0;
    int chartYear = 0;  // the year the chart shows; 0 before it is drawn

    void fillYears();
    void layOutColumns();
    // Picks the period in the two lists without reading it twice.
    void pick(int year, int month);
    void periodPicked();
    void showChartIfSeen();
    QString periodText() const;
    QString proposedName() const;
};
