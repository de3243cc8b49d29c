#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <string>

class QLocalServer;

// One running program per book. The first start takes an advisory lock on
// a file beside the book (BOOK.lock; the kernel drops it when the process
// ends, a crash included, so a stale lock file never blocks a start) and
// listens on a local socket named after the book's path. A later start on
// the same book finds the lock taken and asks the running program, through
// that socket, to bring its window to the front.
class SingleInstance final : public QObject {
public:
    // Takes the lock of the book at bookPath, creating the book's folder
    // (owner-only) when it does not exist yet.
    explicit SingleInstance(const std::string& bookPath, QObject* parent = nullptr);
    ~SingleInstance() override;

    // True when another program holds the book's lock.
    bool runningElsewhere() const { return heldElsewhere; }

    // Asks the program running on the book to show its window; true once
    // it has answered. Waits at most timeoutMs.
    static bool askRunningToRaise(const std::string& bookPath, int timeoutMs = 5000);

    // Calls raise on the event loop whenever a later start asks for it.
    // Only the holder of the lock listens.
    void listen(std::function<void()> raise);

    // The local socket's name for the book: one per user and canonical path.
    static QString serverName(const std::string& bookPath);

private:
    QString name;
    int lockFd = -1;
    bool heldElsewhere = false;
    QLocalServer* server = nullptr;
};
