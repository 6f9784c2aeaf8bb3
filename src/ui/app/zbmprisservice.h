#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QVariantMap>

class ZBMediaKeyTarget;
class ZBMprisPlayerAdaptor;

// The player as the desktop sees it on the session bus (MPRIS 2). Linux
// desktops keep the keyboard's media keys to themselves and pass them on to
// MPRIS players, so this is how the media keys, panel applets and `playerctl`
// reach the program. It is also the adaptors' way to answer a caller with an
// error: QtDBus keeps a call's context on the exported object, not on its
// adaptor.
class ZBMprisService : public QObject, public QDBusContext
{
    Q_OBJECT

public:
    static constexpr const char *ObjectPath = "/org/mpris/MediaPlayer2";
    static constexpr const char *BusName = "org.mpris.MediaPlayer2.norvikplayer";
    static constexpr const char *RootInterface = "org.mpris.MediaPlayer2";
    static constexpr const char *PlayerInterface = "org.mpris.MediaPlayer2.Player";

    // The target must outlive the service.
    explicit ZBMprisService(ZBMediaKeyTarget *target, QObject *parent = nullptr);
    ~ZBMprisService() override;

    // Puts the player on the bus under BusName or, when another process holds
    // that, under the per-process name MPRIS reserves for a second copy.
    // False when there is no bus or the object cannot be placed.
    bool registerOn(const QDBusConnection &connection);
    // Empty until registerOn() succeeds.
    QString serviceName() const { return m_serviceName; }

    ZBMediaKeyTarget *target() const { return m_target; }

    // The target calls this whenever its playing state, track, volume or
    // fullscreen may have changed; listeners on the bus are told about what really did, in
    // one PropertiesChanged signal.
    void targetChanged();

private Q_SLOTS:
    void commandSentAsSignal(const QDBusMessage &message);

private:
    struct Snapshot
    {
        QString playbackStatus;
        QVariantMap metadata;
        double volume = 0;
        bool fullscreen = false;
    };

    Snapshot snapshot() const;

    ZBMediaKeyTarget *m_target;
    ZBMprisPlayerAdaptor *m_player;
    QObject *m_root;
    QDBusConnection m_connection;
    QString m_serviceName;
    Snapshot m_announced;
};
