#include <QTimeZone>
#include <QtTest>

#include "localization/zblocalizer.h"
#include "strings/zbstringdateadditions.h"
#include "support/stringtablefixture.h"

namespace
{
QDateTime local(int year, int month, int day, int hour, int minute, int second = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::LocalTime);
}

QString shortTime(const QTime &time)
{
    return ZBLocalizer::locale().toString(time, QLocale::ShortFormat);
}
} // namespace

class TestZBStringDateAdditions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void dayWordsAroundMidnight_data();
    void dayWordsAroundMidnight();
    void noonYesterdayInGerman();
    void otherDaysShowTheMediumDate();
    void referenceDateIsBlank();
    void invalidDateIsBlank();
    void dayWordsAreCapitalised();
    void nowDefaultsToTheClock();
};

void TestZBStringDateAdditions::initTestCase()
{
    qunsetenv("NVK_LANGUAGE");
}

void TestZBStringDateAdditions::cleanup()
{
    ZBLocalizer::setResourceRoot(QString());
    ZBLocalizer::setLanguage(QString());
}

void TestZBStringDateAdditions::dayWordsAroundMidnight_data()
{
    QTest::addColumn<QDateTime>("date");
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<QString>("word");

    QTest::newRow("a second before midnight is yesterday")
        << local(2024, 3, 9, 23, 59, 59) << local(2024, 3, 10, 0, 0, 30) << "Yesterday";
    QTest::newRow("midnight is today") << local(2024, 3, 10, 0, 0, 0) << local(2024, 3, 10, 0, 0, 30) << "Today";
    QTest::newRow("last second of the day is today")
        << local(2024, 3, 10, 23, 59, 59) << local(2024, 3, 10, 0, 0, 30) << "Today";
    QTest::newRow("next midnight is tomorrow")
        << local(2024, 3, 11, 0, 0, 0) << local(2024, 3, 10, 23, 59, 59) << "Tomorrow";
    QTest::newRow("across a month end") << local(2024, 2, 29, 18, 0) << local(2024, 3, 1, 6, 0) << "Yesterday";
    QTest::newRow("across a year end") << local(2025, 1, 1, 0, 5) << local(2024, 12, 31, 22, 0) << "Tomorrow";
}

void TestZBStringDateAdditions::dayWordsAroundMidnight()
{
    QFETCH(QDateTime, date);
    QFETCH(QDateTime, now);
    QFETCH(QString, word);

    ZBLocalizer::setLanguage(QStringLiteral("English"));
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(date, now),
             word + QStringLiteral(", ") + shortTime(date.time()));
}

void TestZBStringDateAdditions::noonYesterdayInGerman()
{
    ZBLocalizer::setLanguage(QStringLiteral("German"));
    const QDateTime now = local(2024, 6, 15, 9, 30);
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(local(2024, 6, 14, 12, 0), now),
             QStringLiteral("Gestern, 12:00"));
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(local(2024, 6, 15, 7, 5), now),
             QStringLiteral("Heute, 07:05"));
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(local(2024, 6, 16, 20, 45), now),
             QStringLiteral("Morgen, 20:45"));
}

void TestZBStringDateAdditions::otherDaysShowTheMediumDate()
{
    const QDateTime now = local(2024, 6, 15, 9, 30);

    ZBLocalizer::setLanguage(QStringLiteral("German"));
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(local(2024, 6, 13, 12, 0), now),
             QStringLiteral("13.06.2024, 12:00"));
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(local(2023, 12, 24, 18, 30), now),
             QStringLiteral("24.12.2023, 18:30"));

    ZBLocalizer::setLanguage(QStringLiteral("English"));
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(local(2024, 6, 17, 8, 0), now),
             QStringLiteral("Jun 17, 2024, ") + shortTime(QTime(8, 0)));
}

void TestZBStringDateAdditions::referenceDateIsBlank()
{
    ZBLocalizer::setLanguage(QStringLiteral("English"));
    const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    const QDateTime now = local(2024, 6, 15, 9, 30);
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(reference, now), QString());
    // The same instant written in another zone is still the reference date.
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(reference.toTimeZone(QTimeZone(3600 * 5)), now), QString());
    QVERIFY(!ZBStringDateAdditions::naturalStringFromDate(reference.addSecs(1), now).isEmpty());
    // Shown as "today" when today is that very day, only a second later.
    QVERIFY(ZBStringDateAdditions::naturalStringFromDate(reference.addSecs(1), reference.addSecs(2))
                .startsWith(QLatin1String("Today, ")));
}

void TestZBStringDateAdditions::invalidDateIsBlank()
{
    ZBLocalizer::setLanguage(QStringLiteral("English"));
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(QDateTime(), local(2024, 6, 15, 9, 30)), QString());
}

void TestZBStringDateAdditions::dayWordsAreCapitalised()
{
    nvktest::StringTableFixture tables;
    QVERIFY(
        tables.addTable(QStringLiteral("English"), QStringLiteral("Localizable"),
                        {{"dateToday", "today"}, {"dateYesterday", "yesterday"}, {"dateTomorrow", "éventuellement"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    const QDateTime now = local(2024, 6, 15, 9, 30);
    QVERIFY(ZBStringDateAdditions::naturalStringFromDate(local(2024, 6, 15, 8, 0), now)
                .startsWith(QLatin1String("Today, ")));
    QVERIFY(ZBStringDateAdditions::naturalStringFromDate(local(2024, 6, 14, 8, 0), now)
                .startsWith(QLatin1String("Yesterday, ")));
    QVERIFY(ZBStringDateAdditions::naturalStringFromDate(local(2024, 6, 16, 8, 0), now)
                .startsWith(QStringLiteral("Éventuellement, ")));
}

void TestZBStringDateAdditions::nowDefaultsToTheClock()
{
    ZBLocalizer::setLanguage(QStringLiteral("English"));
    const QDateTime aDayAgo = QDateTime::currentDateTime().addDays(-1);
    QVERIFY(ZBStringDateAdditions::naturalStringFromDate(aDayAgo).startsWith(QLatin1String("Yesterday, ")));
}

QTEST_GUILESS_MAIN(TestZBStringDateAdditions)
#include "tst_zbstringdateadditions.moc"
