#pragma once

#include <QDialog>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "household/TeikiDue.h"

class DataModel;
class EditorUndo;
class ListTableModel;
class QAbstractButton;
class QKeyEvent;
struct Schedule;
namespace Ui {
class PrefsTeikiViewController;
}

// 設定 → 定期的な支出入: the list of rules, an editing box that a preparing
// button opens for a new rule or the selected one, and the occurrences of the
// next 30 days with the balance each asset is expected to have after them.
// Every add, edit and delete is one recorded step, which Ctrl+Z undoes here
// too. A rule whose asset or category is gone is shown as unusable; it
// never posts.
class PrefsTeikiViewController final : public QDialog {
    Q_OBJECT

public:
    // The prepared action of the box.
    enum SyoriNo : int64_t { kNone = 0, kTuika = 1, kHensyuu = 2 };

    explicit PrefsTeikiViewController(DataModel& dm, QWidget* parent = nullptr);
    ~PrefsTeikiViewController() override;

    DataModel& DM;

    // Shows the box for a new rule: the shown fields, a monthly schedule from today.
    void btnTeikiTuika();
    // Shows the box with the selected rule, bound to it whatever is selected later.
    void btnTeikiHensyuu();
    // Asks, then deletes the selected rule (its entries stay).
    void btnTeikiSakujyo();
    // Checks the box and saves the rule; a refused input keeps the box as it is.
    void btnTeikiOK();
    void btnTeikiCancel();
    void btnTeikiClose();

    // True once a rule was added, changed or deleted.
    bool changed() const { return teikiChangedSw; }

    // Escape closes the box when it is open, else the window.
    void reject() override;

protected:
    // Enter on a focused button presses that button.
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::unique_ptr<Ui::PrefsTeikiViewController> ui;
    ListTableModel* teikiModel = nullptr;
    ListTableModel* yoteiModel = nullptr;
    std::vector<TeikiOutlook> yoteiList;  // the outlook the lower table shows
    std::vector<int64_t> sisanIds;        // behind the items of the asset list
    std::vector<int64_t> himokuIds;       // behind the items of the category or partner list
    int64_t syoriNo = kNone;
    std::optional<int64_t> preparedTeikiId;  // the rule an edit saves over
    bool teikiChangedSw = false;
    EditorUndo* undoKeys = nullptr;

    void viewDidLoad();
    void wireActions();
    void layOutColumns();
    void fillFixedLists();
    // The rules and the outlook read afresh.
    void reloadTables();
    void reloadYotei();
    // After Ctrl+Z or a redo here: the rules read afresh.
    void showUndone();

    void prepareBox(SyoriNo action, const QString& title);
    void hideBox();
    void fillBox(const Teiki& teiki);
    void fillSisanList(int64_t chosen);
    // Fills the category or partner list for the kind, choosing `chosen` when it is listed.
    void fillHimokuList(int64_t kind, int64_t chosen);
    int64_t shownKind() const;
    void kindChosen(QAbstractButton* button);
    // Shows the day fields of the chosen unit and the chosen end.
    void showScheduleFields();
    // The schedule as the fields say.
    Schedule shownSchedule() const;
    // Says the schedule in plain Japanese with its next day, or why it cannot be.
    void describeSchedule();
    // The rule the box describes, or none after saying what is wrong.
    std::optional<Teiki> checkedBox();
    const Teiki* selectedTeiki() const;
    const Teiki* preparedTeiki() const;
};
