#include <QTest>

#include "web/zbledstate.h"

// Where the status panel's change-page and cancel buttons lead.
class TestZBLedState : public QObject
{
    Q_OBJECT

private:
    static constexpr int Playback = ZBLedState::PlaybackLedMode, Screenshot = ZBLedState::ScreenshotLedMode,
                         Download = ZBLedState::DownloadLedMode;

    static ZBLedState stateIn(int mode)
    {
        ZBLedState state;
        if (mode == Screenshot)
            state.switchToScreenshotLedMode();
        else if (mode == Download)
            state.switchToDownloadLedMode();
        return state;
    }

private Q_SLOTS:
    void changeLedViewModeCycles_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<bool>("series");
        QTest::addColumn<bool>("downloads");
        QTest::addColumn<QList<int>>("modesAfterPresses");
        QTest::addColumn<bool>("buttonEnabled");
        QTest::newRow("nothing runs: the button is off and a press changes nothing")
            << Playback << false << false << QList<int>{Playback, Playback} << false;
        QTest::newRow("download without series alternates")
            << Playback << false << true << QList<int>{Download, Playback, Download} << true;
        QTest::newRow("series without download alternates")
            << Playback << true << false << QList<int>{Screenshot, Playback} << true;
        QTest::newRow("both run: playback, download, screenshot")
            << Playback << true << true << QList<int>{Download, Screenshot, Playback, Download} << true;
        QTest::newRow("screenshot page after its series ended")
            << Screenshot << false << false << QList<int>{Playback, Playback} << false;
        QTest::newRow("screenshot page with downloads running")
            << Screenshot << false << true << QList<int>{Playback, Download} << true;
        QTest::newRow("download page after the downloads ended")
            << Download << false << false << QList<int>{Playback} << false;
        QTest::newRow("download page with a series running")
            << Download << true << false << QList<int>{Screenshot, Playback} << true;
    }
    void changeLedViewModeCycles()
    {
        QFETCH(int, from);
        QFETCH(bool, series);
        QFETCH(bool, downloads);
        QFETCH(QList<int>, modesAfterPresses);
        ZBLedState state = stateIn(from);
        QList<int> modes;
        for (qsizetype i = 0; i < modesAfterPresses.size(); ++i)
            modes << state.changeLedViewMode(series, downloads);
        QCOMPARE(modes, modesAfterPresses);
        QCOMPARE(state.currentLedDisplayMode(), modesAfterPresses.last());
        QTEST(ZBLedState::isChangePageEnabled(series, downloads), "buttonEnabled");
    }

    void pageAndCancel_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("series");
        QTest::addColumn<bool>("downloads");
        QTest::addColumn<ZBLedState::Operation>("cancelled");
        QTest::addColumn<int>("modeAfterCancel");
        using Op = ZBLedState::Operation;
        QTest::newRow("series page cancels the series") << Screenshot << true << true << Op::Series << Playback;
        QTest::newRow("download page cancels downloads, back to the series")
            << Download << true << true << Op::Downloads << Screenshot;
        QTest::newRow("download page alone, back to playback")
            << Download << false << true << Op::Downloads << Playback;
        QTest::newRow("stale series page cancels nothing") << Screenshot << false << true << Op::None << Playback;
        QTest::newRow("playback page cancels nothing") << Playback << true << false << Op::None << Screenshot;
    }
    void pageAndCancel()
    {
        QFETCH(int, mode);
        ZBLedState state = stateIn(mode);
        // The browser's status covers every operation while a page is shown.
        for (const int contentMode : {0, 3})
            QCOMPARE(state.visiblePage(contentMode), int(ZBLedState::BrowsingPage));
        for (const int contentMode : {1, 2})
            QCOMPARE(state.visiblePage(contentMode), mode + 1);
        QFETCH(bool, series);
        QFETCH(bool, downloads);
        QTEST(state.cancelCurrentOperation(series, downloads), "cancelled");
        QTEST(state.currentLedDisplayMode(), "modeAfterCancel");
    }
};

QTEST_GUILESS_MAIN(TestZBLedState)
#include "tst_zbledstate.moc"
