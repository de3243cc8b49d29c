#include "bench/MainWindowBench.h"

#include <QApplication>
#include <QTableView>
#include <algorithm>
#include <memory>
#include <vector>

#include <QElapsedTimer>
#include <QProgressDialog>
#include <QTimer>
#include <cstdio>

#include "app/BookGate.h"
#include "app/ViewController.h"
#include "bench/Compare.h"
#include "history/RestoreViewController.h"
#include "store/BackupRestore.h"
#include "store/DataModel.h"
#include "ui/MessageService.h"

namespace {

constexpr int kZankinColumn = 4;

// Paints what a user would see now.
void paint(QTableView* table)
{
    table->viewport()->repaint();
}

// Answers every question with its first button, and prints messages.
class Yes final : public MessageService {
public:
    void someMessageWithAlert(const QString& message, const QString& informative) override
    {
        std::fprintf(stderr, "message: %s %s\n", qPrintable(message), qPrintable(informative));
    }
    bool yesNoMessageWithAlert(const QString&, const QString&, const QString&) override { return true; }
    int choiceMessageWithAlert(const QString&, const QStringList&) override { return 0; }
};

// Restores a backup of the book through the dialog once.
void benchRestore(DataModel& dm, ViewController& window)
{
    const std::string dir = backupFolderOf(dm.bookPath());
    std::string error;
    if (backupBookOnce(dm.bookPath(), dir, "20250101", 14, &error) == BackupResult::Failed) {
        std::fprintf(stderr, "cannot back up the book: %s\n", error.c_str());
        return;
    }
    Yes yes;
    setMessageService(&yes);
    RestoreViewController dialog(dm, dir, &window);
    dialog.onRestored = [&window] { window.showReopenedBook(); };
    dialog.show();
    while (!dialog.idle()) QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);

    // The longest time between two ticks of a 10 ms timer is the longest
    // stretch the window could not repaint or take input.
    QElapsedTimer sinceTick;
    qint64 longest = 0;
    QTimer ticks;
    QObject::connect(&ticks, &QTimer::timeout, [&] {
        longest = std::max(longest, sinceTick.restart());
    });
    QElapsedTimer total;
    total.start();
    sinceTick.start();
    ticks.start(10);
    const bool restored = dialog.btnRestore();
    paint(window.findChild<QTableView*>("tblItem"));
    longest = std::max(longest, sinceTick.elapsed());
    ticks.stop();
    std::printf("bench restore_backup ms=%lld longest_without_events_ms=%lld restored=%s\n",
                static_cast<long long>(total.elapsed()), static_cast<long long>(longest), restored ? "yes" : "no");
    std::fflush(stdout);
    setMessageService(nullptr);
}

}  // namespace

void benchMainWindow(DataModel& dm, int64_t largestSisanId, int64_t otherSisanId, int runs, int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ViewController window(dm);
    window.show();
    QApplication::processEvents();
    auto* tblSisan = window.findChild<QTableView*>("tblSisan");
    auto* tblItem = window.findChild<QTableView*>("tblItem");
    const int largestRow = static_cast<int>(dm.sisanId2Idx.at(largestSisanId));
    const int otherRow = static_cast<int>(dm.sisanId2Idx.at(otherSisanId));

    compare(
        "select_asset_largest", runs,
        [&](int) {
            tblSisan->selectRow(largestRow);
            paint(tblItem);
        },
        [&](int) { dm.readFromItemsTable(largestSisanId); },
        [&](int) {
            // The same history before either turn: the largest shown, then
            // another asset, so that selecting the largest reads it again.
            tblSisan->selectRow(largestRow);
            paint(tblItem);
            tblSisan->selectRow(otherRow);
            paint(tblItem);
        });

    std::vector<std::shared_ptr<Items>> copy;
    compare(
        "sort_zankin_largest", runs,
        [&](int) {
            window.tableViewMouseDownInHeaderOf(tblItem, kZankinColumn);
            paint(tblItem);
        },
        [&](int) {
            std::sort(copy.begin(), copy.end(), [](const auto& a, const auto& b) { return a->Zankin < b->Zankin; });
        },
        [&](int turn) {
            // Both start from the ledger in date order; the store's next sort is ascending.
            tblSisan->selectRow(otherRow);
            tblSisan->selectRow(largestRow);
            if (turn % 2 == 1) copy = dm.itemList;
        });
    benchRestore(dm, window);
    window.hide();
}
