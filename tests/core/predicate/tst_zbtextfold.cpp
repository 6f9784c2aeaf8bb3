#include <QTest>

#include "predicate/zbtextfold.h"

// Folding and LIKE matching as every lookup and filter of the program sees
// them: case, diacritics, normalisation forms, wildcards and hostile patterns.
class TestZBTextFold : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fold_data();
    void fold();
    void foldKeepsAsciiWithoutCopying();
    void likeMatch_data();
    void likeMatch();
};

void TestZBTextFold::fold_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<bool>("caseInsensitive");
    QTest::addColumn<bool>("diacriticInsensitive");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no flags keep text") << u"Crème Ü"_qs << false << false << u"Crème Ü"_qs;
    QTest::newRow("case") << u"CRÈME 123"_qs << true << false << u"crème 123"_qs;
    QTest::newRow("diacritics keep case") << u"Über"_qs << false << true << u"Uber"_qs;
    QTest::newRow("decomposed input, both") << u"Cre\u0300me"_qs << true << true << u"creme"_qs;
    QTest::newRow("several marks on one letter") << u"\u1EC7"_qs << true << true << u"e"_qs; // ệ
    QTest::newRow("greek") << u"ΣΆΣ"_qs << true << true << u"σασ"_qs;
    QTest::newRow("hangul stays composed") << u"한국"_qs << true << true << u"한국"_qs;
    QTest::newRow("emoji unchanged") << u"A😀"_qs << true << true << u"a😀"_qs;
}

void TestZBTextFold::fold()
{
    QFETCH(QString, input);
    QFETCH(bool, caseInsensitive);
    QFETCH(bool, diacriticInsensitive);
    QFETCH(QString, expected);
    QCOMPARE(ZBTextFold::fold(input, caseInsensitive, diacriticInsensitive), expected);
}

void TestZBTextFold::foldKeepsAsciiWithoutCopying()
{
    // Tracks fold their names once per change; lower-case ASCII must come
    // back as the same shared text, not a copy.
    const QString lower = QString::fromLatin1("already lower case");
    QCOMPARE(ZBTextFold::fold(lower, true, true).constData(), lower.constData());
    const QString upper = QString::fromLatin1("Has Upper");
    QVERIFY(ZBTextFold::fold(upper, true, true).constData() != upper.constData());
    // The evaluator reads a null text as "absent"; folding must not turn an
    // empty value into a null one.
    QVERIFY(!ZBTextFold::fold(QString::fromLatin1(""), true, true).isNull());
    QVERIFY(ZBTextFold::fold(QString(), true, true).isNull());
}

void TestZBTextFold::likeMatch_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("caseInsensitive");
    QTest::addColumn<bool>("diacriticInsensitive");
    QTest::addColumn<bool>("expected");
    // flags: 1 case-insensitive, 2 diacritic-insensitive.
    const auto row = [](const char *name, const QString &value, const QString &pattern, int flags, bool expected)
    {
        QTest::newRow(name) << value << pattern << bool(flags & 1) << bool(flags & 2) << expected;
    };

    row("star matches empty", u""_qs, u"*"_qs, 0, true);
    row("exact is whole string", u"abcd"_qs, u"abc"_qs, 0, false);
    row("inner star no match", u"movie.swf"_qs, u"m*x"_qs, 0, false);
    row("question needs a char", u"ac"_qs, u"a?c"_qs, 0, false);
    row("star question on empty", u""_qs, u"*?"_qs, 0, false);
    row("question over surrogate pair", u"a😀c"_qs, u"a?c"_qs, 0, true);
    row("two questions not for one emoji", u"a😀c"_qs, u"a??c"_qs, 0, false);
    row("star backtracks", u"aXbXc"_qs, u"*X?"_qs, 0, true);
    row("backslash is no escape", u"a\\b"_qs, u"a\\*"_qs, 0, true);
    row("case only, accent differs", u"Crème"_qs, u"creme"_qs, 1, false);
    row("diacritics only, case differs", u"Crème"_qs, u"creme"_qs, 2, false);
    row("both, pattern accented", u"uber"_qs, u"Ü*"_qs, 3, true);
    row("decomposed vs composed", u"Cre\u0300me"_qs, u"crème"_qs, 3, true);
    // Patterns that take exponential time with naive recursive matching.
    const QString as = QString(20000, u'a');
    row("many stars, no final b", as, u"*a*a*a*a*a*a*a*a*a*a*a*b"_qs, 3, false);
    row("star question runs", as + u'b', u"*?"_qs.repeated(200) + u'c', 3, false);
    row("long literal tail", as.left(3000), u"*"_qs + QString(2999, u'a') + u'b', 3, false);
}

void TestZBTextFold::likeMatch()
{
    QFETCH(QString, value);
    QFETCH(QString, pattern);
    QFETCH(bool, caseInsensitive);
    QFETCH(bool, diacriticInsensitive);
    QFETCH(bool, expected);
    QCOMPARE(ZBTextFold::likeMatch(value, pattern, caseInsensitive, diacriticInsensitive), expected);
    if (!caseInsensitive && !diacriticInsensitive)
        QCOMPARE(ZBTextFold::likeMatchFolded(value, pattern), expected);
}

QTEST_GUILESS_MAIN(TestZBTextFold)
#include "tst_zbtextfold.moc"
