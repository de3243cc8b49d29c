#include "app/SingleInstance.h"

#include <unistd.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>
#include <QWidget>
#include <filesystem>

namespace {

const QByteArray kRaise = "raise\n";
const QByteArray kRaised = "raised\n";
const QByteArray kStarting = "starting\n";
const QByteArray kAsking = "asking\n";

// The book's path, once its folder exists (owner-only when new).
const std::string& withFolderMade(const std::string& bookPath)
{
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::path folder = fs::path(bookPath).parent_path();
    if (!folder.empty() && fs::create_directories(folder, ec)) fs::permissions(folder, fs::perms::owner_all, ec);
    return bookPath;
}

// A program is listening on the name when a connection is taken.
bool someoneListens(const QString& name)
{
    QLocalSocket probe;
    probe.connectToServer(name);
    return probe.waitForConnected(200);
}

}  // namespace

SingleInstance::SingleInstance(const std::string& bookPath, QObject* parent)
    : QObject(parent), bookLock(withFolderMade(bookPath))
{
}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::serverName(const FileIdentity& file)
{
    return QStringLiteral("zenvora-%1-%2-%3")
        .arg(::getuid())
        .arg(static_cast<qulonglong>(file.device), 0, 16)
        .arg(static_cast<qulonglong>(file.inode));
}

SingleInstance::Reply SingleInstance::askRunning(const std::string& bookPath, int timeoutMs)
{
    Reply reply;
    reply.pid = BookLock::holderOf(bookPath);
    const auto file = identityOf(bookPath);
    if (!file) return reply;
    // The running program listens a moment after it took the lock: a start
    // in that moment tries again until the deadline.
    QDeadlineTimer deadline(timeoutMs);
    QLocalSocket socket;
    for (;;) {
        socket.connectToServer(serverName(*file));
        if (socket.waitForConnected(static_cast<int>(deadline.remainingTime()))) break;
        if (deadline.hasExpired()) return reply;
        QThread::msleep(50);
    }
    socket.write(kRaise);
    socket.flush();
    while (!socket.canReadLine())
        if (!socket.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) return reply;
    const QByteArray line = socket.readLine();
    if (line == kRaised) reply.answer = Answer::Raised;
    if (line == kStarting) reply.answer = Answer::Starting;
    if (line == kAsking) reply.answer = Answer::Asking;
    return reply;
}

void SingleInstance::listen()
{
    const auto file = bookLock.identity();
    if (!file || (server && serverName(*file) == name)) return;
    delete server;
    server = nullptr;
    name = serverName(*file);
    // Only the holder of the file's lock comes here, so a socket file of
    // this name is a crash's leftover; a program still answering on it is
    // left alone all the same.
    if (someoneListens(name)) return;
    QLocalServer::removeServer(name);
    server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(name)) return;
    connect(server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* client = server->nextPendingConnection()) {
            connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
            connect(client, &QLocalSocket::readyRead, client, [this, client] { answer(client); });
        }
    });
}

void SingleInstance::answer(QLocalSocket* client)
{
    if (!client->canReadLine() || client->readLine() != kRaise) return;
    QByteArray reply = kStarting;
    if (raiseWindow) {
        raiseWindow();
        reply = kRaised;
    } else if (QWidget* modal = QApplication::activeModalWidget()) {
        // A question about the book before the window: put it in front.
        modal->raise();
        modal->activateWindow();
        reply = kAsking;
    }
    client->write(reply);
    client->flush();
}
