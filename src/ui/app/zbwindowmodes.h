#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

#include "app/zbviewmodes.h"

class QMainWindow;
class QSplitter;
class ZBDetachedWindow;
class ZBFullScreenWindow;
class ZBFullscreenControlsWindow;
class ZBPlaybackController;
class ZBPlayerPanel;
class ZBSettings;

// The windows of the three display modes and the moves of the picture
// between them. The picture (the player's screen with every engine view in
// it) is handed from window to window as it is: the video keeps its GL
// context (the application shares GL contexts) and the Flash page keeps
// running, so playback goes on without a reload.
class ZBWindowModes : public QObject, private ZBViewModeHost
{
    Q_OBJECT

public:
    // `playerPane` is what the main window hides while the picture is away.
    ZBWindowModes(QMainWindow *mainWindow, ZBPlayerPanel *playerPanel, QWidget *playerPane, QSplitter *listSplitter,
                  ZBPlaybackController *playback, ZBSettings *settings, QObject *parent = nullptr);
    ~ZBWindowModes() override;

    ZBViewModes &modes() { return m_modes; }
    int displayMode() const { return m_modes.displayMode(); }
    // The floating tool window that follows the picture's window level.
    void setHUDWindow(QWidget *hud) { m_hud = hud; }
    // The window the picture is in now, and the picture itself.
    QWidget *pictureWindow() const;
    QWidget *picture() const;
    ZBDetachedWindow *detachedWindow() const { return m_detached.get(); }
    ZBFullscreenControlsWindow *fullscreenControls() const { return m_controls; }
    bool isDetachedWindowVisible() const;

    void switchToNormalMode() { m_modes.switchToNormalMode(); }
    void switchToDetachedMode() { m_modes.switchToDetachedMode(); }
    void switchToFullscreenMode() { m_modes.switchToFullscreenMode(); }
    void fsExitButtonClick() { m_modes.fsExitButtonClick(); }
    // The stopped player asks for a larger detached window than a playing one.
    void setDetachedWindowMinimalSize();
    // Saves the detached window's frame if it is open (at quit).
    void saveDetachedFrame();

Q_SIGNALS:
    void displayModeChanged(int displayMode);
    // The picture moved to another window.
    void pictureWindowChanged(QWidget *window);
    // The list pane's show/hide button is of no use while the picture is away.
    void listPaneButtonEnabled(bool enabled);

private:
    void rememberListPaneHeight() override;
    void showDetachedWindow() override;
    void hideDetachedWindow() override;
    void enterFullscreen() override;
    void exitFullscreen() override;
    void hideHUD() override;
    bool isHUDVisible() const override;
    void applyWindowLevels(bool mainOnTop, bool detachedOnTop) override;
    void restoreListPaneHeight();
    void announce();
    static void setOnTop(QWidget *window, bool onTop);

    QMainWindow *m_mainWindow;
    ZBPlayerPanel *m_playerPanel;
    QWidget *m_playerPane;
    QSplitter *m_listSplitter;
    ZBPlaybackController *m_playback;
    ZBSettings *m_settings;
    ZBViewModes m_modes;
    QList<int> m_playlistSubViewDimension;
    std::unique_ptr<ZBDetachedWindow> m_detached;
    std::unique_ptr<ZBFullScreenWindow> m_fullScreenWindow;
    ZBFullscreenControlsWindow *m_controls = nullptr;
    QPointer<QWidget> m_hud;
    bool m_mainOnTop = false;
    bool m_detachedOnTop = false;
};
