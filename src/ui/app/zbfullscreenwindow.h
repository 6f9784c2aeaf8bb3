#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include "app/zbcontrolsfade.h"

class QLabel;
class QPushButton;
class QSlider;
class ZBPlaybackController;

// The borderless black window that holds the picture on a whole screen.
class ZBFullScreenWindow : public QWidget
{
    Q_OBJECT

public:
    explicit ZBFullScreenWindow(QWidget *parent = nullptr);

    void setPicture(QWidget *picture);

Q_SIGNALS:
    // A double-click on the picture, or the window closed by the desktop.
    void exitRequested();

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
};

// The floating controls over the fullscreen picture: the track's name, the
// transport buttons, the seek and volume sliders and the exit button. They
// fade in when the mouse moves and out a second after it stops.
class ZBFullscreenControlsWindow : public QWidget
{
    Q_OBJECT

public:
    static constexpr int Width = 380;
    static constexpr int Height = 107;
    static constexpr int BottomMargin = 100;

    explicit ZBFullscreenControlsWindow(ZBPlaybackController *controller, QWidget *parent = nullptr);

    // Centred on `screenGeometry`, its bottom edge 100 pixels above the
    // screen's.
    void placeOn(const QRect &screenGeometry);
    void setTrackName(const QString &name);
    // Shows or hides the controls for good (the menu's toggle); hidden
    // controls do not come back with the mouse.
    void setControlsShown(bool shown);
    bool controlsShown() const { return m_shown; }
    double fadeAlpha() const { return m_fade.alpha(); }
    QSlider *volumeSlider() const { return m_volume; }
    QSlider *seekSlider() const { return m_seek; }

public Q_SLOTS:
    // "MouseMoved": the controls come up and stay a second.
    void mouseMoved();

Q_SIGNALS:
    void exitRequested();

private:
    void fadeTick();
    void pollPointer();
    void applyAlpha();

    ZBPlaybackController *m_controller;
    ZBControlsFade m_fade;
    QTimer m_fadeTimer;
    QElapsedTimer m_sinceTick;
    // The pointer is watched rather than its events: over the picture the
    // video and web views take the mouse events for themselves.
    QTimer m_pointerTimer;
    QPoint m_lastPointer;
    bool m_shown = true;
    QLabel *m_name;
    QPushButton *m_play;
    QSlider *m_seek;
    QSlider *m_volume;
};
