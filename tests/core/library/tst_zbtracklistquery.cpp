// The track list worked out off the GUI thread: the newest request's answer
// only, writes that stop a running read, and the same lists as the direct
// path of a library that never had a background read.
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include "library/zblibrarycontroller.h"
#include "library/zblibrarytree.h"
#include "library/zbtracklistquery.h"
#include "library/zbtracksearch.h"
#include "support/testsupport.h"

using Request = ZBTrackListQuery::Request;

class TestZBTrackListQuery : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void answersAreTheDirectPathsAfterSupersededReads_data();
    void answersAreTheDirectPathsAfterSupersededReads();
    void onlyTheNewestRequestIsAnswered();
    void aWriteStopsTheReadAndTheAnswerShowsIt();

private:
    QStringList uuids(const ZBItemList &tracks) const;
    ZBTrackListQuery::Result answer(ZBTrackListQuery &query, const Request &request);
    void waitForRead(ZBTrackListQuery &query);

    nvktest::DataDir m_dir;
    ZBLibraryController m_library;
    QString m_playlist;
    QString m_smart;
};

void TestZBTrackListQuery::initTestCase()
{
    QVERIFY(m_library.openStore(m_dir.path()).ok);
    m_library.initLibrary();
    // Big enough that a read is often still running when the next request comes.
    const QStringList words = {"Café", "night", "Éclair", "dragon", "Cat"};
    ZBPlaylist *playlist = m_library.playlistByUUID(m_library.addPlaylistToLibraryByName("Mine", "Name", true, 200));
    ZBItemList members;
    for (int i = 0; i < 30000; ++i)
    {
        ZBItem *item = m_library.managedObjectContext()->insertItem();
        item->setName(QStringLiteral("%1 %2").arg(words[i % 5], words[(i / 5) % 5]) + QString::number(i % 997));
        item->setType(i % 3 ? QStringLiteral("mp4") : QStringLiteral("swf"));
        item->setPlayCountValue(i % 13);
        if (i % 100 == 0)
            members.prepend(item);
    }
    for (ZBItem *item : std::as_const(members))
        m_library.managedObjectContext()->addMember(playlist, item);
    m_library.saveItemsOrderForPlaylist(playlist, members.mid(5) + members.mid(0, 5));
    m_playlist = playlist->PlaylistUUID();
    m_smart = m_library.addSmartListWithName("Cats", "Name CONTAINS[cd] 'cat'", "User", "Name", true, 201);
}

QStringList TestZBTrackListQuery::uuids(const ZBItemList &tracks) const
{
    QStringList result;
    for (const ZBItem *item : tracks)
        result << item->ItemUUID();
    return result;
}

void TestZBTrackListQuery::waitForRead(ZBTrackListQuery &query)
{
    QElapsedTimer waited;
    waited.start();
    // A write holds reads back until the event loop turns.
    while (!query.isReading() && query.isPending() && waited.elapsed() < 2000)
        QCoreApplication::processEvents();
}

ZBTrackListQuery::Result TestZBTrackListQuery::answer(ZBTrackListQuery &query, const Request &request)
{
    QSignalSpy spy(&query, &ZBTrackListQuery::resultReady);
    const quint64 serial = query.request(request);
    if (!spy.wait(20000))
        return {};
    const auto result = spy.first().first().value<ZBTrackListQuery::Result>();
    return result.serial == serial ? result : ZBTrackListQuery::Result{};
}

void TestZBTrackListQuery::answersAreTheDirectPathsAfterSupersededReads_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QString>("sortKey");
    QTest::addColumn<bool>("ascend");
    QTest::addColumn<QString>("search");
    QTest::newRow("all, by name") << "all" << "Name" << true << "";
    QTest::newRow("video, by count, searched") << "video" << "PlayCount" << true << "CAFE";
    QTest::newRow("own order") << "playlist" << "Name" << false << "";
    QTest::newRow("smart list, by name down, searched") << "smart" << "Name" << false << "night";
}

void TestZBTrackListQuery::answersAreTheDirectPathsAfterSupersededReads()
{
    QFETCH(QString, list);
    QFETCH(QString, sortKey);
    QFETCH(bool, ascend);
    QFETCH(QString, search);
    const QString uuid = list == u"all"     ? m_library.allTracksUUID()
                         : list == u"video" ? m_library.UUIDForStandartSmartListWithName("Video")
                         : list == u"smart" ? m_smart
                                            : m_playlist;
    ZBTrackListQuery query(m_library);
    // A change to each value sorted by below, so that every sort ranks anew.
    ZBItem *changed = m_library.managedObjectContext()->items().first();
    changed->setName(changed->Name() + QStringLiteral(" b"));
    changed->setAdded(changed->Added().addSecs(1));
    changed->setPlayCountValue(changed->PlayCount().value_or(0) + 1);
    changed->setLengthValue(changed->Length().value_or(0) + 1);
    // Reads stopped halfway by the next request must leave no part of an
    // answer behind in the library's kept sorts and lists.
    for (const char *key : {"Name", "Added", "PlayCount", "Length"})
    {
        query.request({uuid, QLatin1String(key), !ascend, QStringLiteral("a")});
        waitForRead(query);
    }
    const ZBTrackListQuery::Result result = answer(query, {uuid, sortKey, ascend, search});
    QVERIFY(result.serial != 0);

    m_library.save();
    ZBLibraryController fresh;
    QVERIFY(fresh.openStore(m_dir.path()).ok);
    const ZBItemList expected = ZBLibraryTree(fresh).tracksForList(uuid, sortKey, ascend);
    QVERIFY(!expected.isEmpty());
    QCOMPARE(uuids(result.list), uuids(expected));
    QCOMPARE(uuids(result.shown), uuids(ZBTrackSearch::filter(expected, search)));
}

void TestZBTrackListQuery::onlyTheNewestRequestIsAnswered()
{
    ZBTrackListQuery query(m_library);
    QSignalSpy spy(&query, &ZBTrackListQuery::resultReady);
    for (const char *text : {"c", "ca", "caf"})
        query.request({m_library.allTracksUUID(), QStringLiteral("Name"), true, QLatin1String(text)});
    // The answer to "caf" is ready by now and waits in the event queue.
    QTest::qSleep(300);
    query.request({m_library.allTracksUUID(), QStringLiteral("Name"), true, QStringLiteral("cat")});
    QTRY_VERIFY_WITH_TIMEOUT(!query.isPending(), 20000);
    // Whatever finished before the last request is never shown.
    QTest::qWait(100);
    QCOMPARE(spy.size(), 1);
    const auto result = spy.first().first().value<ZBTrackListQuery::Result>();
    QCOMPARE(result.request.search, QStringLiteral("cat"));
    const ZBItemList all = ZBLibraryTree(m_library).tracksForList(m_library.allTracksUUID(), "Name", true);
    QCOMPARE(result.shown, ZBTrackSearch::filter(all, QStringLiteral("cat")));
}

void TestZBTrackListQuery::aWriteStopsTheReadAndTheAnswerShowsIt()
{
    ZBTrackListQuery query(m_library);
    QSignalSpy spy(&query, &ZBTrackListQuery::resultReady);
    // The first sort by name after a rename ranks every name, long enough to
    // be under way when the renames come.
    ZBItem *last = m_library.managedObjectContext()->items().last();
    last->setName(last->Name() + QStringLiteral(" again"));
    query.request({m_library.allTracksUUID(), QStringLiteral("Name"), true, QStringLiteral("zebra")});
    waitForRead(query);
    ZBItemList renamed = m_library.managedObjectContext()->items().mid(100, 3);
    for (ZBItem *item : std::as_const(renamed))
        item->setName(QStringLiteral("Zebra %1").arg(item->Name()));
    QTRY_VERIFY_WITH_TIMEOUT(!query.isPending(), 20000);
    QCOMPARE(spy.size(), 1);
    const auto result = spy.first().first().value<ZBTrackListQuery::Result>();
    QCOMPARE(QSet<ZBItem *>(result.shown.cbegin(), result.shown.cend()),
             QSet<ZBItem *>(renamed.cbegin(), renamed.cend()));
}

QTEST_GUILESS_MAIN(TestZBTrackListQuery)
#include "tst_zbtracklistquery.moc"
