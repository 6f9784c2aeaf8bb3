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

    void naturalText_data();
    void naturalText();
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

void TestZBStringDateAdditions::naturalText_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QDateTime>("date");
    QTest::addColumn<QDateTime>("now");
    // "%t" stands for the locale's short time of the date.
    QTest::addColumn<QString>("expected");

    const QString en = QStringLiteral("English");
    const QString de = QStringLiteral("German");
    const QDateTime june15 = local(2024, 6, 15, 9, 30);
    const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    QTest::newRow("a second before midnight is yesterday")
        << en << local(2024, 3, 9, 23, 59, 59) << local(2024, 3, 10, 0, 0, 30) << "Yesterday, %t";
    QTest::newRow("midnight is today") << en << local(2024, 3, 10, 0, 0, 0) << local(2024, 3, 10, 0, 0, 30)
                                       << "Today, %t";
    QTest::newRow("last second of the day is today")
        << en << local(2024, 3, 10, 23, 59, 59) << local(2024, 3, 10, 0, 0, 30) << "Today, %t";
    QTest::newRow("next midnight is tomorrow")
        << en << local(2024, 3, 11, 0, 0, 0) << local(2024, 3, 10, 23, 59, 59) << "Tomorrow, %t";
    QTest::newRow("across a month end") << en << local(2024, 2, 29, 18, 0) << local(2024, 3, 1, 6, 0)
                                        << "Yesterday, %t";
    QTest::newRow("across a year end") << en << local(2025, 1, 1, 0, 5) << local(2024, 12, 31, 22, 0) << "Tomorrow, %t";
    QTest::newRow("German yesterday") << de << local(2024, 6, 14, 12, 0) << june15 << "Gestern, 12:00";
    QTest::newRow("German today") << de << local(2024, 6, 15, 7, 5) << june15 << "Heute, 07:05";
    QTest::newRow("German tomorrow") << de << local(2024, 6, 16, 20, 45) << june15 << "Morgen, 20:45";
    QTest::newRow("German other day") << de << local(2023, 12, 24, 18, 30) << june15 << "24.12.2023, 18:30";
    QTest::newRow("English other day") << en << local(2024, 6, 17, 8, 0) << june15 << "Jun 17, 2024, %t";
    QTest::newRow("invalid date is blank") << en << QDateTime() << june15 << "";
    QTest::newRow("reference date is blank") << en << reference << june15 << "";
    QTest::newRow("reference date in another zone") << en << reference.toTimeZone(QTimeZone(3600 * 5)) << june15 << "";
    QTest::newRow("a second after the reference") << en << reference.addSecs(1) << reference.addSecs(2) << "Today, %t";
}

void TestZBStringDateAdditions::naturalText()
{
    QFETCH(QString, language);
    QFETCH(QDateTime, date);
    QFETCH(QDateTime, now);
    QFETCH(QString, expected);

    ZBLocalizer::setLanguage(language);
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(date, now),
             QString(expected).replace(QLatin1String("%t"), shortTime(date.time())));
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
