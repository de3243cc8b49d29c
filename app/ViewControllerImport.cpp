// ViewController: importing statements (the menu, files dropped on the
// window) and showing what came in.
#include <QItemSelection>
#include <QTableView>

#include "app/ViewController.h"
#include "import/StatementImporter.h"
#include "store/DataModel.h"
#include "ui/ListTableModel.h"
#include "ui/OpenFilesService.h"
#include "ui_ViewController.h"

void ViewController::wireImport()
{
    importer = new StatementImporter(DM, this);
    importer->shownSisan = [this] {
        const Sisan* sisan = selectedSisan();
        return sisan ? sisan->Id : 0;
    };
    importer->mayStart = [this] { return mayImport(); };
    importer->imported = [this](int64_t sisanId, const std::vector<int64_t>& itemIds) {
        showImportedEntries(sisanId, itemIds);
    };
    importer->acceptDropsOn(this);
    connect(ui->mnuImportStatements, &QAction::triggered, this, &ViewController::mnuImportStatements);
}

bool ViewController::mayImport()
{
    if (!selectedSisanOrSay()) return false;
    if (!ui->itemData->isVisible()) return true;
    someMessageWithAlert(QStringLiteral("入力中のデータを確定するか取り消してから、明細を取り込んでください。"));
    return false;
}

void ViewController::mnuImportStatements()
{
    if (importer->busy() || !mayImport()) return;
    const QStringList paths = openFilesService().askOpenPaths(
        QStringLiteral("明細の取り込み"),
        {QStringLiteral("明細のCSV (*.csv *.CSV *.txt *.TXT)"), QStringLiteral("すべてのファイル (*)")});
    importer->importFiles(paths);
}

void ViewController::showImportedEntries(int64_t sisanId, const std::vector<int64_t>& itemIds)
{
    const int64_t* position = DM.sisanId2Idx.find(sisanId);
    if (!position) return;
    const int row = static_cast<int>(*position);
    selectSisanRowQuietly(row);
    sisanSelected(row);  // the ledger read afresh, with the new rows
    reloadSisanList();   // a transfer moved another asset's balance too
    QItemSelection rows;
    int first = -1;
    for (const int64_t id : itemIds) {
        const int64_t* at = DM.itemId2Idx.find(id);
        if (!at) continue;
        const int r = static_cast<int>(*at);
        rows.select(itemModel->index(r, 0), itemModel->index(r, itemModel->columnCount() - 1));
        first = first < 0 ? r : std::min(first, r);
    }
    if (first < 0) return;
    QItemSelectionModel* selection = ui->tblItem->selectionModel();
    selection->select(rows, QItemSelectionModel::ClearAndSelect);
    selection->setCurrentIndex(itemModel->index(first, 0), QItemSelectionModel::NoUpdate);
    ui->tblItem->scrollTo(itemModel->index(first, 0), QAbstractItemView::PositionAtTop);
}
