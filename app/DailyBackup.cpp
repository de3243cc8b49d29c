#include "app/DailyBackup.h"

#include <QThread>
#include <utility>

#include "store/Backup.h"
#include "ui/Clock.h"
#include "ui/MessageService.h"

DailyBackup::DailyBackup(std::string bookPath, std::string backupDir, int keep, QObject* parent)
    : QObject(parent), bookPath(std::move(bookPath)), backupDir(std::move(backupDir)), keep(keep)
{
}

DailyBackup::~DailyBackup()
{
    if (!worker) return;
    cancel = true;
    worker->wait();
    delete worker;
}

void DailyBackup::start()
{
    if (worker) {
        startAgain = true;
        return;
    }
    failed = false;
    error.clear();
    const std::string day = currentDateTime().toString(QStringLiteral("yyyyMMdd")).toStdString();
    // The worker writes only `failed` and `error`; the main thread reads them
    // after QThread::finished, which orders the two.
    worker = QThread::create([this, day] {
        failed = backupBookOnce(bookPath, backupDir, day, keep, &error, &cancel) == BackupResult::Failed;
    });
    connect(worker, &QThread::finished, this, &DailyBackup::report);
    worker->start(QThread::LowPriority);
}

void DailyBackup::report()
{
    if (failed)
        messageService().someMessageWithAlert(
            QStringLiteral("今日のバックアップを作れませんでした。\n%1").arg(QString::fromStdString(backupDir)),
            QString::fromStdString(error) +
                QStringLiteral("\n家計簿はこのまま使えます。フォルダの空き容量と書き込み権限を確かめてください。"));
    worker->wait();  // finished is sent a moment before the thread ends
    delete std::exchange(worker, nullptr);
    emit finished();
    if (std::exchange(startAgain, false)) start();
}
