#include <QDBusConnection>
#include <QDBusMessage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include "support/privatesessionbus.h"
#include "ui/web/zbnotificationcenter.h"

namespace
{
QString noBusReason;
const QString FakesBus = QStringLiteral("fakes");
const QString NotificationsPath = QLatin1String(ZBNotificationCenter::ObjectPath);

// The desktop's notification server, recording what it is asked to show.
class FakeNotifications : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QStringList m_capabilities;
    QVariantList m_notified; // the arguments of the last Notify
    int m_notifyCalls = 0;

public Q_SLOTS:
    QStringList GetCapabilities() { return m_capabilities; }
    uint Notify(const QString &app, uint, const QString &icon, const QString &summary, const QString &body,
                const QStringList &actions, const QVariantMap &hints, int timeout)
    {
        m_notified = {app, icon, summary, body, actions, hints, timeout};
        return 100 + ++m_notifyCalls;
    }
};

class FakeFileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList m_shown;

public Q_SLOTS:
    void ShowItems(const QStringList &uris, const QString &) { m_shown << uris; }
};

void sendFromServer(const QString &member, const QVariantList &arguments)
{
    QDBusMessage signal =
        QDBusMessage::createSignal(NotificationsPath, QLatin1String(ZBNotificationCenter::ServiceName), member);
    signal.setArguments(arguments);
    QDBusConnection(FakesBus).send(signal);
}
} // namespace

// Bubbles as a desktop receives them, on a private session bus whose
// notification server and file manager live in this process.
class TestZBNotificationCenter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        if (!noBusReason.isEmpty())
            QSKIP(qPrintable(noBusReason));
    }

    void postedBubbleIsShownAndItsClickRevealsTheFile_data()
    {
        QTest::addColumn<QStringList>("capabilities");
        QTest::addColumn<QString>("body");
        QTest::newRow("server reads markup")
            << QStringList{"actions", "body", "body-markup"} << "“Tom &amp; Jerry” done";
        QTest::newRow("plain-text server") << QStringList{"actions", "body"} << "“Tom & Jerry” done";
    }
    void postedBubbleIsShownAndItsClickRevealsTheFile()
    {
        QDBusConnection fakes = QDBusConnection::connectToBus(QDBusConnection::SessionBus, FakesBus);
        FakeNotifications server;
        FakeFileManager fileManager;
        QFETCH(QStringList, capabilities);
        QFETCH(QString, body);
        server.m_capabilities = capabilities;
        QVERIFY(fakes.registerObject(NotificationsPath, &server, QDBusConnection::ExportAllSlots));
        QVERIFY(fakes.registerObject("/org/freedesktop/FileManager1", &fileManager, QDBusConnection::ExportAllSlots));
        QVERIFY(fakes.registerService(QLatin1String(ZBNotificationCenter::ServiceName)));
        QVERIFY(fakes.registerService("org.freedesktop.FileManager1"));

        QTemporaryDir dir;
        const QString file = dir.filePath("Tom & Jerry.flv");
        QFile(file).open(QIODevice::WriteOnly);
        ZBNotificationCenter center;
        QSignalSpy clicked(&center, &ZBNotificationCenter::messageClicked);
        center.post(ZBNotificationCenter::TaskCompleted, "“Tom & Jerry” done", file);
        QTRY_COMPARE(server.m_notifyCalls, 1);
        const QVariantMap hints = server.m_notified.at(5).toMap();
        server.m_notified.removeAt(5);
        QCOMPARE(server.m_notified, (QVariantList{"Norvik Player", "norvikplayer", "Norvik Player", body,
                                                  QStringList{"default", "Open Folder"}, -1}));
        QCOMPARE(hints.value("desktop-entry"), QVariant("norvikplayer"));
        QCOMPARE(hints.value("urgency").toInt(), 1);
        QCOMPARE(hints.value(ZBNotificationCenter::NameHint), QVariant(ZBNotificationCenter::TaskCompleted));

        // Another program's bubble, and a click after ours was closed, are
        // not ours to answer.
        sendFromServer("ActionInvoked", {7u, "default"});
        center.post(ZBNotificationCenter::TaskCompleted, "second", file);
        QTRY_COMPARE(server.m_notifyCalls, 2);
        sendFromServer("NotificationClosed", {102u, 2u});
        sendFromServer("ActionInvoked", {102u, "default"});
        sendFromServer("ActionInvoked", {101u, "default"});
        QTRY_COMPARE(clicked.count(), 1);
        QTRY_COMPARE(fileManager.m_shown, QStringList{QUrl::fromLocalFile(file).toString()});

        fakes.unregisterService(QLatin1String(ZBNotificationCenter::ServiceName));
        fakes.unregisterService("org.freedesktop.FileManager1");
        QDBusConnection::disconnectFromBus(FakesBus);
    }

    void withoutServerNothingBlocks_data()
    {
        QTest::addColumn<bool>("sessionBus");
        QTest::newRow("no notification server") << true;
        QTest::newRow("no session bus") << false;
    }
    void withoutServerNothingBlocks()
    {
        QFETCH(bool, sessionBus);
        ZBNotificationCenter center(sessionBus ? QDBusConnection::sessionBus() : QDBusConnection("none"));
        static int reports = 0;
        reports = 0;
        const QtMessageHandler previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text)
                                   { reports += text.startsWith("Desktop notifications are not shown"); });
        center.post(ZBNotificationCenter::TaskCompleted, "one", "/nonexistent/one");
        center.post(ZBNotificationCenter::TaskCompleted, "two", "/nonexistent/two");
        // One line for the program's whole run, however many bubbles fail.
        QTRY_COMPARE(reports, 1);
        QTest::qWait(100);
        qInstallMessageHandler(previous);
        QCOMPARE(reports, 1);
    }
};

int main(int argc, char *argv[])
{
    noBusReason = nvktest::runOnPrivateSessionBus(argc, argv);
    QCoreApplication app(argc, argv);
    TestZBNotificationCenter test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_zbnotificationcenter.moc"
