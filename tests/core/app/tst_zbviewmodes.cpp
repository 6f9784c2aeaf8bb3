#include <QTest>

#include "app/zbcontrolsfade.h"
#include "app/zbviewmodes.h"

namespace
{
// Records what the window modes ask of the windows, in order.
class RecordingHost : public ZBViewModeHost
{
public:
    void rememberListPaneHeight() override { calls << QStringLiteral("remember"); }
    void showDetachedWindow() override
    {
        calls << QStringLiteral("showDetached");
        detachedVisible = true;
    }
    void hideDetachedWindow() override
    {
        calls << QStringLiteral("hideDetached");
        detachedVisible = false;
    }
    void enterFullscreen() override { calls << QStringLiteral("enterFullscreen"); }
    void exitFullscreen() override { calls << QStringLiteral("exitFullscreen"); }
    void hideHUD() override
    {
        calls << QStringLiteral("hideHUD");
        hudVisible = false;
    }
    bool isHUDVisible() const override { return hudVisible; }
    void applyWindowLevels(bool mainOnTop, bool detachedOnTop) override
    {
        levels = QStringLiteral("%1%2").arg(int(mainOnTop)).arg(int(detachedOnTop));
    }

    QStringList calls;
    QString levels;
    bool detachedVisible = false;
    bool hudVisible = false;
};
} // namespace

class TestZBViewModes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Each row: the commands given, one letter each, from normal mode with
    // the main window on top; then the mode, on-top mode and window levels
    // reached, and whether the detached window shows.
    void transitions_data()
    {
        QTest::addColumn<QString>("commands");
        QTest::addColumn<int>("displayMode");
        QTest::addColumn<int>("onTopMode");
        QTest::addColumn<QString>("levels");
        QTest::addColumn<bool>("detachedVisible");
        // d detach button, f fullscreen command, x exit fullscreen,
        // n normal mode, D detached mode, t always-on-top button.
        QTest::newRow("detach raises the detached window") << "d" << 1 << 2 << "01" << true;
        QTest::newRow("detach twice comes home") << "dd" << 0 << 1 << "10" << false;
        QTest::newRow("fullscreen from detached hides it") << "df" << 2 << 1 << "10" << false;
        QTest::newRow("leaving fullscreen ends in normal") << "dfx" << 0 << 1 << "10" << false;
        QTest::newRow("fullscreen command toggles") << "ff" << 0 << 1 << "" << false;
        QTest::newRow("detached mode from fullscreen") << "fD" << 1 << 2 << "01" << true;
        QTest::newRow("normal mode from detached") << "dn" << 0 << 1 << "10" << false;
        QTest::newRow("on top off then detach") << "td" << 1 << 0 << "00" << true;
        QTest::newRow("on top back on while detached") << "tdt" << 1 << 2 << "01" << true;
        QTest::newRow("no detached window over fullscreen") << "fd" << 2 << 1 << "" << false;
    }

    void transitions()
    {
        QFETCH(QString, commands);
        RecordingHost host;
        ZBViewModes modes(host);
        for (const QChar command : commands)
        {
            switch (command.toLatin1())
            {
            case 'd':
                modes.showOrHidedetachedWindow();
                break;
            case 'f':
                modes.switchToFullscreenMode();
                break;
            case 'x':
                modes.fsExitButtonClick();
                break;
            case 'n':
                modes.switchToNormalMode();
                break;
            case 'D':
                modes.switchToDetachedMode();
                break;
            case 't':
                modes.alwaysOnTopButtonClick();
                break;
            }
        }
        QTEST(modes.displayMode(), "displayMode");
        QTEST(modes.onTopMode(), "onTopMode");
        QTEST(host.levels, "levels");
        QTEST(host.detachedVisible, "detachedVisible");
    }

    // The picture comes home from the detached window before fullscreen
    // begins (where the list pane's height is taken again), and the HUD
    // closes first.
    void fullscreenFromDetachedOrder()
    {
        RecordingHost host;
        ZBViewModes modes(host);
        host.hudVisible = true;
        modes.showOrHidedetachedWindow();
        modes.switchToFullscreenMode();
        QCOMPARE(host.calls, QStringList({"remember", "showDetached", "hideDetached", "remember", "hideHUD", "enterFullscreen"}));
    }

    void controlsFade()
    {
        ZBControlsFade fade;
        const auto run = [&fade](double seconds) {
            for (int i = 0; i < qRound(seconds / ZBControlsFade::TickSeconds); ++i)
                fade.tick();
        };
        run(1.3);
        QCOMPARE(fade.alpha(), 0.0);
        QVERIFY(fade.isSettled());
        fade.mouseMoved();
        run(0.25);
        QCOMPARE(fade.alpha(), 1.0);
        run(0.70);
        QCOMPARE(fade.alpha(), 1.0);
        // Still up a second after the movement, gone a quarter later.
        fade.mouseMoved();
        run(0.99);
        QCOMPARE(fade.alpha(), 1.0);
        run(0.26);
        QCOMPARE(fade.alpha(), 0.0);
    }

    void detachedMinimumSize()
    {
        QCOMPARE(ZBViewModes::detachedMinimumSize(true), QSize(630, 305));
        QCOMPARE(ZBViewModes::detachedMinimumSize(false), QSize(200, 150));
    }
};

QTEST_APPLESS_MAIN(TestZBViewModes)
#include "tst_zbviewmodes.moc"
