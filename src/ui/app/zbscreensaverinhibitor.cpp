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
    , m_inhibitPending(false)
    , m_failed(false)
{
}

ZBScreenSaverInhibitor::~ZBScreenSaverInhibitor()
{
    // An Inhibit still under way when we go is dropped by the service itself:
    // it forgets the inhibitions of a client that leaves the bus.
    if (m_cookie)
        m_bus.send(screenSaverCall(QStringLiteral("UnInhibit")) << *m_cookie);
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
        m_inhibitPending = true;
        const QDBusMessage call =
            screenSaverCall(QStringLiteral("Inhibit")) << ZBSettings::applicationName() << m_reason;
        auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, &ZBScreenSaverInhibitor::inhibitAnswered);
    }
}

void ZBScreenSaverInhibitor::inhibitAnswered(QDBusPendingCallWatcher *watcher)
{
    const QDBusPendingReply<uint> reply = *watcher;
    watcher->deleteLater();
    m_inhibitPending = false;
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
