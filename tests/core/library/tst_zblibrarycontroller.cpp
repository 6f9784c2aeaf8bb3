#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include "library/zblibrarycontroller.h"
#include "library/zbplaylist.h"
#include "predicate/zbpredicate.h"
#include "support/testsupport.h"
#include "util/zbadditionalmethods.h"

namespace
{
QString addTrack(ZBLibraryController &library, const QString &name, const QString &path,
                 const QString &url = QString(""), const QString &type = QStringLiteral("mp4"),
                 const QDateTime &added = QDateTime::currentDateTimeUtc(), qint32 playCount = 0)
{
    return library.addItemToLibrarybyName(name, path, url, type, 0, 60, playCount, added, QDateTime(), QString());
}

QStringList names(const ZBItemList &items)
{
    QStringList result;
    for (const ZBItem *item : items)
        result << item->Name();
    return result;
}
} // namespace

class TestZBLibraryController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void standardListsAreCreatedOnceAndSelectTheirTracks();
    void downloadFiltersFollowTheClockAtEachStart();
    void samePathIsNeverAddedTwice();
    void lookups();
    void membershipAndRemoval();
    void manyRemovedInOneCall();
    void itemOrderRecord();
    void sortRules();
    void resourcesOfAnItem();
    void filtering();
    void changesSurviveReopening();
    void playlistsArePeekedWithoutTouchingTheStore();

private:
    std::unique_ptr<nvktest::DataDir> m_dir;
    std::unique_ptr<ZBLibraryController> m_library;

    // The sorted names of the tracks a standard list shows.
    QStringList listed(const char *name)
    {
        QStringList result = names(m_library->getItemsFromPlaylist(
            m_library->playlistByUUID(m_library->UUIDForStandartSmartListWithName(QLatin1String(name)))));
        result.sort();
        return result;
    }
    ZBPlaylist *newList(const char *name)
    {
        return m_library->playlistByUUID(m_library->addPlaylistToLibraryByName(QLatin1String(name), "Name", true, 200));
    }

    void reopen()
    {
        m_library = std::make_unique<ZBLibraryController>();
        const auto opened = m_library->openStore(m_dir->path());
        QVERIFY2(opened.ok, qPrintable(opened.error));
        QVERIFY(!opened.recoveredFromDamage);
        m_library->initLibrary();
    }
};

void TestZBLibraryController::init()
{
    m_dir = std::make_unique<nvktest::DataDir>();
    reopen();
}

void TestZBLibraryController::cleanup()
{
    m_library.reset();
    m_dir.reset();
}

void TestZBLibraryController::standardListsAreCreatedOnceAndSelectTheirTracks()
{
    const QStringList standard = {"All Tracks",  "NowBrowsing", "Video",     "SWF",       "Real video",
                                  "Silverlight", "Today",       "Last week", "Last month"};
    QHash<QString, QString> uuids;
    for (const QString &name : standard)
    {
        const ZBPlaylist *list = m_library->playlistByUUID(m_library->UUIDForStandartSmartListWithName(name));
        QVERIFY2(list && list->isSmart() && list->Name() == name, qPrintable(name));
        uuids.insert(name, list->PlaylistUUID());
    }
    QCOMPARE(m_library->allTracksUUID() + m_library->nowBrowsingUUID(), uuids["All Tracks"] + uuids["NowBrowsing"]);

    const QStringList types{"mp4", "swf", "EXE", "rm", "rmvb", "xap"};
    for (const QString &type : types)
        addTrack(*m_library, type, "/m/clip." + type, "", type);
    QCOMPARE(listed("All Tracks"), QStringList({"EXE", "mp4", "rm", "rmvb", "swf", "xap"}));
    QCOMPARE(listed("Video"), QStringList({"mp4"}));
    QCOMPARE(listed("SWF"), QStringList({"EXE", "swf"}));
    QCOMPARE(listed("Real video"), QStringList({"rm", "rmvb"}));
    QCOMPARE(listed("Silverlight"), QStringList({"xap"}));
    QCOMPARE(listed("NowBrowsing"), QStringList());

    // A renamed standard list is still found by its record, and nothing is
    // created twice at the next starts.
    m_library->playlistByUUID(uuids.value("Video"))->setName(QStringLiteral("Films"));
    m_library->save();
    reopen();
    reopen();
    for (const QString &name : standard)
        QCOMPARE(m_library->UUIDForStandartSmartListWithName(name), uuids.value(name));
    QCOMPARE(m_library->managedObjectContext()->playlists().size(), standard.size());
    QCOMPARE(m_library->playlistByUUID(uuids.value("Video"))->Name(), QStringLiteral("Films"));
}

void TestZBLibraryController::downloadFiltersFollowTheClockAtEachStart()
{
    const QDateTime start = QDateTime(QDate(2026, 3, 10), QTime(12, 0), Qt::UTC);
    addTrack(*m_library, "edge", "/d/edge.mp4", "http://a/edge.mp4", "mp4", start.addSecs(-86400));
    addTrack(*m_library, "old", "/d/old.mp4", "http://a/old.mp4", "mp4", start.addSecs(-86401));
    addTrack(*m_library, "local", "/d/local.mp4", "", "mp4", start);
    addTrack(*m_library, "week", "/d/week.mp4", "http://a/week.mp4", "mp4", start.addDays(-6));
    addTrack(*m_library, "month", "/d/month.mp4", "http://a/month.mp4", "mp4", start.addDays(-30));

    m_library->refreshDownloadSmartList(start);
    QCOMPARE(listed("Today"), QStringList({"edge"}));
    QCOMPARE(listed("Last week"), QStringList({"edge", "old", "week"}));
    QCOMPARE(listed("Last month"), QStringList({"edge", "month", "old", "week"}));

    // A day later the same tracks have moved out of "Today".
    m_library->refreshDownloadSmartList(start.addDays(1));
    QCOMPARE(listed("Today"), QStringList());
}

void TestZBLibraryController::samePathIsNeverAddedTwice()
{
    const QString first = addTrack(*m_library, "a", "/Music/Café/Song.mp4");
    static const QRegularExpression canonical(
        QStringLiteral("^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}$"));
    QVERIFY2(canonical.match(first).hasMatch(), qPrintable(first));
    QCOMPARE(addTrack(*m_library, "b", "/music/cafe/song.MP4"), first);
    QCOMPARE(names(m_library->managedObjectContext()->items()), QStringList{"a"});
    // A proposed UUID is used for a new track.
    const QString proposed = ZBAdditionalMethods::generateUUID();
    QCOMPARE(m_library->addItemToLibrarybyName("c", "/other.mp4", "", "mp4", 0, 0, 0, QDateTime(), QDateTime(),
                                               QString(), proposed),
             proposed);
    reopen();
    QCOMPARE(addTrack(*m_library, "d", "/MUSIC/CAFE/SONG.mp4"), first);
}

void TestZBLibraryController::lookups()
{
    const QString a = addTrack(*m_library, "a", "/a.mp4", "http://host/video?id=1");
    addTrack(*m_library, "b", "/b.mp4", "http://host/video?id=2");
    addTrack(*m_library, "c", "/c.mp4", "http://host/videoXid=1");
    // Nothing found is no list at all; "?" in a URL is one character of anything.
    QVERIFY(!m_library->getItemsFromLibraryByURL(QStringLiteral("http://nowhere/")).has_value());
    QVERIFY(!m_library->getItemsFromLibraryByUUID(QString()).has_value());
    QCOMPARE(names(m_library->getItemsFromLibraryByUUID(a.toLower()).value()), QStringList{"a"});
    QCOMPARE(names(m_library->getItemsFromLibraryByURL(QStringLiteral("HTTP://HOST/video?id=1")).value()),
             QStringList({"a", "c"}));

    // By UUID a list is found from a fragment, unless asked exactly.
    const QString uuid = m_library->addPlaylistToLibraryByName("Rock", "Name", true, 200);
    QCOMPARE(m_library->playlistByUUID(uuid.mid(9, 9).toLower())->PlaylistUUID(), uuid);
    QVERIFY(!m_library->getPlaylistsFromLibraryByUUID(uuid.mid(9, 9)));
    QCOMPARE(m_library->getPlaylistsFromLibraryByUUID(uuid.toLower())->PlaylistUUID(), uuid);

    // By name, smart or not, in a group or any.
    m_library->addSmartListWithName("Rock", "Rating > 3", "User", "Name", false, 200);
    m_library->addSmartListWithName("Róck", "Rating > 4", "Elsewhere", "Name", false, 200);
    QCOMPARE(m_library->getAllPlaylistsFromLibraryByName("rock").size(), 2);
    QCOMPARE(m_library->getPlaylistsFromLibraryByName("ROCK", true, "user").size(), 1);
    QCOMPARE(m_library->getPlaylistsFromLibraryByName("*", true, "*").size(), 11);
    QVERIFY(m_library->removePlaylistFromLibrary("r?ck"));
    QVERIFY(!m_library->removePlaylistFromLibrary("rock"));
    QCOMPARE(m_library->getPlaylistsFromLibraryByName("*", true, "*").size(), 9);
}

void TestZBLibraryController::membershipAndRemoval()
{
    const QString gone = addTrack(*m_library, "gone", "/gone.mp4");
    const QString keep = addTrack(*m_library, "keep", "/keep.mp4");
    ZBPlaylist *smart =
        m_library->playlistByUUID(m_library->addSmartListWithName("s", "Name like[cd] '*'", "User", "Name", true, 200));
    QVERIFY(!m_library->addItemWithUUID(keep, smart));
    QStringList lists;
    for (const char *name : {"one", "two"})
    {
        ZBPlaylist *list = newList(name);
        lists << list->PlaylistUUID();
        QVERIFY(m_library->addItemWithUUID(keep, list));
        QVERIFY(!m_library->addItemWithUUID(keep, list));
        QVERIFY(!m_library->addItemWithUUID(ZBAdditionalMethods::generateUUID(), list));
        QVERIFY(m_library->addItemWithUUID(gone, list));
    }
    // A new plain list is a user list, and its members come back in list order.
    reopen();
    const auto plain = m_library->getPlaylistsFromLibraryByName(QStringLiteral("one"), false, QString());
    QCOMPARE(plain.size(), 1);
    QVERIFY(plain.first()->Request().isNull());
    QCOMPARE(m_library->getAllPlaylistsFromLibraryByName(QStringLiteral("ONE")), plain);
    QCOMPARE(names(plain.first()->Item()), QStringList({"keep", "gone"}));

    ZBItem *doomed = m_library->itemByUUID(gone);
    QVERIFY(m_library->removeItemFromLibraryByUUID(gone));
    QVERIFY(doomed->isDeleted());
    QVERIFY(!m_library->removeItemFromLibraryByUUID(gone));
    QVERIFY(m_library->removeItemWithUUID(keep, m_library->playlistByUUID(lists[0])));
    QVERIFY(m_library->removePlaylistFromLibraryByUUID(lists[1]));
    reopen();
    QVERIFY(m_library->getItemsFromPlaylist(m_library->playlistByUUID(lists[0])).isEmpty());
    QVERIFY(!m_library->playlistByUUID(lists[1]));
    QVERIFY(!m_library->itemByUUID(gone));
    QVERIFY(m_library->itemByUUID(keep)->Playlist().isEmpty());
}

void TestZBLibraryController::manyRemovedInOneCall()
{
    QStringList uuids;
    for (const char *name : {"A", "B", "C", "D", "E"})
        uuids << addTrack(*m_library, QLatin1String(name), QStringLiteral("/%1.mp4").arg(name));
    const QString list = newList("p")->PlaylistUUID();
    for (const int i : {0, 1, 2})
        QVERIFY(m_library->addItemWithUUID(uuids[i], m_library->playlistByUUID(list)));
    QCOMPARE(m_library->removeItemsFromLibraryByUUIDs({uuids[2], uuids[1], uuids[4], "no-such-track"}), 3);
    // Out of the library and its list at once, and so after a restart.
    for (int pass = 0; pass < 2; ++pass)
    {
        QCOMPARE(names(m_library->managedObjectContext()->items()), QStringList({"A", "D"}));
        QCOMPARE(names(m_library->getItemsFromPlaylist(m_library->playlistByUUID(list))), QStringList({"A"}));
        // The empty address's chain lost its head and two neighbours.
        QCOMPARE(names(m_library->getItemsFromLibraryByURL("").value()), QStringList({"D", "A"}));
        reopen();
    }
}

void TestZBLibraryController::itemOrderRecord()
{
    ZBItemList tracks;
    for (const char *name : {"A", "B", "C"})
        tracks << m_library->itemByUUID(addTrack(*m_library, QLatin1String(name), QStringLiteral("/%1.mp4").arg(name)));
    ZBPlaylist *list = newList("p");

    ZBItemList given;
    m_library->saveItemsOrderForPlaylist(list, {tracks[2], tracks[0]});
    reopen();
    list = m_library->getPlaylistsFromLibraryByName("p", false, "").first();
    const ZBItemList fresh = m_library->sortList(m_library->managedObjectContext()->items(), "Name", true);
    given = fresh;
    QCOMPARE(names(m_library->getItemsOrderForPlaylist(list, given, true)), QStringList({"C", "A", "B"}));
    QVERIFY(given.isEmpty());
    given = fresh;
    QCOMPARE(names(m_library->getItemsOrderForPlaylist(list, given, false)), QStringList({"C", "A"}));
    QCOMPARE(names(given), QStringList({"B"}));

    // A deleted track named by the record is skipped; an unreadable record
    // gives nothing.
    QVERIFY(m_library->removeItemFromLibraryByUUID(fresh[2]->ItemUUID()));
    given = {fresh[0], fresh[1]};
    QCOMPARE(names(m_library->getItemsOrderForPlaylist(list, given, true)), QStringList({"A", "B"}));
    list->setInternalItemsOrder(QByteArray("\x01garbage{", 9));
    given = {fresh[0]};
    QVERIFY(m_library->getItemsOrderForPlaylist(list, given, true).isEmpty());
}

void TestZBLibraryController::sortRules()
{
    const QDateTime base = QDateTime(QDate(2025, 1, 1), QTime(0, 0), Qt::UTC);
    ZBItemList tracks;
    tracks << m_library->itemByUUID(addTrack(*m_library, "Banana", "/1.mp4", "", "mp4", base.addDays(1), 5));
    tracks << m_library->itemByUUID(addTrack(*m_library, "apple", "/2.mp4", "", "mp4", base.addDays(3), 1));
    tracks << m_library->itemByUUID(addTrack(*m_library, "Cherry", "/3.mp4", "", "mp4", base.addDays(2), 9));
    tracks << m_library->itemByUUID(addTrack(*m_library, "avocado", "/4.mp4", "", "mp4", QDateTime(), 0));
    const auto sorted = [&tracks](const char *field, bool ascend)
    {
        return names(ZBLibraryController::sortList(tracks, QLatin1String(field), ascend)).join(u' ');
    };

    QCOMPARE(sorted("Name", true), QStringLiteral("apple avocado Banana Cherry"));
    QCOMPARE(sorted("Name", false), QStringLiteral("Cherry Banana avocado apple"));
    // Counts and dates: "ascending" puts the most and the newest first; an
    // absent date counts as the oldest.
    QCOMPARE(sorted("PlayCount", true), QStringLiteral("Cherry Banana apple avocado"));
    QCOMPARE(sorted("Added", true), QStringLiteral("apple Cherry Banana avocado"));
    QCOMPARE(sorted("Added", false), QStringLiteral("avocado Banana Cherry apple"));
    // The input list is left as it was.
    QCOMPARE(names(tracks), QStringList({"Banana", "apple", "Cherry", "avocado"}));
}

void TestZBLibraryController::resourcesOfAnItem()
{
    ZBItem *item = m_library->itemByUUID(addTrack(*m_library, "page", "/p/index.swf"));
    m_library->addResourceWithPath("/p/index.swf", true, item);
    m_library->addResourceWithPath("/p/sound.mp3", false, item);
    reopen();
    item = m_library->managedObjectContext()->items().first();
    QStringList resources;
    for (const QVariantMap &resource : m_library->getResourcesFromBundle(item))
        resources << resource.value("Base").toString() + resource.value("Path").toString();
    resources.sort();
    QCOMPARE(resources, QStringList({"0/p/sound.mp3", "1/p/index.swf"}));
    QVERIFY(m_library->removeItemFromLibraryByUUID(item->ItemUUID()));
    reopen();
    QCOMPARE(m_library->managedObjectContext()->database().integrityCheck(), QStringLiteral("ok"));
}

void TestZBLibraryController::filtering()
{
    // A list whose filter does not parse selects nothing.
    addTrack(*m_library, "t", "/t.mp4");
    ZBPlaylist *broken =
        m_library->playlistByUUID(m_library->addSmartListWithName("broken", "(Rating > ", "User", "Name", true, 200));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("selects nothing")));
    QVERIFY(m_library->getItemsFromPlaylist(broken).isEmpty());

    // Big enough that the scan is split between threads; the result is the
    // same, in the same order.
    ZBObjectContext *context = m_library->managedObjectContext();
    for (int i = 0; i < 30000; ++i)
    {
        ZBItem *item = context->insertItem();
        item->setName(QStringLiteral("Clip %1 Été").arg(i));
        item->setType(i % 2 ? QStringLiteral("SWF") : QStringLiteral("mp4"));
        item->setPlayCountValue(i % 11);
    }
    for (const char *text : {"Name CONTAINS[cd] 'ete' AND Name CONTAINS '7'", "Type ==[c] 'swf' AND PlayCount > 5"})
    {
        const ZBPredicate predicate = ZBPredicate::parse(QLatin1String(text));
        ZBItemList expected;
        for (ZBItem *item : context->items())
        {
            if (predicate.evaluate(*item))
                expected << item;
        }
        QVERIFY2(expected.size() > 1000, text);
        QCOMPARE(ZBLibraryController::filterItems(context->items(), predicate), expected);
    }
}

void TestZBLibraryController::changesSurviveReopening()
{
    ZBItem *item = m_library->itemByUUID(addTrack(*m_library, "t", "/t.mp4", "", "mp4"));
    item->setRatingValue(4);
    item->setIsValid(false);
    const QDateTime played = QDateTime(QDate(2026, 5, 1), QTime(8, 30, 15, 250), Qt::UTC);
    item->setLastPlayed(played);
    item->setSourcePageTitle(QStringLiteral("Über — page"));
    QVERIFY(m_library->managedObjectContext()->hasChanges());
    QVERIFY(m_library->save());
    QVERIFY(!m_library->managedObjectContext()->hasChanges());
    // Null and empty text stay apart on disk.
    m_library->addItemToLibrarybyName("absent", "/n.mp4", QString(), "mp4", 0, 0, 0, QDateTime::currentDateTimeUtc(),
                                      QDateTime(), QString());
    const QString uuid = item->ItemUUID();
    reopen();
    item = m_library->itemByUUID(uuid);
    QCOMPARE(item->Rating(), std::optional<qint32>(4));
    QCOMPARE(item->isValid(), std::optional<bool>(false));
    QVERIFY(!item->isAvailable().has_value());
    QCOMPARE(item->LastPlayed(), played);
    QCOMPARE(item->SourcePageTitle(), QStringLiteral("Über — page"));
    QCOMPARE(names(m_library->itemsMatching("URL == ''")), QStringList({"t"}));
    QCOMPARE(names(m_library->itemsMatching("URL == nil")), QStringList({"absent"}));
    QVERIFY(item->setUntypedValueByName("Rating", 2));
    QVERIFY(!item->setUntypedValueByName("NoSuchKey", 2));
    QCOMPARE(item->getUntypedValueByName("Rating").toInt(), 2);
}

// What the source list shows while the store is read: the lists as saved, or
// nothing when the file is missing or not a store, which stays as it was.
void TestZBLibraryController::playlistsArePeekedWithoutTouchingTheStore()
{
    m_library->addPlaylistToLibraryByName("Mine", "Name", true, 200);
    QVERIFY(m_library->save());
    QStringList peeked;
    for (const auto &playlist : ZBLibraryController::peekPlaylists(m_dir->path()))
        peeked << playlist->Name();
    QStringList stored;
    for (const ZBPlaylist *playlist : m_library->managedObjectContext()->playlists())
        stored << playlist->Name();
    QCOMPARE(peeked, stored);
    QVERIFY(peeked.contains("Mine"));

    nvktest::DataDir other;
    QVERIFY(ZBLibraryController::peekPlaylists(other.path()).empty());
    QFile garbage(QDir(other.path()).filePath(ZBLibraryController::LibraryFileName));
    QVERIFY(garbage.open(QIODevice::WriteOnly));
    garbage.write(QByteArray(4096, 'x'));
    garbage.close();
    QVERIFY(ZBLibraryController::peekPlaylists(other.path()).empty());
    QCOMPARE(QDir(other.path()).entryList(QDir::Files), QStringList{ZBLibraryController::LibraryFileName});
    QCOMPARE(QFileInfo(garbage).size(), 4096);
}

QTEST_GUILESS_MAIN(TestZBLibraryController)
#include "tst_zblibrarycontroller.moc"
