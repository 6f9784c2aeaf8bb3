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
// downloads folder and a temporary library.
class TestZBDownloadManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void page_data();
    void page();
    void flashPackage();
    void resumeAfterDrop();
    void cancel_data();
    void cancel();

private:
    QByteArray media(const char *extension)
    {
        QFile file(nvktest::MediaFactory::clip(QLatin1String(extension)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    ZBDownloadItem *capture(const QString &title, const QList<QByteArray> &paths)
    {
        ZBDownloadItem *page = m_tree->commitPage(m_site.url("/page").toString());
        m_tree->receivePageTitle(title);
        for (const QByteArray &path : paths)
            m_tree->receivingUrl(host() + QString::fromLatin1(path));
        return page;
    }
    // Captured URLs are kept raw, without "http://".
    QString host() const { return QStringLiteral("127.0.0.1:%1").arg(m_site.url("/").port()); }
    QStringList filesOnDisk() const
    {
        QStringList files;
        for (QDirIterator it(m_downloads->path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
             it.hasNext();)
            files << it.next();
        return files;
    }
    ZBItem *libraryItem(const ZBDownloadItem *item) const
    {
        for (ZBItem *track : m_library->getItemsFromPlaylist(m_library->playlistByUUID(m_library->allTracksUUID())))
        {
            if (track->URL() == item->resourceUrl() || track->Path() == item->resourceDownloadPath())
                return track;
        }
        return nullptr;
    }
    bool waitUntilIdle()
    {
        return QTest::qWaitFor([this] { return !m_manager->downloadInProgress() && !m_manager->runningCount(); },
                               60000);
    }
    void checkIdle()
    {
        QCOMPARE(m_manager->numberOfDownloads() + m_manager->totalNumberOfDownloads(), 0);
        QCOMPARE(m_manager->totalExpectedBytes(), 0);
        QCOMPARE(m_manager->totalReceivedBytes(), 0);
        for (const QString &file : filesOnDisk())
            QVERIFY2(ZBDownloadPaths::isInside(m_downloads->path(), file) && !file.endsWith(".part"), qPrintable(file));
    }

    TestSite m_site;
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
    qRegisterMetaType<ZBDownloadItem *>();
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    m_downloads = std::make_unique<QTemporaryDir>();
    m_data = std::make_unique<nvktest::DataDir>();
    m_library = std::make_unique<ZBLibraryController>();
    QVERIFY(m_library->openStore(m_data->path()).ok);
    m_library->initLibrary();
    m_tree = std::make_unique<ZBCaptureTree>();
    m_manager = std::make_unique<ZBDownloadManager>(*m_tree, m_library.get());
    m_manager->setDownloadsFolder(m_downloads->path());
    m_manager->setStallTimeout(5000);
    m_jar.setCookiesFromUrl({QNetworkCookie("session", "42")}, m_site.url("/"));
    m_manager->setCookieJar(&m_jar);
    m_completed = std::make_unique<QSignalSpy>(m_manager.get(), &ZBDownloadManager::taskCompleted);
}

void TestZBDownloadManager::cleanup()
{
    m_manager.reset();
    m_tree.reset();
    m_library.reset();
}

void TestZBDownloadManager::page_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QByteArray>("missing"); // a child the site answers with 404
    QTest::newRow("three media") << "Holiday / Page?" << QByteArray();
    QTest::newRow("404 child") << "Holiday / Page?" << QByteArray("/media/b.flv");
    QTest::newRow("dots title") << "../.." << QByteArray();
    QTest::newRow("absolute title with NUL") << QStringLiteral("/etc/cron.d/x%1y").arg(QChar(0)) << QByteArray();
    QTest::newRow("backslashes in names") << "..\\..\\" << QByteArray("/media/..\\..\\c.mkv");
}

void TestZBDownloadManager::page()
{
    QFETCH(QString, title);
    QFETCH(QByteArray, missing);
    const QList<QByteArray> paths{"/media/a.mp4", "/media/b.flv",
                                  missing.contains('\\') ? missing : QByteArray("/media/c.mkv")};
    const QList<QByteArray> bodies{media("mp4"), media("flv"), media("mkv")};
    for (int i = 0; i < paths.size(); ++i)
    {
        TestSite::Route route;
        route.body = bodies[i];
        route.needCookie = "session=42";
        route.status = paths[i] == missing && !missing.contains('\\') ? 404 : 200;
        m_site.addRoute(m_site.url(QString::fromLatin1(paths[i])).path(QUrl::FullyEncoded).toLatin1(), route);
    }
    ZBDownloadItem *page = capture(title, paths);
    QVERIFY(page);
    QCOMPARE(page->numberOfChildrenWithFilter(m_tree->currentFilter()), 3);
    QVERIFY(m_manager->downloadItem(page));
    QCOMPARE(page->expectedResourcesCount(), 3);
    QVERIFY(m_manager->downloadInProgress());
    QVERIFY(!m_manager->downloadItem(page)); // planned once only
    QVERIFY(waitUntilIdle());
    checkIdle();

    const QString folder = page->resourceDownloadDir();
    QCOMPARE(QFileInfo(folder).absolutePath(), QFileInfo(m_downloads->path()).absoluteFilePath());
    QCOMPARE(m_completed->size(), 1);
    QCOMPARE(m_completed->at(0).at(1).toString(), folder);
    QCOMPARE(page->availableAction(), int(ZBDownloadItem::ShowInFinderAction));
    QCOMPARE(page->expectedResourcesCount(), page->receivedResourcesCount());
    const TestSite::Request request = m_site.lastRequest("/media/a.mp4");
    QCOMPARE(request.headers.value("referer"), m_site.url("/page").toEncoded());
    QCOMPARE(request.headers.value("user-agent"), "NorvikPlayer");
    for (int i = 0; i < 3; ++i)
    {
        const ZBDownloadItem *child = page->mediaResources().at(i);
        ZBItem *track = libraryItem(child);
        if (paths[i] == missing && !missing.contains('\\'))
        {
            QCOMPARE(child->availableAction(), int(ZBDownloadItem::DownloadAction));
            QVERIFY(!child->saved() && !track);
            QVERIFY(QDir(folder).entryList({"b*"}, QDir::Files).isEmpty());
            continue;
        }
        QFile file(child->resourceDownloadPath());
        QCOMPARE(QFileInfo(file).absolutePath(), folder);
        QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == bodies[i]);
        QCOMPARE(child->availableAction(), int(ZBDownloadItem::PlayAction));
        QVERIFY(track);
        QCOMPARE(track->Path(), child->resourceDownloadPath());
        QCOMPARE(track->URL(), child->resourceUrl());
        QCOMPARE(track->SourcePageTitle(), title);
        QVERIFY(track->Length().value_or(0) > 0);
    }
}

void TestZBDownloadManager::flashPackage()
{
    const QByteArray movie = "FWS\x08" + TestSite::generatedBytes(0, 5000);
    const QByteArray load = TestSite::generatedBytes(7, 200'000);
    m_site.addFile("/games/movie.swf", movie);
    TestSite::Route slow;
    slow.body = load, slow.trickleBytes = 50'000, slow.trickleMs = 20;
    m_site.addRoute("/games/assets/level.flv", slow);
    m_site.addFile("/music.mp4", load);
    m_site.addFile("/games/sounds/../../../../music.mp4", load);
    m_site.addFile("/clip.mp4", load);
    ZBDownloadItem *page = capture("Arcade", {"/games/movie.swf", "/clip.mp4"});
    ZBDownloadItem *swf = page->swfResources().value(0);
    QVERIFY(swf);
    m_tree->beginPreview(swf);
    m_tree->receivingUrl(host() + "/games/assets/level.flv");
    m_tree->receivingUrl(host() + "/games/sounds/../../../../music.mp4");
    m_tree->beginPreview(nullptr);
    QCOMPARE(swf->resources().size(), 2);

    QVERIFY(m_manager->downloadItem(page));
    QVERIFY(waitUntilIdle());
    checkIdle();
    // The site's layout below the movie's folder; ".." never climbs out of it.
    const QString package = page->resourceDownloadDir() + "/movie.swf";
    const QString site = package + "/127.0.0.1 " + QString::number(m_site.url("/").port());
    const QStringList saved{site + "/games/movie.swf", site + "/games/assets/level.flv", package + "/music.mp4"};
    QCOMPARE(swf->resourceDownloadPath(), saved[0]);
    QFile readme(site + "/games/readme.txt");
    QVERIFY(readme.open(QIODevice::ReadOnly));
    const QStringList listed = QString::fromUtf8(readme.readAll()).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(QSet<QString>(listed.begin(), listed.end()), QSet<QString>(saved.begin(), saved.end()));
    for (const QString &path : saved)
        QVERIFY2(QFileInfo(path).size() == (path == saved[0] ? movie.size() : load.size()), qPrintable(path));
    QCOMPARE(swf->availableAction(), int(ZBDownloadItem::PlayAction));
    const ZBItem *track = libraryItem(swf);
    QVERIFY(track);
    QCOMPARE(m_library->getResourcesFromBundle(track).size(), 3);
    // The page is done once, after its package: its notification comes last.
    QCOMPARE(page->availableAction(), int(ZBDownloadItem::ShowInFinderAction));
    QCOMPARE(m_completed->constLast().at(1).toString(), page->resourceDownloadDir());
    QCOMPARE(std::count_if(m_completed->cbegin(), m_completed->cend(),
                           [&](const QList<QVariant> &args) { return args.at(1) == page->resourceDownloadDir(); }),
             1);
}

void TestZBDownloadManager::resumeAfterDrop()
{
    const QByteArray body = media("mp4");
    TestSite::Route drop;
    drop.body = body, drop.cutAfter = body.size() / 3;
    m_site.addRoute("/media/a.mp4", drop);
    ZBDownloadItem *item = capture("Drop", {"/media/a.mp4"})->mediaResources().value(0);
    QSignalSpy failed(m_manager.get(), &ZBDownloadManager::itemFailed);
    QVERIFY(m_manager->downloadItem(item));
    QVERIFY(waitUntilIdle());
    QCOMPARE(failed.size(), 1);
    QCOMPARE(item->availableAction(), int(ZBDownloadItem::DownloadAction));
    const QString target = item->resourceDownloadPath();
    QVERIFY(!QFileInfo::exists(target) && !libraryItem(item));
    const qint64 kept = QFileInfo(target + ".part").size();
    QVERIFY(kept > 0);

    m_site.addFile("/media/a.mp4", body);
    QVERIFY(m_manager->downloadItem(item));
    QVERIFY(waitUntilIdle());
    QCOMPARE(m_site.lastRequest("/media/a.mp4").headers.value("range"), "bytes=" + QByteArray::number(kept) + '-');
    QFile file(item->resourceDownloadPath());
    QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == body);
    QVERIFY(libraryItem(item));
    checkIdle();
}

void TestZBDownloadManager::cancel_data()
{
    QTest::addColumn<QString>("what"); // cancelled: one file, the page, everything
    QTest::addColumn<bool>("package"); // the page has a Flash movie that loaded a file
    QTest::newRow("file") << "file" << true;
    QTest::newRow("page") << "page" << false;
    QTest::newRow("all") << "all" << true;
}

void TestZBDownloadManager::cancel()
{
    QFETCH(QString, what);
    QFETCH(bool, package);
    TestSite::Route slow;
    slow.body = media("mp4"), slow.trickleBytes = 1000, slow.trickleMs = 50;
    for (const char *path : {"/slow/a.mp4", "/slow/b.mp4", "/slow/movie.swf", "/slow/level.flv"})
        m_site.addRoute(path, slow);
    ZBDownloadItem *page = capture("Slow", {"/slow/a.mp4", "/slow/b.mp4"});
    ZBDownloadItem *file = page->mediaResources().at(0);
    if (package)
    {
        m_tree->beginPreview(m_tree->receivingUrl(host() + "/slow/movie.swf"));
        m_tree->receivingUrl(host() + "/slow/level.flv");
        m_tree->beginPreview(nullptr);
    }

    QVERIFY(m_manager->downloadItem(what == "file" ? file : page));
    QTRY_VERIFY_WITH_TIMEOUT(file->receivedBytesLength() > 0, 30000);
    if (what == "all")
        m_manager->cancelAll();
    else
        m_manager->cancelDownloadOfItem(what == "file" ? file : page);
    QCOMPARE(m_manager->runningCount(), 0);
    QVERIFY(!m_manager->downloadInProgress());
    checkIdle();
    QCOMPARE(filesOnDisk(), QStringList());
    QCOMPARE(file->availableAction(), int(ZBDownloadItem::DownloadAction));
    QVERIFY(!libraryItem(file));
    QVERIFY(m_completed->isEmpty());

    // Nothing of the cancelled batch is left over for the next one.
    if (what == "all")
        return;
    slow.trickleBytes = 0;
    for (const char *path : {"/slow/a.mp4", "/slow/b.mp4", "/slow/movie.swf", "/slow/level.flv"})
        m_site.addRoute(path, slow);
    ZBDownloadItem *again = what == "file" ? file : page;
    QVERIFY(m_manager->downloadItem(again));
    QVERIFY(waitUntilIdle());
    checkIdle();
    QCOMPARE(again->availableAction(), what == "file" ? int(ZBDownloadItem::PlayAction)
                                                      : int(ZBDownloadItem::ShowInFinderAction));
    QVERIFY(libraryItem(file));
}

QTEST_GUILESS_MAIN(TestZBDownloadManager)
#include "tst_zbdownloadmanager.moc"
