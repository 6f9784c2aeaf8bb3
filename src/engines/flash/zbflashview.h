#pragma once

#include <cmath>

#include <QColor>
#include <QElapsedTimer>
#include <QImage>
#include <QRect>
#include <QSize>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <QWebEngineView>

#include "engines/zbflashcontrols.h"

class QWebChannel;
class QWebEngineProfile;
class ZBFlashBridge;
class ZBFlashRequestGuard;
class ZBFlashSchemeHandler;

// The Flash view: one long-lived page holding the Flash engine (Ruffle), in
// an off-the-record profile of its own, that plays one movie at a time.
//
// The page is loaded once (warmUp(), or the first load) and kept: compiling
// the engine costs about a second, a movie in a warm page a tenth of that.
// Every getter answers from what the page last pushed (frames as they change,
// times as they move), so the playback tick never waits on the page. Calls
// made before the page is ready are queued and run in order once it is.
//
// Frames are counted from 0. Movies are steered through callbacks that our
// own code adds to them (see ZBFlashMoviePlan); the page's engine knows
// nothing of frames by itself.
class ZBFlashView : public QWebEngineView, public ZBFlashControls
{
    Q_OBJECT

public:
    enum class Mode
    {
        None,
        // A Flash movie, steered frame by frame.
        Frames,
        // An FLV stream in our FLV player movie, steered by time.
        Video
    };

    // Leads every name our code adds to a movie or the page.
    static constexpr const char *CallbackPrefix = "nvk_fc_";
    // A movie that has neither started nor failed by then never will.
    static constexpr int LoadTimeoutMs = 15000;

    // What the web engine needs before the QApplication is constructed: our
    // URL scheme and what ZBMediaModuleLoader::prepareApplication() sets.
    static void prepareApplication();

    explicit ZBFlashView(QWidget *parent = nullptr);
    ~ZBFlashView() override;

    // Loads the page and compiles the engine ahead of the first movie.
    QWidget *widget() override { return this; }
    void warmUp() override;
    bool isHostReady() const { return m_hostReady; }
    bool isWarm() const { return m_warm; }

    // Plays `data`, the movie at `url`; relative loads resolve against
    // `baseUrl` (both file URLs). False, with the reason, when the data is no
    // playable movie; otherwise movieLoaded() or movieLoadFailed() follows.
    bool loadMovie(const QByteArray &data, const QUrl &url, const QUrl &baseUrl, QString *error = nullptr);
    bool loadFlvAtPath(const QString &path, QString *error = nullptr);
    void unloadMovie();

    Mode mode() const { return m_mode; }
    bool isMovieLoaded() const { return m_loaded; }
    bool isPlaying() const { return m_loaded && m_playing; }
    void play();
    // Pauses the whole movie (timeline, sound and nested clips).
    void stop();
    void StopPlay() { stop(); }

    // -1 when nothing is loaded.
    int currentFrame() const { return m_loaded ? m_frame : -1; }
    int totalFrames() const { return m_totalFrames; }
    double frameRate() const { return m_frameRate; }
    // Stays on the frame unless the movie is playing. The frame counts as
    // current at once; the picture follows, and frameShown() says when.
    void gotoFrame(int frame);
    // True from a goto until the engine has drawn where it landed.
    bool isGotoPending() const { return m_gotoSequence != m_gotoShownSequence; }

    // Seconds, for FLV streams.
    double currentTime() const { return m_loaded ? m_time : -1; }
    double totalTime() const { return m_duration; }
    void gotoTime(double seconds);

    void setZoomPercent(int percent) override;
    int zoomPercent() const { return int(std::lround(m_zoom)); }
    // Scales the movie to fill the view with its proportions kept.
    void setFitSize() override;
    // Shows the movie at 100 %.
    void setOriginalSize();
    QRect originalRect() const { return QRect(QPoint(0, 0), m_movieSize); }
    QSize movieSize() const { return m_movieSize; }
    // A zoomed movie can be panned with the mouse while this is on.
    void setCanDrag(bool canDrag) override;
    bool canDrag() const { return m_canDrag; }

    // 0 low, 1 medium, anything else high; applies from the next movie on.
    void setFlashQuality(int quality) override { m_quality = quality; }
    int flashQuality() const { return m_quality; }
    // On: a movie may not reach the network nor read outside its folder.
    // Applies from the next movie on.
    void setEnabledSecurity(bool enabled) override;
    bool enabledSecurity() const { return m_security; }
    // What shows around a movie that does not fill the view.
    void setFlashBackgroundColor(const QColor &colour) override;
    QColor flashBackgroundColor() const { return m_background; }
    // FLV streams start over at their end while on.
    void setRepeatStyle(bool repeat) override { m_repeat = repeat; }
    // 0..1.
    void setVolume(double volume);
    double volume() const { return m_volume; }

    QImage snapshot();

    // Time from the load call to the page's word that the first frame is on
    // screen, in milliseconds; -1 until then.
    qint64 firstFrameMilliseconds() const { return m_firstFrameMs; }

Q_SIGNALS:
    void warmed();
    void movieLoaded();
    void movieLoadFailed(const QString &reason);
    void firstFrameShown();
    void stateChanged();
    // The picture of the latest goto is on screen: `frame` is where the movie
    // stands (a movie's own actions can move it on from where it was sent);
    // `drawn` is false when the engine drew nothing in time.
    void frameShown(int frame, bool drawn);
    void invokeFSCommand(const QString &command, const QString &arguments);
    // The page laid the movie out at a new zoom (set, fitted, or refitted
    // after the view was resized).
    void zoomChanged(int percent);

private:
    void ensureHost();
    void runHostScript(const QString &script);
    bool startLoad(Mode mode, const QUrl &rootUrl, const QString &baseDirectory, const QVariantMap &flashvars,
                   QSize size, QString *error);
    // Empty when the engine's files are all there; otherwise what is missing.
    QString missingEngineFiles() const;
    QByteArray hostMovie(const QString &fileName, QString *error);
    void resetMovieState();
    void onHostReady(bool engineScriptLoaded);
    void onLoaded(int generation, double width, double height, double frameRate, int totalFrames);
    void onLoadFailed(int generation, const QString &reason);
    void onRendererGone();

    QWebEngineProfile *m_profile;
    ZBFlashSchemeHandler *m_scheme;
    ZBFlashRequestGuard *m_guard;
    ZBFlashBridge *m_bridge;
    QWebChannel *m_channel;

    bool m_hostRequested = false;
    bool m_hostReady = false;
    bool m_warm = false;
    bool m_warmRequested = false;
    QStringList m_pendingScripts;

    Mode m_mode = Mode::None;
    int m_generation = 0;
    bool m_loaded = false;
    bool m_playing = false;
    int m_frame = -1;
    int m_gotoSequence = 0;
    int m_gotoShownSequence = 0;
    int m_totalFrames = 0;
    double m_frameRate = 0;
    double m_time = -1;
    double m_duration = 0;
    QSize m_movieSize;
    double m_zoom = 100;
    bool m_canDrag = false;

    int m_quality = 2;
    bool m_security = false;
    QColor m_background = Qt::black;
    bool m_repeat = false;
    double m_volume = 1.0;

    QElapsedTimer m_loadClock;
    // The page's own time limit needs the page; this one holds when the page
    // itself is gone or never came.
    QTimer m_loadGuard;
    qint64 m_firstFrameMs = -1;
};
