#include "bench/MainWindowBench.h"

#include <QApplication>
#include <QTableView>
#include <algorithm>
#include <memory>
#include <vector>

#include "app/ViewController.h"
#include "bench/Compare.h"
#include "store/DataModel.h"

namespace {

constexpr int kZankinColumn = 4;

// Paints what a user would see now.
void paint(QTableView* table)
{
    table->viewport()->repaint();
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
    window.hide();
}
