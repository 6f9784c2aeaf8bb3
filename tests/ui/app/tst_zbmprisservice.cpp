#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <functional>
#include <unistd.h>
#include <vector>

#include "ui/app/zbmediakeytarget.h"
#include "ui/app/zbmprisservice.h"

namespace
{
// Set in the copy of this test that runs inside its own session bus.
constexpr char PrivateBusVariable[] = "NVK_TEST_PRIVATE_SESSION_BUS";
QString noBusReason;

const QString Properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString Root = QLatin1String(ZBMprisService::RootInterface);
const QString Player = QLatin1String(ZBMprisService::PlayerInterface);
const QString Path = QLatin1String(ZBMprisService::ObjectPath);

// Records what reaches the program; its state is whatever the test sets.
class FakeTarget : public ZBMediaKeyTarget
{
public:
    void mediaKeyPressed(int keyCode) override { m_keys << keyCode; }
    void stopRequested() override { ++m_stops; }
    void raiseRequested() override { ++m_raises; }
    void quitRequested() override { ++m_quits; }
    void openRequested(const QStringList &arguments) override { m_opened << arguments; }
    void volumeRequested(int percent) override { m_volumeRequests << percent; }

    PlaybackState playbackState() const override { return m_state; }
    std::optional<Track> currentTrack() const override { return m_track; }
    double position() const override { return m_position; }
    int volume() const override { return m_volume; }

    QList<int> m_keys;
    int m_stops = 0;
    int m_raises = 0;
    int m_quits = 0;
    QList<QStringList> m_opened;
    QList<int> m_volumeRequests;
    PlaybackState m_state = PlaybackState::Stopped;
    std::optional<Track> m_track;
    double m_position = 0;
    int m_volume = 100;
};

// A dictionary inside a variant arrives still marshalled.
QVariant unwrapped(const QVariant &value)
{
    if (value.canConvert<QDBusArgument>())
    {
        const QDBusArgument argument = value.value<QDBusArgument>();
        if (argument.currentSignature() == QLatin1String("a{sv}"))
            return qdbus_cast<QVariantMap>(argument);
        if (argument.currentSignature() == QLatin1String("as"))
            return qdbus_cast<QStringList>(argument);
    }
    return value;
}

QVariantMap unwrappedMap(const QVariantMap &map)
{
    QVariantMap result;
    for (auto it = map.begin(); it != map.end(); ++it)
        result.insert(it.key(), unwrapped(it.value()));
    return result;
}

// What a remote caller got back: the reply's arguments or its error name.
struct Answer
{
    QVariantList arguments;
    QString error;
};

QString sourceDir()
{
    const QString fromEnvironment = qEnvironmentVariable("NVK_SOURCE_DIR");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    return QFileInfo(QStringLiteral(__FILE__)).absoluteDir().absoluteFilePath(QStringLiteral("../../.."));
}
} // namespace

// Catches PropertiesChanged on a connection of its own.
class PropertiesListener : public QObject
{
    Q_OBJECT

public:
    struct Change
    {
        QString interface;
        QVariantMap changed;
        QStringList invalidated;
    };
    QList<Change> m_changes;

public Q_SLOTS:
    void propertiesChanged(const QString &interface, const QVariantMap &changed, const QStringList &invalidated)
    {
        m_changes << Change{interface, unwrappedMap(changed), invalidated};
    }
};

// The player on a private session bus, driven the way a desktop drives it:
// every call crosses the bus from a connection of its own.
class TestZBMprisService : public QObject
{
    Q_OBJECT

private:
    // Runs `work` on a thread of its own, with a connection of its own, while
    // this thread keeps answering for the service.
    static void overTheBus(const std::function<void(QDBusConnection &)> &work)
    {
        static int calls = 0;
        const QString name = QStringLiteral("client%1").arg(++calls);
        QThread *thread = QThread::create(
            [&work, name]()
            {
                QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
                work(bus);
            });
        thread->start();
        while (!thread->wait(5))
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        delete thread;
        QDBusConnection::disconnectFromBus(name);
    }

    Answer call(const QString &interface, const QString &method, const QVariantList &arguments = {})
    {
        Answer answer;
        const QString service = m_service->serviceName();
        overTheBus(
            [&](QDBusConnection &bus)
            {
                QDBusMessage message = QDBusMessage::createMethodCall(service, Path, interface, method);
                message.setArguments(arguments);
                const QDBusMessage reply = bus.call(message);
                if (reply.type() == QDBusMessage::ErrorMessage)
                    answer.error = reply.errorName();
                else
                    answer.arguments = reply.arguments();
            });
        return answer;
    }

    QVariant property(const QString &interface, const QString &name)
    {
        const Answer answer = call(Properties, QStringLiteral("Get"), {interface, name});
        if (!answer.error.isEmpty() || answer.arguments.isEmpty())
            return QVariant();
        return unwrapped(answer.arguments.first().value<QDBusVariant>().variant());
    }

    QVariantMap allProperties(const QString &interface)
    {
        const Answer answer = call(Properties, QStringLiteral("GetAll"), {interface});
        if (!answer.error.isEmpty() || answer.arguments.isEmpty())
            return {};
        return unwrappedMap(qdbus_cast<QVariantMap>(answer.arguments.first()));
    }

    QString setProperty(const QString &interface, const QString &name, const QVariant &value)
    {
        return call(Properties, QStringLiteral("Set"), {interface, name, QVariant::fromValue(QDBusVariant(value))})
            .error;
    }

    static ZBMediaKeyTarget::Track film()
    {
        return {QStringLiteral("3F2504E0-4F89-11D3-9A0C-0305E82C3301"), QStringLiteral("Big Buck Bunny"),
                QStringLiteral("/media/films/big buck bunny.mp4"), 596.4583};
    }

    std::unique_ptr<FakeTarget> m_target;
    std::unique_ptr<ZBMprisService> m_service;

private Q_SLOTS:
    void initTestCase()
    {
        if (!noBusReason.isEmpty())
            QSKIP(qPrintable(noBusReason));
        QVERIFY(QDBusConnection::sessionBus().isConnected());
    }

    void init()
    {
        m_target = std::make_unique<FakeTarget>();
        m_service = std::make_unique<ZBMprisService>(m_target.get());
        QVERIFY(m_service->registerOn(QDBusConnection::sessionBus()));
    }

    void cleanup()
    {
        m_service.reset();
        m_target.reset();
    }

    void takesTheMprisNameAndGivesItBack()
    {
        QCOMPARE(m_service->serviceName(), QLatin1String(ZBMprisService::BusName));
        QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
        QVERIFY(bus->isServiceRegistered(QLatin1String(ZBMprisService::BusName)));

        // A second copy of the program gets the per-process name MPRIS gives.
        FakeTarget otherTarget;
        QDBusConnection otherConnection =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("second copy"));
        {
            ZBMprisService other(&otherTarget);
            QVERIFY(other.registerOn(otherConnection));
            const QString expected = QLatin1String(ZBMprisService::BusName) + QStringLiteral(".instance") +
                                     QString::number(QCoreApplication::applicationPid());
            QCOMPARE(other.serviceName(), expected);
            QVERIFY(bus->isServiceRegistered(expected));
        }
        QDBusConnection::disconnectFromBus(QStringLiteral("second copy"));
        ZBMprisService unconnected(&otherTarget);
        QVERIFY(!unconnected.registerOn(QDBusConnection(QStringLiteral("never connected"))));
        QVERIFY(unconnected.serviceName().isEmpty());

        m_service.reset();
        QVERIFY(!bus->isServiceRegistered(QLatin1String(ZBMprisService::BusName)));
    }

    // What the desktop shows of the player must match what its desktop entry
    // registers, or the panel offers files and links the player refuses.
    void describesThePlayerAsItsDesktopEntryDoes()
    {
        QFile entry(sourceDir() + QStringLiteral("/resources/desktop/norvikplayer.desktop"));
        QVERIFY2(entry.open(QIODevice::ReadOnly | QIODevice::Text), qPrintable(entry.fileName()));
        QStringList entryTypes;
        for (const QByteArray &line : entry.readAll().split('\n'))
        {
            if (line.startsWith("MimeType="))
                entryTypes = QString::fromUtf8(line.mid(9)).split(u';', Qt::SkipEmptyParts);
        }
        QStringList schemes{QStringLiteral("file")};
        for (const QString &type : entryTypes)
        {
            if (type.startsWith(QLatin1String("x-scheme-handler/")))
                schemes << type.mid(17);
        }
        entryTypes.removeIf([](const QString &type) { return type.startsWith(QLatin1String("x-scheme-handler/")); });

        const QVariantMap root = allProperties(Root);
        QCOMPARE(root.value(QStringLiteral("Identity")).toString(), QStringLiteral("Norvik Player"));
        QCOMPARE(root.value(QStringLiteral("DesktopEntry")).toString() + QStringLiteral(".desktop"),
                 QFileInfo(entry).fileName());
        QCOMPARE(root.value(QStringLiteral("SupportedUriSchemes")).toStringList(), schemes);
        QStringList offered = root.value(QStringLiteral("SupportedMimeTypes")).toStringList();
        QVERIFY(offered.contains(QStringLiteral("application/x-norvikplayer-playlist")));
        offered.sort();
        entryTypes.sort();
        QCOMPARE(offered, entryTypes);

        // Seeking is not offered, so the desktop shows no seek bar that would
        // do nothing; everything else the player does.
        QVariantMap player = allProperties(Player);
        QCOMPARE(player.take(QStringLiteral("CanSeek")), QVariant(false));
        QCOMPARE(root.value(QStringLiteral("HasTrackList")), QVariant(false));
        for (const char *name : {"CanGoNext", "CanGoPrevious", "CanPlay", "CanPause", "CanControl"})
            QVERIFY2(player.value(QLatin1String(name)) == QVariant(true), name);
        for (const char *name : {"CanQuit", "CanRaise"})
            QVERIFY2(root.value(QLatin1String(name)) == QVariant(true), name);
        for (const char *name : {"Rate", "MinimumRate", "MaximumRate"})
            QVERIFY2(player.value(QLatin1String(name)) == QVariant(1.0), name);
    }

    void methodsReachTheProgram_data()
    {
        using State = ZBMediaKeyTarget::PlaybackState;
        QTest::addColumn<QString>("interface");
        QTest::addColumn<QString>("method");
        QTest::addColumn<State>("state");
        // The system's media key words: key type in bits 16 to 23 (play 16,
        // fast-forward 19, rewind 20), 0x0A for a key going down.
        QTest::addColumn<QList<int>>("keys");
        // Stop, Raise and Quit requests, in that order.
        QTest::addColumn<QList<int>>("requests");
        const int play = 0x100A00;
        const QList<int> none{0, 0, 0};
        QTest::newRow("PlayPause stopped") << Player << "PlayPause" << State::Stopped << QList<int>{play} << none;
        QTest::newRow("PlayPause playing") << Player << "PlayPause" << State::Playing << QList<int>{play} << none;
        QTest::newRow("Next") << Player << "Next" << State::Playing << QList<int>{0x130A00} << none;
        QTest::newRow("Previous") << Player << "Previous" << State::Paused << QList<int>{0x140A00} << none;
        QTest::newRow("Play stopped") << Player << "Play" << State::Stopped << QList<int>{play} << none;
        QTest::newRow("Play paused") << Player << "Play" << State::Paused << QList<int>{play} << none;
        QTest::newRow("Play playing") << Player << "Play" << State::Playing << QList<int>{} << none;
        QTest::newRow("Pause playing") << Player << "Pause" << State::Playing << QList<int>{play} << none;
        QTest::newRow("Pause paused") << Player << "Pause" << State::Paused << QList<int>{} << none;
        QTest::newRow("Pause stopped") << Player << "Pause" << State::Stopped << QList<int>{} << none;
        QTest::newRow("Stop") << Player << "Stop" << State::Playing << QList<int>{} << QList<int>{1, 0, 0};
        QTest::newRow("Raise") << Root << "Raise" << State::Playing << QList<int>{} << QList<int>{0, 1, 0};
        QTest::newRow("Quit") << Root << "Quit" << State::Playing << QList<int>{} << QList<int>{0, 0, 1};
    }

    void methodsReachTheProgram()
    {
        QFETCH(QString, interface);
        QFETCH(QString, method);
        QFETCH(ZBMediaKeyTarget::PlaybackState, state);
        QFETCH(QList<int>, keys);
        QFETCH(QList<int>, requests);
        m_target->m_state = state;
        QCOMPARE(call(interface, method).error, QString());
        QCOMPARE(m_target->m_keys, keys);
        QCOMPARE(QList<int>({m_target->m_stops, m_target->m_raises, m_target->m_quits}), requests);
    }

    void playbackStatusFollowsTheProgram_data()
    {
        QTest::addColumn<ZBMediaKeyTarget::PlaybackState>("state");
        QTest::addColumn<QString>("status");
        QTest::newRow("stopped") << ZBMediaKeyTarget::PlaybackState::Stopped << "Stopped";
        QTest::newRow("paused") << ZBMediaKeyTarget::PlaybackState::Paused << "Paused";
        QTest::newRow("playing") << ZBMediaKeyTarget::PlaybackState::Playing << "Playing";
    }

    void playbackStatusFollowsTheProgram()
    {
        QFETCH(ZBMediaKeyTarget::PlaybackState, state);
        QFETCH(QString, status);
        m_target->m_state = state;
        QCOMPARE(property(Player, QStringLiteral("PlaybackStatus")).toString(), status);
    }

    void metadataAndPositionDescribeTheTrack_data()
    {
        QTest::addColumn<bool>("hasTrack");
        QTest::addColumn<ZBMediaKeyTarget::Track>("track");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("url");
        // Empty: made from the location, as a valid path of its own.
        QTest::addColumn<QString>("trackId");
        // In microseconds; -1 when the length is unknown and left out.
        QTest::addColumn<qlonglong>("length");
        QTest::newRow("film") << true << film() << "Big Buck Bunny" << "file:///media/films/big%20buck%20bunny.mp4"
                              << "/org/norvikplayer/track/3F2504E0_4F89_11D3_9A0C_0305E82C3301"
                              << Q_INT64_C(596458300);
        QTest::newRow("untitled, unknown length")
            << true << ZBMediaKeyTarget::Track{QString(), QString(), QStringLiteral("/media/clips/a#1.flv"), 0}
            << "a#1.flv" << "file:///media/clips/a%231.flv" << "" << Q_INT64_C(-1);
        QTest::newRow("from the web")
            << true
            << ZBMediaKeyTarget::Track{QStringLiteral("web-1"), QStringLiteral("Clip"),
                                       QStringLiteral("http://example.com/v.flv?id=7"), 12}
            << "Clip" << "http://example.com/v.flv?id=7" << "/org/norvikplayer/track/web_1" << Q_INT64_C(12000000);
        QTest::newRow("no track") << false << ZBMediaKeyTarget::Track{} << "" << ""
                                  << "/org/mpris/MediaPlayer2/TrackList/NoTrack" << Q_INT64_C(-1);
    }

    void metadataAndPositionDescribeTheTrack()
    {
        QFETCH(bool, hasTrack);
        QFETCH(ZBMediaKeyTarget::Track, track);
        QFETCH(QString, title);
        QFETCH(QString, url);
        QFETCH(QString, trackId);
        QFETCH(qlonglong, length);
        if (hasTrack)
            m_target->m_track = track;
        m_target->m_position = 12.25;
        const QVariantMap metadata = property(Player, QStringLiteral("Metadata")).toMap();
        const auto idOf = [](const QVariantMap &map)
        {
            const QVariant id = map.value(QStringLiteral("mpris:trackid"));
            return id.metaType() == QMetaType::fromType<QDBusObjectPath>() ? id.value<QDBusObjectPath>().path()
                                                                           : QStringLiteral("<not a path>");
        };
        const QVariant position = property(Player, QStringLiteral("Position"));
        QCOMPARE(position.metaType(), QMetaType::fromType<qlonglong>());
        QCOMPARE(position.toLongLong(), hasTrack ? Q_INT64_C(12250000) : Q_INT64_C(0));
        if (!hasTrack)
        {
            QCOMPARE(metadata.keys(), QStringList{QStringLiteral("mpris:trackid")});
            QCOMPARE(idOf(metadata), trackId);
            return;
        }
        QCOMPARE(metadata.value(QStringLiteral("xesam:title")).toString(), title);
        QCOMPARE(metadata.value(QStringLiteral("xesam:url")).toString(), url);
        QCOMPARE(metadata.contains(QStringLiteral("mpris:length")), length >= 0);
        if (length >= 0)
        {
            QCOMPARE(metadata.value(QStringLiteral("mpris:length")).metaType(), QMetaType::fromType<qlonglong>());
            QCOMPARE(metadata.value(QStringLiteral("mpris:length")).toLongLong(), length);
        }
        if (!trackId.isEmpty())
        {
            QCOMPARE(idOf(metadata), trackId);
            return;
        }
        // Known by its location, the id stays put, and moves with the location.
        const QString id = idOf(metadata);
        QVERIFY2(QRegularExpression(QStringLiteral("^/org/norvikplayer/track/[A-Za-z0-9_]+$")).match(id).hasMatch(),
                 qPrintable(id));
        QCOMPARE(idOf(property(Player, QStringLiteral("Metadata")).toMap()), id);
        m_target->m_track->location = QStringLiteral("/media/clips/b.flv");
        QVERIFY(idOf(property(Player, QStringLiteral("Metadata")).toMap()) != id);
    }

    void volumeReadsAndWrites()
    {
        m_target->m_volume = 40;
        QCOMPARE(property(Player, QStringLiteral("Volume")).toDouble(), 0.4);
        QCOMPARE(setProperty(Player, QStringLiteral("Volume"), 0.25), QString());
        QCOMPARE(setProperty(Player, QStringLiteral("Volume"), 1.7), QString());
        QCOMPARE(setProperty(Player, QStringLiteral("Volume"), -0.5), QString());
        QCOMPARE(m_target->m_volumeRequests, QList<int>({25, 100, 0}));
    }

    void opensFilesAndItsOwnUrls()
    {
        for (const char *uri : {"file:///media/a%20b.mkv", "norvikplayer://www.example.com/x?y=1",
                                "https://example.com/v.mp4", "file:relative.mp4", "not a uri"})
        {
            const bool ours = QByteArray(uri).startsWith("file:///") || QByteArray(uri).startsWith("norvikplayer:");
            QCOMPARE(call(Player, QStringLiteral("OpenUri"), {QString::fromLatin1(uri)}).error,
                     ours ? QString() : QStringLiteral("org.freedesktop.DBus.Error.NotSupported"));
        }
        QCOMPARE(m_target->m_opened, QList<QStringList>({{QStringLiteral("/media/a b.mkv")},
                                                         {QStringLiteral("norvikplayer://www.example.com/x?y=1")}}));
    }

    void announcesWhatChanged()
    {
        QDBusConnection listenerBus =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("listener"));
        PropertiesListener listener;
        QVERIFY(listenerBus.connect(m_service->serviceName(), Path, Properties, QStringLiteral("PropertiesChanged"),
                                    &listener, SLOT(propertiesChanged(QString, QVariantMap, QStringList))));
        // The bus has taken the match rule once it answers a later call.
        QVERIFY(listenerBus.interface()->isServiceRegistered(m_service->serviceName()));

        m_target->m_state = ZBMediaKeyTarget::PlaybackState::Playing;
        m_service->targetChanged();
        QTRY_COMPARE(listener.m_changes.size(), 1);
        QCOMPARE(listener.m_changes[0].interface, Player);
        QCOMPARE(listener.m_changes[0].changed,
                 QVariantMap({{QStringLiteral("PlaybackStatus"), QStringLiteral("Playing")}}));
        QCOMPARE(listener.m_changes[0].invalidated, QStringList());

        m_target->m_track = film();
        m_service->targetChanged();
        QTRY_COMPARE(listener.m_changes.size(), 2);
        QCOMPARE(listener.m_changes[1].changed.keys(), QStringList{QStringLiteral("Metadata")});
        QCOMPARE(listener.m_changes[1].changed.value(QStringLiteral("Metadata")).toMap().value(QStringLiteral("xesam:title")),
                 QVariant(QStringLiteral("Big Buck Bunny")));

        // Nothing new, nothing said: the next signal is the volume's own.
        m_target->m_position = 30;
        m_service->targetChanged();
        m_target->m_volume = 70;
        m_service->targetChanged();
        QTRY_COMPARE(listener.m_changes.size(), 3);
        QCOMPARE(listener.m_changes[2].changed, QVariantMap({{QStringLiteral("Volume"), 0.7}}));

        // Several changes at once travel together.
        m_target->m_state = ZBMediaKeyTarget::PlaybackState::Stopped;
        m_target->m_track.reset();
        m_service->targetChanged();
        QTRY_COMPARE(listener.m_changes.size(), 4);
        QCOMPARE(listener.m_changes[3].changed.keys(),
                 QStringList({QStringLiteral("Metadata"), QStringLiteral("PlaybackStatus")}));
        QCOMPARE(listener.m_changes[3].changed.value(QStringLiteral("PlaybackStatus")).toString(),
                 QStringLiteral("Stopped"));

        listenerBus.disconnect(m_service->serviceName(), Path, Properties, QStringLiteral("PropertiesChanged"),
                               &listener, SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
        QDBusConnection::disconnectFromBus(QStringLiteral("listener"));
    }
};

int main(int argc, char *argv[])
{
    // Never the desktop's own bus: a test player there would show up in the
    // user's panel. Each run gets a bus of its own that ends with it.
    if (!qEnvironmentVariableIsSet(PrivateBusVariable))
    {
        const QString runner = QStandardPaths::findExecutable(QStringLiteral("dbus-run-session"));
        if (runner.isEmpty())
        {
            noBusReason = QStringLiteral("dbus-run-session (package dbus) is not installed: no private session bus");
        }
        else
        {
            qputenv(PrivateBusVariable, "1");
            // Resolved here: inside dbus-run-session the link names that program.
            char self[4096] = {};
            if (::readlink("/proc/self/exe", self, sizeof self - 1) < 0)
                std::strncpy(self, argv[0], sizeof self - 1);
            std::vector<char *> arguments{const_cast<char *>("dbus-run-session"), const_cast<char *>("--"), self};
            for (int i = 1; i < argc; ++i)
                arguments.push_back(argv[i]);
            arguments.push_back(nullptr);
            const QByteArray program = QFile::encodeName(runner);
            ::execv(program.constData(), arguments.data());
            noBusReason =
                QStringLiteral("cannot start dbus-run-session: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
        }
    }
    QCoreApplication app(argc, argv);
    TestZBMprisService test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_zbmprisservice.moc"
