#pragma once

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <thread>

#include "library/zbobjectcontext.h"
#include "ui/app/zbmediakeytarget.h"

class QMainWindow;
class QMenuBar;
class QTableView;
struct ZBCommandState;
class ZBLibraryController;
class ZBMainWindowLayout;
class ZBMenuValidator;
class ZBPreferencesWindow;
class ZBHUDWindow;
class ZBVideoSizer;
class ZBScreenshotController;
class ZBLed;
class ZBWebController;
class ZBNotificationCenter;
class ZBScreenSaverInhibitor;
class ZBWindowModes;
class ZBLibraryDialogs;
class ZBLibraryImporter;
class ZBLibraryPane;
class ZBFlashControls;
class ZBMprisService;
class ZBPlaybackEngine;
class ZBPlaybackController;
class ZBPlaybackDialogs;
class ZBPlayerPanel;
class ZBSettings;
class ZBTrackListModel;
class ZBUnsupportedEngine;
struct ZBMenuEntry;

// Coordinates the main window and the objects that own the program's state.
// It stays thin: the library, the play list and the rest keep their own
// algorithms and are testable without a window.
class MainWndController : public QObject, public ZBMediaKeyTarget
{
    Q_OBJECT

public:
    explicit MainWndController(QObject *parent = nullptr);
    ~MainWndController() override;

    // Reads the settings and shows the window; the library store is read on
    // a thread of its own meanwhile, and its lists fill the window when it is
    // ready. False when the program cannot go on (the user has been told why).
    bool start();
    // Waits for the library store started by start() and the first list it
    // shows; false when it could not be opened (the user has been told, and
    // the program is quitting).
    bool waitForLibrary();
    bool isLibraryReady() const { return m_libraryReady; }
    // Writes the settings back; called once as the application quits.
    void saveUserDefaults();
    // Files and folders handed to the program: added to the library, and the
    // first added file plays when autoplay is on.
    void openFiles(const QStringList &paths);
    // Imports files and folders with a progress window; what is stored also
    // joins `playlistUUID` when that is a plain playlist, and the first file
    // plays when `autoplay` and the setting say so.
    void importFiles(const QStringList &paths, const QString &playlistUUID, bool autoplay);
    ZBLibraryPane *libraryPane() const { return m_pane.get(); }
    // A playlist file becomes a playlist, shown at once; a file that cannot
    // be read is reported.
    void importPlaylistFile(const QString &path);

    // What another start of the program hands over: absolute paths, and
    // "norvikplayer://" URLs.
    void openArguments(const QStringList &arguments);
    // "norvikplayer://<address>": the address the browser is to open.
    void openURL(const QString &url);
    QString lastURL() const { return m_lastURL; }
    // Brings the window up; unless something plays, the start screen shows.
    void raiseWindow();

    // Media keys and the desktop's player controls.
    void mediaKeyPressed(int keyCode) override;
    void stopRequested() override;
    void raiseRequested() override { raiseWindow(); }
    void quitRequested() override { quit(); }
    void openRequested(const QStringList &arguments) override { openArguments(arguments); }
    void volumeRequested(int percent) override;
    PlaybackState playbackState() const override;
    std::optional<Track> currentTrack() const override;
    double position() const override;
    int volume() const override;
    bool isFullscreen() const override;
    void fullscreenRequested(bool fullscreen) override;

    // The content mode: 0 browsing a page's resources, 1 a library list, 2
    // search results, 3 the preview of a captured Flash movie.
    int mode() const;
    // Lays the window out for the content mode.
    void setMode();
    // Between the library and the browser.
    void switchMode();
    ZBWindowModes *windowModes() const { return m_windowModes.get(); }
    ZBMainWindowLayout *windowLayout() const { return m_layout; }
    // What the menu commands' rules read, taken now.
    ZBCommandState commandState() const;
    // Escape closes the topmost thing that Escape closes, and nothing else.
    void escapeKeyPressed();
    void showAbout();
    void showPreferencesWindow();
    // Takes every value the preferences window shows, however it was closed.
    void closePreferencesWindow();
    // Whether quitting may go ahead: asks first while downloads run, unless
    // told never to.
    bool applicationShouldTerminate();
    void quit();

    // Hands the start screen its texts and the remembered tutorial state.
    void sendFunctionsToTutorial();
    // Flips the remembered tutorial state between "show" and "hide", keeps it
    // in the user's store at once and shows it on the start screen.
    void showHideTutorial();

    QMainWindow *window() const { return m_window.get(); }
    ZBLibraryController *library() const { return m_library.get(); }
    ZBSettings *settings() const { return m_settings.get(); }
    ZBPlaybackController *playback() const { return m_playback.get(); }
    ZBScreenshotController *screenshots() const { return m_screenshots; }
    ZBLed *statusPanel() const { return m_led; }
    ZBWebController *web() const { return m_web.get(); }
    ZBTrackListModel *trackModel() const { return m_trackModel; }
    QTableView *trackTable() const { return m_trackTable; }

protected:
    // Files and folders dropped anywhere on the window join the library.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void startLibraryLoad();
    void mediaModuleMapped();
    void libraryLoaded();
    // Runs `call` now, or once the library is ready: anything that reads or
    // writes the library waits for the store's read to finish.
    void whenLibraryReady(std::function<void()> call);
    void buildMainMenu();
    void addToLibrary();
    void importPlaylist();
    void exportPlaylist();
    // Saves a copy of the playing track; a projector becomes its plain movie.
    void saveAs();
    void buildPlayerWindow();
    void addShortcuts();
    void buildWindowModes();
    void selectedListChanged(const QString &playlistUUID);
    void displayModeChanged();
    void windowTitleChanged();
    void buildHUD();
    void buildScreenshots();
    void buildStatusPanel();
    void buildBrowser();
    // Shows "Now Browsing" and the browser (content mode `browsingMode`).
    void showBrowsing(int browsingMode);
    // A track the download tree offers to play.
    void playDownloadedItem(const QString &itemUUID);
    // Held off while the picture fills the screen and plays, if the user
    // asked for that.
    void updateScreenSaver();
    // The HUD's buttons for the engine in use, the window mode and whether
    // anything plays.
    void setEnabledHUDButtons();
    void showOrHideHUD();
    void applyHUDLevel();
    void reloadTrackList();
    void playRow(int row);
    // The Flash view and its two engines, made on first need: the web engine
    // behind them costs start-up time the window should not wait for.
    void ensureFlashEngine();
    static constexpr int FlashEngineDelayMs = 300;
    // The video engines and their GL views, made on first need or once the
    // window has shown its first frame: a GL view in the window makes its
    // first paint wait for a GL context, and libmpv's cores take a while.
    void ensureVideoEngines();
    void ensureVideoEngine(int code);
    // Every engine, before anything plays.
    void ensureEngines();
    // Stand-ins that refuse to play, saying why, when the media module
    // cannot be loaded.
    void setUnavailableEngines(const QList<int> &codes);
    // What only playback, browsing or the desktop need, once the window is
    // on screen.
    void startDeferred();
    // Maps the media libraries on a thread of their own, then makes the engines.
    void preloadMediaModule();
    static constexpr int DeferredFallbackMs = 2000;
    // The desktop's player controls (MPRIS).
    void startMpris();

    std::unique_ptr<ZBSettings> m_settings;
    std::unique_ptr<ZBLibraryController> m_library;
    // Nothing on this thread touches m_library while the loader runs.
    std::thread m_libraryLoader;
    ZBObjectContext::OpenResult m_libraryOpenResult;
    bool m_libraryLoadStarted = false;
    bool m_libraryReady = false;
    bool m_libraryFailed = false;
    QList<std::function<void()>> m_whenLibraryReady;
    std::unique_ptr<QMainWindow> m_window;
    std::unique_ptr<ZBPlaybackDialogs> m_dialogs;
    std::unique_ptr<ZBPlaybackEngine> m_videoEngine;
    std::unique_ptr<ZBPlaybackEngine> m_realEngine;
    std::unique_ptr<ZBUnsupportedEngine> m_silverlightEngine;
    // Both Flash roles share one view, which the player panel owns.
    ZBFlashControls *m_flashView = nullptr;
    std::unique_ptr<ZBPlaybackEngine> m_flashEngine;
    std::unique_ptr<ZBPlaybackEngine> m_flvEngine;
    std::unique_ptr<ZBPlaybackController> m_playback;
    std::unique_ptr<ZBLibraryImporter> m_importer;
    struct PendingImport
    {
        QStringList paths;
        QString playlistUUID;
        bool autoplay = false;
    };
    QList<PendingImport> m_pendingImports;
    std::unique_ptr<ZBLibraryDialogs> m_libraryDialogs;
    std::unique_ptr<ZBLibraryPane> m_pane;
    QString m_lastURL;
    std::unique_ptr<ZBMprisService> m_mpris;
    bool m_deferredStarted = false;
    ZBPlayerPanel *m_playerPanel = nullptr;
    ZBMainWindowLayout *m_layout = nullptr;
    std::unique_ptr<ZBWindowModes> m_windowModes;
    std::unique_ptr<ZBMenuValidator> m_validator;
    // Browsing (0) or previewing (3) while a page is on show; -1 while the
    // library is, whose list or search the pane knows.
    int m_browsingMode = -1;
    QPointer<QWidget> m_aboutWindow;
    ZBPreferencesWindow *m_preferencesWindow = nullptr;
    std::unique_ptr<ZBHUDWindow> m_hud;
    ZBVideoSizer *m_sizer = nullptr;
    ZBScreenshotController *m_screenshots = nullptr;
    ZBLed *m_led = nullptr;
    ZBNotificationCenter *m_notifications = nullptr;
    ZBScreenSaverInhibitor *m_screenSaver = nullptr;
    std::unique_ptr<ZBWebController> m_web;
    ZBTrackListModel *m_trackModel = nullptr;
    QTableView *m_trackTable = nullptr;
};
