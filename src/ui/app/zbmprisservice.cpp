#include "ui/app/zbmprisservice.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QMetaObject>

#include "ui/app/zbmediakeytarget.h"
#include "ui/app/zbmprisplayeradaptor.h"
#include "ui/app/zbmprisrootadaptor.h"

ZBMprisService::ZBMprisService(ZBMediaKeyTarget *target, QObject *parent)
    : QObject(parent)
    , m_target(target)
    , m_player(new ZBMprisPlayerAdaptor(this))
    , m_root(new ZBMprisRootAdaptor(this))
    , m_connection(QString())
{
    m_announced = snapshot();
}

ZBMprisService::~ZBMprisService()
{
    if (m_serviceName.isEmpty())
        return;
    m_connection.unregisterService(m_serviceName);
    m_connection.unregisterObject(QLatin1String(ObjectPath));
}

bool ZBMprisService::registerOn(const QDBusConnection &connection)
{
    if (!connection.isConnected())
        return false;
    QDBusConnection bus = connection;
    if (!bus.registerObject(QLatin1String(ObjectPath), this, QDBusConnection::ExportAdaptors))
        return false;
    QString name = QLatin1String(BusName);
    if (!bus.registerService(name))
    {
        name += QStringLiteral(".instance%1").arg(QCoreApplication::applicationPid());
        if (!bus.registerService(name))
        {
            bus.unregisterObject(QLatin1String(ObjectPath));
            return false;
        }
    }
    // `dbus-send` without --type=method_call (or --print-reply) sends a
    // signal, not a method call, and desktop scripts and key bindings are
    // full of such lines. MPRIS defines no signals by these names, so one
    // that reaches us can only be meant as the command.
    const auto acceptAsSignals = [&bus, this](const char *interface, std::initializer_list<const char *> members) {
        for (const char *member : members)
            bus.connect(QString(), QLatin1String(ObjectPath), QLatin1String(interface), QLatin1String(member), this,
                        SLOT(commandSentAsSignal(QDBusMessage)));
    };
    acceptAsSignals(RootInterface, {"Raise", "Quit"});
    acceptAsSignals(PlayerInterface, {"Next", "Previous", "Pause", "PlayPause", "Stop", "Play", "OpenUri"});
    m_connection = bus;
    m_serviceName = name;
    m_announced = snapshot();
    return true;
}

void ZBMprisService::targetChanged()
{
    const Snapshot now = snapshot();
    QVariantMap changed;
    if (now.playbackStatus != m_announced.playbackStatus)
        changed.insert(QStringLiteral("PlaybackStatus"), now.playbackStatus);
    if (now.metadata != m_announced.metadata)
        changed.insert(QStringLiteral("Metadata"), now.metadata);
    if (now.volume != m_announced.volume)
        changed.insert(QStringLiteral("Volume"), now.volume);
    const bool fullscreenChanged = now.fullscreen != m_announced.fullscreen;
    m_announced = now;
    if (m_serviceName.isEmpty())
        return;
    const auto announce = [this](const char *interface, const QVariantMap &properties) {
        QDBusMessage signal =
            QDBusMessage::createSignal(QLatin1String(ObjectPath), QStringLiteral("org.freedesktop.DBus.Properties"),
                                       QStringLiteral("PropertiesChanged"));
        signal << QLatin1String(interface) << properties << QStringList();
        m_connection.send(signal);
    };
    if (!changed.isEmpty())
        announce(PlayerInterface, changed);
    if (fullscreenChanged)
        announce(RootInterface, {{QStringLiteral("Fullscreen"), now.fullscreen}});
}

void ZBMprisService::commandSentAsSignal(const QDBusMessage &message)
{
    QObject *adaptor = message.interface() == QLatin1String(RootInterface) ? m_root : m_player;
    const QByteArray member = message.member().toLatin1();
    const QVariantList arguments = message.arguments();
    if (member == "OpenUri")
    {
        if (arguments.size() == 1 && arguments.first().canConvert<QString>())
            m_player->OpenUri(arguments.first().toString());
        return;
    }
    QMetaObject::invokeMethod(adaptor, member.constData(), Qt::DirectConnection);
}

ZBMprisService::Snapshot ZBMprisService::snapshot() const
{
    return Snapshot{m_player->playbackStatus(), m_player->metadata(), m_player->volume(), m_target->isFullscreen()};
}
