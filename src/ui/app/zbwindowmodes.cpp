#include "ui/app/zbwindowmodes.h"

#include <QGuiApplication>
#include <QMainWindow>
#include <QScreen>
#include <QSplitter>
#include <QWindow>

#include "library/zbitem.h"
#include "settings/zbsettings.h"
#include "ui/app/zbdetachedwindow.h"
#include "ui/app/zbfullscreenwindow.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/playback/zbplayerpanel.h"

ZBWindowModes::ZBWindowModes(QMainWindow *mainWindow, ZBPlayerPanel *playerPanel, QWidget *playerPane,
                             QSplitter *listSplitter,
                             ZBPlaybackController *playback, ZBSettings *settings, QObject *parent)
    : QObject(parent)
    , m_mainWindow(mainWindow)
    , m_playerPanel(playerPanel)
    , m_playerPane(playerPane)
    , m_listSplitter(listSplitter)
    , m_playback(playback)
    , m_settings(settings)
    , m_modes(*this)
{
    m_modes.setInitialOnTopMode(settings->onTopMode);
}

ZBWindowModes::~ZBWindowModes()
{
    // The picture belongs to the player panel: it must be home before the
    // other windows go.
    m_playerPanel->takeScreenHome();
}

QWidget *ZBWindowModes::picture() const
{
    return m_playerPanel->screen();
}

QWidget *ZBWindowModes::pictureWindow() const
{
    switch (m_modes.displayMode())
    {
    case ZBViewModes::Detached:
        return m_detached.get();
    case ZBViewModes::Fullscreen:
        return m_fullScreenWindow.get();
    default:
        return m_mainWindow;
    }
}

bool ZBWindowModes::isDetachedWindowVisible() const
{
    return m_detached && m_detached->isVisible();
}

void ZBWindowModes::rememberListPaneHeight()
{
    if (m_playerPane->isVisible())
        m_playlistSubViewDimension = m_listSplitter->sizes();
}

void ZBWindowModes::restoreListPaneHeight()
{
    if (!m_playlistSubViewDimension.isEmpty())
        m_listSplitter->setSizes(m_playlistSubViewDimension);
}

void ZBWindowModes::showDetachedWindow()
{
    if (!m_detached)
    {
        m_detached = std::make_unique<ZBDetachedWindow>();
        connect(m_detached.get(), &ZBDetachedWindow::closeRequested, this, [this]() {
            if (m_modes.displayMode() == ZBViewModes::Detached)
                m_modes.showOrHidedetachedWindow();
            m_settings->onTopMode = m_modes.onTopMode();
        });
        connect(m_detached.get(), &ZBDetachedWindow::fullscreenRequested, this,
                [this]() { m_modes.switchToFullscreenMode(); });
        const QByteArray frame = m_settings->windowFrame(ZBSettings::detachedWindowFrameName());
        if (!frame.isEmpty())
        {
            m_detached->restoreGeometry(frame);
        }
        else
        {
            // First time: over the player pane, as if it had lifted off.
            const QRect pane(m_playerPanel->mapToGlobal(QPoint(0, 0)), m_playerPanel->size());
            m_detached->setGeometry(pane);
        }
    }
    m_detached->setDetachedWindowMinimalSize(m_playback->playingItem() == nullptr);
    m_detached->setPicture(m_playerPanel->screen());
    m_playerPane->hide();
    m_detached->show();
    m_detached->raise();
    Q_EMIT listPaneButtonEnabled(false);
    Q_EMIT pictureWindowChanged(m_detached.get());
    QMetaObject::invokeMethod(this, &ZBWindowModes::announce, Qt::QueuedConnection);
}

void ZBWindowModes::hideDetachedWindow()
{
    if (!isDetachedWindowVisible())
        return;
    saveDetachedFrame();
    m_playerPanel->takeScreenHome();
    m_playerPane->show();
    m_detached->hide();
    Q_EMIT listPaneButtonEnabled(true);
    restoreListPaneHeight();
    if (!m_mainWindow->isVisible())
    {
        m_mainWindow->show();
        m_mainWindow->raise();
        if (!m_playback->isPlaying())
            m_playerPanel->showLogo();
    }
    Q_EMIT pictureWindowChanged(m_mainWindow);
    QMetaObject::invokeMethod(this, &ZBWindowModes::announce, Qt::QueuedConnection);
}

void ZBWindowModes::saveDetachedFrame()
{
    if (isDetachedWindowVisible())
        m_settings->setWindowFrame(ZBSettings::detachedWindowFrameName(), m_detached->saveGeometry());
}

void ZBWindowModes::enterFullscreen()
{
    QScreen *screen = m_mainWindow->screen() ? m_mainWindow->screen() : QGuiApplication::primaryScreen();
    const QRect area = screen->geometry();
    m_fullScreenWindow = std::make_unique<ZBFullScreenWindow>();
    m_fullScreenWindow->setWindowTitle(m_mainWindow->windowTitle());
    m_fullScreenWindow->setGeometry(area);
    connect(m_fullScreenWindow.get(), &ZBFullScreenWindow::exitRequested, this,
            [this]() { m_modes.fsExitButtonClick(); }, Qt::QueuedConnection);
    m_fullScreenWindow->setPicture(m_playerPanel->screen());
    m_playerPane->hide();
    m_fullScreenWindow->showFullScreen();
    m_fullScreenWindow->activateWindow();
    // Out of the way until fullscreen ends, so that an on-top main window
    // cannot cover the picture.
    m_mainWindow->hide();

    m_controls = new ZBFullscreenControlsWindow(m_playback, m_fullScreenWindow.get());
    m_controls->setTrackName(m_playback->playingItem() ? m_playback->playingItem()->Name() : QString());
    m_controls->placeOn(area);
    m_controls->show();
    connect(m_controls, &ZBFullscreenControlsWindow::exitRequested, this, [this]() { m_modes.fsExitButtonClick(); },
            Qt::QueuedConnection);
    Q_EMIT pictureWindowChanged(m_fullScreenWindow.get());
    QMetaObject::invokeMethod(this, &ZBWindowModes::announce, Qt::QueuedConnection);
}

void ZBWindowModes::exitFullscreen()
{
    if (!m_fullScreenWindow)
        return;
    m_playerPanel->takeScreenHome();
    m_playerPane->show();
    Q_EMIT listPaneButtonEnabled(true);
    restoreListPaneHeight();
    m_mainWindow->show();
    m_mainWindow->raise();
    m_mainWindow->activateWindow();
    m_controls = nullptr;
    // Later, not now: the exit may come from a signal of these windows.
    m_fullScreenWindow->hide();
    m_fullScreenWindow.release()->deleteLater();
    Q_EMIT pictureWindowChanged(m_mainWindow);
    QMetaObject::invokeMethod(this, &ZBWindowModes::announce, Qt::QueuedConnection);
}

void ZBWindowModes::announce()
{
    Q_EMIT displayModeChanged(m_modes.displayMode());
}

void ZBWindowModes::hideHUD()
{
    if (m_hud)
        m_hud->hide();
}

bool ZBWindowModes::isHUDVisible() const
{
    return m_hud && m_hud->isVisible();
}

void ZBWindowModes::applyWindowLevels(bool mainOnTop, bool detachedOnTop)
{
    m_mainOnTop = mainOnTop;
    m_detachedOnTop = detachedOnTop;
    m_settings->onTopMode = m_modes.onTopMode();
    setOnTop(m_mainWindow, mainOnTop);
    if (m_detached)
        setOnTop(m_detached.get(), detachedOnTop);
    if (m_hud)
        setOnTop(m_hud, mainOnTop || detachedOnTop);
}

void ZBWindowModes::setOnTop(QWidget *window, bool onTop)
{
    // Through the native window, so that a shown window is not re-created
    // (which would hide it and cost the picture its surface). Under Wayland
    // a client cannot raise itself above others; the hint is ignored there.
    if (QWindow *handle = window->windowHandle())
        handle->setFlag(Qt::WindowStaysOnTopHint, onTop);
    else
        window->setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
}

void ZBWindowModes::setDetachedWindowMinimalSize()
{
    if (m_detached)
        m_detached->setDetachedWindowMinimalSize(m_playback->playingItem() == nullptr);
}
