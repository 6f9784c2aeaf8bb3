#include <QFile>
#include <QTest>

#include "library/zbitem.h"
#include "library/zblibrarycontroller.h"
#include "library/zbplaylist.h"
#include "library/zbplaylistfile.h"
#include "library/zbpropertylist.h"
#include "predicate/zbpredicate.h"
#include "support/testsupport.h"

namespace
{
QDateTime utc(int year, int month, int day, int hour = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, 0), Qt::UTC);
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

// A list's root; a smart list's when it has a request.
QVariantMap plainRoot(const QString &name, const QString &request = QString())
{
    QVariantMap root{{"Name", name}, {"isSmart", !request.isNull()}, {"SortField", QStringLiteral("Name")}};
    root.insert("Ascend", true);
    root.insert("SortOrder", qlonglong(200));
    if (!request.isNull())
        root.insert("Request", request);
    return root;
}

// Everything a file carries about a track, never-played kept apart from any
// real date; sorted, as list order is not what these cases look at.
QStringList described(const QList<ZBItem *> &items)
{
    const auto number = [](std::optional<qint32> value)
    {
        return QString::number(value.value_or(-1));
    };
    QStringList result;
    for (const ZBItem *item : items)
        result << QStringLiteral("%1|%2|%3|%4|%5|%6|%7|%8|%9")
                          .arg(item->Name(), item->Type(), item->Path(), item->URL(), item->SourcePageTitle(),
                               number(item->Rating()), number(item->Length()), number(item->PlayCount()),
                               item->Added().toString(Qt::ISODateWithMs)) +
                      (item->LastPlayed().isValid() ? item->LastPlayed().toString(Qt::ISODateWithMs) : "|never");
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

    void exportThenImportHereAndElsewhere();
    void smartListsTravelWithTheirFilterAndNoTracks();
    void entriesOfAFile();
    void optionalKeysAndOtherNumberKinds();
    void importsThatCreateNothing_data();
    void importsThatCreateNothing();
    void failedExportsSayWhy();

private:
    std::unique_ptr<nvktest::DataDir> m_dir;
    std::unique_ptr<ZBLibraryController> m_library;

    ZBPlaylistFile::ImportResult import(const QVariantMap &root)
    {
        const QString path = m_dir->filePath(QStringLiteral("list.nvp"));
        QString error;
        if (!ZBPropertyList::writeFile(path, root, &error))
            qWarning() << error;
        return ZBPlaylistFile::importPlaylistFile(*m_library, path);
    }
    ZBPlaylist *list(const QString &uuid) { return m_library->getPlaylistsFromLibraryByUUID(uuid); }
    QString addTrack(const QString &name, const QString &path, const QString &url = QStringLiteral(""),
                     const QDateTime &lastPlayed = QDateTime(), const QString &sourcePage = QString())
    {
        return m_library->addItemToLibrarybyName(name, path, url, QStringLiteral("mp4"), 4, 125, 7,
                                                 utc(2023, 11, 20, 18), lastPlayed, sourcePage);
    }
    // Three tracks in a plain list: one from the web, one never played.
    ZBPlaylist *roadTrip()
    {
        const QString first = addTrack(QStringLiteral("Coast"), QStringLiteral("/v/coast.mp4"),
                                       QStringLiteral("http://example.net/coast.mp4"), utc(2024, 1, 2, 3),
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
    qsizetype listCount() { return m_library->managedObjectContext()->playlists().size(); }
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

void TestZBPlaylistFile::exportThenImportHereAndElsewhere()
{
    ZBPlaylist *original = roadTrip();
    const QString path = m_dir->filePath(QStringLiteral("road trip.nvp"));
    QString error;
    QVERIFY2(ZBPlaylistFile::exportPlaylist(*m_library, original, path, &error), qPrintable(error));
    const QVariantMap root = ZBPropertyList::readFile(path, &error).value_or(QVariant()).toMap();
    QCOMPARE(root.keys(), (QStringList{"0", "1", "2", "Ascend", "Name", "SortField", "SortOrder", "isSmart"}));

    // Here the name is taken as it is, though a list of that name exists,
    // and the tracks are the ones already in the library, every time.
    const qsizetype tracksBefore = trackCount();
    for (int round = 0; round < 2; ++round)
    {
        const ZBPlaylistFile::ImportResult result = ZBPlaylistFile::importPlaylistFile(*m_library, path);
        QVERIFY2(result.succeeded() && result.notes.isEmpty(), qPrintable(result.error + result.notes.join('\n')));
        QCOMPARE(result.tracksInList, 3);
        QCOMPARE(result.tracksNewToLibrary, 0);
        const ZBPlaylist *copy = list(result.playlistUUID);
        QVERIFY(copy != original);
        QCOMPARE(QStringLiteral("%1 %2 %3 %4")
                     .arg(copy->Name(), copy->SortField())
                     .arg(*copy->Ascend())
                     .arg(*copy->SortOrder()),
                 QStringLiteral("Road trip Rating 0 204"));
        QCOMPARE(m_library->getItemsFromPlaylist(copy), m_library->getItemsFromPlaylist(original));
    }
    QCOMPARE(trackCount(), tracksBefore);
    QCOMPARE(m_library->getAllPlaylistsFromLibraryByName(QStringLiteral("Road trip")).size(), 3);

    // Another library gets a new track of its own for each, never played
    // staying never played.
    nvktest::DataDir elsewhere;
    ZBLibraryController other;
    QVERIFY(other.openStore(elsewhere.path()).ok);
    other.initLibrary();
    const ZBPlaylistFile::ImportResult result = ZBPlaylistFile::importPlaylistFile(other, path);
    QVERIFY2(result.succeeded(), qPrintable(result.error));
    QCOMPARE(result.tracksNewToLibrary, 3);
    const ZBPlaylist *imported = other.getPlaylistsFromLibraryByUUID(result.playlistUUID);
    QCOMPARE(described(imported->Item()), described(original->Item()));
    QVERIFY(!m_library->itemByUUID(imported->Item().first()->ItemUUID()));
}

void TestZBPlaylistFile::smartListsTravelWithTheirFilterAndNoTracks()
{
    roadTrip();
    const QString request = QStringLiteral("Name BEGINSWITH[cd] 'm' OR URL CONTAINS 'coast'");
    ZBPlaylist *smart = list(m_library->addSmartListWithName(QStringLiteral("Picked"), request, QStringLiteral("User"),
                                                             QStringLiteral("PlayCount"), true, 210));
    const QString path = m_dir->filePath(QStringLiteral("picked.nvp"));
    QVERIFY(ZBPlaylistFile::exportPlaylist(*m_library, smart, path));
    const QVariantMap root = ZBPropertyList::readFile(path).value_or(QVariant()).toMap();
    QCOMPARE(root.keys(), (QStringList{"Ascend", "Name", "Request", "SortField", "SortOrder", "isSmart"}));

    const qsizetype tracksBefore = trackCount();
    const ZBPlaylistFile::ImportResult result = ZBPlaylistFile::importPlaylistFile(*m_library, path);
    QVERIFY2(result.succeeded() && result.notes.isEmpty(), qPrintable(result.error));
    const ZBPlaylist *copy = list(result.playlistUUID);
    QVERIFY(copy->isSmart());
    QCOMPARE(copy->Request(), request);
    QCOMPARE(m_library->getItemsFromPlaylist(copy).size(), 2);

    // Track entries in a smart list's file are no business of the import; a
    // filter that does not parse still makes its list, with a note; other
    // writers say yes in words.
    QVariantMap broken = plainRoot(QStringLiteral("Broken"), QStringLiteral("Name =="));
    broken.insert("isSmart", QStringLiteral("YES"));
    broken.insert("0", entry(QStringLiteral("Stray"), QStringLiteral("/v/stray.mp4")));
    const ZBPlaylistFile::ImportResult made = import(broken);
    QCOMPARE(trackCount(), tracksBefore);
    QVERIFY(made.succeeded() && list(made.playlistUUID)->isSmart());
    QCOMPARE(made.notes.size(), 1);
    QVERIFY2(made.notes.first().contains(QLatin1String("does not parse")), qPrintable(made.notes.first()));
}

void TestZBPlaylistFile::entriesOfAFile()
{
    const QString mine =
        m_library->addItemToLibrarybyName(QStringLiteral("Mine"), QStringLiteral("/v/Shared.mp4"), QStringLiteral(""),
                                          QStringLiteral("mp4"), 5, 30, 9, utc(2020, 1, 1), QDateTime(), QString());
    const QStringList mineBefore = described({m_library->itemByUUID(mine)});
    // A path in the library in other letter case keeps its track; the same
    // path twice is one member; an entry lacking a required key, or holding
    // one of no use, is skipped with a note; a gap in the numbering ends the
    // entries.
    QVariantMap root = plainRoot(QStringLiteral("From a friend"));
    root.insert("0", entry(QStringLiteral("Theirs"), QStringLiteral("/V/SHARED.MP4")));
    root.insert("1", entry(QStringLiteral("New"), QStringLiteral("/v/new.mp4")));
    root.insert("2", entry(QStringLiteral("Again"), QStringLiteral("/v/new.mp4")));
    const QList<std::pair<QString, QVariant>> faults{{"Type", QVariant()},
                                                     {"Added", QVariant()},
                                                     {"Added", QStringLiteral("2024-05-01T08:00:00Z")},
                                                     {"Rating", qlonglong(1) << 40}};
    for (int i = 0; i < faults.size(); ++i)
    {
        QVariantMap faulty = entry(QStringLiteral("Faulty"), QStringLiteral("/v/faulty%1.mp4").arg(i));
        faulty.insert(faults[i].first, faults[i].second);
        if (!faults[i].second.isValid())
            faulty.remove(faults[i].first);
        root.insert(QString::number(3 + i), faulty);
    }
    root.insert("8", entry(QStringLiteral("Late"), QStringLiteral("/v/late.mp4")));
    const qsizetype before = trackCount();

    const ZBPlaylistFile::ImportResult result = import(root);
    QVERIFY(result.succeeded());
    QCOMPARE(result.errorAlertCount(), 0);
    QCOMPARE(result.tracksNewToLibrary, 1);
    QCOMPARE(result.tracksInList, 2);
    QCOMPARE(trackCount(), before + 1);
    QVERIFY(list(result.playlistUUID)->Item().contains(m_library->itemByUUID(mine)));
    QCOMPARE(described({m_library->itemByUUID(mine)}), mineBefore);
    QCOMPARE(result.notes.size(), faults.size() + 1);
    for (int i = 0; i < faults.size(); ++i)
        QVERIFY2(result.notes[i].contains(QStringLiteral("\"%1\"").arg(3 + i)) &&
                     result.notes[i].contains(u'"' + faults[i].first + u'"'),
                 qPrintable(result.notes[i]));
    QVERIFY2(result.notes.last().contains(QLatin1String("\"7\" is missing")) &&
                 result.notes.last().contains(QLatin1String("\"8\"")),
             qPrintable(result.notes.last()));
}

void TestZBPlaylistFile::optionalKeysAndOtherNumberKinds()
{
    QVariantMap bare = entry(QStringLiteral("Bare"), QStringLiteral("/v/bare.mp4"));
    for (const char *optional : {"URL", "SourcePage", "LastPlayed"})
        bare.remove(optional);
    // Numbers written as text, reals or booleans by other writers count as
    // the numbers they stand for.
    bare.insert("Rating", 4.9);
    bare.insert("Length", QStringLiteral("61"));
    bare.insert("PlayCount", true);
    QVariantMap never = entry(QStringLiteral("Never"), QStringLiteral("/v/never.mp4"));
    never.insert("LastPlayed", ZBPredicate::referenceDate());
    QVariantMap root = plainRoot(QStringLiteral("Optional"));
    root.insert("Ascend", qlonglong(0));
    root.insert("SortOrder", QStringLiteral(" 7 "));
    root.insert("0", bare);
    root.insert("1", never);

    const ZBPlaylistFile::ImportResult result = import(root);
    QVERIFY2(result.succeeded() && result.notes.isEmpty(), qPrintable(result.error));
    const ZBPlaylist *playlist = list(result.playlistUUID);
    QCOMPARE(playlist->Ascend(), std::optional<bool>(false));
    QCOMPARE(playlist->SortOrder(), std::optional<qint32>(7));
    // Empty, not absent: the download filters test URL == ''.
    QCOMPARE(described(playlist->Item()),
             (QStringList{"Bare|mp4|/v/bare.mp4|||4|61|1|2024-05-01T08:00:00.000Z|never",
                          "Never|mp4|/v/never.mp4|||3|90|2|2024-05-01T08:00:00.000Z|never"}));
    for (const ZBItem *item : playlist->Item())
        QVERIFY(!item->URL().isNull() && !item->SourcePageTitle().isNull());
}

void TestZBPlaylistFile::importsThatCreateNothing_data()
{
    QTest::addColumn<QByteArray>("content"); // null: no file at all
    QTest::addColumn<QStringList>("missing");
    QTest::addColumn<QString>("because");
    const auto written = [](const QVariant &root)
    {
        return ZBPropertyList::write(root).value();
    };
    const auto without = [&written](QVariantMap root, const QStringList &keys)
    {
        root.insert("0", entry(QStringLiteral("Would be added"), QStringLiteral("/v/would.mp4")));
        for (const QString &key : keys)
            root.remove(key);
        return written(root);
    };
    // A root lacking a required key is one alert. isSmart absent is a plain
    // list, which needs no Request.
    const QVariantMap smart = plainRoot(QStringLiteral("Incomplete"), QStringLiteral("Rating > 2"));
    QTest::newRow("plain without Ascend")
        << without(plainRoot("x"), {"Ascend"}) << QStringList{"Ascend"} << "\"Ascend\"";
    QTest::newRow("smart without Request") << without(smart, {"Request"}) << QStringList{"Request"} << "\"Request\"";
    QTest::newRow("no isSmart, no SortField")
        << without(smart, {"isSmart", "SortField"}) << QStringList{"SortField"} << "\"SortField\"";
    QVariantMap wrongOrder = plainRoot(QStringLiteral("Order"));
    wrongOrder.insert("SortOrder", QStringLiteral("first"));
    QTest::newRow("SortOrder of another kind") << written(wrongOrder) << QStringList{"SortOrder"} << "\"SortOrder\"";

    // An unreadable file stands in as an empty root, lacking every key of a
    // plain list: two alerts.
    const QStringList all{"Name", "SortField", "Ascend", "SortOrder"};
    QTest::newRow("broken XML") << QByteArray("<plist><dict><key>Name</key><string>Road trip</string></plist>") << all
                                << "well-formed";
    QTest::newRow("array root") << written(QVariantList{plainRoot(QStringLiteral("Inside"))}) << all
                                << "<array>, not <dict>";
    QTest::newRow("no such file") << QByteArray() << all << "cannot open";
}

void TestZBPlaylistFile::importsThatCreateNothing()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, missing);
    QFETCH(QString, because);
    QFile file(m_dir->filePath(QStringLiteral("bad.nvp")));
    if (!content.isNull())
    {
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
        file.close();
    }
    const qsizetype lists = listCount();
    const qsizetype tracks = trackCount();

    const ZBPlaylistFile::ImportResult result = ZBPlaylistFile::importPlaylistFile(*m_library, file.fileName());
    QVERIFY(!result.succeeded());
    QCOMPARE(result.errorAlertCount(), missing.size() == 1 ? 1 : 2);
    QCOMPARE(result.missingKeys, missing);
    QVERIFY2(result.error.contains(because), qPrintable(result.error));
    QCOMPARE(listCount(), lists);
    QCOMPARE(trackCount(), tracks);
    QCOMPARE(file.size(), content.size());
}

void TestZBPlaylistFile::failedExportsSayWhy()
{
    ZBPlaylist *playlist = roadTrip();
    QString error;
    QVERIFY(
        !ZBPlaylistFile::exportPlaylist(*m_library, playlist, m_dir->filePath(QStringLiteral("none/x.nvp")), &error));
    QVERIFY2(error.contains(QLatin1String("cannot write")), qPrintable(error));

    // A name XML cannot carry stops the export and leaves an older file whole.
    const QString path = m_dir->filePath(QStringLiteral("kept.nvp"));
    QVERIFY(ZBPlaylistFile::exportPlaylist(*m_library, playlist, path));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    m_library->addItemWithUUID(addTrack(QStringLiteral("Bell\x07"), QStringLiteral("/v/bell.mp4")), playlist);
    QVERIFY(!ZBPlaylistFile::exportPlaylist(*m_library, playlist, path, &error));
    QVERIFY2(error.contains(QLatin1String("/Name")) && error.contains(QLatin1String("U+0007")), qPrintable(error));
    QVERIFY(file.seek(0));
    QCOMPARE(file.readAll(), before);

    playlist->setName(QStringLiteral("AC/DC live"));
    QCOMPARE(ZBPlaylistFile::proposedFileName(playlist), QStringLiteral("AC-DC live.nvp"));
    playlist->setName(QStringLiteral(".."));
    QCOMPARE(ZBPlaylistFile::proposedFileName(playlist), QStringLiteral("Playlist.nvp"));
}

QTEST_GUILESS_MAIN(TestZBPlaylistFile)
#include "tst_zbplaylistfile.moc"
