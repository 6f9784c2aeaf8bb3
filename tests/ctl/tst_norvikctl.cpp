#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

#include "support/testsupport.h"

// norvikctl as a script uses it: exit codes, what goes to stdout and stderr,
// and that every command works on the same library the player opens.
class TestNorvikCtl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_dir = std::make_unique<nvktest::DataDir>(); }
    void tracksPlaylistsAndQueries();
    void listOrderAndJson();
    void errorsGoToStderrWithNonZeroExit_data();
    void errorsGoToStderrWithNonZeroExit();
    void damagedLibraryIsReportedAndKept();

private:
    using Result = nvktest::CtlResult;
    Result ctl(const QStringList &arguments) { return nvktest::runCtl(m_dir->path(), arguments); }
    QString ok(const QStringList &arguments) { return nvktest::ctlOutput(m_dir->path(), arguments); }

    std::unique_ptr<nvktest::DataDir> m_dir;
};

void TestNorvikCtl::tracksPlaylistsAndQueries()
{
    const QString movie = ok({"add-track", "Holiday Movie", "/v/holiday.mp4"});
    QCOMPARE(movie.size(), 36);
    const QString cartoon = ok({"add-track", "Cartoon", "/v/cartoon.swf", "--type", "swf", "--url",
                                "http://example.net/cartoon.swf", "--play-count", "4"});
    QVERIFY(!cartoon.isEmpty());
    // The same path in another case is the same track.
    QCOMPARE(ok({"add-track", "Again", "/V/HOLIDAY.MP4"}), movie);

    const QString playlist = ok({"add-playlist", "Road trip"});
    QCOMPARE(playlist.size(), 36);
    QCOMPARE(ctl({"add-to-playlist", "Road trip", movie}).code, 0);
    const Result twice = ctl({"add-to-playlist", "Road trip", movie});
    QVERIFY(twice.code != 0);
    QVERIFY(twice.err.contains("already"));

    QVERIFY(!ok({"add-smart", "Played", "PlayCount > 2"}).isEmpty());
    const QString lists = ok({"lists"});
    QVERIFY2(lists.contains(QRegularExpression("\tPredefined\tsmart\t2\tAll Tracks")), qPrintable(lists));
    QVERIFY(lists.contains(QRegularExpression("\tPredefined\tsmart\t1\tSWF")));
    QVERIFY(lists.contains(QRegularExpression("\tUser\tplain\t1\tRoad trip")));
    QVERIFY(lists.contains(QRegularExpression("\tUser\tsmart\t1\tPlayed")));
    QVERIFY(lists.contains(QRegularExpression("\tDownloads\tsmart\t1\tToday")));

    QCOMPARE(ok({"query", "Type contains[cd] 'SW'"}).section('\t', 0, 0), cartoon);
    QCOMPARE(ok({"query", "Name CONTAINS[cd] 'nothing like this'"}), QString());

    QCOMPARE(ctl({"remove-track", movie}).code, 0);
    QVERIFY(ctl({"remove-track", movie}).code != 0);
    QVERIFY(ok({"lists"}).contains(QRegularExpression("\tUser\tplain\t0\tRoad trip")));
    QCOMPARE(ok({"check"}).left(2), QStringLiteral("ok"));
}

void TestNorvikCtl::listOrderAndJson()
{
    ok({"add-track", "beta", "/b.mp4", "--play-count", "1", "--added", "2026-01-02T10:00:00Z"});
    ok({"add-track", "Alpha", "/a.mp4", "--play-count", "9", "--added", "2026-01-01T10:00:00Z"});
    ok({"add-track", "gamma", "/g.mp4", "--play-count", "5", "--added", "2026-01-03T10:00:00Z"});
    const auto names = [this](const QStringList &arguments) {
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
    QVERIFY(json.isArray());
    QCOMPARE(json.array().size(), 3);
    const QJsonObject first = json.array().first().toObject();
    QCOMPARE(first.value("Name").toString(), QStringLiteral("Alpha"));
    QCOMPARE(first.value("PlayCount").toInt(), 9);
    QCOMPARE(first.value("Added").toString(), QStringLiteral("2026-01-01T10:00:00.000Z"));
    QCOMPARE(first.value("URL").toString(), QStringLiteral(""));
    QVERIFY(first.value("LastPlayed").isNull());
}

void TestNorvikCtl::errorsGoToStderrWithNonZeroExit_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown command") << QStringList{"frobnicate"} << "unknown command";
    QTest::newRow("missing path") << QStringList{"add-track", "Name only"} << "NAME and PATH";
    QTest::newRow("bad number") << QStringList{"add-track", "x", "/x.mp4", "--rating", "five"} << "whole number";
    QTest::newRow("bad date") << QStringList{"add-track", "x", "/x.mp4", "--added", "yesterday"} << "ISO 8601";
    QTest::newRow("dangling option") << QStringList{"add-track", "x", "/x.mp4", "--url"} << "needs a value";
    QTest::newRow("unknown list") << QStringList{"list", "No such list"} << "no list named";
    QTest::newRow("bad filter") << QStringList{"query", "(Name =="} << "does not parse";
    QTest::newRow("bad smart list") << QStringList{"add-smart", "x", "Rating >> 3"} << "does not parse";
    QTest::newRow("smart list member") << QStringList{"add-to-playlist", "All Tracks", "X"} << "smart list";
    QTest::newRow("unknown track") << QStringList{"remove-track", "00000000-0000-0000-0000-000000000000"} << "no track";
}

void TestNorvikCtl::errorsGoToStderrWithNonZeroExit()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const Result result = ctl(arguments);
    QVERIFY(result.code > 0);
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    QVERIFY(result.out.isEmpty());
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
    QVERIFY(result.code != 0);
    QVERIFY2(result.err.contains("damaged") && result.err.contains(".damaged-"), qPrintable(result.err));
    const QString kept = result.err.section(" It was kept as ", 1).section(" and a new", 0, 0);
    QFile keptFile(kept);
    QVERIFY2(keptFile.open(QIODevice::ReadOnly), qPrintable(kept));
    QCOMPARE(keptFile.readAll(), QByteArray(8192, 'Z'));
    // The next run works on the fresh library.
    QCOMPARE(ctl({"lists"}).code, 0);
}

QTEST_GUILESS_MAIN(TestNorvikCtl)
#include "tst_norvikctl.moc"
