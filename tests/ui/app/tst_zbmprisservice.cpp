#include <cerrno>
#include <cstring>
#include <functional>
#include <unistd.h>
#include <vector>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>
#include <QThread>

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
    {
        const bool marshalled = it.value().canConvert<QDBusArgument>();
        result.insert(it.key(), marshalled ? qdbus_cast<QVariantMap>(it.value().value<QDBusArgument>()) : it.value());
    }
    return result;
}

QString trackId(const QVariantMap &metadata)
{
    return metadata.value(QStringLiteral("mpris:trackid")).value<QDBusObjectPath>().path();
}

ZBMediaKeyTarget::Track film()
{
    return {QStringLiteral("3F2504E0-4F89-11D3-9A0C-0305E82C3301"), QStringLiteral("Big Buck Bunny"),
            QStringLiteral("/media/films/big buck bunny.mp4"), 596.4583};
}
} // namespace

// Catches PropertiesChanged on a connection of its own.
class PropertiesListener : public QObject
{
    Q_OBJECT

public:
    QList<std::pair<QString, QVariantMap>> m_changes;

public Q_SLOTS:
    void propertiesChanged(const QString &interface, const QVariantMap &changed, const QStringList &)
    {
        m_changes.append({interface, unwrappedMap(changed)});
    }
};

// The player on a private session bus, driven the way a desktop drives it:
// every call crosses the bus from a connection of its own.
class TestZBMprisService : public QObject
{
    Q_OBJECT

private:
    // Sends from a thread and a connection of their own while this thread
    // answers for the service; the reply's arguments, or its error name. A
    // command sent as a signal, as `dbus-send` without --print-reply does,
    // has been handled once a call sent after it is answered.
    QVariantList call(const QString &interface, const QString &method, const QVariantList &arguments = {},
                      bool asSignal = false, QString *error = nullptr)
    {
        static int calls = 0;
        const QString name = QStringLiteral("client%1").arg(++calls);
        const QString service = m_service->serviceName();
        QDBusMessage reply;
        QThread *thread = QThread::create(
            [&]()
            {
                QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
                QDBusMessage message = asSignal ? QDBusMessage::createTargetedSignal(service, Path, interface, method)
                                                : QDBusMessage::createMethodCall(service, Path, interface, method);
                message.setArguments(arguments);
                if (asSignal)
                    bus.send(message);
                reply = bus.call(
                    asSignal
                        ? QDBusMessage::createMethodCall(service, Path, Properties, QStringLiteral("GetAll")) << Root
                        : message);
            });
        thread->start();
        while (!thread->wait(5))
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        delete thread;
        QDBusConnection::disconnectFromBus(name);
        if (error)
            *error = reply.type() == QDBusMessage::ErrorMessage ? reply.errorName() : QString();
        return reply.type() == QDBusMessage::ErrorMessage ? QVariantList() : reply.arguments();
    }

    QVariantMap allProperties(const QString &interface)
    {
        const QVariantList arguments = call(Properties, QStringLiteral("GetAll"), {interface});
        return arguments.isEmpty() ? QVariantMap() : unwrappedMap(qdbus_cast<QVariantMap>(arguments.first()));
    }

    std::unique_ptr<FakeTarget> m_target;
    std::unique_ptr<ZBMprisService> m_service;

private Q_SLOTS:
    void initTestCase()
    {
        if (!noBusReason.isEmpty())
            QSKIP(qPrintable(noBusReason));
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
        const QString name = QLatin1String(ZBMprisService::BusName);
        QCOMPARE(m_service->serviceName(), name);
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
        QVERIFY(!ZBMprisService(&otherTarget).registerOn(QDBusConnection(QStringLiteral("never connected"))));
        m_service.reset();
        QVERIFY(!bus->isServiceRegistered(name));
    }

    // The desktop must offer the files and links the desktop entry registers,
    // and no seek bar, since seeking is not offered.
    void describesThePlayerAsItsDesktopEntryDoes()
    {
        QString source = qEnvironmentVariable("NVK_SOURCE_DIR");
        if (source.isEmpty())
            source = QFileInfo(QStringLiteral(__FILE__)).absoluteDir().absoluteFilePath(QStringLiteral("../../.."));
        QFile entry(source + QStringLiteral("/resources/desktop/norvikplayer.desktop"));
        QVERIFY2(entry.open(QIODevice::ReadOnly | QIODevice::Text), qPrintable(entry.fileName()));
        const QString text = QString::fromUtf8(entry.readAll());
        QStringList types = QRegularExpression(QStringLiteral("^MimeType=(.*)$"), QRegularExpression::MultilineOption)
                                .match(text)
                                .captured(1)
                                .split(u';', Qt::SkipEmptyParts);
        QStringList schemes{QStringLiteral("file")};
        for (const QString &type : types.filter(QStringLiteral("x-scheme-handler/")))
            schemes << type.mid(17);
        types.removeIf([](const QString &type) { return type.startsWith(QLatin1String("x-scheme-handler/")); });
        const QVariantMap root = allProperties(Root);
        QCOMPARE(root.value(QStringLiteral("DesktopEntry")).toString() + QStringLiteral(".desktop"),
                 QFileInfo(entry).fileName());
        QCOMPARE(root.value(QStringLiteral("SupportedUriSchemes")).toStringList(), schemes);
        QStringList offered = root.value(QStringLiteral("SupportedMimeTypes")).toStringList();
        QVERIFY(offered.contains(QStringLiteral("application/x-norvikplayer-playlist")));
        offered.sort();
        types.sort();
        QCOMPARE(offered, types);
        QCOMPARE(allProperties(Player).value(QStringLiteral("CanSeek")), QVariant(false));
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
        QString error;
        call(interface, method, {}, false, &error);
        QCOMPARE(error, QString());
        QCOMPARE(m_target->m_reached, reached);
        m_target->m_reached.clear();
        call(interface, method, {}, true);
        QCOMPARE(m_target->m_reached, reached);
    }

    void opensFilesAndItsOwnUrlsAndSetsTheVolume()
    {
        for (const char *uri : {"file:///media/a%20b.mkv", "norvikplayer://www.example.com/x?y=1",
                                "https://example.com/v.mp4", "file:relative.mp4"})
        {
            const bool ours = QByteArray(uri).startsWith("file:///") || QByteArray(uri).startsWith("norvikplayer:");
            QString error;
            call(Player, QStringLiteral("OpenUri"), {QString::fromLatin1(uri)}, false, &error);
            QCOMPARE(error, ours ? QString() : QStringLiteral("org.freedesktop.DBus.Error.NotSupported"));
        }
        call(Player, QStringLiteral("OpenUri"), {QStringLiteral("file:///sent/as%20signal.flv")}, true);
        QCOMPARE(m_target->m_opened, QList<QStringList>({{QStringLiteral("/media/a b.mkv")},
                                                         {QStringLiteral("norvikplayer://www.example.com/x?y=1")},
                                                         {QStringLiteral("/sent/as signal.flv")}}));
        m_target->m_volume = 40;
        QCOMPARE(allProperties(Player).value(QStringLiteral("Volume")).toDouble(), 0.4);
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
        QTest::newRow("film") << State::Playing << std::optional(film())
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
        const QVariant position = player.value(QStringLiteral("Position"));
        QCOMPARE(position.metaType(), QMetaType::fromType<qlonglong>());
        QCOMPARE(position.toLongLong(), track ? Q_INT64_C(12250000) : Q_INT64_C(0));
        const QVariantMap metadata = player.value(QStringLiteral("Metadata")).toMap();
        const QVariant length = metadata.value(QStringLiteral("mpris:length"));
        QVERIFY(!length.isValid() || length.metaType() == QMetaType::fromType<qlonglong>());
        QStringList got{player.value(QStringLiteral("PlaybackStatus")).toString(),
                        metadata.value(QStringLiteral("xesam:title")).toString(),
                        metadata.value(QStringLiteral("xesam:url")).toString(), trackId(metadata),
                        length.isValid() ? QString::number(length.toLongLong()) : QString()};
        if (expected.contains(u'*'))
        {
            // A valid path that moves with the location.
            QVERIFY2(QRegularExpression(QStringLiteral("^/org/norvikplayer/track/\\w+$")).match(got[3]).hasMatch(),
                     qPrintable(got[3]));
            m_target->m_track->location = QStringLiteral("/media/clips/b.flv");
            QVERIFY(trackId(allProperties(Player).value(QStringLiteral("Metadata")).toMap()) != got[3]);
            got[3] = QStringLiteral("*");
        }
        QCOMPARE(got.join(u'|'), expected);
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
        QCOMPARE(listener.m_changes[0].first, Player);
        QCOMPARE(listener.m_changes[0].second,
                 QVariantMap({{QStringLiteral("PlaybackStatus"), QStringLiteral("Playing")}}));
        // Nothing new, nothing said: the next signal is the volume's own.
        m_target->m_position = 30;
        m_service->targetChanged();
        m_target->m_volume = 70;
        m_service->targetChanged();
        QTRY_COMPARE(listener.m_changes.size(), 2);
        QCOMPARE(listener.m_changes[1].second, QVariantMap({{QStringLiteral("Volume"), 0.7}}));
        // Several changes at once travel together.
        m_target->m_state = ZBMediaKeyTarget::PlaybackState::Stopped;
        m_target->m_track = film();
        m_service->targetChanged();
        QTRY_COMPARE(listener.m_changes.size(), 3);
        const QVariantMap changed = listener.m_changes[2].second;
        QCOMPARE(changed.keys(), QStringList({QStringLiteral("Metadata"), QStringLiteral("PlaybackStatus")}));
        QCOMPARE(changed.value(QStringLiteral("Metadata")).toMap().value(QStringLiteral("xesam:title")),
                 QVariant(QStringLiteral("Big Buck Bunny")));
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
            ::execv(QFile::encodeName(runner).constData(), arguments.data());
            noBusReason =
                QStringLiteral("cannot start dbus-run-session: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
        }
    }
    QCoreApplication app(argc, argv);
    TestZBMprisService test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_zbmprisservice.moc"
