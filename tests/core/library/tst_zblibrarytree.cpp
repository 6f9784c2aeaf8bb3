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
    void userListsFollowPlainFirst();
    void untitledNamesCountUp();
    void onlyUserListsAreRenamedOrRemoved();
    void removalAsksOnlyForAListWithTracks();
    void aListShowsItsOwnOrderElseTheTableSort();
    void downloadCountersCountTheirLists();
    void reloadShowsRenamesMadeInTheStore();
    void searchMatchesNameUrlOrType_data();
    void searchMatchesNameUrlOrType();
    void removalPlans_data();
    void removalPlans();
    void timeColumn_data();
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
    return m_library->itemByUUID(m_library->addItemToLibrarybyName(
        name, QStringLiteral("/media/%1.%2").arg(name, type), url.isNull() ? QStringLiteral("") : url, type, 0, 10, 0,
        added, QDateTime(), QString()));
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
    QCOMPARE(m_tree->rootItem(0)->Name(), QStringLiteral("Tracks"));
    QVERIFY(m_tree->rootItem(0)->isHeading());
    QCOMPARE(childNames(ZBLibraryTree::TracksRoot),
             (QStringList{"All Tracks", "SWF", "Video", "Real video", "Silverlight"}));
    QCOMPARE(childNames(ZBLibraryTree::DownloadsRoot), (QStringList{"NowBrowsing", "Today", "Last week", "Last month"}));
    // No user lists yet: nothing under the heading.
    QCOMPARE(m_tree->rootItem(ZBLibraryTree::PlaylistsRoot)->numberOfChildren(), 0);
    ZBNode *all = m_tree->rootItem(0)->childAtIndex(0);
    QCOMPARE(all->NodeType(), int(ZBNode::List));
    QCOMPARE(all->parent(), m_tree->rootItem(0));
    QCOMPARE(all->playlistUUID(), m_library->allTracksUUID());
    QCOMPARE(m_tree->nodeForPlaylist(m_library->allTracksUUID().toLower()), all);
    QVERIFY(!m_tree->rootItem(3));
}

void TestZBLibraryTree::userListsFollowPlainFirst()
{
    m_tree->addSmartList(QStringLiteral("Big"), QStringLiteral("Length > 100"));
    m_tree->addPlaylistWithItems(QStringLiteral("Zed"), {}, QStringLiteral("Name"), true);
    m_tree->addPlaylistWithItems(QStringLiteral("Alpha"), {}, QStringLiteral("Name"), true);
    m_library->addPlaylistToLibraryByName(QStringLiteral("Early"), QStringLiteral("Name"), true, 5);
    m_tree->rootItemReload();
    QCOMPARE(childNames(ZBLibraryTree::PlaylistsRoot), (QStringList{"Early", "Alpha", "Zed", "Big"}));
    QVERIFY(m_tree->isSmartList(m_tree->nodeNamed(QStringLiteral("Big"))));
    QVERIFY(!m_tree->isSmartList(m_tree->nodeNamed(QStringLiteral("Zed"))));
    // An empty request makes no list.
    QVERIFY(m_tree->addSmartList(QStringLiteral("Nothing"), QStringLiteral("  ")).isEmpty());
}

void TestZBLibraryTree::untitledNamesCountUp()
{
    const QString base = QStringLiteral("untitled playlist");
    m_tree->addPlaylistWithItems(base, {}, QStringLiteral("Name"), true);
    m_tree->addPlaylistWithItems(base, {}, QStringLiteral("Name"), true);
    m_tree->addPlaylistWithItems(base, {}, QStringLiteral("Name"), true);
    QCOMPARE(childNames(ZBLibraryTree::PlaylistsRoot),
             (QStringList{base, base + QStringLiteral(" 2"), base + QStringLiteral(" 3")}));
    // A smart list checks against every list, standard ones included; a
    // plain playlist only against the user's.
    QCOMPARE(m_tree->untitledName(QStringLiteral("Video"), true), QStringLiteral("Video 2"));
    QCOMPARE(m_tree->untitledName(QStringLiteral("Video"), false), QStringLiteral("Video"));
    QCOMPARE(m_tree->untitledName(QStringLiteral("Untitléd playlist"), false), QStringLiteral("Untitléd playlist 4"));
    // A name the store's pattern lookup would match but that differs is free.
    QCOMPARE(m_tree->untitledName(QStringLiteral("untitled"), false), QStringLiteral("untitled"));
}

void TestZBLibraryTree::onlyUserListsAreRenamedOrRemoved()
{
    const QString mine = m_tree->addPlaylistWithItems(QStringLiteral("Mine"), {}, QStringLiteral("Name"), true);
    QVERIFY(m_tree->isUserList(m_tree->nodeForPlaylist(mine)));
    QVERIFY(!m_tree->isUserList(m_tree->nodeForPlaylist(m_library->allTracksUUID())));
    QVERIFY(!m_tree->renameList(m_library->allTracksUUID(), QStringLiteral("Everything")));
    QVERIFY(!m_tree->renameList(mine, QStringLiteral("")));
    QVERIFY(m_tree->renameList(mine, QStringLiteral(" Holidays")));
    QCOMPARE(m_tree->nodeForPlaylist(mine)->Name(), QStringLiteral(" Holidays"));
    QVERIFY(!m_tree->removeList(m_library->allTracksUUID()));
    QVERIFY(m_library->getPlaylistsFromLibraryByUUID(m_library->allTracksUUID()));
    QVERIFY(m_tree->removeList(mine));
    QVERIFY(!m_tree->nodeForPlaylist(mine));
    QVERIFY(!m_library->getPlaylistsFromLibraryByUUID(mine));

    const QString smart = m_tree->addSmartList(QStringLiteral("Long"), QStringLiteral("Length > 5"));
    QVERIFY(m_tree->editSmartList(smart, QStringLiteral("Longer"), QStringLiteral("Length > 50")));
    QCOMPARE(m_library->getPlaylistsFromLibraryByUUID(smart)->Request(), QStringLiteral("Length > 50"));
    QCOMPARE(m_tree->nodeForPlaylist(smart)->Name(), QStringLiteral("Longer"));
    QVERIFY(!m_tree->editSmartList(m_library->allTracksUUID(), QStringLiteral("x"), QStringLiteral("Length > 1")));
}

void TestZBLibraryTree::removalAsksOnlyForAListWithTracks()
{
    const QString empty = m_tree->addPlaylistWithItems(QStringLiteral("Empty"), {}, QStringLiteral("Name"), true);
    QVERIFY(!m_tree->removalNeedsConfirmation(empty, false));
    ZBItem *a = track(QStringLiteral("a"), QStringLiteral("mp4"));
    const QString full = m_tree->addPlaylistWithItems(QStringLiteral("Full"), {a}, QStringLiteral("Name"), true);
    QVERIFY(m_tree->removalNeedsConfirmation(full, false));
    QVERIFY(!m_tree->removalNeedsConfirmation(full, true));
    // Removing a list never removes its tracks.
    QVERIFY(m_tree->removeList(full));
    QCOMPARE(m_library->itemByUUID(a->ItemUUID()), a);
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
    track(QStringLiteral("today"), QStringLiteral("mp4"), QStringLiteral("http://a/1.mp4"), now.addSecs(-60));
    track(QStringLiteral("days ago"), QStringLiteral("mp4"), QStringLiteral("http://a/2.mp4"), now.addDays(-3));
    track(QStringLiteral("weeks ago"), QStringLiteral("mp4"), QStringLiteral("http://a/3.mp4"), now.addDays(-20));
    track(QStringLiteral("local"), QStringLiteral("mp4"), QString(), now);
    m_library->refreshDownloadSmartList(now);
    m_tree->rootItemReload();
    m_tree->reloadLastDownloadsCounters();
    QCOMPARE(m_tree->nodeNamed(QStringLiteral("Today"))->itemsCount(), 1);
    QCOMPARE(m_tree->nodeNamed(QStringLiteral("Last week"))->itemsCount(), 2);
    QCOMPARE(m_tree->nodeNamed(QStringLiteral("Last month"))->itemsCount(), 3);
    QCOMPARE(m_tree->nodeNamed(QStringLiteral("All Tracks"))->itemsCount(), 0);
}

void TestZBLibraryTree::reloadShowsRenamesMadeInTheStore()
{
    const QString uuid = m_tree->addPlaylistWithItems(QStringLiteral("Old"), {}, QStringLiteral("Name"), true);
    QCOMPARE(m_tree->nodeForPlaylist(uuid)->Name(), QStringLiteral("Old"));
    m_library->getPlaylistsFromLibraryByUUID(uuid)->setName(QStringLiteral("New"));
    // Built nodes keep what they read until the tree is reloaded.
    QCOMPARE(m_tree->nodeForPlaylist(uuid)->Name(), QStringLiteral("Old"));
    m_tree->rootItemReload();
    QCOMPARE(m_tree->nodeForPlaylist(uuid)->Name(), QStringLiteral("New"));
}

void TestZBLibraryTree::searchMatchesNameUrlOrType_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("found");
    QTest::newRow("type, any case") << "MP4" << QStringList{"holiday", "clip"};
    QTest::newRow("in the URL") << "example" << QStringList{"clip"};
    QTest::newRow("accents ignored") << "cafe" << QStringList{"Café night"};
    QTest::newRow("quotes are text") << "it's" << QStringList{"it's here"};
    QTest::newRow("nothing") << "zzz" << QStringList{};
    QTest::newRow("empty shows all") << "" << QStringList{"holiday", "clip", "Café night", "it's here"};
}

void TestZBLibraryTree::searchMatchesNameUrlOrType()
{
    QFETCH(QString, text);
    QFETCH(QStringList, found);
    const ZBItemList tracks{track(QStringLiteral("holiday"), QStringLiteral("mp4")),
                            track(QStringLiteral("clip"), QStringLiteral("Mp4"), QStringLiteral("http://example.com/c")),
                            track(QStringLiteral("Café night"), QStringLiteral("mkv")),
                            track(QStringLiteral("it's here"), QStringLiteral("avi"))};
    QStringList names;
    for (const ZBItem *item : ZBTrackSearch::filter(tracks, text))
        names << item->Name();
    QCOMPARE(names, found);
}

void TestZBLibraryTree::removalPlans_data()
{
    QTest::addColumn<bool>("plainPlaylist");
    QTest::addColumn<int>("viewMode");
    QTest::addColumn<bool>("oneMissingFile");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("scope");
    QTest::addColumn<bool>("confirm");
    QTest::addColumn<int>("files");
    using R = ZBTrackRemoval;
    const int playlist = int(R::Scope::Playlist);
    const int library = int(R::Scope::Library);
    const int keep = int(R::FileQuestion::Keep);
    const int trash = int(R::FileQuestion::Trash);
    const int ask = int(R::FileQuestion::Ask);
    QTest::newRow("plain playlist") << true << 1 << false << QStringList{} << playlist << true << keep;
    QTest::newRow("plain playlist, told") << true << 1 << false << QStringList{"playlist"} << playlist << false << keep;
    QTest::newRow("search results") << true << 2 << false << QStringList{} << library << true << ask;
    QTest::newRow("captured items") << true << 3 << false << QStringList{} << library << true << ask;
    QTest::newRow("standard list") << false << 1 << false << QStringList{} << library << true << ask;
    QTest::newRow("told, trash remembered")
        << false << 1 << false << QStringList{"library", "files", "trash"} << library << false << trash;
    QTest::newRow("keep remembered") << false << 1 << false << QStringList{"files"} << library << true << keep;
    QTest::newRow("one missing file") << false << 1 << true << QStringList{} << library << true << keep;
    QTest::newRow("missing file, trash remembered")
        << false << 1 << true << QStringList{"files", "trash"} << library << true << trash;
}

void TestZBLibraryTree::removalPlans()
{
    QFETCH(bool, plainPlaylist);
    QFETCH(int, viewMode);
    QFETCH(bool, oneMissingFile);
    QFETCH(QStringList, options);
    QFETCH(int, scope);
    QFETCH(bool, confirm);
    QFETCH(int, files);
    ZBSettings settings;
    settings.option_DontAskMeAgainRemoveItemFromPlaylist = options.contains("playlist");
    settings.option_DontAskMeAgainRemoveItemFromLibrary = options.contains("library");
    settings.option_DontAskMeAgainMoveToTrashOrKeepFile = options.contains("files");
    settings.option_alwaysMoveFileToTrash = options.contains("trash");
    ZBItem *a = track(QStringLiteral("a"), QStringLiteral("mp4"));
    a->setIsValid(!oneMissingFile);
    ZBItemList selection{a};
    const ZBTrackRemoval plan = ZBTrackRemoval::plan(plainPlaylist, viewMode, selection, settings);
    QCOMPARE(int(plan.scope), scope);
    QCOMPARE(plan.confirm, confirm);
    QCOMPARE(int(plan.files), files);
    // Two tracks, one of them missing: the question is asked all the same.
    if (!oneMissingFile && files == int(ZBTrackRemoval::FileQuestion::Ask))
    {
        ZBItem *b = track(QStringLiteral("b"), QStringLiteral("mp4"));
        b->setIsValid(false);
        QCOMPARE(ZBTrackRemoval::plan(plainPlaylist, viewMode, {a, b}, settings).files, ZBTrackRemoval::FileQuestion::Ask);
    }
}

void TestZBLibraryTree::timeColumn_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("shown");
    QTest::newRow("under an hour") << 3599 << "59:59";
    QTest::newRow("13 hours wrap") << 46800 << "01:00:00";
    QTest::newRow("a day") << 86400 << "12:00:00";
}

void TestZBLibraryTree::timeColumn()
{
    QFETCH(int, length);
    QTEST(ZBTrackCell::clockText(length), "shown");
}

QTEST_GUILESS_MAIN(TestZBLibraryTree)
#include "tst_zblibrarytree.moc"
