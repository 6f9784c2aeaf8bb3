#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include "ui/web/zbled.h"

// The status panel as the user steps through it with its buttons.
class TestZBLed : public QObject
{
    Q_OBJECT

private:
    static void click(ZBLed &led, const char *button)
    {
        auto *widget = led.findChild<QToolButton *>(QLatin1String(button));
        QVERIFY(widget);
        QVERIFY(widget->isEnabled());
        QTest::mouseClick(widget, Qt::LeftButton);
    }

private Q_SLOTS:
    void buttonsStepThroughTheRunningOperations()
    {
        ZBLed led;
        led.resize(300, led.height());
        led.show();
        QSignalSpy cancelSeries(&led, &ZBLed::cancelSeriesRequested);
        QSignalSpy cancelDownloads(&led, &ZBLed::cancelDownloadsRequested);
        QCOMPARE(led.currentPage(), int(ZBLedState::PlaybackPage));
        QVERIFY(!led.findChild<QToolButton *>("ledPlaybackChangePage")->isEnabled());

        led.setDownloadsRunning(true);
        click(led, "ledPlaybackChangePage");
        QCOMPARE(led.currentPage(), int(ZBLedState::DownloadPage));
        // A series started meanwhile shows at once; the browser covers both.
        led.setSeriesRunning(true);
        QCOMPARE(led.currentPage(), int(ZBLedState::ScreenshotPage));
        led.setContentMode(0);
        QCOMPARE(led.currentPage(), int(ZBLedState::BrowsingPage));
        led.setContentMode(2);
        QCOMPARE(led.currentPage(), int(ZBLedState::ScreenshotPage));

        click(led, "ledScreenshotCancel");
        QCOMPARE(cancelSeries.count(), 1);
        led.setSeriesRunning(false);
        QCOMPARE(led.currentPage(), int(ZBLedState::PlaybackPage));
        click(led, "ledPlaybackChangePage");
        click(led, "ledDownloadCancel");
        QCOMPARE(cancelDownloads.count(), 1);
        QCOMPARE(led.currentPage(), int(ZBLedState::PlaybackPage));
        // The last download of a batch ending on its page gives the page up.
        click(led, "ledPlaybackChangePage");
        led.setDownloadsRunning(false);
        QCOMPARE(led.currentPage(), int(ZBLedState::PlaybackPage));
        QCOMPARE(cancelSeries.count() + cancelDownloads.count(), 2);
    }
};

QTEST_MAIN(TestZBLed)
#include "tst_zbled.moc"
