#include "engines/flash/zbflashengine.h"

#include <QFile>
#include <QFileInfo>
#include <QTimer>

#include "engines/flash/zbflashview.h"
#include "playback/flash/zbflashvideosupport.h"
#include "playback/zbprojector.h"
#include "playback/zbswfheader.h"

ZBFlashEngine::ZBFlashEngine(int engineCode, ZBFlashView *view, QObject *parent)
    : ZBPlaybackEngine(parent)
    , m_engineCode(engineCode)
    , m_view(view)
{
    connect(view, &ZBFlashView::movieLoaded, this, [this]() {
        if (isActive())
            Q_EMIT loaded();
    });
    connect(view, &ZBFlashView::movieLoadFailed, this, [this](const QString &reason) {
        if (m_active)
        {
            m_active = false;
            Q_EMIT loadFailed(reason);
        }
    });
    connect(view, &ZBFlashView::invokeFSCommand, this, [this](const QString &command, const QString &arguments) {
        if (isActive())
            Q_EMIT fsCommand(command, arguments);
    });
    connect(view, &ZBFlashView::zoomChanged, this, [this](int percent) {
        if (isActive())
            Q_EMIT zoomChanged(percent);
    });
}

QByteArray ZBFlashEngine::movieData(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
    {
        if (error)
            *error = tr("The file cannot be read: %1").arg(file.errorString());
        return QByteArray();
    }
    if (ZBSwfHeader::readHeader(file.peek(ZBSwfHeader::HeaderProbeSize)))
    {
        if (file.size() > ZBSwfHeader::MaxMovieSize)
        {
            if (error)
                *error = tr("The movie is too large.");
            return QByteArray();
        }
        return file.readAll();
    }
    file.close();
    QByteArray movie = ZBProjector::dataWithContentsOfSWF(path);
    if (movie.isEmpty() && error)
        *error = tr("The file holds no Flash movie.");
    return movie;
}

bool ZBFlashEngine::canInitWithFile(const QString &path)
{
    if (!QFileInfo(path).isFile())
        return false;
    if (m_engineCode == FlashVideo)
        return ZBFlashVideoSupport::flashEngineDecodes(path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    if (ZBSwfHeader::readHeader(file.peek(ZBSwfHeader::HeaderProbeSize)))
        return true;
    file.close();
    return !ZBProjector::dataWithContentsOfSWF(path).isEmpty();
}

bool ZBFlashEngine::isActive() const
{
    if (!m_active || !m_view)
        return false;
    const ZBFlashView::Mode mode = m_view->mode();
    return m_engineCode == FlashVideo ? mode == ZBFlashView::Mode::Video : mode == ZBFlashView::Mode::Frames;
}

void ZBFlashEngine::refuse(const QString &reason)
{
    m_active = false;
    // The controller hears of a load after load() returns, refusals included.
    QTimer::singleShot(0, this, [this, reason]() { Q_EMIT loadFailed(reason); });
}

void ZBFlashEngine::load(const QString &path)
{
    if (!m_view)
        return refuse(tr("The Flash engine is not available."));
    QString reason;
    m_active = true;
    if (m_engineCode == FlashVideo)
    {
        if (!m_view->loadFlvAtPath(path, &reason))
            return refuse(reason);
        return;
    }
    const QByteArray movie = movieData(path, &reason);
    if (movie.isEmpty())
        return refuse(reason);
    const QUrl url = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    if (!m_view->loadMovie(movie, url, url, &reason))
        return refuse(reason);
}

void ZBFlashEngine::stop()
{
    if (m_active && m_view)
        m_view->unloadMovie();
    m_active = false;
}

void ZBFlashEngine::play()
{
    if (isActive())
        m_view->play();
}

void ZBFlashEngine::pause()
{
    if (isActive())
        m_view->stop();
}

bool ZBFlashEngine::isLoaded() const
{
    return isActive() && m_view->isMovieLoaded();
}

bool ZBFlashEngine::isPlaying() const
{
    return isActive() && m_view->isPlaying();
}

double ZBFlashEngine::currentTime() const
{
    if (!isActive())
        return -1;
    return m_engineCode == FlashVideo ? m_view->currentTime() : m_view->currentFrame();
}

double ZBFlashEngine::totalTime() const
{
    if (!isActive())
        return 0;
    return m_engineCode == FlashVideo ? m_view->totalTime() : m_view->totalFrames();
}

void ZBFlashEngine::seek(double position)
{
    if (!isActive())
        return;
    if (m_engineCode == FlashVideo)
        m_view->gotoTime(position);
    else
        m_view->gotoFrame(int(position));
}

void ZBFlashEngine::setVolume(int volume)
{
    m_volume = std::clamp(volume, 0, 100);
    if (m_view)
        m_view->setVolume(m_volume / 100.0);
}

QSize ZBFlashEngine::naturalSize() const
{
    return isActive() ? m_view->movieSize() : QSize();
}

QWidget *ZBFlashEngine::view()
{
    return m_view;
}

QImage ZBFlashEngine::snapshot()
{
    return isActive() ? m_view->snapshot() : QImage();
}

// The zoom, fit and drag state belong to the shared view and carry over from
// one movie to the next, so they are passed on whichever role loaded last.
void ZBFlashEngine::setZoomPercent(int percent)
{
    if (m_view)
        m_view->setZoomPercent(percent);
}

int ZBFlashEngine::zoomPercent() const
{
    return m_view ? m_view->zoomPercent() : 100;
}

void ZBFlashEngine::setFitSize()
{
    if (m_view)
        m_view->setFitSize();
}

void ZBFlashEngine::setOriginalSize()
{
    if (m_view)
        m_view->setOriginalSize();
}

void ZBFlashEngine::setCanDrag(bool canDrag)
{
    if (m_view)
        m_view->setCanDrag(canDrag);
}

bool ZBFlashEngine::canDrag() const
{
    return m_view && m_view->canDrag();
}
