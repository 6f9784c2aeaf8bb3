#include "ui/app/zbscreensaverinhibitor.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDebug>

#include "settings/zbsettings.h"

namespace
{
QDBusMessage screenSaverCall(const QString &method)
{
    return QDBusMessage::createMethodCall(QLatin1String(ZBScreenSaverInhibitor::ServiceName),
                                          QLatin1String(ZBScreenSaverInhibitor::ObjectPath),
                                          QLatin1String(ZBScreenSaverInhibitor::ServiceName), method);
}
} // namespace

ZBScreenSaverInhibitor::ZBScreenSaverInhibitor(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
    , m_wanted(false)
    , m_inhibitPending(nullptr)
    , m_failed(false)
{
}

ZBScreenSaverInhibitor::~ZBScreenSaverInhibitor()
{
    if (m_cookie)
        m_bus.send(screenSaverCall(QStringLiteral("UnInhibit")) << *m_cookie);
    if (!m_inhibitPending)
        return;
    // The cookie still on its way is given back when it comes.
    m_inhibitPending->setParent(nullptr);
    m_inhibitPending->disconnect(this);
    QObject::connect(m_inhibitPending, &QDBusPendingCallWatcher::finished,
                     [bus = m_bus](QDBusPendingCallWatcher *watcher)
                     {
                         const QDBusPendingReply<uint> reply = *watcher;
                         if (reply.isValid())
                             QDBusConnection(bus).send(screenSaverCall(QStringLiteral("UnInhibit")) << reply.value());
                         watcher->deleteLater();
                     });
}

void ZBScreenSaverInhibitor::setInhibited(bool on, const QString &reason)
{
    if (on && !m_wanted)
    {
        m_failed = false;
        m_reason = reason;
    }
    m_wanted = on;
    reconcile();
}

void ZBScreenSaverInhibitor::reconcile()
{
    // One call at a time; the answer to Inhibit reconciles again, so a quick
    // on-off-on ends in the state asked for last.
    if (m_inhibitPending)
        return;
    if (!m_wanted && m_cookie)
    {
        m_bus.send(screenSaverCall(QStringLiteral("UnInhibit")) << *m_cookie);
        m_cookie.reset();
    }
    else if (m_wanted && !m_cookie && !m_failed)
    {
        if (!m_bus.isConnected())
        {
            m_failed = true;
            qDebug() << "The screen saver cannot be held off: no session bus";
            return;
        }
        const QDBusMessage call = screenSaverCall(QStringLiteral("Inhibit"))
                                  << ZBSettings::applicationName() << m_reason;
        m_inhibitPending = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
        connect(m_inhibitPending, &QDBusPendingCallWatcher::finished, this, &ZBScreenSaverInhibitor::inhibitAnswered);
    }
}

void ZBScreenSaverInhibitor::inhibitAnswered(QDBusPendingCallWatcher *watcher)
{
    const QDBusPendingReply<uint> reply = *watcher;
    watcher->deleteLater();
    m_inhibitPending = nullptr;
    if (reply.isValid())
    {
        m_cookie = reply.value();
    }
    else
    {
        m_failed = true;
        qDebug().noquote() << "The screen saver cannot be held off:" << reply.error().message();
    }
    reconcile();
}
