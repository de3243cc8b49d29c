// ViewController: sync (ファイル → 同期の設定…, 同期で調整した変更…) and its
// status line.
#include <QApplication>
#include <QLabel>
#include <QStatusBar>

#include "app/ViewController.h"
#include "store/DataModel.h"
#include "syncwindow/SyncController.h"
#include "syncwindow/SyncNoticesViewController.h"
#include "syncwindow/SyncSettingsViewController.h"
#include "ui/ListTableModel.h"
#include "ui_ViewController.h"

void ViewController::wireSync()
{
    lblSyncStatus = new QLabel(this);
    lblSyncStatus->setObjectName(QStringLiteral("lblSyncStatus"));
    ui->statusBar->addWidget(lblSyncStatus, 1);
    sync = new SyncController(DM, this);
    // Other PCs' changes wait while an entry is typed or a window is open
    // over this one; the watcher or the timer brings them a little later.
    sync->setMayRun([this] { return !ui->itemData->isVisible() && !QApplication::activeModalWidget(); });
    connect(sync, &SyncController::bookChanged, this, &ViewController::showSyncedChanges);
    connect(sync, &SyncController::statusChanged, this, [this](const QString& text, const QString& toolTip) {
        lblSyncStatus->setText(text);
        lblSyncStatus->setToolTip(toolTip);
        ui->statusBar->setVisible(!text.isEmpty());
    });
    ui->statusBar->hide();
    connect(ui->mnuSyncSettings, &QAction::triggered, this, &ViewController::mnuSyncSettings);
    connect(ui->mnuSyncNotices, &QAction::triggered, this, &ViewController::mnuSyncNotices);
    sync->start();
}

void ViewController::mnuSyncSettings()
{
    closePanel();
    SyncSettingsViewController settings(*sync, this);
    settings.onBookReplaced = [this] { showReopenedBook(); };
    settings.exec();
    updateUndoActions();
    // Rounds wait while a window is open: the first one runs now.
    sync->runRound();
    sync->refreshStatus();
}

void ViewController::mnuSyncNotices()
{
    closePanel();
    SyncNoticesViewController notices(DM, this);
    notices.exec();
    if (notices.changedBook()) showSyncedChanges();
    sync->refreshStatus();
}

void ViewController::showSyncedChanges()
{
    // The store brought its lists up to date; the window shows them again,
    // the selected asset staying selected.
    if (DM.theSisanNo < 0 || DM.theSisanNo >= static_cast<int64_t>(DM.sisanList.size())) DM.theSisanNo = 0;
    reloadSisanList();
    if (DM.sisanList.empty()) ui->lblSisanmei->clear();
    itemModel->reload();
    refreshComboItems();
    dropVanishedEdit();
    updateUndoActions();
}
