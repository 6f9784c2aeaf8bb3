#include <QTemporaryDir>
#include <QTest>

#include "web/zbdownloadpaths.h"

// Names made from titles and URLs: whatever a page sends, files land inside
// the downloads folder under names the file system takes.
class TestZBDownloadPaths : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void component_data();
    void component();
    void hostileInputStaysInside_data();
    void hostileInputStaysInside();
    void fileNameFromURL_data();
    void fileNameFromURL();
    void uniqueNames();
};

void TestZBDownloadPaths::component_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("illegal symbols") << "a/b:c?" << "a b c ";
    QTest::newRow("quote") << "it's" << "it s";
    QTest::newRow("backslash and controls") << QString("x\\y\tz") + QChar(0) + "w" << "x y z w";
    QTest::newRow("parent") << ".." << "untitled";
    QTest::newRow("dots and blanks") << " . ." << "untitled";
    QTest::newRow("empty") << "" << "untitled";
}

void TestZBDownloadPaths::component()
{
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QCOMPARE(ZBDownloadPaths::safeComponent(name), expected);
}

void TestZBDownloadPaths::hostileInputStaysInside_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("url");
    QTest::newRow("parents") << "../../etc" << "http://h/../../../etc/x.swf";
    QTest::newRow("absolute") << "/etc/passwd" << "http:///etc/passwd";
    QTest::newRow("backslashes") << "..\\..\\x" << "http://h/..\\..\\..\\x/y.swf";
    QTest::newRow("long multibyte") << QString(300, QChar(0x00e9)) + ".flv" << "http://" + QString(600, 'a') + "/b.swf";
}

void TestZBDownloadPaths::hostileInputStaysInside()
{
    QFETCH(QString, title);
    QFETCH(QString, url);
    QTemporaryDir downloads;
    const QString pageFolder = ZBDownloadPaths::folderForTitles(downloads.path(), {title, title});
    const QString package = ZBDownloadPaths::flashPackageFolder(pageFolder, title, url);
    const QString file = ZBDownloadPaths::addSuffixForDownload(title, QStringLiteral("flv"), package);
    for (const QString &path : {pageFolder, package, file})
    {
        QVERIFY2(ZBDownloadPaths::isInside(downloads.path(), path), qPrintable(path));
        for (const QString &part : path.mid(downloads.path().size() + 1).split('/'))
        {
            QVERIFY(part != ".." && !part.isEmpty());
            QVERIFY(part.toUtf8().size() <= ZBDownloadPaths::maxNameBytes());
            QCOMPARE(QString::fromUtf8(part.toUtf8()), part); // cut on a character boundary
        }
    }
    QVERIFY(file.endsWith(".flv"));
    QVERIFY(QFileInfo(file).fileName().toUtf8().size() + 5 <= ZBDownloadPaths::maxNameBytes()); // room for ".part"
}

void TestZBDownloadPaths::fileNameFromURL_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << "http://h/a/clip.mp4?x=1;y" << "clip.mp4";
    QTest::newRow("folder") << "http://h/dir/" << "index.html";
    QTest::newRow("get_video") << "http://h/GET_VIDEO?id=2" << "T.flv";
    QTest::newRow("h264 stream") << "http://h/s.h264" << "T.flv";
    QTest::newRow("video service") << "http://r4.googlevideo.com/videoplayback?id=1" << "T.flv";
    QTest::newRow("url in url") << "http://h/go?to=http://x/y" << "go";
}

void TestZBDownloadPaths::fileNameFromURL()
{
    QFETCH(QString, url);
    QFETCH(QString, expected);
    QCOMPARE(ZBDownloadPaths::getFileNameFromURL(url, "T"), expected);
}

void TestZBDownloadPaths::uniqueNames()
{
    QTemporaryDir folder;
    const QString first = ZBDownloadPaths::addSuffixForDownload("clip", "flv", folder.path());
    QCOMPARE(first, folder.filePath("clip.flv"));
    QFile(first).open(QIODevice::WriteOnly);
    QCOMPARE(ZBDownloadPaths::addSuffixForDownload("clip", "flv", folder.path()), folder.filePath("clip2.flv"));
    // A running download holds its name before the file exists.
    QCOMPARE(ZBDownloadPaths::addSuffixForDownload("clip", "flv", folder.path(), {folder.filePath("clip2.flv")}),
             folder.filePath("clip3.flv"));
}

QTEST_GUILESS_MAIN(TestZBDownloadPaths)
#include "tst_zbdownloadpaths.moc"
