#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QTest>
#include <QThread>

#include "support/privatesessionbus.h"
#include "ui/app/zbmediakeytarget.h"
#include "ui/app/zbmprisrootadaptor.h"
#include "ui/app/zbmprisservice.h"

namespace
{
const QString Properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString Root = QLatin1String(ZBMprisService::RootInterface);
const QString Player = QLatin1String(ZBMprisService::PlayerInterface);
const QString Path = QLatin1String(ZBMprisService::ObjectPath);
// The system's media key words: key type in bits 16 to 23, 0x0A for a key
// going down; and how the other requests are recorded beside them.
constexpr int PlayKey = 0x100A00, NextKey = 0x130A00, PreviousKey = 0x140A00;
constexpr int StopAsked = -1, RaiseAsked = -2, QuitAsked = -3;

// Records what reaches the program; its state is whatever the test sets.
class FakeTarget : public ZBMediaKeyTarget
{
public:
    void mediaKeyPressed(int keyCode) override { m_reached << keyCode; }
    void stopRequested() override { m_reached << StopAsked; }
    void raiseRequested() override { m_reached << RaiseAsked; }
    void quitRequested() override { m_reached << QuitAsked; }
    void openRequested(const QStringList &arguments) override { m_opened << arguments; }
    void volumeRequested(int percent) override { m_volumeRequests << percent; }
    PlaybackState playbackState() const override { return m_state; }
    std::optional<Track> currentTrack() const override { return m_track; }
    double position() const override { return m_position; }
    int volume() const override { return m_volume; }

    QList<int> m_reached;
    QList<QStringList> m_opened;
    QList<int> m_volumeRequests;
    PlaybackState m_state = PlaybackState::Stopped;
    std::optional<Track> m_track;
    double m_position = 0;
    int m_volume = 100;
};

// A dictionary inside a variant arrives still marshalled.
QVariantMap unwrappedMap(const QVariantMap &map)
{
    QVariantMap result;
    for (auto it = map.begin(); it != map.end(); ++it)
        result.insert(it.key(), it.value().canConvert<QDBusArgument>()
                                    ? qdbus_cast<QVariantMap>(it.value().value<QDBusArgument>())
                                    : it.value());
    return result;
}

} // namespace

// The player on a private session bus, driven the way a desktop drives it:
// every call crosses the bus from a connection of its own.
class TestZBMprisService : public QObject
{
    Q_OBJECT

private:
    // Sends from a thread and a connection of its own while this thread
    // answers for the service. A command sent as a signal, as `dbus-send`
    // without --print-reply does, has been handled once a call sent after it
    // is answered.
    QDBusMessage call(const QString &interface, const QString &method, const QVariantList &arguments = {},
                      bool asSignal = false)
    {
        static int calls = 0;
        const QString name = QStringLiteral("client%1").arg(++calls);
        const QString service = m_service->serviceName();
        QDBusMessage reply;
        const std::unique_ptr<QThread> thread(QThread::create(
            [&]()
            {
                QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
                QDBusMessage message = asSignal ? QDBusMessage::createTargetedSignal(service, Path, interface, method)
                                                : QDBusMessage::createMethodCall(service, Path, interface, method);
                message.setArguments(arguments);
                const QDBusMessage getAll = QDBusMessage::createMethodCall(service, Path, Properties, "GetAll") << Root;
                reply = bus.call(asSignal && bus.send(message) ? getAll : message);
            }));
        thread->start();
        while (!thread->wait(5))
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QDBusConnection::disconnectFromBus(name);
        return reply;
    }

    QVariantMap allProperties(const QString &interface)
    {
        const QVariantList arguments = call(Properties, QStringLiteral("GetAll"), {interface}).arguments();
        return arguments.isEmpty() ? QVariantMap() : unwrappedMap(qdbus_cast<QVariantMap>(arguments.first()));
    }

    std::unique_ptr<FakeTarget> m_target;
    std::unique_ptr<ZBMprisService> m_service;
    QList<std::pair<QString, QVariantMap>> m_changes;

public Q_SLOTS:
    // PropertiesChanged, caught on a connection of its own.
    void propertiesChanged(const QString &interface, const QVariantMap &changed, const QStringList &)
    {
        m_changes.append({interface, unwrappedMap(changed)});
    }

private Q_SLOTS:
    void init()
    {
        m_service.reset();
        m_target = std::make_unique<FakeTarget>();
        m_service = std::make_unique<ZBMprisService>(m_target.get());
        QVERIFY(m_service->registerOn(QDBusConnection::sessionBus()));
    }

    void takesTheMprisNameDescribesItselfAndGivesTheNameBack()
    {
        const QString name = QLatin1String(ZBMprisService::BusName);
        QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
        QVERIFY(bus->isServiceRegistered(name));
        // A second copy of the program gets the per-process name MPRIS gives.
        FakeTarget otherTarget;
        {
            ZBMprisService other(&otherTarget);
            QVERIFY(
                other.registerOn(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("2nd"))));
            QCOMPARE(other.serviceName(), name + QStringLiteral(".instance%1").arg(QCoreApplication::applicationPid()));
        }
        QDBusConnection::disconnectFromBus(QStringLiteral("2nd"));
        // The types are the desktop entry's (compared there); no seek bar,
        // since seeking is not offered.
        const QVariantMap root = allProperties(Root);
        QCOMPARE(root.value(QStringLiteral("DesktopEntry")), QVariant(QStringLiteral("norvikplayer")));
        QCOMPARE(root.value(QStringLiteral("SupportedMimeTypes")).toStringList(),
                 ZBMprisRootAdaptor::supportedMimeTypes());
        QCOMPARE(allProperties(Player).value(QStringLiteral("CanSeek")), QVariant(false));
        m_service.reset();
        QVERIFY(!bus->isServiceRegistered(name));
    }

    void commandsReachTheProgram_data()
    {
        using State = ZBMediaKeyTarget::PlaybackState;
        QTest::addColumn<QString>("method");
        QTest::addColumn<State>("state");
        QTest::addColumn<QList<int>>("reached");
        QTest::newRow("PlayPause") << "PlayPause" << State::Stopped << QList<int>{PlayKey};
        QTest::newRow("Next") << "Next" << State::Playing << QList<int>{NextKey};
        QTest::newRow("Previous") << "Previous" << State::Paused << QList<int>{PreviousKey};
        QTest::newRow("Play paused") << "Play" << State::Paused << QList<int>{PlayKey};
        QTest::newRow("Play playing") << "Play" << State::Playing << QList<int>{};
        QTest::newRow("Pause playing") << "Pause" << State::Playing << QList<int>{PlayKey};
        QTest::newRow("Pause stopped") << "Pause" << State::Stopped << QList<int>{};
        QTest::newRow("Stop") << "Stop" << State::Playing << QList<int>{StopAsked};
        QTest::newRow("Raise") << "Raise" << State::Playing << QList<int>{RaiseAsked};
        QTest::newRow("Quit") << "Quit" << State::Playing << QList<int>{QuitAsked};
    }

    // Each as a method call, then as a signal.
    void commandsReachTheProgram()
    {
        QFETCH(QString, method);
        QFETCH(ZBMediaKeyTarget::PlaybackState, state);
        QFETCH(QList<int>, reached);
        m_target->m_state = state;
        const QString interface = method == u"Raise" || method == u"Quit" ? Root : Player;
        QCOMPARE(call(interface, method).errorName(), QString());
        call(interface, method, {}, true);
        QCOMPARE(m_target->m_reached, reached + reached);
    }

    void opensFilesAndItsOwnUrlsAndSetsTheVolume()
    {
        for (const char *uri : {"file:///media/a%20b.mkv", "norvikplayer://www.example.com/x?y=1",
                                "https://example.com/v.mp4", "file:relative.mp4"})
        {
            const bool ours = QByteArray(uri).startsWith("file:///") || QByteArray(uri).startsWith("norvikplayer:");
            QCOMPARE(call(Player, QStringLiteral("OpenUri"), {QString::fromLatin1(uri)}).errorName(),
                     ours ? QString() : QStringLiteral("org.freedesktop.DBus.Error.NotSupported"));
        }
        call(Player, QStringLiteral("OpenUri"), {QStringLiteral("file:///sent/as%20signal.flv")}, true);
        QCOMPARE(m_target->m_opened, QList<QStringList>({{QStringLiteral("/media/a b.mkv")},
                                                         {QStringLiteral("norvikplayer://www.example.com/x?y=1")},
                                                         {QStringLiteral("/sent/as signal.flv")}}));
        for (const double volume : {0.25, 1.7, -0.5})
            call(Properties, QStringLiteral("Set"),
                 {Player, QStringLiteral("Volume"), QVariant::fromValue(QDBusVariant(volume))});
        QCOMPARE(m_target->m_volumeRequests, QList<int>({25, 100, 0}));
    }

    void statusMetadataAndPositionDescribeTheTrack_data()
    {
        using State = ZBMediaKeyTarget::PlaybackState;
        QTest::addColumn<State>("state");
        QTest::addColumn<std::optional<ZBMediaKeyTarget::Track>>("track");
        // Status|title|url|track id|length in microseconds; "*": a path made
        // from the location.
        QTest::addColumn<QString>("expected");
        QTest::newRow("film") << State::Playing
                              << std::optional(ZBMediaKeyTarget::Track{
                                     QStringLiteral("3F2504E0-4F89-11D3-9A0C-0305E82C3301"),
                                     QStringLiteral("Big Buck Bunny"),
                                     QStringLiteral("/media/films/big buck bunny.mp4"), 596.4583})
                              << "Playing|Big Buck Bunny|file:///media/films/big%20buck%20bunny.mp4|"
                                 "/org/norvikplayer/track/3F2504E0_4F89_11D3_9A0C_0305E82C3301|596458300";
        QTest::newRow("untitled, unknown length")
            << State::Paused
            << std::optional(ZBMediaKeyTarget::Track{QString(), QString(), QStringLiteral("/media/clips/a#1.flv"), 0})
            << "Paused|a#1.flv|file:///media/clips/a%231.flv|*|";
        QTest::newRow("no track") << State::Stopped << std::optional<ZBMediaKeyTarget::Track>()
                                  << "Stopped|||/org/mpris/MediaPlayer2/TrackList/NoTrack|";
    }

    void statusMetadataAndPositionDescribeTheTrack()
    {
        QFETCH(ZBMediaKeyTarget::PlaybackState, state);
        QFETCH(std::optional<ZBMediaKeyTarget::Track>, track);
        QFETCH(QString, expected);
        m_target->m_state = state;
        m_target->m_track = track;
        m_target->m_position = 12.25;
        const QVariantMap player = allProperties(Player);
        QCOMPARE(player.value(QStringLiteral("Position")),
                 QVariant::fromValue(track ? Q_INT64_C(12250000) : Q_INT64_C(0)));
        const QVariantMap metadata = player.value(QStringLiteral("Metadata")).toMap();
        const QVariant length = metadata.value(QStringLiteral("mpris:length"));
        QStringList got{player.value(QStringLiteral("PlaybackStatus")).toString(),
                        metadata.value(QStringLiteral("xesam:title")).toString(),
                        metadata.value(QStringLiteral("xesam:url")).toString(),
                        metadata.value(QStringLiteral("mpris:trackid")).value<QDBusObjectPath>().path(),
                        length.isValid() ? QString::number(length.value<qlonglong>()) : QString()};
        // A track without an id gets one of its own.
        if (expected.contains(u'*') && got[3].startsWith(QLatin1String("/org/norvikplayer/track/")))
            got[3] = QStringLiteral("*");
        QCOMPARE(got.join(u'|'), expected);
    }

    void announcesWhatChanged()
    {
        QDBusConnection listenerBus =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("listener"));
        QVERIFY(listenerBus.connect(m_service->serviceName(), Path, Properties, QStringLiteral("PropertiesChanged"),
                                    this, SLOT(propertiesChanged(QString, QVariantMap, QStringList))));
        // The bus has taken the match rule once it answers a later call.
        QVERIFY(listenerBus.interface()->isServiceRegistered(m_service->serviceName()));
        m_target->m_state = ZBMediaKeyTarget::PlaybackState::Playing;
        m_service->targetChanged();
        QTRY_COMPARE(m_changes.size(), 1);
        QCOMPARE(m_changes[0].first, Player);
        QCOMPARE(m_changes[0].second, QVariantMap({{QStringLiteral("PlaybackStatus"), QStringLiteral("Playing")}}));
        // Nothing new, nothing said; several changes at once travel together.
        m_target->m_position = 30;
        m_service->targetChanged();
        m_target->m_state = ZBMediaKeyTarget::PlaybackState::Stopped;
        m_target->m_volume = 70;
        m_service->targetChanged();
        QTRY_COMPARE(m_changes.size(), 2);
        QCOMPARE(m_changes[1].second, QVariantMap({{QStringLiteral("PlaybackStatus"), QStringLiteral("Stopped")},
                                                   {QStringLiteral("Volume"), 0.7}}));
        QDBusConnection::disconnectFromBus(QStringLiteral("listener"));
    }
};

NVK_PRIVATE_BUS_TEST_MAIN(TestZBMprisService)

#include "tst_zbmprisservice.moc"
