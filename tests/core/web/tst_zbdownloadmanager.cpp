#include <QDirIterator>
#include <QNetworkCookieJar>
#include <QSignalSpy>
#include <QTest>

#include "library/zbitem.h"
#include "library/zblibrarycontroller.h"
#include "support/mediafactory.h"
#include "support/testsite.h"
#include "support/testsupport.h"
#include "web/zbcapturetree.h"
#include "web/zbdownloaditem.h"
#include "web/zbdownloadmanager.h"
#include "web/zbdownloadpaths.h"

using nvktest::TestSite;

// Pages captured by hand, downloaded from the local site into a temporary
// downloads folder and a temporary library. Every file the site serves needs
// the page's cookie.
class TestZBDownloadManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_manager.reset(); }
    void page_data();
    void page();
    void flashPackage();
    void interrupt_data();
    void interrupt();

private:
    void serve(const QByteArray &path, const QByteArray &body, int status = 200, int trickle = 0)
    {
        TestSite::Route route;
        route.body = body, route.status = status, route.needCookie = "session=42";
        route.trickleBytes = trickle, route.trickleMs = 50;
        m_site.addRoute(m_site.url(QString::fromLatin1(path)).path(QUrl::FullyEncoded).toLatin1(), route);
    }
    // Captured as the browser hands them over: raw, without "http://".
    ZBDownloadItem *capture(const QString &path) { return m_tree->receivingUrl(m_host + path); }
    ZBDownloadItem *capturePage(const QString &title, const QStringList &paths)
    {
        ZBDownloadItem *page = m_tree->commitPage(m_site.url("/page").toString());
        m_tree->receivePageTitle(title);
        for (const QString &path : paths)
            capture(path);
        return page;
    }
    QStringList filesOnDisk() const
    {
        QStringList files;
        for (QDirIterator it(m_downloads->path(), QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
            files << it.next();
        return files;
    }
    ZBItem *libraryItem(const ZBDownloadItem *item) const
    {
        return m_library->getItemsFromLibraryByURL(item->resourceUrl()).value_or(ZBItemList()).value(0);
    }
    // Waits for the batch to end; it must leave its counters at 0 and only
    // files inside the downloads folder (a ".part" only where allowed).
    bool finishBatch(bool partAllowed = false)
    {
        if (!QTest::qWaitFor([this] { return !m_manager->downloadInProgress() && !m_manager->runningCount(); }, 60000))
            return false;
        bool ok = m_manager->numberOfDownloads() + m_manager->totalNumberOfDownloads() == 0 &&
                  m_manager->totalExpectedBytes() == 0 && m_manager->totalReceivedBytes() == 0;
        for (const QString &file : filesOnDisk())
            ok = ok && ZBDownloadPaths::isInside(m_downloads->path(), file) && (partAllowed || !file.endsWith(".part"));
        if (!ok)
            qWarning() << "left behind:" << m_manager->totalExpectedBytes() << m_manager->totalReceivedBytes();
        return ok;
    }
    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    TestSite m_site;
    QString m_host = QStringLiteral("127.0.0.1:%1").arg(m_site.url("/").port());
    QByteArray m_clip;
    std::unique_ptr<QTemporaryDir> m_downloads;
    std::unique_ptr<nvktest::DataDir> m_data;
    std::unique_ptr<ZBLibraryController> m_library;
    std::unique_ptr<ZBCaptureTree> m_tree;
    std::unique_ptr<ZBDownloadManager> m_manager;
    QNetworkCookieJar m_jar;
    std::unique_ptr<QSignalSpy> m_completed;
};

void TestZBDownloadManager::init()
{
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    m_clip = read(nvktest::MediaFactory::clip("mp4"));
    m_downloads = std::make_unique<QTemporaryDir>();
    m_data = std::make_unique<nvktest::DataDir>();
    m_library = std::make_unique<ZBLibraryController>();
    QVERIFY(m_library->openStore(m_data->path()).ok);
    m_library->initLibrary();
    m_tree = std::make_unique<ZBCaptureTree>();
    m_manager = std::make_unique<ZBDownloadManager>(*m_tree, m_library.get());
    m_manager->setDownloadsFolder(m_downloads->path());
    m_jar.setCookiesFromUrl({QNetworkCookie("session", "42")}, m_site.url("/"));
    m_manager->setCookieJar(&m_jar);
    m_completed = std::make_unique<QSignalSpy>(m_manager.get(), &ZBDownloadManager::taskCompleted);
}

void TestZBDownloadManager::page_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("folder"); // the page's folder below the downloads folder
    QTest::addColumn<QString>("third");  // the third child's path
    QTest::addColumn<int>("missing");    // the child the site answers with 404, -1 for none
    QTest::newRow("three media") << "Holiday / Page?" << "Holiday   Page " << "/c.mkv" << -1;
    QTest::newRow("404 child") << "Holiday / Page?" << "Holiday   Page " << "/c.mkv" << 1;
    QTest::newRow("dots") << "../.." << "untitled" << "/..\\..\\c.mkv" << -1;
    QTest::newRow("absolute, NUL") << QStringLiteral("/etc/x%1y").arg(QChar(0)) << " etc x y" << "/c.mkv" << -1;
}

void TestZBDownloadManager::page()
{
    QFETCH(QString, title);
    QFETCH(QString, third);
    QFETCH(int, missing);
    const QStringList paths{"/a.mp4", "/b.flv", third};
    QList<QByteArray> bodies;
    for (int i = 0; i < 3; ++i)
    {
        bodies << read(nvktest::MediaFactory::clip(paths[i].section('.', -1)));
        serve(paths[i].toUtf8(), bodies[i], i == missing ? 404 : 200);
    }
    ZBDownloadItem *page = capturePage(title, paths);
    QVERIFY(m_manager->downloadItem(page));
    QCOMPARE(page->expectedResourcesCount(), 3);
    QVERIFY(m_manager->downloadInProgress() && !m_manager->downloadItem(page)); // planned once only
    QVERIFY(finishBatch());

    QFETCH(QString, folder);
    QCOMPARE(page->resourceDownloadDir(), m_downloads->path() + '/' + folder);
    QCOMPARE(m_completed->size(), 1);
    QCOMPARE(m_completed->at(0).at(1).toString(), page->resourceDownloadDir());
    QCOMPARE(page->availableAction(), int(ZBDownloadItem::ShowInFinderAction));
    QCOMPARE(page->expectedResourcesCount(), page->receivedResourcesCount());
    const TestSite::Request request = m_site.lastRequest("/a.mp4");
    QCOMPARE(request.headers.value("referer"), m_site.url("/page").toEncoded());
    QCOMPARE(request.headers.value("user-agent"), "NorvikPlayer");
    for (int i = 0; i < 3; ++i)
    {
        const ZBDownloadItem *child = page->mediaResources().at(i);
        const ZBItem *track = libraryItem(child);
        if (i == missing)
        {
            // Nothing under its name, not in the library, ready to try again.
            QVERIFY(child->availableAction() == ZBDownloadItem::DownloadAction && !child->saved() && !track);
            QCOMPARE(QDir(page->resourceDownloadDir()).entryList({"b*"}, QDir::Files), QStringList());
            continue;
        }
        QVERIFY(track && read(child->resourceDownloadPath()) == bodies[i] && track->Length().value_or(0) > 0);
        QCOMPARE(child->availableAction(), int(ZBDownloadItem::PlayAction));
        QCOMPARE(QStringList({QFileInfo(track->Path()).absolutePath(), track->URL(), track->SourcePageTitle()}),
                 QStringList({page->resourceDownloadDir(), child->resourceUrl(), title}));
    }
}

void TestZBDownloadManager::flashPackage()
{
    const QByteArray movie = "FWS\x08" + TestSite::generatedBytes(0, 5000);
    serve("/games/movie.swf", movie);
    serve("/games/assets/level.flv", m_clip, 200, 20'000); // ends after the movie
    serve("/music.mp4", m_clip);
    serve("/clip.mp4", m_clip);
    ZBDownloadItem *page = capturePage("Arcade", {"/games/movie.swf", "/clip.mp4"});
    ZBDownloadItem *swf = page->swfResources().value(0);
    m_tree->beginPreview(swf);
    capture("/games/assets/level.flv");
    capture("/games/sounds/../../../../music.mp4");
    m_tree->beginPreview(nullptr);

    QVERIFY(m_manager->downloadItem(page));
    QVERIFY(finishBatch());
    // The site's layout below the movie's folder; ".." never climbs out of it.
    const QString package = page->resourceDownloadDir() + "/movie.swf";
    const QString site = package + "/127.0.0.1 " + QString::number(m_site.url("/").port()) + "/games";
    const QStringList saved{site + "/movie.swf", site + "/assets/level.flv", package + "/music.mp4"};
    QVERIFY(read(saved[0]) == movie && read(saved[1]) == m_clip && read(saved[2]) == m_clip);
    const QStringList listed = QString::fromUtf8(read(site + "/readme.txt")).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(QSet<QString>(listed.begin(), listed.end()), QSet<QString>(saved.begin(), saved.end()));
    QCOMPARE(swf->availableAction(), int(ZBDownloadItem::PlayAction));
    QCOMPARE(m_library->getResourcesFromBundle(libraryItem(swf)).size(), 3);
    // The package and then the page are done, once each.
    QCOMPARE(page->availableAction(), int(ZBDownloadItem::ShowInFinderAction));
    QCOMPARE(m_completed->size(), 2);
    QCOMPARE(m_completed->at(0).at(1).toString(), saved[0]);
    QCOMPARE(m_completed->at(1).at(1).toString(), page->resourceDownloadDir());
}

void TestZBDownloadManager::interrupt_data()
{
    QTest::addColumn<QString>("what"); // the server drops a file mid-body, or what is cancelled
    QTest::addColumn<bool>("package"); // the page has a Flash movie that loaded a file
    QTest::newRow("drop") << "drop" << false;
    QTest::newRow("cancel file") << "file" << true;
    QTest::newRow("cancel page") << "page" << false;
    QTest::newRow("cancel all") << "all" << true;
    QTest::newRow("page removed") << "remove" << true;
}

void TestZBDownloadManager::interrupt()
{
    QFETCH(QString, what);
    QFETCH(bool, package);
    const QList<QByteArray> paths{"/a.mp4", "/b.mp4", "/movie.swf", "/level.flv"};
    for (const QByteArray &path : paths)
        serve(path, m_clip, 200, 1000);
    if (what == "drop")
    {
        TestSite::Route drop;
        drop.body = m_clip, drop.cutAfter = m_clip.size() / 3;
        m_site.addRoute("/a.mp4", drop);
    }
    ZBDownloadItem *page = capturePage("Slow", {"/a.mp4", "/b.mp4"});
    ZBDownloadItem *file = page->mediaResources().at(0);
    if (package)
    {
        m_tree->beginPreview(capture("/movie.swf"));
        capture("/level.flv");
        m_tree->beginPreview(nullptr);
    }
    const bool single = what == "file" || what == "drop";
    QVERIFY(m_manager->downloadItem(single ? file : page));
    if (what != "drop")
    {
        QTRY_VERIFY_WITH_TIMEOUT(file->receivedBytesLength() > 0, 30000);
        if (what == "remove")
            m_tree->removePage(page);
        else if (what == "all")
            m_manager->cancelAll();
        else
            m_manager->cancelDownloadOfItem(single ? file : page);
        QCOMPARE(m_manager->runningCount(), 0);
    }
    QVERIFY(finishBatch(what == "drop"));
    // A failure is told with nothing to show; a cancel is not told.
    QCOMPARE(m_completed->size(), what == "drop" ? 1 : 0);
    QCOMPARE(m_completed->value(0).value(1).toString(), QString());
    QCOMPARE(filesOnDisk().size(), int(what == "drop")); // the part file of the drop only
    if (what == "remove" || what == "all")
        return;
    QVERIFY(file->availableAction() == ZBDownloadItem::DownloadAction && !libraryItem(file));
    QVERIFY(!QFileInfo::exists(file->resourceDownloadPath()));
    // Only a broken transfer keeps its part file, for the next try.
    const qint64 kept = QFileInfo(file->resourceDownloadPath() + ".part").size();
    QCOMPARE(kept > 0, what == "drop");

    // Nothing of the interrupted batch is left over for the next one.
    for (const QByteArray &path : paths)
        serve(path, m_clip);
    QVERIFY(m_manager->downloadItem(single ? file : page));
    QVERIFY(finishBatch());
    if (kept)
        QCOMPARE(m_site.lastRequest("/a.mp4").headers.value("range"), "bytes=" + QByteArray::number(kept) + '-');
    QVERIFY(read(file->resourceDownloadPath()) == m_clip && libraryItem(file));
    QCOMPARE(single ? file->availableAction() : page->availableAction(),
             int(single ? ZBDownloadItem::PlayAction : ZBDownloadItem::ShowInFinderAction));
}

QTEST_GUILESS_MAIN(TestZBDownloadManager)
#include "tst_zbdownloadmanager.moc"
