#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include "library/zbitem.h"
#include "library/zblibrarycontroller.h"
#include "library/zblibraryimporter.h"
#include "support/mediafactory.h"
#include "support/swfwriter.h"
#include "support/testsupport.h"

Q_DECLARE_METATYPE(ZBLibraryImporter::Counts)

// Files into the library: one file as a drop adds it, folder trees as files
// opened with the program are, with the probing on worker threads, the
// storing in file order, progress, cancellation and repeated imports.
class TestZBLibraryImporter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void oneFile();
    void folderTree_data();
    void folderTree();
    void cancelKeepsWhatWasStored();
    void oneImportAtATimeAndMissingPaths();
    void cancelThenStartAgain();
    void cancelFromAnotherThreadOrByDestruction();

private:
    QString media(const QString &relative) const { return m_media->filePath(relative); }
    // Writes `bytes`, or copies the file they name when they start with '/'.
    void put(const QString &relative, const QByteArray &bytes)
    {
        QDir().mkpath(QFileInfo(media(relative)).absolutePath());
        if (bytes.startsWith('/'))
            QVERIFY(QFile::copy(QString::fromUtf8(bytes), media(relative)));
        QFile file(media(relative));
        QVERIFY(bytes.startsWith('/') || (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()));
    }
    void putMany(const QString &folder, int count)
    {
        for (int i = 0; i < count; ++i)
            put(QStringLiteral("%1/clip %2.mp4").arg(folder).arg(i, 4, 10, QChar(u'0')), m_mp4);
    }
    qsizetype trackCount() const { return m_library->managedObjectContext()->items().size(); }

    std::unique_ptr<nvktest::DataDir> m_data;
    std::unique_ptr<QTemporaryDir> m_media;
    std::unique_ptr<ZBLibraryController> m_library;
    QByteArray m_mp4;
    QByteArray m_mkv;
    QByteArray m_avi;
    QByteArray m_swf;
};

void TestZBLibraryImporter::initTestCase()
{
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    // Clips of 2 and 3 seconds; paths, so that put() copies them.
    for (const auto &[extension, seconds, path] :
         {std::tuple{"mp4", 2, &m_mp4}, {"mkv", 3, &m_mkv}, {"avi", 2, &m_avi}})
    {
        nvktest::MediaFactory::Clip wanted;
        wanted.extension = QString::fromLatin1(extension);
        wanted.seconds = seconds;
        *path = nvktest::MediaFactory::clip(wanted).toUtf8();
        QVERIFY(path->startsWith('/'));
    }
    m_swf = nvktest::SwfWriter().setVersion(9).addFrames(48).build(nvktest::SwfWriter::Compression::Zlib);
}

void TestZBLibraryImporter::init()
{
    m_data = std::make_unique<nvktest::DataDir>();
    m_media = std::make_unique<QTemporaryDir>();
    m_library = std::make_unique<ZBLibraryController>();
    QVERIFY(m_library->openStore(m_data->path()).ok);
    m_library->initLibrary();
}

void TestZBLibraryImporter::cleanup()
{
    m_library.reset();
}

void TestZBLibraryImporter::oneFile()
{
    put("Holiday Clip.mp4", m_mp4);
    ZBLibraryImporter importer(*m_library);
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    bool isNew = false;
    const ZBItem *item = m_library->itemByUUID(importer.importToLibrary(media("Holiday Clip.mp4"), &isNew));
    QVERIFY(isNew && item);
    QCOMPARE(QStringLiteral("%1|%2|%3|%4|%5")
                 .arg(item->Name(), item->Path(), item->URL())
                 .arg(item->Rating().value_or(-1))
                 .arg(item->PlayCount().value_or(-1)),
             "Holiday Clip|" + media("Holiday Clip.mp4") + "||0|0");
    QVERIFY(!item->URL().isNull());
    QVERIFY(item->Added() >= before && !item->LastPlayed().isValid() && item->SourcePageTitle().isNull());
    // The same file under another spelling of its path is the same track.
    QCOMPARE(importer.importToLibrary(media("HOLIDAY CLIP.MP4"), &isNew), item->ItemUUID());
    QVERIFY(!isNew);

    // Types are kept as written; projectors become "exe" whatever their name;
    // a movie's length is its frame count, a clip's its whole seconds.
    const QList<std::tuple<const char *, QByteArray, const char *, qint32>> kinds{
        {"LOUD.MKV", m_mkv, "MKV", 3},
        {"cartoon.swf", m_swf, "swf", 48},
        {"Mac Projector", nvktest::macProjector(QByteArray(300, 'm'), m_swf), "exe", 0},
        {"mobile.3g2", m_mp4, "3g2", 2}};
    for (const auto &[name, bytes, type, length] : kinds)
    {
        put(name, bytes);
        const ZBItem *track = m_library->itemByUUID(importer.importToLibrary(media(name)));
        QVERIFY2(track, name);
        QCOMPARE(track->Type(), QString::fromLatin1(type));
        QCOMPARE(track->Length(), std::optional<qint32>(length));
    }
    // Not media; no dot: the type is the name minus its first letter.
    for (const char *name : {"notes.txt", "README"})
    {
        put(name, "text");
        QVERIFY(importer.importToLibrary(media(name), &isNew).isNull());
        QVERIFY(!isNew);
    }
    QCOMPARE(trackCount(), 5);
}

void TestZBLibraryImporter::folderTree_data()
{
    QTest::addColumn<int>("batchSize");
    QTest::newRow("one file per batch") << 1;
    QTest::newRow("all in one batch") << 64;
}

void TestZBLibraryImporter::folderTree()
{
    QFETCH(int, batchSize);
    // Files before folders, names in order ignoring case, at every level.
    const QList<std::pair<const char *, QByteArray>> taken{
        {"tree/a.mp4", m_mp4},
        {"tree/B.mkv", m_mkv},
        {"tree/sub/c.avi", m_avi},
        // Garbage under a movie's name is taken, with no length: playing it
        // is what tells.
        {"tree/sub/junk.mp4", QByteArray(5000, 'j')},
        {"tree/sub/movie.swf", m_swf},
        {"tree/sub/deeper/Game.exe", nvktest::windowsProjector("player", m_swf)},
        {"tree/sub/deeper/Projector", nvktest::macProjector("player", m_swf)}};
    for (const auto &[name, bytes] : taken)
        put(name, bytes);
    put("tree/cover.jpg", "\xff\xd8\xff");
    put("tree/sub/deeper/readme", "read me");
    // Hidden files and folders, and links to folders, are not walked.
    put("tree/sub/deeper/.hidden.mp4", m_mp4);
    put("tree/.cache/x.mp4", m_mp4);
    QVERIFY(QFile::link(media("tree"), media("tree/sub/loop")));

    ZBLibraryImporter importer(*m_library);
    importer.setBatchSize(batchSize);
    QSignalSpy progress(&importer, &ZBLibraryImporter::progress);
    QSignalSpy stored(&importer, &ZBLibraryImporter::trackStored); // uuid, path, isNew
    QSignalSpy finished(&importer, &ZBLibraryImporter::finished);
    ZBLibraryImporter::Counts counts = importer.run({media("tree")});
    QVERIFY(!finished.first().at(1).toBool());
    QCOMPARE(counts.added, 7);
    QCOMPARE(counts.refused, 2);
    QVERIFY(counts.missing.isEmpty());
    QCOMPARE(stored.size(), taken.size());
    for (qsizetype i = 0; i < stored.size(); ++i)
        QCOMPARE(stored.at(i).mid(1), (QVariantList{media(taken.at(i).first), true}));
    QCOMPARE(m_library->itemByUUID(stored.at(6).at(0).toString())->Type(), QStringLiteral("exe"));
    QCOMPARE(m_library->itemByUUID(stored.at(3).at(0).toString())->Length(), std::optional<qint32>(0));
    // Every file reported once, in step, ending at the total.
    QCOMPARE(progress.size(), 9);
    for (int i = 0; i < progress.size(); ++i)
        QCOMPARE(progress.at(i).mid(0, 2), (QVariantList{i + 1, 9}));

    // Again, with one file named twice and one new file: known files give
    // the tracks they have.
    put("tree/sub/new.mp4", m_mp4);
    stored.clear();
    counts = importer.run({media("tree"), media("tree/a.mp4")});
    QCOMPARE(counts.added, 1);
    QCOMPARE(counts.alreadyInLibrary, 8);
    QCOMPARE(trackCount(), 8);
    for (const QVariantList &s : std::as_const(stored))
        QVERIFY(s.at(2).toBool() == (s.at(1) == media("tree/sub/new.mp4")) &&
                m_library->itemByUUID(s.at(0).toString())->Path() == s.at(1));
}

void TestZBLibraryImporter::cancelKeepsWhatWasStored()
{
    const int total = 100;
    putMany("many", total);
    ZBLibraryImporter importer(*m_library);
    importer.setBatchSize(4);
    const int stopAt = 25;
    connect(&importer, &ZBLibraryImporter::progress, &importer,
            [&importer](int done)
            {
                if (done == stopAt)
                    importer.cancel();
            });
    QSignalSpy stored(&importer, &ZBLibraryImporter::trackStored);
    QSignalSpy finished(&importer, &ZBLibraryImporter::finished);
    const ZBLibraryImporter::Counts counts = importer.run({media("many")});
    QVERIFY(finished.first().at(1).toBool());
    QVERIFY2(counts.added >= stopAt && counts.added < total, qPrintable(QString::number(counts.added)));
    QCOMPARE(trackCount(), counts.added);
    // What was stored is the beginning of the folder, in order.
    for (qsizetype i = 0; i < stored.size(); ++i)
        QCOMPARE(stored.at(i).at(1).toString(), media(QStringLiteral("many/clip %1.mp4").arg(i, 4, 10, QChar(u'0'))));

    // Starting over finishes the job.
    const ZBLibraryImporter::Counts rest = ZBLibraryImporter(*m_library).run({media("many")});
    QCOMPARE(rest.added, total - counts.added);
    QCOMPARE(trackCount(), total);
}

void TestZBLibraryImporter::oneImportAtATimeAndMissingPaths()
{
    put("there.mp4", m_mp4);
    ZBLibraryImporter importer(*m_library);
    QSignalSpy finished(&importer, &ZBLibraryImporter::finished);
    const QStringList paths{media("gone.mp4"), media("there.mp4"), media("no-dir/")};
    QVERIFY(importer.start(paths));
    QVERIFY(importer.isRunning());
    QVERIFY(!importer.start(paths));
    QVERIFY(finished.wait(30000));
    QCOMPARE(finished.size(), 1);
    const auto counts = finished.first().at(0).value<ZBLibraryImporter::Counts>();
    QCOMPARE(counts.added, 1);
    QCOMPARE(counts.missing, QStringList({media("gone.mp4"), media("no-dir/")}));
    QVERIFY(!importer.isRunning());
    // Nothing at all to do still finishes.
    QCOMPARE(importer.run({}).added, 0);
}

void TestZBLibraryImporter::cancelThenStartAgain()
{
    // What a window does when files are dropped while an import runs: cancel
    // it and start one for the new files, from inside a progress slot.
    putMany("first", 60);
    put("second/dropped.avi", m_avi);
    ZBLibraryImporter importer(*m_library);
    importer.setBatchSize(2);
    QList<std::pair<int, bool>> results;
    connect(&importer, &ZBLibraryImporter::finished, this,
            [&](const ZBLibraryImporter::Counts &counts, bool canceled) {
                results.append({counts.added, canceled});
            });
    connect(&importer, &ZBLibraryImporter::progress, this,
            [&](int done)
            {
                if (done == 5 && results.isEmpty())
                {
                    importer.cancel();
                    QVERIFY(!importer.isRunning());
                    QVERIFY(importer.start({media("second")}));
                }
            });
    QVERIFY(importer.start({media("first")}));
    QTRY_COMPARE_WITH_TIMEOUT(results.size(), 2, 30000);
    QCOMPARE(results, (QList<std::pair<int, bool>>{{5, true}, {1, false}}));
    // Nothing of the first import arrives after its end.
    QTest::qWait(200);
    QCOMPARE(trackCount(), 6);
}

void TestZBLibraryImporter::cancelFromAnotherThreadOrByDestruction()
{
    putMany("t", 300);
    auto importer = std::make_unique<ZBLibraryImporter>(*m_library);
    importer->setBatchSize(2);
    QSignalSpy finished(importer.get(), &ZBLibraryImporter::finished);
    QVERIFY(importer->start({media("t")}));
    std::unique_ptr<QThread> canceller(QThread::create([&importer] { importer->cancel(); }));
    canceller->start();
    QVERIFY(finished.wait(30000));
    canceller->wait();
    QCOMPARE(finished.first().at(1).toBool(), true);
    QVERIFY(finished.first().at(0).value<ZBLibraryImporter::Counts>().added < 300);

    // Destroyed while running: whatever the workers still had in hand must
    // not arrive anywhere.
    QVERIFY(importer->start({media("t")}));
    QTest::qWait(20);
    importer.reset();
    const qsizetype stored = trackCount();
    QVERIFY(stored < 300);
    QTest::qWait(200);
    QCOMPARE(trackCount(), stored);
}

QTEST_GUILESS_MAIN(TestZBLibraryImporter)
#include "tst_zblibraryimporter.moc"
