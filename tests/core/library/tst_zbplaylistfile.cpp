#include <QFile>
#include <QSet>
#include <QTest>

#include "library/zbitem.h"
#include "library/zblibrarycontroller.h"
#include "library/zbplaylist.h"
#include "library/zbplaylistfile.h"
#include "library/zbpropertylist.h"
#include "localization/zblocalizer.h"
#include "predicate/zbpredicate.h"
#include "support/testsupport.h"

namespace
{
QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC);
}

// A track entry as a file holds it, every key present.
QVariantMap entry(const QString &name, const QString &path)
{
    return QVariantMap{{"Name", name},
                       {"Type", QStringLiteral("mp4")},
                       {"Path", path},
                       {"Length", qlonglong(90)},
                       {"Rating", qlonglong(3)},
                       {"PlayCount", qlonglong(2)},
                       {"Added", utc(2024, 5, 1, 8)},
                       {"LastPlayed", utc(2024, 5, 2, 9)},
                       {"URL", QStringLiteral("")},
                       {"SourcePage", QStringLiteral("")}};
}

QVariantMap plainRoot(const QString &name)
{
    return QVariantMap{{"Name", name},
                       {"isSmart", false},
                       {"SortField", QStringLiteral("Name")},
                       {"Ascend", true},
                       {"SortOrder", qlonglong(200)}};
}

QVariantMap smartRoot(const QString &name, const QString &request)
{
    QVariantMap root = plainRoot(name);
    root.insert("isSmart", true);
    root.insert("Request", request);
    return root;
}

QStringList uuids(const QList<ZBItem *> &items)
{
    QStringList result;
    for (const ZBItem *item : items)
        result << item->ItemUUID();
    result.sort();
    return result;
}

// Everything a file carries about a track, never-played kept apart from any
// real date.
QString describe(const ZBItem *item)
{
    return QStringList{item->Name(),
                       item->Type(),
                       item->Path(),
                       item->URL(),
                       item->SourcePageTitle(),
                       QString::number(item->Rating().value_or(-1)),
                       QString::number(item->Length().value_or(-1)),
                       QString::number(item->PlayCount().value_or(-1)),
                       item->Added().toString(Qt::ISODateWithMs),
                       item->LastPlayed().isValid() ? item->LastPlayed().toString(Qt::ISODateWithMs) : "never"}
        .join(u'|');
}

QStringList described(const QList<ZBItem *> &items)
{
    QStringList result;
    for (const ZBItem *item : items)
        result << describe(item);
    result.sort();
    return result;
}

QStringList paths(const QList<ZBItem *> &items)
{
    QStringList result;
    for (const ZBItem *item : items)
        result << item->Path();
    result.sort();
    return result;
}
} // namespace

class TestZBPlaylistFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void exportThenImportAddsASecondListOfTheSameTracks();
    void exportedFileHoldsTheListAndItsTracks();
    void anotherLibraryGetsTheTracksAsExported();
    void smartListsTravelWithTheirFilterAndNoTracks();
    void aPathAlreadyInTheLibraryKeepsItsTrack();
    void aGapInTheNumberingEndsTheTracks();
    void entriesLackingARequiredKeyAreSkipped_data();
    void entriesLackingARequiredKeyAreSkipped();
    void optionalTrackKeysMayBeMissing();
    void rootLackingARequiredKeyCreatesNothing_data();
    void rootLackingARequiredKeyCreatesNothing();
    void unreadableFilesAreReportedTwice_data();
    void unreadableFilesAreReportedTwice();
    void valuesOfOtherNumberKinds();
    void failedExportsSayWhy();
    void fileNamesAndAlertTexts();

private:
    std::unique_ptr<nvktest::DataDir> m_dir;
    std::unique_ptr<ZBLibraryController> m_library;

    QString write(const QVariantMap &root, const QString &name = QStringLiteral("list.nvp"))
    {
        const QString path = m_dir->filePath(name);
        QString error;
        if (!ZBPropertyList::writeFile(path, root, &error))
            qWarning() << error;
        return path;
    }
    ZBPlaylistFile::ImportResult import(const QVariantMap &root)
    {
        return ZBPlaylistFile::importPlaylistFile(*m_library, write(root));
    }
    ZBPlaylist *list(const QString &uuid) { return m_library->getPlaylistsFromLibraryByUUID(uuid); }
    QString addTrack(const QString &name, const QString &path, const QString &url = QStringLiteral(""),
                     const QDateTime &lastPlayed = QDateTime(), const QString &sourcePage = QString())
    {
        return m_library->addItemToLibrarybyName(name, path, url, QStringLiteral("mp4"), 4, 125, 7,
                                                 utc(2023, 11, 20, 18, 30, 15), lastPlayed, sourcePage);
    }
    // Three tracks in a plain list: one from the web, one never played.
    ZBPlaylist *roadTrip()
    {
        const QString first = addTrack(QStringLiteral("Coast"), QStringLiteral("/v/coast.mp4"),
                                       QStringLiteral("http://example.net/coast.mp4"), utc(2024, 1, 2, 3, 4, 5),
                                       QStringLiteral("Coast videos"));
        const QString second = addTrack(QStringLiteral("Mountains"), QStringLiteral("/v/mountains.mp4"));
        const QString third =
            addTrack(QStringLiteral("Desert"), QStringLiteral("/v/desert.mp4"), QStringLiteral(""), utc(2024, 2, 3));
        addTrack(QStringLiteral("Not in the list"), QStringLiteral("/v/other.mp4"));
        ZBPlaylist *playlist = list(
            m_library->addPlaylistToLibraryByName(QStringLiteral("Road trip"), QStringLiteral("Rating"), false, 204));
        for (const QString &uuid : {first, second, third})
            m_library->addItemWithUUID(uuid, playlist);
        return playlist;
    }
    qsizetype userListCount() const { return m_library->getAllPlaylistsFromLibraryByName(QStringLiteral("*")).size(); }
    qsizetype trackCount() { return m_library->managedObjectContext()->items().size(); }
};

void TestZBPlaylistFile::init()
{
    m_dir = std::make_unique<nvktest::DataDir>();
    m_library = std::make_unique<ZBLibraryController>();
    const auto opened = m_library->openStore(m_dir->path());
    QVERIFY2(opened.ok, qPrintable(opened.error));
    m_library->initLibrary();
}

void TestZBPlaylistFile::cleanup()
{
    m_library.reset();
    m_dir.reset();
}

void TestZBPlaylistFile::exportThenImportAddsASecondListOfTheSameTracks()
{
    ZBPlaylist *original = roadTrip();
    const QString path = m_dir->filePath(QStringLiteral("road trip.nvp"));
    QString error;
    QVERIFY2(ZBPlaylistFile::exportPlaylist(*m_library, original, path, &error), qPrintable(error));
    const qsizetype tracksBefore = trackCount();

    const ZBPlaylistFile::ImportResult result = ZBPlaylistFile::importPlaylistFile(*m_library, path);
    QVERIFY2(result.succeeded(), qPrintable(result.error));
    QCOMPARE(result.errorAlertCount(), 0);
    QVERIFY(!result.unreadable);
    QVERIFY2(result.notes.isEmpty(), qPrintable(result.notes.join('\n')));
    QCOMPARE(result.tracksInList, 3);
    QCOMPARE(result.tracksNewToLibrary, 0);
    QCOMPARE(trackCount(), tracksBefore);

    // The name is taken as it is, though a list of that name exists.
    QCOMPARE(m_library->getAllPlaylistsFromLibraryByName(QStringLiteral("Road trip")).size(), 2);
    ZBPlaylist *copy = list(result.playlistUUID);
    QVERIFY(copy && copy != original);
    QCOMPARE(copy->Name(), original->Name());
    QVERIFY(!copy->isSmart());
    QCOMPARE(copy->Group(), QStringLiteral("User"));
    QCOMPARE(copy->SortField(), QStringLiteral("Rating"));
    QCOMPARE(copy->Ascend(), std::optional<bool>(false));
    QCOMPARE(copy->SortOrder(), std::optional<qint32>(204));
    QCOMPARE(uuids(copy->Item()), uuids(original->Item()));

    // Importing the same file again makes a third list, still of the same tracks.
    const ZBPlaylistFile::ImportResult again = ZBPlaylistFile::importPlaylistFile(*m_library, path);
    QVERIFY(again.succeeded());
    QVERIFY(again.playlistUUID != result.playlistUUID);
    QCOMPARE(uuids(list(again.playlistUUID)->Item()), uuids(original->Item()));
    QCOMPARE(trackCount(), tracksBefore);
}

void TestZBPlaylistFile::exportedFileHoldsTheListAndItsTracks()
{
    ZBPlaylist *playlist = roadTrip();
    // The list's own order record stays behind.
    ZBItemList reversed = playlist->Item();
    std::reverse(reversed.begin(), reversed.end());
    m_library->saveItemsOrderForPlaylist(playlist, reversed);

    const QString path = m_dir->filePath(QStringLiteral("out.nvp"));
    QVERIFY(ZBPlaylistFile::exportPlaylist(*m_library, playlist, path));
    QString error;
    const QVariantMap root = ZBPropertyList::readFile(path, &error).value_or(QVariant()).toMap();
    QVERIFY2(!root.isEmpty(), qPrintable(error));

    const QStringList keys{"0", "1", "2", "Ascend", "Name", "SortField", "SortOrder", "isSmart"};
    QCOMPARE(root.keys(), keys);
    QCOMPARE(root.value("Name"), QVariant(QStringLiteral("Road trip")));
    QCOMPARE(root.value("isSmart"), QVariant(false));
    QCOMPARE(root.value("SortField"), QVariant(QStringLiteral("Rating")));
    QCOMPARE(root.value("Ascend"), QVariant(false));
    QCOMPARE(root.value("SortOrder"), QVariant(qlonglong(204)));

    // Entries follow the order the library hands the members out in.
    const ZBItemList members = m_library->getItemsFromPlaylist(playlist);
    QCOMPARE(members.size(), 3);
    const QStringList trackKeys{"Added",     "LastPlayed", "Length",     "Name", "Path",
                                "PlayCount", "Rating",     "SourcePage", "Type", "URL"};
    for (qsizetype index = 0; index < members.size(); ++index)
    {
        const ZBItem *item = members.at(index);
        const QVariantMap track = root.value(QString::number(index)).toMap();
        QCOMPARE(track.keys(), trackKeys);
        // Never played is written as the reference date, as always.
        const QDateTime lastPlayed = item->LastPlayed().isValid() ? item->LastPlayed() : ZBPredicate::referenceDate();
        const QVariantMap expected{{"Name", item->Name()},
                                   {"Type", item->Type()},
                                   {"Path", item->Path()},
                                   {"Length", qlonglong(*item->Length())},
                                   {"Rating", qlonglong(*item->Rating())},
                                   {"PlayCount", qlonglong(*item->PlayCount())},
                                   {"Added", item->Added()},
                                   {"LastPlayed", lastPlayed},
                                   {"URL", item->URL()},
                                   {"SourcePage", item->SourcePageTitle().isNull() ? "" : item->SourcePageTitle()}};
        for (auto it = expected.cbegin(); it != expected.cend(); ++it)
            QCOMPARE(track.value(it.key()), it.value());
    }
}

void TestZBPlaylistFile::anotherLibraryGetsTheTracksAsExported()
{
    ZBPlaylist *playlist = roadTrip();
    nvktest::DataDir elsewhere;
    const QString path = elsewhere.filePath(QStringLiteral("shared.nvp"));
    QVERIFY(ZBPlaylistFile::exportPlaylist(*m_library, playlist, path));

    ZBLibraryController other;
    QVERIFY(other.openStore(elsewhere.path()).ok);
    other.initLibrary();
    const ZBPlaylistFile::ImportResult result = ZBPlaylistFile::importPlaylistFile(other, path);
    QVERIFY2(result.succeeded(), qPrintable(result.error));
    QCOMPARE(result.tracksNewToLibrary, 3);
    QCOMPARE(result.tracksInList, 3);
    const ZBPlaylist *imported = other.getPlaylistsFromLibraryByUUID(result.playlistUUID);
    // A new track of its own for each, never played staying never played.
    QCOMPARE(described(imported->Item()), described(playlist->Item()));
    for (const ZBItem *theirs : imported->Item())
        QVERIFY(!m_library->itemByUUID(theirs->ItemUUID()));
}

void TestZBPlaylistFile::smartListsTravelWithTheirFilterAndNoTracks()
{
    roadTrip();
    const QString request = QStringLiteral("Name BEGINSWITH[cd] 'm' OR URL CONTAINS 'coast'");
    ZBPlaylist *smart = list(m_library->addSmartListWithName(QStringLiteral("Picked"), request, QStringLiteral("User"),
                                                             QStringLiteral("PlayCount"), true, 210));
    QCOMPARE(m_library->getItemsFromPlaylist(smart).size(), 2);

    const QString path = m_dir->filePath(QStringLiteral("picked.nvp"));
    QVERIFY(ZBPlaylistFile::exportPlaylist(*m_library, smart, path));
    const QVariantMap root = ZBPropertyList::readFile(path).value_or(QVariant()).toMap();
    QCOMPARE(root.keys(), (QStringList{"Ascend", "Name", "Request", "SortField", "SortOrder", "isSmart"}));
    QCOMPARE(root.value("isSmart"), QVariant(true));
    QCOMPARE(root.value("Request"), QVariant(request));

    const qsizetype tracksBefore = trackCount();
    const ZBPlaylistFile::ImportResult result = ZBPlaylistFile::importPlaylistFile(*m_library, path);
    QVERIFY2(result.succeeded(), qPrintable(result.error));
    QVERIFY(result.notes.isEmpty());
    const ZBPlaylist *copy = list(result.playlistUUID);
    QVERIFY(copy->isSmart());
    QCOMPARE(copy->Group(), QStringLiteral("User"));
    QCOMPARE(copy->Request(), request);
    QCOMPARE(copy->SortField(), QStringLiteral("PlayCount"));
    QCOMPARE(copy->Ascend(), std::optional<bool>(true));
    QCOMPARE(copy->SortOrder(), std::optional<qint32>(210));
    QCOMPARE(uuids(m_library->getItemsFromPlaylist(copy)), uuids(m_library->getItemsFromPlaylist(smart)));
    QCOMPARE(trackCount(), tracksBefore);

    // Track entries in a smart list's file are no business of the import.
    QVariantMap withTracks = smartRoot(QStringLiteral("Stray"), QStringLiteral("Rating > 3"));
    withTracks.insert("0", entry(QStringLiteral("Stray"), QStringLiteral("/v/stray.mp4")));
    QVERIFY(import(withTracks).succeeded());
    QCOMPARE(trackCount(), tracksBefore);

    // A filter that does not parse still makes its list, as it always has;
    // norvikctl says so.
    const ZBPlaylistFile::ImportResult broken = import(smartRoot(QStringLiteral("Broken"), QStringLiteral("Name ==")));
    QVERIFY(broken.succeeded());
    QCOMPARE(broken.notes.size(), 1);
    QVERIFY2(broken.notes.first().contains(QLatin1String("does not parse")), qPrintable(broken.notes.first()));
}

void TestZBPlaylistFile::aPathAlreadyInTheLibraryKeepsItsTrack()
{
    const QString mine =
        m_library->addItemToLibrarybyName(QStringLiteral("Mine"), QStringLiteral("/v/Shared.mp4"), QStringLiteral(""),
                                          QStringLiteral("mp4"), 5, 30, 9, utc(2020, 1, 1), QDateTime(), QString());
    QVariantMap root = plainRoot(QStringLiteral("From a friend"));
    root.insert("0", entry(QStringLiteral("Theirs"), QStringLiteral("/V/SHARED.MP4")));
    root.insert("1", entry(QStringLiteral("New"), QStringLiteral("/v/new.mp4")));
    // The same path twice is one member.
    root.insert("2", entry(QStringLiteral("Again"), QStringLiteral("/v/new.mp4")));
    const qsizetype before = trackCount();

    const ZBPlaylistFile::ImportResult result = import(root);
    QVERIFY(result.succeeded());
    QCOMPARE(result.tracksNewToLibrary, 1);
    QCOMPARE(result.tracksInList, 2);
    QCOMPARE(trackCount(), before + 1);
    const ZBItem *kept = m_library->itemByUUID(mine);
    QVERIFY(list(result.playlistUUID)->Item().contains(kept));
    QCOMPARE(describe(kept), QStringLiteral("Mine|mp4|/v/Shared.mp4|||5|30|9|2020-01-01T00:00:00.000Z|never"));
}

void TestZBPlaylistFile::aGapInTheNumberingEndsTheTracks()
{
    QVariantMap root = plainRoot(QStringLiteral("Gappy"));
    for (const int index : {0, 1, 3, 4})
        root.insert(QString::number(index),
                    entry(QStringLiteral("Track %1").arg(index), QStringLiteral("/v/%1.mp4").arg(index)));
    const ZBPlaylistFile::ImportResult result = import(root);
    QVERIFY(result.succeeded());
    QCOMPARE(result.errorAlertCount(), 0);
    QCOMPARE(result.tracksInList, 2);
    QCOMPARE(paths(list(result.playlistUUID)->Item()), (QStringList{"/v/0.mp4", "/v/1.mp4"}));
    QCOMPARE(result.notes.size(), 1);
    QVERIFY2(result.notes.first().contains(QLatin1String("\"2\" is missing")) &&
                 result.notes.first().contains(QLatin1String("\"3\", \"4\"")),
             qPrintable(result.notes.first()));

    // Keys that are not plain indexes are not entries at all.
    QVariantMap odd = plainRoot(QStringLiteral("Odd keys"));
    odd.insert("00", entry(QStringLiteral("Zero zero"), QStringLiteral("/v/00.mp4")));
    odd.insert("+1", entry(QStringLiteral("Plus one"), QStringLiteral("/v/plus1.mp4")));
    const ZBPlaylistFile::ImportResult none = import(odd);
    QVERIFY(none.succeeded());
    QCOMPARE(none.tracksInList, 0);
    QVERIFY(none.notes.isEmpty());
}

void TestZBPlaylistFile::entriesLackingARequiredKeyAreSkipped_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("wrongKind");

    QTest::newRow("Type") << "Type" << QVariant(qlonglong(4));
    QTest::newRow("Name") << "Name" << QVariant(QVariantList{});
    QTest::newRow("Length") << "Length" << QVariant(QStringLiteral("long"));
    QTest::newRow("Path") << "Path" << QVariant(QByteArray("/v/x"));
    QTest::newRow("PlayCount") << "PlayCount" << QVariant(utc(2024, 1, 1));
    QTest::newRow("Rating") << "Rating" << QVariant(qlonglong(1) << 40);
    QTest::newRow("Added") << "Added" << QVariant(QStringLiteral("2024-05-01T08:00:00Z"));
}

void TestZBPlaylistFile::entriesLackingARequiredKeyAreSkipped()
{
    QFETCH(QString, key);
    QFETCH(QVariant, wrongKind);

    for (const bool absent : {true, false})
    {
        QVariantMap root = plainRoot(QStringLiteral("Skipping"));
        root.insert("0", entry(QStringLiteral("First"), QStringLiteral("/v/first-%1.mp4").arg(absent)));
        QVariantMap faulty = entry(QStringLiteral("Faulty"), QStringLiteral("/v/faulty.mp4"));
        if (absent)
            faulty.remove(key);
        else
            faulty.insert(key, wrongKind);
        root.insert("1", faulty);
        root.insert("2", entry(QStringLiteral("Third"), QStringLiteral("/v/third-%1.mp4").arg(absent)));
        const qsizetype before = trackCount();

        const ZBPlaylistFile::ImportResult result = import(root);
        QVERIFY(result.succeeded());
        QCOMPARE(result.errorAlertCount(), 0);
        QCOMPARE(result.tracksInList, 2);
        QCOMPARE(trackCount(), before + 2);
        for (const ZBItem *item : list(result.playlistUUID)->Item())
            QVERIFY(item->Name() != u"Faulty" && item->Path() != u"/v/faulty.mp4");
        QCOMPARE(result.notes.size(), 1);
        QVERIFY2(result.notes.first().contains(u"\"1\"") && result.notes.first().contains(u'"' + key + u'"'),
                 qPrintable(result.notes.first()));
    }
}

void TestZBPlaylistFile::optionalTrackKeysMayBeMissing()
{
    QVariantMap bare = entry(QStringLiteral("Bare"), QStringLiteral("/v/bare.mp4"));
    for (const char *optional : {"URL", "SourcePage", "LastPlayed"})
        bare.remove(optional);
    QVariantMap never = entry(QStringLiteral("Never"), QStringLiteral("/v/never.mp4"));
    never.insert("LastPlayed", ZBPredicate::referenceDate());
    QVariantMap web = entry(QStringLiteral("Web"), QStringLiteral("/v/web.flv"));
    web.insert("URL", QStringLiteral("http://example.net/web.flv"));
    web.insert("SourcePage", QStringLiteral("A page"));
    web.insert("Type", QStringLiteral("flv"));
    QVariantMap root = plainRoot(QStringLiteral("Optional"));
    root.insert("0", bare);
    root.insert("1", never);
    root.insert("2", web);

    const ZBPlaylistFile::ImportResult result = import(root);
    QVERIFY(result.succeeded());
    QCOMPARE(result.tracksInList, 3);
    QVERIFY(result.notes.isEmpty());
    for (const ZBItem *item : list(result.playlistUUID)->Item())
    {
        if (item->Name() == u"Web")
        {
            QCOMPARE(item->URL(), QStringLiteral("http://example.net/web.flv"));
            QCOMPARE(item->SourcePageTitle(), QStringLiteral("A page"));
            QCOMPARE(item->Type(), QStringLiteral("flv"));
            QCOMPARE(item->LastPlayed(), utc(2024, 5, 2, 9));
        }
        else
        {
            // Empty, not absent: the download filters test URL == ''.
            QVERIFY(item->URL().isEmpty() && !item->URL().isNull());
            QVERIFY(item->SourcePageTitle().isEmpty() && !item->SourcePageTitle().isNull());
            QVERIFY2(!item->LastPlayed().isValid(), qPrintable(item->Name()));
        }
        QCOMPARE(item->Added(), utc(2024, 5, 1, 8));
        QCOMPARE(item->Rating(), std::optional<qint32>(3));
        QCOMPARE(item->Length(), std::optional<qint32>(90));
        QCOMPARE(item->PlayCount(), std::optional<qint32>(2));
    }
}

void TestZBPlaylistFile::rootLackingARequiredKeyCreatesNothing_data()
{
    QTest::addColumn<QVariantMap>("root");
    QTest::addColumn<QString>("key");

    for (const char *key : {"Name", "SortField", "Ascend", "SortOrder"})
    {
        QVariantMap root = plainRoot(QStringLiteral("Incomplete"));
        root.insert("0", entry(QStringLiteral("Would be added"), QStringLiteral("/v/would.mp4")));
        root.remove(key);
        QTest::addRow("plain without %s", key) << root << key;
    }
    for (const char *key : {"Name", "Request", "SortField", "Ascend", "SortOrder"})
    {
        QVariantMap root = smartRoot(QStringLiteral("Incomplete"), QStringLiteral("Rating > 2"));
        root.remove(key);
        QTest::addRow("smart without %s", key) << root << key;
    }
    // isSmart absent is a plain list, which needs no Request.
    QVariantMap unmarked = smartRoot(QStringLiteral("Unmarked"), QStringLiteral("Rating > 2"));
    unmarked.remove("isSmart");
    unmarked.remove("SortField");
    QTest::newRow("no isSmart, no SortField") << unmarked << "SortField";

    QVariantMap wrongName = plainRoot(QStringLiteral(""));
    wrongName.insert("Name", qlonglong(12));
    QTest::newRow("Name of another kind") << wrongName << "Name";
    QVariantMap wrongOrder = plainRoot(QStringLiteral("Order"));
    wrongOrder.insert("SortOrder", QStringLiteral("first"));
    QTest::newRow("SortOrder of another kind") << wrongOrder << "SortOrder";
}

void TestZBPlaylistFile::rootLackingARequiredKeyCreatesNothing()
{
    QFETCH(QVariantMap, root);
    QFETCH(QString, key);
    const qsizetype lists = m_library->managedObjectContext()->playlists().size();
    const qsizetype tracks = trackCount();

    const ZBPlaylistFile::ImportResult result = import(root);
    QVERIFY(!result.succeeded());
    QVERIFY(!result.unreadable);
    QCOMPARE(result.errorAlertCount(), 1);
    QCOMPARE(result.missingKeys, QStringList{key});
    QVERIFY2(result.error.contains(u'"' + key + u'"'), qPrintable(result.error));
    QCOMPARE(m_library->managedObjectContext()->playlists().size(), lists);
    QCOMPARE(trackCount(), tracks);
}

void TestZBPlaylistFile::unreadableFilesAreReportedTwice_data()
{
    QTest::addColumn<bool>("onDisk");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("because");

    QTest::newRow("empty") << true << QByteArray() << "line 1";
    QTest::newRow("not XML") << true << QByteArray("Name: Road trip\n0: /v/a.mp4\n") << "line 1";
    QTest::newRow("broken XML") << true << QByteArray("<plist><dict><key>Name</key><string>Road trip</string></plist>")
                                << "well-formed";
    QTest::newRow("unknown element") << true << QByteArray("<plist><dict><key>Name</key><name>x</name></dict></plist>")
                                     << "<name>";
    QTest::newRow("array root") << true
                                << ZBPropertyList::write(QVariantList{plainRoot(QStringLiteral("Inside"))}).value()
                                << "<array>, not <dict>";
    QTest::newRow("text root") << true << ZBPropertyList::write(QStringLiteral("Road trip")).value()
                               << "<string>, not <dict>";
    QTest::newRow("no such file") << false << QByteArray() << "cannot open";
}

void TestZBPlaylistFile::unreadableFilesAreReportedTwice()
{
    QFETCH(bool, onDisk);
    QFETCH(QByteArray, content);
    QFETCH(QString, because);
    const QString path = m_dir->filePath(QStringLiteral("bad.nvp"));
    if (onDisk)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }
    const qsizetype lists = m_library->managedObjectContext()->playlists().size();
    const qsizetype tracks = trackCount();

    const ZBPlaylistFile::ImportResult result = ZBPlaylistFile::importPlaylistFile(*m_library, path);
    QVERIFY(!result.succeeded());
    QVERIFY(result.unreadable);
    QCOMPARE(result.errorAlertCount(), 2);
    QVERIFY2(result.error.contains(because), qPrintable(result.error));
    // What stands in for the file lacks every key of a plain list.
    QCOMPARE(result.missingKeys, (QStringList{"Name", "SortField", "Ascend", "SortOrder"}));
    QCOMPARE(m_library->managedObjectContext()->playlists().size(), lists);
    QCOMPARE(trackCount(), tracks);
    // The file is only read, never touched.
    if (onDisk)
        QCOMPARE(QFile(path).size(), content.size());
}

void TestZBPlaylistFile::valuesOfOtherNumberKinds()
{
    // Numbers written as text, reals or booleans by other writers count as
    // the numbers they stand for.
    QVariantMap root = plainRoot(QStringLiteral("Kinds"));
    root.insert("Ascend", qlonglong(0));
    root.insert("SortOrder", QStringLiteral(" 7 "));
    QVariantMap track = entry(QStringLiteral("Kinds"), QStringLiteral("/v/kinds.mp4"));
    track.insert("Rating", 4.9);
    track.insert("Length", QStringLiteral("61"));
    track.insert("PlayCount", true);
    root.insert("0", track);
    const ZBPlaylistFile::ImportResult result = import(root);
    QVERIFY2(result.succeeded(), qPrintable(result.error));
    const ZBPlaylist *playlist = list(result.playlistUUID);
    QCOMPARE(playlist->Ascend(), std::optional<bool>(false));
    QCOMPARE(playlist->SortOrder(), std::optional<qint32>(7));
    QCOMPARE(playlist->Item().size(), 1);
    const ZBItem *item = playlist->Item().first();
    QCOMPARE(item->Rating(), std::optional<qint32>(4));
    QCOMPARE(item->Length(), std::optional<qint32>(61));
    QCOMPARE(item->PlayCount(), std::optional<qint32>(1));

    for (const QVariant &yes :
         {QVariant(qlonglong(1)), QVariant(QStringLiteral("YES")), QVariant(QStringLiteral("true"))})
    {
        QVariantMap smart = smartRoot(QStringLiteral("Smart"), QStringLiteral("Rating > 3"));
        smart.insert("isSmart", yes);
        const ZBPlaylistFile::ImportResult made = import(smart);
        QVERIFY(made.succeeded());
        QVERIFY2(list(made.playlistUUID)->isSmart(), qPrintable(yes.toString()));
    }
    // An isSmart of no use reads as false: a plain list, so no Request needed.
    QVariantMap plain = plainRoot(QStringLiteral("Plain"));
    plain.insert("isSmart", QVariantMap());
    const ZBPlaylistFile::ImportResult made = import(plain);
    QVERIFY(made.succeeded());
    QVERIFY(!list(made.playlistUUID)->isSmart());
}

void TestZBPlaylistFile::failedExportsSayWhy()
{
    ZBPlaylist *playlist = roadTrip();
    QString error;
    QVERIFY(
        !ZBPlaylistFile::exportPlaylist(*m_library, playlist, m_dir->filePath(QStringLiteral("none/x.nvp")), &error));
    QVERIFY2(error.contains(QLatin1String("cannot write")), qPrintable(error));
    QVERIFY(!ZBPlaylistFile::exportPlaylist(*m_library, nullptr, m_dir->filePath(QStringLiteral("x.nvp")), &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(!QFile::exists(m_dir->filePath(QStringLiteral("x.nvp"))));

    // A name XML cannot carry stops the export and leaves an older file whole.
    const QString path = m_dir->filePath(QStringLiteral("kept.nvp"));
    QVERIFY(ZBPlaylistFile::exportPlaylist(*m_library, playlist, path));
    const QByteArray before = [&path]
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    const QString bell = addTrack(QStringLiteral("Bell\x07"), QStringLiteral("/v/bell.mp4"));
    m_library->addItemWithUUID(bell, playlist);
    QVERIFY(!ZBPlaylistFile::exportPlaylist(*m_library, playlist, path, &error));
    QVERIFY2(error.contains(QLatin1String("/Name")) && error.contains(QLatin1String("U+0007")), qPrintable(error));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), before);
}

void TestZBPlaylistFile::fileNamesAndAlertTexts()
{
    ZBPlaylist *playlist = list(m_library->addPlaylistToLibraryByName(QStringLiteral("AC/DC live"), "Name", true, 1));
    QCOMPARE(ZBPlaylistFile::proposedFileName(playlist), QStringLiteral("AC-DC live.nvp"));
    playlist->setName(QStringLiteral(".."));
    QCOMPARE(ZBPlaylistFile::proposedFileName(playlist), QStringLiteral("Playlist.nvp"));

    // Every text the window shows for playlist files is in the string table.
    const QHash<QString, QString> english = ZBLocalizer::englishDictionaryForTable();
    for (const QString &key :
         {ZBPlaylistFile::SavePanelTitleKey, ZBPlaylistFile::OpenPanelTitleKey, ZBPlaylistFile::ImportErrorTitleKey,
          ZBPlaylistFile::ImportErrorInfoKey, ZBPlaylistFile::ImportErrorButtonKey})
        QVERIFY2(!english.value(key).isEmpty(), qPrintable(key));
}

QTEST_GUILESS_MAIN(TestZBPlaylistFile)
#include "tst_zbplaylistfile.moc"
