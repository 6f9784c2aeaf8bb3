#include "ui/playback/zbplaybackcontroller.h"

#include <QColor>
#include <QWidget>
#include <QDateTime>
#include <QFileInfo>
#include <QLoggingCategory>

#include <cmath>

#include "engines/zbflashcontrols.h"
#include "engines/unsupported/zbunsupportedengine.h"
#include "engines/zbplaybackengine.h"
#include "library/zblibrarycontroller.h"
#include "playback/zbtimedisplay.h"
#include "settings/zbsettings.h"
#include "ui/playback/zbplaybackui.h"

Q_LOGGING_CATEGORY(lcPlayback, "norvik.playback")

namespace
{
// A held next/previous button moves this far per firing.
constexpr double HoldStep = 2.0;
// A release sooner than this after the first firing is a click.
constexpr qint64 ClickMilliseconds = 500;
} // namespace

ZBPlaybackController::ZBPlaybackController(ZBLibraryController *library, ZBSettings *settings, ZBPlaybackUi *ui,
                                           QObject *parent)
    : QObject(parent)
    , m_library(library)
    , m_settings(settings)
    , m_ui(ui)
{
    m_timer.setInterval(TickMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, &ZBPlaybackController::timercallback);
    m_seekReleaseTimer.setSingleShot(true);
    m_seekReleaseTimer.setInterval(100);
    connect(&m_seekReleaseTimer, &QTimer::timeout, this, &ZBPlaybackController::performSeekForButton);
    m_sliderEndTimer.setSingleShot(true);
    m_sliderEndTimer.setInterval(300);
    connect(&m_sliderEndTimer, &QTimer::timeout, this, [this]() { m_seeking = false; });

    m_sequencer.setRepeat(settings->repeat);
    m_sequencer.setShuffle(settings->shuffle != 0);
    m_volume = std::clamp(int(settings->programVolume * 100 + 0.5), 0, 100);
    m_rememberedVolume = m_volume;
}

ZBPlaybackController::~ZBPlaybackController() = default;

void ZBPlaybackController::setEngine(int code, ZBPlaybackEngine *engine)
{
    if (ZBPlaybackEngine *old = m_engines.value(code))
        disconnect(old, nullptr, this, nullptr);
    m_engines.insert(code, engine);
    if (!engine)
        return;
    engine->setVolume(m_volume);
    connect(engine, &ZBPlaybackEngine::loaded, this, [this, engine]() {
        if (engine == currentEngine())
            engineLoaded();
    });
    connect(engine, &ZBPlaybackEngine::loadFailed, this, [this, engine](const QString &reason) {
        if (engine == currentEngine())
            engineLoadFailed(reason);
    });
    connect(engine, &ZBPlaybackEngine::fsCommand, this, [this, engine](const QString &command, const QString &args) {
        if (engine == currentEngine())
            flashView_invokeFSCommand(command, args);
    });
    connect(engine, &ZBPlaybackEngine::endReached, this, [this, engine]() {
        if (engine == currentEngine())
            m_engineReachedEnd = true;
    });
}

ZBPlaybackEngine *ZBPlaybackController::currentEngine() const
{
    return m_engines.value(m_currentUsedView);
}

void ZBPlaybackController::setCurrentList(const ZBItemList &items, const QString &playlistUUID)
{
    m_currentList = items;
    m_currentListUUID = playlistUUID;
    // The list playback started from changed (sorted, edited): the running
    // sequence follows it from the playing track on.
    if (!playlistUUID.isEmpty() && playlistUUID == m_playbackSourceUUID && m_playingItem)
    {
        const int index = int(items.indexOf(m_playingItem));
        if (index >= 0)
        {
            m_sequencer.replacePlaybackList(items);
            m_sequencer.setPlayingItemIndex(index);
        }
    }
}

int ZBPlaybackController::engineCodeForItem(const ZBItem *item) const
{
    if (m_engineProvider)
        m_engineProvider();
    const QString type = item->Type().toLower();
    if (type == u"flv" || type == u"f4v")
    {
        // The Flash engine's FLV player decodes only the older Flash codecs;
        // H.264, AAC and F4V go to the video engine rather than being refused.
        ZBPlaybackEngine *flash = m_engines.value(ZBPlaybackEngine::FlashVideo);
        return m_settings->option_playFLVwithMPK && flash && flash->canInitWithFile(item->Path())
                   ? ZBPlaybackEngine::FlashVideo
                   : ZBPlaybackEngine::VideoMovie;
    }
    if (type == u"swf" || type == u"exe" || type == u"'appl'")
        return ZBPlaybackEngine::FlashMovie;
    if (type == u"xap")
        return ZBPlaybackEngine::Silverlight;
    if (type == u"rm" || type == u"rv" || type == u"rmvb")
        return ZBPlaybackEngine::RealMedia;
    return ZBPlaybackEngine::VideoMovie;
}

bool ZBPlaybackController::canInitWithFile(const ZBItem *item) const
{
    const int code = engineCodeForItem(item);
    ZBPlaybackEngine *engine = m_engines.value(code);
    return engine && engine->canInitWithFile(code == ZBPlaybackEngine::FlashMovie ? flashMoviePath(item) : item->Path());
}

QString ZBPlaybackController::flashMoviePath(const ZBItem *item) const
{
    // A page captured with its Flash movie keeps the movie among its
    // resources; the one marked as the base is what plays.
    for (const QVariantMap &resource : m_library->getResourcesFromBundle(item))
    {
        if (resource.value(QStringLiteral("Base")).toBool())
            return resource.value(QStringLiteral("Path")).toString();
    }
    return item->Path();
}

ZBFlashControls *ZBPlaybackController::flashView() const
{
    for (const int code : {int(ZBPlaybackEngine::FlashMovie), int(ZBPlaybackEngine::FlashVideo)})
    {
        ZBPlaybackEngine *engine = m_engines.value(code);
        if (auto *flash = engine ? dynamic_cast<ZBFlashControls *>(engine->view()) : nullptr)
            return flash;
    }
    return nullptr;
}

void ZBPlaybackController::prepareFlashView(int code)
{
    ZBFlashControls *view = flashView();
    if (!view || (code != ZBPlaybackEngine::FlashMovie && code != ZBPlaybackEngine::FlashVideo))
        return;
    view->setFlashQuality(m_settings->option_flashDefaultQuality);
    view->setEnabledSecurity(m_settings->option_enableFlashLocalSecurity);
    view->setCanDrag(false);
    if (code == ZBPlaybackEngine::FlashVideo)
    {
        view->setFlashBackgroundColor(QColor(m_settings->flvBgColor));
        // The play list repeats a track itself, on the stream's completePlay.
        view->setRepeatStyle(false);
    }
}

void ZBPlaybackController::flashView_invokeFSCommand(const QString &command, const QString &arguments)
{
    if (command == u"completePlay")
    {
        if (!m_isPlaying || !m_playingItem)
            return;
        // Later, not inside the engine's own report: the step replaces the
        // movie that is talking to us.
        ZBItem *item = m_playingItem;
        QTimer::singleShot(0, this, [this, item]() {
            if (m_playingItem != item || !m_isPlaying)
                return;
            if (m_sequencer.repeat() == ZBPlaySequencer::RepeatOne)
                replay_this_track();
            else
                step_to_next_track();
        });
    }
    else if (command == u"setTotalTime")
    {
        if (!m_playingItem)
            return;
        bool ok = false;
        const double total = arguments.section(u',', 0, 0).trimmed().toDouble(&ok);
        if (!ok)
            return;
        m_playingItem->setLengthValue(qint32(total));
        m_library->save();
        Q_EMIT trackChanged(m_playingItem);
    }
}

void ZBPlaybackController::flashView_callFunction(const QString &function, const QStringList &arguments)
{
    if (function == u"onChangePlayerMode" && !arguments.isEmpty())
        m_settings->showTutorial = arguments.first();
}

bool ZBPlaybackController::isUsable(ZBItem *item) const
{
    return (item->isValid().value_or(false) || QFileInfo::exists(item->Path())) && canInitWithFile(item);
}

void ZBPlaybackController::setTrack(ZBItem *item, bool valid)
{
    if (!item || item->isDeleted())
        return;
    item->setIsValid(valid);
    m_library->save();
    Q_EMIT trackChanged(item);
}

void ZBPlaybackController::play_video(Sender sender)
{
    m_inProgress = true;

    // Pause.
    if (m_isPlaying && sender != Sender::TrackTable)
    {
        if (ZBPlaybackEngine *engine = currentEngine())
            engine->pause();
        m_timer.stop();
        m_isPlaying = false;
        m_inProgress = false;
        Q_EMIT playingStateChanged(false);
        return;
    }

    // Resume where it paused.
    if (!m_isPlaying && sender != Sender::TrackTable && !m_stopped && m_playingItem && currentEngine()
        && currentEngine()->isLoaded())
    {
        startEngine();
        return;
    }

    // A new start.
    if (sender != Sender::Controller)
    {
        m_playbackSourceUUID = m_currentListUUID;
        m_sequencer.setPlaybackList(m_currentList);
        if (m_currentList.isEmpty())
        {
            m_inProgress = false;
            return;
        }
        if (m_selectedRow < 0 || m_selectedRow >= m_currentList.size())
            m_selectedRow = 0;
        m_sequencer.setPlayingItemIndex(m_selectedRow);
    }
    m_playingItem = nullptr;
    ZBItem *item = m_sequencer.itemAt(m_sequencer.playingItemIndex());
    if (!item)
    {
        m_inProgress = false;
        return;
    }

    if (!QFileInfo::exists(item->Path()))
    {
        cannotFindTrack(sender, item, true);
        m_inProgress = false;
        return;
    }

    m_playingItem = item;
    initPlayback();
    m_currentUsedView = engineCodeForItem(item);
    ZBPlaybackEngine *engine = currentEngine();
    m_loadSender = sender;
    Q_EMIT playingItemChanged(item);

    QString loadPath = item->Path();
    if (m_currentUsedView == ZBPlaybackEngine::FlashMovie)
    {
        loadPath = flashMoviePath(item);
        if (!QFileInfo::exists(loadPath))
        {
            if (m_stopped || sender == Sender::TrackTable)
            {
                stopPlaying();
                showLogo();
            }
            cannotFindTrack(sender, item, true);
            m_inProgress = false;
            return;
        }
    }
    prepareFlashView(m_currentUsedView);

    if (!engine || !engine->canInitWithFile(loadPath))
    {
        QString reason = engine ? QString() : QStringLiteral("no engine plays \"%1\" files").arg(item->Type());
        if (auto *unsupported = qobject_cast<ZBUnsupportedEngine *>(engine))
            reason = unsupported->reason();
        if (m_currentUsedView == ZBPlaybackEngine::RealMedia)
            refuseRealMedia(reason);
        else
            failLoad(reason);
        return;
    }
    m_loading = true;
    engine->load(loadPath);
}

void ZBPlaybackController::engineLoaded()
{
    if (!m_loading || !m_playingItem)
        return;
    m_loading = false;
    ZBPlaybackEngine *engine = currentEngine();
    ZBItem *item = m_playingItem;
    const double total = engine->totalTime();
    if (total > 0)
        item->setLengthValue(qint32(total));
    item->setIsValid(true);
    m_sequencer.markPlayed(m_sequencer.playingItemIndex());
    item->setPlayCountValue(item->PlayCount().value_or(0) + 1);
    item->setLastPlayed(QDateTime::currentDateTimeUtc());
    m_library->save();
    Q_EMIT trackChanged(item);
    if (m_currentUsedView == ZBPlaybackEngine::FlashMovie || m_currentUsedView == ZBPlaybackEngine::FlashVideo)
    {
        if (ZBFlashControls *view = flashView())
        {
            view->setFitSize();
            if (m_flashViewMustKeepZoom)
                view->setZoomPercent(m_currentZoomValue);
        }
    }
    startEngine();
}

void ZBPlaybackController::startEngine()
{
    if (ZBPlaybackEngine *engine = currentEngine())
        engine->play();
    m_isPlaying = true;
    m_timer.start();
    m_inProgress = false;
    m_stopped = false;
    Q_EMIT playingStateChanged(true);
}

void ZBPlaybackController::engineLoadFailed(const QString &reason)
{
    if (!m_loading)
        return;
    m_loading = false;
    if (m_currentUsedView == ZBPlaybackEngine::RealMedia)
        refuseRealMedia(reason);
    else
        failLoad(reason);
}

void ZBPlaybackController::failLoad(const QString &reason)
{
    ZBItem *item = m_playingItem;
    qCWarning(lcPlayback).noquote() << "Cannot play" << (item ? item->Path() : QString()) << reason;
    if (m_stopped || m_loadSender == Sender::TrackTable)
    {
        stopPlaying();
        showLogo();
    }
    if (m_ui)
        m_ui->showCannotPlay(item, reason);
    m_inProgress = false;
    m_isPlaying = false;
    m_loading = false;
}

void ZBPlaybackController::refuseRealMedia(const QString &reason)
{
    ZBItem *item = m_playingItem;
    setTrack(item, false);
    m_loading = false;
    if (m_loadSender == Sender::Controller && !m_stopped)
    {
        // Moving along the list: no dialog, the next tick finds the empty
        // engine at its end and moves on.
        m_isPlaying = true;
        m_inProgress = false;
        m_timer.start();
        return;
    }
    stopPlaying();
    showLogo();
    if (m_ui)
    {
        if (m_settings->option_DontAskMeAgainRealNotFound)
            m_ui->showCannotPlay(item, reason);
        else if (m_ui->showRealMediaUnsupported(item, reason))
            m_settings->option_DontAskMeAgainRealNotFound = true;
    }
    m_inProgress = false;
}

void ZBPlaybackController::cannotFindTrack(Sender sender, ZBItem *item, bool tryToPlayAfterLocate)
{
    setTrack(item, false);
    // Only a track picked in the table is worth a question; the play button
    // and the list moving on pass over a missing file to the next one.
    if (sender != Sender::TrackTable)
    {
        m_mustPlayNext = true;
        m_timer.start();
        return;
    }
    if (!m_ui)
        return;
    switch (m_ui->askAboutMissingTrack(item))
    {
        case ZBPlaybackUi::MissingTrackChoice::Find:
        {
            const QString path = m_ui->locateTrack(item);
            if (path.isEmpty())
                return;
            item->setIsValid(true);
            item->setPath(path);
            m_library->save();
            Q_EMIT trackChanged(item);
            if (tryToPlayAfterLocate)
            {
                m_selectedRow = int(m_currentList.indexOf(item));
                play_video(Sender::TrackTable);
            }
            return;
        }
        case ZBPlaybackUi::MissingTrackChoice::Delete:
        {
            tracksWillBeRemoved({item});
            m_currentList.removeAll(item);
            m_library->removeItemFromLibraryByUUID(item->ItemUUID());
            Q_EMIT trackRemoved(item);
            return;
        }
        case ZBPlaybackUi::MissingTrackChoice::DoNothing:
            return;
    }
}

void ZBPlaybackController::tracksWillBeRemoved(const QSet<const ZBItem *> &items)
{
    if (items.contains(m_playingItem))
    {
        stopPlaying();
        showLogo();
    }
    m_sequencer.removeItems(items);
}

void ZBPlaybackController::initPlayback()
{
    m_timer.stop();
    m_currentTime = 0;
    m_totalTime = 0;
    m_engineReachedEnd = false;
    m_endDetector.reset();
    m_endDetector.setFrameRules({m_settings->option_gotoIfLastFrameIsMet,
                                 m_settings->option_gotoIfFrameNumberWasDecreased,
                                 m_settings->option_gotoIfStayOnTheSameFrameMore,
                                 m_settings->option_gotoStayingTimeValue});
    for (ZBPlaybackEngine *engine : std::as_const(m_engines))
    {
        if (engine)
            engine->stop();
    }
}

void ZBPlaybackController::stopPlaying()
{
    m_timer.stop();
    m_loading = false;
    for (ZBPlaybackEngine *engine : std::as_const(m_engines))
    {
        if (engine)
            engine->stop();
    }
    m_playingItem = nullptr;
    m_isPlaying = false;
    m_currentTime = -1;
    m_totalTime = 0;
    m_currentUsedView = 0;
    Q_EMIT timeChanged(QStringLiteral("00:00"), 0, 0);
    Q_EMIT playingItemChanged(nullptr);
    Q_EMIT playingStateChanged(false);
}

void ZBPlaybackController::stopPlayback()
{
    stopPlaying();
    m_stopped = true;
    showLogo();
}

void ZBPlaybackController::showLogo()
{
    Q_EMIT logoRequested();
}

bool ZBPlaybackController::play_next_or_previous(int direction)
{
    m_inProgress = true;
    m_timer.stop();
    const ZBPlaySequencer::Step step = m_sequencer.next(
        direction, [this](ZBItem *item) { return isUsable(item); },
        [this](ZBItem *item) {
            if (item == m_playingItem)
                m_playingItem = nullptr;
            setTrack(item, false);
        });

    if (step.outcome == ZBPlaySequencer::Outcome::Play)
    {
        if (ZBItem *item = m_sequencer.itemAt(step.index); item && item->isValid() != std::optional<bool>(true))
            setTrack(item, true);
        m_isPlaying = false;
        m_playingItem = nullptr;
        play_video(Sender::Controller);
        return true;
    }
    stopPlaying();
    showLogo();
    m_inProgress = false;
    return false;
}

void ZBPlaybackController::buttonNextClick()
{
    if (m_inProgress || !m_sequencer.canStepNext())
        return;
    play_next_or_previous(+1);
}

void ZBPlaybackController::buttonPrevClick()
{
    if (m_inProgress || !m_sequencer.canStepPrevious())
        return;
    play_next_or_previous(-1);
}

void ZBPlaybackController::setRepeat(int repeat)
{
    m_sequencer.setRepeat(repeat);
    m_settings->repeat = repeat;
}

void ZBPlaybackController::setShuffle(bool shuffle)
{
    m_sequencer.setShuffle(shuffle);
    m_settings->shuffle = shuffle ? 1 : 0;
}

void ZBPlaybackController::timercallback()
{
    if (m_seeking)
        return;
    ZBPlaybackEngine *engine = currentEngine();
    double total = m_totalTime;
    if (engine && engine->usesFrames())
    {
        const int frame = int(engine->currentTime());
        const int totalFrames = int(engine->totalTime());
        // Compared with the current value rather than the last sample: a seek
        // moves that value, so going back by hand is not taken for a loop.
        if (m_endDetector.sampleFrame(m_currentTime, frame, totalFrames, TickMilliseconds / 1000.0))
            m_engineReachedEnd = true;
        m_currentTime = frame;
        m_totalTime = totalFrames;
        total = totalFrames;
    }
    else if (engine)
    {
        m_currentTime = engine->isLoaded() ? engine->currentTime() : 0;
        m_totalTime = engine->totalTime();
        if (m_currentUsedView == ZBPlaybackEngine::RealMedia)
        {
            // Real positions come in whole seconds.
            m_currentTime = std::floor(m_currentTime);
            m_totalTime = std::floor(m_totalTime);
        }
        total = m_totalTime;
        if (m_currentUsedView == ZBPlaybackEngine::FlashVideo && m_playingItem && total > 0
            && m_playingItem->Length() != std::optional<qint32>(qint32(total)))
        {
            m_playingItem->setLengthValue(qint32(total));
            m_library->save();
            Q_EMIT trackChanged(m_playingItem);
        }
    }
    displayCurrentTime();

    while (m_mustPlayNext)
    {
        m_mustPlayNext = false;
        play_next_or_previous(+1);
        return;
    }
    stepToNextOrTheSameTrack(total);
}

void ZBPlaybackController::displayCurrentTime()
{
    if (m_currentTime <= -1)
        return;
    ZBPlaybackEngine *engine = currentEngine();
    QString text;
    int maximum = int(m_totalTime);
    if (m_currentUsedView == ZBPlaybackEngine::Silverlight)
        text = QStringLiteral("NA");
    else if (engine && engine->usesFrames())
    {
        text = ZBTimeDisplay::frameText(m_currentTime, int(m_totalTime));
        maximum = std::max(0, int(m_totalTime) - 1);
    }
    else
        text = ZBTimeDisplay::timeText(m_currentTime, m_totalTime);
    Q_EMIT timeChanged(text, int(m_currentTime), maximum);
}

void ZBPlaybackController::stepToNextOrTheSameTrack(double total)
{
    if (m_currentTime <= 0 && m_seeking)
    {
        m_seeking = false;
        m_seekReleaseTimer.stop();
    }
    // No test of playing or paused: a hold past the end of a paused track
    // moves the list on as well.
    ZBPlaybackEngine *engine = currentEngine();
    bool ended = false;
    if (engine && engine->usesFrames())
        ended = m_engineReachedEnd;
    else if (m_currentUsedView == ZBPlaybackEngine::RealMedia)
        ended = m_endDetector.sampleStream(m_currentTime, total, m_engineReachedEnd);
    else
        ended = m_endDetector.sampleTime(m_currentTime, total, m_engineReachedEnd);
    if (!ended)
        return;
    m_engineReachedEnd = false;
    play_next_or_previous(m_sequencer.repeat() == ZBPlaySequencer::RepeatOne ? 0 : +1);
}

void ZBPlaybackController::holdOnButton(int direction)
{
    if (m_inProgress || !m_playingItem)
        return;
    m_holdDirection = direction;
    m_seekReleaseTimer.start();
    if (!m_holdStarted.isValid())
        m_holdStarted.start();
    m_seeking = true;
    double target = m_currentTime + direction * HoldStep;
    if (m_currentUsedView == ZBPlaybackEngine::FlashVideo && direction > 0 && target >= m_totalTime - 1)
        target = m_currentTime;
    target = std::max(0.0, target);
    if (m_totalTime > 0)
        target = std::min(target, m_totalTime);
    moveEngineTo(target);
    m_currentTime = target;
    displayCurrentTime();
    stepToNextOrTheSameTrack(m_totalTime);
}

void ZBPlaybackController::performSeekForButton()
{
    if (!m_stopped)
        m_seeking = false;
    const bool click = m_holdStarted.isValid() && m_holdStarted.elapsed() < ClickMilliseconds;
    m_holdStarted.invalidate();
    if (!click)
        return;
    if (m_holdDirection > 0)
        buttonNextClick();
    else
        buttonPrevClick();
}

void ZBPlaybackController::moveEngineTo(double value)
{
    ZBPlaybackEngine *engine = currentEngine();
    if (!engine)
        return;
    if (engine->usesFrames())
    {
        engine->seek(std::floor(value));
        if (m_isPlaying)
            engine->play();
        return;
    }
    if (m_currentUsedView == ZBPlaybackEngine::FlashVideo && value > engine->totalTime())
        value = engine->totalTime();
    engine->seek(value);
}

void ZBPlaybackController::seekSliderMoved(double value)
{
    if (!m_playingItem)
        return;
    m_seeking = true;
    m_sliderEndTimer.start();
    moveEngineTo(value);
    // The label shows where playback was; the first tick after the drag
    // shows where it went.
    displayCurrentTime();
    m_currentTime = value;
}

void ZBPlaybackController::applyVolume()
{
    for (ZBPlaybackEngine *engine : std::as_const(m_engines))
    {
        if (engine)
            engine->setVolume(m_volume);
    }
    m_settings->programVolume = m_volume / 100.0;
    Q_EMIT volumeChanged(m_volume);
}

void ZBPlaybackController::volumeAction(int volume)
{
    m_volume = std::clamp(volume, 0, 100);
    if (m_muted && m_volume > 0)
    {
        m_muted = false;
        m_rememberedVolume = m_volume;
    }
    applyVolume();
}

void ZBPlaybackController::volumeUp()
{
    const int base = m_muted ? m_rememberedVolume : m_volume;
    m_muted = false;
    m_volume = std::clamp(base + 10, 0, 100);
    applyVolume();
}

void ZBPlaybackController::volumeDown()
{
    const int base = m_muted ? m_rememberedVolume : m_volume;
    m_muted = false;
    m_volume = std::clamp(base - 10, 0, 100);
    applyVolume();
}

void ZBPlaybackController::mute()
{
    if (!m_muted)
    {
        m_rememberedVolume = m_volume;
        m_muted = true;
        m_volume = 0;
    }
    else
    {
        m_muted = false;
        m_volume = m_rememberedVolume;
    }
    applyVolume();
}
