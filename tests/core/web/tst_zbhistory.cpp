#include <QDir>
#include <QFile>
#include <QTest>

#include "support/testsupport.h"
#include "web/zbhistory.h"

namespace
{
// Each record's URL, most recent first, with ":A" for an actual page and ":H"
// for a typed one.
QString describe(const QList<ZBHistoryEntity> &records)
{
    QStringList out;
    for (const ZBHistoryEntity &r : records)
        out << r.HistoryItem + (r.ActualPage ? ":A" : "") + (r.HandWrited ? ":H" : "");
    return out.join(' ');
}

// "t:<url>" typed, "l:<url>" added but not typed, "p:<url>|<title>" loaded.
void run(ZBHistory &history, const QString &ops)
{
    for (const QString &op : ops.split(' ', Qt::SkipEmptyParts))
    {
        const QString arg = op.mid(2);
        if (op.startsWith("p:"))
            QVERIFY(history.addHistoryItemWithURL(arg.section('|', 0, 0), arg.section('|', 1)));
        else
            QVERIFY(history.addHistoryItem(arg, op.startsWith("t:")));
    }
}
} // namespace

class TestZBHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void queries_data()
    {
        QTest::addColumn<QString>("ops");
        QTest::addColumn<QString>("all");
        QTest::addColumn<QString>("lookup");
        QTest::addColumn<QString>("found");
        QTest::newRow("most recent first") << "t:a.com l:b.com p:c.com|C t:d.org" << "d.org:H c.com:A b.com a.com:H"
                                           << "" << "";
        QTest::newRow("a typed prefix takes over the longer record") << "l:x.com/page t:b.com t:x.com"
                                                                     << "x.com:H b.com:H" << "x" << "x.com:H";
        QTest::newRow("a loaded page reuses a typed record") << "t:http://x.com/path p:http://x.com|Home"
                                                             << "http://x.com:A:H" << "HTTP://X" << "http://x.com:A:H";
        QTest::newRow("first stored match, not the most recent") << "l:http://s.net/1 l:http://s.net/2 l:http://s.net/1"
                                                                 << "http://s.net/1 http://s.net/2" << "http://s.net/"
                                                                 << "http://s.net/1 http://s.net/2";
        QTest::newRow("case and diacritics fold") << "l:http://Café.de/Über" << "http://Café.de/Über"
                                                  << "http://CAFE.de/ub" << "http://Café.de/Über";
        QTest::newRow("begins with, not contains") << "l:http://cafe.de" << "http://cafe.de" << "cafe" << "";
    }
    void queries()
    {
        QFETCH(QString, ops);
        QFETCH(QString, lookup);
        nvktest::DataDir dir;
        ZBHistory history(dir.path());
        run(history, ops);
        QTEST(describe(history.getAllHistoryItems()), "all");
        QTEST(describe(history.getHistoryItemByName(lookup)), "found");
    }

    void menuAndChangesSurviveReopenUntilCleared()
    {
        nvktest::DataDir dir;
        QString ops = "t:a.com l:c.com", menu;
        for (int i = 0; i < 12; ++i)
            ops += QString(" p:p%1.com|T%1 t:t%1.org").arg(i);
        {
            ZBHistory history(dir.path());
            QVERIFY(history.openStore().ok);
            run(history, ops);
            QVERIFY(history.touchHistoryItem(history.getHistoryItemByName("a.com").value(0)));
            QVERIFY(history.removeItemFromHistory(history.getHistoryItemByName("c.com").value(0)));
            QVERIFY(!history.removeItemFromHistory(ZBHistoryEntity()));
        }
        for (int i = 11; i > 1; --i)
            menu += QString(" p%1.com:A").arg(i);
        ZBHistory reopened(dir.path());
        QCOMPARE(describe(reopened.historyMenuItems()), menu.trimmed());
        QVERIFY(describe(reopened.getAllHistoryItems()).startsWith("a.com:H t11.org:H p11.com:A t10.org:H"));
        QCOMPARE(reopened.getAllHistoryItems().size(), 25);
        QCOMPARE(reopened.getAllActualPages().value(0).PageTitle, "T11");
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
        QVERIFY(f.resize(0) && f.seek(0) && f.write(bytes) == bytes.size());
        f.close();

        ZBHistory history(dir.path());
        const ZBHistory::OpenResult opened = history.openStore();
        QVERIFY2(!opened.message.isEmpty() && !opened.message.startsWith("alertHistory"), qPrintable(opened.message));
        QCOMPARE(opened.ok, movedAside);
        QCOMPARE(opened.recoveredFromDamage, movedAside);
        // Moved aside or left in place, the old file keeps every byte.
        const QString kept = movedAside ? opened.quarantinedPath : file;
        QVERIFY(kept == file || kept.startsWith(file + ".damaged-"));
        QFile keptFile(kept);
        QVERIFY(keptFile.open(QIODevice::ReadOnly));
        QCOMPARE(keptFile.readAll(), bytes);
        QVERIFY(history.addHistoryItem("new.org", true));
        QCOMPARE(describe(history.getAllHistoryItems()), "new.org:H");
        QCOMPARE(ZBHistory(dir.path()).getAllHistoryItems().size(), movedAside ? 1 : 0);
    }
};

QTEST_GUILESS_MAIN(TestZBHistory)
#include "tst_zbhistory.moc"
