#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "support/testsite.h"
#include "web/zbdownloadtask.h"

using nvktest::TestSite;

// One transfer against the local site: the file arrives whole under its
// name, or the task fails with a reason and the name stays free.
class TestZBDownloadTask : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outcome_data();
    void outcome();

private:
    TestSite m_site;
    QByteArray m_file = TestSite::generatedBytes(0, 3'000'000);
};

void TestZBDownloadTask::outcome_data()
{
    const auto route = [this](const char *path, auto change) {
        TestSite::Route r;
        r.body = m_file;
        change(r);
        m_site.addRoute(path, r);
    };
    route("/file", [](auto &) {});
    route("/chunked", [](auto &r) { r.chunked = true; });
    route("/private", [](auto &r) { r.needCookie = "session=42"; });
    route("/slow", [](auto &r) { r.trickleBytes = 100'000, r.trickleMs = 10; });
    route("/whole", [](auto &r) { r.ignoreRange = true; });
    route("/drop", [](auto &r) { r.cutAfter = 1'000'000; });
    route("/stall", [](auto &r) { r.cutAfter = 1'000'000, r.stall = true; });
    for (const auto &[from, to] : {std::pair{"/r1", "/r2"}, {"/r2", "/file"}, {"/loop1", "/loop2"}, {"/loop2", "/loop1"}})
        route(from, [to](auto &r) { r.status = 302, r.location = to; });

    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QByteArray>("part");  // in place before the start; "full": a full disk
    QTest::addColumn<QString>("reason");   // empty: must succeed
    QTest::addColumn<bool>("partKept");
    QTest::newRow("plain") << "/file" << "" << QByteArray() << "" << false;
    QTest::newRow("chunked") << "/chunked" << "" << QByteArray() << "" << false;
    QTest::newRow("trickled") << "/slow" << "" << QByteArray() << "" << false;
    QTest::newRow("redirects") << "/r1" << "" << QByteArray() << "" << false;
    QTest::newRow("cookie sent") << "/private" << "" << QByteArray() << "" << false;
    QTest::newRow("resume on 206") << "/file" << "" << m_file.left(1000) << "" << false;
    QTest::newRow("start over on 200") << "/whole" << "" << QByteArray(1000, 'x') << "" << false;
    QTest::newRow("cookie missing") << "/private" << "" << QByteArray() << "403" << false;
    QTest::newRow("404") << "/nothing" << "" << QByteArray() << "404" << false;
    QTest::newRow("redirect loop") << "/loop1" << "" << QByteArray() << "loop" << false;
    QTest::newRow("drop mid-body") << "/drop" << "" << QByteArray() << "0.95 MB of 2.86 MB" << true;
    QTest::newRow("stall") << "/stall" << "" << QByteArray() << "nothing for 1 seconds" << true;
    QTest::newRow("folder is a file") << "/file" << "taken/sub" << QByteArray() << "cannot be written" << false;
    QTest::newRow("disk full") << "/file" << "" << QByteArray("full") << "No space left" << false;
}

void TestZBDownloadTask::outcome()
{
    QFETCH(QString, path);
    QFETCH(QString, folder);
    QFETCH(QByteArray, part);
    QFETCH(QString, reason);
    QTemporaryDir dir;
    QFile(dir.filePath("taken")).open(QIODevice::WriteOnly);
    const QString target = QDir(dir.filePath(folder)).filePath("clip.flv");
    QFile partFile(target + ".part");
    if (part == "full")
        QVERIFY(QFile::link("/dev/full", partFile.fileName()));
    else if (!part.isEmpty())
        QVERIFY(partFile.open(QIODevice::WriteOnly) && partFile.write(part) && (partFile.close(), true));

    ZBDownloadTask task(m_site.url(path), target);
    task.setStallTimeout(1000);
    task.setReferrer(QUrl("http://page.example/watch"));
    if (QByteArray(QTest::currentDataTag()) == "cookie sent")
        task.setCookies({QNetworkCookie("session", "42")});
    QSignalSpy finished(&task, &ZBDownloadTask::finished);
    QSignalSpy failed(&task, &ZBDownloadTask::failed);
    task.start();
    QVERIFY(QTest::qWaitFor([&] { return finished.size() + failed.size() > 0; }, 60000));
    const TestSite::Request request = m_site.lastRequest(path.toUtf8());
    if (!part.isEmpty() && part != "full")
        QCOMPARE(request.headers.value("range"), "bytes=1000-");
    if (reason.isEmpty())
    {
        QCOMPARE(finished.value(0).value(0).toString(), target);
        QFile file(target);
        QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == m_file);
        QCOMPARE(request.headers.value("user-agent"), "NorvikPlayer");
        QCOMPARE(request.headers.value("referer"), "http://page.example/watch");
    }
    else
    {
        const QString why = failed.value(0).value(0).toString();
        QVERIFY2(finished.isEmpty() && why.contains(reason), qPrintable(why));
        QVERIFY(!QFileInfo::exists(target));
        QFETCH(bool, partKept);
        QCOMPARE(QFileInfo(task.partPath()).isFile(), partKept);
    }
    QVERIFY(!QFileInfo(task.partPath()).isSymLink());
    QVERIFY(!ZBDownloadTask::runningTargets().contains(target));
}

QTEST_GUILESS_MAIN(TestZBDownloadTask)
#include "tst_zbdownloadtask.moc"
