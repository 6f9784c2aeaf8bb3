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
} // namespace

class TestZBStringDateAdditions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void naturalText_data();
    void naturalText();
    void dayWordsAreCapitalisedAndNowIsTheClock();
};

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

    const QString en = QStringLiteral("English"), de = QStringLiteral("German");
    const QDateTime june15 = local(2024, 6, 15, 9, 30);
    const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    QTest::newRow("a second before midnight is yesterday")
        << en << local(2024, 3, 9, 23, 59, 59) << local(2024, 3, 10, 0, 0, 30) << "Yesterday, %t";
    QTest::newRow("last second of the day is today")
        << en << local(2024, 3, 10, 23, 59, 59) << local(2024, 3, 10, 0, 0, 30) << "Today, %t";
    QTest::newRow("across a year end") << en << local(2025, 1, 1, 0, 0) << local(2024, 12, 31, 22, 0) << "Tomorrow, %t";
    QTest::newRow("German yesterday") << de << local(2024, 6, 14, 12, 0) << june15 << "Gestern, 12:00";
    QTest::newRow("German other day") << de << local(2023, 12, 24, 18, 30) << june15 << "24.12.2023, 18:30";
    QTest::newRow("invalid date is blank") << en << QDateTime() << june15 << "";
    QTest::newRow("reference date in another zone") << en << reference.toTimeZone(QTimeZone(3600 * 5)) << june15 << "";
}

void TestZBStringDateAdditions::naturalText()
{
    QFETCH(QString, language);
    QFETCH(QDateTime, date);
    QFETCH(QDateTime, now);
    QFETCH(QString, expected);

    ZBLocalizer::setLanguage(language);
    QCOMPARE(ZBStringDateAdditions::naturalStringFromDate(date, now),
             QString(expected).replace(QLatin1String("%t"),
                                       ZBLocalizer::locale().toString(date.time(), QLocale::ShortFormat)));
}

void TestZBStringDateAdditions::dayWordsAreCapitalisedAndNowIsTheClock()
{
    nvktest::StringTableFixture tables;
    QVERIFY(tables.addTable(QStringLiteral("English"), QStringLiteral("Localizable"),
                            {{"dateYesterday", "yesterday"}, {"dateTomorrow", "éventuellement"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    const QDateTime now = QDateTime::currentDateTime();
    QVERIFY(ZBStringDateAdditions::naturalStringFromDate(now.addDays(-1)).startsWith(QLatin1String("Yesterday, ")));
    QVERIFY(ZBStringDateAdditions::naturalStringFromDate(now.addDays(1), now)
                .startsWith(QStringLiteral("Éventuellement, ")));
}

QTEST_GUILESS_MAIN(TestZBStringDateAdditions)
#include "tst_zbstringdateadditions.moc"
