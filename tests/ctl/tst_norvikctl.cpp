#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include "library/zbpropertylist.h"
#include "support/mediafactory.h"
#include "support/swfwriter.h"
#include "support/testsupport.h"

// norvikctl as a script uses it: exit codes, what goes to stdout and stderr,
// and that every command works on the same library the player opens.
class TestNorvikCtl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_dir = std::make_unique<nvktest::DataDir>(); }

    void refusals_data();
    void refusals();
    void fileCommands_data();
    void fileCommands();

    void tracksPlaylistsAndQueries();
    void listOrderAndJson();
    void damagedLibraryIsReportedAndKept();
    void exportThenImportCopiesTheList();
    void importedListsWarnAboutSkippedEntries();
    void importFilesAndFolders();

private:
    using Result = nvktest::CtlResult;
    Result ctl(const QStringList &arguments) { return nvktest::runCtl(m_dir->path(), arguments); }
    QString ok(const QStringList &arguments) { return nvktest::ctlOutput(m_dir->path(), arguments); }
    QString write(const QString &name, const QByteArray &bytes);
    // "@" stands for the folder of the test's files, "{coast}" for the track
    // the shared library holds.
    QStringList expanded(QStringList arguments) const;
    QStringList trackUUIDs(const QString &list);

    QTemporaryDir m_files;
    nvktest::DataDir m_shared;
    QString m_sharedLists;
    QString m_coast;
    QString m_mp4;
    QString m_avi;
    QByteArray m_swf;
    QByteArray m_existing;
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

QStringList TestNorvikCtl::expanded(QStringList arguments) const
{
    for (QString &argument : arguments)
        argument.replace(u'@', m_files.path()).replace(QStringLiteral("{coast}"), m_coast);
    return arguments;
}

QStringList TestNorvikCtl::trackUUIDs(const QString &list)
{
    QStringList result;
    for (const QString &line : ok({"list", list}).split('\n', Qt::SkipEmptyParts))
        result << line.section('\t', 0, 0);
    result.sort();
    return result;
}

void TestNorvikCtl::initTestCase()
{
    QVERIFY(m_files.isValid());
    m_swf = nvktest::SwfWriter()
                .setVersion(10)
                .setStageSize(550, 400)
                .setFrameRate(30)
                .setFileAttributes(true, true)
                .addFrames(75)
                .build(nvktest::SwfWriter::Compression::Zlib);
    write("cartoon.swf", m_swf);
    write("Projector", nvktest::macProjector(QByteArray(4000, 'p'), m_swf));
    write("Game.exe", nvktest::windowsProjector(QByteArray(1000, 'w'), m_swf));
    write("old.swf", nvktest::SwfWriter().setVersion(6).setStageSize(320, 240).setFrameRate(12.5).addFrames(3).build(
                         nvktest::SwfWriter::Compression::Lzma));
    write("fake.mkv", QByteArray(3000, 'x'));
    write("notes.txt", "words");
    write("bad/clip.swf", "not a movie at all");
    write("bad/cut.swf", m_swf.left(12));
    write("bad/setup.exe", QByteArray(3000, 's'));
    write("bad/empty.swf", QByteArray());
    QVERIFY(QDir().mkpath(m_files.filePath("taken.nvp")));
    m_existing = ZBPropertyList::write(QVariantMap{{"Name", "Existing"}}).value();
    write("existing.nvp", m_existing);
    if (nvktest::MediaFactory::isAvailable())
    {
        nvktest::MediaFactory::Clip clip;
        clip.extension = "mp4";
        clip.seconds = 3;
        m_mp4 = nvktest::MediaFactory::clip(clip);
        m_avi = nvktest::MediaFactory::clip("avi");
    }

    // Refusals all run on one library; none of them may change it.
    m_coast = nvktest::ctlOutput(m_shared.path(), {"add-track", "Coast", "/v/coast.mp4"});
    QCOMPARE(nvktest::ctlOutput(m_shared.path(), {"add-playlist", "Road trip"}).size(), 36);
    QCOMPARE(nvktest::runCtl(m_shared.path(), {"add-to-playlist", "Road trip", m_coast}).code, 0);
    m_sharedLists = nvktest::ctlOutput(m_shared.path(), {"lists"});
    QVERIFY(!m_sharedLists.isEmpty());
}

void TestNorvikCtl::refusals_data()
{
    QTest::addColumn<QStringList>("arguments");
    // Written to @/in.nvp first when not empty.
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    const QByteArray none;
    const auto row = [&none](const char *tag, const QStringList &arguments, const char *message, int code = 1)
    { QTest::newRow(tag) << arguments << none << code << QString::fromUtf8(message); };
    row("unknown command", {"frobnicate"}, "unknown command", 2);
    row("missing path", {"add-track", "Name only"}, "NAME and PATH");
    row("bad number", {"add-track", "x", "/x.mp4", "--rating", "five"}, "whole number");
    row("bad date", {"add-track", "x", "/x.mp4", "--added", "yesterday"}, "ISO 8601");
    row("dangling option", {"add-track", "x", "/x.mp4", "--url"}, "needs a value");
    row("unknown list", {"list", "No such list"}, "no list named");
    row("bad filter", {"query", "(Name =="}, "does not parse");
    row("bad smart list", {"add-smart", "x", "Rating >> 3"}, "does not parse");
    row("smart list member", {"add-to-playlist", "All Tracks", "X"}, "smart list");
    row("already a member", {"add-to-playlist", "Road trip", "{coast}"}, "already");
    row("unknown track", {"remove-track", "00000000-0000-0000-0000-000000000000"}, "no track");

    row("export without a file", {"export-playlist", "Road trip"}, "needs LIST");
    row("export of an unknown list", {"export-playlist", "Nowhere", "@/out.nvp"}, "no list named \"Nowhere\"");
    row("export without the extension", {"export-playlist", "Road trip", "@/out.xml"}, "ends in .nvp");
    row("export into a missing folder", {"export-playlist", "Road trip", "@/missing/out.nvp"}, "was not written");
    row("export with an unknown option", {"export-playlist", "Road trip", "@/out.nvp", "--overwrite"},
        "unknown option");
    row("export over a file", {"export-playlist", "Road trip", "@/existing.nvp"}, "--force");
    row("export over a folder", {"export-playlist", "Road trip", "@/taken.nvp", "--force"}, "is a folder");
    row("import without a file", {"import-playlist"}, "needs one FILE");
    row("import of a missing file", {"import-playlist", "@/absent.nvp"}, "cannot open");
    const QStringList importIn{"import-playlist", "@/in.nvp"};
    QTest::newRow("import of a damaged file")
        << importIn << QByteArray("<plist><dict><key>Name</key></plist>") << 1 << "line 1";
    QTest::newRow("import of a list without a sort order")
        << importIn
        << ZBPropertyList::write(QVariantMap{{"Name", "No order"}, {"SortField", "Name"}, {"Ascend", true}}).value()
        << 1 << "lacks \"SortOrder\"";
    QTest::newRow("import of a smart list without a filter")
        << importIn
        << ZBPropertyList::write(QVariantMap{{"Name", "No filter"},
                                             {"isSmart", true},
                                             {"SortField", "Name"},
                                             {"Ascend", true},
                                             {"SortOrder", qlonglong(1)}})
               .value()
        << 1 << "lacks \"Request\"";

    row("import of nothing", {"import"}, "import needs");
    row("probe of a missing file", {"probe", "@/nothing.mp4"}, "cannot read");
    row("probe of a folder", {"probe", "@"}, "a folder");
    row("probe of nothing", {"probe"}, "exactly one FILE");
    for (const char *name : {"clip.swf", "cut.swf", "setup.exe", "empty.swf", "../fake.mkv"})
        row(name, {"swf-info", QStringLiteral("@/bad/") + QLatin1String(name)}, "is no Flash movie");
    row("swf-info of a missing file", {"swf-info", "@/missing.swf"}, "cannot read");
}

void TestNorvikCtl::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, content);
    QFETCH(int, code);
    QFETCH(QString, message);
    if (!content.isEmpty())
        write("in.nvp", content);

    const Result result = nvktest::runCtl(m_shared.path(), expanded(arguments));
    QCOMPARE(result.code, code);
    QVERIFY(result.out.isEmpty());
    QVERIFY2(result.err.startsWith("norvikctl: ") && result.err.contains(message), qPrintable(result.err));
    QCOMPARE(nvktest::ctlOutput(m_shared.path(), {"lists"}), m_sharedLists);
    QVERIFY(!QFile::exists(m_files.filePath("out.nvp")) && !QFile::exists(m_files.filePath("out.xml")));
    QFile existing(m_files.filePath("existing.nvp"));
    QVERIFY(existing.open(QIODevice::ReadOnly));
    QCOMPARE(existing.readAll(), m_existing);
}

void TestNorvikCtl::fileCommands_data()
{
    QTest::addColumn<QStringList>("arguments");
    // Each must appear in stdout, in this order, unless the output is exact.
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<bool>("exact");

    const QString uncompressed = QStringLiteral("signature: CWS (compression: zlib)\nversion: 10\nfile length: %1\n"
                                                "frame size: 550 x 400 pixels\nframe rate: 30\nframe count: 75\n"
                                                "actionscript 3: yes\n")
                                     .arg(nvktest::SwfWriter()
                                              .setVersion(10)
                                              .setStageSize(550, 400)
                                              .setFrameRate(30)
                                              .setFileAttributes(true, true)
                                              .addFrames(75)
                                              .build()
                                              .size());
    QTest::newRow("swf-info of a movie") << QStringList{"swf-info", "@/cartoon.swf"}
                                         << QStringList{"source: movie\n" + uncompressed} << true;
    QTest::newRow("swf-info of a projector")
        << QStringList{"swf-info", "@/Game.exe"}
        << QStringList{QStringLiteral("source: Windows projector, %1 bytes of movie\n").arg(m_swf.size()) + uncompressed}
        << true;
    QTest::newRow("swf-info of an old LZMA movie")
        << QStringList{"swf-info", "@/old.swf"}
        << QStringList{"signature: ZWS (compression: LZMA)\nversion: 6\n",
                       "frame size: 320 x 240 pixels\nframe rate: 12.5\nframe count: 3\n", "actionscript 3: no\n"}
        << false;
    QTest::newRow("probe of a movie") << QStringList{"probe", "@/cartoon.swf"}
                                      << QStringList{"type: swf\nregistered: yes\nlibrary length: 75 frames\n",
                                                     "ActionScript 3", "frames: 75\n"}
                                      << false;
    // A projector: typed exe whatever its name, frames from the movie inside.
    QTest::newRow("probe of a projector") << QStringList{"probe", "@/Projector"}
                                          << QStringList{"type: exe\nregistered: yes\nlibrary length: 0 seconds\n",
                                                         "flash: Mac projector", "frames: 75\n"}
                                          << false;
    QTest::newRow("probe of a fake") << QStringList{"probe", "@/fake.mkv"}
                                     << QStringList{"duration: unknown\n", "video engine can decode: no\n"} << false;
    QTest::newRow("probe of a text") << QStringList{"probe", "@/notes.txt"}
                                     << QStringList{"type: txt\nregistered: no\n"} << false;
    if (!m_mp4.isEmpty())
    {
        QTest::newRow("probe of a video") << QStringList{"probe", m_mp4}
                                          << QStringList{"type: mp4\nregistered: yes\nlibrary length: 3 seconds\n",
                                                         "duration: 3.0", "format: mp4: ",
                                                         "video engine can decode: yes\n"}
                                          << false;
    }
}

void TestNorvikCtl::fileCommands()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, expected);
    QFETCH(bool, exact);
    const Result result = ctl(expanded(arguments));
    QVERIFY2(result.code == 0, qPrintable(result.err));
    if (exact)
    {
        QCOMPARE(result.out, expected.join(QString()));
        return;
    }
    qsizetype from = 0;
    for (const QString &part : expected)
    {
        from = result.out.indexOf(part, from);
        QVERIFY2(from >= 0, qPrintable(part + QStringLiteral(" not in:\n") + result.out));
    }
    // A file the video engine cannot decode has no format line.
    if (arguments.last().endsWith(QLatin1String("fake.mkv")))
        QVERIFY(!result.out.contains(QStringLiteral("format:")));
}

void TestNorvikCtl::tracksPlaylistsAndQueries()
{
    const QString movie = ok({"add-track", "Holiday Movie", "/v/holiday.mp4"});
    QCOMPARE(movie.size(), 36);
    const QString cartoon = ok({"add-track", "Cartoon", "/v/cartoon.swf", "--type", "swf", "--url",
                                "http://example.net/cartoon.swf", "--play-count", "4"});
    QVERIFY(!cartoon.isEmpty());
    // The same path in another case is the same track.
    QCOMPARE(ok({"add-track", "Again", "/V/HOLIDAY.MP4"}), movie);

    QCOMPARE(ok({"add-playlist", "Road trip"}).size(), 36);
    QCOMPARE(ctl({"add-to-playlist", "Road trip", movie}).code, 0);
    QVERIFY(!ok({"add-smart", "Played", "PlayCount > 2"}).isEmpty());
    const QString lists = ok({"lists"});
    for (const char *line : {"\tPredefined\tsmart\t2\tAll Tracks", "\tPredefined\tsmart\t1\tSWF",
                             "\tUser\tplain\t1\tRoad trip", "\tUser\tsmart\t1\tPlayed", "\tDownloads\tsmart\t1\tToday"})
        QVERIFY2(lists.contains(QLatin1String(line)), qPrintable(lists));

    QCOMPARE(ok({"query", "Type contains[cd] 'SW'"}).section('\t', 0, 0), cartoon);
    QCOMPARE(ok({"query", "Name CONTAINS[cd] 'nothing like this'"}), QString());

    QCOMPARE(ctl({"remove-track", movie}).code, 0);
    QVERIFY(ctl({"remove-track", movie}).code != 0);
    QVERIFY(ok({"lists"}).contains(QLatin1String("\tUser\tplain\t0\tRoad trip")));
    QCOMPARE(ok({"check"}).left(2), QStringLiteral("ok"));
}

void TestNorvikCtl::listOrderAndJson()
{
    ok({"add-track", "beta", "/b.mp4", "--play-count", "1", "--added", "2026-01-02T10:00:00Z"});
    ok({"add-track", "Alpha", "/a.mp4", "--play-count", "9", "--added", "2026-01-01T10:00:00Z"});
    ok({"add-track", "gamma", "/g.mp4", "--play-count", "5", "--added", "2026-01-03T10:00:00Z"});
    const auto names = [this](const QStringList &arguments)
    {
        QStringList result;
        for (const QString &line : ok(arguments).split('\n', Qt::SkipEmptyParts))
            result << line.section('\t', 1, 1);
        return result;
    };
    QCOMPARE(names({"list"}), QStringList({"Alpha", "beta", "gamma"}));
    QCOMPARE(names({"list", "--descending"}), QStringList({"gamma", "beta", "Alpha"}));
    QCOMPARE(names({"list", "All Tracks", "--sort", "PlayCount"}), QStringList({"Alpha", "gamma", "beta"}));
    QCOMPARE(names({"list", "--sort", "Added", "--descending"}), QStringList({"Alpha", "beta", "gamma"}));

    const QJsonDocument json = QJsonDocument::fromJson(ok({"list", "--json"}).toUtf8());
    QCOMPARE(json.array().size(), 3);
    const QJsonObject first = json.array().first().toObject();
    QCOMPARE(first.value("Name").toString(), QStringLiteral("Alpha"));
    QCOMPARE(first.value("PlayCount").toInt(), 9);
    QCOMPARE(first.value("Added").toString(), QStringLiteral("2026-01-01T10:00:00.000Z"));
    QCOMPARE(first.value("URL").toString(), QStringLiteral(""));
    QVERIFY(first.value("LastPlayed").isNull());
}

void TestNorvikCtl::damagedLibraryIsReportedAndKept()
{
    ok({"add-track", "x", "/x.mp4"});
    const QString file = m_dir->filePath("NVKLibrary.sqlite");
    QFile::remove(file + "-wal");
    QFile::remove(file + "-shm");
    {
        QFile damaged(file);
        QVERIFY(damaged.open(QIODevice::WriteOnly | QIODevice::Truncate));
        damaged.write(QByteArray(8192, 'Z'));
    }
    const Result result = ctl({"lists"});
    QCOMPARE(result.code, 3);
    const QString kept = result.err.section(" It was kept as ", 1).section(" and a new", 0, 0);
    QVERIFY2(kept.contains(".damaged-"), qPrintable(result.err));
    QFile keptFile(kept);
    QVERIFY2(keptFile.open(QIODevice::ReadOnly), qPrintable(kept));
    QCOMPARE(keptFile.readAll(), QByteArray(8192, 'Z'));
    // The next run works on the fresh library.
    QCOMPARE(ctl({"lists"}).code, 0);
}

void TestNorvikCtl::exportThenImportCopiesTheList()
{
    const QString coast = ok({"add-track", "Coast", "/v/coast.mp4", "--url", "http://example.net/coast.mp4",
                              "--source-page", "Coast videos", "--last-played", "2024-01-02T03:04:05Z"});
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
    const QVariantMap root = ZBPropertyList::readFile(plain).value_or(QVariant()).toMap();
    QCOMPARE(root.value("Name").toString(), QStringLiteral("Road trip"));
    QVERIFY(root.contains("0") && root.contains("1") && !root.contains("2"));
    const QVariantMap smartRoot = ZBPropertyList::readFile(flash).value_or(QVariant()).toMap();
    QCOMPARE(smartRoot.value("isSmart"), QVariant(true));
    QCOMPARE(smartRoot.value("Request"), QVariant(QStringLiteral("Type contains[cd] 'swf'")));
    QVERIFY(!smartRoot.contains("0"));

    for (const auto &[file, original] : {std::pair{plain, list}, std::pair{flash, smart}})
    {
        const Result imported = ctl({"import-playlist", file});
        QVERIFY2(imported.code == 0 && imported.err.isEmpty(), qPrintable(imported.err));
        const QString copy = imported.out.trimmed();
        QCOMPARE(copy.size(), 36);
        QVERIFY(copy != original);
        QCOMPARE(trackUUIDs(copy), trackUUIDs(original));
    }
    QCOMPARE(ok({"lists"}).count(QLatin1String("\tUser\tsmart\t1\tFlash only")), 2);
    // No track was added twice.
    QCOMPARE(ok({"query", "Name LIKE '*'"}), tracksBefore);
}

void TestNorvikCtl::importedListsWarnAboutSkippedEntries()
{
    QVariantMap root{{"Name", "Partial"},
                     {"isSmart", false},
                     {"SortField", "Name"},
                     {"Ascend", true},
                     {"SortOrder", qlonglong(200)}};
    const QDateTime added(QDate(2024, 5, 1), QTime(8, 0), Qt::UTC);
    const auto track = [&added](const QString &name)
    {
        return QVariantMap{{"Name", name},           {"Type", "mp4"},          {"Path", QString("/v/" + name + ".mp4")},
                           {"Length", qlonglong(1)}, {"Rating", qlonglong(0)}, {"PlayCount", qlonglong(0)},
                           {"Added", added}};
    };
    root.insert("0", track("kept"));
    QVariantMap noRating = track("unrated");
    noRating.remove("Rating");
    root.insert("1", noRating);
    root.insert("2", track("also kept"));
    root.insert("4", track("beyond the gap"));
    const QString path = m_dir->filePath("partial.nvp");
    QVERIFY(ZBPropertyList::writeFile(path, root));

    const Result result = ctl({"import-playlist", path});
    QCOMPARE(result.code, 0);
    const QStringList warnings = result.err.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(warnings.size(), 2);
    QVERIFY2(warnings.at(0).startsWith("norvikctl: warning: entry \"1\"") && warnings.at(0).contains("\"Rating\""),
             qPrintable(result.err));
    QVERIFY2(warnings.at(1).contains("\"3\" is missing") && warnings.at(1).contains("\"4\""), qPrintable(result.err));
    const QString listing = ok({"list", result.out.trimmed()});
    QCOMPARE(listing.count('\n') + 1, 2);
    QVERIFY(listing.contains("/v/kept.mp4") && listing.contains("/v/also kept.mp4"));
}

void TestNorvikCtl::importFilesAndFolders()
{
    if (m_mp4.isEmpty())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    const auto bytes = [](const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QByteArray clip = bytes(m_mp4);
    write("lib/Summer.mp4", clip);
    write("lib/deep/er/Winter.avi", bytes(m_avi));
    write("lib/deep/cartoon.swf", m_swf);
    write("lib/deep/notes.txt", "notes");
    const QString single = write("single/Alone.mp4", clip);

    Result result = ctl({"import", m_files.filePath("lib"), single});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QStringLiteral("added 4, already in library 0, refused 1\n"));
    // Progress is for terminals; a pipe gets nothing.
    QCOMPARE(result.err, QString());
    const QString listed = ctl({"list", "--json"}).out;
    for (const char *name : {"\"Summer\"", "\"Winter\"", "\"cartoon\"", "\"Alone\""})
        QVERIFY2(listed.contains(QLatin1String(name)), name);
    QVERIFY(listed.contains(QRegularExpression("\"Length\": *75")));
    QVERIFY(listed.contains(QRegularExpression("\"Length\": *3")));

    // Relative paths are taken from the working folder.
    QProcess process;
    process.setWorkingDirectory(m_files.filePath("lib"));
    process.start(nvktest::binaryPath("norvikctl"), {"--data-dir", m_dir->path(), "import", "."});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()),
             QStringLiteral("added 0, already in library 3, refused 1\n"));

    // A missing path fails the run, but the rest is still imported.
    const QString absent = m_files.filePath("absent.mp4");
    result = ctl({"import", absent, write("another/there.mp4", clip)});
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QStringLiteral("added 1, already in library 0, refused 0\n"));
    QVERIFY2(result.err.contains("no such file or folder: " + absent), qPrintable(result.err));
}

QTEST_GUILESS_MAIN(TestNorvikCtl)
#include "tst_norvikctl.moc"
