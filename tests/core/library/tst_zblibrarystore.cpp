#include <csignal>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include "library/zblibrarycontroller.h"
#include "support/testsupport.h"

// What happens to the user's library file when things go wrong: a damaged or
// foreign file, a file from a newer program, a folder that cannot be written,
// and a process killed in the middle of its work.
class TestZBLibraryStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void damagedFileIsKeptAsideAndAFreshLibraryStarts_data();
    void damagedFileIsKeptAsideAndAFreshLibraryStarts();
    void refusedStoresAreLeftAlone();
    void killedWriterLosesNoReturnedAdd();

private:
    static QByteArray readAll(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void writeAll(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(bytes), bytes.size());
    }
};

void TestZBLibraryStore::damagedFileIsKeptAsideAndAFreshLibraryStarts_data()
{
    QTest::addColumn<int>("damage");
    QTest::newRow("not a database") << 0;
    QTest::newRow("cut in half") << 1;
    QTest::newRow("pages overwritten") << 2;
}

void TestZBLibraryStore::damagedFileIsKeptAsideAndAFreshLibraryStarts()
{
    QFETCH(int, damage);
    nvktest::DataDir dir;
    const QString file = dir.filePath(ZBLibraryController::LibraryFileName);
    {
        ZBLibraryController library;
        QVERIFY(library.openStore(dir.path()).ok);
        library.initLibrary();
        for (int i = 0; i < 400; ++i)
            library.addItemToLibrarybyName(QStringLiteral("t%1").arg(i),
                                           QStringLiteral("/m/%1-%2.mp4").arg(i).arg(QString(200, 'x')), "", "mp4", 0,
                                           0, 0, QDateTime::currentDateTimeUtc(), QDateTime(), QString());
        // Fold the journal into the main file so the damage below hits the data.
        QVERIFY(library.managedObjectContext()->database().exec("PRAGMA wal_checkpoint(TRUNCATE)"));
    }
    QByteArray bytes = readAll(file);
    QVERIFY(bytes.size() > 64 * 1024);
    if (damage == 0)
        bytes = "This is my shopping list, not a library.\n";
    else if (damage == 1)
        bytes.truncate(bytes.size() / 2);
    else
        for (qsizetype at = 4096 * 2; at < bytes.size(); at += 4096)
            bytes.replace(at, 512, QByteArray(512, '\xA5'));
    writeAll(file, bytes);
    QFile::remove(file + "-wal");
    QFile::remove(file + "-shm");

    ZBLibraryController library;
    const auto opened = library.openStore(dir.path());
    QVERIFY2(opened.ok && opened.recoveredFromDamage && !opened.error.isEmpty(), qPrintable(opened.error));
    QVERIFY(opened.quarantinedPath.startsWith(file + ".damaged-"));
    QCOMPARE(readAll(opened.quarantinedPath), bytes);

    // The fresh library works and persists.
    library.initLibrary();
    library.addItemToLibrarybyName("new", "/new.mp4", "", "mp4", 0, 0, 0, QDateTime::currentDateTimeUtc(), QDateTime(),
                                   QString());
    ZBLibraryController again;
    const auto reopened = again.openStore(dir.path());
    QVERIFY(reopened.ok && !reopened.recoveredFromDamage);
    QCOMPARE(again.managedObjectContext()->items().size(), 1);
}

void TestZBLibraryStore::refusedStoresAreLeftAlone()
{
    nvktest::DataDir dir;
    {
        ZBLibraryController library;
        QVERIFY(library.openStore(dir.path()).ok);
        QVERIFY(library.managedObjectContext()->database().exec("PRAGMA user_version = 99"));
    }
    // A file from a newer program is neither used nor put aside.
    const QStringList before = QDir(dir.path()).entryList(QDir::Files);
    ZBLibraryController newer;
    const auto opened = newer.openStore(dir.path());
    QVERIFY(!opened.ok && !opened.recoveredFromDamage && !opened.error.isEmpty());
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), before);

    // A plain file where the folder should be.
    writeAll(dir.filePath("blocked"), "x");
    ZBLibraryController blocked;
    const auto failed = blocked.openStore(dir.filePath("blocked/inner"));
    QVERIFY(!failed.ok && !failed.error.isEmpty());
    QVERIFY(!blocked.save());
}

void TestZBLibraryStore::killedWriterLosesNoReturnedAdd()
{
    nvktest::DataDir dir;
    QStringList confirmed;
    // Kill at a few different depths into the run; every round appends to the
    // same library.
    const int killAfter[] = {50, 333, 1200};
    for (int round = 0; round < 3; ++round)
    {
        QProcess writer;
        writer.start(nvktest::binaryPath("helper_addloop"),
                     {dir.path(), "100000", QStringLiteral("round%1").arg(round)});
        QVERIFY2(writer.waitForStarted(), qPrintable(writer.errorString()));
        QByteArray out;
        const QDeadlineTimer deadline(120000);
        while (out.count('\n') < killAfter[round] && !deadline.hasExpired())
        {
            writer.waitForReadyRead(1000);
            out += writer.readAllStandardOutput();
            QVERIFY2(writer.state() == QProcess::Running, writer.readAllStandardError().constData());
        }
        ::kill(pid_t(writer.processId()), SIGKILL);
        QVERIFY(writer.waitForFinished(10000));
        out += writer.readAllStandardOutput();
        confirmed += QString::fromLatin1(out).split(u'\n', Qt::SkipEmptyParts);
        QVERIFY(confirmed.size() >= killAfter[round]);

        ZBLibraryController library;
        const auto opened = library.openStore(dir.path());
        QVERIFY2(opened.ok && !opened.recoveredFromDamage, qPrintable(opened.error));
        QCOMPARE(library.managedObjectContext()->database().integrityCheck(), QStringLiteral("ok"));
        for (const QString &uuid : std::as_const(confirmed))
            QVERIFY2(library.itemByUUID(uuid), qPrintable(uuid));
        // Memberships written with the adds are whole too.
        for (const ZBPlaylist *playlist : library.managedObjectContext()->playlists())
            for (const ZBItem *member : playlist->Item())
                QVERIFY(!member->isDeleted());
    }
}

QTEST_GUILESS_MAIN(TestZBLibraryStore)
#include "tst_zblibrarystore.moc"
