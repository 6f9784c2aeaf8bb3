#include <memory>

#include <QDBusConnection>
#include <QTest>

#include "support/privatesessionbus.h"
#include "ui/app/zbscreensaverinhibitor.h"

namespace
{
// The desktop's screen saver: hands out cookies and records who holds it off.
class FakeScreenSaver : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    QStringList m_calls;

public Q_SLOTS:
    uint Inhibit(const QString &application, const QString &reason)
    {
        m_calls << QStringLiteral("Inhibit %1: %2").arg(application, reason);
        return 40 + m_calls.size();
    }
    void UnInhibit(uint cookie) { m_calls << QStringLiteral("UnInhibit %1").arg(cookie); }
};
} // namespace

// On a private session bus whose screen saver lives in this process.
class TestZBScreenSaverInhibitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void inhibitionsPairWithTheirCookies_data()
    {
        QTest::addColumn<QList<bool>>("requests");
        QTest::addColumn<bool>("settled"); // the cookie came before the next request
        QTest::addColumn<bool>("destroy");
        QTest::addColumn<QStringList>("calls");
        QTest::addColumn<bool>("service");
        const QString on = "Inhibit Norvik Player: Full screen", off = "UnInhibit 41";
        QTest::newRow("on twice, off") << QList{true, true, false} << true << false << QStringList{on, off} << true;
        QTest::newRow("off before the cookie") << QList{true, false} << false << false << QStringList{on, off} << true;
        QTest::newRow("on, off, on at once") << QList{true, false, true} << false << false << QStringList{on} << true;
        QTest::newRow("given back when destroyed") << QList{true} << true << true << QStringList{on, off} << true;
        QTest::newRow("off, never on") << QList{false} << false << true << QStringList{} << true;
        QTest::newRow("no screen saver service") << QList{true, false, true} << false << true << QStringList{} << false;
    }
    void inhibitionsPairWithTheirCookies()
    {
        QFETCH(QList<bool>, requests);
        QFETCH(bool, settled);
        QFETCH(bool, destroy);
        QFETCH(QStringList, calls);
        QFETCH(bool, service);
        QDBusConnection fakes = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "fakes");
        FakeScreenSaver screenSaver;
        QVERIFY(
            fakes.registerObject(ZBScreenSaverInhibitor::ObjectPath, &screenSaver, QDBusConnection::ExportAllSlots));
        QVERIFY(!service || fakes.registerService(ZBScreenSaverInhibitor::ServiceName));
        auto inhibitor = std::make_unique<ZBScreenSaverInhibitor>();
        for (qsizetype i = 0; i < requests.size(); ++i)
        {
            inhibitor->setInhibited(requests[i], "Full screen");
            if (settled && i == 0)
                QTRY_VERIFY(inhibitor->isActive());
        }
        if (destroy)
            inhibitor.reset();
        QTRY_COMPARE(screenSaver.m_calls, calls);
        QTest::qWait(100);
        QCOMPARE(screenSaver.m_calls, calls);
        fakes.unregisterService(ZBScreenSaverInhibitor::ServiceName);
        QDBusConnection::disconnectFromBus("fakes");
    }
};

NVK_PRIVATE_BUS_TEST_MAIN(TestZBScreenSaverInhibitor)

#include "tst_zbscreensaverinhibitor.moc"
