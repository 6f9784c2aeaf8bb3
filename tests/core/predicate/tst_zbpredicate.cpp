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
ZBVariantMapSubject makeTrack()
{
    QVariantMap first;
    first.insert(QStringLiteral("PlaylistUUID"), QStringLiteral("11111111-AAAA-4000-8000-000000000001"));
    first.insert(QStringLiteral("Name"), QStringLiteral("Road trip"));
    QVariantMap second;
    second.insert(QStringLiteral("PlaylistUUID"), QStringLiteral("22222222-BBBB-4000-8000-000000000002"));
    second.insert(QStringLiteral("Name"), QStringLiteral("Über Mix"));

    ZBVariantMapSubject track;
    track.setValue(QStringLiteral("Name"), QStringLiteral("Crème Brûlée"));
    track.setValue(QStringLiteral("Path"), QStringLiteral("/home/u/Vidéos/clip?01*.mp4"));
    track.setValue(QStringLiteral("URL"), QStringLiteral("http://example.com/Movie.SWF"));
    track.setValue(QStringLiteral("Type"), QStringLiteral("SWF"));
    track.setValue(QStringLiteral("SourcePageTitle"), QStringLiteral("It's a \"page\""));
    track.setValue(QStringLiteral("Rating"), 3);
    track.setValue(QStringLiteral("PlayCount"), qlonglong(12));
    track.setValue(QStringLiteral("Length"), 95.5);
    track.setValue(QStringLiteral("Added"), referenceSeconds(752000000));
    track.setValue(QStringLiteral("isValid"), true);
    track.setValue(QStringLiteral("isSmart"), false);
    track.setValue(QStringLiteral("Empty"), QStringLiteral(""));
    track.setValue(QStringLiteral("Playlist"), QVariantList{first, second});
    track.setValue(QStringLiteral("Tags"), QStringList{QStringLiteral("live"), QStringLiteral("Écho")});
    track.setValue(QStringLiteral("Scores"), QVariantList{1, 5, 9});
    track.setValue(QStringLiteral("NoScores"), QVariantList{});
    return track;
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

// A subject that never answers from a folded cache, so every comparison goes
// the general way.
class NoFoldSubject : public ZBPredicateSubject
{
public:
    explicit NoFoldSubject(const ZBVariantMapSubject &inner)
        : m_inner(inner)
    {
    }

    QVariant valueForKeyPath(const QString &keyPath) const override { return m_inner.valueForKeyPath(keyPath); }
    QString foldedValueForKey(const QString &, bool, bool) const override { return {}; }

private:
    const ZBVariantMapSubject &m_inner;
};

ZBVariantMapSubject makeLibraryTrack(const QString &name, const QString &type, const QString &url, double added)
{
    ZBVariantMapSubject track;
    track.setValue(QStringLiteral("Name"), name);
    track.setValue(QStringLiteral("Type"), type);
    track.setValue(QStringLiteral("URL"), url);
    track.setValue(QStringLiteral("Added"), referenceSeconds(added));
    track.cacheFoldedValues();
    return track;
}
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
    void castDates_data();
    void castDates();
    void standardLists_data();
    void standardLists();
    void malformed_data();
    void malformed();
    void nestingLimit();
    void invalidRegularExpressionMatchesNothing();
    void foldedFastPathIsUsed();
    void descriptionReadsBack_data();
    void descriptionReadsBack();
    void filterKeepsOrderAndPrefetchesAhead();
    void dateHelpers();
};

void TestZBPredicate::evaluate_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");

    // Numbers, every comparison spelling, at and around the value.
    QTest::newRow("== equal") << "Rating == 3" << true;
    QTest::newRow("== differs") << "Rating == 4" << false;
    QTest::newRow("!= same") << "Rating != 3" << false;
    QTest::newRow("!= differs") << "Rating != 4" << true;
    QTest::newRow("<> differs") << "Rating <> 4" << true;
    QTest::newRow("< below") << "Rating < 4" << true;
    QTest::newRow("< at") << "Rating < 3" << false;
    QTest::newRow("<= at") << "Rating <= 3" << true;
    QTest::newRow("=< at") << "Rating =< 3" << true;
    QTest::newRow("> above") << "Rating > 2" << true;
    QTest::newRow("> at") << "Rating > 3" << false;
    QTest::newRow(">= at") << "Rating >= 3" << true;
    QTest::newRow("=> at") << "Rating => 3" << true;
    QTest::newRow("negative literal") << "Rating > -1" << true;
    QTest::newRow("real literal vs int") << "Rating < 3.5" << true;
    QTest::newRow("real value vs int") << "Length > 95" << true;
    QTest::newRow("exponent literal") << "PlayCount == 1.2e1" << true;
    QTest::newRow("constant on the left") << "3 == Rating" << true;
    QTest::newRow("key against key") << "PlayCount > Rating" << true;
    QTest::newRow("number against numeric text") << "Rating == '3'" << true;
    QTest::newRow("number against other text") << "Rating == 'three'" << false;
    QTest::newRow("number against numeric text, other form") << "Rating == ' 3.0'" << true;

    // Booleans count as 0 and 1.
    QTest::newRow("isSmart == NO") << "isSmart == NO" << true;
    QTest::newRow("isSmart == FALSE") << "isSmart == false" << true;
    QTest::newRow("isSmart == 0") << "isSmart == 0" << true;
    QTest::newRow("isValid == TRUE") << "isValid == True" << true;

    // Text equality and order, with and without folding.
    QTest::newRow("text == exact") << "Type == 'SWF'" << true;
    QTest::newRow("text == case differs") << "Type == 'swf'" << false;
    QTest::newRow("text ==[c]") << "Type ==[c] 'swf'" << true;
    QTest::newRow("text ==[d] keeps case") << "Name ==[d] 'creme brulee'" << false;
    QTest::newRow("text ==[cd]") << "Name ==[cd] 'CREME BRULEE'" << true;
    QTest::newRow("text < ") << "Type < 'TXT'" << true;
    QTest::newRow("text >[c]") << "Type >[c] 'abc'" << true;

    // String operators, each modifier.
    QTest::newRow("LIKE exact") << "Type LIKE 'SWF'" << true;
    QTest::newRow("LIKE case differs") << "Type LIKE 'swf'" << false;
    QTest::newRow("LIKE[c]") << "Type LIKE[c] 's?f'" << true;
    QTest::newRow("like[cd]") << "Name like[cd] 'creme*'" << true;
    QTest::newRow("like[d]") << "Name like[d] 'Creme*'" << true;
    QTest::newRow("like whole string") << "Name like[cd] 'creme'" << false;
    QTest::newRow("like question needs one") << "Type like 'S?SWF'" << false;
    QTest::newRow("like literal-looking path") << "Path like[cd] '/home/u/videos/clip?01*.mp4'" << true;
    QTest::newRow("like path question is wildcard") << "Path like[cd] '/home/u/videos/clip?0?*.mp4'" << true;
    QTest::newRow("CONTAINS") << "URL CONTAINS 'Movie'" << true;
    QTest::newRow("contains[c]") << "URL contains[c] 'movie'" << true;
    QTest::newRow("Contains[Cd] accents") << "Name Contains[Cd] 'BRULEE'" << true;
    QTest::newRow("CONTAINS[d] accent in pattern") << "Name CONTAINS[d] 'Brûl'" << true;
    QTest::newRow("CONTAINS[c] accent ignored no") << "Name CONTAINS[c] 'brulee'" << false;
    QTest::newRow("CONTAINS empty pattern") << "Name CONTAINS ''" << true;
    QTest::newRow("BEGINSWITH") << "Name BEGINSWITH 'Crè'" << true;
    QTest::newRow("beginswith[cd]") << "Name beginswith[cd] 'CRE'" << true;
    QTest::newRow("ENDSWITH") << "Name ENDSWITH 'lée'" << true;
    QTest::newRow("ENDSWITH[CD]") << "Name ENDSWITH[CD] 'LEE'" << true;
    QTest::newRow("MATCHES whole") << "Type MATCHES 'S.F'" << true;
    QTest::newRow("MATCHES is anchored") << "Type MATCHES 'W'" << false;
    QTest::newRow("MATCHES is anchored at end") << "Type MATCHES 'SW'" << false;
    QTest::newRow("MATCHES[c]") << "Type MATCHES[c] 'swf'" << true;
    QTest::newRow("MATCHES[CD]") << "Name MATCHES[CD] 'creme.*'" << true;
    QTest::newRow("MATCHES[cd] upper-case escapes survive") << "Name MATCHES[cd] '\\\\S+\\\\s\\\\S+'" << true;
    QTest::newRow("MATCHES alternation anchored") << "Type MATCHES 'X|SWF'" << true;
    QTest::newRow("MATCHES[cd] pattern accents") << "Name MATCHES[cd] 'CRÈME BRÛLÉE'" << true;

    // Diacritics folding both ways.
    QTest::newRow("e vs é") << "Tags CONTAINS[cd] 'echo'" << true;
    QTest::newRow("Ü vs u") << "ANY Playlist.Name BEGINSWITH[cd] 'uber'" << true;
    QTest::newRow("Ü vs u without d") << "ANY Playlist.Name BEGINSWITH[c] 'uber'" << false;

    // Lists: quantifiers, and a plain list read as ANY.
    QTest::newRow("ANY MATCHES uuid") << "ANY Playlist.PlaylistUUID MATCHES '22222222-BBBB-4000-8000-000000000002'"
                                      << true;
    QTest::newRow("any lower case") << "any Playlist.Name == 'Road trip'" << true;
    QTest::newRow("list without ANY") << "Playlist.Name == 'Road trip'" << true;
    QTest::newRow("ALL true") << "ALL Scores > 0" << true;
    QTest::newRow("ALL false") << "ALL Scores > 1" << false;
    QTest::newRow("NONE true") << "NONE Scores > 9" << true;
    QTest::newRow("NONE false") << "NONE Scores == 5" << false;
    QTest::newRow("plain list numbers") << "Scores > 8" << true;
    QTest::newRow("string list contains") << "Tags CONTAINS 'liv'" << true;
    QTest::newRow("ANY empty list") << "ANY NoScores == 1" << false;
    QTest::newRow("ALL empty list") << "ALL NoScores == 1" << true;
    QTest::newRow("ANY over a single value") << "ANY Rating == 3" << true;
    QTest::newRow("ALL over a single value") << "ALL Rating == 4" << false;

    // Absent values.
    QTest::newRow("absent == NIL") << "Missing == NIL" << true;
    QTest::newRow("present == NIL") << "Name == NIL" << false;
    QTest::newRow("absent != NIL") << "Missing != NIL" << false;
    QTest::newRow("absent == empty text") << "Missing == ''" << false;
    QTest::newRow("absent != text") << "Missing != 'x'" << true;
    QTest::newRow("absent < number") << "Missing < 5" << false;
    QTest::newRow("absent like star") << "Missing like[cd] '*'" << false;
    QTest::newRow("absent matches") << "Missing MATCHES '.*'" << false;
    QTest::newRow("absent date ordering") << "Missing > CAST(0, 'NSDate')" << false;
    QTest::newRow("empty text == ''") << "Empty == ''" << true;
    QTest::newRow("empty text like star") << "Empty like '*'" << true;

    // Keywords in any letter case, constants, escapes.
    QTest::newRow("TRUEPREDICATE") << "TRUEPREDICATE" << true;
    QTest::newRow("falsepredicate") << "falsepredicate" << false;
    QTest::newRow("lower-case operators") << "Rating == 3 and not Rating == 4 or FALSEPREDICATE" << true;
    QTest::newRow("escaped keyword key") << "#Like == NIL" << true;
    QTest::newRow("quoted quote") << "SourcePageTitle == 'It\\'s a \"page\"'" << true;
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
    const NoFoldSubject declining(track);
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

    row("and binds tighter", "a == 1 OR b == 2 AND c == 3", "((a == 1) OR ((b == 2) AND (c == 3)))");
    row("|| below &&", "a == 1 || b == 2 && c == 3", "((a == 1) OR ((b == 2) AND (c == 3)))");
    row("and then or", "a == 1 AND b == 2 OR c == 3", "(((a == 1) AND (b == 2)) OR (c == 3))");
    row("chains are flat", "a == 1 AND b == 2 AND c == 3", "((a == 1) AND (b == 2) AND (c == 3))");
    row("groups stay apart", "(a == 1 OR b == 2) AND c == 3", "(((a == 1) OR (b == 2)) AND (c == 3))");
    row("not binds tightest", "NOT a == 1 AND b == 2", "(NOT (a == 1) AND (b == 2))");
    row("! binds tightest", "!a == 1 OR b == 2", "(NOT (a == 1) OR (b == 2))");
    row("not of a group", "NOT (a == 1 AND b == 2)", "NOT ((a == 1) AND (b == 2))");
    row("modifiers and quantifier", "any Playlist.Name like[DC] 'x*'", "(ANY Playlist.Name LIKE[cd] 'x*')");
    row("spellings normalised", "a <> 1 || b =< 2 || c => 3 || d = 4",
        "((a != 1) OR (b <= 2) OR (c >= 3) OR (d == 4))");
    row("constants", "a == nil AND b == yes AND c == -2.5", "((a == NIL) AND (b == YES) AND (c == -2.5))");
    row("redundant parentheses", "(((a == 1)))", "(a == 1)");
}

void TestZBPredicate::treeShape()
{
    QFETCH(QString, text);
    QFETCH(QString, description);

    const ZBPredicate predicate = ZBPredicate::parse(text);
    QVERIFY2(predicate.isValid(), qPrintable(predicate.errorString()));
    QCOMPARE(predicate.root()->description(), description);
}

void TestZBPredicate::stringLiterals_data()
{
    QTest::addColumn<QString>("literal");
    QTest::addColumn<QString>("value");
    const auto row = [](const char *name, const char *literal, const char *value)
    {
        QTest::newRow(name) << QString::fromUtf8(literal) << QString::fromUtf8(value);
    };

    row("plain double", "\"abc\"", "abc");
    row("escaped single quote", "'it\\'s'", "it's");
    row("double quote inside single", "'say \"hi\"'", "say \"hi\"");
    row("single quote inside double", "\"it's\"", "it's");
    row("escaped double quote", "\"say \\\"hi\\\"\"", "say \"hi\"");
    row("escaped backslash", "'a\\\\b'", "a\\b");
    row("backslash at end", "'a\\\\'", "a\\");
    row("newline escape", "'a\\nb'", "a\nb");
    row("tab escape", "'a\\tb'", "a\tb");
    row("other escapes kept", "'a\\.b\\d'", "a\\.b\\d");
    row("raw newline", "'a\nb'", "a\nb");
    row("unicode", "'日本 😀 é'", "日本 😀 é");
    row("keywords and parentheses inside", "'a AND (b))'", "a AND (b))");
    row("empty", "''", "");
}

void TestZBPredicate::stringLiterals()
{
    QFETCH(QString, literal);
    QFETCH(QString, value);

    const ZBPredicate predicate = ZBPredicate::parse(QStringLiteral("Name == ") + literal);
    QVERIFY2(predicate.isValid(), qPrintable(predicate.errorString()));
    const ZBPredicateExpression &right = predicate.root()->right();
    QVERIFY(right.isConstant());
    QCOMPARE(right.constantValue().toString(), value);
    QCOMPARE(predicate.text().mid(right.sourceStart(), right.sourceLength()), literal);

    ZBVariantMapSubject subject;
    subject.setValue(QStringLiteral("Name"), value);
    QVERIFY(predicate.evaluate(subject));
}

void TestZBPredicate::castDates_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDateTime>("added");
    QTest::addColumn<bool>("expected");

    const QDateTime cut = referenceSeconds(752000000);
    const QString atCut = QStringLiteral("CAST(752000000.000000, 'NSDate')");
    QTest::newRow(">= exactly at") << "Added >= " + atCut << cut << true;
    QTest::newRow(">= 1 ms before") << "Added >= " + atCut << cut.addMSecs(-1) << false;
    QTest::newRow(">= 1 ms after") << "Added >= " + atCut << cut.addMSecs(1) << true;
    QTest::newRow("> exactly at") << "Added > " + atCut << cut << false;
    QTest::newRow("< exactly at") << "Added < " + atCut << cut << false;
    QTest::newRow("< 1 ms before") << "Added < " + atCut << cut.addMSecs(-1) << true;
    QTest::newRow("<= exactly at") << "Added <= " + atCut << cut << true;
    QTest::newRow("== exactly at") << "Added == " + atCut << cut << true;
    QTest::newRow("== other moment") << "Added == " + atCut << cut.addSecs(1) << false;
    QTest::newRow("== same moment other zone") << "Added == " + atCut << cut.toOffsetFromUtc(3600 * 9) << true;
    QTest::newRow("reference date") << "Added == CAST(0, 'NSDate')" << referenceSeconds(0) << true;
    QTest::newRow("before the reference") << "Added == CAST(-86400.5, 'NSDate')"
                                          << QDateTime(QDate(2000, 12, 30), QTime(23, 59, 59, 500), Qt::UTC) << true;
    QTest::newRow("milliseconds") << "Added == CAST(754012800.123000, 'NSDate')"
                                  << referenceSeconds(754012800).addMSecs(123) << true;
    QTest::newRow("lower-case cast") << "Added >= cast(752000000, \"NSDate\")" << cut << true;
    QTest::newRow("date vs seconds") << "Added >= 752000000" << cut << true;
    QTest::newRow("date vs seconds, below") << "Added > 752000000" << cut << false;
    QTest::newRow("day before the reference")
        << "Added < CAST(0, 'NSDate')" << QDateTime(QDate(2000, 12, 31), QTime(0, 0), Qt::UTC) << true;
}

void TestZBPredicate::castDates()
{
    QFETCH(QString, text);
    QFETCH(QDateTime, added);
    QFETCH(bool, expected);

    const ZBPredicate predicate = ZBPredicate::parse(text);
    QVERIFY2(predicate.isValid(), qPrintable(predicate.errorString()));
    ZBVariantMapSubject subject;
    subject.setValue(QStringLiteral("Added"), added);
    QCOMPARE(predicate.evaluate(subject), expected);
}

void TestZBPredicate::standardLists_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expectedNames");
    const auto row = [](const char *name, const char *text, const char *names)
    {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(names);
    };

    row("All Tracks", "Name like[cd] '*'", "a b c d e f g h");
    row("Video",
        "!(Type contains[cd] 'SWF') AND !(Type contains[cd] 'EXE') AND !(Type contains[cd] 'rm') AND "
        "!(Type contains[cd] 'rv') AND !(Type contains[cd] 'XAP')",
        "a f g");
    row("SWF", "(Type contains[cd] 'SWF') OR (Type contains[cd] 'EXE')", "b c");
    row("Real video", "(Type contains[cd] 'rm') OR (Type contains[cd] 'rv')", "d h");
    row("Silverlight", "Type contains[cd] 'XAP'", "e");
    row("Today", " (!(URL == '') AND (Added >= CAST(752000000.000000, 'NSDate')))", "b c f");
    row("smart rule", "(Name CONTAINS[CD] 'it\\'s') AND (Type > 'a') OR (Added > CAST(754012800.000000, 'NSDate'))",
        "c g");
}

void TestZBPredicate::standardLists()
{
    QFETCH(QString, text);
    QFETCH(QString, expectedNames);

    const QList<ZBVariantMapSubject> library = {
        makeLibraryTrack("a", "mp4", "", 752000000),
        makeLibraryTrack("b", "SWF", "http://x/b.swf", 752000000),
        makeLibraryTrack("c", "exe", "http://x/c", 754012801),
        makeLibraryTrack("d", "RM", "", 752000000),
        makeLibraryTrack("e", "xap", "", 1),
        makeLibraryTrack("f", "flv", "http://x/f.flv", 753000000),
        makeLibraryTrack("g it's", "mov", "", 751999999),
        makeLibraryTrack("h", "rv", "http://x/h.rv", 751999999.999),
    };
    const ZBPredicate predicate = ZBPredicate::parse(text);
    QVERIFY2(predicate.isValid(), qPrintable(predicate.errorString()));
    QStringList names;
    for (const ZBVariantMapSubject &track : library)
    {
        if (predicate.evaluate(track))
            names.append(track.value(QStringLiteral("Name")).toString().section(u' ', 0, 0));
    }
    QCOMPARE(names.join(u' '), expectedNames);
}

void TestZBPredicate::malformed_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("position"); // 1-based, as the message says it
    QTest::addColumn<QString>("mentions");

    QTest::newRow("empty") << "" << 1 << "empty";
    QTest::newRow("blank") << "   \t " << 1 << "empty";
    QTest::newRow("unbalanced open") << "(Name == 'a'" << 13 << "')'";
    QTest::newRow("unbalanced close") << "Name == 'a')" << 12 << "matching";
    QTest::newRow("empty parentheses") << "()" << 2 << "a key or a value";
    QTest::newRow("unterminated single quote") << "Name == 'abc" << 9 << "unterminated";
    QTest::newRow("unterminated double quote") << "Name == \"abc" << 9 << "unterminated";
    QTest::newRow("escape at end") << "Name == 'abc\\'" << 9 << "unterminated";
    QTest::newRow("unknown operator word") << "Name ISLIKE 'a'" << 6 << "comparison operator";
    QTest::newRow("unknown operator symbol") << "Name ~ 'a'" << 6 << "unexpected character";
    QTest::newRow("single ampersand") << "a == 1 & b == 2" << 8 << "unexpected character";
    QTest::newRow("missing operator") << "Name 'a'" << 6 << "comparison operator";
    QTest::newRow("missing value") << "Name ==" << 8 << "a key or a value";
    QTest::newRow("missing left") << "== 'a'" << 1 << "a key or a value";
    QTest::newRow("trailing garbage") << "Name == 'a' foo" << 13 << "end of the text";
    QTest::newRow("trailing operator") << "Name == 'a' AND" << 16 << "a key or a value";
    QTest::newRow("double operator") << "Name == == 'a'" << 9 << "a key or a value";
    QTest::newRow("bad modifier") << "Name like[x] 'a'" << 10 << "unknown modifier";
    QTest::newRow("empty modifier") << "Name like[] 'a'" << 10 << "empty modifier";
    QTest::newRow("unclosed modifier") << "Name like[cd 'a'" << 10 << "']'";
    QTest::newRow("modifier without operator") << "Name [cd] 'a'" << 6 << "comparison operator";
    QTest::newRow("format argument") << "Name like[cd] %@" << 15 << "format arguments";
    QTest::newRow("key format argument") << "%K like[cd] 'a'" << 1 << "format arguments";
    QTest::newRow("malformed number") << "Rating > 3abc" << 10 << "malformed number";
    QTest::newRow("two dots") << "Rating > 1.2.3" << 10 << "malformed number";
    QTest::newRow("huge number") << "Rating > 1e999" << 10 << "out of range";
    QTest::newRow("dangling dot in key") << "Playlist. == 1" << 9 << "after '.'";
    QTest::newRow("cast wrong type") << "Added > CAST(1, 'NSString')" << 17 << "only 'NSDate'";
    QTest::newRow("cast of text") << "Added > CAST('1', 'NSDate')" << 14 << "number of seconds";
    QTest::newRow("cast missing comma") << "Added > CAST(1 'NSDate')" << 16 << "','";
    QTest::newRow("cast unclosed") << "Added > CAST(1, 'NSDate'" << 25 << "')'";
    QTest::newRow("cast date out of range") << "Added > CAST(1e300, 'NSDate')" << 14 << "out of range";
    QTest::newRow("IN unsupported") << "Type IN 'a'" << 6 << "IN is not supported";
    QTest::newRow("quantifier without key") << "ANY 'a' == 'a'" << 5 << "key path";
    QTest::newRow("not without operand") << "NOT" << 4 << "a key or a value";
    QTest::newRow("variable") << "$x == 1" << 1 << "variables";
    QTest::newRow("collection operator") << "@count == 1" << 1 << "collection operators";
    QTest::newRow("lone hash") << "# == 1" << 1 << "'#'";
    QTest::newRow("control character") << QString::fromUtf16(u"Name == 'a' \u0001") << 13 << "U+0001";
}

void TestZBPredicate::malformed()
{
    QFETCH(QString, text);
    QFETCH(int, position);
    QFETCH(QString, mentions);

    const ZBPredicate predicate = ZBPredicate::parse(text);
    QVERIFY(!predicate.isValid());
    QVERIFY(predicate.root() == nullptr);
    QCOMPARE(predicate.text(), text);
    QVERIFY2(predicate.errorString().contains(mentions), qPrintable(predicate.errorString()));
    QVERIFY2(predicate.errorString().contains(QStringLiteral("position %1").arg(position)),
             qPrintable(predicate.errorString()));
    QCOMPARE(predicate.errorPosition(), qsizetype(position - 1));

    const ZBVariantMapSubject track = makeTrack();
    QVERIFY(!predicate.evaluate(track));
    QVERIFY(!ZBPredicate().evaluate(track));
}

void TestZBPredicate::nestingLimit()
{
    const int limit = ZBPredicateParser::MaximumDepth;
    const ZBVariantMapSubject track = makeTrack();

    const QString atLimit = QString(limit, u'(') + QStringLiteral("Rating == 3") + QString(limit, u')');
    const ZBPredicate deepest = ZBPredicate::parse(atLimit);
    QVERIFY2(deepest.isValid(), qPrintable(deepest.errorString()));
    QVERIFY(deepest.evaluate(track));

    const QString overLimit = u'(' + atLimit + u')';
    const ZBPredicate tooDeep = ZBPredicate::parse(overLimit);
    QVERIFY(!tooDeep.isValid());
    QVERIFY2(tooDeep.errorString().contains(QStringLiteral("nested deeper than %1").arg(limit)),
             qPrintable(tooDeep.errorString()));

    const ZBPredicate negations = ZBPredicate::parse(QString(limit, u'!') + QStringLiteral("Rating == 3"));
    QVERIFY(negations.isValid());
    QCOMPARE(negations.evaluate(track), limit % 2 == 0);
    QVERIFY(!ZBPredicate::parse(QString(limit + 1, u'!') + QStringLiteral("Rating == 3")).isValid());

    // Far beyond the limit: rejected at once instead of exhausting the stack.
    const ZBPredicate hostile = ZBPredicate::parse(QString(1000000, u'(') + QStringLiteral("a == 1"));
    QVERIFY(!hostile.isValid());
    QVERIFY(hostile.errorString().contains(QStringLiteral("nested")));
    QVERIFY(!ZBPredicate::parse(QStringLiteral("NOT (").repeated(100000)).isValid());

    // Long flat chains are not nesting.
    QStringList terms;
    for (int i = 0; i < 5000; ++i)
        terms.append(QStringLiteral("Rating == %1").arg(i));
    const ZBPredicate chain = ZBPredicate::parse(terms.join(QStringLiteral(" OR ")));
    QVERIFY2(chain.isValid(), qPrintable(chain.errorString()));
    QCOMPARE(chain.root()->childCount(), qsizetype(5000));
    QVERIFY(chain.evaluate(track));
}

void TestZBPredicate::invalidRegularExpressionMatchesNothing()
{
    // A rule value is a pattern the user typed; a broken one must not make
    // the whole list unreadable, it just matches nothing.
    const ZBPredicate broken = ZBPredicate::parse(QStringLiteral("Name MATCHES[cd] '(unclosed'"));
    QVERIFY2(broken.isValid(), qPrintable(broken.errorString()));
    QVERIFY(!broken.root()->regularExpression().isValid());
    const ZBVariantMapSubject track = makeTrack();
    QVERIFY(!broken.evaluate(track));
    QVERIFY(ZBPredicate::parse(QStringLiteral("NOT Name MATCHES '('")).evaluate(track));
}

void TestZBPredicate::foldedFastPathIsUsed()
{
    ZBVariantMapSubject track = makeTrack();
    track.cacheFoldedValues();

    {
        // A text rule on a plain key is answered from the folded cache alone.
        CountingSubject counting(track);
        QVERIFY(ZBPredicate::parse(QStringLiteral("Name CONTAINS[cd] 'brulee'")).evaluate(counting));
        QCOMPARE(counting.foldedCalls, 1);
        QCOMPARE(counting.valueCalls, 0);
    }
    {
        // The same key tested five times is asked for once.
        CountingSubject counting(track);
        const ZBPredicate video = ZBPredicate::parse(
            QStringLiteral("!(Type contains[cd] 'MP4') AND !(Type contains[cd] 'EXE') AND !(Type contains[cd] 'rm') "
                           "AND !(Type contains[cd] 'rv') AND !(Type contains[cd] 'XAP')"));
        QVERIFY(video.evaluate(counting));
        QCOMPARE(counting.foldedCalls, 1);
        QCOMPARE(counting.valueCalls, 0);
    }
    {
        // An absent key falls back to the general path and is false.
        CountingSubject counting(track);
        QVERIFY(!ZBPredicate::parse(QStringLiteral("Missing CONTAINS[cd] ''")).evaluate(counting));
        QCOMPARE(counting.foldedCalls, 1);
        QCOMPARE(counting.valueCalls, 1);
    }
}

void TestZBPredicate::descriptionReadsBack_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("standard video list")
        << "!(Type contains[cd] 'SWF') AND !(Type contains[cd] 'EXE') AND !(Type contains[cd] 'rm') AND "
           "!(Type contains[cd] 'rv') AND !(Type contains[cd] 'XAP')";
    QTest::newRow("download list") << " (!(URL == '') AND (Added >= CAST(752000000.000000, 'NSDate')))";
    QTest::newRow("rules") << "(Name CONTAINS[CD] 'it\\'s') AND (Rating > 3) OR (Added > CAST(754012800.000000, "
                              "'NSDate'))";
    QTest::newRow("escapes") << "Name == 'a\\\\b\\'c\"d' OR Path == \"x\\ny\"";
    QTest::newRow("reserved key") << "#Like == NIL AND #and.x == 1";
    QTest::newRow("reals") << "a == 2.0 OR b == -0.0 OR c == 1e300 OR d == -12345678901234567890";
    QTest::newRow("quantifiers") << "ALL Scores > 0 AND NONE Scores > 9 AND SOME Tags == 'x'";
    QTest::newRow("constants") << "TRUEPREDICATE AND NOT FALSEPREDICATE";
}

void TestZBPredicate::descriptionReadsBack()
{
    // The description is what diagnostics show; it must mean what was parsed.
    QFETCH(QString, text);

    const ZBPredicate predicate = ZBPredicate::parse(text);
    QVERIFY2(predicate.isValid(), qPrintable(predicate.errorString()));
    const QString description = predicate.root()->description();
    const ZBPredicate again = ZBPredicate::parse(description);
    QVERIFY2(again.isValid(), qPrintable(again.errorString() + u'\n' + description));
    QCOMPARE(again.root()->description(), description);

    const ZBVariantMapSubject track = makeTrack();
    QCOMPARE(again.evaluate(track), predicate.evaluate(track));
}

void TestZBPredicate::filterKeepsOrderAndPrefetchesAhead()
{
    std::vector<ZBVariantMapSubject> tracks;
    for (int i = 0; i < 20; ++i)
    {
        ZBVariantMapSubject track;
        track.setValue(QStringLiteral("Rating"), i % 3);
        track.cacheFoldedValues();
        tracks.push_back(track);
    }
    std::vector<std::unique_ptr<CountingSubject>> counting;
    QList<CountingSubject *> list;
    for (const ZBVariantMapSubject &track : tracks)
    {
        counting.push_back(std::make_unique<CountingSubject>(track));
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
    QVERIFY(counting.front()->prefetchCalls == 0);
    QVERIFY(counting.back()->prefetchCalls == 1);

    QVERIFY(ZBPredicate::parse(QStringLiteral("Rating ==")).filter(list).isEmpty());
    QVERIFY(ZBPredicate::parse(QStringLiteral("Rating == 1")).filter(QList<CountingSubject *>()).isEmpty());
}

void TestZBPredicate::dateHelpers()
{
    QCOMPARE(ZBPredicate::referenceDate(), QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC));
    QCOMPARE(ZBPredicate::dateLiteral(referenceSeconds(752000000)), QStringLiteral("CAST(752000000.000000, 'NSDate')"));
    QCOMPARE(ZBPredicate::dateLiteral(referenceSeconds(-1.5)), QStringLiteral("CAST(-1.500000, 'NSDate')"));
    QCOMPARE(ZBPredicate::dateFromReferenceSeconds(754012800.123), referenceSeconds(754012800).addMSecs(123));
    QCOMPARE(ZBPredicate::referenceSecondsFromDate(referenceSeconds(10).addMSecs(250)), 10.25);
    QVERIFY(!ZBPredicate::dateFromReferenceSeconds(qInf()).isValid());
    QVERIFY(!ZBPredicate::dateFromReferenceSeconds(1e300).isValid());
}

QTEST_GUILESS_MAIN(TestZBPredicate)
#include "tst_zbpredicate.moc"
