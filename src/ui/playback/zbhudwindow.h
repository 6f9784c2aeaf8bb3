#pragma once

#include <QWidget>

#include "playback/zbvideosizing.h"

class QLabel;
class QSlider;
class QToolButton;

// The floating panel with the video tools: fit, stretch, original size,
// drag, screenshot and screenshot series, and the zoom slider with its
// value. It only reports what the user does; the video sizer and the
// screenshot code act on it.
class ZBHUDWindow : public QWidget
{
    Q_OBJECT

public:
    explicit ZBHUDWindow(QWidget *parent = nullptr);

    void setEnabledHUDButtons(const ZBHudButtons &buttons);
    ZBHudButtons enabledHUDButtons() const;

    // Keeps the panel above `window`, the window that shows the picture:
    // always on top with it when that window is always on top, otherwise as
    // its transient child. Call again when the picture changes window or the
    // on-top mode changes; a visible panel stays visible.
    void setLevelAbove(QWidget *window, bool onTop);

    QSlider *zoomSlider() const { return m_zoomSlider; }
    int zoomValue() const;
    QString zoomValueText() const;

public Q_SLOTS:
    // Moves the slider without reporting a move (the sizer's answer).
    void setZoomValue(int percent, const QString &label);
    // The drag and series buttons show themselves pressed while their mode
    // runs.
    void setDragging(bool dragging);
    void setSeriesRunning(bool running);

Q_SIGNALS:
    void fitClicked();
    void stretchClicked();
    void oneToOneClicked();
    void dragClicked();
    void screenshotClicked();
    void seriesClicked();
    // The user moved the zoom slider (mouse, wheel or keys).
    void zoomSliderMoved(int percent);
    // The user closed the panel with its close button.
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    QToolButton *addButton(const char *iconName, const char *textKey, const char *toolTipKey);

    QToolButton *m_fit;
    QToolButton *m_stretch;
    QToolButton *m_oneToOne;
    QToolButton *m_drag;
    QToolButton *m_screenshot;
    QToolButton *m_series;
    QSlider *m_zoomSlider;
    QLabel *m_zoomValue;
    bool m_dragging = false;
    bool m_seriesRunning = false;
    bool m_themeIconsLoaded = false;
};
