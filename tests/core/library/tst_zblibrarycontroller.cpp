#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include "library/zblibrarycontroller.h"
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

    void generatedUUIDsHaveTheCanonicalForm();
    void newPlaylistReadsAsPlainUserList();
    void standardListsAreCreatedOnceAndSurviveRestart();
    void standardListsSelectTheirTracks();
    void downloadFiltersFollowTheClockAtEachStart();
    void samePathIsNeverAddedTwice();
    void lookupsAreLikePatternsAndAnswerNullWhenEmpty();
    void playlistByUUIDIsASubstringMatch();
    void playlistLookupsByName();
    void membershipRules();
    void removingATrackDetachesItFromEveryPlaylist();
    void removingAPlaylistKeepsItsTracks();
    void itemOrderRecord();
    void unreadableOrderRecordGivesEmptyList();
    void sortRules();
    void resourcesOfAnItem();
    void unparsableRequestSelectsNothing();
    void largeLibrariesFilterToTheSameOrderedResult();
    void changesSurviveReopening();
    void nullAndEmptyTextStayDistinctOnDisk();

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

void TestZBLibraryController::generatedUUIDsHaveTheCanonicalForm()
{
    static const QRegularExpression form(
        QStringLiteral("^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}$"));
    QSet<QString> seen;
    for (int i = 0; i < 200; ++i)
    {
        const QString uuid = ZBAdditionalMethods::generateUUID();
        QVERIFY2(form.match(uuid).hasMatch(), qPrintable(uuid));
        QVERIFY(!seen.contains(uuid));
        seen.insert(uuid);
    }
}

void TestZBLibraryController::newPlaylistReadsAsPlainUserList()
{
    const QString uuid =
        m_library->addPlaylistToLibraryByName(QStringLiteral("Mine"), QStringLiteral("Name"), true, 200);
    // Both through a query and after the record went through the file.
    for (int pass = 0; pass < 2; ++pass)
    {
        const auto plain = m_library->getPlaylistsFromLibraryByName(QStringLiteral("Mine"), false, QString());
        QCOMPARE(plain.size(), 1);
        QCOMPARE(plain.first()->PlaylistUUID(), uuid);
        QCOMPARE(m_library->getAllPlaylistsFromLibraryByName(QStringLiteral("mine")).size(), 1);
        QVERIFY(plain.first()->Request().isNull());
        reopen();
    }
}

void TestZBLibraryController::standardListsAreCreatedOnceAndSurviveRestart()
{
    const QStringList standard = {"All Tracks",  "NowBrowsing", "Video",     "SWF",       "Real video",
                                  "Silverlight", "Today",       "Last week", "Last month"};
    QHash<QString, QString> uuids;
    for (const QString &name : standard)
    {
        const QString uuid = m_library->UUIDForStandartSmartListWithName(name);
        QVERIFY2(!uuid.isEmpty(), qPrintable(name));
        ZBPlaylist *list = m_library->playlistByUUID(uuid);
        QVERIFY(list);
        QCOMPARE(list->Name(), name);
        QVERIFY(list->isSmart());
        uuids.insert(name, uuid);
    }
    QCOMPARE(m_library->allTracksUUID(), uuids.value("All Tracks"));
    QCOMPARE(m_library->nowBrowsingUUID(), uuids.value("NowBrowsing"));
    QVERIFY(m_library->TodayUUID().isNull());
    QCOMPARE(m_library->managedObjectContext()->playlists().size(), standard.size());

    const ZBPlaylist *today = m_library->playlistByUUID(uuids.value("Today"));
    QCOMPARE(today->Group(), QStringLiteral("Downloads"));
    QCOMPARE(today->SortField(), QStringLiteral("Added"));
    QCOMPARE(today->Ascend(), std::optional<bool>(false));
    QCOMPARE(today->SortOrder(), std::optional<qint32>(301));
    QCOMPARE(m_library->playlistByUUID(uuids.value("Silverlight"))->SortOrder(), std::optional<qint32>(110));
    QCOMPARE(m_library->playlistByUUID(uuids.value("NowBrowsing"))->Request(), QString(""));

    // A renamed standard list is still found by its record, and nothing is
    // created twice at the next start.
    m_library->playlistByUUID(uuids.value("Video"))->setName(QStringLiteral("Films"));
    m_library->save();
    reopen();
    reopen();
    for (const QString &name : standard)
        QCOMPARE(m_library->UUIDForStandartSmartListWithName(name), uuids.value(name));
    QCOMPARE(m_library->managedObjectContext()->playlists().size(), standard.size());
    QCOMPARE(m_library->playlistByUUID(uuids.value("Video"))->Name(), QStringLiteral("Films"));
}

void TestZBLibraryController::standardListsSelectTheirTracks()
{
    addTrack(*m_library, "movie", "/m/movie.mp4", "", "mp4");
    addTrack(*m_library, "cartoon", "/m/cartoon.swf", "", "swf");
    addTrack(*m_library, "projector", "/m/proj.exe", "", "EXE");
    addTrack(*m_library, "real", "/m/clip.rm", "", "rm");
    addTrack(*m_library, "realvideo", "/m/clip.rmvb", "", "rmvb");
    addTrack(*m_library, "silver", "/m/app.xap", "", "xap");
    QCOMPARE(listed("All Tracks"), QStringList({"cartoon", "movie", "projector", "real", "realvideo", "silver"}));
    QCOMPARE(listed("Video"), QStringList({"movie"}));
    QCOMPARE(listed("SWF"), QStringList({"cartoon", "projector"}));
    QCOMPARE(listed("Real video"), QStringList({"real", "realvideo"}));
    QCOMPARE(listed("Silverlight"), QStringList({"silver"}));
    QCOMPARE(listed("NowBrowsing"), QStringList());
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
    ZBPlaylist *today = m_library->playlistByUUID(m_library->UUIDForStandartSmartListWithName("Today"));
    QCOMPARE(today->Request(), QString::asprintf(" (!(URL == '') AND (Added >= CAST(%f, 'NSDate')))",
                                                 ZBPredicate::referenceSecondsFromDate(start) - 86400.0));
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
    QCOMPARE(addTrack(*m_library, "b", "/music/cafe/song.MP4"), first);
    QCOMPARE(m_library->managedObjectContext()->items().size(), 1);
    QCOMPARE(m_library->managedObjectContext()->items().first()->Name(), QStringLiteral("a"));
    // A proposed UUID is used for a new track.
    const QString proposed = ZBAdditionalMethods::generateUUID();
    QCOMPARE(m_library->addItemToLibrarybyName("c", "/other.mp4", "", "mp4", 0, 0, 0, QDateTime(), QDateTime(),
                                               QString(), proposed),
             proposed);
    reopen();
    QCOMPARE(addTrack(*m_library, "d", "/MUSIC/CAFE/SONG.mp4"), first);
}

void TestZBLibraryController::lookupsAreLikePatternsAndAnswerNullWhenEmpty()
{
    const QString a = addTrack(*m_library, "a", "/a.mp4", "http://host/video?id=1");
    const QString b = addTrack(*m_library, "b", "/b.mp4", "http://host/video?id=2");
    addTrack(*m_library, "c", "/c.mp4", "http://host/videoXid=1");

    QVERIFY(!m_library->getItemsFromLibraryByUUID(ZBAdditionalMethods::generateUUID()).has_value());
    QVERIFY(!m_library->getItemsFromLibraryByURL(QStringLiteral("http://nowhere/")).has_value());
    QVERIFY(!m_library->getItemsFromLibraryByUUID(QString()).has_value());

    const auto byUUID = m_library->getItemsFromLibraryByUUID(a.toLower());
    QVERIFY(byUUID.has_value());
    QCOMPARE(byUUID->size(), 1);
    QCOMPARE(byUUID->first()->ItemUUID(), a);

    // "?" in a URL is a wildcard: one character of anything.
    const auto byURL = m_library->getItemsFromLibraryByURL(QStringLiteral("http://host/video?id=1"));
    QVERIFY(byURL.has_value());
    QCOMPARE(names(*byURL), QStringList({"a", "c"}));
    const auto all = m_library->getItemsFromLibraryByURL(QStringLiteral("HTTP://HOST/*"));
    QCOMPARE(all->size(), 3);
    QVERIFY(m_library->getItemsFromLibraryByUUID(b).has_value());
}

void TestZBLibraryController::playlistByUUIDIsASubstringMatch()
{
    const QString uuid = m_library->addPlaylistToLibraryByName("x", "Name", true, 200);
    QCOMPARE(m_library->playlistByUUID(uuid.mid(9, 9).toLower())->PlaylistUUID(), uuid);
    QVERIFY(!m_library->playlistByUUID(QString()));
    QVERIFY(!m_library->playlistByUUID(QStringLiteral("not-a-uuid")));
    // The exact lookup does not take a fragment.
    QVERIFY(!m_library->getPlaylistsFromLibraryByUUID(uuid.mid(9, 9)));
    QCOMPARE(m_library->getPlaylistsFromLibraryByUUID(uuid.toLower())->PlaylistUUID(), uuid);
}

void TestZBLibraryController::playlistLookupsByName()
{
    m_library->addPlaylistToLibraryByName("Rock", "Name", true, 200);
    m_library->addSmartListWithName("Rock", "Rating > 3", "User", "Name", false, 200);
    m_library->addSmartListWithName("Róck", "Rating > 4", "Elsewhere", "Name", false, 200);

    QCOMPARE(m_library->getAllPlaylistsFromLibraryByName("rock").size(), 2);
    QCOMPARE(m_library->getPlaylistsFromLibraryByName("ROCK", true, "user").size(), 1);
    QCOMPARE(m_library->getPlaylistsFromLibraryByName("rock", true, "*").size(), 2);
    QCOMPARE(m_library->getPlaylistsFromLibraryByName("rock", false, "Nowhere").size(), 1);
    // Every list, standard ones included, matches "*".
    QCOMPARE(m_library->getPlaylistsFromLibraryByName("*", true, "*").size(), 11);

    QVERIFY(m_library->removePlaylistFromLibrary("r?ck"));
    QVERIFY(!m_library->removePlaylistFromLibrary("rock"));
    QCOMPARE(m_library->getPlaylistsFromLibraryByName("*", true, "*").size(), 9);
}

void TestZBLibraryController::membershipRules()
{
    const QString track = addTrack(*m_library, "t", "/t.mp4");
    ZBPlaylist *plain = m_library->playlistByUUID(m_library->addPlaylistToLibraryByName("p", "Name", true, 200));
    ZBPlaylist *smart =
        m_library->playlistByUUID(m_library->addSmartListWithName("s", "Name like[cd] '*'", "User", "Name", true, 200));

    QVERIFY(!m_library->addItemWithUUID(track, smart));
    QVERIFY(!m_library->addItemWithUUID(ZBAdditionalMethods::generateUUID(), plain));
    QVERIFY(m_library->addItemWithUUID(track, plain));
    QVERIFY(!m_library->addItemWithUUID(track, plain));
    QCOMPARE(plain->Item().size(), 1);
    QCOMPARE(m_library->getItemsFromPlaylist(plain).size(), 1);

    QVERIFY(!m_library->removeItemWithUUID(QString(), plain));
    QVERIFY(!m_library->removeItemWithUUID(ZBAdditionalMethods::generateUUID(), plain));
    const QString plainUUID = plain->PlaylistUUID();
    reopen();
    plain = m_library->getPlaylistsFromLibraryByUUID(plainUUID);
    QCOMPARE(m_library->getItemsFromPlaylist(plain).size(), 1);
    QVERIFY(m_library->removeItemWithUUID(track, plain));
    reopen();
    QCOMPARE(m_library->getItemsFromPlaylist(m_library->getPlaylistsFromLibraryByName("p", false, "").first()).size(),
             0);
    QVERIFY(m_library->itemByUUID(track));
}

void TestZBLibraryController::removingATrackDetachesItFromEveryPlaylist()
{
    const QString keep = addTrack(*m_library, "keep", "/keep.mp4");
    const QString gone = addTrack(*m_library, "gone", "/gone.mp4");
    QStringList lists;
    for (const char *name : {"one", "two"})
    {
        lists << m_library->addPlaylistToLibraryByName(QLatin1String(name), "Name", true, 200);
        QVERIFY(m_library->addItemWithUUID(keep, m_library->playlistByUUID(lists.last())));
        QVERIFY(m_library->addItemWithUUID(gone, m_library->playlistByUUID(lists.last())));
    }
    ZBItem *doomed = m_library->itemByUUID(gone);
    QVERIFY(m_library->removeItemFromLibraryByUUID(gone));
    QVERIFY(doomed->isDeleted());
    QVERIFY(!m_library->removeItemFromLibraryByUUID(gone));
    for (int pass = 0; pass < 2; ++pass)
    {
        for (const QString &uuid : std::as_const(lists))
            QCOMPARE(names(m_library->getItemsFromPlaylist(m_library->playlistByUUID(uuid))), QStringList({"keep"}));
        QVERIFY(!m_library->itemByUUID(gone));
        reopen();
    }
}

void TestZBLibraryController::removingAPlaylistKeepsItsTracks()
{
    const QString track = addTrack(*m_library, "t", "/t.mp4");
    const QString list = m_library->addPlaylistToLibraryByName("p", "Name", true, 200);
    QVERIFY(m_library->addItemWithUUID(track, m_library->playlistByUUID(list)));
    QVERIFY(!m_library->removePlaylistFromLibraryByUUID(QString()));
    QVERIFY(m_library->removePlaylistFromLibraryByUUID(list));
    QVERIFY(m_library->itemByUUID(track)->Playlist().isEmpty());
    reopen();
    QVERIFY(!m_library->playlistByUUID(list));
    QVERIFY(m_library->itemByUUID(track));
    QVERIFY(m_library->itemByUUID(track)->Playlist().isEmpty());
}

void TestZBLibraryController::itemOrderRecord()
{
    ZBItemList tracks;
    for (const char *name : {"A", "B", "C"})
        tracks << m_library->itemByUUID(addTrack(*m_library, QLatin1String(name), QStringLiteral("/%1.mp4").arg(name)));
    ZBPlaylist *list = m_library->playlistByUUID(m_library->addPlaylistToLibraryByName("p", "Name", true, 200));

    // Without a record the given list comes back as it is.
    ZBItemList given = tracks;
    QCOMPARE(m_library->getItemsOrderForPlaylist(list, given, true), tracks);
    QCOMPARE(m_library->getItemsOrderForPlaylist(nullptr, given, false), tracks);

    m_library->saveItemsOrderForPlaylist(list, {tracks[2], tracks[0]});
    reopen();
    list = m_library->getPlaylistsFromLibraryByName("p", false, "").first();
    const ZBItemList fresh = m_library->sortList(m_library->managedObjectContext()->items(), "Name", true);
    QCOMPARE(names(fresh), QStringList({"A", "B", "C"}));

    given = fresh;
    QCOMPARE(names(m_library->getItemsOrderForPlaylist(list, given, true)), QStringList({"C", "A", "B"}));
    QVERIFY(given.isEmpty());
    given = fresh;
    QCOMPARE(names(m_library->getItemsOrderForPlaylist(list, given, false)), QStringList({"C", "A"}));
    QCOMPARE(names(given), QStringList({"B"}));

    // A deleted track named by the record is skipped.
    QVERIFY(m_library->removeItemFromLibraryByUUID(fresh[2]->ItemUUID()));
    given = {fresh[0], fresh[1]};
    QCOMPARE(names(m_library->getItemsOrderForPlaylist(list, given, true)), QStringList({"A", "B"}));
}

void TestZBLibraryController::unreadableOrderRecordGivesEmptyList()
{
    const ZBItem *track = m_library->itemByUUID(addTrack(*m_library, "A", "/a.mp4"));
    ZBPlaylist *list = m_library->playlistByUUID(m_library->addPlaylistToLibraryByName("p", "Name", true, 200));
    list->setInternalItemsOrder(QByteArray("\x01garbage{", 9));
    ZBItemList given = {const_cast<ZBItem *>(track)};
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

    QCOMPARE(names(ZBLibraryController::sortList(tracks, "Name", true)),
             QStringList({"apple", "avocado", "Banana", "Cherry"}));
    QCOMPARE(names(ZBLibraryController::sortList(tracks, "Name", false)),
             QStringList({"Cherry", "Banana", "avocado", "apple"}));
    // Counts and dates: "ascending" puts the most and the newest first; an
    // absent date counts as the oldest.
    QCOMPARE(names(ZBLibraryController::sortList(tracks, "PlayCount", true)),
             QStringList({"Cherry", "Banana", "apple", "avocado"}));
    QCOMPARE(names(ZBLibraryController::sortList(tracks, "PlayCount", false)),
             QStringList({"avocado", "apple", "Banana", "Cherry"}));
    QCOMPARE(names(ZBLibraryController::sortList(tracks, "Added", true)),
             QStringList({"apple", "Cherry", "Banana", "avocado"}));
    QCOMPARE(names(ZBLibraryController::sortList(tracks, "Added", false)),
             QStringList({"avocado", "Banana", "Cherry", "apple"}));
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
    auto resources = m_library->getResourcesFromBundle(item);
    std::sort(resources.begin(), resources.end(),
              [](const QVariantMap &a, const QVariantMap &b)
              { return a.value("Path").toString() < b.value("Path").toString(); });
    QCOMPARE(resources.size(), 2);
    QCOMPARE(resources[0].value("Base").toString(), QStringLiteral("1"));
    QCOMPARE(resources[0].value("Path").toString(), QStringLiteral("/p/index.swf"));
    QCOMPARE(resources[1].value("Base").toString(), QStringLiteral("0"));
    QVERIFY(m_library->removeItemFromLibraryByUUID(item->ItemUUID()));
    reopen();
    QCOMPARE(m_library->managedObjectContext()->database().integrityCheck(), QStringLiteral("ok"));
}

void TestZBLibraryController::unparsableRequestSelectsNothing()
{
    addTrack(*m_library, "t", "/t.mp4");
    ZBPlaylist *broken =
        m_library->playlistByUUID(m_library->addSmartListWithName("broken", "(Rating > ", "User", "Name", true, 200));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("selects nothing")));
    QVERIFY(m_library->getItemsFromPlaylist(broken).isEmpty());
    QCOMPARE(m_library->itemsMatching("Name like[cd] '*'").size(), 1);
}

void TestZBLibraryController::largeLibrariesFilterToTheSameOrderedResult()
{
    // Big enough that the scan is split between threads.
    ZBObjectContext *context = m_library->managedObjectContext();
    const QStringList types = {"mp4", "SWF", "Mkv", "rm", "exe"};
    for (int i = 0; i < 30000; ++i)
    {
        ZBItem *item = context->insertItem();
        item->setName(QStringLiteral("Clip %1 Été").arg(i));
        item->setType(types.at(i % types.size()));
        item->setURL(i % 3 ? QStringLiteral("") : QStringLiteral("http://x/%1").arg(i));
        item->setPlayCountValue(i % 11);
    }
    for (const char *text : {"Name CONTAINS[cd] 'ete' AND Name CONTAINS '7'",
                             "(Type contains[cd] 'SWF') OR "
                             "(Type contains[cd] 'EXE')",
                             "!(URL == '') AND PlayCount > 5", "Name like[cd] '*'"})
    {
        const ZBPredicate predicate = ZBPredicate::parse(QLatin1String(text));
        QVERIFY2(predicate.isValid(), text);
        ZBItemList expected;
        for (ZBItem *item : context->items())
        {
            if (predicate.evaluate(*item))
                expected << item;
        }
        QVERIFY2(!expected.isEmpty(), text);
        QCOMPARE(ZBLibraryController::filterItems(context->items(), predicate), expected);
    }
}

void TestZBLibraryController::changesSurviveReopening()
{
    ZBItem *item = m_library->itemByUUID(addTrack(*m_library, "t", "/t.mp4", "http://x/t.mp4", "mp4"));
    item->setPlayCountValue(7);
    item->setRatingValue(4);
    item->setIsValid(false);
    const QDateTime played = QDateTime(QDate(2026, 5, 1), QTime(8, 30, 15, 250), Qt::UTC);
    item->setLastPlayed(played);
    item->setSourcePageTitle(QStringLiteral("Über — page"));
    QVERIFY(m_library->managedObjectContext()->hasChanges());
    QVERIFY(m_library->save());
    QVERIFY(!m_library->managedObjectContext()->hasChanges());
    const QString uuid = item->ItemUUID();
    reopen();
    item = m_library->itemByUUID(uuid);
    QVERIFY(item);
    QCOMPARE(item->PlayCount(), std::optional<qint32>(7));
    QCOMPARE(item->Rating(), std::optional<qint32>(4));
    QCOMPARE(item->isValid(), std::optional<bool>(false));
    QVERIFY(!item->isAvailable().has_value());
    QCOMPARE(item->LastPlayed(), played);
    QCOMPARE(item->SourcePageTitle(), QStringLiteral("Über — page"));
    QCOMPARE(item->getUntypedValueByName("URL").toString(), QStringLiteral("http://x/t.mp4"));
    QVERIFY(!item->getUntypedValueByName(QString()).isValid());
    QVERIFY(item->setUntypedValueByName("Rating", 2));
    QVERIFY(!item->setUntypedValueByName("NoSuchKey", 2));
    QCOMPARE(item->Rating(), std::optional<qint32>(2));
}

void TestZBLibraryController::nullAndEmptyTextStayDistinctOnDisk()
{
    m_library->addItemToLibrarybyName("local", "/l.mp4", QString(""), "mp4", 0, 0, 0, QDateTime::currentDateTimeUtc(),
                                      QDateTime(), QString());
    m_library->addItemToLibrarybyName("absent", "/n.mp4", QString(), "mp4", 0, 0, 0, QDateTime::currentDateTimeUtc(),
                                      QDateTime(), QString());
    reopen();
    QCOMPARE(names(m_library->itemsMatching("URL == ''")), QStringList({"local"}));
    QCOMPARE(names(m_library->itemsMatching("URL == nil")), QStringList({"absent"}));
    QVERIFY(m_library->itemsMatching("SourcePageTitle == ''").isEmpty());
}

QTEST_GUILESS_MAIN(TestZBLibraryController)
#include "tst_zblibrarycontroller.moc"
