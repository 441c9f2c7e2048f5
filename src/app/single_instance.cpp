#include "app/single_instance.h"

#include "base/ui/qt_text.h"
#include "platform/file_system.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QLocalSocket>
#include <QPointer>
#include <QThread>

#include <optional>

namespace quobrix {
namespace {

constexpr qint64 kLongestPath = 1 << 16;
constexpr char kEnd = '\0'; // behind the path; no path has one
constexpr char kReceived = 'r';
constexpr char kOpened = 'o';
constexpr unsigned long kPause = 20; // ms between two attempts to reach a copy that is starting or ending

QString lockName(const std::filesystem::path& folder) {
    makePrivateFolder(folder);
    return toQtPath(folder) + QStringLiteral("/TQuobrix.lock");
}

/// Distinct for every settings folder. Local sockets of Unix are files whose paths must not exceed about a hundred
/// characters. They are put only where no other user can put one of the same name; otherwise there is no socket.
QString serverNameFor(const QString& folder) {
    const QByteArray hash = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha1).toHex().left(16);
    const QString name = QStringLiteral("TQuobrix-") + QString::fromLatin1(hash);
#ifdef Q_OS_WIN
    return name;
#else
    for (const QString& place : {qEnvironmentVariable("XDG_RUNTIME_DIR"), folder}) {
        const QString path = place + QLatin1Char('/') + name;
        if (QDir::isAbsolutePath(place) && onlyUserWrites(toPath(place)) && path.toUtf8().size() <= 100)
            return path;
    }
    return {};
#endif
}

} // namespace

SingleInstance::SingleInstance(const std::filesystem::path& settingsFolder, std::chrono::milliseconds patience)
    : lock_(lockName(settingsFolder)), serverName_(serverNameFor(toQtPath(settingsFolder))), patience_(patience) {
    lock_.setStaleLockTime(0); // a copy that crashed is recognised by its process, not by the lock's age
    first_ = tryFirst();
}

bool SingleInstance::tryFirst() { return lock_.tryLock() || lock_.error() != QLockFile::LockFailedError; }

bool SingleInstance::handOver(const std::filesystem::path& file) {
    const QDeadlineTimer deadline(patience_);
    while (!first_) {
        const Answer answer = send(file);
        if (answer == Answer::Opened)
            return true;
        if (answer == Answer::Silence || deadline.hasExpired())
            return false;
        QThread::msleep(kPause);
        first_ = tryFirst();
    }
    return false;
}

SingleInstance::Answer SingleInstance::send(const std::filesystem::path& file) const {
    const int patience = static_cast<int>(patience_.count());
    QLocalSocket socket;
    if (!serverName_.isEmpty())
        socket.connectToServer(serverName_);
    if (!socket.waitForConnected(patience))
        return Answer::None;
    socket.write(QByteArray::fromStdString(utf8(file)) + kEnd);
    const auto next = [&socket](int timeout) -> std::optional<char> {
        char answer = 0;
        if (socket.bytesAvailable() == 0)
            socket.waitForReadyRead(timeout);
        return socket.getChar(&answer) ? std::optional(answer) : std::nullopt;
    };
    if (next(patience) != kReceived)
        return socket.state() == QLocalSocket::ConnectedState ? Answer::Silence : Answer::None;
    // It lives; a question that a person has to answer first may take any time.
    return next(-1) == kOpened ? Answer::Opened : Answer::None;
}

void SingleInstance::receive(Open open) {
    open_ = std::move(open);
    if (!lock_.isLocked() || serverName_.isEmpty())
        return;
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
        while (QLocalSocket* socket = server_.nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::readyRead, &server_, [this, socket] { read(*socket); });
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            read(*socket);
        }
    });
    QLocalServer::removeServer(serverName_); // what a copy that crashed left
    server_.listen(serverName_);
}

void SingleInstance::read(QLocalSocket& socket) {
    const QByteArray path = socket.peek(kLongestPath);
    if (!path.endsWith(kEnd)) {
        if (path.size() == kLongestPath)
            socket.abort();
        return;
    }
    socket.skip(path.size());
    const auto answer = [to = QPointer(&socket)](char what) {
        if (to) {
            to->putChar(what);
            to->flush();
        }
    };
    answer(kReceived);
    open_(pathFromUtf8(path.chopped(1).toStdString()), [answer] { answer(kOpened); });
}

void SingleInstance::release() {
    server_.close(); // before the lock: the next one's socket has the same name
    qDeleteAll(server_.findChildren<QLocalSocket*>());
    lock_.unlock();
    first_ = false;
}

} // namespace quobrix
