#pragma once

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QString>

class QWidget;
class ZBPlaybackController;
class ZBPlaybackEngine;

// The HUD's and the menus' picture sizing for whatever plays now: zoom (Flash
// movies and FLV streams), fit, stretch, original size 1:1 (which resizes
// the window that holds the player) and the drag mode that pans a zoomed
// Flash movie.
//
// The zoom the user chose is kept in the controller too, so that the next
// movie it loads comes up at the same zoom while it must be kept.
class ZBVideoSizer : public QObject
{
    Q_OBJECT

public:
    explicit ZBVideoSizer(ZBPlaybackController *controller, QObject *parent = nullptr);

    // The window that holds the picture (main, detached or fullscreen) and
    // the widget the picture fills in it. 1:1 resizes `window` so that the
    // picture gets its natural size; the drag cursor goes on `playerArea`.
    // Either may be null while there is nowhere to show a picture.
    void setHost(QWidget *window, QWidget *playerArea);
    QWidget *hostWindow() const { return m_window; }
    QWidget *playerArea() const { return m_playerArea; }

    int currentZoomValue() const { return m_currentZoomValue; }
    bool flashViewMustKeepZoom() const { return m_flashViewMustKeepZoom; }
    bool isDragging() const { return m_dragging; }

public Q_SLOTS:
    // The zoom slider, and the zoom menu command with the slider's value.
    void zoomSliderMoved(int value);
    void fitButtonClick();
    void strechButtonClick();
    void oneToOneButtonClick();
    void dragButtonClick();
    // The host window's size changed: a Flash movie keeps the zoom the user
    // chose, or is fitted again. The sizer also watches the player area
    // itself, so this is only needed for resizes it cannot see.
    void windowDidResize();
    // Turns the drag mode off, as starting or stopping a track does.
    void stopDragging();

Q_SIGNALS:
    // The zoom slider and its label must show `percent`.
    void zoomValueChanged(int percent, const QString &label);
    // The drag button shows itself pressed while the drag mode is on.
    void draggingChanged(bool dragging);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // The engine showing the playing track, or null when nothing plays.
    ZBPlaybackEngine *playingEngine() const;
    int playingCode() const;
    void watchEngine(ZBPlaybackEngine *engine);
    void onEngineZoomChanged(int percent);
    void setZoom(int percent, bool mustKeep);
    // Resizes the host window so that the picture gets `naturalSize` (in the
    // movie's pixels); a full-screen or maximised window stays as it is.
    void resizeHostForNaturalSize(QSize naturalSize);
    QWidget *pictureWidget() const;
    void setDragging(bool dragging);

    ZBPlaybackController *m_controller;
    QPointer<QWidget> m_window;
    QPointer<QWidget> m_playerArea;
    int m_currentZoomValue = 100;
    bool m_flashViewMustKeepZoom = false;
    bool m_dragging = false;
};
