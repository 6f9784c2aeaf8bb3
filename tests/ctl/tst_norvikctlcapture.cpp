#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTest>

#include "support/testsite.h"
#include "support/testsupport.h"

// "norvikctl capture" on a page naming its media every way a page can: the JSON
// under each filter, what --download saves, and how a page that does not load ends.
class TestNorvikCtlCapture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void capture_data();
    void capture();
    void download();

private:
    nvktest::TestSite m_site{true};     // its own thread: the test waits for the process
    QHash<QString, QByteArray> m_files; // by name, as served
};

void TestNorvikCtlCapture::initTestCase()
{
    m_site.addFile("/page.html",
                   "<title>Clips</title><video src='/v/clip.mp4'></video><video><source src='/v/other.m4v'></video>"
                   "<img src='/pic.png'><iframe src='/frame.html'></iframe><script>['/x/movie.flv', '/x/stream']"
                   ".forEach(u => { const r = new XMLHttpRequest(); r.open('GET', u); r.send(); })</script>",
                   "text/html");
    m_site.addFile("/frame.html", "<video src='/f/in.mp4'></video>", "text/html");
    for (const QByteArray path : {"/v/clip.mp4", "/v/other.m4v", "/f/in.mp4", "/x/movie.flv", "/x/stream", "/pic.png"})
    {
        const QString name = QString::fromLatin1(path).section('/', -1);
        m_files.insert(name, nvktest::TestSite::generatedBytes(0, 1000 + 1111 * m_files.size()));
        m_site.addFile(path, m_files.value(name), name == u"stream" ? "video/mp4" : "application/octet-stream");
    }
    nvktest::TestSite::Route missing; // an error page, as servers send them
    missing.status = 404, missing.contentType = "text/html";
    m_site.addRoute("/missing.html", missing);
}

void TestNorvikCtlCapture::capture_data()
{
    QTcpServer closed;
    QVERIFY(closed.listen(QHostAddress::LocalHost));
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QStringList>("listed"); // "name type bytes": as served, 0 for page files (never probed)
    QTest::addColumn<QString>("error");      // none: must succeed
    const QString page = m_site.url("/page.html").toString();
    const QStringList media{"clip.mp4 mp4 1000", "other.m4v m4v 2111", "in.mp4 mp4 3222", "movie.flv flv 4333",
                            "stream mp4 5444"};
    QTest::newRow("media") << page << "media" << media << "";
    QTest::newRow("all") << page << "all" << media + QStringList{"pic.png png 0", "page.html html 0"} << "";
    QTest::newRow("404") << m_site.url("/missing.html").toString() << "media" << QStringList{} << "answered HTTP 404";
    QTest::newRow("refused") << QStringLiteral("http://127.0.0.1:%1/").arg(closed.serverPort()) << "media"
                             << QStringList{} << "cannot connect";
}

void TestNorvikCtlCapture::capture()
{
    QFETCH(QString, url);
    QFETCH(QString, filter);
    QFETCH(QStringList, listed);
    QFETCH(QString, error);
    nvktest::DataDir data;
    const auto result = nvktest::runCtl(data.path(), {"capture", url, "--wait", "1", "--filter", filter, "--json"});
    QVERIFY2(result.code == (error.isEmpty() ? 0 : 1) && result.err.contains(error) &&
                 (error.isEmpty() || result.out.isEmpty()),
             qPrintable(result.err));
    if (!error.isEmpty())
        return;
    const QJsonArray pages = QJsonDocument::fromJson(result.out.toUtf8()).object().value("pages").toArray();
    QCOMPARE(pages.size(), 1);
    QStringList got; // the resources the site serves, with what was learnt of them
    for (const QJsonValue r : pages.first()["resources"].toArray())
        if (const QString name = r["url"].toString().section('/', -1); m_files.contains(name) || name == u"page.html")
            got << QStringLiteral("%1 %2 %3").arg(name, r["type"].toString()).arg(r["expectedBytes"].toInteger());
    QCOMPARE(QSet<QString>(got.begin(), got.end()), QSet<QString>(listed.begin(), listed.end()));
}

void TestNorvikCtlCapture::download()
{
    nvktest::DataDir data;
    const nvktest::CtlResult result =
        nvktest::runCtl(data.path(), {"capture", m_site.url("/page.html").toString(), "--wait", "1", "--download",
                                      "--to", data.filePath("saved")});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const QStringList paths = result.out.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(paths.size(), 5);
    for (const QString &path : paths)
    {
        QFile file(path);
        QVERIFY2(path.startsWith(data.filePath("saved/Clips/")) && file.open(QIODevice::ReadOnly), qPrintable(path));
        QCOMPARE(file.readAll(), m_files.value(QFileInfo(path).fileName(), m_files.value(QFileInfo(path).baseName())));
    }
}

QTEST_GUILESS_MAIN(TestNorvikCtlCapture)
#include "tst_norvikctlcapture.moc"
