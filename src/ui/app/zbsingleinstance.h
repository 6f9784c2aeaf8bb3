#pragma once

#include <QDir>
#include <QObject>
#include <QStringList>

class QLocalServer;
class QLocalSocket;

// One player per user: a later start hands the files, folders and URLs it
// was given to the running player and leaves, so the library is never opened
// by two processes. The two talk over a local socket whose name is private to
// the user.
class ZBSingleInstance : public QObject
{
    Q_OBJECT

public:
    // The user's own name (see defaultServerName()).
    explicit ZBSingleInstance(QObject *parent = nullptr);
    // A socket name of the caller's choosing: a bare name or a full path.
    explicit ZBSingleInstance(const QString &serverName, QObject *parent = nullptr);
    ~ZBSingleInstance() override;

    // A socket in the user's runtime folder, which no other user can enter;
    // where there is none, a name in the temporary folder that carries the
    // user's id.
    static QString defaultServerName();

    // The command line as the running player needs it: options (a leading
    // "-") and empty words dropped, paths made absolute against
    // `workingDirectory` (the sender's, which the receiver cannot know),
    // file: URLs turned into paths, other URLs ("norvikplayer://...") kept
    // as given.
    static QStringList normalizedArguments(const QStringList &arguments,
                                           const QString &workingDirectory = QDir::currentPath());

    // True when another player took the arguments (the command line without
    // the program's name): the caller should exit. Otherwise this object has
    // claimed the name, so that of two players started together only one
    // goes on; whatever later starts send is kept until listen(). A name
    // left behind by a crashed player is taken over.
    bool tryToHandOver(const QStringList &arguments);

    // From now on every hand-over is announced by argumentsReceived(), those
    // that arrived since tryToHandOver() first, in order. Claims the name
    // itself when tryToHandOver() was not called.
    void listen();

    bool isListening() const;
    QString serverName() const { return m_serverName; }

Q_SIGNALS:
    // Already normalized by the sender; empty for a plain second start.
    void argumentsReceived(const QStringList &arguments);

private:
    enum class Delivery
    {
        NobodyListens,
        Delivered,
        Dropped
    };

    Delivery sendToRunningInstance(const QStringList &arguments) const;
    bool claim();
    void takeConnection();
    void readMessage(QLocalSocket *socket);
    void deliver(const QStringList &arguments);

    QString m_serverName;
    QLocalServer *m_server = nullptr;
    bool m_delivering = false;
    QList<QStringList> m_pending;
};
