// ViewController: the ファイル menu's backups (今すぐバックアップ, バックアップから復元).
#include <QEventLoop>
#include <QProgressDialog>
#include <QThread>
#include <memory>

#include "app/BookGate.h"
#include "app/ViewController.h"
#include "find/IndexAtStart.h"
#include "history/RestoreViewController.h"
#include "store/BackupRestore.h"
#include "store/DataModel.h"
#include "ui/Clock.h"
#include "ui/ListTableModel.h"
#include "ui_ViewController.h"

namespace {

constexpr int kBackupsKept = 14;

}  // namespace

void ViewController::mnuBackupNow()
{
    closePanel();
    const std::string dir = backupFolderOf(DM.bookPath());
    const std::string day = currentDateTime().toString(QStringLiteral("yyyyMMdd")).toStdString();
    std::string path, error;
    BackupResult result = BackupResult::Failed;
    // A large book takes a second or two to copy: on a worker, behind a
    // dialog that says so.
    QProgressDialog progress(QStringLiteral("バックアップを作っています…"), QString(), 0, 0, this);
    progress.setWindowTitle(QStringLiteral("今すぐバックアップ"));
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(500);
    QEventLoop loop;
    std::unique_ptr<QThread> worker(QThread::create(
        [&] { result = backupBookNow(DM.bookPath(), dir, day, kBackupsKept, &path, &error); }));
    connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
    worker->start();
    loop.exec();
    worker->wait();
    progress.reset();
    if (result == BackupResult::Made || result == BackupResult::AlreadyMade) {
        someMessageWithAlert(QStringLiteral("今日のバックアップを作りました。\n") + QString::fromStdString(path));
    } else {
        someMessageWithAlert(QStringLiteral("バックアップを作れませんでした。\n") + QString::fromStdString(dir),
                             QString::fromStdString(error));
    }
}

void ViewController::mnuRestoreBackup()
{
    closePanel();
    RestoreViewController restore(DM, backupFolderOf(DM.bookPath()), this);
    restore.onRestored = [this] { showReopenedBook(); };
    if (restore.exec() != QDialog::Accepted) return;
    someMessageWithAlert(QStringLiteral("バックアップに戻しました。元の帳簿は次の名前で残してあります:\n") +
                         QString::fromStdString(restore.keptPath()));
}

void ViewController::showReopenedBook()
{
    DM.reopenBook();
    prepareSearchIndex(DM);  // a backup of an older version has none
    sisanModel->reload();
    if (DM.sisanList.empty()) {
        ui->lblSisanmei->clear();
        tblItemReload();
    } else {
        selectSisanRowQuietly(0);
        sisanSelected(0);
    }
    showGrandTotal();
    refreshComboItems();
    findFollowsBook();
}
