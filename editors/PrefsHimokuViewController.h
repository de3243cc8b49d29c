#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ui/ModalEditor.h"

class DataModel;
class EditorUndo;
class ListTableModel;
class QString;
struct Himoku;
struct StepFocus;
namespace Ui {
class PrefsHimokuViewController;
}

// The modal editor of the category tree: a table of every category (marked
// "＊") followed by its sub-items, and an editing box that one of four
// preparing buttons fills for an operation; the box's execute button
// carries it out through the store. The identity of the row concerned
// travels in three read-only number fields from the preparing button to the
// execute button. When it closes it tells its delegate whether anything
// changed.
class PrefsHimokuViewController final : public ModalEditor {
    Q_OBJECT

public:
    // The prepared operation; the numbers are the ones the box works with.
    enum SyoriNo : int64_t {
        kNone = 0,
        kHimokuTuika = 1,      // add a category
        kUtiwakeTuika = 2,     // add a sub-item to the selected category
        kHimokuHensyuu = 3,    // rename the selected category
        kUtiwakeHensyuu = 4,   // rename the selected sub-item
        kHimokuSakujyo = 5,    // delete the selected category, its sub-items and their entries
        kUtiwakeSakujyo = 6,   // delete the selected sub-item and its entries
    };

    explicit PrefsHimokuViewController(DataModel& dm, QWidget* parent = nullptr);
    ~PrefsHimokuViewController() override;

    DataModel& DM;

    // Preparing actions: each fills and shows the box, or says which row to
    // select and changes nothing.
    void btnHimokuTuika();
    void btnUtiwakeTuika();
    void btnHimokuHensyuu();
    void btnHimokuSakujyo();
    // Enables or disables, in this order, the kind, the category name and
    // the sub-item name.
    void himokuKoumokuEditable(bool syubetu, bool himoku, bool utiwake);
    // Validates the box and carries out the prepared operation; on success
    // reloads the table, sets the changed-flag and hides the box. A refused
    // input, a declined question or a store failure leaves the box as it is.
    void btnHimokuKoumokuOk();
    // Hides the box; the prepared operation stays.
    void btnHimokuKoumokuCancel();
    void btnClose();

    int64_t syoriNo() const { return theHimokuKoumokuSyoriNo; }
    bool changed() const { return himokuKoumokuChangedSw; }

protected:
    // Tells the delegate whether any operation succeeded.
    void viewWillDisappear() override;

private:
    std::unique_ptr<Ui::PrefsHimokuViewController> ui;
    ListTableModel* model = nullptr;
    EditorUndo* undoKeys = nullptr;
    bool himokuKoumokuChangedSw = false;
    int64_t theHimokuKoumokuSyoriNo = kNone;

    void viewDidLoad();
    void layOutColumns();
    void wireActions();
    // Shows himokuList afresh, the table wide enough for the longest name.
    void reloadTable();
    void hideBox();
    // Sets the operation, titles the box and its buttons, enables the inputs
    // the operation uses and shows the box.
    void prepareBox(SyoriNo syoriNo);
    // The selected row, or none after saying `unselected`.
    const Himoku* selectedHimokuOrSay(const QString& unselected);
    // Puts the row's kind, its name (parts) and its numbers into the box;
    // `ucount`, when given, is the count of the sub-item's category.
    void fillCategory(const Himoku& himoku);
    void fillUtiwake(const Himoku& utiwake, std::optional<int64_t> ucount);
    // Runs the prepared operation with the validated kind; false when it was
    // refused, declined or failed.
    bool execute(int64_t syubetu);
    // The typed name (trimmed) may be stored: no "/" in it, and not the name
    // of another category of the kind or another sub-item of the category.
    // A row being renamed may keep its own name. Otherwise says why.
    bool namaeAllowedOrSay(int64_t syubetu, const QString& himoku, const QString& utiwake);
    bool noSlashOrSay(const QString& namae);
    bool himokuFreeOrSay(int64_t syubetu, const QString& namae, std::optional<int64_t> ownId);
    bool utiwakeFreeOrSay(int64_t himokuId, const QString& namae, std::optional<int64_t> ownId);
    bool executeHimokuHensyuu(const QString& himoku);
    bool executeHimokuSakujyo();
    bool executeUtiwakeSakujyo();
    // The sub-item part of each sub-item of the category, with their Ids.
    void utiwakeOf(int64_t himokuId, std::vector<int64_t>& ids, std::vector<std::string>& names) const;
    void say(const QString& message);
    bool askDelete(const QString& question);
    // After Ctrl+Z or a redo of one of this editor's steps: the table shows
    // the result with the row it put back or changed selected.
    void showUndone(const StepFocus& focus);
};
