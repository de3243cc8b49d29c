#pragma once

#include <QDialog>
#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>

class AnnualChartsView;
class DataModel;
class ListTableModel;
class QTableView;
namespace Ui {
class AnnualReportViewController;
}

// The annual report: a year picked among those with entries, its income,
// expense and summary tables (columns "00" label, "01" to "12" months, "13"
// the year, told apart by the tables' tag: 0 income, 1 expense, 2 summary),
// and the exports as CSV and PDF. The year and its months are the
// household's own when the book's months start on a day other than the 1st;
// the window says which. It shows the store's annual lists, which only this
// window changes; the main window runs it modally.
class AnnualReportViewController final : public QDialog {
    Q_OBJECT

public:
    explicit AnnualReportViewController(DataModel& dm, QWidget* parent = nullptr);
    ~AnnualReportViewController() override;

    DataModel& DM;
    bool firstApper = false;
    const std::map<std::string, int> dicColNo;  // "00" -> 0 ... "13" -> 13

    // First time only: reads the years; when they cannot be read the window
    // closes itself (the store has said why).
    void viewWillAppear();
    int numberOfItems() const;
    // Rows of the table with this tag, and the text of one of its cells
    // (column identifier "00" to "13"; "" for any other).
    int numberOfRows(int tag) const;
    QString cellText(int tag, int row, const std::string& identifier) const;
    // Computes the picked year and reloads the three tables; on a failure
    // reloads nothing and turns the exports off.
    void comboBoxSelectionDidChange();
    void btnPDF();
    void btnCSV();

protected:
    void showEvent(QShowEvent* event) override;

private:
    std::unique_ptr<Ui::AnnualReportViewController> ui;
    ListTableModel* yearsModel = nullptr;
    std::array<ListTableModel*, 3> tableModels{};
    AnnualChartsView* charts = nullptr;  // the グラフ tab, following the picked year
    bool yearComputed = false;  // the tables show the picked year's figures

    void viewDidLoad();
    ListTableModel* makeTableModel(int tag);
    std::array<QTableView*, 3> tables() const;
    void layOutTables();
    // Widens the label columns to the longest label of the three tables, up
    // to a cap beyond which names are elided, and the figure columns to the
    // longest figure.
    void fitColumns();
    // The year whose figures the tables show, when one is picked and computed.
    std::optional<std::string> exportableYear() const;
    // Says which months the columns are: the book's month setting and, for
    // household months, the days of the year shown.
    void showMonthSetting();
};
