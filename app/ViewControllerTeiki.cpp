// ViewController: recurring entries, their rules' window and the posting of due ones.
#include <QApplication>
#include <QTimer>

#include "app/ViewController.h"
#include "household/PrefsTeikiViewController.h"
#include "household/QtDates.h"
#include "household/TeikiKityouViewController.h"
#include "store/DataModel.h"

namespace {

// How often a look for due occurrences asks again while a modal window is open.
constexpr int kTeikiLookRetryMs = 1000;

}  // namespace

void ViewController::mnuShowPrefsTeiki()
{
    PrefsTeikiViewController prefs(DM, this);
    prefs.exec();
    if (prefs.changed()) lookForDueTeiki();
}

void ViewController::lookForDueTeiki()
{
    // An editor, a report or a message box is open (or this window's own
    // posting window): the look comes when it has closed, not over it.
    if (QApplication::activeModalWidget()) {
        if (!teikiLookWaiting) {
            teikiLookWaiting = true;
            QTimer::singleShot(kTeikiLookRetryMs, this, [this] {
                teikiLookWaiting = false;
                lookForDueTeiki();
            });
        }
        return;
    }
    const Date today = householdToday();
    if (!DM.readFromTeikiTable()) return;
    const auto due = dueTeiki(DM, today);
    if (!due || due->empty()) return;
    TeikiKityouViewController kityou(DM, *due, today, this);
    kityou.exec();
    if (kityou.written()) refreshAfterStore();
}
