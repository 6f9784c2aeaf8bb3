#include "ui/playback/zbvideosizer.h"

#include <QEvent>
#include <QScreen>
#include <QWidget>

#include "engines/zbplaybackengine.h"
#include "playback/zbvideosizing.h"
#include "ui/playback/zbplaybackcontroller.h"

ZBVideoSizer::ZBVideoSizer(ZBPlaybackController *controller, QObject *parent)
    : QObject(parent)
    , m_controller(controller)
{
    // A new track, or none: the drag mode belongs to the movie it was
    // turned on for.
    connect(m_controller, &ZBPlaybackController::playingItemChanged, this, [this]() {
        stopDragging();
        watchEngine(playingEngine());
    });
}

void ZBVideoSizer::setHost(QWidget *window, QWidget *playerArea)
{
    if (m_playerArea)
    {
        m_playerArea->removeEventFilter(this);
        m_playerArea->unsetCursor();
    }
    m_window = window;
    m_playerArea = playerArea;
    if (m_playerArea)
    {
        m_playerArea->installEventFilter(this);
        if (m_dragging)
            m_playerArea->setCursor(Qt::OpenHandCursor);
    }
}

ZBPlaybackEngine *ZBVideoSizer::playingEngine() const
{
    return m_controller->playingItem() ? m_controller->currentEngine() : nullptr;
}

int ZBVideoSizer::playingCode() const
{
    return playingEngine() ? m_controller->currentUsedView() : -1;
}

void ZBVideoSizer::watchEngine(ZBPlaybackEngine *engine)
{
    if (engine)
        connect(engine, &ZBPlaybackEngine::zoomChanged, this, &ZBVideoSizer::onEngineZoomChanged,
                Qt::UniqueConnection);
}

void ZBVideoSizer::onEngineZoomChanged(int percent)
{
    // A kept zoom is ours already; what the engine reports otherwise is the
    // fitted zoom of the moment (after a fit, a new movie or a resize), which
    // the slider follows.
    if (sender() != playingEngine() || m_flashViewMustKeepZoom || percent == m_currentZoomValue)
        return;
    setZoom(percent, false);
}

void ZBVideoSizer::setZoom(int percent, bool mustKeep)
{
    m_currentZoomValue = percent;
    m_flashViewMustKeepZoom = mustKeep;
    m_controller->setFlashZoom(percent, mustKeep);
    Q_EMIT zoomValueChanged(percent, ZBVideoSizing::zoomLabel(percent));
}

void ZBVideoSizer::zoomSliderMoved(int value)
{
    ZBPlaybackEngine *engine = playingEngine();
    if (!engine || !ZBVideoSizing::zoomAppliesTo(playingCode()) || !engine->canZoom())
        return;
    watchEngine(engine);
    const int percent = ZBVideoSizing::clampZoom(value);
    setZoom(percent, true);
    engine->setZoomPercent(percent);
}

void ZBVideoSizer::fitButtonClick()
{
    ZBPlaybackEngine *engine = playingEngine();
    if (!engine)
        return;
    watchEngine(engine);
    engine->setPreservesAspectRatio(true);
    if (engine->canZoom())
    {
        engine->setFitSize();
        // The fitted zoom comes back from the engine once it has laid the
        // movie out; until then the last known one stands.
        setZoom(engine->zoomPercent(), false);
    }
}

void ZBVideoSizer::strechButtonClick()
{
    if (ZBPlaybackEngine *engine = playingEngine())
        engine->setPreservesAspectRatio(false);
}

void ZBVideoSizer::oneToOneButtonClick()
{
    ZBPlaybackEngine *engine = playingEngine();
    if (!engine)
        return;
    watchEngine(engine);
    Q_EMIT zoomValueChanged(ZBVideoSizing::ZoomInitial, ZBVideoSizing::zoomLabel(ZBVideoSizing::ZoomInitial));
    switch (playingCode())
    {
        case ZBPlaybackEngine::VideoMovie:
        case ZBPlaybackEngine::RealMedia:
            engine->setPreservesAspectRatio(true);
            resizeHostForNaturalSize(engine->naturalSize());
            break;
        case ZBPlaybackEngine::FlashMovie:
            engine->setOriginalSize();
            resizeHostForNaturalSize(engine->naturalSize());
            engine->setZoomPercent(ZBVideoSizing::ZoomInitial);
            setZoom(engine->zoomPercent(), true);
            break;
        case ZBPlaybackEngine::FlashVideo:
            // The stream is fitted to a window now sized for it: 100 % where
            // the window could take the size, as large as fits where not.
            resizeHostForNaturalSize(engine->naturalSize());
            engine->setOriginalSize();
            engine->setFitSize();
            setZoom(engine->zoomPercent(), false);
            break;
        default:
            break;
    }
}

QWidget *ZBVideoSizer::pictureWidget() const
{
    ZBPlaybackEngine *engine = playingEngine();
    QWidget *view = engine ? engine->view() : nullptr;
    if (view && m_window && m_window->isAncestorOf(view) && view->isVisible())
        return view;
    return m_playerArea;
}

void ZBVideoSizer::resizeHostForNaturalSize(QSize naturalSize)
{
    QWidget *area = pictureWidget();
    if (!m_window || !area || naturalSize.isEmpty())
        return;
    // A full-screen or maximised window has its size from the screen; the
    // picture is shown at 1:1 inside it by the engine where it can.
    if (m_window->isFullScreen() || m_window->isMaximized())
        return;
    // 1:1 means one movie pixel on one screen pixel.
    const QSize logical = (QSizeF(naturalSize) / m_window->devicePixelRatioF()).toSize();

    // The window manager's frame must fit on the screen too.
    const QRect client = m_window->geometry();
    const QRect frame = m_window->frameGeometry();
    QRect available;
    if (QScreen *screen = m_window->screen())
    {
        available = screen->availableGeometry().adjusted(client.left() - frame.left(), client.top() - frame.top(),
                                                         client.right() - frame.right(),
                                                         client.bottom() - frame.bottom());
    }
    const QSize size = ZBVideoSizing::windowSizeForNaturalSize(logical, m_window->size(), area->size(),
                                                               m_window->minimumSize(), available.size())
                           .boundedTo(m_window->maximumSize());
    m_window->setGeometry(ZBVideoSizing::placeWindow(client, size, available));
}

void ZBVideoSizer::dragButtonClick()
{
    ZBPlaybackEngine *engine = playingEngine();
    if (!engine || playingCode() != ZBPlaybackEngine::FlashMovie)
        return;
    setDragging(!engine->canDrag());
}

void ZBVideoSizer::stopDragging()
{
    setDragging(false);
}

void ZBVideoSizer::setDragging(bool dragging)
{
    if (dragging)
    {
        if (ZBPlaybackEngine *engine = playingEngine())
            engine->setCanDrag(true);
    }
    else
    {
        // Whichever Flash role had it on: they share one view.
        for (const int code : {int(ZBPlaybackEngine::FlashMovie), int(ZBPlaybackEngine::FlashVideo)})
        {
            if (ZBPlaybackEngine *engine = m_controller->engine(code))
                engine->setCanDrag(false);
        }
    }
    if (m_playerArea)
    {
        if (dragging)
            m_playerArea->setCursor(Qt::OpenHandCursor);
        else
            m_playerArea->unsetCursor();
    }
    if (dragging != m_dragging)
    {
        m_dragging = dragging;
        Q_EMIT draggingChanged(dragging);
    }
}

void ZBVideoSizer::windowDidResize()
{
    ZBPlaybackEngine *engine = playingEngine();
    if (!engine || playingCode() != ZBPlaybackEngine::FlashMovie)
        return;
    if (m_flashViewMustKeepZoom)
        engine->setZoomPercent(m_currentZoomValue);
    else
        engine->setFitSize();
}

bool ZBVideoSizer::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_playerArea && event->type() == QEvent::Resize)
        windowDidResize();
    return QObject::eventFilter(watched, event);
}
