// Collation keys against QCollator ignoring case, in locales whose own rules differ:
// Swedish puts å, ä and ö after z, Thai ignores punctuation unless told not to.
#include <QCollator>
#include <QTest>

#include "util/zbcollationkeys.h"

namespace
{
const QStringList Texts = {"",          "a",         "A",         "b",        "z",          "å",
                           "ä",         "Ö",         "o",         "ß",        "ss",         "Straße",
                           "STRASSE",   "éclair",    "Eclair",    "ECLAIR",   "a-b",        "ab",
                           "a b",       "a.b",       "10",        "9",        "x10y",       "x9y",
                           "กา",        "ก-า",       "日本",      "にほん",   "Summer Night 123",
                           "A very long title that goes well past the sixteen bytes of the head, and on",
                           "A very long title that goes well past the sixteen bytes of the head, and so",
                           // The same letter with its marks in either order, and composed; keys
                           // longer than the first buffer, alike up to their last letters.
                           "a\u0302\u0323x",       "a\u0323\u0302x",       "\u1EADx",  "\u1EADy",
                           QString(400, u'é') + "b", QString(400, u'e') + "a"};
} // namespace

class TestZBCollationKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ordersAsTheCollator_data();
    void ordersAsTheCollator();
    void stopLeavesTheSortUnfinished();
};

void TestZBCollationKeys::ordersAsTheCollator_data()
{
    QTest::addColumn<QString>("locale");
    for (const char *locale : {"en_US", "sv_SE", "th_TH", "de_DE", "ja_JP"})
        QTest::newRow(locale) << QString::fromLatin1(locale);
}

void TestZBCollationKeys::ordersAsTheCollator()
{
    QFETCH(QString, locale);
    QCollator collator{QLocale(locale)};
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    ZBCollationKeys keys{QLocale(locale)};
    QVERIFY(keys.isValid());
    // Every text twice, tagged apart, so equal keys meet in the sort.
    for (int pass = 0; pass < 2; ++pass)
    {
        for (int i = 0; i < Texts.size(); ++i)
            keys.append(Texts[i], quint32(pass * Texts.size() + i));
    }
    QVERIFY(keys.sort({}));
    const auto text = [&](qsizetype i) { return Texts[qsizetype(keys.tagAt(i)) % Texts.size()]; };
    for (qsizetype i = 0; i + 1 < keys.size(); ++i)
    {
        // Sorted as the collator orders, equal exactly where it says equal.
        const int expected = collator.compare(text(i), text(i + 1));
        QVERIFY2(expected <= 0, qPrintable(text(i) + " before " + text(i + 1)));
        QCOMPARE(ZBCollationKeys::compare(keys, i, keys, i + 1) == 0, expected == 0);
    }
}

void TestZBCollationKeys::stopLeavesTheSortUnfinished()
{
    ZBCollationKeys keys{QLocale(QLocale::English)};
    for (int i = 0; i < 20000; ++i)
        keys.append(QString::number((i * 7919) % 20000), quint32(i));
    int asked = 0;
    QVERIFY(!keys.sort([&asked]() { return ++asked == 2; }));
}

QTEST_GUILESS_MAIN(TestZBCollationKeys)
#include "tst_zbcollationkeys.moc"
