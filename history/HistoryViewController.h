#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "store/DataModel.h"

class ListTableModel;
namespace Ui {
class HistoryViewController;
}

// The history window (履歴): the book's recorded operations, newest first,
// with the date and time, the label, the assets and the number of rows;
// below, the rows the selected operation changed, before and after. 削除のみ
// keeps only the operations that deleted rows, the trash of the book.
// この操作を取り消す reverts the selected operation as a new step, or says
// which later step blocks it and changes nothing.
class HistoryViewController final : public QDialog {
    Q_OBJECT

public:
    explicit HistoryViewController(DataModel& dm, QWidget* parent = nullptr);
    ~HistoryViewController() override;

    DataModel& DM;

    // Reads the history again (only deletions while 削除のみ is on) and
    // selects the newest operation.
    void reloadHistory();
    // Shows the rows of the operation at this row of the list.
    void historySelected(int row);
    // Reverts the selected operation; on success the list shows the revert.
    void btnTorikesu();

    // Whether a revert changed the book, and what it changed, for the main window.
    bool changed() const { return changedBook; }
    const StepFocus& focus() const { return lastFocus; }

private:
    std::unique_ptr<Ui::HistoryViewController> ui;
    ListTableModel* historyModel = nullptr;
    ListTableModel* rowsModel = nullptr;
    std::vector<HistoryRowView> rows;  // of the selected operation
    bool changedBook = false;
    StepFocus lastFocus;

    void layOutColumns();
    void wireActions();
    int selectedHistoryRow() const;
};
