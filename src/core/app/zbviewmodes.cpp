#include "app/zbviewmodes.h"

ZBViewModes::ZBViewModes(ZBViewModeHost &host)
    : m_host(host)
{
}

void ZBViewModes::switchToNormalMode()
{
    if (m_displayMode == Fullscreen)
        fsExitButtonClick();
    else if (m_displayMode == Detached)
        showOrHidedetachedWindow();
}

void ZBViewModes::switchToDetachedMode()
{
    if (m_displayMode == Fullscreen)
        fsExitButtonClick();
    showOrHidedetachedWindow();
}

void ZBViewModes::switchToFullscreenMode()
{
    if (m_displayMode == Fullscreen)
    {
        fsExitButtonClick();
        return;
    }
    if (m_displayMode == Detached)
        showOrHidedetachedWindow();
    fullscreenWindowButtonClick();
}

void ZBViewModes::showOrHidedetachedWindow()
{
    if (m_displayMode == Detached)
    {
        m_host.hideDetachedWindow();
        m_displayMode = Normal;
        if (m_onTopMode == DetachedOnTop)
            m_onTopMode = MainOnTop;
    }
    else if (m_displayMode == Normal)
    {
        m_host.rememberListPaneHeight();
        m_host.showDetachedWindow();
        m_displayMode = Detached;
        if (m_onTopMode == MainOnTop)
            m_onTopMode = DetachedOnTop;
    }
    else
    {
        // The detached window never shows beside the fullscreen picture.
        return;
    }
    setOnTopMode();
}

void ZBViewModes::fullscreenWindowButtonClick()
{
    if (m_displayMode == Fullscreen)
        return;
    if (m_displayMode != Detached)
        m_host.rememberListPaneHeight();
    if (m_host.isHUDVisible())
        m_host.hideHUD();
    if (m_displayMode == Detached)
        showOrHidedetachedWindow();
    m_host.enterFullscreen();
    m_displayMode = Fullscreen;
}

void ZBViewModes::fsExitButtonClick()
{
    if (m_displayMode != Fullscreen)
        return;
    m_host.exitFullscreen();
    m_displayMode = Normal;
}

void ZBViewModes::alwaysOnTopButtonClick()
{
    if (m_onTopMode == MainOnTop || m_onTopMode == DetachedOnTop)
        m_onTopMode = OnTopOff;
    else
        m_onTopMode = m_displayMode == Detached ? DetachedOnTop : MainOnTop;
    setOnTopMode();
}

void ZBViewModes::setOnTopMode()
{
    switch (m_onTopMode)
    {
    case OnTopOff:
        m_host.applyWindowLevels(false, false);
        break;
    case MainOnTop:
        m_host.applyWindowLevels(true, false);
        break;
    case DetachedOnTop:
        m_host.applyWindowLevels(false, true);
        break;
    default:
        break;
    }
}

QSize ZBViewModes::detachedMinimumSize(bool playbackStopped)
{
    return playbackStopped ? QSize(630, 305) : QSize(200, 150);
}
