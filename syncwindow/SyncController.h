#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

#include "sync/BookSync.h"

class DataModel;
class QFileSystemWatcher;
class QTimer;

// Runs sync for the program: a round at the start, whenever the folder
// changes (a file watcher, the changes of a moment taken together) and
// every minute; this PC's steps written to the folder as they are
// committed; a snapshot for a joining PC now and then. Says where things
// stand in one line for the main window.
class SyncController final : public QObject {
    Q_OBJECT

public:
    SyncController(DataModel& dm, QObject* parent = nullptr);
    ~SyncController() override;

    BookSync& sync() { return *sync_; }
    const std::string& bookPath() const;

    // Reads the book's sync record and, when it syncs, starts watching and
    // runs the first round.
    void start();
    // After the settings changed (set up, joined, stopped): start again.
    void restart() { start(); }

    // Runs a round now unless mayRun says the window is busy (an entry being
    // typed, a dialog open); the watcher or the timer tries again later.
    void runRound();
    void setMayRun(std::function<bool()> mayRun) { mayRun_ = std::move(mayRun); }

    // The status line: 「同期済み 12:34」, 「未同期の変更 3件」, what is
    // wrong, or "" when the book does not sync. toolTip says more.
    QString statusText() const { return statusText_; }
    QString statusToolTip() const { return statusToolTip_; }
    void refreshStatus();

    // How long the folder must stay quiet before a round, and the period.
    static constexpr int kSettleMs = 700;
    static constexpr int kPeriodMs = 60 * 1000;

signals:
    // Operations of other PCs changed the book: the window shows it again.
    void bookChanged();
    void statusChanged(const QString& text, const QString& toolTip);

private:
    DataModel& dm_;
    std::unique_ptr<BookSync> sync_;
    QFileSystemWatcher* watcher_ = nullptr;
    QTimer* settle_ = nullptr;
    QTimer* period_ = nullptr;
    std::function<bool()> mayRun_;
    QString statusText_, statusToolTip_;
    bool snapshotRunning_ = false;

    void watchFolder();
    void writeSnapshotIfDue();
};
