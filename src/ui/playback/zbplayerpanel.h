#pragma once

#include <QPointer>
#include <QWidget>

class QLabel;
class QPushButton;
class QSlider;
class QStackedLayout;
class ZBLogoView;
class ZBPlaybackController;

// The player: the screen (the engine's picture, or the logo when nothing
// plays) and the transport row — previous, play/pause, next, the seek slider
// with its time label, and the volume slider. The panel itself is the main
// window's player pane and holds the screen while the picture is at home;
// the window modes move the screen into the detached and fullscreen windows
// and back. The transport row lives in the main window's top bar.
class ZBPlayerPanel : public QWidget
{
    Q_OBJECT

public:
    ZBPlayerPanel(ZBPlaybackController *controller, QWidget *parent = nullptr);
    ~ZBPlayerPanel() override;

    // The engine views to switch between; a null view is skipped. Each joins
    // the screen when it is first shown.
    void addEngineView(int engineCode, QWidget *view);
    void showLogo();
    void showEngine(int engineCode);

    // The picture and the logo, as one widget that moves between windows.
    QWidget *screen() const { return m_screen; }
    // Puts the screen back into this pane.
    void takeScreenHome();
    QWidget *transportBar() const { return m_transport; }

    QPushButton *playButton() const { return m_play; }
    QPushButton *nextButton() const { return m_next; }
    QPushButton *previousButton() const { return m_previous; }
    QSlider *seekSlider() const { return m_seek; }
    QSlider *volumeSlider() const { return m_volume; }
    QLabel *timeLabel() const { return m_time; }
    ZBLogoView *logoView() const { return m_logo; }

private:
    void updatePlaying(bool playing);
    void updateTime(const QString &text, int value, int maximum);

    ZBPlaybackController *m_controller;
    QWidget *m_screen;
    QWidget *m_transport;
    QStackedLayout *m_views;
    ZBLogoView *m_logo;
    QHash<int, QPointer<QWidget>> m_engineViews;
    QPushButton *m_previous;
    QPushButton *m_play;
    QPushButton *m_next;
    QSlider *m_seek;
    QLabel *m_time;
    QSlider *m_volume;
};
