#pragma once

#include <optional>

#include <QDBusConnection>
#include <QObject>
#include <QString>

class QDBusPendingCallWatcher;

// Keeps the screen saver and display sleep away through
// org.freedesktop.ScreenSaver while the owner asks for it (full screen, a
// track playing, the setting on). Turning it on twice holds one inhibition;
// turning it off, or destroying the object, gives it back. Nothing waits for
// the service, and without one the screen saver simply runs as usual.
class ZBScreenSaverInhibitor : public QObject
{
    Q_OBJECT

public:
    static constexpr const char *ServiceName = "org.freedesktop.ScreenSaver";
    static constexpr const char *ObjectPath = "/org/freedesktop/ScreenSaver";

    explicit ZBScreenSaverInhibitor(const QDBusConnection &bus = QDBusConnection::sessionBus(),
                                    QObject *parent = nullptr);
    ~ZBScreenSaverInhibitor() override;

    // The reason shows in the desktop's power settings; it is taken from the
    // call that turns the inhibition on.
    void setInhibited(bool on, const QString &reason = QString());
    // What was asked for last, whether or not the service granted it.
    bool isInhibited() const { return m_wanted; }
    // Whether the screen saver service holds our inhibition right now.
    bool isActive() const { return m_cookie.has_value(); }

private:
    void reconcile();
    void inhibitAnswered(QDBusPendingCallWatcher *watcher);

    QDBusConnection m_bus;
    bool m_wanted;
    QString m_reason;
    // The service's cookie while it holds our inhibition.
    std::optional<uint> m_cookie;
    // The Inhibit call on its way, if any.
    QDBusPendingCallWatcher *m_inhibitPending;
    // Set when the service refused or is missing; cleared by the next request
    // to turn it on, so a missing service is not asked again and again.
    bool m_failed;
};
