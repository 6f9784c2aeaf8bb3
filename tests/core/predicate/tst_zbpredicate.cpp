#include <memory>
#include <vector>

#include <QDateTime>
#include <QTest>

#include "predicate/zbpredicate.h"
#include "predicate/zbpredicateparser.h"
#include "predicate/zbvariantmapsubject.h"

namespace
{
// 2001-01-01 00:00:00 UTC, the origin of CAST(seconds, 'NSDate').
const qint64 ReferenceMSecs = QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC).toMSecsSinceEpoch();

QDateTime referenceSeconds(double seconds)
{
    return QDateTime::fromMSecsSinceEpoch(ReferenceMSecs + qint64(seconds * 1000.0), Qt::UTC);
}

// The track most cases look at.
QVariantHash trackValues()
{
    const auto playlist = [](const char *uuid, const char *name)
    {
        return QVariantMap{{QStringLiteral("PlaylistUUID"), uuid}, {QStringLiteral("Name"), QString::fromUtf8(name)}};
    };
    return {
        {QStringLiteral("Name"), QStringLiteral("Crème Brûlée")},
        {QStringLiteral("Path"), QStringLiteral("/home/u/Vidéos/clip?01*.mp4")},
        {QStringLiteral("URL"), QStringLiteral("http://example.com/Movie.SWF")},
        {QStringLiteral("Type"), QStringLiteral("SWF")},
        {QStringLiteral("SourcePageTitle"), QStringLiteral("It's a \"page\"")},
        {QStringLiteral("Rating"), 3},
        {QStringLiteral("PlayCount"), qlonglong(12)},
        {QStringLiteral("Added"), referenceSeconds(752000000)},
        {QStringLiteral("isValid"), true},
        {QStringLiteral("isSmart"), false},
        {QStringLiteral("Empty"), QStringLiteral("")},
        {QStringLiteral("Playlist"), QVariantList{playlist("11111111-AAAA-4000-8000-000000000001", "Road trip"),
                                                  playlist("22222222-BBBB-4000-8000-000000000002", "Über Mix")}},
        {QStringLiteral("Tags"), QStringList{QStringLiteral("live"), QStringLiteral("Écho")}},
        {QStringLiteral("Scores"), QVariantList{1, 5, 9}},
        {QStringLiteral("NoScores"), QVariantList{}},
    };
}

ZBVariantMapSubject makeTrack()
{
    return ZBVariantMapSubject(trackValues());
}

// Counts how the evaluator asks for values, to see the fast path taken.
class CountingSubject : public ZBPredicateSubject
{
public:
    explicit CountingSubject(const ZBVariantMapSubject &inner)
        : m_inner(inner)
    {
    }

    QVariant valueForKeyPath(const QString &keyPath) const override
    {
        ++valueCalls;
        return m_inner.valueForKeyPath(keyPath);
    }

    QString foldedValueForKey(const QString &key, bool caseInsensitive, bool diacriticInsensitive) const override
    {
        ++foldedCalls;
        return m_inner.foldedValueForKey(key, caseInsensitive, diacriticInsensitive);
    }

    void prefetch() const override { ++prefetchCalls; }

    mutable int valueCalls = 0;
    mutable int foldedCalls = 0;
    mutable int prefetchCalls = 0;

private:
    const ZBVariantMapSubject &m_inner;
};

// Never answers folded text, so every comparison goes the general way.
class NoFoldSubject : public ZBVariantMapSubject
{
public:
    using ZBVariantMapSubject::ZBVariantMapSubject;
    QString foldedValueForKey(const QString &, bool, bool) const override { return {}; }
};

} // namespace

// The filter texts of the standard lists, the smart-list rules and the
// search, evaluated against map-based tracks; and what the parser says about
// texts it cannot read.
class TestZBPredicate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void evaluate_data();
    void evaluate();
    void treeShape_data();
    void treeShape();
    void stringLiterals_data();
    void stringLiterals();
    void malformed_data();
    void malformed();
    void nestingLimit();
    void foldedFastPathIsUsed();
    void filterKeepsOrderAndPrefetchesAhead();
    void dateHelpers();
};

void TestZBPredicate::evaluate_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");

    // Numbers: every comparison at the value, and the other spellings.
    QTest::newRow("== equal") << "Rating == 3" << true;
    QTest::newRow("<> differs") << "Rating <> 4" << true;
    QTest::newRow("< at") << "Rating < 3" << false;
    QTest::newRow("<= at") << "Rating <= 3" << true;
    QTest::newRow("> at") << "Rating > 3" << false;
    QTest::newRow("real literal vs int") << "Rating < 3.5" << true;
    QTest::newRow("constant on the left") << "3 == Rating" << true;
    QTest::newRow("key against key") << "PlayCount > Rating" << true;
    QTest::newRow("number against numeric text") << "Rating == ' 3.0'" << true;
    QTest::newRow("boolean as 0") << "isSmart == 0" << true;
    QTest::newRow("boolean keyword") << "isValid == True" << true;

    // Text, each operator and modifier.
    QTest::newRow("text == case differs") << "Type == 'swf'" << false;
    QTest::newRow("text ==[d] keeps case") << "Name ==[d] 'creme brulee'" << false;
    QTest::newRow("text ==[cd]") << "Name ==[cd] 'CREME BRULEE'" << true;
    QTest::newRow("LIKE case differs") << "Type LIKE 'swf'" << false;
    QTest::newRow("LIKE[c] question") << "Type LIKE[c] 's?f'" << true;
    QTest::newRow("like[d] star") << "Name like[d] 'Creme*'" << true;
    QTest::newRow("like question needs one") << "Type like 'S?SWF'" << false;
    QTest::newRow("like wildcards in value") << "Path like[cd] '/home/u/videos/clip?0?*.mp4'" << true;
    QTest::newRow("CONTAINS[d] accent in pattern") << "Name CONTAINS[d] 'Brûl'" << true;
    QTest::newRow("CONTAINS[c] keeps accents") << "Name CONTAINS[c] 'brulee'" << false;
    QTest::newRow("BEGINSWITH") << "Name BEGINSWITH 'Crè'" << true;
    QTest::newRow("BEGINSWITH is not ENDSWITH") << "Name BEGINSWITH 'lée'" << false;
    QTest::newRow("MATCHES whole") << "Type MATCHES 'S.F'" << true;
    QTest::newRow("MATCHES is anchored") << "Type MATCHES 'SW'" << false;
    QTest::newRow("MATCHES[cd] upper-case escapes survive") << "Name MATCHES[cd] '\\\\S+\\\\s\\\\S+'" << true;
    QTest::newRow("MATCHES[cd] pattern accents") << "Name MATCHES[cd] 'CRÈME BRÛLÉE'" << true;
    QTest::newRow("broken pattern matches nothing") << "Name MATCHES[cd] '(unclosed'" << false;

    // Lists: quantifiers, and a plain list read as ANY.
    QTest::newRow("ANY folded") << "ANY Playlist.Name BEGINSWITH[cd] 'uber'" << true;
    QTest::newRow("string list contains") << "Tags CONTAINS[cd] 'echo'" << true;
    QTest::newRow("ALL true") << "ALL Scores > 0" << true;
    QTest::newRow("NONE true") << "NONE Scores > 9" << true;
    QTest::newRow("ANY empty list") << "ANY NoScores == 1" << false;
    QTest::newRow("ALL empty list") << "ALL NoScores == 1" << true;
    QTest::newRow("ALL over a single value") << "ALL Rating == 4" << false;

    // Absent values.
    QTest::newRow("absent == NIL") << "Missing == NIL" << true;
    QTest::newRow("present == NIL") << "Name == NIL" << false;
    QTest::newRow("absent != text") << "Missing != 'x'" << true;
    QTest::newRow("absent like star") << "Missing like[cd] '*'" << false;
    QTest::newRow("absent date ordering") << "Missing > CAST(0, 'NSDate')" << false;

    // Dates against CAST, at the moment and a millisecond off.
    QTest::newRow("date >= at") << "Added >= CAST(752000000.000000, 'NSDate')" << true;
    QTest::newRow("date > at") << "Added > CAST(752000000, 'NSDate')" << false;
    QTest::newRow("lower-case cast") << "Added <= cast(752000000, \"NSDate\")" << true;
    QTest::newRow("date vs seconds") << "Added > 751999999.999" << true;
    QTest::newRow("download list") << " (!(URL == '') AND (Added >= CAST(752000000.000000, 'NSDate')))" << true;

    // Keywords in any letter case, constants, escapes.
    QTest::newRow("falsepredicate") << "falsepredicate" << false;
    QTest::newRow("lower-case operators") << "Rating == 3 and not Rating == 4 or FALSEPREDICATE" << true;
    QTest::newRow("escaped keyword key") << "#Like == NIL" << true;
    QTest::newRow("double-quoted escapes") << "SourcePageTitle == \"It's a \\\"page\\\"\"" << true;
    QTest::newRow("key paths are case-sensitive") << "name == NIL" << true;
}

void TestZBPredicate::evaluate()
{
    QFETCH(QString, text);
    QFETCH(bool, expected);

    const ZBPredicate predicate = ZBPredicate::parse(text);
    QVERIFY2(predicate.isValid(), qPrintable(predicate.errorString()));
    QCOMPARE(predicate.errorPosition(), qsizetype(-1));
    // Tracks answer folded text from a cache, other subjects fold on demand,
    // and a subject may decline; all must give the same answer.
    const ZBVariantMapSubject track = makeTrack();
    ZBVariantMapSubject cached = makeTrack();
    cached.cacheFoldedValues();
    const NoFoldSubject declining(trackValues());
    QCOMPARE(predicate.evaluate(track), expected);
    QCOMPARE(predicate.evaluate(cached), expected);
    QCOMPARE(predicate.evaluate(declining), expected);
}

void TestZBPredicate::treeShape_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("description");
    const auto row = [](const char *name, const char *text, const char *description)
    {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(description);
    };

    row("|| below &&", "a == 1 || b == 2 && c == 3", "((a == 1) OR ((b == 2) AND (c == 3)))");
    row("and then or, chains flat", "a == 1 AND b == 2 AND c == 3 OR d == 4",
        "(((a == 1) AND (b == 2) AND (c == 3)) OR (d == 4))");
    row("groups stay apart", "(((a == 1 OR b == 2))) AND c == 3", "(((a == 1) OR (b == 2)) AND (c == 3))");
    row("! binds tightest", "!a == 1 OR NOT (b == 2 AND c == 3)", "(NOT (a == 1) OR NOT ((b == 2) AND (c == 3)))");
    row("modifiers and quantifier", "any Playlist.Name like[DC] 'x*'", "(ANY Playlist.Name LIKE[cd] 'x*')");
    row("spellings and constants", "a <> 1 || b =< 2 || c => 3 || d = nil || e == yes",
        "((a != 1) OR (b <= 2) OR (c >= 3) OR (d == NIL) OR (e == YES))");
    row("escapes", "Name == 'a\\\\b\\'c\"d' OR Path == \"x\\ny\"", "((Name == 'a\\\\b\\'c\"d') OR (Path == 'x\ny'))");
    row("reserved key", "#Like == NIL AND #and.x == 1", "((#Like == NIL) AND (and.x == 1))");
    row("reals", "a == 2.0 OR b == -0.0 OR c == 1e300 OR d == -12345678901234567890",
        "((a == 2.0) OR (b == 0.0) OR (c == 1e+300) OR (d == -12345678901234567000.0))");
    row("quantifiers and dates", "ALL Scores > 0 AND SOME Tags == 'x' AND d > CAST(1.5, 'NSDate')",
        "((ALL Scores > 0) AND (ANY Tags == 'x') AND (d > CAST(1.500000, 'NSDate')))");
}

void TestZBPredicate::treeShape()
{
    QFETCH(QString, text);
    QFETCH(QString, description);

    const ZBPredicate predicate = ZBPredicate::parse(text);
    QVERIFY2(predicate.isValid(), qPrintable(predicate.errorString()));
    QCOMPARE(predicate.root()->description(), description);
    // The description is what diagnostics show; it must read back the same.
    const ZBPredicate again = ZBPredicate::parse(description);
    QVERIFY2(again.isValid(), qPrintable(again.errorString()));
    QCOMPARE(again.root()->description(), description);
}

void TestZBPredicate::stringLiterals_data()
{
    QTest::addColumn<QString>("literal");
    QTest::addColumn<QString>("value");
    const auto row = [](const char *name, const char *literal, const char *value)
    {
        QTest::newRow(name) << QString::fromUtf8(literal) << QString::fromUtf8(value);
    };

    row("escaped single quote", "'it\\'s'", "it's");
    row("escaped double quote", "\"say \\\"hi\\\"\"", "say \"hi\"");
    row("backslash at end", "'a\\\\'", "a\\");
    row("newline and tab escapes", "'a\\nb\\tc'", "a\nb\tc");
    row("other escapes kept", "'a\\.b\\d'", "a\\.b\\d");
    row("unicode", "'日本 😀 é'", "日本 😀 é");
    row("keywords and parentheses inside", "'a AND (b))'", "a AND (b))");
}

void TestZBPredicate::stringLiterals()
{
    QFETCH(QString, literal);
    QFETCH(QString, value);

    const ZBPredicate predicate = ZBPredicate::parse(QStringLiteral("Name == ") + literal);
    QVERIFY2(predicate.isValid(), qPrintable(predicate.errorString()));
    const ZBPredicateExpression &right = predicate.root()->right();
    QCOMPARE(right.constantValue().toString(), value);
    QCOMPARE(predicate.text().mid(right.sourceStart(), right.sourceLength()), literal);
}

void TestZBPredicate::malformed_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("position"); // 1-based, as the message says it
    QTest::addColumn<QString>("mentions");

    QTest::newRow("blank") << "   \t " << 1 << "empty";
    QTest::newRow("unbalanced open") << "(Name == 'a'" << 13 << "')'";
    QTest::newRow("unterminated quote") << "Name == 'abc" << 9 << "unterminated";
    QTest::newRow("unknown operator word") << "Name ISLIKE 'a'" << 6 << "comparison operator";
    QTest::newRow("single ampersand") << "a == 1 & b == 2" << 8 << "unexpected character";
    QTest::newRow("missing value") << "Name ==" << 8 << "a key or a value";
    QTest::newRow("trailing garbage") << "Name == 'a' foo" << 13 << "end of the text";
    QTest::newRow("unclosed modifier") << "Name like[cd 'a'" << 10 << "']'";
    QTest::newRow("format argument") << "Name like[cd] %@" << 15 << "format arguments";
    QTest::newRow("malformed number") << "Rating > 1.2.3" << 10 << "malformed number";
    QTest::newRow("dangling dot in key") << "Playlist. == 1" << 9 << "after '.'";
    QTest::newRow("cast wrong type") << "Added > CAST(1, 'NSString')" << 17 << "only 'NSDate'";
    QTest::newRow("cast date out of range") << "Added > CAST(1e300, 'NSDate')" << 14 << "out of range";
    QTest::newRow("IN unsupported") << "Type IN 'a'" << 6 << "IN is not supported";
    QTest::newRow("variable") << "$x == 1" << 1 << "variables";
    QTest::newRow("control character") << QString::fromUtf16(u"Name == 'a' \u0001") << 13 << "U+0001";
}

void TestZBPredicate::malformed()
{
    QFETCH(QString, text);
    QFETCH(int, position);
    QFETCH(QString, mentions);

    const ZBPredicate predicate = ZBPredicate::parse(text);
    QVERIFY(!predicate.isValid());
    QVERIFY2(predicate.errorString().contains(mentions), qPrintable(predicate.errorString()));
    QVERIFY2(predicate.errorString().contains(QStringLiteral("position %1").arg(position)),
             qPrintable(predicate.errorString()));
    QCOMPARE(predicate.errorPosition(), qsizetype(position - 1));
    QVERIFY(!predicate.evaluate(makeTrack()));
}

void TestZBPredicate::nestingLimit()
{
    const int limit = ZBPredicateParser::MaximumDepth;
    const ZBVariantMapSubject track = makeTrack();

    const QString atLimit = QString(limit, u'(') + QStringLiteral("Rating == 3") + QString(limit, u')');
    const ZBPredicate deepest = ZBPredicate::parse(atLimit);
    QVERIFY2(deepest.isValid(), qPrintable(deepest.errorString()));
    QVERIFY(deepest.evaluate(track));
    const ZBPredicate tooDeep = ZBPredicate::parse(u'(' + atLimit + u')');
    QVERIFY(tooDeep.errorString().contains(QStringLiteral("nested deeper than %1").arg(limit)));
    QVERIFY(ZBPredicate::parse(QString(limit, u'!') + QStringLiteral("Rating == 3")).isValid());
    QVERIFY(!ZBPredicate::parse(QString(limit + 1, u'!') + QStringLiteral("Rating == 3")).isValid());

    // Far beyond the limit: rejected at once instead of exhausting the stack.
    QVERIFY(!ZBPredicate::parse(QString(1000000, u'(') + QStringLiteral("a == 1")).isValid());
    QVERIFY(!ZBPredicate::parse(QStringLiteral("NOT (").repeated(100000)).isValid());

    // Long flat chains are not nesting.
    QStringList terms;
    for (int i = 0; i < 5000; ++i)
        terms.append(QStringLiteral("Rating == %1").arg(i));
    const ZBPredicate chain = ZBPredicate::parse(terms.join(QStringLiteral(" OR ")));
    QVERIFY2(chain.isValid(), qPrintable(chain.errorString()));
    QVERIFY(chain.evaluate(track));
}

void TestZBPredicate::foldedFastPathIsUsed()
{
    ZBVariantMapSubject track = makeTrack();
    track.cacheFoldedValues();

    // The same key tested five times is asked for once, from the folded cache alone.
    CountingSubject counting(track);
    const ZBPredicate video = ZBPredicate::parse(
        QStringLiteral("!(Type contains[cd] 'MP4') AND !(Type contains[cd] 'EXE') AND !(Type contains[cd] 'rm') "
                       "AND !(Type contains[cd] 'rv') AND !(Type contains[cd] 'XAP')"));
    QVERIFY(video.evaluate(counting));
    QCOMPARE(counting.foldedCalls, 1);
    QCOMPARE(counting.valueCalls, 0);

    // An absent key falls back to the general path and is false.
    CountingSubject absent(track);
    QVERIFY(!ZBPredicate::parse(QStringLiteral("Missing CONTAINS[cd] ''")).evaluate(absent));
    QCOMPARE(absent.valueCalls, 1);
}

void TestZBPredicate::filterKeepsOrderAndPrefetchesAhead()
{
    std::vector<ZBVariantMapSubject> tracks(20);
    std::vector<std::unique_ptr<CountingSubject>> counting;
    QList<CountingSubject *> list;
    for (int i = 0; i < 20; ++i)
    {
        tracks[i].setValue(QStringLiteral("Rating"), i % 3);
        tracks[i].cacheFoldedValues();
        counting.push_back(std::make_unique<CountingSubject>(tracks[i]));
        list.append(counting.back().get());
    }

    const QList<CountingSubject *> matches = ZBPredicate::parse(QStringLiteral("Rating == 1")).filter(list);
    QCOMPARE(matches.size(), 7);
    for (qsizetype i = 0; i < matches.size(); ++i)
        QCOMPARE(matches.at(i), list.at(3 * i + 1));
    // Every subject but the first few is announced before it is evaluated.
    int prefetched = 0;
    for (const auto &subject : counting)
        prefetched += subject->prefetchCalls;
    QVERIFY(prefetched >= list.size() - 8);
    QCOMPARE(counting.front()->prefetchCalls, 0);
    QCOMPARE(counting.back()->prefetchCalls, 1);
    QVERIFY(ZBPredicate::parse(QStringLiteral("Rating ==")).filter(list).isEmpty());
}

void TestZBPredicate::dateHelpers()
{
    QCOMPARE(ZBPredicate::dateLiteral(referenceSeconds(-1.5)), QStringLiteral("CAST(-1.500000, 'NSDate')"));
    QCOMPARE(ZBPredicate::dateFromReferenceSeconds(754012800.123), referenceSeconds(754012800).addMSecs(123));
    QCOMPARE(ZBPredicate::referenceSecondsFromDate(referenceSeconds(10).addMSecs(250)), 10.25);
    QVERIFY(!ZBPredicate::dateFromReferenceSeconds(1e300).isValid());
}

QTEST_GUILESS_MAIN(TestZBPredicate)
#include "tst_zbpredicate.moc"
