#pragma once

#include <QDialog>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class DataModel;
class ListTableModel;
class QLineEdit;
namespace Ui {
class YosanViewController;
}

// 設定 → 予算: the budgets. The table lists the month's total, then every
// expense category with its sub-items, with the every-month amount and
// the months that differ. The box beside it edits the selected row: the
// every-month amount and twelve month amounts (empty: as every month);
// Enter saves them as one step, Escape puts the fields back. Amounts are
// refused as the asset editor refuses them: the field turns red and a
// message says why.
class YosanViewController final : public QDialog {
    Q_OBJECT

public:
    explicit YosanViewController(DataModel& dm, QWidget* parent = nullptr);
    ~YosanViewController() override;

    // Saves the box's amounts for the selected row; false after a refusal.
    bool btnYosanOK();
    // Fills the box again from the book.
    void btnYosanCancel();
    // Removes every amount of the selected row (one step).
    void btnYosanClear();
    bool changed() const { return changedSw; }

    // One row of the table: the total, a category or a sub-item.
    struct Row {
        int64_t himokuNo;
        QString name;
        int depth;  // 0 the total and categories, 1 sub-items
    };

private:
    DataModel& DM;
    std::unique_ptr<Ui::YosanViewController> ui;
    ListTableModel* model = nullptr;
    std::vector<Row> rows;
    std::array<QLineEdit*, 12> monthFields{};
    bool changedSw = false;

    void buildRows();
    void layOutColumns();
    const Row* selectedRow() const;
    void selectionChanged();
    QString everyMonthText(int64_t himokuNo) const;
    QString monthsText(int64_t himokuNo) const;
    // The amount of a field (empty: none), or false after marking it and
    // saying that it is invalid.
    bool readField(QLineEdit* field, std::optional<int64_t>& amount);
};
