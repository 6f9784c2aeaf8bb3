#include "ui/playback/zbscreenshotcontroller.h"

#include <QDir>
#include <QLoggingCategory>

#include <cmath>

#include "engines/zbplaybackengine.h"
#include "engines/zbsnapshotwriter.h"
#include "library/zbitem.h"
#include "localization/zblocalizer.h"
#include "playback/zbscreenshotnaming.h"
#include "settings/zbsettings.h"
#include "ui/playback/zbplaybackcontroller.h"

Q_LOGGING_CATEGORY(lcScreenshot, "norvik.screenshot")

namespace
{
// A stored interval of 0 or less, or not a number, would fire without pause.
constexpr double ShortestInterval = 0.1;
// And one beyond a day is surely a typing error.
constexpr double LongestInterval = 86400;

QString text(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QString::fromLatin1(key));
}
} // namespace

ZBScreenshotController::ZBScreenshotController(ZBPlaybackController *playback, ZBSettings *settings, QObject *parent)
    : QObject(parent)
    , m_playback(playback)
    , m_settings(settings)
{
    connect(&m_timer, &QTimer::timeout, this, &ZBScreenshotController::screenshotTimerCallback);
    connect(playback, &ZBPlaybackController::playingStateChanged, this, &ZBScreenshotController::playingStateChanged);
    connect(playback, &ZBPlaybackController::playingItemChanged, this, &ZBScreenshotController::playingItemChanged);
}

QString ZBScreenshotController::ledCaption() const
{
    if (m_seriesInProgress)
    {
        const double interval = intervalMilliseconds() / 1000.0;
        return text("ledTabScreenshotProgressInfo").arg(ZBLocalizer::locale().toString(interval, 'g', 6)).arg(m_shotCount);
    }
    return text(m_shotSaved ? "ledTabScreenshotProgressCompleteCaption" : "ledTabScreenshotProgressCaption");
}

QString ZBScreenshotController::notificationDescription() const
{
    return m_lastTrackName.isNull() ? QString() : text("ScreenshotWasSaved").arg(m_lastTrackName);
}

void ZBScreenshotController::makeScreenShot()
{
    if (m_playback->inProgress())
        return;
    // A paused picture is what people most often want to keep: shoot it as it
    // stands. Only with nothing loaded is the selection started first.
    if (!m_playback->playingItem())
    {
        startPlaybackThen(Pending::Shot);
        return;
    }
    takeShot();
}

void ZBScreenshotController::seriesButtonClick()
{
    if (m_seriesInProgress)
    {
        stopSeries();
        return;
    }
    if (m_playback->inProgress())
        return;
    if (!m_playback->isPlaying())
    {
        startPlaybackThen(Pending::Series);
        return;
    }
    startSeries();
}

void ZBScreenshotController::startPlaybackThen(Pending pending)
{
    m_pending = pending;
    m_playback->play_video(ZBPlaybackController::Sender::PlayButton);
    // A resume plays at once; a load answers later through
    // playingStateChanged(); an empty list or a refused file never does.
    if (m_pending != Pending::None && !m_playback->isPlaying() && !m_playback->inProgress())
        m_pending = Pending::None;
}

void ZBScreenshotController::playingStateChanged(bool playing)
{
    if (!playing)
        return;
    const Pending pending = std::exchange(m_pending, Pending::None);
    if (pending == Pending::Shot)
        takeShot();
    else if (pending == Pending::Series && !m_seriesInProgress)
        startSeries();
}

void ZBScreenshotController::playingItemChanged(ZBItem *item)
{
    if (!item)
    {
        // Playback stopped (or the start we waited for failed).
        m_pending = Pending::None;
        stopSeries();
        return;
    }
    if (!m_seriesInProgress || item == m_seriesItem)
        return;
    if (m_settings->option_keepCapturingToNextTrackInPlaylist)
        m_seriesItem = item;
    else
        stopSeries();
}

void ZBScreenshotController::startSeries()
{
    m_shotCount = 0;
    m_seriesInProgress = true;
    m_seriesItem = m_playback->playingItem();
    m_timer.start(intervalMilliseconds());
    Q_EMIT seriesStateChanged(true);
    if (m_settings->option_alwaysStartCapturingFromFirstFrame)
        rewindThenShoot();
    else
        screenshotTimerCallback();
}

void ZBScreenshotController::rewindThenShoot()
{
    // The slider's seek knows frames from seconds and keeps a Flash movie
    // playing.
    m_playback->seekSliderMoved(0);
    // The video engine seeks in the background: the first shot waits for the
    // first frame, or it would show where playback was.
    ZBPlaybackEngine *engine = m_playback->currentEngine();
    if (engine && engine->isSeeking())
    {
        connect(
            engine, &ZBPlaybackEngine::seekFinished, this,
            [this, engine]() {
                if (m_seriesInProgress && m_playback->currentEngine() == engine && m_shotCount == 0)
                    screenshotTimerCallback();
            },
            Qt::SingleShotConnection);
        return;
    }
    screenshotTimerCallback();
}

void ZBScreenshotController::screenshotTimerCallback()
{
    if (!m_seriesInProgress)
        return;
    // Between tracks and while paused there is no new picture: the series
    // waits rather than filling the folder with copies.
    if (m_playback->inProgress() || !m_playback->isPlaying() || !m_playback->playingItem())
        return;
    if (takeShot())
        return;
    stopSeries();
}

void ZBScreenshotController::stopSeries()
{
    if (!m_seriesInProgress)
        return;
    m_timer.stop();
    m_seriesInProgress = false;
    const bool saved = m_shotCount > 0;
    m_shotCount = 0;
    m_seriesItem = nullptr;
    Q_EMIT seriesStateChanged(false);
    Q_EMIT seriesFinished(saved ? m_lastTrackFolder : QString());
}

void ZBScreenshotController::restartTimer()
{
    if (m_seriesInProgress)
        m_timer.start(intervalMilliseconds());
}

bool ZBScreenshotController::takeShot()
{
    ZBItem *item = m_playback->playingItem();
    ZBPlaybackEngine *engine = m_playback->currentEngine();
    if (!item || !engine)
        return false;
    const QString folder = ZBScreenshotNaming::trackFolder(screenshotFolder(), item->Name());
    // Not checked: a folder that cannot be made fails the write, which says why.
    QDir().mkpath(folder);
    const QString path = ZBScreenshotNaming::nextShotPath(screenshotFolder(), item->Name());
    const ZBSnapshotWriter::Result result =
        ZBSnapshotWriter::saveSnapshot(engine->snapshot(), path, m_settings->option_formatOfScreenshot);
    if (!result.ok())
    {
        qCWarning(lcScreenshot).noquote() << path << result.description();
        Q_EMIT shotFailed(failureMessage(path, result.reason, result.detail));
        return false;
    }
    m_shotSaved = true;
    m_lastShotPath = path;
    m_lastTrackFolder = folder;
    m_lastTrackName = item->Name();
    if (m_seriesInProgress)
        ++m_shotCount;
    Q_EMIT shotSaved(path, folder, m_seriesInProgress ? m_shotCount : 0);
    return true;
}

int ZBScreenshotController::intervalMilliseconds() const
{
    const double seconds = m_settings->option_screenShotInterval;
    return int(std::lround(1000 * (std::isfinite(seconds) ? std::clamp(seconds, ShortestInterval, LongestInterval) : 1.0)));
}

QString ZBScreenshotController::screenshotFolder() const
{
    const QString folder = m_settings->option_pathForScreenshot;
    return folder.trimmed().isEmpty() ? ZBSettings::defaultDownloadsFolder() : folder;
}

QString ZBScreenshotController::failureMessage(const QString &path, const QString &reason, const QString &detail)
{
    QString why;
    if (reason == ZBSnapshotWriter::noRepresentationReason())
        why = text("saveSnapshotErrorNoPicture");
    else if (reason == ZBSnapshotWriter::badRepresentationReason())
        why = text("saveSnapshotErrorBadPicture");
    else if (reason == ZBSnapshotWriter::emptyDataReason())
        why = text("saveSnapshotErrorNoData");
    else
        why = detail.isEmpty() ? text("saveSnapshotErrorCantWrite")
                               : text("saveSnapshotErrorCantWriteBecause").arg(detail);
    return text("SaveSnapshotError").arg(path, why);
}
