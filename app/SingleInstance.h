#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <string>

#include "store/BookLock.h"

class QLocalServer;
class QLocalSocket;

// One running program per book. The first start holds the book's lock
// (BookLock: on the file itself, whatever path led to it) and listens on a
// local socket named after the file's identity. A later start on the same
// file finds the lock taken and asks the running program, through that
// socket, to bring its window to the front; before its window exists the
// running program says what it is doing instead.
class SingleInstance final : public QObject {
public:
    // What the program holding the book answered.
    enum class Answer {
        Raised,    // its window is now in front
        Starting,  // it is still checking or reading the book; its window follows
        Asking,    // it shows a question or message about the book, now in front
        Silent,    // no answer in time: stopped, or busy for long
    };
    struct Reply {
        Answer answer = Answer::Silent;
        pid_t pid = 0;  // the holder of the lock, when known
    };

    // Takes the lock of the book at bookPath (a resolved path), creating the
    // book's folder (owner-only) when it does not exist yet.
    explicit SingleInstance(const std::string& bookPath, QObject* parent = nullptr);
    ~SingleInstance() override;

    BookLock& lock() { return bookLock; }
    // True when another program holds the book's lock.
    bool runningElsewhere() const { return bookLock.state() == BookLock::State::HeldElsewhere; }

    // Asks the program holding the book at bookPath to show its window.
    // Waits at most timeoutMs for its answer.
    static Reply askRunning(const std::string& bookPath, int timeoutMs = 3000);

    // Answers later starts on the event loop, under the name of the file now
    // locked; called again after the book was replaced, it moves to the new
    // file's name. A socket on which a living program listens is never taken.
    void listen();
    // From now on a later start raises the window through raise.
    void setWindow(std::function<void()> raise) { raiseWindow = std::move(raise); }

    // The local socket's name for a book file: one per user and file.
    static QString serverName(const FileIdentity& file);

private:
    void answer(QLocalSocket* client);

    BookLock bookLock;
    QString name;
    QLocalServer* server = nullptr;
    std::function<void()> raiseWindow;
};
