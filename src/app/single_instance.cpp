#include "app/single_instance.h"

#include "base/ui/qt_text.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalSocket>

namespace quobrix {
namespace {

constexpr int kTimeout = 2000; // ms
constexpr qint64 kLongestPath = 1 << 16;

QString lockName(const QString& folder) {
    QDir().mkpath(folder);
    return folder + QStringLiteral("/TQuobrix.lock");
}

/// Distinct for every settings folder. Local sockets of Unix are files, in folders of the user's own, whose paths must
/// not exceed about a hundred characters.
QString serverNameFor(const QString& folder) {
    const QByteArray hash = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha1).toHex().left(16);
    const QString name = QStringLiteral("TQuobrix-") + QString::fromLatin1(hash);
#ifdef Q_OS_WIN
    return name;
#else
    const QString path = qEnvironmentVariable("XDG_RUNTIME_DIR", folder) + QLatin1Char('/') + name;
    return path.toUtf8().size() <= 100 ? path : name;
#endif
}

} // namespace

SingleInstance::SingleInstance(const std::filesystem::path& settingsFolder)
    : lock_(lockName(toQtPath(settingsFolder))), serverName_(serverNameFor(toQtPath(settingsFolder))) {
    lock_.setStaleLockTime(0); // a copy that crashed is recognised by its process, not by the lock's age
    first_ = lock_.tryLock() || lock_.error() != QLockFile::LockFailedError;
}

bool SingleInstance::send(const std::filesystem::path& file) const {
    QLocalSocket socket;
    socket.connectToServer(serverName_);
    if (!socket.waitForConnected(kTimeout))
        return false;
    socket.write(QByteArray::fromStdString(utf8(file)));
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(kTimeout))
        continue;
    const bool sent = socket.bytesToWrite() == 0;
    socket.disconnectFromServer();
    return sent;
}

void SingleInstance::receive(std::function<void(const std::filesystem::path&)> open) {
    open_ = std::move(open);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
        while (QLocalSocket* socket = server_.nextPendingConnection()) {
            // The path is whole when its sender has hung up.
            QObject::connect(socket, &QLocalSocket::disconnected, &server_, [this, socket] { read(*socket); });
            if (socket->state() == QLocalSocket::UnconnectedState)
                read(*socket);
        }
    });
    QLocalServer::removeServer(serverName_); // what a copy that crashed left
    server_.listen(serverName_);
}

void SingleInstance::read(QLocalSocket& socket) {
    const QByteArray path = socket.read(kLongestPath);
    socket.deleteLater();
    if (!path.isEmpty() && open_)
        open_(pathFromUtf8(path.toStdString()));
}

} // namespace quobrix
