#pragma once

#include <QDialog>
#include <memory>

class DataModel;
class ListTableModel;
namespace Ui {
class SisanReportViewController;
}

// The asset report: every asset of the store's sisanList with its balance,
// the grand total, and the exports as CSV and PDF. It shows the lists as
// they stand and never changes the store; the main window runs it modally,
// so the list cannot change while it is open.
class SisanReportViewController final : public QDialog {
    Q_OBJECT

public:
    explicit SisanReportViewController(DataModel& dm, QWidget* parent = nullptr);
    ~SisanReportViewController() override;

    DataModel& DM;

    void btnSisanPDF();
    void btnSisanCSV();

private:
    std::unique_ptr<Ui::SisanReportViewController> ui;
    ListTableModel* model = nullptr;

    void viewDidLoad();
    void layOutColumns();
};
