#include <QTest>

#include "web/zbledstate.h"

using Op = ZBLedState::Operation;
constexpr int P = ZBLedState::PlaybackLedMode, S = ZBLedState::ScreenshotLedMode, D = ZBLedState::DownloadLedMode;

// Where the status panel's change-page and cancel buttons lead.
class TestZBLedState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void buttonsFromEachPage_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<bool>("series");
        QTest::addColumn<bool>("downloads");
        QTest::addColumn<QList<int>>("modesAfterPresses");
        QTest::addColumn<Op>("cancelled");
        QTest::addColumn<int>("modeAfterCancel");
        QTest::newRow("nothing runs: button off, a press changes nothing")
            << P << false << false << QList{P, P} << Op::None << P;
        QTest::newRow("download without series alternates") << P << false << true << QList{D, P, D} << Op::None << D;
        QTest::newRow("series without download alternates") << P << true << false << QList{S, P} << Op::None << S;
        QTest::newRow("both: playback, download, screenshot") << P << true << true << QList{D, S, P} << Op::None << D;
        QTest::newRow("series page, series ended") << S << false << false << QList{P, P} << Op::None << P;
        QTest::newRow("series page, downloads run") << S << true << true << QList{P, D} << Op::Series << P;
        QTest::newRow("download page, downloads ended") << D << false << false << QList{P} << Op::None << P;
        QTest::newRow("download page, series runs") << D << true << true << QList{S, P} << Op::Downloads << S;
        QTest::newRow("download page alone") << D << false << true << QList{P, D} << Op::Downloads << P;
    }
    void buttonsFromEachPage()
    {
        QFETCH(int, from);
        QFETCH(bool, series);
        QFETCH(bool, downloads);
        QFETCH(QList<int>, modesAfterPresses);
        ZBLedState pressed;
        if (from != P)
            from == S ? pressed.switchToScreenshotLedMode() : pressed.switchToDownloadLedMode();
        ZBLedState cancelled = pressed;
        // The browser's status covers every operation while a page is shown.
        QCOMPARE(
            QList({pressed.visiblePage(0), pressed.visiblePage(1), pressed.visiblePage(2), pressed.visiblePage(3)}),
            QList({0, from + 1, from + 1, 0}));
        QList<int> modes;
        for (qsizetype i = 0; i < modesAfterPresses.size(); ++i)
            modes << pressed.changeLedViewMode(series, downloads);
        QCOMPARE(modes, modesAfterPresses);
        // The playback page's button is on exactly when pressing it leads elsewhere.
        QCOMPARE(ZBLedState::isChangePageEnabled(series, downloads),
                 ZBLedState().changeLedViewMode(series, downloads) != P);
        QTEST(cancelled.cancelCurrentOperation(series, downloads), "cancelled");
        QTEST(cancelled.currentLedDisplayMode(), "modeAfterCancel");
    }
};

QTEST_GUILESS_MAIN(TestZBLedState)
#include "tst_zbledstate.moc"
