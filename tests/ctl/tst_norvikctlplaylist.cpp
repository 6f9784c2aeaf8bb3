#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include "library/zbpropertylist.h"
#include "support/testsupport.h"

// norvikctl export-playlist and import-playlist: the window's playlist file
// commands for scripts, with the same files and the same refusals.
class TestNorvikCtlPlaylist : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_dir = std::make_unique<nvktest::DataDir>(); }
    void exportThenImportCopiesTheList();
    void smartListsAndListsNamedByUUID();
    void skippedEntriesAreWarnedAbout();
    void refusalsExitWithAMessageAndChangeNothing_data();
    void refusalsExitWithAMessageAndChangeNothing();
    void existingFilesAreReplacedOnlyWhenAsked();
    void usageNamesTheCommands();

private:
    using Result = nvktest::CtlResult;
    Result ctl(const QStringList &arguments) { return nvktest::runCtl(m_dir->path(), arguments); }
    QString ok(const QStringList &arguments) { return nvktest::ctlOutput(m_dir->path(), arguments); }
    QString file(const QString &name) const { return m_dir->filePath(name); }
    // UUID, then the track count, of each user list with the name.
    QList<QPair<QString, int>> userLists(const QString &name)
    {
        QList<QPair<QString, int>> result;
        for (const QString &line : ok({"lists"}).split('\n'))
        {
            const QStringList fields = line.split('\t');
            if (fields.size() == 5 && fields.at(1) == u"User" && fields.at(4) == name)
                result.append({fields.at(0), fields.at(3).toInt()});
        }
        return result;
    }
    QStringList trackUUIDs(const QString &list)
    {
        QStringList result;
        for (const QString &line : ok({"list", list}).split('\n', Qt::SkipEmptyParts))
            result << line.section('\t', 0, 0);
        result.sort();
        return result;
    }

    std::unique_ptr<nvktest::DataDir> m_dir;
};

void TestNorvikCtlPlaylist::exportThenImportCopiesTheList()
{
    const QString coast = ok({"add-track", "Coast", "/v/coast.mp4", "--url", "http://example.net/coast.mp4",
                              "--source-page", "Coast videos", "--last-played", "2024-01-02T03:04:05Z"});
    const QString hills = ok({"add-track", "Hills", "/v/hills.mp4"});
    ok({"add-track", "Elsewhere", "/v/elsewhere.mp4"});
    ok({"add-playlist", "Road trip"});
    QCOMPARE(ctl({"add-to-playlist", "Road trip", coast}).code, 0);
    QCOMPARE(ctl({"add-to-playlist", "Road trip", hills}).code, 0);

    const QString path = file("road trip.nvp");
    const Result exported = ctl({"export-playlist", "road TRIP", path});
    QVERIFY2(exported.code == 0, qPrintable(exported.err));
    QVERIFY(exported.err.isEmpty());
    QString error;
    const QVariantMap root = ZBPropertyList::readFile(path, &error).value_or(QVariant()).toMap();
    QVERIFY2(!root.isEmpty(), qPrintable(error));
    QCOMPARE(root.value("Name").toString(), QStringLiteral("Road trip"));
    QVERIFY(root.contains("0") && root.contains("1") && !root.contains("2"));

    const QString tracksBefore = ok({"query", "Name LIKE '*'"});
    const Result imported = ctl({"import-playlist", path});
    QVERIFY2(imported.code == 0, qPrintable(imported.err));
    QVERIFY2(imported.err.isEmpty(), qPrintable(imported.err));
    const QString uuid = imported.out.trimmed();
    QCOMPARE(uuid.size(), 36);

    const QList<QPair<QString, int>> lists = userLists(QStringLiteral("Road trip"));
    QCOMPARE(lists.size(), 2);
    QVERIFY(lists.at(0).first == uuid || lists.at(1).first == uuid);
    QCOMPARE(lists.at(0).second, 2);
    QCOMPARE(lists.at(1).second, 2);
    QCOMPARE(trackUUIDs(uuid), trackUUIDs(lists.at(0).first == uuid ? lists.at(1).first : lists.at(0).first));
    // No track was added twice.
    QCOMPARE(ok({"query", "Name LIKE '*'"}), tracksBefore);
}

void TestNorvikCtlPlaylist::smartListsAndListsNamedByUUID()
{
    ok({"add-track", "Swf one", "/v/one.swf"});
    ok({"add-track", "Movie", "/v/movie.mp4"});
    const QString smart = ok({"add-smart", "Flash only", "Type contains[cd] 'swf'"});
    QCOMPARE(smart.size(), 36);

    const QString path = file("flash.nvp");
    QCOMPARE(ctl({"export-playlist", smart, path}).code, 0);
    const QVariantMap root = ZBPropertyList::readFile(path).value_or(QVariant()).toMap();
    QCOMPARE(root.value("isSmart"), QVariant(true));
    QCOMPARE(root.value("Request"), QVariant(QStringLiteral("Type contains[cd] 'swf'")));
    QVERIFY(!root.contains("0"));

    const QString copy = ok({"import-playlist", path});
    QCOMPARE(copy.size(), 36);
    QVERIFY(ok({"lists"}).contains(QRegularExpression(copy + "\tUser\tsmart\t1\tFlash only")));
    QCOMPARE(trackUUIDs(copy), trackUUIDs(smart));
}

void TestNorvikCtlPlaylist::skippedEntriesAreWarnedAbout()
{
    QVariantMap root{{"Name", "Partial"},
                     {"isSmart", false},
                     {"SortField", "Name"},
                     {"Ascend", true},
                     {"SortOrder", qlonglong(200)}};
    const QDateTime added(QDate(2024, 5, 1), QTime(8, 0), Qt::UTC);
    const auto track = [&added](const QString &name) {
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
    const QString path = file("partial.nvp");
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

void TestNorvikCtlPlaylist::refusalsExitWithAMessageAndChangeNothing_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");

    const QByteArray none;
    QTest::newRow("export without a file") << QStringList{"export-playlist", "Road trip"} << none << "needs LIST";
    QTest::newRow("export of an unknown list")
        << QStringList{"export-playlist", "Nowhere", "@/out.nvp"} << none << "no list named \"Nowhere\"";
    QTest::newRow("export without the extension")
        << QStringList{"export-playlist", "Road trip", "@/out.xml"} << none << "ends in .nvp";
    QTest::newRow("export into a missing folder")
        << QStringList{"export-playlist", "Road trip", "@/missing/out.nvp"} << none << "was not written";
    QTest::newRow("export with an unknown option")
        << QStringList{"export-playlist", "Road trip", "@/out.nvp", "--overwrite"} << none << "unknown option";
    QTest::newRow("import without a file") << QStringList{"import-playlist"} << none << "needs one FILE";
    QTest::newRow("import of a missing file")
        << QStringList{"import-playlist", "@/absent.nvp"} << none << "cannot open";
    QTest::newRow("import of a damaged file")
        << QStringList{"import-playlist", "@/in.nvp"} << QByteArray("<plist><dict><key>Name</key></plist>") << "line 1";
    QTest::newRow("import of a list without a sort order")
        << QStringList{"import-playlist", "@/in.nvp"}
        << ZBPropertyList::write(QVariantMap{{"Name", "No order"}, {"SortField", "Name"}, {"Ascend", true}}).value()
        << "lacks \"SortOrder\"";
    QTest::newRow("import of a smart list without a filter")
        << QStringList{"import-playlist", "@/in.nvp"}
        << ZBPropertyList::write(QVariantMap{{"Name", "No filter"},
                                             {"isSmart", true},
                                             {"SortField", "Name"},
                                             {"Ascend", true},
                                             {"SortOrder", qlonglong(1)}})
               .value()
        << "lacks \"Request\"";
}

void TestNorvikCtlPlaylist::refusalsExitWithAMessageAndChangeNothing()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, content);
    QFETCH(QString, message);

    const QString track = ok({"add-track", "Coast", "/v/coast.mp4"});
    ok({"add-playlist", "Road trip"});
    QCOMPARE(ctl({"add-to-playlist", "Road trip", track}).code, 0);
    for (QString &argument : arguments)
        argument.replace('@', m_dir->path());
    if (!content.isEmpty())
    {
        QFile in(file("in.nvp"));
        QVERIFY(in.open(QIODevice::WriteOnly));
        in.write(content);
    }
    const QString before = ok({"lists"});

    const Result result = ctl(arguments);
    QCOMPARE(result.code, 1);
    QVERIFY(result.out.isEmpty());
    QVERIFY2(result.err.startsWith("norvikctl: ") && result.err.contains(message), qPrintable(result.err));
    QCOMPARE(ok({"lists"}), before);
    QVERIFY(!QFile::exists(file("out.nvp")) && !QFile::exists(file("out.xml")));
}

void TestNorvikCtlPlaylist::existingFilesAreReplacedOnlyWhenAsked()
{
    ok({"add-playlist", "First"});
    ok({"add-playlist", "Second"});
    const QString path = file("list.nvp");
    QCOMPARE(ctl({"export-playlist", "First", path}).code, 0);

    const Result refused = ctl({"export-playlist", "Second", path});
    QCOMPARE(refused.code, 1);
    QVERIFY2(refused.err.contains("--force"), qPrintable(refused.err));
    QCOMPARE(ZBPropertyList::readFile(path).value_or(QVariant()).toMap().value("Name"), QVariant("First"));

    QCOMPARE(ctl({"export-playlist", "Second", path, "--force"}).code, 0);
    QCOMPARE(ZBPropertyList::readFile(path).value_or(QVariant()).toMap().value("Name"), QVariant("Second"));

    QVERIFY(QDir().mkpath(file("taken.nvp")));
    const Result onFolder = ctl({"export-playlist", "Second", file("taken.nvp"), "--force"});
    QCOMPARE(onFolder.code, 1);
    QVERIFY2(onFolder.err.contains("is a folder"), qPrintable(onFolder.err));
}

void TestNorvikCtlPlaylist::usageNamesTheCommands()
{
    QProcess process;
    process.start(nvktest::binaryPath(QStringLiteral("norvikctl")), {"--help"});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 0);
    const QString usage = QString::fromUtf8(process.readAllStandardOutput());
    QVERIFY2(usage.contains("export-playlist LIST FILE.nvp") && usage.contains("import-playlist FILE.nvp"),
             qPrintable(usage));
}

QTEST_GUILESS_MAIN(TestNorvikCtlPlaylist)
#include "tst_norvikctlplaylist.moc"
