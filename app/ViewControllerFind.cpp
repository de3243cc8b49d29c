// ViewController: the find bar and the jump to a found entry.
#include <QSplitter>
#include <QTableView>

#include "app/ViewController.h"
#include "find/FindBar.h"
#include "store/DataModel.h"
#include "ui_ViewController.h"

void ViewController::wireFind()
{
    findBar = new FindBar(DM, this);
    ui->splitItem->insertWidget(0, findBar);
    ui->splitItem->setStretchFactor(0, 1);
    ui->splitItem->setStretchFactor(1, 1);
    connect(ui->mnuFind, &QAction::triggered, this, &ViewController::mnuFind);
    connect(findBar, &FindBar::jumpRequested, this, &ViewController::showFoundItem);
    connect(findBar, &FindBar::closed, this, [this] { ui->tblItem->setFocus(); });
}

void ViewController::mnuFind()
{
    findBar->open();
}

void ViewController::findFollowsBook()
{
    findBar->bookChanged();
}

void ViewController::showFoundItem(int64_t sisanId, int64_t itemId)
{
    if (edited) {
        someMessageWithAlert(QStringLiteral("編集中のデータをOKかキャンセルで閉じてから移動してください。"));
        return;
    }
    const int64_t* sisanRow = DM.sisanId2Idx.find(sisanId);
    if (!sisanRow) {
        someMessageWithAlert(QStringLiteral("このデータの資産は削除されています。"));
        return;
    }
    const auto position = [this, itemId]() -> std::optional<size_t> {
        // The list may be sorted by a column: look for the entry where it stands now.
        for (size_t p = 0; p < DM.itemList.size(); ++p)
            if (DM.itemList[p]->Id == itemId) return p;
        return std::nullopt;
    };
    std::optional<size_t> row;
    if (*sisanRow == DM.theSisanNo) row = position();
    if (!row) {
        // Another asset, or the entry is newer than the list shown: read it.
        selectSisanRowQuietly(static_cast<int>(*sisanRow));
        sisanSelected(static_cast<int>(*sisanRow));
        row = position();
    }
    if (!row) {
        someMessageWithAlert(QStringLiteral("このデータは削除されています。"));
        findFollowsBook();
        return;
    }
    const QModelIndex index = ui->tblItem->model()->index(static_cast<int>(*row), 0);
    ui->tblItem->selectRow(index.row());
    ui->tblItem->scrollTo(index, QAbstractItemView::PositionAtCenter);
    ui->tblItem->setFocus(Qt::OtherFocusReason);
}
