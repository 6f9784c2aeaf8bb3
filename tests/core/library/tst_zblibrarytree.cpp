#include <QTest>

#include "library/zblibrarycontroller.h"
#include "library/zblibrarytree.h"
#include "library/zbplaylist.h"
#include "library/zbtrackcell.h"
#include "library/zbtrackremoval.h"
#include "library/zbtracksearch.h"
#include "settings/zbsettings.h"
#include "support/testsupport.h"

// The source list's contents and rules, the search field's filter and what
// removing tracks means, on a real store.
class TestZBLibraryTree : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void headingsHoldTheStandardListsInOrder();
    void userListsFollowPlainFirstAndNamesCountUp();
    void onlyUserListsAreRenamedOrRemoved();
    void aListShowsItsOwnOrderElseTheTableSort();
    void downloadCountersCountTheirLists();
    void searchMatchesNameUrlOrType();
    void removalPlans_data();
    void removalPlans();
    void timeColumn();

private:
    ZBItem *track(const QString &name, const QString &type, const QString &url = QString(),
                  const QDateTime &added = QDateTime::currentDateTimeUtc());
    QStringList childNames(int root);

    std::unique_ptr<nvktest::DataDir> m_dir;
    std::unique_ptr<ZBLibraryController> m_library;
    std::unique_ptr<ZBLibraryTree> m_tree;
};

void TestZBLibraryTree::init()
{
    m_dir = std::make_unique<nvktest::DataDir>();
    m_library = std::make_unique<ZBLibraryController>();
    QVERIFY(m_library->openStore(m_dir->path()).ok);
    m_library->initLibrary();
    m_tree = std::make_unique<ZBLibraryTree>(*m_library);
}

void TestZBLibraryTree::cleanup()
{
    m_tree.reset();
    m_library.reset();
}

ZBItem *TestZBLibraryTree::track(const QString &name, const QString &type, const QString &url, const QDateTime &added)
{
    return m_library->itemByUUID(m_library->addItemToLibrarybyName(name, QStringLiteral("/media/%1.%2").arg(name, type),
                                                                   url.isNull() ? QStringLiteral("") : url, type, 0, 10,
                                                                   0, added, QDateTime(), QString()));
}

QStringList TestZBLibraryTree::childNames(int root)
{
    QStringList names;
    ZBNode *heading = m_tree->rootItem(root);
    for (int i = 0; i < heading->numberOfChildren(); ++i)
        names << heading->childAtIndex(i)->Name();
    return names;
}

void TestZBLibraryTree::headingsHoldTheStandardListsInOrder()
{
    QVERIFY(m_tree->rootItem(0)->isHeading());
    QCOMPARE(childNames(ZBLibraryTree::TracksRoot),
             (QStringList{"All Tracks", "SWF", "Video", "Real video", "Silverlight"}));
    QCOMPARE(childNames(ZBLibraryTree::DownloadsRoot),
             (QStringList{"NowBrowsing", "Today", "Last week", "Last month"}));
    // No user lists yet: nothing under the heading.
    QCOMPARE(m_tree->rootItem(ZBLibraryTree::PlaylistsRoot)->numberOfChildren(), 0);
    ZBNode *all = m_tree->rootItem(0)->childAtIndex(0);
    QCOMPARE(all->parent(), m_tree->rootItem(0));
    QCOMPARE(m_tree->nodeForPlaylist(m_library->allTracksUUID().toLower()), all);
}

void TestZBLibraryTree::userListsFollowPlainFirstAndNamesCountUp()
{
    m_tree->addSmartList(QStringLiteral("Big"), QStringLiteral("Length > 100"));
    m_tree->addPlaylistWithItems(QStringLiteral("zed"), {}, QStringLiteral("Name"), true);
    const QString base = QStringLiteral("untitled playlist");
    for (int i = 0; i < 2; ++i)
        m_tree->addPlaylistWithItems(base, {}, QStringLiteral("Name"), true);
    m_library->addPlaylistToLibraryByName(QStringLiteral("Early"), QStringLiteral("Name"), true, 5);
    m_tree->rootItemReload();
    QCOMPARE(childNames(ZBLibraryTree::PlaylistsRoot), (QStringList{"Early", base, base + " 2", "zed", "Big"}));
    QVERIFY(m_tree->isSmartList(m_tree->nodeNamed(QStringLiteral("Big"))));
    QVERIFY(!m_tree->isSmartList(m_tree->nodeNamed(QStringLiteral("zed"))));
    // An empty request makes no list.
    QVERIFY(m_tree->addSmartList(QStringLiteral("Nothing"), QStringLiteral("  ")).isEmpty());
    // A smart list checks against every list, standard ones included; a
    // plain playlist only against the user's.
    QCOMPARE(m_tree->untitledName(QStringLiteral("Video"), true), QStringLiteral("Video 2"));
    QCOMPARE(m_tree->untitledName(QStringLiteral("Untitléd playlist"), false), QStringLiteral("Untitléd playlist 3"));
    // A name the store's pattern lookup would match but that differs is free.
    QCOMPARE(m_tree->untitledName(QStringLiteral("untitled"), false), QStringLiteral("untitled"));
}

void TestZBLibraryTree::onlyUserListsAreRenamedOrRemoved()
{
    const QString mine = m_tree->addPlaylistWithItems(QStringLiteral("Mine"), {}, QStringLiteral("Name"), true);
    QVERIFY(!m_tree->renameList(m_library->allTracksUUID(), QStringLiteral("Everything")));
    QVERIFY(!m_tree->renameList(mine, QStringLiteral("")));
    QVERIFY(m_tree->renameList(mine, QStringLiteral(" Holidays")));
    QCOMPARE(m_tree->nodeForPlaylist(mine)->Name(), QStringLiteral(" Holidays"));
    QVERIFY(!m_tree->removeList(m_library->allTracksUUID()));
    // Removing asks only for a list with tracks, and never removes them.
    QVERIFY(!m_tree->removalNeedsConfirmation(mine, false));
    ZBItem *a = track(QStringLiteral("a"), QStringLiteral("mp4"));
    const QString full = m_tree->addPlaylistWithItems(QStringLiteral("Full"), {a}, QStringLiteral("Name"), true);
    QVERIFY(m_tree->removalNeedsConfirmation(full, false));
    QVERIFY(!m_tree->removalNeedsConfirmation(full, true));
    QVERIFY(m_tree->removeList(mine) && m_tree->removeList(full));
    QVERIFY(!m_tree->nodeForPlaylist(mine));
    QCOMPARE(m_library->itemByUUID(a->ItemUUID()), a);

    const QString smart = m_tree->addSmartList(QStringLiteral("Long"), QStringLiteral("Length > 5"));
    QVERIFY(m_tree->editSmartList(smart, QStringLiteral("Longer"), QStringLiteral("Length > 50")));
    QCOMPARE(m_library->getPlaylistsFromLibraryByUUID(smart)->Request(), QStringLiteral("Length > 50"));
    QCOMPARE(m_tree->nodeForPlaylist(smart)->Name(), QStringLiteral("Longer"));
    // Built nodes keep what they read from the store until the tree is reloaded.
    m_library->getPlaylistsFromLibraryByUUID(smart)->setName(QStringLiteral("New"));
    QCOMPARE(m_tree->nodeForPlaylist(smart)->Name(), QStringLiteral("Longer"));
    m_tree->rootItemReload();
    QCOMPARE(m_tree->nodeForPlaylist(smart)->Name(), QStringLiteral("New"));
    QVERIFY(!m_tree->editSmartList(m_library->allTracksUUID(), QStringLiteral("x"), QStringLiteral("Length > 1")));
}

void TestZBLibraryTree::aListShowsItsOwnOrderElseTheTableSort()
{
    ZBItem *b = track(QStringLiteral("b"), QStringLiteral("mp4"));
    ZBItem *a = track(QStringLiteral("a"), QStringLiteral("mkv"));
    ZBItem *c = track(QStringLiteral("c"), QStringLiteral("avi"));
    const QString uuid = m_tree->addPlaylistWithItems(QStringLiteral("L"), {b, a, c}, QStringLiteral("Name"), true);
    QCOMPARE(m_tree->tracksForList(uuid, QStringLiteral("Name"), true), (ZBItemList{a, b, c}));
    QCOMPARE(m_tree->tracksForList(uuid, QStringLiteral("Type"), true), (ZBItemList{c, a, b}));
    ZBPlaylist *playlist = m_library->getPlaylistsFromLibraryByUUID(uuid);
    m_library->saveItemsOrderForPlaylist(playlist, {c, b});
    // The saved order first, the rest after it, whatever the table's sort.
    QCOMPARE(m_tree->tracksForList(uuid, QStringLiteral("Name"), true), (ZBItemList{c, b, a}));
    QCOMPARE(m_tree->tracksForList(m_library->allTracksUUID(), QStringLiteral("Name"), true), (ZBItemList{a, b, c}));
    QVERIFY(m_tree->tracksForList(QStringLiteral("no-such-list"), QStringLiteral("Name"), true).isEmpty());
}

void TestZBLibraryTree::downloadCountersCountTheirLists()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const int days : {0, 3, 20})
        track(QStringLiteral("%1 days ago").arg(days), "mp4", QStringLiteral("http://a/%1.mp4").arg(days),
              now.addSecs(-60).addDays(-days));
    track(QStringLiteral("local"), QStringLiteral("mp4"), QString(), now);
    m_library->refreshDownloadSmartList(now);
    m_tree->rootItemReload();
    m_tree->reloadLastDownloadsCounters();
    QCOMPARE(m_tree->nodeNamed(QStringLiteral("Today"))->itemsCount(), 1);
    QCOMPARE(m_tree->nodeNamed(QStringLiteral("Last week"))->itemsCount(), 2);
    QCOMPARE(m_tree->nodeNamed(QStringLiteral("Last month"))->itemsCount(), 3);
}

void TestZBLibraryTree::searchMatchesNameUrlOrType()
{
    const ZBItemList tracks{
        track(QStringLiteral("holiday"), QStringLiteral("mp4")),
        track(QStringLiteral("clip"), QStringLiteral("Mp4"), QStringLiteral("http://example.com/c")),
        track(QStringLiteral("Café night"), QStringLiteral("mkv")),
        track(QStringLiteral("it's here"), QStringLiteral("avi"))};
    const auto found = [&tracks](const char *text)
    {
        QStringList names;
        for (const ZBItem *item : ZBTrackSearch::filter(tracks, QString::fromUtf8(text)))
            names << item->Name();
        return names.join(u'|');
    };
    QCOMPARE(found("MP4"), QStringLiteral("holiday|clip"));
    QCOMPARE(found("example"), QStringLiteral("clip"));
    // Accents are ignored and quotes are text.
    QCOMPARE(found("cafe"), QStringLiteral("Café night"));
    QCOMPARE(found("it's"), QStringLiteral("it's here"));
    QCOMPARE(found(""), QStringLiteral("holiday|clip|Café night|it's here"));
}

void TestZBLibraryTree::removalPlans_data()
{
    QTest::addColumn<bool>("plainPlaylist");
    QTest::addColumn<int>("viewMode");
    QTest::addColumn<QStringList>("options"); // remembered answers, and "missing" for a track whose file is gone
    QTest::addColumn<QString>("plan");        // scope, whether to confirm, what to do with the files
    QTest::newRow("plain playlist") << true << 1 << QStringList{} << "playlist confirm keep";
    QTest::newRow("plain playlist, told") << true << 1 << QStringList{"playlist"} << "playlist silent keep";
    QTest::newRow("search results") << true << 2 << QStringList{} << "library confirm ask";
    QTest::newRow("standard list") << false << 1 << QStringList{} << "library confirm ask";
    QTest::newRow("told, trash remembered")
        << false << 1 << QStringList{"library", "files", "trash"} << "library silent trash";
    QTest::newRow("one missing file") << false << 1 << QStringList{"missing"} << "library confirm keep";
    QTest::newRow("missing file, trash remembered")
        << false << 1 << QStringList{"files", "trash", "missing"} << "library confirm trash";
}

void TestZBLibraryTree::removalPlans()
{
    QFETCH(bool, plainPlaylist);
    QFETCH(int, viewMode);
    QFETCH(QStringList, options);
    ZBSettings settings;
    settings.option_DontAskMeAgainRemoveItemFromPlaylist = options.contains("playlist");
    settings.option_DontAskMeAgainRemoveItemFromLibrary = options.contains("library");
    settings.option_DontAskMeAgainMoveToTrashOrKeepFile = options.contains("files");
    settings.option_alwaysMoveFileToTrash = options.contains("trash");
    ZBItem *a = track(QStringLiteral("a"), QStringLiteral("mp4"));
    a->setIsValid(!options.contains("missing"));
    const auto described = [&](const ZBItemList &selection)
    {
        const ZBTrackRemoval plan = ZBTrackRemoval::plan(plainPlaylist, viewMode, selection, settings);
        using R = ZBTrackRemoval;
        return QStringLiteral("%1 %2 %3")
            .arg(plan.scope == R::Scope::Playlist ? "playlist" : "library", plan.confirm ? "confirm" : "silent",
                 plan.files == R::FileQuestion::Keep    ? "keep"
                 : plan.files == R::FileQuestion::Trash ? "trash"
                                                        : "ask");
    };
    QTEST(described({a}), "plan");
    // Two tracks, one of them missing: the question is asked all the same.
    ZBItem *b = track(QStringLiteral("b"), QStringLiteral("mp4"));
    b->setIsValid(false);
    if (described({a}).endsWith(u"ask"))
        QVERIFY(described({a, b}).endsWith(u"ask"));
}

void TestZBLibraryTree::timeColumn()
{
    // Hours show only from one on, on a 12-hour dial.
    QCOMPARE(ZBTrackCell::clockText(3599), QStringLiteral("59:59"));
    QCOMPARE(ZBTrackCell::clockText(46800), QStringLiteral("01:00:00"));
    QCOMPARE(ZBTrackCell::clockText(86400), QStringLiteral("12:00:00"));
}

QTEST_GUILESS_MAIN(TestZBLibraryTree)
#include "tst_zblibrarytree.moc"
