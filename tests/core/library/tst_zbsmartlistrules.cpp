#include <ctime>

#include <QDateTime>
#include <QLocale>
#include <QRandomGenerator>
#include <QTest>

#include "library/zbsmartlistrules.h"
#include "predicate/zbpredicate.h"
#include "predicate/zbvariantmapsubject.h"

using R = ZBSmartListRules;
using Row = ZBSmartListRules::Row;
using Kind = ZBSmartListRules::ValueKind;

Q_DECLARE_METATYPE(Row)
Q_DECLARE_METATYPE(QList<Row>)

namespace
{
QDateTime referenceSeconds(qint64 seconds)
{
    return QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC).addSecs(seconds);
}

Row row(int field, int op, const QVariant &value)
{
    Row r;
    r.field = field;
    r.op = op;
    r.value = value;
    return r;
}

// Why the rows read back from a generated text differ from those written;
// empty when they do not. Text values come back with the joining words
// lowered, dates as local times.
QString mismatch(const ZBSmartListRules &written, const ZBSmartListRules &read)
{
    if (read.rowCount() != written.rowCount())
        return QStringLiteral("%1 rows read back").arg(read.rowCount());
    for (int i = 0; i < read.rowCount(); ++i)
    {
        const Row &w = written.rows().at(i);
        const Row &r = read.rows().at(i);
        QString expected = w.value.toString();
        while (expected.contains(QLatin1String(" OR ")) || expected.contains(QLatin1String(" AND ")))
            expected.replace(QLatin1String(" OR "), QLatin1String(" or ")).replace(" AND ", " and ");
        const Kind kind = R::fieldKind(w.field);
        const bool same = kind == Kind::Date ? r.value.typeId() == QMetaType::QDateTime &&
                                                   r.value.toDateTime() == w.value.toDateTime() &&
                                                   r.value.toDateTime().timeSpec() == Qt::LocalTime
                                             : r.value.toString() == expected;
        if (r.field != w.field || r.op != w.op || !same)
            return QStringLiteral("row %1 reads back as %2").arg(i).arg(r.value.toString());
    }
    if (written.rowCount() > 1 && read.matchAll() != written.matchAll())
        return QStringLiteral("the joiner changed");
    return read.generatePredicate() == written.generatePredicate() ? QString() : read.generatePredicate();
}
} // namespace

// The smart-list editor's rows, the filter text they produce and the way back
// from a stored text to rows when a list is edited.
class TestZBSmartListRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void generate_data();
    void generate();
    void daysAndNumbersWhateverTheZoneAndLocale();
    void generatedTextFiltersTracks_data();
    void generatedTextFiltersTracks();
    void rowMaintenance();
    void fillRules_data();
    void fillRules();
    void randomRoundTrip();
};

void TestZBSmartListRules::initTestCase()
{
    // A fixed zone without daylight saving makes "local midnight" checkable:
    // 2001-01-01 00:00 in Tokyo is 32400 seconds before the reference date.
    qputenv("TZ", "Asia/Tokyo");
    tzset();
    QCOMPARE(QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::LocalTime).offsetFromUtc(), 9 * 3600);
}

void TestZBSmartListRules::cleanup()
{
    QLocale::setDefault(QLocale::c());
}

void TestZBSmartListRules::generate_data()
{
    QTest::addColumn<QList<Row>>("rows");
    QTest::addColumn<bool>("matchAll");
    QTest::addColumn<QString>("expected");

    const auto one = [](const char *name, const Row &r, const char *expected)
    {
        QTest::newRow(name) << QList<Row>{r} << true << QString::fromUtf8(expected);
    };
    one("joining words lowered", row(R::FieldName, R::TextContains, QString("rock AND roll OR OR x")),
        "(Name CONTAINS[CD] 'rock and roll or or x')");
    one("words without blanks stay", row(R::FieldURL, R::TextEndsWith, QString("ANDROID OR")),
        "(URL ENDSWITH[CD] 'ANDROID OR')");
    one("quotes and backslashes", row(R::FieldPath, R::TextBeginsWith, QString("C:\\it's \"x\"")),
        "(Path BEGINSWITH[CD] 'C:\\\\it\\'s \"x\"')");
    one("equals is a pattern", row(R::FieldName, R::TextEquals, QString("a.b")), "(Name MATCHES[CD] 'a.b')");
    one("number keeps its form, trimmed", row(R::FieldPlayCount, R::NumberIs, QString(" 2.50 ")),
        "(PlayCount == 2.50)");
    QTest::newRow("any of two") << QList<Row>{row(R::FieldRating, R::NumberGreater, QString("3")),
                                              row(R::FieldAdded, R::DateLater, referenceSeconds(754012800))}
                                << false << "(Rating > 3) OR (Added > CAST(754012800.000000, 'NSDate'))";
    QTest::newRow("all of two") << QList<Row>{row(R::FieldName, R::TextContains, QString("")),
                                              row(R::FieldType, R::TextContains, QString("x"))}
                                << true << "(Name CONTAINS[CD] '') AND (Type CONTAINS[CD] 'x')";
    QTest::newRow("no rows") << QList<Row>{} << true << "";
}

void TestZBSmartListRules::generate()
{
    QFETCH(QList<Row>, rows);
    QFETCH(bool, matchAll);
    QFETCH(QString, expected);

    ZBSmartListRules rules;
    for (const Row &r : rows)
        QVERIFY2(rules.addRow(r), qPrintable(rules.lastError()));
    rules.setMatchAll(matchAll);
    QCOMPARE(rules.generatePredicate(), expected);
}

void TestZBSmartListRules::daysAndNumbersWhateverTheZoneAndLocale()
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    ZBSmartListRules rules;
    QVERIFY(rules.addRow(R::FieldAdded, R::DateLater, referenceSeconds(1234567).addMSecs(500)));
    QCOMPARE(rules.generatePredicate(), QStringLiteral("(Added > CAST(1234567.500000, 'NSDate'))"));

    // A day, as a date or the editor's text, means local midnight.
    QVERIFY(rules.setRow(0, row(R::FieldAdded, R::DateLater, QDate(2001, 1, 1))));
    QCOMPARE(rules.generatePredicate(), QStringLiteral("(Added > CAST(-32400.000000, 'NSDate'))"));
    QVERIFY(rules.addRow(R::FieldAdded, R::DateIs, QStringLiteral("2001-01-02")));
    QCOMPARE(rules.rows().at(1).value.toDateTime(), rules.rows().at(0).value.toDateTime().addDays(1));

    // Read back, a date is a local time showing the same day.
    QVERIFY(rules.fillRules(QStringLiteral("(Added > CAST(-32400.000000, 'NSDate'))")));
    const QDateTime read = rules.rows().constFirst().value.toDateTime();
    QCOMPARE(read.timeSpec(), Qt::LocalTime);
    QCOMPARE(read, QDateTime(QDate(2001, 1, 1), QTime(0, 0)));
}

void TestZBSmartListRules::generatedTextFiltersTracks_data()
{
    QTest::addColumn<Row>("rule");
    QTest::addColumn<bool>("matches");

    QTest::newRow("equals is whole, folded") << row(R::FieldName, R::TextEquals, QString("creme brulee")) << true;
    QTest::newRow("contains a quote and backslash") << row(R::FieldPath, R::TextContains, QString("it's\\x")) << true;
    QTest::newRow("begins") << row(R::FieldType, R::TextBeginsWith, QString("f")) << true;
    QTest::newRow("rating not above") << row(R::FieldRating, R::NumberGreater, QString("4")) << false;
    QTest::newRow("added later than the day before") << row(R::FieldAdded, R::DateLater, QDate(2024, 5, 1)) << true;
    QTest::newRow("added earlier than the day") << row(R::FieldAdded, R::DateEarlier, QDate(2024, 5, 2)) << false;
    QTest::newRow("never played") << row(R::FieldLastPlayed, R::DateEarlier, QDate(2030, 1, 1)) << false;
}

void TestZBSmartListRules::generatedTextFiltersTracks()
{
    QFETCH(Row, rule);
    QFETCH(bool, matches);

    ZBVariantMapSubject track;
    track.setValue(QStringLiteral("Name"), QStringLiteral("Crème Brûlée"));
    track.setValue(QStringLiteral("Path"), QStringLiteral("/media/it's\\x.flv"));
    track.setValue(QStringLiteral("Type"), QStringLiteral("flv"));
    track.setValue(QStringLiteral("Rating"), 4);
    track.setValue(QStringLiteral("Added"), QDateTime(QDate(2024, 5, 2), QTime(12, 0), Qt::LocalTime));
    track.cacheFoldedValues();

    ZBSmartListRules rules;
    QVERIFY2(rules.addRow(rule), qPrintable(rules.lastError()));
    const ZBPredicate predicate = ZBPredicate::parse(rules.generatePredicate());
    QVERIFY2(predicate.isValid(), qPrintable(predicate.errorString()));
    QCOMPARE(predicate.evaluate(track), matches);
}

void TestZBSmartListRules::rowMaintenance()
{
    const Row empty = row(R::FieldName, R::TextContains, QString(""));
    ZBSmartListRules rules;
    rules.setDefaultPredicate();
    rules.setDefaultPredicate();
    QCOMPARE(rules.rows(), QList<Row>{empty});

    QVERIFY(rules.addRow(R::FieldRating, R::NumberGreater, QStringLiteral("3")));
    rules.insertEmptyRow(0);
    rules.insertEmptyRow(99);
    QCOMPARE(rules.rowCount(), 4);
    QCOMPARE(rules.rows().at(2).field, int(R::FieldRating));
    QCOMPARE(rules.rows().at(3), empty);
    QVERIFY(!rules.setRow(4, empty));
    QVERIFY(rules.lastError().contains(QLatin1String("no rule row 4")));
    QVERIFY(rules.removeRow(0));
    QVERIFY(!rules.removeRow(3));
    QVERIFY(!rules.removeRow(-1));
    QCOMPARE(rules.rows().at(1).field, int(R::FieldRating));

    // Bad rows are refused, saying why, and change nothing.
    const QList<Row> before = rules.rows();
    const QList<std::pair<Row, const char *>> bad{
        {row(9109, R::TextContains, QString("x")), "Unknown rule field 9109"},
        {row(R::FieldName, 9205, QString("x")), "Unknown rule operator 9205"},
        {row(R::FieldName, R::NumberGreater, QString("3")), "does not apply to the text field Name"},
        {row(R::FieldLastPlayed, R::DateEarlier, QString("yesterday")), "needs a date"}};
    for (const auto &[r, mentions] : bad)
    {
        QVERIFY(!rules.addRow(r) && !rules.setRow(0, r));
        QVERIFY2(rules.lastError().contains(QLatin1String(mentions)), qPrintable(rules.lastError()));
    }
    QCOMPARE(rules.rows(), before);
}

void TestZBSmartListRules::fillRules_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<Row>>("rows");
    QTest::addColumn<QString>("mentions"); // a refused text leaves the rows as they were

    const QList<Row> refused;
    const auto refuse = [&refused](const char *name, const char *text, const char *mentions)
    {
        QTest::newRow(name) << QString::fromUtf8(text) << refused << QString::fromUtf8(mentions);
    };
    QTest::newRow("empty text, no rows") << "" << QList<Row>{} << "";
    QTest::newRow("lower-case spelling, no parentheses")
        << "Name contains[cd] 'x' && Rating = 3"
        << QList<Row>{row(R::FieldName, R::TextContains, QString("x")), row(R::FieldRating, R::NumberIs, QString("3"))}
        << "";
    QTest::newRow("double quotes, one group, number as written")
        << "((Type BEGINSWITH[DC] \"a'b\") || (PlayCount < -007.50))"
        << QList<Row>{row(R::FieldType, R::TextBeginsWith, QString("a'b")),
                      row(R::FieldPlayCount, R::NumberLess, QString("-007.50"))}
        << "";
    refuse("All Tracks", "Name like[cd] '*'", "LIKE");
    refuse("plain playlist", "ANY Playlist.PlaylistUUID MATCHES 'X'", "must start with a field");
    refuse("mixed joiners", "(Name CONTAINS[CD] 'a') AND (Rating > 3) OR (Type CONTAINS[CD] 'b')", "comparisons");
    refuse("field in wrong case", "(name CONTAINS[CD] 'a')", "unknown field name");
    refuse("text with [c] only", "(Name CONTAINS[c] 'a')", "[cd]");
    refuse("number with >=", "(Rating >= 3)", "no number rule uses the operator >=");
    refuse("date without CAST", "(Added > 5)", "CAST");
    refuse("does not parse", "(Name CONTAINS[CD] 'a') AND", "position 28");
}

void TestZBSmartListRules::fillRules()
{
    QFETCH(QString, text);
    QFETCH(QList<Row>, rows);
    QFETCH(QString, mentions);

    ZBSmartListRules rules;
    QVERIFY(rules.addRow(R::FieldRating, R::NumberLess, QStringLiteral("2")));
    QVERIFY(rules.addRow(R::FieldName, R::TextEquals, QStringLiteral("x")));
    rules.setMatchAll(true);
    const QList<Row> before = rules.rows();

    QCOMPARE(rules.fillRules(text), mentions.isEmpty());
    QVERIFY2(rules.lastError().contains(mentions), qPrintable(rules.lastError()));
    QCOMPARE(rules.rows(), mentions.isEmpty() ? rows : before);
    // Two rows joined by || make a list that needs any of them.
    QCOMPARE(rules.matchAll(), !text.contains(QLatin1String("||")));
}

void TestZBSmartListRules::randomRoundTrip()
{
    // Rows of every field, operator and value kind with awkward text: quotes,
    // backslashes, escapes, wildcards, the joining words and non-ASCII text.
    static const QStringList fragments =
        QStringLiteral(
            "a|Z|é|日本|😀|'|\"|\\| |OR|AND| OR | AND |\n|\t|*|?|(|)|[cd]|\\'|%@|&&|\\n|CAST(1, 'NSDate')|==|NIL|#")
            .split(u'|');
    static const QStringList numbers = {"0", "-1", "2.50", "-0.5", "1e3", "007", "99999999999999999999"};

    QRandomGenerator random(20240601);
    const QList<int> fieldTags = R::fieldTags();
    const auto pick = [&random](const auto &list)
    {
        return list.at(random.bounded(int(list.size())));
    };
    for (int iteration = 0; iteration < 2000; ++iteration)
    {
        ZBSmartListRules written;
        written.setMatchAll(random.bounded(2) == 0);
        const int count = random.bounded(7);
        for (int i = 0; i < count; ++i)
        {
            const int field = pick(fieldTags);
            const Kind kind = R::fieldKind(field);
            QVariant value = pick(numbers);
            if (kind == Kind::Text)
            {
                QString text;
                for (int p = random.bounded(8); p > 0; --p)
                    text += pick(fragments);
                value = text;
            }
            else if (kind == Kind::Date)
            {
                // 1900 to 2100 with milliseconds, in assorted zones, or a day.
                const qint64 msecs = random.bounded(Q_INT64_C(6311390400000)) - Q_INT64_C(2208988800000);
                const int zone = random.bounded(4);
                const QDateTime utc = QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC);
                value = zone == 0   ? QVariant(utc)
                        : zone == 1 ? QVariant(utc.toLocalTime())
                        : zone == 2 ? QVariant(utc.toOffsetFromUtc(-5 * 3600))
                                    : QVariant(utc.date());
            }
            QVERIFY2(written.addRow(field, pick(R::operatorTags(kind)), value), qPrintable(written.lastError()));
        }

        const QString text = written.generatePredicate();
        ZBSmartListRules read;
        read.addEmptyRow();
        QVERIFY2(read.fillRules(text), qPrintable(text + u'\n' + read.lastError()));
        const QString why = mismatch(written, read);
        QVERIFY2(why.isEmpty(), qPrintable(QStringLiteral("%1\n%2").arg(text, why)));
    }
}

QTEST_GUILESS_MAIN(TestZBSmartListRules)
#include "tst_zbsmartlistrules.moc"
