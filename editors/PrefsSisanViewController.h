#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "store/Card.h"

#include "ui/ModalEditor.h"

class DataModel;
class EditorUndo;
class ListTableModel;
class QString;
struct Sisan;
struct StepFocus;
namespace Ui {
class PrefsSisanViewController;
}

// The modal editor of the asset list: a table of every asset (name and
// opening amount) and an editing box that a preparing button opens for an
// add, an edit or a delete; the box's execute button carries it out through
// the store. A fourth button opens the card box, which marks an asset as a
// credit card with its cycle. When it closes it tells its delegate whether
// anything changed.
class PrefsSisanViewController final : public ModalEditor {
    Q_OBJECT

public:
    // The prepared action; the numbers are the ones the box works with.
    enum SyoriNo : int64_t { kNone = -1, kTuika = 1, kKousin = 2, kSakujyo = 3 };

    explicit PrefsSisanViewController(DataModel& dm, QWidget* parent = nullptr);
    ~PrefsSisanViewController() override;

    DataModel& DM;

    // Preparing actions: each shows the box titled for its action. Edit and
    // delete need a selected row and fill the fields from it.
    void btnSisanKoumokuTuika();
    void btnSisanKoumokuKousin();
    void btnSisanKoumokuSakujyo();
    // Validates the amount and carries out the prepared action; on success
    // sets the changed-flag, reloads the table and hides the box. A refused
    // input or a store failure leaves the box open as it is.
    void btnSisanKoumokuOK();
    // Forgets the prepared action, clears the selection and hides the box.
    void btnSisanKoumokuCancel();
    void btnSisanModalClose();
    // The card box of the selected asset: whether it is a credit card, its
    // closing and withdrawal days, the months between them, the holiday
    // rule and the asset it is paid from. Its execute button keeps the
    // setting as one step; a card needs a paying asset other than itself.
    void btnSisanKoumokuCard();
    void btnCardOK();
    void btnCardCancel();

    int64_t syoriNo() const { return sisanKoumokuSyoriNo; }
    bool changed() const { return sisanKoumokuChangedSw; }

protected:
    // Tells the delegate whether any action succeeded.
    void viewWillDisappear() override;

private:
    std::unique_ptr<Ui::PrefsSisanViewController> ui;
    ListTableModel* model = nullptr;
    EditorUndo* undoKeys = nullptr;
    int64_t sisanKoumokuSyoriNo = kNone;
    bool sisanKoumokuChangedSw = false;
    // The asset an edit or a delete acts on, fixed when its box is prepared:
    // the selection may change before the box is carried out.
    std::optional<int64_t> preparedSisanId;

    void viewDidLoad();
    void layOutColumns();
    // Shows sisanList afresh, the table wide enough for the longest name.
    void reloadTable();
    void hideBox();
    void wireActions();
    // Shows the box for the action with its three titles.
    void prepareBox(SyoriNo syoriNo, const QString& title, const QString& ok, const QString& cancel);
    // Fills the fields from the selected asset and binds it to the box, or
    // says `unselected` and returns false when no row is selected.
    bool fillFromSelection(const QString& unselected);
    // The amount field as a whole yen amount, or none after marking the
    // field and saying that the amount is invalid.
    std::optional<int64_t> validatedKingaku();
    // The asset of the selected row, or none after saying `unselected`.
    const Sisan* selectedSisanOrSay(const QString& unselected);
    // The asset bound to the box, or none after saying `unselected`.
    const Sisan* preparedSisanOrSay(const QString& unselected);
    // True when no other asset has the name; otherwise says so. An asset
    // being edited (own) may keep its name.
    bool namaeFreeOrSay(const QString& namae, const Sisan* own);
    bool executeTuika(int64_t kingaku);
    bool executeKousin(int64_t kingaku);
    bool executeSakujyo();
    void deselect();
    // After Ctrl+Z or a redo of one of this editor's steps: the table shows
    // the result with the asset it put back or changed selected.
    void showUndone(const StepFocus& focus);

    // Cards.
    // Cards whose paying asset was just deleted: each asks for another.
    std::vector<int64_t> cardsToAskPaying;
    void fillCardCombos();
    // Shows the card box for the asset, filled from its card or with the
    // usual cycle; with askPaying the paying asset is left to choose, marked.
    void prepareCardBox(const Sisan& sisan, bool askPaying);
    void cardFieldsChanged();
    // The card as the box holds it, for the asset the box was prepared for.
    Card shownCard() const;
    // Asks for a new paying asset for the next card that lost its own.
    void askForPayingAsset();
    void hideCardBox();
};
