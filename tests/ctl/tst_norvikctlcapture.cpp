#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTest>

#include "support/testsite.h"
#include "support/testsupport.h"

// "norvikctl capture" on a page that names its media every way a page can:
// what the JSON lists under each filter, what --download saves, and how a
// page that does not load ends.
class TestNorvikCtlCapture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void capture_data();
    void capture();
    void download();
    void failure_data();
    void failure();

private:
    nvktest::TestSite m_site{true};     // its own thread: the test waits for the process
    QHash<QString, QByteArray> m_files; // by name, as served
};

void TestNorvikCtlCapture::initTestCase()
{
    const auto serve = [this](const QByteArray &path, const QByteArray &body, const QByteArray &type)
    {
        nvktest::TestSite::Route route;
        route.body = body;
        route.contentType = type;
        m_site.addRoute(path, route);
    };
    const QByteArray xhr = "<script>for (const u of ['/x/movie.flv', '/x/stream']) {"
                           " const r = new XMLHttpRequest(); r.open('GET', u); r.send(); }</script>";
    serve("/page.html",
          "<html><head><title>Clips</title></head><body><video src='/v/clip.mp4'></video>"
          "<video><source src='/v/other.m4v'></video><img src='/pic.png'>"
          "<iframe src='/frame.html'></iframe>" +
              xhr + "</body></html>",
          "text/html");
    serve("/frame.html", "<html><body><video src='/f/inframe.mp4'></video></body></html>", "text/html");
    int size = 1000;
    for (const char *path : {"/v/clip.mp4", "/v/other.m4v", "/f/inframe.mp4", "/x/movie.flv", "/pic.png"})
    {
        m_files.insert(QString::fromLatin1(path).section('/', -1), nvktest::TestSite::generatedBytes(0, size += 1111));
        m_site.addFile(path, m_files.value(QString::fromLatin1(path).section('/', -1)));
    }
    m_files.insert("stream", nvktest::TestSite::generatedBytes(7, 4321));
    serve("/x/stream", m_files.value("stream"), "video/mp4");
    nvktest::TestSite::Route missing;
    missing.status = 404;
    missing.body = "<html><body>Not here</body></html>";
    missing.contentType = "text/html";
    m_site.addRoute("/missing.html", missing);
}

void TestNorvikCtlCapture::capture_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QStringList>("listed"); // "name type [bytes]", as served when not given
    QTest::addColumn<QStringList>("unlisted");
    const QStringList media{"clip.mp4 mp4", "other.m4v m4v", "inframe.mp4 mp4", "movie.flv flv", "stream mp4"};
    QTest::newRow("media") << "media" << media << QStringList{"pic.png", "page.html", "frame.html"};
    QTest::newRow("all") << "all" << media + QStringList{"pic.png png 0", "page.html html 0"} << QStringList{};
    QTest::newRow("flash") << "flash" << QStringList{} << QStringList{"clip.mp4", "movie.flv"};
}

void TestNorvikCtlCapture::capture()
{
    QFETCH(QString, filter);
    QFETCH(QStringList, listed);
    QFETCH(QStringList, unlisted);
    nvktest::DataDir data;
    const nvktest::CtlResult result = nvktest::runCtl(
        data.path(), {"capture", m_site.url("/page.html").toString(), "--wait", "1", "--filter", filter, "--json"});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const QJsonArray pages = QJsonDocument::fromJson(result.out.toUtf8()).object().value("pages").toArray();
    QCOMPARE(pages.size(), 1);
    QCOMPARE(pages.first()["title"].toString(), "Clips");
    QHash<QString, QJsonObject> found;
    for (const QJsonValue resource : pages.first()["resources"].toArray())
        found.insert(resource["url"].toString().section('/', -1), resource.toObject());
    for (const QString &row : listed)
    {
        const QString name = row.section(' ', 0, 0);
        QVERIFY2(found.contains(name), qPrintable(name + " missing from " + result.out));
        QCOMPARE(found.value(name)["type"].toString(), row.section(' ', 1, 1));
        const qint64 bytes = row.count(' ') == 2 ? row.section(' ', 2).toLongLong() : m_files.value(name).size();
        QCOMPARE(found.value(name)["expectedBytes"].toInteger(), bytes);
    }
    for (const QString &name : unlisted)
        QVERIFY2(!found.contains(name), qPrintable(name + " listed in " + result.out));
}

void TestNorvikCtlCapture::download()
{
    nvktest::DataDir data;
    const QString to = data.filePath("saved");
    const nvktest::CtlResult result = nvktest::runCtl(
        data.path(), {"capture", m_site.url("/page.html").toString(), "--wait", "1", "--download", "--to", to});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const QStringList paths = result.out.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(paths.size(), 5);
    for (const QString &path : paths)
    {
        QVERIFY2(path.startsWith(to + "/Clips/"), qPrintable(path));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString name = QFileInfo(path).fileName();
        QCOMPARE(file.readAll(), m_files.value(m_files.contains(name) ? name : QFileInfo(path).completeBaseName()));
    }
}

void TestNorvikCtlCapture::failure_data()
{
    QTcpServer closed;
    QVERIFY(closed.listen(QHostAddress::LocalHost));
    const QString refused = QStringLiteral("http://127.0.0.1:%1/").arg(closed.serverPort());
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("message");
    QTest::newRow("404") << m_site.url("/missing.html").toString() << "answered HTTP 404";
    QTest::newRow("refused") << refused << "cannot connect";
}

void TestNorvikCtlCapture::failure()
{
    QFETCH(QString, url);
    QFETCH(QString, message);
    nvktest::DataDir data;
    const nvktest::CtlResult result = nvktest::runCtl(data.path(), {"capture", url, "--json"});
    QCOMPARE(result.code, 1);
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    QVERIFY(result.out.isEmpty());
}

QTEST_GUILESS_MAIN(TestNorvikCtlCapture)
#include "tst_norvikctlcapture.moc"
