#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "household/TeikiDue.h"

class DataModel;
class QKeyEvent;
class TeikiKityouModel;
namespace Ui {
class TeikiKityouViewController;
}

// The occurrences of recurring entries that came due, in one window: each
// checked, its amount open to change. 記帳する posts the checked ones in one
// store operation; the unchecked ones are left for next time or skipped for
// good, as the window's choice says. あとで (or Escape) closes it with nothing
// written.
class TeikiKityouViewController final : public QDialog {
    Q_OBJECT

public:
    // The window for the due occurrences found on `today` (dueTeiki).
    TeikiKityouViewController(DataModel& dm, const std::vector<TeikiOccurrence>& due, const Date& today,
                              QWidget* parent = nullptr);
    ~TeikiKityouViewController() override;

    DataModel& DM;

    // Checks the amounts of the checked rows, then posts and skips; closes
    // the window once the book took it. An invalid amount is said and its
    // cell shown; nothing is written then.
    void btnTeikiKityou();
    void btnTeikiAtode();

    // True when the book was written (the main window then shows the new entries).
    bool written() const { return writtenSw; }

protected:
    // Space toggles the check of the current row, wherever in the row the
    // cursor is; Enter on a focused button presses that button, and Enter in
    // an amount being typed only confirms that amount.
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::unique_ptr<Ui::TeikiKityouViewController> ui;
    TeikiKityouModel* model = nullptr;
    std::vector<TeikiOccurrence> due;
    Date today;
    bool writtenSw = false;

    void layOutColumns();
};
