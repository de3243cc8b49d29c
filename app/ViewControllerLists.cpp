// ViewController: the asset list and the entry list.
#include <QHeaderView>
#include <QScopedValueRollback>
#include <QTableView>

#include "app/ItemSort.h"
#include "ui/ListTableModel.h"
#include "app/ViewController.h"
#include "store/DataModel.h"
#include "ui_ViewController.h"

namespace {

enum TableTag { kTagSisan = 0, kTagItem = 1 };

int tagOf(const QTableView* table)
{
    return table ? table->property("tag").toInt() : -1;
}

}  // namespace

int ViewController::selectedRow(const QTableView* table)
{
    const QModelIndexList rows = table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
}

const Sisan* ViewController::selectedSisan() const
{
    if (DM.theSisanNo < 0 || DM.theSisanNo >= static_cast<int64_t>(DM.sisanList.size())) return nullptr;
    return DM.sisanList[static_cast<size_t>(DM.theSisanNo)].get();
}

void ViewController::tableViewSelectionDidChange(QTableView* table)
{
    if (!table || selectingQuietly) return;
    const int row = selectedRow(table);
    if (row < 0) return;
    switch (tagOf(table)) {
    case kTagSisan:
        sisanSelected(row);
        break;
    case kTagItem:
        theItemDataSelectedId = DM.itemList[static_cast<size_t>(row)]->Id;
        break;
    default:
        break;
    }
}

void ViewController::sisanSelected(int row)
{
    DM.theSisanNo = row;
    const Sisan& sisan = *DM.sisanList[static_cast<size_t>(row)];
    ui->lblSisanmei->setText(QString::fromStdString(sisan.Namae));
    if (!DM.readFromItemsTable(sisan.Id)) return;  // the store has said why
    tblItemReload();
    // The read recomputed this asset's balance, and with it the total.
    const QModelIndex balance = sisanModel->index(row, 1);
    emit sisanModel->dataChanged(balance, balance);
    DM.totalOfZankinFrom_sisanList();
    showGrandTotal();
    showCardInfo();
}

void ViewController::selectSisanRowQuietly(int row)
{
    const QScopedValueRollback quiet(selectingQuietly, true);
    ui->tblSisan->selectRow(row);
}

void ViewController::reloadSisanList()
{
    sisanModel->reload();
    if (selectedSisan()) selectSisanRowQuietly(static_cast<int>(DM.theSisanNo));
    DM.totalOfZankinFrom_sisanList();
    showGrandTotal();
    showHouseholdState();
}

void ViewController::tblItemReload()
{
    itemModel->reload();
    if (!DM.itemList.empty()) ui->tblItem->scrollToBottom();
}

void ViewController::tableViewMouseDownInHeaderOf(QTableView* table, int column)
{
    if (tagOf(table) != kTagItem) return;
    const std::string identifier = itemModel->columnIdentifier(column);
    const auto flag = DM.itemSortASC.find(identifier);
    const bool ascending = flag != DM.itemSortASC.end() && flag->second;
    if (!sortItemList(DM.itemList, identifier, ascending)) return;
    itemModel->reorder();
    DM.itemSortASC[identifier] = !ascending;
}
