#include <memory>

#include <QDBusConnection>
#include <QTest>

#include "support/privatesessionbus.h"
#include "ui/app/zbscreensaverinhibitor.h"

namespace
{
QString noBusReason;

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
    void init()
    {
        if (!noBusReason.isEmpty())
            QSKIP(qPrintable(noBusReason));
    }

    void inhibitionsPairWithTheirCookies_data()
    {
        QTest::addColumn<QList<bool>>("requests");
        QTest::addColumn<bool>("waitForCookie");
        QTest::addColumn<bool>("destroy");
        QTest::addColumn<QStringList>("calls");
        const QString on = QStringLiteral("Inhibit Norvik Player: Full screen");
        QTest::newRow("on twice, then off")
            << QList<bool>{true, true, false} << true << false << QStringList{on, "UnInhibit 41"};
        QTest::newRow("off before the cookie came")
            << QList<bool>{true, false} << false << false << QStringList{on, "UnInhibit 41"};
        QTest::newRow("on, off, on before the cookie came")
            << QList<bool>{true, false, true} << false << false << QStringList{on};
        QTest::newRow("given back when destroyed")
            << QList<bool>{true} << true << true << QStringList{on, "UnInhibit 41"};
        QTest::newRow("off when never on") << QList<bool>{false} << false << true << QStringList{};
    }
    void inhibitionsPairWithTheirCookies()
    {
        QFETCH(QList<bool>, requests);
        QFETCH(bool, waitForCookie);
        QDBusConnection fakes = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "fakes");
        FakeScreenSaver screenSaver;
        QVERIFY(
            fakes.registerObject(ZBScreenSaverInhibitor::ObjectPath, &screenSaver, QDBusConnection::ExportAllSlots));
        QVERIFY(fakes.registerService(ZBScreenSaverInhibitor::ServiceName));
        auto inhibitor = std::make_unique<ZBScreenSaverInhibitor>();
        for (const bool on : requests)
        {
            inhibitor->setInhibited(on, "Full screen");
            if (waitForCookie)
                QTRY_VERIFY(inhibitor->isActive());
            waitForCookie = false;
        }
        QFETCH(bool, destroy);
        if (destroy)
            inhibitor.reset();
        QFETCH(QStringList, calls);
        QTRY_COMPARE(screenSaver.m_calls, calls);
        QTest::qWait(100);
        QCOMPARE(screenSaver.m_calls, calls);
        inhibitor.reset();
        fakes.unregisterService(ZBScreenSaverInhibitor::ServiceName);
        QDBusConnection::disconnectFromBus("fakes");
    }

    void withoutTheServiceNothingBreaks()
    {
        static int reports = 0;
        const QtMessageHandler previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text)
                                   { reports += text.startsWith("The screen saver cannot be held off"); });
        ZBScreenSaverInhibitor inhibitor;
        inhibitor.setInhibited(true, "Full screen");
        QTRY_COMPARE(reports, 1);
        // A missing service is not asked again until the next time it is turned on.
        inhibitor.setInhibited(true, "Full screen");
        inhibitor.setInhibited(false);
        inhibitor.setInhibited(true, "Full screen");
        QTRY_COMPARE(reports, 2);
        qInstallMessageHandler(previous);
        QVERIFY(!inhibitor.isActive());
    }
};

int main(int argc, char *argv[])
{
    noBusReason = nvktest::runOnPrivateSessionBus(argc, argv);
    QCoreApplication app(argc, argv);
    TestZBScreenSaverInhibitor test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_zbscreensaverinhibitor.moc"
