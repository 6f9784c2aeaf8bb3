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
const QString Service = QLatin1String(ZBNotificationCenter::ServiceName);
const QString Path = QLatin1String(ZBNotificationCenter::ObjectPath);

// The desktop's notification server and file manager, recording their calls.
class FakeDesktop : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QStringList m_capabilities;
    QList<QVariantList> m_notified;
    QStringList m_shown;

public Q_SLOTS:
    QStringList GetCapabilities() { return m_capabilities; }
    uint Notify(const QString &app, uint, const QString &icon, const QString &summary, const QString &body,
                const QStringList &actions, const QVariantMap &hints, int timeout)
    {
        m_notified.append({app, icon, summary, body, actions, hints, timeout});
        return 100 + m_notified.size();
    }
    // org.freedesktop.FileManager1's.
    void ShowItems(const QStringList &uris, const QString &) { m_shown << uris; }
};
} // namespace

// Bubbles as the desktop receives them, on a private session bus.
class TestZBNotificationCenter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bubbleIsShownAndItsClickRevealsTheFile_data()
    {
        QTest::addColumn<QStringList>("capabilities");
        QTest::addColumn<QString>("body");
        QTest::newRow("server reads markup") << QStringList{"actions", "body-markup"} << "“Tom &amp; Jerry” done";
        QTest::newRow("plain-text server") << QStringList{"actions"} << "“Tom & Jerry” done";
    }
    void bubbleIsShownAndItsClickRevealsTheFile()
    {
        QDBusConnection fakes = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "fakes");
        FakeDesktop desktop;
        QFETCH(QStringList, capabilities);
        desktop.m_capabilities = capabilities;
        QVERIFY(fakes.registerObject(Path, &desktop, QDBusConnection::ExportAllSlots));
        QVERIFY(fakes.registerObject("/org/freedesktop/FileManager1", "org.freedesktop.FileManager1", &desktop,
                                     QDBusConnection::ExportAllSlots));
        QVERIFY(fakes.registerService(Service) && fakes.registerService("org.freedesktop.FileManager1"));
        const auto fromServer = [&fakes](const char *member, uint id)
        {
            QDBusMessage signal = QDBusMessage::createSignal(Path, Service, member);
            fakes.send(signal << id << (member[0] == 'A' ? QVariant("default") : QVariant(2u)));
        };

        QTemporaryDir dir;
        const QString file = dir.filePath("Tom & Jerry.flv");
        QFile(file).open(QIODevice::WriteOnly);
        ZBNotificationCenter center;
        QSignalSpy clicked(&center, &ZBNotificationCenter::messageClicked);
        center.post(ZBNotificationCenter::TaskCompleted, "“Tom & Jerry” done", file);
        center.post(ZBNotificationCenter::TaskCompleted, "second", file);
        QTRY_COMPARE(desktop.m_notified.size(), 2);
        QVariantList first = desktop.m_notified.first();
        const QVariantMap hints = first.takeAt(5).toMap();
        QFETCH(QString, body);
        QCOMPARE(first, QVariantList({"Norvik Player", "norvikplayer", "Norvik Player", body,
                                      QStringList{"default", "Open Folder"}, -1}));
        QCOMPARE(hints, QVariantMap({{"desktop-entry", "norvikplayer"},
                                     {"urgency", QVariant::fromValue(uchar(1))},
                                     {ZBNotificationCenter::NameHint, ZBNotificationCenter::TaskCompleted}}));

        // Another program's bubble, and a click after ours was closed, are
        // not ours to answer.
        fromServer("ActionInvoked", 7);
        fromServer("NotificationClosed", 102);
        fromServer("ActionInvoked", 102);
        fromServer("ActionInvoked", 101);
        QTRY_COMPARE(desktop.m_shown, QStringList{QUrl::fromLocalFile(file).toString()});
        QCOMPARE(clicked.count(), 1);
        fakes.unregisterService(Service);
        fakes.unregisterService("org.freedesktop.FileManager1");
        QDBusConnection::disconnectFromBus("fakes");
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
        static int reports = 0;
        reports = 0;
        const QtMessageHandler previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text)
                                   { reports += text.startsWith("Desktop notifications are not shown"); });
        ZBNotificationCenter center(sessionBus ? QDBusConnection::sessionBus() : QDBusConnection("none"));
        center.post(ZBNotificationCenter::TaskCompleted, "one", "/nonexistent/one");
        center.post(ZBNotificationCenter::TaskCompleted, "two", "/nonexistent/two");
        // One line for the program's whole run, however many bubbles fail.
        QTRY_COMPARE(reports, 1);
        QTest::qWait(100);
        qInstallMessageHandler(previous);
        QCOMPARE(reports, 1);
    }
};

NVK_PRIVATE_BUS_TEST_MAIN(TestZBNotificationCenter)

#include "tst_zbnotificationcenter.moc"
