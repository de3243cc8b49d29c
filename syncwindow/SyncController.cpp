#include "syncwindow/SyncController.h"

#include <QDateTime>
#include <QDir>
#include <QFileSystemWatcher>
#include <QThread>
#include <QTimer>

#include "store/DataModel.h"

SyncController::SyncController(DataModel& dm, QObject* parent)
    : QObject(parent), dm_(dm), sync_(std::make_unique<BookSync>(dm))
{
    watcher_ = new QFileSystemWatcher(this);
    settle_ = new QTimer(this);
    settle_->setSingleShot(true);
    settle_->setInterval(kSettleMs);
    period_ = new QTimer(this);
    period_->setInterval(kPeriodMs);
    // A file sync tool writes in bursts: one round once the folder is quiet.
    connect(watcher_, &QFileSystemWatcher::directoryChanged, settle_, qOverload<>(&QTimer::start));
    connect(settle_, &QTimer::timeout, this, &SyncController::runRound);
    connect(period_, &QTimer::timeout, this, &SyncController::runRound);
    dm_.setCommitListener([this] {
        sync_->publish();
        refreshStatus();
    });
}

SyncController::~SyncController()
{
    dm_.setCommitListener({});
}

const std::string& SyncController::bookPath() const
{
    return dm_.bookPath();
}

void SyncController::start()
{
    sync_->load();
    if (!sync_->syncing()) {
        period_->stop();
        if (!watcher_->directories().isEmpty()) watcher_->removePaths(watcher_->directories());
        refreshStatus();
        return;
    }
    watchFolder();
    period_->start();
    runRound();
}

void SyncController::watchFolder()
{
    if (!watcher_->directories().isEmpty()) watcher_->removePaths(watcher_->directories());
    const QDir folder(QString::fromStdString(sync_->identity()->folder));
    // New operations land in ops/<installation>/, new PCs in ops/ and devices/.
    QStringList dirs{folder.path(), folder.filePath(QStringLiteral("ops")), folder.filePath(QStringLiteral("devices"))};
    const QDir ops(folder.filePath(QStringLiteral("ops")));
    for (const QString& pc : ops.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) dirs << ops.filePath(pc);
    for (const QString& dir : dirs)
        if (QDir(dir).exists()) watcher_->addPath(dir);
}

void SyncController::runRound()
{
    if (!sync_->syncing()) return;
    if (mayRun_ && !mayRun_()) return;
    const RoundReport report = sync_->round();
    // PCs that joined since bring folders of their own.
    watchFolder();
    if (report.arrived > 0) emit bookChanged();
    if (report.ran) writeSnapshotIfDue();
    refreshStatus();
}

void SyncController::writeSnapshotIfDue()
{
    if (snapshotRunning_ || !sync_->snapshotDue()) return;
    // A copy of a large book takes a moment: on a worker, with its own connection.
    snapshotRunning_ = true;
    const std::string book = dm_.bookPath(), folder = sync_->identity()->folder;
    const Uuid install = sync_->identity()->install;
    QThread* worker = QThread::create([=] {
        std::string error;
        BookSync::writeSnapshotOf(book, folder, install, &error);
    });
    connect(worker, &QThread::finished, this, [this, worker] {
        snapshotRunning_ = false;
        worker->deleteLater();
    });
    worker->start();
}

void SyncController::refreshStatus()
{
    const SyncStatus status = sync_->status();
    QString text, tip;
    switch (status.state) {
    case SyncStatus::State::Off:
        break;
    case SyncStatus::State::Synced:
        text = status.lastRoundMs
                   ? QStringLiteral("同期済み ") +
                         QDateTime::fromMSecsSinceEpoch(status.lastRoundMs).toString(QStringLiteral("HH:mm"))
                   : QStringLiteral("同期済み");
        tip = QStringLiteral("同期フォルダ: ") + QString::fromStdString(sync_->identity()->folder);
        break;
    case SyncStatus::State::Pending:
        text = QStringLiteral("未同期の変更 %1件").arg(status.pendingChanges);
        tip = QString::fromStdString(status.waitingFor) + QStringLiteral(" にまだ届いていません");
        break;
    case SyncStatus::State::Problem: {
        const QString problem = QString::fromStdString(status.problem);
        text = QStringLiteral("同期できません: ") + problem.section(QLatin1Char('\n'), 0, 0);
        tip = problem;
        break;
    }
    }
    if (status.unseenNotices > 0) text += QStringLiteral("  (同期の調整 %1件)").arg(status.unseenNotices);
    if (text == statusText_ && tip == statusToolTip_) return;
    statusText_ = text;
    statusToolTip_ = tip;
    emit statusChanged(text, tip);
}
