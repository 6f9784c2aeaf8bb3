#include "ui/web/zbnotificationcenter.h"

#include <utility>

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDebug>
#include <QVariantMap>

#include "localization/zblocalizer.h"
#include "settings/zbsettings.h"
#include "ui/app/zbfilemanager.h"

namespace
{
const QString Interface = QStringLiteral("org.freedesktop.Notifications");
const QString DefaultAction = QStringLiteral("default");
// The urgency hint's "normal".
constexpr uchar NormalUrgency = 1;
// Up to the server: bubbles stay as long as the desktop keeps its bubbles.
constexpr int ServerDefaultTimeout = -1;

QDBusMessage notificationCall(const QString &method)
{
    return QDBusMessage::createMethodCall(QLatin1String(ZBNotificationCenter::ServiceName),
                                          QLatin1String(ZBNotificationCenter::ObjectPath), Interface, method);
}
} // namespace

ZBNotificationCenter::ZBNotificationCenter(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
    , m_capabilitiesKnown(false)
    , m_bodyMarkup(false)
    , m_missingServerReported(false)
{
    if (!m_bus.isConnected())
        return;
    const QString service = QLatin1String(ServiceName);
    const QString path = QLatin1String(ObjectPath);
    m_bus.connect(service, path, Interface, QStringLiteral("ActionInvoked"), this, SLOT(actionInvoked(uint, QString)));
    m_bus.connect(service, path, Interface, QStringLiteral("NotificationClosed"), this,
                  SLOT(notificationClosed(uint, uint)));
    auto *watcher =
        new QDBusPendingCallWatcher(m_bus.asyncCall(notificationCall(QStringLiteral("GetCapabilities"))), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &ZBNotificationCenter::capabilitiesAnswered);
}

void ZBNotificationCenter::post(const QString &name, const QString &description, const QString &clickContextPath)
{
    if (!m_bus.isConnected())
    {
        reportMissingServer(QStringLiteral("no session bus"));
        return;
    }
    if (name != QLatin1String(TaskCompleted) && name != QLatin1String(AllTasksCompleted))
        qWarning().noquote() << "Posting a notification of an unknown kind:" << name;
    if (m_capabilitiesKnown)
        send({name, description, clickContextPath});
    else
        m_waiting.append({name, description, clickContextPath});
}

void ZBNotificationCenter::send(const Notification &notification)
{
    QVariantMap hints;
    hints.insert(QStringLiteral("desktop-entry"), QStringLiteral("norvikplayer"));
    hints.insert(QStringLiteral("urgency"), QVariant::fromValue(NormalUrgency));
    hints.insert(QLatin1String(NameHint), notification.name);
    QDBusMessage call = notificationCall(QStringLiteral("Notify"));
    call << ZBSettings::applicationName() << uint(0) << QStringLiteral("norvikplayer")
         << ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle"))
         << (m_bodyMarkup ? notification.description.toHtmlEscaped() : notification.description)
         << QStringList{DefaultAction, ZBLocalizer::localizedStringForKey(QStringLiteral("ledOpenFolderText"))} << hints
         << ServerDefaultTimeout;
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, path = notification.clickContextPath](QDBusPendingCallWatcher *finished)
            { notifyAnswered(finished, path); });
}

void ZBNotificationCenter::actionInvoked(uint id, const QString &actionKey)
{
    // Signals of the server reach every client; ids not ours belong to
    // other programs.
    const auto context = m_clickContexts.constFind(id);
    if (context == m_clickContexts.constEnd() || actionKey != DefaultAction)
        return;
    const QString path = *context;
    m_clickContexts.erase(context);
    ZBFileManager::revealFile(path, m_bus);
    Q_EMIT messageClicked();
}

void ZBNotificationCenter::notificationClosed(uint id, uint)
{
    m_clickContexts.remove(id);
}

void ZBNotificationCenter::capabilitiesAnswered(QDBusPendingCallWatcher *watcher)
{
    const QDBusPendingReply<QStringList> reply = *watcher;
    if (reply.isValid())
        m_bodyMarkup = reply.value().contains(QStringLiteral("body-markup"));
    watcher->deleteLater();
    // Without an answer the server is missing or broken; the notifications
    // still go out, so that the first failure is reported.
    m_capabilitiesKnown = true;
    const QList<Notification> waiting = std::exchange(m_waiting, {});
    for (const Notification &notification : waiting)
        send(notification);
}

void ZBNotificationCenter::notifyAnswered(QDBusPendingCallWatcher *watcher, const QString &clickContextPath)
{
    const QDBusPendingReply<uint> reply = *watcher;
    if (reply.isError())
        reportMissingServer(reply.error().message());
    else if (reply.isValid() && !clickContextPath.isEmpty())
        m_clickContexts.insert(reply.value(), clickContextPath);
    watcher->deleteLater();
}

void ZBNotificationCenter::reportMissingServer(const QString &why)
{
    if (m_missingServerReported)
        return;
    m_missingServerReported = true;
    qDebug().noquote() << "Desktop notifications are not shown:" << why;
}
