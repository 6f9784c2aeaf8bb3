// Rows copied out of a statement in batches, on one thread or two, against
// the same statement read row by row.
#include <QTemporaryDir>
#include <QTest>

#include <stdexcept>

#include "util/zbsqlitedatabase.h"
#include "util/zbsqliterows.h"

namespace
{
// Texts absent, empty and not ASCII, and integers absent now and then; row
// 3000 of the second fails with an error.
const char *const RowsSql = "WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM n WHERE x < ?) "
                            "SELECT x, CASE x % 3 WHEN 0 THEN NULL WHEN 1 THEN '' ELSE 'é' || x END, "
                            "CASE WHEN x % 5 = 0 THEN NULL ELSE x * 7 END FROM n";
const char *const FailingSql = "WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM n WHERE x < 5000) "
                               "SELECT x, CASE WHEN x = 3000 THEN abs(-9223372036854775807 - 1) END, 0 FROM n";

quint64 byteSum(QByteArrayView utf8)
{
    quint64 sum = 0;
    for (const char byte : utf8)
        sum = sum * 31 + static_cast<unsigned char>(byte);
    return sum | 1;
}

const ZBSqliteRows::Layout Layout{3, 0b010, 0b010, &byteSum};

QString line(qint64 id, bool textIsNull, const QString &text, bool numberIsNull, qint64 number, quint64 digest)
{
    // An absent text must not come back empty, nor an empty one absent.
    const QString shown = textIsNull ? QStringLiteral("-") : (text.isNull() ? QStringLiteral("?") : "'" + text + "'");
    return QStringLiteral("%1 %2 %3 %4").arg(id).arg(shown, numberIsNull ? "-" : QString::number(number)).arg(digest);
}
} // namespace

class TestZBSqliteRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void copiesEveryRowInOrder_data();
    void copiesEveryRowInOrder();
    void aFailedStepEndsTheReadAfterTheRowsBefore_data() { copiesEveryRowInOrder_data(); }
    void aFailedStepEndsTheReadAfterTheRowsBefore();
    void aConsumerThatThrowsStopsTheSecondThread();

private:
    QTemporaryDir m_dir;
    ZBSqliteDatabase m_db;
};

void TestZBSqliteRows::initTestCase()
{
    const auto opened = m_db.open(m_dir.filePath(QStringLiteral("rows.sqlite")), [](ZBSqliteDatabase &) { return true; });
    QCOMPARE(opened, ZBSqliteDatabase::OpenStatus::Opened);
}

void TestZBSqliteRows::copiesEveryRowInOrder_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("onSecondThread");
    for (const int count : {1, 2048, 2049, 7000})
    {
        QTest::addRow("%d rows, one thread", count) << count << false;
        QTest::addRow("%d rows, two threads", count) << count << true;
    }
}

void TestZBSqliteRows::copiesEveryRowInOrder()
{
    QFETCH(int, count);
    QFETCH(bool, onSecondThread);
    ZBSqliteStatement *stmt = m_db.statement(RowsSql);
    stmt->bind(1, qint64(count));
    QStringList expected;
    while (stmt->step())
    {
        const QByteArrayView utf8 = stmt->utf8(1);
        expected << line(stmt->int64(0), stmt->isNull(1), stmt->text(1), stmt->isNull(2), stmt->int64(2),
                         utf8.isNull() ? 0 : byteSum(utf8));
    }
    stmt->reset();
    stmt->bind(1, qint64(count));
    QStringList copied;
    QVERIFY(ZBSqliteRows::readAll(*stmt, Layout, onSecondThread, [&copied](const ZBSqliteRows &rows) {
        for (qsizetype row = 0; row < rows.size(); ++row)
        {
            copied << line(rows.int64(row, 0), rows.isNull(row, 1), rows.text(row, 1), rows.isNull(row, 2),
                           rows.int64(row, 2), rows.digest(row, 1));
        }
    }));
    QCOMPARE(copied.size(), count);
    QCOMPARE(copied, expected);
}

void TestZBSqliteRows::aFailedStepEndsTheReadAfterTheRowsBefore()
{
    QFETCH(bool, onSecondThread);
    ZBSqliteStatement *stmt = m_db.statement(FailingSql);
    qsizetype seen = 0;
    qint64 last = 0;
    QVERIFY(!ZBSqliteRows::readAll(*stmt, Layout, onSecondThread, [&](const ZBSqliteRows &rows) {
        seen += rows.size();
        last = rows.int64(rows.size() - 1, 0);
    }));
    QVERIFY(m_db.lastError().contains(QStringLiteral("overflow")));
    QCOMPARE(seen, qsizetype(2999));
    QCOMPARE(last, qint64(2999));
    stmt->reset();
}

void TestZBSqliteRows::aConsumerThatThrowsStopsTheSecondThread()
{
    ZBSqliteStatement *stmt = m_db.statement(RowsSql);
    stmt->bind(1, qint64(20000));
    int batches = 0;
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, ZBSqliteRows::readAll(*stmt, Layout, true, [&](const ZBSqliteRows &) {
        if (++batches == 2)
            throw std::runtime_error("out of memory");
    }));
    QCOMPARE(batches, 2);
    stmt->reset();
}

QTEST_GUILESS_MAIN(TestZBSqliteRows)
#include "tst_zbsqliterows.moc"
