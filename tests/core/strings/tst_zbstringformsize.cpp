#include <QtTest>

#include "localization/zblocalizer.h"
#include "strings/zbstringformsize.h"
#include "support/stringtablefixture.h"

class TestZBStringFormSize : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void sizes_data();
    void sizes();
    void unitNamesFallBackWithoutTableEntries();
    void unitNamesFollowTheTable();

    void durations_data();
    void durations();
};

void TestZBStringFormSize::initTestCase()
{
    qunsetenv("NVK_LANGUAGE");
}

void TestZBStringFormSize::cleanup()
{
    ZBLocalizer::setResourceRoot(QString());
    ZBLocalizer::setLanguage(QString());
}

void TestZBStringFormSize::sizes_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<bool>("binary");
    QTest::addColumn<bool>("showDecimal");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("rate");

    QTest::newRow("zero") << qint64(0) << true << false << "0 B" << false;
    QTest::newRow("negative") << qint64(-1) << true << true << "-1 B" << false;
    QTest::newRow("large negative stays in bytes") << qint64(-5000000) << false << false << "-5000000 B" << false;
    // Binary sizes switch units at the decimal points too.
    QTest::newRow("1000 binary") << qint64(1000) << true << false << "0 KB" << false;
    QTest::newRow("1000 binary with decimals") << qint64(1000) << true << true << "0.98 KB" << false;
    QTest::newRow("1023 binary") << qint64(1023) << true << false << "0 KB" << false;
    QTest::newRow("1024 binary") << qint64(1024) << true << false << "1 KB" << false;
    QTest::newRow("1536 binary with decimals") << qint64(1536) << true << true << "1.50 KB" << false;
    QTest::newRow("1999 decimal rounds down") << qint64(1999) << false << false << "1 KB" << false;
    QTest::newRow("1500 decimal with decimals") << qint64(1500) << false << true << "1.50 KB" << false;
    QTest::newRow("999999 binary") << qint64(999999) << true << false << "976 KB" << false;
    QTest::newRow("999999 decimal") << qint64(999999) << false << false << "999 KB" << false;
    QTest::newRow("999999 decimal with decimals") << qint64(999999) << false << true << "1000.00 KB" << false;
    QTest::newRow("1000000 decimal") << qint64(1000000) << false << false << "1 MB" << false;
    QTest::newRow("1000000 binary with decimals") << qint64(1000000) << true << true << "0.95 MB" << false;
    QTest::newRow("3 GB binary") << qint64(3221225472) << true << false << "3072 MB" << false;
    QTest::newRow("3 GB decimal") << qint64(3221225472) << false << false << "3221 MB" << false;
    QTest::newRow("petabyte stays in megabytes")
        << qint64(1000000000000000) << false << false << "1000000000 MB" << false;
    // The shipped tables name the byte unit "B" for both sizes and rates,
    // because both look up the key "byte".
    QTest::newRow("rate in bytes") << qint64(512) << true << false << "512 B" << true;
    QTest::newRow("rate in kilobytes binary") << qint64(1536) << true << true << "1.50 KB/s" << true;
    QTest::newRow("rate in kilobytes decimal") << qint64(250000) << false << false << "250 KB/s" << true;
    QTest::newRow("rate in megabytes binary") << qint64(2097152) << true << false << "2 MB/s" << true;
    QTest::newRow("rate in megabytes decimal") << qint64(12345678) << false << true << "12.35 MB/s" << true;
}

void TestZBStringFormSize::sizes()
{
    QFETCH(qint64, bytes);
    QFETCH(bool, binary);
    QFETCH(bool, showDecimal);
    QFETCH(QString, expected);
    QFETCH(bool, rate);

    ZBLocalizer::setLanguage(QStringLiteral("English"));
    const auto form = rate ? (binary ? &ZBStringFormSize::stringFromSpeedBin : &ZBStringFormSize::stringFromSpeedDec)
                           : (binary ? &ZBStringFormSize::stringFromSizeBin : &ZBStringFormSize::stringFromSizeDec);
    QCOMPARE(form(bytes, showDecimal), expected);
}

void TestZBStringFormSize::unitNamesFallBackWithoutTableEntries()
{
    nvktest::StringTableFixture tables;
    QVERIFY(tables.addTable(QStringLiteral("English"), QStringLiteral("Localizable"), {{"greeting", "Hello"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    QCOMPARE(ZBStringFormSize::sizeSpecifier(0), QStringLiteral("B"));
    QCOMPARE(ZBStringFormSize::sizeSpecifier(1), QStringLiteral("KB"));
    QCOMPARE(ZBStringFormSize::sizeSpecifier(2), QStringLiteral("MB"));
    QCOMPARE(ZBStringFormSize::speedSpecifier(0), QStringLiteral("B/s"));
    QCOMPARE(ZBStringFormSize::speedSpecifier(1), QStringLiteral("KB/s"));
    QCOMPARE(ZBStringFormSize::speedSpecifier(2), QStringLiteral("MB/s"));
    QCOMPARE(ZBStringFormSize::stringFromSpeedDec(10, false), QStringLiteral("10 B/s"));
    QCOMPARE(ZBStringFormSize::sizeSpecifier(3), QStringLiteral("?"));
    QCOMPARE(ZBStringFormSize::sizeSpecifier(-1), QStringLiteral("?"));
    QCOMPARE(ZBStringFormSize::speedSpecifier(3), QStringLiteral("?"));
    // Both templates end in a blank: the unit follows without one of its own.
    QCOMPARE(ZBStringFormSize::intTemplate() + ZBStringFormSize::floatTemplate(), QStringLiteral("%.0f %.2f "));
}

void TestZBStringFormSize::unitNamesFollowTheTable()
{
    nvktest::StringTableFixture tables;
    QVERIFY(tables.addTable(QStringLiteral("English"), QStringLiteral("Localizable"),
                            {{"byte", "bytes"}, {"kilobyte", "kB"}, {"kilobyte-sec", "kB per second"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    QCOMPARE(ZBStringFormSize::stringFromSizeDec(12, false), QStringLiteral("12 bytes"));
    // The shared key renames the rate unit as well.
    QCOMPARE(ZBStringFormSize::stringFromSpeedDec(12, false), QStringLiteral("12 bytes"));
    QCOMPARE(ZBStringFormSize::stringFromSizeDec(2000, false), QStringLiteral("2 kB"));
    QCOMPARE(ZBStringFormSize::stringFromSpeedDec(2000, false), QStringLiteral("2 kB per second"));
    QCOMPARE(ZBStringFormSize::stringFromSizeDec(2000000, false), QStringLiteral("2 MB"));
}

void TestZBStringFormSize::durations_data()
{
    QTest::addColumn<quint32>("seconds");
    QTest::addColumn<QString>("expected");

    QTest::newRow("zero") << quint32(0) << "00:00:00";
    QTest::newRow("nine seconds") << quint32(9) << "00:00:09";
    QTest::newRow("ten seconds") << quint32(10) << "00:00:10";
    QTest::newRow("one minute") << quint32(60) << "00:01:00";
    QTest::newRow("last second of the first hour") << quint32(3599) << "00:59:59";
    QTest::newRow("one hour") << quint32(3600) << "01:00:00";
    QTest::newRow("3725") << quint32(3725) << "01:02:05";
    QTest::newRow("a day is not wrapped") << quint32(86400) << "24:00:00";
    QTest::newRow("100 hours") << quint32(360000) << "100:00:00";
    QTest::newRow("largest count") << quint32(4294967295u) << "1193046:28:15";
}

void TestZBStringFormSize::durations()
{
    QFETCH(quint32, seconds);
    QFETCH(QString, expected);
    QCOMPARE(ZBStringFormSize::timeStringFromSeconds(seconds), expected);
}

QTEST_GUILESS_MAIN(TestZBStringFormSize)
#include "tst_zbstringformsize.moc"
