#include <ctime>

#include <QDateTime>
#include <QLocale>
#include <QRandomGenerator>
#include <QTest>

#include "library/zbsmartlistrules.h"
#include "predicate/zbpredicate.h"
#include "predicate/zbvariantmapsubject.h"

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

// The word rewrite the text values go through, written out independently.
QString rewritten(QString text)
{
    while (text.contains(QLatin1String(" OR ")))
        text.replace(QLatin1String(" OR "), QLatin1String(" or "));
    while (text.contains(QLatin1String(" AND ")))
        text.replace(QLatin1String(" AND "), QLatin1String(" and "));
    return text;
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
    void dayMeansLocalMidnight();
    void numbersAreWrittenInTheCLocale();
    void generatedTextFiltersTracks_data();
    void generatedTextFiltersTracks();
    void rowMaintenance();
    void badRowsAreRefused_data();
    void badRowsAreRefused();
    void fillRulesReadsEquivalentTexts_data();
    void fillRulesReadsEquivalentTexts();
    void fillRulesRefuses_data();
    void fillRulesRefuses();
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

    using R = ZBSmartListRules;
    QTest::newRow("default row") << QList<Row>{row(R::FieldName, R::TextContains, QString(""))} << true
                                 << "(Name CONTAINS[CD] '')";
    QTest::newRow("abc") << QList<Row>{row(R::FieldName, R::TextContains, QString("abc"))} << true
                         << "(Name CONTAINS[CD] 'abc')";
    QTest::newRow("it's") << QList<Row>{row(R::FieldName, R::TextContains, QString("it's"))} << true
                          << "(Name CONTAINS[CD] 'it\\'s')";
    QTest::newRow("rock AND roll") << QList<Row>{row(R::FieldName, R::TextContains, QString("rock AND roll"))} << true
                                   << "(Name CONTAINS[CD] 'rock and roll')";
    QTest::newRow("rock OR roll") << QList<Row>{row(R::FieldType, R::TextBeginsWith, QString("rock OR roll"))} << true
                                  << "(Type BEGINSWITH[CD] 'rock or roll')";
    QTest::newRow("repeated words") << QList<Row>{row(R::FieldName, R::TextEquals, QString("a OR OR AND AND b"))}
                                    << true << "(Name MATCHES[CD] 'a or or and and b')";
    QTest::newRow("words without blanks stay") << QList<Row>{row(R::FieldURL, R::TextEndsWith, QString("ANDROID OR"))}
                                               << true << "(URL ENDSWITH[CD] 'ANDROID OR')";
    QTest::newRow("lower-case words stay") << QList<Row>{row(R::FieldPath, R::TextContains, QString("x and y or z"))}
                                           << true << "(Path CONTAINS[CD] 'x and y or z')";
    QTest::newRow("backslashes doubled") << QList<Row>{row(R::FieldPath, R::TextBeginsWith, QString("C:\\dir\\"))}
                                         << true << "(Path BEGINSWITH[CD] 'C:\\\\dir\\\\')";
    QTest::newRow("double quotes as they are") << QList<Row>{row(R::FieldName, R::TextContains, QString("say \"hi\""))}
                                               << true << "(Name CONTAINS[CD] 'say \"hi\"')";
    QTest::newRow("number as typed") << QList<Row>{row(R::FieldRating, R::NumberGreater, QString("3"))} << true
                                     << "(Rating > 3)";
    QTest::newRow("number keeps its form")
        << QList<Row>{row(R::FieldPlayCount, R::NumberIs, QString("2.50"))} << true << "(PlayCount == 2.50)";
    QTest::newRow("number blanks trimmed")
        << QList<Row>{row(R::FieldPlayCount, R::NumberLess, QString(" 10 "))} << true << "(PlayCount < 10)";
    QTest::newRow("number from an int") << QList<Row>{row(R::FieldRating, R::NumberIs, 4)} << true << "(Rating == 4)";
    QTest::newRow("date later") << QList<Row>{row(R::FieldAdded, R::DateLater, referenceSeconds(754012800))} << true
                                << "(Added > CAST(754012800.000000, 'NSDate'))";
    QTest::newRow("date earlier, milliseconds")
        << QList<Row>{row(R::FieldLastPlayed, R::DateEarlier, referenceSeconds(10).addMSecs(-1))} << true
        << "(LastPlayed < CAST(9.999000, 'NSDate'))";
    QTest::newRow("date on, before the reference")
        << QList<Row>{row(R::FieldAdded, R::DateIs, referenceSeconds(-86400))} << true
        << "(Added == CAST(-86400.000000, 'NSDate'))";
    QTest::newRow("any of two") << QList<Row>{row(R::FieldRating, R::NumberGreater, QString("3")),
                                              row(R::FieldAdded, R::DateLater, referenceSeconds(754012800))}
                                << false << "(Rating > 3) OR (Added > CAST(754012800.000000, 'NSDate'))";
    QTest::newRow("all of mixed kinds")
        << QList<Row>{row(R::FieldName, R::TextContains, QString("it's")),
                      row(R::FieldRating, R::NumberLess, QString("5")),
                      row(R::FieldLastPlayed, R::DateEarlier, referenceSeconds(0)),
                      row(R::FieldURL, R::TextEquals, QString("http://.*"))}
        << true
        << "(Name CONTAINS[CD] 'it\\'s') AND (Rating < 5) AND (LastPlayed < CAST(0.000000, 'NSDate')) AND "
           "(URL MATCHES[CD] 'http://.*')";
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

    // Editing the list reads the same rows back, joining words lowered.
    ZBSmartListRules read;
    read.setMatchAll(!matchAll);
    QVERIFY2(read.fillRules(expected), qPrintable(read.lastError()));
    QCOMPARE(read.rowCount(), rules.rowCount());
    for (int i = 0; i < read.rowCount(); ++i)
    {
        const Row &w = rules.rows().at(i);
        const Row &r = read.rows().at(i);
        QCOMPARE(r.field, w.field);
        QCOMPARE(r.op, w.op);
        if (ZBSmartListRules::fieldKind(w.field) == Kind::Text)
            QCOMPARE(r.value.toString(), rewritten(w.value.toString()));
        else if (ZBSmartListRules::fieldKind(w.field) == Kind::Number)
            QCOMPARE(r.value.toString(), w.value.toString());
        else
            QCOMPARE(r.value.toDateTime(), w.value.toDateTime());
    }
    QCOMPARE(read.matchAll(), rows.size() > 1 ? matchAll : true);
    QCOMPARE(read.generatePredicate(), expected);
}

void TestZBSmartListRules::dayMeansLocalMidnight()
{
    ZBSmartListRules rules;
    QVERIFY(rules.addRow(ZBSmartListRules::FieldAdded, ZBSmartListRules::DateLater, QDate(2001, 1, 1)));
    QCOMPARE(rules.generatePredicate(), QStringLiteral("(Added > CAST(-32400.000000, 'NSDate'))"));
    const QDateTime stored = rules.rows().constFirst().value.toDateTime();
    QCOMPARE(stored.date(), QDate(2001, 1, 1));
    QCOMPARE(stored.time(), QTime(0, 0));

    // The editor's text form of a day is read the same way.
    QVERIFY(rules.addRow(ZBSmartListRules::FieldAdded, ZBSmartListRules::DateIs, QStringLiteral("2001-01-02")));
    QCOMPARE(rules.rows().at(1).value.toDateTime(), stored.addDays(1));

    // Read back, a date is a local time showing the same day.
    QVERIFY(rules.fillRules(QStringLiteral("(Added > CAST(-32400.000000, 'NSDate'))")));
    const QDateTime read = rules.rows().constFirst().value.toDateTime();
    QCOMPARE(read.timeSpec(), Qt::LocalTime);
    QCOMPARE(read.date(), QDate(2001, 1, 1));
    QCOMPARE(read.time(), QTime(0, 0));
}

void TestZBSmartListRules::numbersAreWrittenInTheCLocale()
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    ZBSmartListRules rules;
    QVERIFY(rules.addRow(ZBSmartListRules::FieldAdded, ZBSmartListRules::DateLater,
                         referenceSeconds(1234567).addMSecs(500)));
    QCOMPARE(rules.generatePredicate(), QStringLiteral("(Added > CAST(1234567.500000, 'NSDate'))"));
}

void TestZBSmartListRules::generatedTextFiltersTracks_data()
{
    QTest::addColumn<Row>("rule");
    QTest::addColumn<bool>("matches");

    using R = ZBSmartListRules;
    QTest::newRow("equals is whole, folded") << row(R::FieldName, R::TextEquals, QString("creme brulee")) << true;
    QTest::newRow("equals is whole") << row(R::FieldName, R::TextEquals, QString("crème")) << false;
    QTest::newRow("equals is a pattern") << row(R::FieldName, R::TextEquals, QString("cr.me br.l.e")) << true;
    QTest::newRow("contains") << row(R::FieldName, R::TextContains, QString("BRÛL")) << true;
    QTest::newRow("contains a quote") << row(R::FieldPath, R::TextContains, QString("it's")) << true;
    QTest::newRow("contains a backslash") << row(R::FieldPath, R::TextContains, QString("\\x")) << true;
    QTest::newRow("begins") << row(R::FieldType, R::TextBeginsWith, QString("f")) << true;
    QTest::newRow("ends") << row(R::FieldURL, R::TextEndsWith, QString(".FLV")) << true;
    QTest::newRow("rating above") << row(R::FieldRating, R::NumberGreater, QString("3")) << true;
    QTest::newRow("rating not above") << row(R::FieldRating, R::NumberGreater, QString("4")) << false;
    QTest::newRow("play count is") << row(R::FieldPlayCount, R::NumberIs, QString("7")) << true;
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
    track.setValue(QStringLiteral("URL"), QStringLiteral("http://h/a.flv"));
    track.setValue(QStringLiteral("Rating"), 4);
    track.setValue(QStringLiteral("PlayCount"), 7);
    // Local noon on 2024-05-02.
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
    // The editor's menus list the fields and each kind's operators in order.
    QCOMPARE(ZBSmartListRules::fieldTags(), (QList<int>{9101, 9102, 9103, 9104, 9105, 9106, 9107, 9108}));
    QCOMPARE(ZBSmartListRules::operatorTags(Kind::Text), (QList<int>{9201, 9202, 9203, 9204}));
    QCOMPARE(ZBSmartListRules::operatorTags(Kind::Date), (QList<int>{9221, 9222, 9223}));

    ZBSmartListRules rules;
    QCOMPARE(rules.rowCount(), 0);
    QVERIFY(rules.matchAll());

    rules.setDefaultPredicate();
    QCOMPARE(rules.rows(), QList<Row>{row(9101, 9202, QString(""))});
    QVERIFY(!rules.rows().constFirst().value.toString().isNull());

    QVERIFY(rules.addRow(9104, 9212, QStringLiteral("3")));
    rules.addEmptyRow();
    QCOMPARE(rules.rowCount(), 3);
    QCOMPARE(rules.rows().at(2), row(9101, 9202, QString("")));

    rules.insertEmptyRow(0);
    QCOMPARE(rules.rowCount(), 4);
    QCOMPARE(rules.rows().at(1), row(9101, 9202, QString("")));
    QCOMPARE(rules.rows().at(2).field, 9104);
    rules.insertEmptyRow(99);
    QCOMPARE(rules.rowCount(), 5);

    QVERIFY(rules.setRow(0, row(9106, 9223, QDate(2020, 2, 29))));
    QCOMPARE(rules.rows().at(0).value.toDateTime().date(), QDate(2020, 2, 29));
    QVERIFY(!rules.setRow(0, row(9106, 9202, QString("x"))));
    QVERIFY(!rules.setRow(5, row(9101, 9202, QString("x"))));
    QVERIFY(rules.lastError().contains(QLatin1String("no rule row 5")));

    QVERIFY(rules.removeRow(0));
    QCOMPARE(rules.rowCount(), 4);
    QVERIFY(!rules.removeRow(4));
    QVERIFY(!rules.removeRow(-1));
    QCOMPARE(rules.rowCount(), 4);

    rules.removeAllRows();
    QCOMPARE(rules.rowCount(), 0);
    QCOMPARE(rules.generatePredicate(), QString());

    rules.setDefaultPredicate();
    rules.setDefaultPredicate();
    QCOMPARE(rules.rowCount(), 1);
}

void TestZBSmartListRules::badRowsAreRefused_data()
{
    QTest::addColumn<Row>("bad");
    QTest::addColumn<QString>("mentions");

    QTest::newRow("unknown field") << row(9109, 9202, QString("x")) << "Unknown rule field 9109";
    QTest::newRow("unknown operator") << row(9101, 9205, QString("x")) << "Unknown rule operator 9205";
    QTest::newRow("number operator on text")
        << row(9101, 9212, QString("3")) << "does not apply to the text field Name";
    QTest::newRow("text operator on number") << row(9104, 9202, QString("3")) << "number field Rating";
    QTest::newRow("number operator on date") << row(9106, 9212, QDate(2020, 1, 1)) << "date field Added";
    QTest::newRow("date without a date") << row(9107, 9221, QString("yesterday")) << "needs a date";
    QTest::newRow("date invalid") << row(9106, 9221, QDateTime()) << "needs a date";
}

void TestZBSmartListRules::badRowsAreRefused()
{
    QFETCH(Row, bad);
    QFETCH(QString, mentions);

    ZBSmartListRules rules;
    rules.setDefaultPredicate();
    const QList<Row> before = rules.rows();
    QVERIFY(!rules.addRow(bad));
    QVERIFY2(rules.lastError().contains(mentions), qPrintable(rules.lastError()));
    QCOMPARE(rules.rows(), before);
    QVERIFY(!rules.setRow(0, bad));
    QCOMPARE(rules.rows(), before);
}

void TestZBSmartListRules::fillRulesReadsEquivalentTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<Row>>("rows");
    QTest::addColumn<bool>("matchAll");

    QTest::newRow("empty text, no rows") << "" << QList<Row>{} << true;
    QTest::newRow("lower-case spelling") << "Name contains[cd] 'x' && Rating = 3"
                                         << QList<Row>{row(9101, 9202, QString("x")), row(9104, 9213, QString("3"))}
                                         << true;
    QTest::newRow("double quotes, no parentheses")
        << "Type BEGINSWITH[DC] \"a'b\" || URL ENDSWITH[cd] 'c'"
        << QList<Row>{row(9103, 9203, QString("a'b")), row(9108, 9204, QString("c"))} << false;
    QTest::newRow("number kept as written")
        << "(Rating > -007.50)" << QList<Row>{row(9104, 9212, QString("-007.50"))} << true;
    QTest::newRow("one group in parentheses")
        << "((Rating < 1) OR (PlayCount == 2))"
        << QList<Row>{row(9104, 9211, QString("1")), row(9105, 9213, QString("2"))} << false;
}

void TestZBSmartListRules::fillRulesReadsEquivalentTexts()
{
    QFETCH(QString, text);
    QFETCH(QList<Row>, rows);
    QFETCH(bool, matchAll);

    ZBSmartListRules rules;
    rules.setDefaultPredicate();
    rules.setMatchAll(!matchAll);
    QVERIFY2(rules.fillRules(text), qPrintable(rules.lastError()));
    QCOMPARE(rules.rows(), rows);
    QCOMPARE(rules.matchAll(), matchAll);
}

void TestZBSmartListRules::fillRulesRefuses_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("mentions");
    const auto refused = [](const char *name, const char *text, const char *mentions)
    {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(mentions);
    };

    refused("All Tracks", "Name like[cd] '*'", "LIKE");
    refused("Today", " (!(URL == '') AND (Added >= CAST(752000000.000000, 'NSDate')))", "comparisons");
    refused("plain playlist", "ANY Playlist.PlaylistUUID MATCHES 'X'", "must start with a field");
    refused("mixed joiners", "(Name CONTAINS[CD] 'a') AND (Rating > 3) OR (Type CONTAINS[CD] 'b')", "comparisons");
    refused("nested group", "((Name CONTAINS[CD] 'a') AND (Rating > 3)) AND (Type CONTAINS[CD] 'b')", "comparisons");
    refused("negation", "NOT (Name CONTAINS[CD] 'a')", "comparisons");
    refused("constant predicate", "TRUEPREDICATE", "comparisons");
    refused("unknown field", "(Genre CONTAINS[CD] 'a')", "unknown field Genre");
    refused("field in wrong case", "(name CONTAINS[CD] 'a')", "unknown field name");
    refused("value first", "('a' CONTAINS[CD] Name)", "must start with a field");
    refused("text without modifiers", "(Name CONTAINS 'a')", "[cd]");
    refused("text with [c] only", "(Name CONTAINS[c] 'a')", "[cd]");
    refused("text compared with ==", "(Name == 'a')", "no text rule uses the operator ==");
    refused("text value not quoted", "(Name CONTAINS[CD] 3)", "quoted text");
    refused("number with >=", "(Rating >= 3)", "no number rule uses the operator >=");
    refused("number with modifier", "(Rating >[c] 3)", "no modifiers");
    refused("date without CAST", "(Added > 5)", "CAST");
    refused("date with !=", "(Added != CAST(0, 'NSDate'))", "no date rule");
    refused("does not parse", "(Name CONTAINS[CD] 'a') AND", "position 28");
}

void TestZBSmartListRules::fillRulesRefuses()
{
    QFETCH(QString, text);
    QFETCH(QString, mentions);

    ZBSmartListRules rules;
    QVERIFY(rules.addRow(9104, 9211, QStringLiteral("2")));
    QVERIFY(rules.addRow(9101, 9201, QStringLiteral("x")));
    rules.setMatchAll(false);
    const QList<Row> before = rules.rows();

    QVERIFY(!rules.fillRules(text));
    QVERIFY2(rules.lastError().contains(mentions), qPrintable(rules.lastError()));
    QCOMPARE(rules.rows(), before);
    QVERIFY(!rules.matchAll());
}

void TestZBSmartListRules::randomRoundTrip()
{
    // Rows of every field, operator and value kind with awkward text: quotes,
    // backslashes, escapes, wildcards, the joining words and non-ASCII text.
    static const QStringList fragments = {
        "a",  "Z",   "é",    "Ü",    "日本",  "😀",  "'",  "\"",  "\\",
        " ",  "OR",  "AND",  " OR ", " AND ", "\n", "\t", "*",   "?",
        "(",  ")",   "[cd]", "\\'",  "%@",    "&&", "||", "\\n", "CAST(1, 'NSDate')",
        "==", "NIL", "#",
    };
    static const QStringList numbers = {"0", "3", "-1", "42", "2.50", "-0.5", "1e3", "007", "99999999999999999999"};

    QRandomGenerator random(20240601);
    const QList<int> fieldTags = ZBSmartListRules::fieldTags();
    for (int iteration = 0; iteration < 2000; ++iteration)
    {
        ZBSmartListRules written;
        written.setMatchAll(random.bounded(2) == 0);
        const int count = random.bounded(7);
        for (int i = 0; i < count; ++i)
        {
            const int field = fieldTags.at(random.bounded(int(fieldTags.size())));
            const Kind kind = ZBSmartListRules::fieldKind(field);
            const QList<int> ops = ZBSmartListRules::operatorTags(kind);
            const int op = ops.at(random.bounded(int(ops.size())));
            QVariant value;
            switch (kind)
            {
                case Kind::Text:
                {
                    QString text;
                    const int parts = random.bounded(8);
                    for (int p = 0; p < parts; ++p)
                        text += fragments.at(random.bounded(int(fragments.size())));
                    value = text;
                    break;
                }
                case Kind::Number:
                    value = numbers.at(random.bounded(int(numbers.size())));
                    break;
                case Kind::Date:
                {
                    // 1900 to 2100 with milliseconds, in assorted zones, or a day.
                    const qint64 msecs = random.bounded(Q_INT64_C(6311390400000)) - Q_INT64_C(2208988800000);
                    switch (random.bounded(4))
                    {
                        case 0:
                            value = QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC);
                            break;
                        case 1:
                            value = QDateTime::fromMSecsSinceEpoch(msecs, Qt::LocalTime);
                            break;
                        case 2:
                            value = QDateTime::fromMSecsSinceEpoch(msecs, Qt::OffsetFromUTC, -5 * 3600);
                            break;
                        default:
                            value = QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC).date();
                            break;
                    }
                    break;
                }
            }
            QVERIFY2(written.addRow(field, op, value), qPrintable(written.lastError()));
        }

        const QString text = written.generatePredicate();
        const QString context = QStringLiteral("iteration %1: %2").arg(iteration).arg(text);
        ZBSmartListRules read;
        read.addEmptyRow();
        QVERIFY2(read.fillRules(text), qPrintable(context + u'\n' + read.lastError()));
        QVERIFY2(read.rowCount() == written.rowCount(), qPrintable(context));
        for (int i = 0; i < read.rowCount(); ++i)
        {
            const Row &w = written.rows().at(i);
            const Row &r = read.rows().at(i);
            QVERIFY2(r.field == w.field && r.op == w.op, qPrintable(context));
            switch (ZBSmartListRules::fieldKind(w.field))
            {
                case Kind::Text:
                    QVERIFY2(r.value.toString() == rewritten(w.value.toString()), qPrintable(context));
                    break;
                case Kind::Number:
                    QVERIFY2(r.value.toString() == w.value.toString(), qPrintable(context));
                    break;
                case Kind::Date:
                    QVERIFY2(r.value.typeId() == QMetaType::QDateTime, qPrintable(context));
                    QVERIFY2(r.value.toDateTime() == w.value.toDateTime(), qPrintable(context));
                    QVERIFY2(r.value.toDateTime().timeSpec() == Qt::LocalTime, qPrintable(context));
                    break;
            }
        }
        if (written.rowCount() > 1)
            QVERIFY2(read.matchAll() == written.matchAll(), qPrintable(context));
        QVERIFY2(read.generatePredicate() == text, qPrintable(context));
    }
}

QTEST_GUILESS_MAIN(TestZBSmartListRules)
#include "tst_zbsmartlistrules.moc"
