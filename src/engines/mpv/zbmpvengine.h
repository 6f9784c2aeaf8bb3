#pragma once

#include <QPointer>
#include <QSize>
#include <QString>
#include <QTimer>
#include <QVariantMap>

#include <atomic>

#include "engines/zbplaybackengine.h"

struct mpv_handle;
struct mpv_event;
class ZBMpvVideoView;

// The video engine: libmpv plays movies, FLV/F4V and RealMedia. One class
// serves the VideoMovie and RealMedia codes; only engineCode() tells them
// apart.
//
// libmpv runs its own threads. Everything it reports (property changes, file
// events, command replies) is drained on the GUI thread, and every value the
// getters return comes from that cache, so the playback tick never waits on
// the core. Commands are sent asynchronously; only snapshot() waits, because
// it answers a user action that wants the picture now.
//
// With a picture (a QApplication on a real display) the engine owns a
// ZBMpvVideoView. libmpv cannot open a file until that view has created its
// GL render context, which happens the first time it is shown: a load()
// issued before waits for it, and loaded() comes after. Headless (vo=null,
// ao=null) the engine has no view and loads at once; that is what tests and
// norvikctl use.
//
// Do not delete the engine from a slot connected to its own signals; use
// deleteLater().
class ZBMpvEngine : public ZBPlaybackEngine
{
    Q_OBJECT

public:
    enum class Output
    {
        // Headless when NVK_HEADLESS_MEDIA=1, when there is no QApplication,
        // or on a platform without GL windows (offscreen, minimal);
        // otherwise with a view.
        Automatic,
        // Never a picture nor sound: vo=null, ao=null.
        Headless
    };

    explicit ZBMpvEngine(int engineCode, QObject *parent = nullptr);
    ZBMpvEngine(int engineCode, Output output, QObject *parent = nullptr);
    ~ZBMpvEngine() override;

    // Makes every engine created afterwards with Output::Automatic headless.
    static void setHeadlessByDefault(bool headless);

    // canInitWithFile() with a reason when it refuses, for command-line
    // callers that must say why.
    static bool checkFile(const QString &path, QString *reason);

    int engineCode() const override { return m_engineCode; }
    bool canInitWithFile(const QString &path) override;

    void load(const QString &path) override;
    void stop() override;
    void play() override;
    void pause() override;
    bool isLoaded() const override;
    bool isPlaying() const override;

    double currentTime() const override;
    double totalTime() const override;
    void seek(double position) override;

    void setVolume(int volume) override;
    int volume() const override { return m_volume; }

    QSize naturalSize() const override;
    QWidget *view() override;
    QImage snapshot() override;
    QString formatSummary() const override;
    // The "keepaspect" option: sent at once, answered by the core's report
    // of the property (true until then).
    void setPreservesAspectRatio(bool preserves) override;
    bool preservesAspectRatio() const override { return m_keepAspect; }

    bool isHeadless() const { return m_headless; }
    // Why the engine could not start at all; empty when it runs.
    QString startError() const { return m_startError; }
    // True from seek() until the picture at the new position is decoded.
    bool isSeeking() const override { return m_seeking; }
    QString loadedPath() const { return m_path; }

private:
    enum class State
    {
        Idle,
        // A load waits for the view's render context.
        WaitingForView,
        // loadfile sent; waiting for the file to open and its first frame.
        Loading,
        // The answers to the post-load property queries are coming in.
        Describing,
        Loaded
    };

    void start();
    void drainEvents();
    void handleEvent(const mpv_event &event);
    void handlePropertyChange(quint64 slot, const QVariant &value);
    void handleReply(quint64 userdata, int error, const QVariant &value, const QString &name);
    void sendLoad();
    void describeLoadedFile();
    void finishLoad();
    void failLoad(const QString &reason);
    void finishSeek();
    void resetCache();
    void onRenderReady();
    void onRenderLost();
    QString describeStreams() const;

    void command(const QList<QByteArray> &arguments, quint64 userdata = 0);
    void setProperty(const char *name, const QByteArray &value);

    static void onWakeup(void *context);

    int m_engineCode;
    bool m_headless;
    mpv_handle *m_mpv = nullptr;
    QString m_startError;
    QPointer<ZBMpvVideoView> m_view;
    bool m_renderReady = false;
    // Why the view could not draw video; loads fail at once while it is set.
    QString m_renderError;
    // The view's GL context was replaced while a file was open.
    bool m_videoLost = false;
    // Set while a drain is queued on the GUI thread, so a burst of wake-ups
    // from the core posts one call.
    std::atomic_bool m_drainQueued{false};

    State m_state = State::Idle;
    QString m_path;
    // Identifies the newest load; replies and events of older ones are stale.
    quint64 m_loadSerial = 0;
    // The core's playlist entry of the newest load, -1 until it is known.
    qint64 m_entryId = -1;
    // START_FILE of the newest entry has come: property changes are its own.
    bool m_fileStarted = false;
    bool m_fileOpened = false;
    QTimer m_loadWatchdog;
    int m_describePending = 0;
    QVariantMap m_description;

    double m_timePos = -1.0;
    double m_duration = 0.0;
    bool m_paused = true;
    bool m_eof = false;
    bool m_endReported = false;
    int m_width = 0;
    int m_height = 0;
    int m_volume = 100;
    bool m_seekable = false;
    // Not part of a file: survives loads, like the volume.
    bool m_keepAspect = true;
    QString m_summary;

    quint64 m_seekSerial = 0;
    bool m_seeking = false;
    bool m_seekAcknowledged = false;
    QTimer m_seekWatchdog;
};
