#pragma once

#include <QSize>

// What the window modes ask of the windows. The program's windows implement
// it; the rules of when to call what stay in ZBViewModes.
class ZBViewModeHost
{
public:
    virtual ~ZBViewModeHost() = default;

    // The list pane's height is kept while the picture is elsewhere, so the
    // pane comes back as the user left it.
    virtual void rememberListPaneHeight() = 0;
    // Moves the picture into the detached window and shows that window.
    virtual void showDetachedWindow() = 0;
    // Keeps the detached window's frame, hides it and brings the picture
    // home to the main window.
    virtual void hideDetachedWindow() = 0;
    // Covers the main window's screen with the picture and the floating
    // controls.
    virtual void enterFullscreen() = 0;
    // Closes the fullscreen windows and brings the picture home.
    virtual void exitFullscreen() = 0;
    virtual void hideHUD() = 0;
    virtual bool isHUDVisible() const = 0;
    // Applies the levels of ZBViewModes::levels().
    virtual void applyWindowLevels(bool mainOnTop, bool detachedOnTop) = 0;
};

// Where the picture is (normal, detached, fullscreen) and which window stays
// on top, with the transitions between them. Every way into or out of a mode
// goes through here, so that fullscreen entered from the detached window
// always leaves it hidden, and leaving fullscreen always ends in normal mode.
class ZBViewModes
{
public:
    enum DisplayMode
    {
        Normal = 0,
        Detached = 1,
        Fullscreen = 2
    };
    enum OnTopMode
    {
        OnTopOff = 0,
        MainOnTop = 1,
        DetachedOnTop = 2
    };

    explicit ZBViewModes(ZBViewModeHost &host);

    int displayMode() const { return m_displayMode; }
    int onTopMode() const { return m_onTopMode; }
    // The stored setting; values other than 0, 1 and 2 are kept but change
    // no window.
    void setInitialOnTopMode(int mode) { m_onTopMode = mode; }

    void switchToNormalMode();
    void switchToDetachedMode();
    void switchToFullscreenMode();
    // The detach button and the "DetachedWindowClose" of its close button.
    void showOrHidedetachedWindow();
    void fullscreenWindowButtonClick();
    void fsExitButtonClick();
    void alwaysOnTopButtonClick();
    void setOnTopMode();

    // The smallest the detached window may be: the start screen needs room,
    // a playing picture much less.
    static QSize detachedMinimumSize(bool playbackStopped);

private:
    ZBViewModeHost &m_host;
    int m_displayMode = Normal;
    int m_onTopMode = MainOnTop;
};
