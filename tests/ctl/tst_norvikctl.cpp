#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include "library/zbpropertylist.h"
#include "support/mediafactory.h"
#include "support/swfwriter.h"
#include "support/testsupport.h"

using nvktest::SwfWriter;

// norvikctl as a script uses it: exit codes, what goes to stdout and stderr,
// and that every command works on the same library the player opens.
class TestNorvikCtl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_dir = std::make_unique<nvktest::DataDir>(); }
    void runs_data();
    void runs();
    void tracksListsQueriesAndOrder();
    void damagedLibraryIsReportedAndKept();
    void exportThenImportCopiesTheListAndWarnsOfSkippedEntries();
    void importFilesAndFolders();

private:
    using Result = nvktest::CtlResult;
    Result ctl(const QStringList &arguments) { return nvktest::runCtl(m_dir->path(), arguments); }
    QString ok(const QStringList &arguments) { return nvktest::ctlOutput(m_dir->path(), arguments); }
    QString write(const QString &name, const QByteArray &bytes);
    QStringList column(const QStringList &arguments, int field);

    QTemporaryDir m_files;
    nvktest::DataDir m_shared;
    QString m_sharedLists;
    QString m_mp4;
    QByteArray m_swf;
    std::unique_ptr<nvktest::DataDir> m_dir;
};

QString TestNorvikCtl::write(const QString &name, const QByteArray &bytes)
{
    const QString path = m_files.filePath(name);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

// One tab-separated field of every line a successful run printed.
QStringList TestNorvikCtl::column(const QStringList &arguments, int field)
{
    QStringList result;
    for (const QString &line : ok(arguments).split('\n', Qt::SkipEmptyParts))
        result << line.section('\t', field, field);
    return result;
}

void TestNorvikCtl::initTestCase()
{
    QVERIFY(m_files.isValid());
    m_swf = SwfWriter()
                .setStageSize(550, 400)
                .setFrameRate(30)
                .setFileAttributes(true, true)
                .addFrames(75)
                .build(SwfWriter::Compression::Zlib);
    write("cartoon.swf", m_swf);
    write("Projector", nvktest::macProjector(QByteArray(4000, 'p'), m_swf));
    write("Game.exe", nvktest::windowsProjector(QByteArray(1000, 'w'), m_swf));
    write("fake.mkv", QByteArray(3000, 'x'));
    write("cut.swf", m_swf.left(12));
    QVERIFY(QDir().mkpath(m_files.filePath("taken.nvp")));
    write("existing.nvp", "kept");
    write("damaged.nvp", "<plist><dict><key>Name</key></plist>");
    if (nvktest::MediaFactory::isAvailable())
        m_mp4 = nvktest::MediaFactory::clip({"mp4", 3.0});

    // Every run of runs() works on this one library; none may change it.
    const QString coast = nvktest::ctlOutput(m_shared.path(), {"add-track", "Coast", "/v/coast.mp4"});
    QCOMPARE(nvktest::ctlOutput(m_shared.path(), {"add-playlist", "Road trip"}).size(), 36);
    QCOMPARE(nvktest::runCtl(m_shared.path(), {"add-to-playlist", "Road trip", coast}).code, 0);
    QVERIFY(nvktest::runCtl(m_shared.path(), {"add-to-playlist", "Road trip", coast}).err.contains("already in"));
    m_sharedLists = nvktest::ctlOutput(m_shared.path(), {"lists"});
    QVERIFY(!m_sharedLists.isEmpty());
}

void TestNorvikCtl::runs_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    // In this order in stdout after a success, in stderr after a failure.
    QTest::addColumn<QStringList>("expected");
    const auto refused = [](const char *tag, const QStringList &arguments, const char *message, int code = 1)
    {
        QTest::newRow(tag) << arguments << code << QStringList{"norvikctl: ", message};
    };
    refused("unknown command", {"frobnicate"}, "unknown command", 2);
    refused("missing path", {"add-track", "Name only"}, "NAME and PATH");
    refused("bad date", {"add-track", "x", "/x.mp4", "--added", "yesterday"}, "ISO 8601");
    refused("unknown list", {"list", "No such list"}, "no list named");
    refused("bad filter", {"query", "(Name =="}, "does not parse");
    refused("smart list member", {"add-to-playlist", "All Tracks", "X"}, "smart list");
    refused("export without the extension", {"export-playlist", "Road trip", "@/out.xml"}, "ends in .nvp");
    refused("export over a file", {"export-playlist", "Road trip", "@/existing.nvp"}, "--force");
    refused("export over a folder", {"export-playlist", "Road trip", "@/taken.nvp", "--force"}, "is a folder");
    refused("import of a damaged file", {"import-playlist", "@/damaged.nvp"}, "line 1");
    refused("probe of a folder", {"probe", "@"}, "a folder");
    refused("swf-info of a cut movie", {"swf-info", "@/cut.swf"}, "is no Flash movie");

    const QString header =
        QStringLiteral(
            "signature: CWS (compression: zlib)\nversion: 10\nfile length: %1\nframe size: 550 x 400 pixels\n"
            "frame rate: 30\nframe count: 75\nactionscript 3: yes\n")
            .arg(SwfWriter().setStageSize(550, 400).setFileAttributes(true, true).addFrames(75).build().size());
    QTest::newRow("swf-info of a movie") << QStringList{"swf-info", "@/cartoon.swf"} << 0
                                         << QStringList{"source: movie\n" + header};
    QTest::newRow("swf-info of a projector")
        << QStringList{"swf-info", "@/Game.exe"} << 0
        << QStringList{QStringLiteral("source: Windows projector, %1 bytes of movie\n").arg(m_swf.size()) + header};
    // A projector: typed exe whatever its name, frames from the movie inside.
    QTest::newRow("probe of a projector") << QStringList{"probe", "@/Projector"} << 0
                                          << QStringList{"type: exe\nregistered: yes\nlibrary length: 0 seconds\n",
                                                         "flash: Mac projector", "frames: 75\n"};
    QTest::newRow("probe of a fake") << QStringList{"probe", "@/fake.mkv"} << 0
                                     << QStringList{"duration: unknown\n", "video engine can decode: no\n"};
    if (!m_mp4.isEmpty())
        QTest::newRow("probe of a video")
            << QStringList{"probe", m_mp4} << 0
            << QStringList{"type: mp4\nregistered: yes\nlibrary length: 3 seconds\n", "duration: 3.0",
                           "format: mp4: ", "video engine can decode: yes\n"};
}

void TestNorvikCtl::runs()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QStringList, expected);
    for (QString &argument : arguments)
        argument.replace(u'@', m_files.path());
    const Result result = nvktest::runCtl(m_shared.path(), arguments);
    QVERIFY2(result.code == code, qPrintable(result.err));
    // Nothing for a script to read after a failure, nothing to complain about
    // after a success.
    QVERIFY((code == 0 ? result.err : result.out).isEmpty());
    qsizetype from = 0;
    for (const QString &part : expected)
    {
        from = (code == 0 ? result.out : result.err).indexOf(part, from);
        QVERIFY2(from >= 0, qPrintable(part + QStringLiteral(" not in:\n") + result.out + result.err));
    }
    QCOMPARE(nvktest::ctlOutput(m_shared.path(), {"lists"}), m_sharedLists);
    QVERIFY(!QFile::exists(m_files.filePath("out.xml")));
    QFile existing(m_files.filePath("existing.nvp"));
    QVERIFY(existing.open(QIODevice::ReadOnly));
    QCOMPARE(existing.readAll(), QByteArray("kept"));
}

void TestNorvikCtl::tracksListsQueriesAndOrder()
{
    const QString beta = ok({"add-track", "beta", "/v/b.mp4", "--play-count", "1", "--added", "2026-01-02T10:00:00Z"});
    ok({"add-track", "Alpha", "/v/a.swf", "--type", "swf", "--play-count", "9", "--added", "2026-01-01T10:00:00Z"});
    ok({"add-track", "gamma", "/v/g.mp4", "--play-count", "5", "--added", "2026-01-03T10:00:00Z"});

    QCOMPARE(column({"list"}, 1), QStringList({"Alpha", "beta", "gamma"}));
    QCOMPARE(column({"list", "--sort", "Added", "--descending"}, 1), QStringList({"Alpha", "beta", "gamma"}));
    const QJsonObject first = QJsonDocument::fromJson(ok({"list", "--json"}).toUtf8()).array().first().toObject();
    QCOMPARE(first.value("Name").toString(), QStringLiteral("Alpha"));
    QCOMPARE(first.value("Added").toString(), QStringLiteral("2026-01-01T10:00:00.000Z"));

    QCOMPARE(ok({"add-playlist", "Road trip"}).size(), 36);
    QCOMPARE(ctl({"add-to-playlist", "Road trip", beta}).code, 0);
    QVERIFY(!ok({"add-smart", "Played", "PlayCount > 2"}).isEmpty());
    const QString lists = ok({"lists"});
    for (const char *line : {"\tPredefined\tsmart\t3\tAll Tracks", "\tPredefined\tsmart\t1\tSWF",
                             "\tUser\tplain\t1\tRoad trip", "\tUser\tsmart\t2\tPlayed"})
        QVERIFY2(lists.contains(QLatin1String(line)), qPrintable(lists));
    QCOMPARE(column({"query", "Type contains[cd] 'SW'"}, 1), QStringList{"Alpha"});

    // The same path in another case is the same track.
    QCOMPARE(ok({"add-track", "Again", "/V/B.MP4"}), beta);
    QCOMPARE(ctl({"remove-track", beta}).code, 0);
    QVERIFY(ctl({"remove-track", beta}).code != 0);
    QVERIFY(ok({"lists"}).contains(QLatin1String("\tUser\tplain\t0\tRoad trip")));
    QCOMPARE(ok({"check"}).left(2), QStringLiteral("ok"));
}

void TestNorvikCtl::damagedLibraryIsReportedAndKept()
{
    ok({"add-track", "x", "/x.mp4"});
    const QString file = m_dir->filePath("NVKLibrary.sqlite");
    QFile::remove(file + "-wal");
    QFile::remove(file + "-shm");
    QFile damaged(file);
    QVERIFY(damaged.open(QIODevice::WriteOnly | QIODevice::Truncate));
    damaged.write(QByteArray(8192, 'Z'));
    damaged.close();
    const Result result = ctl({"lists"});
    QCOMPARE(result.code, 3);
    QFile kept(result.err.section(" It was kept as ", 1).section(" and a new", 0, 0));
    QVERIFY2(kept.fileName().contains(".damaged-") && kept.open(QIODevice::ReadOnly), qPrintable(result.err));
    QCOMPARE(kept.readAll(), QByteArray(8192, 'Z'));
    // The next run works on the fresh library.
    QCOMPARE(ctl({"lists"}).code, 0);
}

void TestNorvikCtl::exportThenImportCopiesTheListAndWarnsOfSkippedEntries()
{
    const QString coast = ok({"add-track", "Coast", "/v/coast.mp4"});
    const QString hills = ok({"add-track", "Hills", "/v/hills.mp4"});
    ok({"add-track", "Elsewhere", "/v/elsewhere.swf"});
    const QString list = ok({"add-playlist", "Road trip"});
    QCOMPARE(ctl({"add-to-playlist", "Road trip", coast}).code, 0);
    QCOMPARE(ctl({"add-to-playlist", "Road trip", hills}).code, 0);
    const QString smart = ok({"add-smart", "Flash only", "Type contains[cd] 'swf'"});
    const QString tracksBefore = ok({"query", "Name LIKE '*'"});

    // A list named in another case, a smart list by its UUID; an existing
    // file is replaced only with --force.
    const QString plain = m_dir->filePath("road trip.nvp");
    const QString flash = m_dir->filePath("flash.nvp");
    QCOMPARE(ctl({"export-playlist", smart, plain}).code, 0);
    const Result exported = ctl({"export-playlist", "road TRIP", plain, "--force"});
    QVERIFY2(exported.code == 0 && exported.err.isEmpty(), qPrintable(exported.err));
    QCOMPARE(ctl({"export-playlist", smart, flash}).code, 0);
    for (const auto &[file, original] : {std::pair{plain, list}, std::pair{flash, smart}})
    {
        const Result imported = ctl({"import-playlist", file});
        QVERIFY2(imported.code == 0 && imported.err.isEmpty(), qPrintable(imported.err));
        QCOMPARE(column({"list", imported.out.trimmed()}, 0), column({"list", original}, 0));
    }
    const QString lists = ok({"lists"});
    QCOMPARE(lists.count(QLatin1String("\tUser\tplain\t2\tRoad trip")), 2);
    QCOMPARE(lists.count(QLatin1String("\tUser\tsmart\t1\tFlash only")), 2);
    // No track was added twice.
    QCOMPARE(ok({"query", "Name LIKE '*'"}), tracksBefore);

    // What the reader skips reaches stderr as a warning; the rest is
    // imported all the same.
    QVariantMap root = ZBPropertyList::readFile(plain).value_or(QVariant()).toMap();
    QVariantMap second = root.value("1").toMap();
    second.remove("Rating");
    root.insert("1", second);
    QVERIFY(ZBPropertyList::writeFile(plain, root));
    const Result partial = ctl({"import-playlist", plain});
    QVERIFY2(partial.code == 0 && partial.err.startsWith("norvikctl: warning: entry \"1\"") &&
                 partial.err.count('\n') == 1,
             qPrintable(partial.err));
    QCOMPARE(column({"list", partial.out.trimmed()}, 1), QStringList{"Coast"});
}

void TestNorvikCtl::importFilesAndFolders()
{
    if (m_mp4.isEmpty())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    QFile mp4(m_mp4);
    QVERIFY(mp4.open(QIODevice::ReadOnly));
    const QByteArray clip = mp4.readAll();
    write("lib/Summer.mp4", clip);
    write("lib/deep/er/Winter.mp4", clip);
    write("lib/deep/cartoon.swf", m_swf);
    write("lib/deep/notes.txt", "notes");

    Result result = ctl({"import", m_files.filePath("lib"), write("single/Alone.mp4", clip)});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QStringLiteral("added 4, already in library 0, refused 1\n"));
    // Progress is for terminals; a pipe gets nothing.
    QCOMPARE(result.err, QString());
    // Lengths come from the files: 75 frames, 3 seconds.
    QCOMPARE(column({"list"}, 3), QStringList({"3", "75", "3", "3"}));

    // A missing path fails the run, but the rest is still imported.
    const QString absent = m_files.filePath("absent.mp4");
    result = ctl({"import", absent, write("another/there.mp4", clip)});
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QStringLiteral("added 1, already in library 0, refused 0\n"));
    QVERIFY2(result.err.contains("no such file or folder: " + absent), qPrintable(result.err));
}

QTEST_GUILESS_MAIN(TestNorvikCtl)
#include "tst_norvikctl.moc"
