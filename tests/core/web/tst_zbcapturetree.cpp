#include <QTest>

#include "web/zbcapturetree.h"
#include "web/zbdownloaditem.h"

namespace
{
// Which of its owner's lists an item joined: Flash, Video, Media.
QString listsOf(const ZBDownloadItem *item)
{
    const ZBDownloadItem *owner = item->parent();
    QString lists;
    if (owner->swfResources().contains(item))
        lists += u'F';
    if (owner->videoResources().contains(item))
        lists += u'V';
    if (owner->mediaResources().contains(item))
        lists += u'M';
    return lists;
}

ZBDownloadItem *pageTitled(ZBCaptureTree &tree, const QString &title)
{
    tree.commitPage(QStringLiteral("http://page.test/"));
    return tree.receivePageTitle(title);
}
} // namespace

class TestZBCaptureTree : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void captureRules_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("lists");
        QTest::newRow("site root") << "host.test/" << "index.html" << "html" << "";
        QTest::newRow("bare host") << "host.test" << "index.html" << "html" << "";
        QTest::newRow("stream service") << "v.test/videoplayback?id=7&itag=5" << "Clip.flv" << "flv" << "VM";
        QTest::newRow("playlist script") << "v.test/stream.php?playlist=a.xml" << "Clip.flv" << "flv" << "VM";
        QTest::newRow("upper-case extension") << "h.test/a/Movie.MOV" << "Movie.MOV" << "mov" << "VM";
        QTest::newRow("query and parameters cut") << "h.test/p/game.swf;jsid=1?v=2" << "game.swf" << "swf" << "FM";
        QTest::newRow("projector is Flash") << "h.test/run.exe" << "run.exe" << "exe" << "FM";
        QTest::newRow("raw H.264 named after page") << "h.test/x.H264?t=1" << "Clip.flv" << "flv" << "VM";
        QTest::newRow("no extension") << "h.test/media/watch" << "watch" << "unknown" << "";
        QTest::newRow("trailing slash") << "h.test/media/" << "media" << "unknown" << "";
        QTest::newRow("image only in all") << "h.test/pic.png" << "pic.png" << "png" << "";
        QTest::newRow("https kept whole") << "https://h.test/v.mp4?s=1" << "v.mp4" << "mp4" << "VM";
    }
    void captureRules()
    {
        QFETCH(QString, url);
        ZBCaptureTree tree;
        ZBDownloadItem *page = pageTitled(tree, QStringLiteral("Clip"));
        QVERIFY(page);
        ZBDownloadItem *item = tree.receivingUrl(url, 10);
        QVERIFY(item);
        QCOMPARE(item->parent(), page);
        QTEST(item->resourceTitle(), "title");
        QTEST(item->resourceType(), "type");
        QTEST(listsOf(item), "lists");
        QCOMPARE(item->fileMustBeAddedToLibrary(), !listsOf(item).isEmpty());
        QCOMPARE(item->expectedBytesLength(), 10);
    }

    void ownersAndFilters()
    {
        ZBCaptureTree tree;
        QCOMPARE(tree.receivingUrl(QStringLiteral("h.test/early.flv")), nullptr); // no page yet
        ZBDownloadItem *page = pageTitled(tree, QStringLiteral("Page"));
        // The page's own document came first.
        QCOMPARE(page->resources().size(), 1);
        const QString swf = QStringLiteral("h.test/player.swf");
        ZBDownloadItem *player = tree.receivingUrl(swf);
        QCOMPARE(player->expectedBytesLength(), 0);
        QCOMPARE(tree.receivingUrl(swf), nullptr);
        tree.receivingUrl(QStringLiteral("h.test/logo.png"));
        tree.setShouldBypassReceiveURLs(true);
        QCOMPARE(tree.receiveRequest(QStringLiteral("http://h.test/late.mp4")), nullptr);
        tree.setShouldBypassReceiveURLs(false);

        // A previewed movie gathers its own loads, and becomes a video source of its page.
        tree.beginPreview(player);
        QCOMPARE(tree.receivingUrl(swf), nullptr);
        ZBDownloadItem *stream = tree.receiveRequest(QStringLiteral("http://s.test/videoplayback?id=1"));
        QCOMPARE(stream->parent(), player);
        QCOMPARE(stream->resourceTitle(), QStringLiteral("player.swf.flv"));
        tree.receivingUrl(QStringLiteral("h.test/logo.png"));
        tree.receivingUrl(QStringLiteral("s.test/second.mp4"));
        QCOMPARE(page->videoResources(), QList<ZBDownloadItem *>{player});

        const QList<int> pageCounts{3, 1, 1, 1, 0};
        const QList<int> playerCounts{3, 3, 2, 3, 3};
        for (int filter = 0; filter < 5; ++filter)
        {
            QCOMPARE(page->numberOfChildrenWithFilter(filter), pageCounts.at(filter));
            QCOMPARE(player->numberOfChildrenWithFilter(filter), playerCounts.at(filter));
        }
        QCOMPARE(page->getResourceByURL(QStringLiteral("h.test/logo.png"))->parent(), page);
        stream->setDownloadID(42);
        QCOMPARE(page->getResourceByDownloadID(42), stream);

        QVERIFY(!tree.isPreviewAvailable(player));
        QVERIFY(!ZBCaptureTree::rootDownloadItemExistInSelection({player, stream}));
        QVERIFY(ZBCaptureTree::rootDownloadItemExistInSelection({player, page}));
        QCOMPARE(ZBCaptureTree::copyURLText({player, stream}), swf + "\ns.test/videoplayback?id=1\n");

        // Removing the page ends the preview it holds.
        tree.removePage(page);
        QCOMPARE(tree.previewItem(), nullptr);
        QVERIFY(tree.pages().isEmpty());
    }

    void contentTypes_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("contentType");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("lists");
        QTest::newRow("script serving mp4") << "h.test/get.php?id=1" << "video/mp4" << "mp4" << "VM";
        QTest::newRow("no extension, flv") << "h.test/stream" << "video/x-flv" << "flv" << "VM";
        QTest::newRow("Flash with parameters") << "h.test/m" << "Application/X-Shockwave-Flash; q=1" << "swf" << "FM";
        QTest::newRow("webm plays as Matroska") << "h.test/c" << "video/webm" << "mkv" << "VM";
        QTest::newRow("not media") << "h.test/get.php" << "text/html" << "php" << "";
        QTest::newRow("the name wins") << "h.test/a.mov" << "video/x-flv" << "mov" << "VM";
    }
    void contentTypes()
    {
        QFETCH(QString, url);
        QFETCH(QString, contentType);
        ZBCaptureTree tree;
        pageTitled(tree, QStringLiteral("Page"));
        ZBDownloadItem *item = tree.receivingUrl(url);
        tree.applyContentType(item, contentType);
        QTEST(item->resourceType(), "type");
        QTEST(listsOf(item), "lists");
        QCOMPARE(item->fileMustBeAddedToLibrary(), !listsOf(item).isEmpty());
        QCOMPARE(item->parent()->mediaResources().count(item), listsOf(item).isEmpty() ? 0 : 1);
    }
};

QTEST_GUILESS_MAIN(TestZBCaptureTree)
#include "tst_zbcapturetree.moc"
