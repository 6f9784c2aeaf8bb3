#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QTimer>

#include <functional>

#include "library/zbitem.h"
#include "playback/zbplaysequencer.h"
#include "playback/zbtrackenddetector.h"

class ZBFlashControls;
class ZBLibraryController;
class ZBPlaybackEngine;
class ZBPlaybackUi;
class ZBSettings;

// Starts, pauses, stops and sequences tracks: the playback half of the main
// window's controller, kept free of widgets so that it runs the same in a
// window, in a headless test and behind the media keys.
class ZBPlaybackController : public QObject
{
    Q_OBJECT

public:
    // Who asked for playback: the table (a double-click always starts the
    // chosen track), a play button or menu item (toggles), or the controller
    // itself moving along the play list.
    enum class Sender
    {
        TrackTable,
        PlayButton,
        Controller
    };

    static constexpr int TickMilliseconds = 100;

    ZBPlaybackController(ZBLibraryController *library, ZBSettings *settings, ZBPlaybackUi *ui,
                         QObject *parent = nullptr);
    ~ZBPlaybackController() override;

    // The engine for one engine code; the controller does not own it.
    void setEngine(int code, ZBPlaybackEngine *engine);
    // Runs before an engine is chosen for an item, so that engines made on
    // first need (they cost start-up time) exist by then.
    void setEngineProvider(std::function<void()> provider) { m_engineProvider = std::move(provider); }
    ZBPlaybackEngine *engine(int code) const { return m_engines.value(code); }

    // The list on screen and its selection, as the table shows them.
    void setCurrentList(const ZBItemList &items, const QString &playlistUUID);
    void setSelectedRow(int row) { m_selectedRow = row; }
    const ZBItemList &currentList() const { return m_currentList; }
    QString playbackSourceUUID() const { return m_playbackSourceUUID; }

    void play_video(Sender sender);
    void stopPlaying();
    // The stop command: stopped by the user, so play starts afresh.
    void stopPlayback();
    bool play_next_or_previous(int direction);
    void step_to_next_track() { play_next_or_previous(+1); }
    void replay_this_track() { play_next_or_previous(0); }
    void buttonNextClick();
    void buttonPrevClick();
    // Continuous firing of a held next/previous button: seeks by two seconds
    // (or frames) per firing; a release within half a second is a click.
    void holdOnButtonNext() { holdOnButton(+1); }
    void holdOnButtonPrev() { holdOnButton(-1); }

    void setRepeat(int repeat);
    int repeat() const { return m_sequencer.repeat(); }
    void setShuffle(bool shuffle);
    bool shuffle() const { return m_sequencer.shuffle(); }

    // The seek slider was dragged to `value` (seconds, or frames).
    void seekSliderMoved(double value);
    void volumeAction(int volume);
    void volumeUp();
    void volumeDown();
    void mute();
    int volume() const { return m_volume; }
    bool isMuted() const { return m_muted; }
    // The volume muting took away.
    int volumeBeforeMute() const { return m_rememberedVolume; }
    // Stopped by the user (or nothing started yet), as opposed to paused.
    bool isStopped() const { return m_stopped; }

    void setTrack(ZBItem *item, bool valid);
    // Tracks deleted from the library leave the play list; if one plays,
    // playback stops.
    void tracksWillBeRemoved(const QSet<const ZBItem *> &items);

    bool isPlaying() const { return m_isPlaying; }
    bool inProgress() const { return m_inProgress; }
    ZBItem *playingItem() const { return m_playingItem; }
    int playingItemIndex() const { return m_sequencer.playingItemIndex(); }
    int currentUsedView() const { return m_currentUsedView; }
    ZBPlaybackEngine *currentEngine() const;
    const ZBPlaySequencer &sequencer() const { return m_sequencer; }
    ZBPlaySequencer &sequencer() { return m_sequencer; }
    double currentTime() const { return m_currentTime; }
    double totalTime() const { return m_totalTime; }
    bool isTimerActive() const { return m_timer.isActive(); }

    // Whether the engine for this track accepts its file.
    bool canInitWithFile(const ZBItem *item) const;
    // The engine code a track's type plays with, or -1 when none does.
    int engineCodeForItem(const ZBItem *item) const;

    void timercallback();

    // What a Flash movie sends: "completePlay" moves the play list on (or
    // replays the track when repeating one), "setTotalTime" stores the
    // track's length; other commands are ignored.
    void flashView_invokeFSCommand(const QString &command, const QString &arguments);
    // "onChangePlayerMode" from the start screen stores the tutorial state.
    void flashView_callFunction(const QString &function, const QStringList &arguments);
    // The Flash view the Flash engines share, when there is one.
    ZBFlashControls *flashView() const;
    // The movie file a Flash track plays: its captured base resource, or its
    // own file.
    QString flashMoviePath(const ZBItem *item) const;
    // The zoom the user chose and whether it must survive the next movie.
    void setFlashZoom(int percent, bool keep)
    {
        m_currentZoomValue = percent;
        m_flashViewMustKeepZoom = keep;
    }

Q_SIGNALS:
    void playingStateChanged(bool playing);
    void playingItemChanged(ZBItem *item);
    // The time label text and the seek slider's value and maximum.
    void timeChanged(const QString &text, int sliderValue, int sliderMaximum);
    void volumeChanged(int volume);
    void logoRequested();
    void trackChanged(ZBItem *item);
    void trackRemoved(ZBItem *item);

private:
    void initPlayback();
    void prepareFlashView(int code);
    void startEngine();
    void engineLoaded();
    void engineLoadFailed(const QString &reason);
    void failLoad(const QString &reason);
    void refuseRealMedia(const QString &reason);
    void cannotFindTrack(Sender sender, ZBItem *item, bool tryToPlayAfterLocate);
    void showLogo();
    void displayCurrentTime();
    void stepToNextOrTheSameTrack(double total);
    void holdOnButton(int direction);
    void performSeekForButton();
    void moveEngineTo(double value);
    void applyVolume();
    bool isUsable(ZBItem *item) const;

    ZBLibraryController *m_library;
    ZBSettings *m_settings;
    std::function<void()> m_engineProvider;
    ZBPlaybackUi *m_ui;
    QHash<int, ZBPlaybackEngine *> m_engines;
    ZBPlaySequencer m_sequencer;
    ZBTrackEndDetector m_endDetector;

    ZBItemList m_currentList;
    QString m_currentListUUID;
    QString m_playbackSourceUUID;
    int m_selectedRow = -1;

    ZBItem *m_playingItem = nullptr;
    int m_currentUsedView = 0;
    bool m_isPlaying = false;
    bool m_inProgress = false;
    bool m_mustPlayNext = false;
    // Nothing has been started yet counts as stopped by the user: the play
    // button then starts the selection instead of resuming.
    bool m_stopped = true;
    bool m_loading = false;
    bool m_engineReachedEnd = false;
    Sender m_loadSender = Sender::TrackTable;

    QTimer m_timer;
    double m_currentTime = -1;
    double m_totalTime = 0;
    bool m_seeking = false;
    QTimer m_seekReleaseTimer;
    QTimer m_sliderEndTimer;
    int m_holdDirection = 0;
    QElapsedTimer m_holdStarted;

    int m_currentZoomValue = 100;
    bool m_flashViewMustKeepZoom = false;

    int m_volume = 100;
    bool m_muted = false;
    int m_rememberedVolume = 100;
};
