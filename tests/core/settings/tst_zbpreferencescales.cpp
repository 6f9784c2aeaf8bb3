#include <QtTest>

#include <limits>

#include "settings/zbpreferencescales.h"

using Scales = ZBPreferenceScales;

class TestZBPreferenceScales : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void intervalScale_data()
    {
        QTest::addColumn<int>("slider");
        QTest::addColumn<double>("seconds");
        QTest::newRow("first step") << 1 << 0.1;
        QTest::newRow("tenths") << 5 << 0.5;
        QTest::newRow("one second") << 10 << 1.0;
        QTest::newRow("whole seconds begin") << 11 << 2.0;
        QTest::newRow("one minute") << 69 << 60.0;
    }
    void intervalScale()
    {
        QFETCH(int, slider);
        QFETCH(double, seconds);
        QCOMPARE(Scales::intervalForSliderValue(slider), seconds);
        QCOMPARE(Scales::sliderValueForInterval(seconds), slider);
    }

    void storedValuesOpenInsideTheSliders_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<int>("interval");
        QTest::addColumn<int>("staying");
        const double nan = std::numeric_limits<double>::quiet_NaN();
        QTest::newRow("between steps rounds") << 2.4 << 11 << 2;
        QTest::newRow("just above a second") << 1.04 << 10 << 1;
        QTest::newRow("zero") << 0.0 << 1 << 1;
        QTest::newRow("negative") << -3.0 << 1 << 1;
        QTest::newRow("huge") << 1e300 << 69 << 60;
        QTest::newRow("not a number opens at the default") << nan << 10 << 10;
    }
    void storedValuesOpenInsideTheSliders()
    {
        QFETCH(double, seconds);
        QFETCH(int, interval);
        QFETCH(int, staying);
        QCOMPARE(Scales::sliderValueForInterval(seconds), interval);
        QCOMPARE(Scales::sliderValueForStayingTime(seconds), staying);
    }

    void everySliderStepRoundTrips()
    {
        for (int value = Scales::IntervalSliderMinimum; value <= Scales::IntervalSliderMaximum; ++value)
            QCOMPARE(Scales::sliderValueForInterval(Scales::intervalForSliderValue(value)), value);
        for (int value = Scales::StayingTimeSliderMinimum; value <= Scales::StayingTimeSliderMaximum; ++value)
            QCOMPARE(Scales::sliderValueForStayingTime(Scales::stayingTimeForSliderValue(value)), value);
    }

    void recentFolders_data()
    {
        QTest::addColumn<QStringList>("recent");
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<int>("maximum");
        QTest::addColumn<QStringList>("expected");
        const QStringList abc{"/a", "/b", "/c"};
        QTest::newRow("new folder goes first") << abc << "/n" << 10 << QStringList{"/n", "/a", "/b", "/c"};
        QTest::newRow("known folder moves to the front") << abc << "/c" << 10 << QStringList{"/c", "/a", "/b"};
        QTest::newRow("first stays first") << abc << "/a" << 10 << abc;
        QTest::newRow("same folder with a trailing slash")
            << QStringList{"/a", "/b/", "/c"} << "/b" << 10 << QStringList{"/b", "/a", "/c"};
        QTest::newRow("cut to the maximum") << abc << "/n" << 2 << QStringList{"/n", "/a"};
        QTest::newRow("maximum 0 keeps one") << abc << "/b" << 0 << QStringList{"/b"};
        QTest::newRow("nothing chosen changes nothing") << abc << "" << 1 << abc;
        QTest::newRow("empty list") << QStringList{} << "/n" << 10 << QStringList{"/n"};
    }
    void recentFolders()
    {
        QFETCH(QStringList, recent);
        QFETCH(QString, chosen);
        QFETCH(int, maximum);
        QFETCH(QStringList, expected);
        QCOMPARE(Scales::recentFoldersAfterChoosing(recent, chosen, maximum), expected);
    }
};

QTEST_APPLESS_MAIN(TestZBPreferenceScales)
#include "tst_zbpreferencescales.moc"
