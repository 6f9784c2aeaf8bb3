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
    void helpers();
};

void TestZBTextFold::fold_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<bool>("caseInsensitive");
    QTest::addColumn<bool>("diacriticInsensitive");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no flags keep text") << u"Crème Ü"_qs << false << false << u"Crème Ü"_qs;
    QTest::newRow("ascii case") << u"MiXeD 123"_qs << true << false << u"mixed 123"_qs;
    QTest::newRow("ascii diacritics only") << u"MiXeD"_qs << false << true << u"MiXeD"_qs;
    QTest::newRow("e acute, case") << u"CRÈME"_qs << true << false << u"crème"_qs;
    QTest::newRow("e acute, diacritics") << u"Crème"_qs << false << true << u"Creme"_qs;
    QTest::newRow("U umlaut, both") << u"Über"_qs << true << true << u"uber"_qs;
    QTest::newRow("U umlaut, diacritics keep case") << u"Über"_qs << false << true << u"Uber"_qs;
    QTest::newRow("decomposed input, both") << u"Cre\u0300me"_qs << true << true << u"creme"_qs;
    QTest::newRow("decomposed input composes for case") << u"E\u0301"_qs << true << false << u"\u00e9"_qs;
    QTest::newRow("several marks on one letter") << u"\u1EC7"_qs << true << true << u"e"_qs; // ệ
    QTest::newRow("greek sigma folds") << u"ΣΑΣ"_qs << true << false << u"σασ"_qs;
    QTest::newRow("greek tonos dropped") << u"Ά"_qs << true << true << u"α"_qs;
    QTest::newRow("cjk unchanged") << u"日本語"_qs << true << true << u"日本語"_qs;
    QTest::newRow("hangul stays composed") << u"한국"_qs << true << true << u"한국"_qs;
    QTest::newRow("emoji unchanged") << u"A😀"_qs << true << true << u"a😀"_qs;
    QTest::newRow("non-spacing mark alone dropped") << u"a\u0301"_qs << false << true << u"a"_qs;
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

    QTest::newRow("star matches all") << u"anything"_qs << u"*"_qs << false << false << true;
    QTest::newRow("star matches empty") << u""_qs << u"*"_qs << false << false << true;
    QTest::newRow("empty matches empty") << u""_qs << u""_qs << false << false << true;
    QTest::newRow("empty pattern vs text") << u"a"_qs << u""_qs << false << false << false;
    QTest::newRow("exact") << u"abc"_qs << u"abc"_qs << false << false << true;
    QTest::newRow("exact is whole string") << u"abcd"_qs << u"abc"_qs << false << false << false;
    QTest::newRow("prefix star") << u"movie.swf"_qs << u"*.swf"_qs << false << false << true;
    QTest::newRow("inner star") << u"movie.swf"_qs << u"m*f"_qs << false << false << true;
    QTest::newRow("inner star no match") << u"movie.swf"_qs << u"m*x"_qs << false << false << false;
    QTest::newRow("question one char") << u"a1c"_qs << u"a?c"_qs << false << false << true;
    QTest::newRow("question needs a char") << u"ac"_qs << u"a?c"_qs << false << false << false;
    QTest::newRow("questions count") << u"a12c"_qs << u"a??c"_qs << false << false << true;
    QTest::newRow("star then question") << u"abc"_qs << u"*?"_qs << false << false << true;
    QTest::newRow("star question on empty") << u""_qs << u"*?"_qs << false << false << false;
    QTest::newRow("question over surrogate pair") << u"a😀c"_qs << u"a?c"_qs << false << false << true;
    QTest::newRow("two questions not for one emoji") << u"a😀c"_qs << u"a??c"_qs << false << false << false;
    QTest::newRow("star backtracks") << u"aXbXc"_qs << u"*X?"_qs << false << false << true;
    QTest::newRow("repeated stars") << u"abc"_qs << u"**a**c**"_qs << false << false << true;
    QTest::newRow("question in path is a wildcard")
        << u"/media/clipX01.mp4"_qs << u"/media/clip?01.mp4"_qs << false << false << true;
    QTest::newRow("backslash is no escape") << u"C:\\x*"_qs << u"C:\\x*"_qs << false << false << true;
    QTest::newRow("backslash star literal value") << u"a\\b"_qs << u"a\\*"_qs << false << false << true;
    QTest::newRow("case matters without flags") << u"ABC"_qs << u"abc"_qs << false << false << false;
    QTest::newRow("case only, case differs") << u"ABC"_qs << u"abc"_qs << true << false << true;
    QTest::newRow("case only, accent differs") << u"Crème"_qs << u"creme"_qs << true << false << false;
    QTest::newRow("diacritics only, case differs") << u"Crème"_qs << u"creme"_qs << false << true << false;
    QTest::newRow("diacritics only") << u"Crème"_qs << u"Creme"_qs << false << true << true;
    QTest::newRow("both, pattern accented") << u"uber"_qs << u"Ü*"_qs << true << true << true;
    QTest::newRow("both, value accented") << u"Überall"_qs << u"u?er*"_qs << true << true << true;
    QTest::newRow("decomposed vs composed") << u"Cre\u0300me"_qs << u"crème"_qs << true << true << true;
    QTest::newRow("path lookup") << u"/Home/U/Vidéos/A.MP4"_qs << u"/home/u/videos/a.mp4"_qs << true << true << true;
    // Patterns that take exponential time with naive recursive matching.
    const QString as = QString(20000, u'a');
    QTest::newRow("many stars, no final b") << as << u"*a*a*a*a*a*a*a*a*a*a*a*b"_qs << true << true << false;
    QTest::newRow("many stars, final a") << as << u"*a*a*a*a*a*a*a*a*a*a*a*a"_qs << true << true << true;
    QTest::newRow("star question runs") << as + u'b' << u"*?"_qs.repeated(200) + u'c' << true << true << false;
    QTest::newRow("long literal tail") << as.left(3000) << u"*"_qs + QString(2999, u'a') + u'b' << true << true
                                       << false;
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

void TestZBTextFold::helpers()
{
    QVERIFY(ZBTextFold::hasWildcards(u"a*"));
    QVERIFY(ZBTextFold::hasWildcards(u"?"));
    QVERIFY(!ZBTextFold::hasWildcards(u"/plain/path.mp4"));
    QVERIFY(ZBTextFold::isAscii(u"plain ascii ~"));
    QVERIFY(!ZBTextFold::isAscii(u"é"));
}

QTEST_GUILESS_MAIN(TestZBTextFold)
#include "tst_zbtextfold.moc"
