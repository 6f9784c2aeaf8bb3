#include <QtTest>

#include "localization/zblocalizer.h"
#include "strings/zbstringformsize.h"
#include "support/stringtablefixture.h"

class TestZBStringFormSize : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void sizes_data();
    void sizes();
    void unitNamesFollowTheTable();
    void durations_data();
    void durations();
};

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
    QTest::addColumn<bool>("rate");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, qint64 bytes, bool binary, bool showDecimal, bool rate, const char *expected)
    {
        QTest::newRow(name) << bytes << binary << showDecimal << rate << QString::fromUtf8(expected);
    };

    row("large negative stays in bytes", -5000000, false, false, false, "-5000000 B");
    row("999 decimal", 999, false, true, false, "999 B");
    // Binary sizes switch units at the decimal points too.
    row("1000 binary with decimals", 1000, true, true, false, "0.98 KB");
    row("1999 decimal rounds down", 1999, false, false, false, "1 KB");
    row("999999 decimal with decimals", 999999, false, true, false, "1000.00 KB");
    row("1000000 binary with decimals", 1000000, true, true, false, "0.95 MB");
    row("petabyte stays in megabytes", 1000000000000000, false, false, false, "1000000000 MB");
    row("rate in kilobytes binary", 1536, true, true, true, "1.50 KB/s");
    row("rate in megabytes decimal", 12345678, false, true, true, "12.35 MB/s");
}

void TestZBStringFormSize::sizes()
{
    QFETCH(qint64, bytes);
    QFETCH(bool, binary);
    QFETCH(bool, showDecimal);
    QFETCH(bool, rate);
    QFETCH(QString, expected);

    ZBLocalizer::setLanguage(QStringLiteral("English"));
    const auto form = rate ? (binary ? &ZBStringFormSize::stringFromSpeedBin : &ZBStringFormSize::stringFromSpeedDec)
                           : (binary ? &ZBStringFormSize::stringFromSizeBin : &ZBStringFormSize::stringFromSizeDec);
    QCOMPARE(form(bytes, showDecimal), expected);
}

void TestZBStringFormSize::unitNamesFollowTheTable()
{
    nvktest::StringTableFixture tables;
    QVERIFY(tables.addTable(QStringLiteral("English"), QStringLiteral("Localizable"),
                            {{"byte", "bytes"}, {"kilobyte-sec", "kB per second"}}));
    ZBLocalizer::setResourceRoot(tables.root());
    ZBLocalizer::setLanguage(QStringLiteral("English"));

    // The shared key renames the rate unit as well.
    QCOMPARE(ZBStringFormSize::stringFromSpeedDec(12, false), QStringLiteral("12 bytes"));
    QCOMPARE(ZBStringFormSize::stringFromSpeedDec(2000, false), QStringLiteral("2 kB per second"));
    // Units the table lacks fall back to their English names.
    QCOMPARE(ZBStringFormSize::stringFromSizeDec(2000, false), QStringLiteral("2 KB"));
    QCOMPARE(ZBStringFormSize::sizeSpecifier(3), QStringLiteral("?"));
}

void TestZBStringFormSize::durations_data()
{
    QTest::addColumn<quint32>("seconds");
    QTest::addColumn<QString>("expected");

    QTest::newRow("ten seconds") << quint32(10) << "00:00:10";
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
