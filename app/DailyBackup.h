#pragma once

#include <QObject>
#include <QString>
#include <atomic>
#include <string>

class QThread;

// Today's backup of the book (Backup.h), made on a worker thread with its
// own connection so that it never delays the window, even for a book of a
// hundred megabytes. Started again when the day changes, it makes the new
// day's backup. A failure is reported once, in a message box; the program
// goes on either way.
class DailyBackup final : public QObject {
    Q_OBJECT

public:
    // Backups of bookPath go to backupDir; the newest `keep` stay.
    DailyBackup(std::string bookPath, std::string backupDir, int keep = 14, QObject* parent = nullptr);
    // Stops a copy still running (it leaves nothing behind) and waits for it.
    ~DailyBackup() override;

    // Starts the backup of the clock's day unless it exists already; while
    // a copy runs, the start waits for it to finish.
    void start();

signals:
    // On the main thread, after any failure has been reported.
    void finished();

private:
    void report();

    std::string bookPath;
    std::string backupDir;
    int keep;
    QThread* worker = nullptr;
    bool startAgain = false;
    std::atomic<bool> cancel{false};
    bool failed = false;
    std::string error;
};
