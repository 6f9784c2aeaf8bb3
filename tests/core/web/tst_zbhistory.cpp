#include <QDir>
#include <QFile>
#include <QTest>

#include "support/testsupport.h"
#include "web/zbhistory.h"

namespace
{
// "url" for each record, most recent first, with " A" for an actual page and
// " H" for a typed one.
QStringList describe(const QList<ZBHistoryEntity> &records)
{
    QStringList out;
    for (const ZBHistoryEntity &r : records)
        out << r.HistoryItem + (r.ActualPage ? " A" : "") + (r.HandWrited ? " H" : "");
    return out;
}

// "typed url", "link url" (added, not typed) or "page url|title" (loaded).
void run(ZBHistory &history, const QStringList &ops)
{
    for (const QString &op : ops)
    {
        const QString arg = op.section(' ', 1);
        if (op.startsWith("page "))
            QVERIFY(history.addHistoryItemWithURL(arg.section('|', 0, 0), arg.section('|', 1)));
        else
            QVERIFY(history.addHistoryItem(arg, op.startsWith("typed ")));
    }
}
} // namespace

class TestZBHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void queries_data()
    {
        QTest::addColumn<QStringList>("ops");
        QTest::addColumn<QStringList>("all");
        QTest::addColumn<QString>("lookup");
        QTest::addColumn<QStringList>("found");
        QTest::newRow("most recent first") << QStringList{"typed a.com", "link b.com", "page c.com|C", "typed d.org"}
                                           << QStringList{"d.org H", "c.com A", "b.com", "a.com H"} << "" << QStringList{};
        QTest::newRow("a typed prefix takes over the longer record")
            << QStringList{"link x.com/page", "typed b.com", "typed x.com"} << QStringList{"x.com H", "b.com H"}
            << "x" << QStringList{"x.com"};
        QTest::newRow("a loaded page reuses a typed record")
            << QStringList{"typed http://x.com/path", "page http://x.com|Home"} << QStringList{"http://x.com A H"}
            << "HTTP://X" << QStringList{"http://x.com"};
        QTest::newRow("first stored match, not the most recent")
            << QStringList{"link http://s.net/1", "link http://s.net/2", "link http://s.net/1"}
            << QStringList{"http://s.net/1", "http://s.net/2"} << "http://s.net/"
            << QStringList{"http://s.net/1", "http://s.net/2"};
        QTest::newRow("case and diacritics fold") << QStringList{"link http://Café.de/Über"}
                                                  << QStringList{"http://Café.de/Über"} << "http://CAFE.de/ub"
                                                  << QStringList{"http://Café.de/Über"};
        QTest::newRow("begins with, not contains") << QStringList{"link http://cafe.de"} << QStringList{"http://cafe.de"}
                                                   << "cafe" << QStringList{};
    }
    void queries()
    {
        QFETCH(QStringList, ops);
        nvktest::DataDir dir;
        ZBHistory history(dir.path());
        run(history, ops);
        QTEST(describe(history.getAllHistoryItems()), "all");
        QFETCH(QString, lookup);
        QStringList found;
        for (const ZBHistoryEntity &r : history.getHistoryItemByName(lookup))
            found << r.HistoryItem;
        QTEST(found, "found");
    }

    void menuListsTheTenLatestLoadedPages()
    {
        nvktest::DataDir dir;
        ZBHistory history(dir.path());
        QStringList ops, expected;
        for (int i = 0; i < 13; ++i)
            ops << QString("page p%1.com|T%1").arg(i) << QString("typed t%1.org").arg(i);
        run(history, ops);
        for (int i = 12; i > 2; --i)
            expected << QString("p%1.com A").arg(i);
        QCOMPARE(describe(history.historyMenuItems()), expected);
        QCOMPARE(history.getAllHandWritedURLs().size(), 13);
    }

    void changesSurviveReopenUntilCleared()
    {
        nvktest::DataDir dir;
        {
            ZBHistory history(dir.path());
            QVERIFY(history.openStore().ok);
            run(history, {"typed a.com", "page b.com|B", "link c.com", "link d.com"});
            QVERIFY(history.touchHistoryItem(history.getHistoryItemByName("a.com").value(0)));
            QVERIFY(history.removeItemFromHistory(history.getHistoryItemByName("c.com").value(0)));
            QVERIFY(!history.removeItemFromHistory(ZBHistoryEntity()));
        }
        ZBHistory reopened(dir.path());
        QCOMPARE(describe(reopened.getAllHistoryItems()), (QStringList{"a.com H", "d.com", "b.com A"}));
        QCOMPARE(reopened.getAllActualPages().value(0).PageTitle, "B");
        QVERIFY(reopened.clearHistory());
        QVERIFY(ZBHistory(dir.path()).getAllHistoryItems().isEmpty());
    }

    void unusableFileIsKeptAndHistoryGoesOn_data()
    {
        QTest::addColumn<int>("damage");
        QTest::addColumn<bool>("movedAside");
        QTest::newRow("not a database") << 0 << true;
        QTest::newRow("cut in half") << 1 << true;
        QTest::newRow("from a newer version: left alone, kept in memory") << 2 << false;
    }
    void unusableFileIsKeptAndHistoryGoesOn()
    {
        QFETCH(int, damage);
        QFETCH(bool, movedAside);
        nvktest::DataDir dir;
        const QString file = dir.filePath(ZBHistory::HistoryFileName);
        {
            ZBHistory history(dir.path());
            for (int i = 0; i < 120; ++i)
                QVERIFY(history.addHistoryItem(QString("http://h%1.com/%2").arg(i).arg(QString(200, 'x')), false));
        }
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadWrite));
        QByteArray bytes = f.readAll();
        if (damage == 0)
            bytes = "my bookmarks\n";
        else if (damage == 1)
            bytes.truncate(bytes.size() / 2);
        else
            bytes[63] = 99; // SQLite's user_version, the schema version
        f.resize(0);
        f.seek(0);
        f.write(bytes);
        f.close();

        ZBHistory history(dir.path());
        const ZBHistory::OpenResult opened = history.openStore();
        QVERIFY2(!opened.message.isEmpty() && !opened.message.startsWith("alertHistory"), qPrintable(opened.message));
        QCOMPARE(opened.ok, movedAside);
        QCOMPARE(opened.recoveredFromDamage, movedAside);
        if (movedAside)
        {
            QVERIFY(opened.quarantinedPath.startsWith(file + ".damaged-"));
            QFile aside(opened.quarantinedPath);
            QVERIFY(aside.open(QIODevice::ReadOnly));
            QCOMPARE(aside.readAll(), bytes);
        }
        else
        {
            QFile same(file);
            QVERIFY(same.open(QIODevice::ReadOnly));
            QCOMPARE(same.readAll(), bytes);
        }
        QVERIFY(history.addHistoryItem("new.org", true));
        QCOMPARE(describe(history.getAllHistoryItems()), QStringList{"new.org H"});
        QCOMPARE(describe(ZBHistory(dir.path()).getAllHistoryItems()).size(), movedAside ? 1 : 0);
    }
};

QTEST_GUILESS_MAIN(TestZBHistory)
#include "tst_zbhistory.moc"
