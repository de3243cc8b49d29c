#include "app/SingleInstance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>
#include <cerrno>
#include <filesystem>

namespace {

const QByteArray kRaise = "raise\n";
const QByteArray kRaised = "raised\n";

}  // namespace

SingleInstance::SingleInstance(const std::string& bookPath, QObject* parent)
    : QObject(parent), name(serverName(bookPath))
{
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::path folder = fs::path(bookPath).parent_path();
    if (!folder.empty() && fs::create_directories(folder, ec)) fs::permissions(folder, fs::perms::owner_all, ec);
    const std::string lockPath = bookPath + ".lock";
    lockFd = ::open(lockPath.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600);  // flock needs no write access
    // Without a lock file (a read-only folder) the start goes on: the book
    // check then explains what is wrong with the folder.
    if (lockFd < 0) return;
    if (::flock(lockFd, LOCK_EX | LOCK_NB) == 0) return;
    heldElsewhere = errno == EWOULDBLOCK;
    ::close(lockFd);
    lockFd = -1;
}

SingleInstance::~SingleInstance()
{
    if (lockFd >= 0) ::close(lockFd);
}

QString SingleInstance::serverName(const std::string& bookPath)
{
    std::error_code ec;
    std::filesystem::path canonical = std::filesystem::weakly_canonical(bookPath, ec);
    if (ec) canonical = bookPath;
    const QByteArray hash =
        QCryptographicHash::hash(QByteArray::fromStdString(canonical.string()), QCryptographicHash::Sha256).toHex();
    return QStringLiteral("zenvora-%1-%2").arg(::getuid()).arg(QString::fromLatin1(hash.left(24)));
}

bool SingleInstance::askRunningToRaise(const std::string& bookPath, int timeoutMs)
{
    const QString name = serverName(bookPath);
    // The running program listens once its window exists: a start in the
    // moment before that tries again until the deadline.
    QDeadlineTimer deadline(timeoutMs);
    QLocalSocket socket;
    for (;;) {
        socket.connectToServer(name);
        if (socket.waitForConnected(static_cast<int>(deadline.remainingTime()))) break;
        if (deadline.hasExpired()) return false;
        QThread::msleep(50);
    }
    socket.write(kRaise);
    socket.flush();
    while (!socket.canReadLine())
        if (!socket.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) return false;
    return socket.readLine() == kRaised;
}

void SingleInstance::listen(std::function<void()> raise)
{
    if (lockFd < 0) return;
    server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    // A socket file left by a crash is stale: the lock proves nobody serves it.
    QLocalServer::removeServer(name);
    if (!server->listen(name)) return;
    connect(server, &QLocalServer::newConnection, this, [this, raise] {
        while (QLocalSocket* client = server->nextPendingConnection()) {
            connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
            connect(client, &QLocalSocket::readyRead, client, [client, raise] {
                if (!client->canReadLine() || client->readLine() != kRaise) return;
                raise();
                client->write(kRaised);
                client->flush();
            });
        }
    });
}
