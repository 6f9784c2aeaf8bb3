#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QThread>
#include <QTest>

#include "library/zbitem.h"
#include "library/zblibrarycontroller.h"
#include "library/zblibraryimporter.h"
#include "support/mediafactory.h"
#include "support/swfwriter.h"
#include "support/testsupport.h"

Q_DECLARE_METATYPE(ZBLibraryImporter::Counts)

namespace
{
bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

bool copyFile(const QString &from, const QString &to)
{
    QDir().mkpath(QFileInfo(to).absolutePath());
    return QFile::copy(from, to);
}

QString clip(const QString &extension, double seconds)
{
    nvktest::MediaFactory::Clip wanted;
    wanted.extension = extension;
    wanted.seconds = seconds;
    return nvktest::MediaFactory::clip(wanted);
}

struct Stored
{
    QString uuid;
    QString path;
    bool isNew;
};
} // namespace

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

    void oneFileBecomesATrack();
    void oneFileRefusedOrKnown();
    void folderTree_data();
    void folderTree();
    void importingTwiceAddsNothing();
    void cancelKeepsWhatWasStored();
    void missingPathsAreReported();
    void oneImportAtATime();
    void cancelThenStartAgain();
    void cancelFromAnotherThread();
    void destroyedWhileRunning();

private:
    QString media(const QString &relative) const { return m_media->filePath(relative); }
    void buildTree();
    QList<Stored> runRecording(ZBLibraryImporter &importer, const QStringList &paths,
                               ZBLibraryImporter::Counts *counts, bool *canceled = nullptr);

    std::unique_ptr<nvktest::DataDir> m_data;
    std::unique_ptr<QTemporaryDir> m_media;
    std::unique_ptr<ZBLibraryController> m_library;
    QString m_mp4;
    QString m_mkv;
    QString m_avi;
    QString m_flv;
    QString m_wmv;
    QString m_mpg;
    QByteArray m_swf;
};

void TestZBLibraryImporter::initTestCase()
{
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    m_mp4 = clip("mp4", 2);
    m_mkv = clip("mkv", 3);
    m_avi = clip("avi", 2);
    m_flv = clip("flv", 3);
    m_wmv = clip("wmv", 2);
    m_mpg = clip("mpg", 3);
    for (const QString &path : {m_mp4, m_mkv, m_avi, m_flv, m_wmv, m_mpg})
        QVERIFY(!path.isEmpty());
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

QList<Stored> TestZBLibraryImporter::runRecording(ZBLibraryImporter &importer, const QStringList &paths,
                                                  ZBLibraryImporter::Counts *counts, bool *canceled)
{
    QList<Stored> stored;
    QMetaObject::Connection recorder = connect(&importer, &ZBLibraryImporter::trackStored, this,
                                               [&stored](const QString &uuid, const QString &path, bool isNew) {
                                                   stored.append({uuid, path, isNew});
                                               });
    QSignalSpy finished(&importer, &ZBLibraryImporter::finished);
    *counts = importer.run(paths);
    disconnect(recorder);
    if (canceled)
        *canceled = finished.size() == 1 && finished.first().at(1).toBool();
    return stored;
}

void TestZBLibraryImporter::oneFileBecomesATrack()
{
    const QString path = media("Holiday Clip.mp4");
    QVERIFY(copyFile(m_mp4, path));
    ZBLibraryImporter importer(*m_library);
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    bool isNew = false;
    const QString uuid = importer.importToLibrary(path, &isNew);
    QVERIFY(isNew);
    ZBItem *item = m_library->itemByUUID(uuid);
    QVERIFY(item);
    QCOMPARE(item->Name(), QStringLiteral("Holiday Clip"));
    QCOMPARE(item->Path(), path);
    QCOMPARE(item->URL(), QStringLiteral(""));
    QVERIFY(!item->URL().isNull());
    QCOMPARE(item->Type(), QStringLiteral("mp4"));
    QCOMPARE(item->Rating(), std::optional<qint32>(0));
    QCOMPARE(item->Length(), std::optional<qint32>(2));
    QCOMPARE(item->PlayCount(), std::optional<qint32>(0));
    QVERIFY(item->Added() >= before && item->Added() <= QDateTime::currentDateTimeUtc().addSecs(1));
    QVERIFY(!item->LastPlayed().isValid());
    QVERIFY(item->SourcePageTitle().isNull());

    // Types are kept as written; projectors become "exe" whatever their name;
    // a movie's length is its frame count.
    const struct
    {
        const char *name;
        QByteArray bytes;
        const char *type;
        qint32 length;
    } cases[] = {
        {"LOUD.MKV", QByteArray(), "MKV", 3},
        {"cartoon.swf", m_swf, "swf", 48},
        {"Game.exe", nvktest::windowsProjector(QByteArray(300, 'w'), m_swf), "exe", 0},
        {"Mac Projector", nvktest::macProjector(QByteArray(300, 'm'), m_swf), "exe", 0},
        {"mobile.3g2", QByteArray(), "3g2", 2},
    };
    for (const auto &c : cases)
    {
        const QString file = media(c.name);
        if (c.bytes.isEmpty())
            QVERIFY(copyFile(QString(c.type) == u"MKV" ? m_mkv : m_mp4, file));
        else
            QVERIFY(writeFile(file, c.bytes));
        const QString id = importer.importToLibrary(file);
        QVERIFY2(!id.isEmpty(), c.name);
        QCOMPARE(m_library->itemByUUID(id)->Type(), QString::fromLatin1(c.type));
        QCOMPARE(m_library->itemByUUID(id)->Length(), std::optional<qint32>(c.length));
    }
}

void TestZBLibraryImporter::oneFileRefusedOrKnown()
{
    ZBLibraryImporter importer(*m_library);
    const QString notes = media("notes.txt");
    QVERIFY(writeFile(notes, "text"));
    bool isNew = true;
    QVERIFY(importer.importToLibrary(notes, &isNew).isNull());
    QVERIFY(!isNew);
    // No dot: the type is the name minus its first letter, not a media type.
    QVERIFY(writeFile(media("README"), "text"));
    QVERIFY(importer.importToLibrary(media("README")).isNull());

    const QString path = media("clip.avi");
    QVERIFY(copyFile(m_avi, path));
    const QString first = importer.importToLibrary(path);
    QVERIFY(!first.isEmpty());
    // The same file under another spelling of its path is the same track.
    const QString again = importer.importToLibrary(media("CLIP.AVI"), &isNew);
    QCOMPARE(again, first);
    QVERIFY(!isNew);
    QCOMPARE(m_library->managedObjectContext()->items().size(), 1);
}

void TestZBLibraryImporter::buildTree()
{
    QVERIFY(copyFile(m_mp4, media("tree/a.mp4")));
    QVERIFY(copyFile(m_mkv, media("tree/B.mkv")));
    QVERIFY(writeFile(media("tree/cover.jpg"), "\xff\xd8\xff"));
    QVERIFY(writeFile(media("tree/notes.txt"), "notes"));
    QVERIFY(copyFile(m_avi, media("tree/sub/c.avi")));
    QVERIFY(copyFile(m_flv, media("tree/sub/d.flv")));
    // Garbage under a movie's name is taken, with no length: playing it is
    // what tells.
    QVERIFY(writeFile(media("tree/sub/junk.mp4"), QByteArray(5000, 'j')));
    QVERIFY(writeFile(media("tree/sub/movie.swf"), m_swf));
    QVERIFY(copyFile(m_wmv, media("tree/sub/deeper/e.wmv")));
    QVERIFY(copyFile(m_mpg, media("tree/sub/deeper/f.mpg")));
    QVERIFY(writeFile(media("tree/sub/deeper/Game.exe"), nvktest::windowsProjector("player", m_swf)));
    QVERIFY(writeFile(media("tree/sub/deeper/Projector"), nvktest::macProjector("player", m_swf)));
    QVERIFY(writeFile(media("tree/sub/deeper/readme"), "read me"));
    // Hidden files and folders, and links to folders, are not walked.
    QVERIFY(copyFile(m_mp4, media("tree/sub/deeper/.hidden.mp4")));
    QVERIFY(copyFile(m_mp4, media("tree/.cache/x.mp4")));
    QVERIFY(QFile::link(media("tree"), media("tree/sub/loop")));
}

void TestZBLibraryImporter::folderTree_data()
{
    QTest::addColumn<int>("batchSize");
    QTest::newRow("one file per batch") << 1;
    QTest::newRow("three per batch") << 3;
    QTest::newRow("all in one batch") << 64;
}

void TestZBLibraryImporter::folderTree()
{
    QFETCH(int, batchSize);
    buildTree();
    ZBLibraryImporter importer(*m_library);
    importer.setBatchSize(batchSize);
    QSignalSpy progress(&importer, &ZBLibraryImporter::progress);
    ZBLibraryImporter::Counts counts;
    bool canceled = true;
    const QList<Stored> stored = runRecording(importer, {media("tree")}, &counts, &canceled);
    QVERIFY(!canceled);
    QCOMPARE(counts.added, 10);
    QCOMPARE(counts.alreadyInLibrary, 0);
    QCOMPARE(counts.refused, 3);
    QVERIFY(counts.missing.isEmpty());

    // Files before folders, names in order ignoring case, at every level.
    const QStringList expectedOrder{"tree/a.mp4",
                                    "tree/B.mkv",
                                    "tree/sub/c.avi",
                                    "tree/sub/d.flv",
                                    "tree/sub/junk.mp4",
                                    "tree/sub/movie.swf",
                                    "tree/sub/deeper/e.wmv",
                                    "tree/sub/deeper/f.mpg",
                                    "tree/sub/deeper/Game.exe",
                                    "tree/sub/deeper/Projector"};
    QCOMPARE(stored.size(), expectedOrder.size());
    for (qsizetype i = 0; i < stored.size(); ++i)
    {
        QCOMPARE(stored.at(i).path, media(expectedOrder.at(i)));
        QVERIFY(stored.at(i).isNew);
    }

    const QHash<QString, QPair<QString, qint32>> expected{
        {"a", {"mp4", 2}},   {"B", {"mkv", 3}},         {"c", {"avi", 2}},      {"d", {"flv", 3}},
        {"junk", {"mp4", 0}}, {"movie", {"swf", 48}},   {"e", {"wmv", 2}},      {"f", {"mpg", 3}},
        {"Game", {"exe", 0}}, {"Projector", {"exe", 0}}};
    const QList<ZBItem *> &items = m_library->managedObjectContext()->items();
    QCOMPARE(items.size(), expected.size());
    for (const ZBItem *item : items)
    {
        QVERIFY2(expected.contains(item->Name()), qPrintable(item->Name()));
        QCOMPARE(item->Type(), expected.value(item->Name()).first);
        // Whole seconds, rounded down: a clip of 2.02 s is 2, one of 1.98 s is 1.
        const qint32 length = expected.value(item->Name()).second;
        QVERIFY2(qAbs(item->Length().value_or(-1) - length) <= (item->Type() == u"swf" ? 0 : 1),
                 qPrintable(item->Name()));
    }

    // Every file reported once, in step, ending at the total.
    QCOMPARE(progress.size(), 13);
    for (int i = 0; i < progress.size(); ++i)
    {
        QCOMPARE(progress.at(i).at(0).toInt(), i + 1);
        QCOMPARE(progress.at(i).at(1).toInt(), 13);
    }
}

void TestZBLibraryImporter::importingTwiceAddsNothing()
{
    buildTree();
    ZBLibraryImporter importer(*m_library);
    ZBLibraryImporter::Counts counts;
    const QList<Stored> first = runRecording(importer, {media("tree")}, &counts);
    QCOMPARE(counts.added, 10);

    // Again, with one file named twice and one new file.
    QVERIFY(copyFile(m_mp4, media("tree/sub/new.mp4")));
    const QList<Stored> second =
        runRecording(importer, {media("tree"), media("tree/a.mp4")}, &counts);
    QCOMPARE(counts.added, 1);
    QCOMPARE(counts.alreadyInLibrary, 11);
    QCOMPARE(counts.refused, 3);
    QCOMPARE(m_library->managedObjectContext()->items().size(), 11);
    // Known files give the tracks they have.
    QHash<QString, QString> firstUUIDs;
    for (const Stored &s : first)
        firstUUIDs.insert(s.path, s.uuid);
    for (const Stored &s : second)
    {
        if (s.path == media("tree/sub/new.mp4"))
            QVERIFY(s.isNew);
        else
            QCOMPARE(s.uuid, firstUUIDs.value(s.path));
    }
}

void TestZBLibraryImporter::cancelKeepsWhatWasStored()
{
    const int total = 400;
    for (int i = 0; i < total; ++i)
        QVERIFY(copyFile(m_mp4, media(QStringLiteral("many/clip %1.mp4").arg(i, 4, 10, QChar(u'0')))));
    ZBLibraryImporter importer(*m_library);
    importer.setBatchSize(4);
    const int stopAt = 25;
    connect(&importer, &ZBLibraryImporter::progress, &importer, [&importer](int done) {
        if (done == stopAt)
            importer.cancel();
    });
    ZBLibraryImporter::Counts counts;
    bool canceled = false;
    const QList<Stored> stored = runRecording(importer, {media("many")}, &counts, &canceled);
    QVERIFY(canceled);
    QVERIFY2(counts.added >= stopAt && counts.added < total, qPrintable(QString::number(counts.added)));
    QCOMPARE(m_library->managedObjectContext()->items().size(), counts.added);
    // What was stored is the beginning of the folder, in order.
    for (qsizetype i = 0; i < stored.size(); ++i)
        QCOMPARE(stored.at(i).path, media(QStringLiteral("many/clip %1.mp4").arg(i, 4, 10, QChar(u'0'))));

    // Starting over finishes the job.
    ZBLibraryImporter again(*m_library);
    const ZBLibraryImporter::Counts rest = again.run({media("many")});
    QCOMPARE(rest.added, total - counts.added);
    QCOMPARE(rest.alreadyInLibrary, counts.added);
    QCOMPARE(m_library->managedObjectContext()->items().size(), total);
}

void TestZBLibraryImporter::missingPathsAreReported()
{
    QVERIFY(copyFile(m_mp4, media("there.mp4")));
    ZBLibraryImporter importer(*m_library);
    const ZBLibraryImporter::Counts counts = importer.run({media("gone.mp4"), media("there.mp4"), media("no-dir/")});
    QCOMPARE(counts.added, 1);
    QCOMPARE(counts.missing, QStringList({media("gone.mp4"), media("no-dir/")}));
    // Nothing at all to do still finishes.
    QCOMPARE(importer.run({}).added, 0);
    QVERIFY(!importer.isRunning());
}

void TestZBLibraryImporter::oneImportAtATime()
{
    QVERIFY(copyFile(m_mp4, media("one.mp4")));
    ZBLibraryImporter importer(*m_library);
    QSignalSpy finished(&importer, &ZBLibraryImporter::finished);
    QVERIFY(importer.start({media("one.mp4")}));
    QVERIFY(importer.isRunning());
    QVERIFY(!importer.start({media("one.mp4")}));
    QVERIFY(finished.wait(30000));
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.first().at(0).value<ZBLibraryImporter::Counts>().added, 1);
    QVERIFY(!importer.isRunning());
    QVERIFY(importer.start({media("one.mp4")}));
    QVERIFY(finished.wait(30000));
    QCOMPARE(finished.last().at(0).value<ZBLibraryImporter::Counts>().alreadyInLibrary, 1);
}

void TestZBLibraryImporter::cancelThenStartAgain()
{
    // What a window does when files are dropped while an import runs: cancel
    // it and start one for the new files, from inside a progress slot.
    for (int i = 0; i < 60; ++i)
        QVERIFY(copyFile(m_mp4, media(QStringLiteral("first/%1.mp4").arg(i, 2, 10, QChar(u'0')))));
    QVERIFY(copyFile(m_avi, media("second/dropped.avi")));
    ZBLibraryImporter importer(*m_library);
    importer.setBatchSize(2);
    QList<bool> canceledFlags;
    QList<ZBLibraryImporter::Counts> results;
    connect(&importer, &ZBLibraryImporter::finished, this,
            [&](const ZBLibraryImporter::Counts &counts, bool canceled) {
                results.append(counts);
                canceledFlags.append(canceled);
            });
    bool restarted = false;
    connect(&importer, &ZBLibraryImporter::progress, this, [&](int done) {
        if (done == 5 && !restarted)
        {
            restarted = true;
            importer.cancel();
            QVERIFY(!importer.isRunning());
            QVERIFY(importer.start({media("second")}));
        }
    });
    QVERIFY(importer.start({media("first")}));
    QTRY_COMPARE_WITH_TIMEOUT(results.size(), 2, 30000);
    QCOMPARE(canceledFlags, QList<bool>({true, false}));
    QCOMPARE(results.at(0).added, 5);
    QCOMPARE(results.at(1).added, 1);
    QCOMPARE(results.at(1).refused + results.at(1).alreadyInLibrary, 0);
    // Nothing of the first import arrives after its end.
    QTest::qWait(200);
    QCOMPARE(m_library->managedObjectContext()->items().size(), 6);
}

void TestZBLibraryImporter::cancelFromAnotherThread()
{
    for (int i = 0; i < 300; ++i)
        QVERIFY(copyFile(m_mp4, media(QStringLiteral("t/%1.mp4").arg(i))));
    ZBLibraryImporter importer(*m_library);
    importer.setBatchSize(2);
    QSignalSpy finished(&importer, &ZBLibraryImporter::finished);
    QVERIFY(importer.start({media("t")}));
    std::unique_ptr<QThread> canceller(QThread::create([&importer] { importer.cancel(); }));
    canceller->start();
    QVERIFY(finished.wait(30000));
    canceller->wait();
    QCOMPARE(finished.first().at(1).toBool(), true);
    QVERIFY(finished.first().at(0).value<ZBLibraryImporter::Counts>().added < 300);
    QVERIFY(!importer.isRunning());
}

void TestZBLibraryImporter::destroyedWhileRunning()
{
    for (int i = 0; i < 200; ++i)
        QVERIFY(copyFile(m_mp4, media(QStringLiteral("d/%1.mp4").arg(i))));
    auto importer = std::make_unique<ZBLibraryImporter>(*m_library);
    importer->setBatchSize(2);
    QVERIFY(importer->start({media("d")}));
    QTest::qWait(20);
    importer.reset();
    const qsizetype stored = m_library->managedObjectContext()->items().size();
    QVERIFY(stored < 200);
    // Whatever the workers still had in hand must not arrive anywhere.
    QTest::qWait(200);
    QCOMPARE(m_library->managedObjectContext()->items().size(), stored);
}

QTEST_GUILESS_MAIN(TestZBLibraryImporter)
#include "tst_zblibraryimporter.moc"
