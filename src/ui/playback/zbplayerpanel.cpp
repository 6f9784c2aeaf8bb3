#include "ui/playback/zbplayerpanel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QStackedLayout>
#include <QStyle>

#include "localization/zblocalizer.h"
#include "settings/zbsettings.h"
#include "ui/playback/zblogoview.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/widgets/zbglyphicon.h"

ZBPlayerPanel::ZBPlayerPanel(ZBPlaybackController *controller, QWidget *parent)
    : QWidget(parent)
    , m_controller(controller)
    , m_screen(new QWidget)
    // Owned here until the window puts it in its top bar.
    , m_transport(new QWidget(this))
    , m_views(new QStackedLayout(m_screen))
    , m_logo(new ZBLogoView)
    , m_previous(new QPushButton)
    , m_play(new QPushButton)
    , m_next(new QPushButton)
    , m_seek(new QSlider(Qt::Horizontal))
    , m_time(new QLabel(QStringLiteral("00:00")))
    , m_volume(new QSlider(Qt::Horizontal))
{
    // Until the window controller sends the tutorial, the name alone shows.
    m_logo->setPrimaryText(ZBSettings::applicationName());
    m_views->addWidget(m_logo);

    m_previous->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::Previous));
    m_play->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::Play));
    m_next->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::Next));
    m_previous->setToolTip(ZBLocalizer::localizedStringForKey(QStringLiteral("tooltipButtonPrev")));
    m_play->setToolTip(ZBLocalizer::localizedStringForKey(QStringLiteral("tooltipButtonPlay")));
    m_next->setToolTip(ZBLocalizer::localizedStringForKey(QStringLiteral("tooltipButtonNext")));
    // Held, next and previous fire continuously and seek; the controller tells
    // a click from a hold by how long the firing goes on.
    for (QPushButton *button : {m_previous, m_next})
    {
        button->setAutoRepeat(true);
        button->setAutoRepeatDelay(60);
        button->setAutoRepeatInterval(60);
    }
    m_seek->setEnabled(false);
    m_time->setMinimumWidth(m_time->fontMetrics().horizontalAdvance(QStringLiteral("00:00:00/00:00:00")));
    m_time->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_volume->setRange(0, 100);
    m_volume->setValue(controller->volume());
    m_volume->setMaximumWidth(110);
    m_volume->setToolTip(QStringLiteral("Volume"));

    m_screen->setObjectName(QStringLiteral("PlayerScreen"));
    m_screen->setAutoFillBackground(true);
    QPalette black = m_screen->palette();
    black.setColor(QPalette::Window, Qt::black);
    m_screen->setPalette(black);
    m_screen->setMinimumSize(160, 90);

    auto *transport = new QHBoxLayout(m_transport);
    transport->setContentsMargins(0, 0, 0, 0);
    transport->addWidget(m_previous);
    transport->addWidget(m_play);
    transport->addWidget(m_next);
    transport->addWidget(m_seek, 1);
    transport->addWidget(m_time);
    auto *speaker = new QLabel;
    speaker->setPixmap(ZBGlyphIcon::icon(ZBGlyphIcon::Volume).pixmap(16, 16));
    transport->addWidget(speaker);
    transport->addWidget(m_volume);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_screen);
    m_transport->hide();

    connect(m_play, &QPushButton::clicked, controller,
            [controller]() { controller->play_video(ZBPlaybackController::Sender::PlayButton); });
    connect(m_next, &QPushButton::clicked, controller, &ZBPlaybackController::holdOnButtonNext);
    connect(m_previous, &QPushButton::clicked, controller, &ZBPlaybackController::holdOnButtonPrev);
    connect(m_seek, &QSlider::sliderMoved, controller, [controller](int value) { controller->seekSliderMoved(value); });
    connect(m_volume, &QSlider::valueChanged, controller, &ZBPlaybackController::volumeAction);
    connect(controller, &ZBPlaybackController::volumeChanged, m_volume, [this](int volume) {
        const QSignalBlocker blocker(m_volume);
        m_volume->setValue(volume);
    });
    connect(controller, &ZBPlaybackController::playingStateChanged, this, &ZBPlayerPanel::updatePlaying);
    connect(controller, &ZBPlaybackController::timeChanged, this, &ZBPlayerPanel::updateTime);
    connect(controller, &ZBPlaybackController::logoRequested, this, &ZBPlayerPanel::showLogo);
    // The video view must be on screen before its engine can open a file: it
    // makes the picture's GL context the first time it is shown.
    connect(controller, &ZBPlaybackController::playingItemChanged, this, [this](ZBItem *item) {
        if (item)
            showEngine(m_controller->currentUsedView());
    });
}

ZBPlayerPanel::~ZBPlayerPanel()
{
    // A view never shown goes with the screen, as the shown ones do (after
    // the engines that draw into it).
    for (const QPointer<QWidget> &view : std::as_const(m_engineViews))
    {
        if (view && !view->parent())
            delete view.data();
    }
}

void ZBPlayerPanel::addEngineView(int engineCode, QWidget *view)
{
    if (!view || m_engineViews.contains(engineCode))
        return;
    m_engineViews.insert(engineCode, view);
}

void ZBPlayerPanel::takeScreenHome()
{
    if (m_screen->parentWidget() == this)
        return;
    layout()->addWidget(m_screen);
    m_screen->show();
}

void ZBPlayerPanel::showLogo()
{
    m_views->setCurrentWidget(m_logo);
}

void ZBPlayerPanel::showEngine(int engineCode)
{
    QWidget *view = m_engineViews.value(engineCode);
    if (!view)
        return;
    // Joins the window when first needed: the first GL view in a window
    // makes Qt compose the whole window with OpenGL from then on, and
    // setting that up (shaders compiled by a software renderer, where there
    // is no GPU) holds the window for a tenth of a second or more.
    if (m_views->indexOf(view) < 0)
        m_views->addWidget(view);
    m_views->setCurrentWidget(view);
}

void ZBPlayerPanel::updatePlaying(bool playing)
{
    m_play->setIcon(ZBGlyphIcon::icon(playing ? ZBGlyphIcon::Pause : ZBGlyphIcon::Play));
    m_seek->setEnabled(m_controller->playingItem() != nullptr);
    if (playing)
        showEngine(m_controller->currentUsedView());
}

void ZBPlayerPanel::updateTime(const QString &text, int value, int maximum)
{
    m_time->setText(text);
    if (m_seek->isSliderDown())
        return;
    m_seek->setMaximum(std::max(0, maximum));
    m_seek->setValue(value);
}
