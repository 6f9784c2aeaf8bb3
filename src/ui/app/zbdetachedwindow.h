#pragma once

#include <QWidget>

// The player's own window: the picture away from the main window, which then
// gives its room to the lists.
class ZBDetachedWindow : public QWidget
{
    Q_OBJECT

public:
    explicit ZBDetachedWindow(QWidget *parent = nullptr);

    void setPicture(QWidget *picture);
    // The start screen needs more room than a playing picture: stopped, the
    // window is kept at 630 × 305 or more.
    void setDetachedWindowMinimalSize(bool playbackStopped);

Q_SIGNALS:
    // "DetachedWindowClose": its close button was pressed.
    void closeRequested();
    void fullscreenRequested();

protected:
    void closeEvent(QCloseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
};
