// ViewController: the 編集 menu (undo, redo) and the history window.
#include <QAction>
#include <QKeySequence>
#include <QTableView>

#include "app/ViewController.h"
#include "history/HistoryViewController.h"
#include "store/DataModel.h"
#include "ui/ListTableModel.h"
#include "ui_ViewController.h"

namespace {

// A menu text naming the step; an "&" in the step's label is shown as one.
QString naming(const QString& verb, const HistoryEntry* step, const QString& mnemonic)
{
    if (!step) return verb + mnemonic;
    QString label = QString::fromStdString(step->Label);
    return verb + QStringLiteral("「") + label.replace(u'&', QStringLiteral("&&")) + QStringLiteral("」") + mnemonic;
}

}  // namespace

void ViewController::wireUndo()
{
    ui->mnuRedo->setShortcuts({QKeySequence(QStringLiteral("Ctrl+Shift+Z")), QKeySequence(QStringLiteral("Ctrl+Y"))});
    connect(ui->mnuUndo, &QAction::triggered, this, &ViewController::mnuUndo);
    connect(ui->mnuRedo, &QAction::triggered, this, &ViewController::mnuRedo);
    connect(ui->mnuShowHistory, &QAction::triggered, this, &ViewController::mnuShowHistory);
    DM.setHistoryListener([this] { updateUndoActions(); });
    updateUndoActions();
}

void ViewController::updateUndoActions()
{
    const HistoryEntry* undo = DM.undoTarget();
    const HistoryEntry* redo = DM.redoTarget();
    ui->mnuUndo->setEnabled(undo != nullptr);
    ui->mnuUndo->setText(naming(QStringLiteral("元に戻す"), undo, QStringLiteral("(&U)")));
    ui->mnuRedo->setEnabled(redo != nullptr);
    ui->mnuRedo->setText(naming(QStringLiteral("やり直す"), redo, QStringLiteral("(&R)")));
}

void ViewController::mnuUndo()
{
    if (!DM.undoTarget()) return;
    closePanel();  // an entry half typed would otherwise be stored over what comes back
    StepFocus focus;
    if (DM.undo(&focus)) showStepResult(focus);
}

void ViewController::mnuRedo()
{
    if (!DM.redoTarget()) return;
    closePanel();
    StepFocus focus;
    if (DM.redo(&focus)) showStepResult(focus);
}

void ViewController::mnuShowHistory()
{
    closePanel();
    HistoryViewController history(DM, this);
    history.exec();
    if (history.changed()) showStepResult(history.focus());
}

void ViewController::showStepResult(const StepFocus& focus)
{
    // The store has re-read what the step touched and points theSisanNo at
    // the asset of the change, with its ledger in itemList.
    reloadSisanList();
    const Sisan* sisan = selectedSisan();
    ui->lblSisanmei->setText(sisan ? QString::fromStdString(sisan->Namae) : QString());
    itemModel->reload();
    const int64_t* row = focus.itemId ? DM.itemId2Idx.find(focus.itemId) : nullptr;
    if (row) {
        const QModelIndex index = itemModel->index(static_cast<int>(*row), 0);
        ui->tblItem->selectRow(index.row());
        ui->tblItem->scrollTo(index, QAbstractItemView::PositionAtCenter);
    } else if (!DM.itemList.empty()) {
        ui->tblItem->scrollToBottom();
    }
    refreshComboItems();
    findFollowsBook();
}
