#include "ui/app/zbsingleinstance.h"

#include <QDataStream>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QUrl>

#include <unistd.h>
#include <utility>

namespace
{
// Tells a hand-over from whatever else might connect to the name.
constexpr quint32 MessageMagic = 0x4E564B31; // "NVK1"
constexpr char Acknowledgement = 'k';
constexpr auto StreamVersion = QDataStream::Qt_6_0;

// Connecting to a local socket either succeeds at once or fails at once;
// the wait only covers a backlog that is momentarily full.
constexpr int ConnectWaitMs = 1000;
// The running player answers from its event loop, which may still be busy
// starting up (opening the library, a dialog); past this wait the message
// sits in its socket and is read when it gets there.
constexpr int AcknowledgementWaitMs = 10000;
constexpr int LockWaitMs = 3000;

QString socketPath(const QString &serverName)
{
    // Where QLocalServer puts a bare name on Unix.
    return serverName.startsWith(u'/') ? serverName : QDir::tempPath() + u'/' + serverName;
}
} // namespace

ZBSingleInstance::ZBSingleInstance(QObject *parent)
    : ZBSingleInstance(defaultServerName(), parent)
{
}

ZBSingleInstance::ZBSingleInstance(const QString &serverName, QObject *parent)
    : QObject(parent)
    , m_serverName(serverName)
{
}

ZBSingleInstance::~ZBSingleInstance() = default;

QString ZBSingleInstance::defaultServerName()
{
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (!runtime.isEmpty())
        return runtime + QStringLiteral("/norvikplayer.socket");
    return QStringLiteral("norvikplayer-%1.socket").arg(::getuid());
}

QStringList ZBSingleInstance::normalizedArguments(const QStringList &arguments, const QString &workingDirectory)
{
    // Two letters at least, so that nothing resembling a drive letter is
    // ever taken for a scheme.
    static const QRegularExpression schemePattern(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]+:"));
    const QDir base(workingDirectory);
    QStringList normalized;
    for (const QString &argument : arguments)
    {
        if (argument.isEmpty() || argument.startsWith(u'-'))
            continue;
        const QRegularExpressionMatch scheme = schemePattern.match(argument);
        if (scheme.hasMatch())
        {
            const QUrl url(argument);
            // File managers hand files over as file: URLs (the %U of the
            // desktop entry); the library wants paths.
            if (url.isLocalFile())
            {
                normalized << QDir::cleanPath(url.toLocalFile());
                continue;
            }
            if (argument.mid(scheme.capturedLength(), 2) == QLatin1String("//"))
            {
                normalized << argument;
                continue;
            }
        }
        normalized << QDir::cleanPath(base.absoluteFilePath(argument));
    }
    return normalized;
}

bool ZBSingleInstance::tryToHandOver(const QStringList &arguments)
{
    const QStringList message = normalizedArguments(arguments);
    if (sendToRunningInstance(message) == Delivery::Delivered)
        return true;
    if (claim())
        return false;
    if (m_server->serverError() != QAbstractSocket::AddressInUseError)
    {
        qWarning("Cannot listen on %s (%s); another start will open a second player.", qPrintable(m_serverName),
                 qPrintable(m_server->errorString()));
        return false;
    }
    // The name exists but nobody answered: a crashed player's socket, or a
    // player that claimed it a moment ago. Under the lock, a second start
    // racing this one cannot remove the socket this one is about to make.
    QLockFile lock(socketPath(m_serverName) + QStringLiteral(".lock"));
    // A lock held longer than this belongs to a start that hangs; going on
    // beats waiting for it.
    lock.tryLock(LockWaitMs);
    if (sendToRunningInstance(message) == Delivery::Delivered)
        return true;
    QLocalServer::removeServer(m_serverName);
    if (!claim())
        qWarning("Cannot take over %s (%s).", qPrintable(m_serverName), qPrintable(m_server->errorString()));
    return false;
}

void ZBSingleInstance::listen()
{
    if (!isListening() && !claim() && m_server->serverError() == QAbstractSocket::AddressInUseError)
    {
        QLockFile lock(socketPath(m_serverName) + QStringLiteral(".lock"));
        lock.tryLock(LockWaitMs);
        QLocalSocket probe;
        probe.connectToServer(m_serverName);
        // A name someone answers on belongs to a living player: never take it.
        if (!probe.waitForConnected(ConnectWaitMs))
        {
            QLocalServer::removeServer(m_serverName);
            claim();
        }
    }
    if (!isListening())
        qWarning("Not listening on %s: %s", qPrintable(m_serverName), qPrintable(m_server->errorString()));

    m_delivering = true;
    for (const QStringList &arguments : std::exchange(m_pending, {}))
        Q_EMIT argumentsReceived(arguments);
}

bool ZBSingleInstance::isListening() const
{
    return m_server && m_server->isListening();
}

ZBSingleInstance::Delivery ZBSingleInstance::sendToRunningInstance(const QStringList &arguments) const
{
    QLocalSocket socket;
    socket.connectToServer(m_serverName);
    if (!socket.waitForConnected(ConnectWaitMs))
        return Delivery::NobodyListens;

    QByteArray payload;
    QDataStream out(&payload, QIODevice::WriteOnly);
    out.setVersion(StreamVersion);
    out << MessageMagic << arguments;
    socket.write(payload);
    while (socket.bytesToWrite() > 0)
    {
        if (!socket.waitForBytesWritten(AcknowledgementWaitMs))
            return Delivery::Dropped;
    }

    if (socket.waitForReadyRead(AcknowledgementWaitMs))
    {
        char answer = 0;
        return socket.read(&answer, 1) == 1 && answer == Acknowledgement ? Delivery::Delivered : Delivery::Dropped;
    }
    // Still connected: the player is busy and will read the message later.
    // Gone: it was quitting and never will.
    return socket.state() == QLocalSocket::ConnectedState ? Delivery::Delivered : Delivery::Dropped;
}

bool ZBSingleInstance::claim()
{
    if (!m_server)
    {
        m_server = new QLocalServer(this);
        // No socket options: with any, Qt binds elsewhere and renames the
        // socket into place, replacing a living player's socket instead of
        // failing on it. The runtime folder is private to the user anyway.
        connect(m_server, &QLocalServer::newConnection, this, &ZBSingleInstance::takeConnection);
    }
    return m_server->listen(m_serverName);
}

void ZBSingleInstance::takeConnection()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection())
    {
        connect(socket, &QLocalSocket::readyRead, this, [this, socket]() { readMessage(socket); });
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        readMessage(socket);
    }
}

void ZBSingleInstance::readMessage(QLocalSocket *socket)
{
    QDataStream in(socket);
    in.setVersion(StreamVersion);
    in.startTransaction();
    quint32 magic = 0;
    in >> magic;
    if (in.status() == QDataStream::Ok && magic != MessageMagic)
    {
        in.abortTransaction();
        socket->abort();
        return;
    }
    QStringList arguments;
    in >> arguments;
    // Part of the message is still on its way.
    if (!in.commitTransaction())
        return;
    socket->write(&Acknowledgement, 1);
    socket->flush();
    deliver(arguments);
}

void ZBSingleInstance::deliver(const QStringList &arguments)
{
    if (m_delivering)
        Q_EMIT argumentsReceived(arguments);
    else
        m_pending << arguments;
}
