#pragma once

#include <QDate>
#include <QMainWindow>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "household/Date.h"
#include "store/SearchQuery.h"
#include "ui/ModalEditor.h"

class DataModel;
class FindBar;
class QCompleter;
class QStandardItemModel;
class SearchRunner;
class ListTableModel;
struct StepFocus;
class QAbstractButton;
class QKeyEvent;
class QShowEvent;
class QStringListModel;
class QTableView;
class StatementImporter;
class SyncController;
class QLabel;
struct Sisan;
namespace Ui {
class ViewController;
}

// The main window: today's date, the asset list with the grand total, the
// entry list of the selected asset and the entry panel for new, edited and
// deleted entries. It reads the store's lists directly and changes data only
// through store operations, then reloads what they re-read.
//
// The frame (start-up, editors, message boxes) is in ViewController.cpp, the
// two lists in ViewControllerLists.cpp, the entry panel in
// ViewControllerEntry.cpp, the find bar in ViewControllerFind.cpp and the
// note suggestions and proposals of the panel in ViewControllerNotes.cpp.
class ViewController final : public QMainWindow, public EditorDelegate {
    Q_OBJECT

public:
    // Builds the window on the store and runs viewDidLoad.
    explicit ViewController(DataModel& dm, QWidget* parent = nullptr);
    ~ViewController() override;

    DataModel& DM;

    // Where each transition leads: a factory of the modal editor to show.
    // The window starts with the asset and category editors; an editor menu
    // action is disabled while its transition has none.
    using SegueDestination = std::function<ModalEditor*(QWidget* parent)>;
    void setSegueDestination(const QString& identifier, SegueDestination destination);

    // ---- frame --------------------------------------------------------------
    void mnuShowPrefsSisan();
    void mnuShowPrefsHimoku();
    // Runs a report window modally: the asset report shows sisanList live,
    // which the entry actions here re-read.
    void mnuShowAnnualReport();
    void mnuShowSisanReport();
    // Creates the transition's editor, prepares it and runs it modally.
    void performSegue(const QString& identifier);
    // Hands the editor this window as its delegate; "prepare failed" on
    // standard output for an unknown identifier. False when nothing is shown.
    bool prepare(const QString& identifier, ModalEditor* destination);
    // 設定 → 定期的な支出入: the rules' window; once it changed a rule, a
    // look for due occurrences (a rule made today may be due today).
    void mnuShowPrefsTeiki();
    // Looks for occurrences of recurring entries that came due and shows
    // them for posting; the lists then show what was posted. Runs at the
    // start and when the day changes; while another modal window is open it
    // waits until that one has closed.
    void lookForDueTeiki();
    void sisanKoumokuChanged(bool changed) override;
    void himokuKoumokuChanged(bool changed) override;
    void someMessageWithAlert(const QString& message, const QString& informative = QStringLiteral("information"));
    bool yesNoMessageWithAlert(const QString& message, const QString& yes, const QString& no);
    // The day changed while the window is open: the date label shows the
    // new day, and so does the entry panel's date where it still showed the
    // day before.
    void todayChanged();

    // ---- statement import (ViewControllerImport.cpp) -------------------------
    // ファイル → 明細の取り込み…: asks for statement files and imports them.
    void mnuImportStatements();
    // Shows the asset with these new entries selected, the first in view.
    void showImportedEntries(int64_t sisanId, const std::vector<int64_t>& itemIds);
    StatementImporter* statementImporter() const { return importer; }

    // ---- undo, redo and the history (編集 menu) ------------------------------
    // Cancel an open entry panel, then undo or redo the step the menu names;
    // the lists show the result: the asset of the change selected and the
    // entry it put back in view.
    void mnuUndo();
    void mnuRedo();
    // The history window; a step reverted there is shown the same way.
    void mnuShowHistory();

    // ---- backups (ファイル menu) -----------------------------------------------
    // Today's backup made now, replacing the day's one, and where it went.
    void mnuBackupNow();
    // The restore dialog; after a restore the window shows the restored book.
    void mnuRestoreBackup();
    // Reads the book again after its contents were replaced (a restored
    // backup), and shows it from the first asset, as at the start.
    void showReopenedBook();

    // ---- sync (ファイル menu, ViewControllerSync.cpp) ---------------------------
    // The settings window; after joining a folder the window shows its book.
    void mnuSyncSettings();
    // The cases the conflict rules settled, each with its 元に戻す.
    void mnuSyncNotices();
    // Shows the lists again after other PCs' operations changed the book.
    void showSyncedChanges();
    SyncController* syncController() const { return sync; }

    // ---- asset and entry lists ----------------------------------------------
    // Shows itemList afresh and scrolls to its last row.
    void tblItemReload();
    void tableViewSelectionDidChange(QTableView* table);
    // Sorts the entry list by the clicked column, each click the other way.
    void tableViewMouseDownInHeaderOf(QTableView* table, int column);

    // ---- entry panel ---------------------------------------------------------
    void rdbtnSelected(QAbstractButton* sender);
    // Fills the combo box for the kind: sub-items (1, 2) or assets (3).
    void setComboItemData(int64_t kind);
    int numberOfItems() const;
    void newItem();
    void editUpdateItem();
    void deleteItem();
    void btnItemDataOK();
    void btnItemDataCancel();
    // The index of the first combo item with this Id.
    std::optional<int> comboBoxId2Idx(int64_t id) const;

    // ---- household months, cards and budgets --------------------------------
    // The two settings windows and the budget report, modal over this one;
    // the window shows what they changed when they close.
    void mnuShowHouseholdSettings();
    void mnuShowYosan();
    void mnuShowYosanReport();
    // Offers, one after another, the settlement of every card period whose
    // withdrawal day has come and that is not settled, except those put off
    // today (後で); each one recorded is one step.
    void offerCardSettlements();

    // ---- find ------------------------------------------------------------------
    // Opens the find bar above the entry list (Ctrl+F), or focuses it.
    void mnuFind();
    // Selects the asset and, in its list, the entry, scrolled into view and
    // focused so that 編集更新 works on it. Refused while an edit is open.
    void showFoundItem(int64_t sisanId, int64_t itemId);

protected:
    // Enter on a focused button presses that button.
    void keyPressEvent(QKeyEvent* event) override;
    // The first show offers the settlements that are due.
    void showEvent(QShowEvent* event) override;

private:
    std::unique_ptr<Ui::ViewController> ui;
    ListTableModel* sisanModel = nullptr;
    ListTableModel* itemModel = nullptr;
    QStringListModel* comboModel = nullptr;
    std::map<QString, SegueDestination> segueDestinations;
    StatementImporter* importer = nullptr;
    SyncController* sync = nullptr;
    QLabel* lblSyncStatus = nullptr;

    int64_t theItemDataSelectedId = -1;  // entry last selected; the edit updates it
    std::vector<int64_t> cmbItemDataIdArray;
    std::vector<std::string> cmbItemDataNamae;
    int64_t theItemDataSyoriNo = 0;  // 1 new entry, 2 edit entry
    // The entry an open edit updates, and its asset: fixed when the edit
    // begins, whatever is selected until OK succeeds or Cancel is pressed.
    struct EditedEntry {
        int64_t sisanId;
        int64_t itemId;
    };
    std::optional<EditedEntry> edited;
    bool selectingQuietly = false;   // a selection made by the code, not the user
    QDate shownToday;                // the day lblToday shows
    bool teikiLookWaiting = false;   // a look for due occurrences waits for a modal window
    FindBar* findBar = nullptr;
    // Past notes offered while the note is typed, found off the main thread.
    SearchRunner* noteRunner = nullptr;
    QCompleter* noteCompleter = nullptr;
    QStandardItemModel* noteModel = nullptr;
    std::vector<NoteSuggestion> noteSuggestions;

    void viewDidLoad();
    void wireActions();
    void wireImport();
    void wireSync();
    // True when nothing is being typed in the entry panel; else says so.
    bool mayImport();
    void layOutColumns();
    void showGrandTotal();
    void showToday();
    void refreshComboItems();

    // Lists.
    // Shows the asset at this row: its name, and its entries read afresh.
    void sisanSelected(int row);
    // Selects the row without running the selection handler.
    void selectSisanRowQuietly(int row);
    // Reloads the asset list, keeping the selected asset selected, and
    // shows the recomputed grand total.
    void reloadSisanList();
    static int selectedRow(const QTableView* table);
    const Sisan* selectedSisan() const;
    // The selected asset, or none after saying that there is no asset.
    const Sisan* selectedSisanOrSay();

    // Entry panel.
    void itemDataSinki();
    void itemDataHensyuu();
    void openPanel(const QString& title, int64_t syoriNo);
    // Hides the panel with any pop-up of it, ends an edit and gives the
    // lists back.
    void closePanel();
    // After the editors changed the book: an edit whose entry is gone ends.
    void dropVanishedEdit();
    void setListsEnabled(bool enabled);
    std::optional<int64_t> validatedKingaku();
    std::optional<int64_t> selectedComboId();
    void refreshAfterStore();
    void resetPanelToExpense();

    // Undo.
    void wireUndo();
    // Names the steps 元に戻す and やり直す would take, or disables them.
    void updateUndoActions();
    // Shows the lists as a replayed step left them.
    void showStepResult(const StepFocus& focus);

    // Household (ViewControllerHousehold.cpp).
    std::map<int64_t, int64_t> comingBySisan;       // paying asset -> its cards' withdrawals to come
    std::set<std::pair<int64_t, YearMonth>> putOff;  // card and closing month: 後で, until the day changes
    bool offering = false;                           // a settlement is being offered
    bool offerWaiting = false;                       // an offer waits for a modal window to close
    bool shownOnce = false;
    // The month's spending against its budget, each card's coming
    // withdrawals in the asset list, and the shown asset's card line.
    void showHouseholdState();
    void showYosanSummary();
    void showCardInfo();
    void computeComingWithdrawals();
    QString afterWithdrawalsText(int row) const;

    // Find bar.
    void wireFind();
    // After a change of the book, the find bar shows what is there now.
    void findFollowsBook();

    // Note suggestions and proposals.
    void wireNoteSuggestions();
    void noteTyped(const QString& text);
    void showNoteSuggestions(const std::vector<NoteSuggestion>& notes);
    // Fills kind, category or partner and amount from the chosen past note.
    void noteChosen(int suggestion);
    // For a new entry of this kind, the category (or partner) last used in
    // the shown asset is chosen.
    void proposeLastUsed(int64_t kind);
};
