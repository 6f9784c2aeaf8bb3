#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class ZBItem;
class ZBPlaybackController;
class ZBSettings;

// Single screenshots and timed series of the playing track, saved below the
// screenshot folder in one folder per track (ZBScreenshotNaming) by the
// shared snapshot writer. It follows playback through the controller's
// signals: a stop always ends a series, a change of track ends it unless the
// settings keep it going into the next track.
//
// Reads option_pathForScreenshot, option_formatOfScreenshot,
// option_screenShotInterval, option_alwaysStartCapturingFromFirstFrame and
// option_keepCapturingToNextTrackInPlaylist when they are needed, so changes
// in the preferences apply to the next shot (restartTimer() for the interval
// of a running series).
class ZBScreenshotController : public QObject
{
    Q_OBJECT

public:
    ZBScreenshotController(ZBPlaybackController *playback, ZBSettings *settings, QObject *parent = nullptr);

    bool isSeriesInProgress() const { return m_seriesInProgress; }
    // Shots saved in the running series; 0 when none runs.
    int shotCount() const { return m_shotCount; }

    // What the status LED shows: the series' interval and count while one
    // runs ("ledTabScreenshotProgressInfo"), "ledTabScreenshotProgressCompleteCaption"
    // after a shot, else "ledTabScreenshotProgressCaption".
    QString ledCaption() const;
    // The notification text for the last shot or series:
    // "ScreenshotWasSaved" with the track's Name.
    QString notificationDescription() const;
    // The track folder of the last saved shot, for the LED's open-folder
    // button ("ledOpenFolderText").
    QString lastTrackFolder() const { return m_lastTrackFolder; }
    QString lastShotPath() const { return m_lastShotPath; }

public Q_SLOTS:
    // One shot of the playing (or paused) track. Ignored while a track is
    // being started; with nothing loaded, the selected track is started and
    // shot once it plays.
    void makeScreenShot();
    // Starts a series, or stops the running one. A series on a paused or
    // stopped player first starts playback.
    void seriesButtonClick();
    void screenshotTimerCallback();
    void stopSeries();
    // The interval changed in the preferences.
    void restartTimer();

Q_SIGNALS:
    // countInSeries is 0 for a single shot.
    void shotSaved(const QString &path, const QString &trackFolder, int countInSeries);
    void seriesStateChanged(bool running);
    // A series ended; trackFolder is where its last shot went (empty when it
    // saved none).
    void seriesFinished(const QString &trackFolder);
    // A shot could not be saved: a sentence for the user. A series stops at
    // its first failure rather than repeating it every interval.
    void shotFailed(const QString &message);

private:
    enum class Pending
    {
        None,
        Shot,
        Series
    };

    void startPlaybackThen(Pending pending);
    void playingStateChanged(bool playing);
    void playingItemChanged(ZBItem *item);
    void startSeries();
    void rewindThenShoot();
    bool takeShot();
    int intervalMilliseconds() const;
    QString screenshotFolder() const;
    static QString failureMessage(const QString &path, const QString &reason, const QString &detail);

    ZBPlaybackController *m_playback;
    ZBSettings *m_settings;
    QTimer m_timer;
    bool m_seriesInProgress = false;
    int m_shotCount = 0;
    Pending m_pending = Pending::None;
    // The track the series is shooting, to tell a change of track from the
    // same track starting again (repeat one); compared, never followed.
    const ZBItem *m_seriesItem = nullptr;
    bool m_shotSaved = false;
    QString m_lastShotPath;
    QString m_lastTrackFolder;
    QString m_lastTrackName;
};
