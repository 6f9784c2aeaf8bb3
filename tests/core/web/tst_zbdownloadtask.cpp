#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "support/testsite.h"
#include "web/zbdownloadtask.h"

using nvktest::TestSite;

// One transfer against the local test site: the file arrives whole under its
// name, or the task fails with a reason and the name stays free.
class TestZBDownloadTask : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_dir = std::make_unique<QTemporaryDir>(); }
    void outcome_data();
    void outcome();
    void resume_data();
    void resume();
    void diskFullLeavesNothing();

private:
    // Runs the task to its end: the saved path, or "" with the reason.
    QString run(ZBDownloadTask &task, QString *reason = nullptr);

    TestSite m_site;
    QByteArray m_file = TestSite::generatedBytes(0, 3'000'000);
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestZBDownloadTask::initTestCase()
{
    QVERIFY(m_site.isListening());
    m_site.addFile("/file", m_file);
    TestSite::Route route;
    route.body = m_file;
    route.chunked = true;
    m_site.addRoute("/chunked", route);
    route.chunked = false;
    route.needCookie = "session=42";
    m_site.addRoute("/private", route);
    route.needCookie.clear();
    route.trickleBytes = 100'000;
    route.trickleMs = 10;
    m_site.addRoute("/slow", route);
    route.trickleBytes = 0;
    route.cutAfter = 1'000'000;
    m_site.addRoute("/drop", route);
    route.stall = true;
    m_site.addRoute("/stall", route);
    for (const auto &[from, to] : {std::pair{"/r1", "/r2"}, {"/r2", "/file"}, {"/loop1", "/loop2"}, {"/loop2", "/loop1"}})
    {
        TestSite::Route redirect;
        redirect.status = 302;
        redirect.location = to;
        m_site.addRoute(from, redirect);
    }
}

QString TestZBDownloadTask::run(ZBDownloadTask &task, QString *reason)
{
    QSignalSpy finished(&task, &ZBDownloadTask::finished);
    QSignalSpy failed(&task, &ZBDownloadTask::failed);
    task.start();
    if (!QTest::qWaitFor([&] { return finished.size() + failed.size() > 0; }, 60000))
        return QStringLiteral("no end");
    if (reason && !failed.isEmpty())
        *reason = failed.first().first().toString();
    return finished.isEmpty() ? QString() : finished.first().first().toString();
}

void TestZBDownloadTask::outcome_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("withCookie");
    QTest::addColumn<QString>("reason"); // empty: must succeed
    QTest::addColumn<bool>("partKept");
    QTest::newRow("plain") << "/file" << "" << false << "" << false;
    QTest::newRow("chunked") << "/chunked" << "" << false << "" << false;
    QTest::newRow("trickled") << "/slow" << "" << false << "" << false;
    QTest::newRow("redirects") << "/r1" << "" << false << "" << false;
    QTest::newRow("cookie sent") << "/private" << "" << true << "" << false;
    QTest::newRow("cookie missing") << "/private" << "" << false << "403" << false;
    QTest::newRow("404") << "/nothing" << "" << false << "404" << false;
    QTest::newRow("redirect loop") << "/loop1" << "" << false << "loop" << false;
    QTest::newRow("drop mid-body") << "/drop" << "" << false << "0.95 MB of 2.86 MB" << true;
    QTest::newRow("stall") << "/stall" << "" << false << "nothing for 1 seconds" << true;
    QTest::newRow("folder is a file") << "/file" << "occupied/sub" << false << "cannot be written" << false;
}

void TestZBDownloadTask::outcome()
{
    QFETCH(QString, path);
    QFETCH(QString, folder);
    QFETCH(QString, reason);
    QFile(m_dir->filePath("occupied")).open(QIODevice::WriteOnly);
    const QString target = QDir(m_dir->filePath(folder)).filePath("clip.flv");
    ZBDownloadTask task(m_site.url(path), target);
    task.setStallTimeout(1000);
    task.setReferrer(QUrl("http://page.example/watch"));
    if (QTest::currentDataTag() == QLatin1String("cookie sent"))
        task.setCookies({QNetworkCookie("session", "42")});
    QString why;
    const QString saved = run(task, &why);
    if (reason.isEmpty())
    {
        QCOMPARE(saved, target);
        QFile file(target);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll() == m_file);
        const TestSite::Request request = m_site.lastRequest(path.toUtf8());
        QCOMPARE(request.headers.value("user-agent"), "NorvikPlayer");
        QCOMPARE(request.headers.value("referer"), "http://page.example/watch");
    }
    else
    {
        QVERIFY2(saved.isEmpty() && why.contains(reason), qPrintable(why));
        QVERIFY(!QFileInfo::exists(target));
        QFETCH(bool, partKept);
        QCOMPARE(QFileInfo::exists(task.partPath()), partKept);
    }
    QVERIFY(!ZBDownloadTask::runningTargets().contains(target));
}

void TestZBDownloadTask::resume_data()
{
    QTest::addColumn<bool>("ignoreRange");
    QTest::newRow("206 continues") << false;
    QTest::newRow("200 starts over") << true;
}

void TestZBDownloadTask::resume()
{
    QFETCH(bool, ignoreRange);
    TestSite::Route route;
    route.body = m_file;
    route.ignoreRange = ignoreRange;
    m_site.addRoute("/resumable", route);
    const QString target = m_dir->filePath("clip.flv");
    QFile part(target + ".part");
    QVERIFY(part.open(QIODevice::WriteOnly));
    // A server that starts over must not leave the old bytes in front.
    part.write(ignoreRange ? QByteArray(1000, 'x') : m_file.left(1000));
    part.close();
    ZBDownloadTask task(m_site.url("/resumable"), target);
    QCOMPARE(run(task), target);
    QCOMPARE(m_site.lastRequest("/resumable").headers.value("range"), "bytes=1000-");
    QFile file(target);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll() == m_file);
    QVERIFY(!part.exists());
}

void TestZBDownloadTask::diskFullLeavesNothing()
{
    const QString target = m_dir->filePath("clip.flv");
    QVERIFY(QFile::link("/dev/full", target + ".part"));
    ZBDownloadTask task(m_site.url("/file"), target);
    QString why;
    QVERIFY(run(task, &why).isEmpty());
    QVERIFY2(why.contains("No space left"), qPrintable(why));
    QVERIFY(!QFileInfo::exists(target) && !QFileInfo(target + ".part").isSymLink());
}

QTEST_GUILESS_MAIN(TestZBDownloadTask)
#include "tst_zbdownloadtask.moc"
