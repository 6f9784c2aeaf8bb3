#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QObject>
#include <QString>

class QDBusPendingCallWatcher;

// Desktop notifications ("bubbles") through org.freedesktop.Notifications.
// Each one names a file or folder; clicking the bubble shows it in the file
// manager. Posting never waits for the notification server, and without one
// the program carries on with a single line in the debug log.
class ZBNotificationCenter : public QObject
{
    Q_OBJECT

public:
    // The kinds of notification the program knows. Only TaskCompleted is
    // posted: for a finished or failed download, a finished page and a saved
    // screenshot.
    static constexpr const char *TaskCompleted = "Task Completed";
    static constexpr const char *AllTasksCompleted = "All Tasks Completed";
    // The kind travels with each notification under this hint, so that a
    // desktop's notification settings can tell them apart.
    static constexpr const char *NameHint = "x-norvikplayer-name";
    static constexpr const char *ServiceName = "org.freedesktop.Notifications";
    static constexpr const char *ObjectPath = "/org/freedesktop/Notifications";

    explicit ZBNotificationCenter(const QDBusConnection &bus = QDBusConnection::sessionBus(),
                                  QObject *parent = nullptr);

    // Summary is the window title; description is the body. The click
    // context is the file or folder a click on the bubble reveals.
    void post(const QString &name, const QString &description, const QString &clickContextPath);

Q_SIGNALS:
    // The user clicked a bubble of ours; its file is being revealed.
    void messageClicked();

private Q_SLOTS:
    void actionInvoked(uint id, const QString &actionKey);
    void notificationClosed(uint id, uint reason);

private:
    struct Notification
    {
        QString name;
        QString description;
        QString clickContextPath;
    };

    void send(const Notification &notification);
    void capabilitiesAnswered(QDBusPendingCallWatcher *watcher);
    void notifyAnswered(QDBusPendingCallWatcher *watcher, const QString &clickContextPath);
    void reportMissingServer(const QString &why);

    QDBusConnection m_bus;
    // Click contexts of the bubbles on screen, by the server's id.
    QHash<uint, QString> m_clickContexts;
    // Servers that read markup in the body need the description escaped;
    // the others would show the escapes. Until the server has said which it
    // is, notifications wait.
    bool m_capabilitiesKnown;
    bool m_bodyMarkup;
    QList<Notification> m_waiting;
    bool m_missingServerReported;
};
