#include "ui/app/zbfullscreenwindow.h"

#include <QCloseEvent>
#include <QCursor>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QStyle>
#include <QVBoxLayout>

#include "library/zbitem.h"
#include "localization/zblocalizer.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/widgets/zbglyphicon.h"

ZBFullScreenWindow::ZBFullScreenWindow(QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("FullScreenWindow"));
    setAutoFillBackground(true);
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
}

void ZBFullScreenWindow::setPicture(QWidget *picture)
{
    layout()->addWidget(picture);
    picture->show();
}

void ZBFullScreenWindow::mouseDoubleClickEvent(QMouseEvent *event)
{
    event->accept();
    Q_EMIT exitRequested();
}

void ZBFullScreenWindow::closeEvent(QCloseEvent *event)
{
    // The window modes close it themselves once the picture is home.
    event->ignore();
    Q_EMIT exitRequested();
}

ZBFullscreenControlsWindow::ZBFullscreenControlsWindow(ZBPlaybackController *controller, QWidget *parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_controller(controller)
    , m_name(new QLabel)
    , m_play(new QPushButton)
    , m_seek(new QSlider(Qt::Horizontal))
    , m_volume(new QSlider(Qt::Horizontal))
{
    setObjectName(QStringLiteral("FullscreenControls"));
    setFixedSize(Width, Height);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setStyleSheet(QStringLiteral("#FullscreenControls { background: rgba(20, 20, 20, 220); border-radius: 10px; }"
                                 "QLabel { color: white; }"));

    auto *previous = new QPushButton;
    auto *next = new QPushButton;
    auto *exit = new QPushButton;
    previous->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::Previous));
    next->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::Next));
    m_play->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::Play));
    exit->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::ExitFullscreen));
    exit->setObjectName(QStringLiteral("fullscreenExitButton"));
    exit->setToolTip(ZBLocalizer::localizedStringForKey(QStringLiteral("menuExitFullscreen")));
    for (QPushButton *button : {previous, next})
    {
        button->setAutoRepeat(true);
        button->setAutoRepeatDelay(60);
        button->setAutoRepeatInterval(60);
    }
    m_name->setAlignment(Qt::AlignCenter);
    m_volume->setRange(0, 100);
    m_volume->setMaximumWidth(90);
    m_volume->setValue(controller->volume());

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(previous);
    buttons->addWidget(m_play);
    buttons->addWidget(next);
    buttons->addStretch();
    buttons->addWidget(m_volume);
    buttons->addWidget(exit);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 8, 12, 8);
    layout->addWidget(m_name);
    layout->addWidget(m_seek);
    layout->addLayout(buttons);

    connect(m_play, &QPushButton::clicked, controller,
            [controller]() { controller->play_video(ZBPlaybackController::Sender::PlayButton); });
    connect(next, &QPushButton::clicked, controller, &ZBPlaybackController::holdOnButtonNext);
    connect(previous, &QPushButton::clicked, controller, &ZBPlaybackController::holdOnButtonPrev);
    connect(exit, &QPushButton::clicked, this, &ZBFullscreenControlsWindow::exitRequested);
    connect(m_seek, &QSlider::sliderMoved, controller, [controller](int value) { controller->seekSliderMoved(value); });
    connect(m_volume, &QSlider::valueChanged, controller, &ZBPlaybackController::volumeAction);
    connect(controller, &ZBPlaybackController::volumeChanged, m_volume, [this](int volume) {
        const QSignalBlocker blocker(m_volume);
        m_volume->setValue(volume);
    });
    connect(controller, &ZBPlaybackController::playingStateChanged, this, [this](bool playing) {
        m_play->setIcon(ZBGlyphIcon::icon(playing ? ZBGlyphIcon::Pause : ZBGlyphIcon::Play));
    });
    connect(controller, &ZBPlaybackController::timeChanged, this, [this](const QString &, int value, int maximum) {
        if (m_seek->isSliderDown())
            return;
        m_seek->setMaximum(std::max(0, maximum));
        m_seek->setValue(value);
    });
    connect(controller, &ZBPlaybackController::playingItemChanged, this,
            [this](ZBItem *item) { setTrackName(item ? item->Name() : QString()); });
    m_play->setIcon(ZBGlyphIcon::icon(controller->isPlaying() ? ZBGlyphIcon::Pause : ZBGlyphIcon::Play));

    m_fadeTimer.setInterval(int(ZBControlsFade::TickSeconds * 1000));
    m_fadeTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_fadeTimer, &QTimer::timeout, this, &ZBFullscreenControlsWindow::fadeTick);
    m_pointerTimer.setInterval(50);
    connect(&m_pointerTimer, &QTimer::timeout, this, &ZBFullscreenControlsWindow::pollPointer);
    m_lastPointer = QCursor::pos();
    m_pointerTimer.start();
    mouseMoved();
}

void ZBFullscreenControlsWindow::placeOn(const QRect &screenGeometry)
{
    const int x = screenGeometry.x() + screenGeometry.width() / 2 - Width / 2;
    const int y = screenGeometry.y() + screenGeometry.height() - BottomMargin - Height;
    move(x, y);
}

void ZBFullscreenControlsWindow::setTrackName(const QString &name)
{
    m_name->setText(m_name->fontMetrics().elidedText(name, Qt::ElideMiddle, Width - 30));
}

void ZBFullscreenControlsWindow::setControlsShown(bool shown)
{
    m_shown = shown;
    applyAlpha();
}

void ZBFullscreenControlsWindow::mouseMoved()
{
    m_fade.mouseMoved();
    if (!m_fadeTimer.isActive())
    {
        m_sinceTick.start();
        m_fadeTimer.start();
    }
}

void ZBFullscreenControlsWindow::fadeTick()
{
    const double seconds = m_sinceTick.isValid() ? m_sinceTick.restart() / 1000.0 : ZBControlsFade::TickSeconds;
    if (m_fade.tick(seconds))
        applyAlpha();
    if (m_fade.isSettled())
        m_fadeTimer.stop();
}

void ZBFullscreenControlsWindow::pollPointer()
{
    const QPoint pointer = QCursor::pos();
    if (pointer == m_lastPointer)
        return;
    m_lastPointer = pointer;
    mouseMoved();
}

void ZBFullscreenControlsWindow::applyAlpha()
{
    const double alpha = m_shown ? m_fade.alpha() : 0.0;
    // Without a compositor the opacity does nothing; hiding at zero keeps
    // the picture clear there too.
    setWindowOpacity(alpha);
    setVisible(alpha > 0);
    if (QWidget *picture = parentWidget() ? parentWidget() : nullptr)
        picture->setCursor(alpha > 0 ? Qt::ArrowCursor : Qt::BlankCursor);
}
