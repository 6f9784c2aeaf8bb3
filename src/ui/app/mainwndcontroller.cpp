#include "ui/app/mainwndcontroller.h"

#include <QActionGroup>
#include <QDBusConnection>
#include <QRegularExpression>
#include <QUrl>
#include <QCheckBox>
#include <QPushButton>
#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QTimer>
#include <QToolButton>
#include <QMimeData>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressDialog>
#include <QScreen>
#include <QShortcut>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

#include "app/zbmediamodule.h"
#include "app/zbmediamoduleloader.h"
#include "engines/unsupported/zbunsupportedengine.h"
#include "engines/zbflashcontrols.h"
#include "library/zblibrarycontroller.h"
#include "library/zbtracksorter.h"
#include "library/zblibraryimporter.h"
#include "library/zbplaylist.h"
#include "library/zbplaylistfile.h"
#include "localization/zblocalizer.h"
#include "localization/zbmainmenudefinition.h"
#include "playback/zbmediatypes.h"
#include "playback/zbprojector.h"
#include "settings/zbsettings.h"
#include "app/zbcommandvalidation.h"
#include "app/zbcontentlayout.h"
#include "library/zblibrarytree.h"
#include "ui/app/zbdetachedwindow.h"
#include "ui/app/zbfullscreenwindow.h"
#include "ui/app/zbmainmenubuilder.h"
#include "ui/app/zbmainwindowlayout.h"
#include "ui/app/zbmenuvalidator.h"
#include "ui/app/zbpreferenceswindow.h"
#include "ui/app/zbwindowmodes.h"
#include "playback/zbvideosizing.h"
#include "ui/playback/zbhudwindow.h"
#include "ui/app/zbscreensaverinhibitor.h"
#include "ui/web/zbled.h"
#include "ui/web/zbwebcontroller.h"
#include "web/zbdownloadmanager.h"
#include "ui/web/zbnotificationcenter.h"
#include "ui/playback/zbscreenshotcontroller.h"
#include "ui/playback/zbvideosizer.h"
#include "ui/app/zbmprisservice.h"
#include "ui/library/zblibrarydialogs.h"
#include "ui/library/zblibrarypane.h"
#include "ui/library/zblibrarytreemodel.h"
#include "ui/library/zbtracklistmodel.h"
#include "ui/localization/zbmenulocalizer.h"
#include "ui/playback/zblogoview.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/playback/zbplaybackdialogs.h"
#include "ui/playback/zbplayerpanel.h"
#include "ui/app/zbfirstpaint.h"


MainWndController::MainWndController(QObject *parent)
    : QObject(parent)
    , m_settings(std::make_unique<ZBSettings>())
    , m_library(std::make_unique<ZBLibraryController>())
    , m_window(std::make_unique<QMainWindow>())
{
    m_window->setObjectName(QStringLiteral("MainWindow"));
    m_window->resize(1024, 680);
}

MainWndController::~MainWndController()
{
    // The library pane talks to the playback controller, and the controller
    // stops the engines it drives: each must go before what it uses.
    if (m_libraryLoader.joinable())
        m_libraryLoader.join();
    ZBMediaModuleLoader::waitForPreload();
    qApp->removeEventFilter(this);
    m_validator.reset();
    m_hud.reset();
    m_windowModes.reset();
    m_mpris.reset();
    m_pane.reset();
    m_playback.reset();
}

bool MainWndController::start()
{
    {
        const std::unique_ptr<QSettings> store = ZBSettings::openStore();
        m_settings->loadUserDefaults(*store);
    }
    if (ZBLibraryController::applicationSupportFolder().isEmpty())
    {
        QMessageBox box(QMessageBox::Critical, QStringLiteral("Alert"),
                        QStringLiteral("Can't find application support folder"));
        box.addButton(QStringLiteral("Quit"), QMessageBox::AcceptRole);
        box.exec();
        return false;
    }

    buildPlayerWindow();
    buildMainMenu();
    const QByteArray frame = m_settings->windowFrame(ZBSettings::mainWindowFrameName());
    if (!frame.isEmpty())
        m_window->restoreGeometry(frame);
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this]() {
        // What the preferences show counts, even if the window is still up.
        if (m_preferencesWindow && m_preferencesWindow->isVisible())
            m_preferencesWindow->done(QDialog::Rejected);
        // Frames are kept as normal mode has them.
        m_windowModes->switchToNormalMode();
        saveUserDefaults();
    });
    // Without the web page yet, the address pane starts folded away.
    m_layout->setCollapsed(ZBMainWindowLayout::UrlPane, true);
    setMode();
    auto *firstPaint = new ZBFirstPaint(m_window.get(), this);
    connect(firstPaint, &ZBFirstPaint::painted, this, &MainWndController::startDeferred);
    // A window that is never painted (started minimised, no compositor
    // showing it) must still offer the desktop's controls.
    QTimer::singleShot(DeferredFallbackMs, this, &MainWndController::startDeferred);
    // A large library takes a second or more to read; the window does not
    // wait for it. The lists alone read in a moment, so the source list
    // shows them in the first frame; the rest is read once that is painted.
    m_pane->setLibraryOpen(false, ZBLibraryController::peekPlaylists());
    ZBFirstPaint::mark("window built");
    m_window->show();
    ZBFirstPaint::mark("shown");
    m_windowModes->modes().setOnTopMode();
    displayModeChanged();
    m_validator->validateAll();
    return true;
}

void MainWndController::startLibraryLoad()
{
    if (m_libraryLoadStarted)
        return;
    m_libraryLoadStarted = true;
    // The table's first answer is sorted; at a million tracks ranking the
    // names takes a second, which is done here while nothing else has the
    // library yet.
    m_libraryLoader = std::thread([this, sortKey = m_trackModel->sortKey()]() {
        m_libraryOpenResult = m_library->openStore();
        if (m_libraryOpenResult.ok)
        {
            m_library->initLibrary();
            ZBTrackSorter::prepare(*m_library->managedObjectContext(), sortKey);
        }
        QMetaObject::invokeMethod(this, &MainWndController::libraryLoaded, Qt::QueuedConnection);
    });
}

bool MainWndController::waitForLibrary()
{
    startLibraryLoad();
    libraryLoaded();
    if (m_libraryReady)
        m_pane->waitForResult();
    return m_libraryReady;
}

void MainWndController::libraryLoaded()
{
    if (m_libraryLoader.joinable())
        m_libraryLoader.join();
    if (m_libraryReady || m_libraryFailed)
        return;
    const ZBObjectContext::OpenResult &opened = m_libraryOpenResult;
    if (!opened.ok)
    {
        m_libraryFailed = true;
        QMessageBox::critical(m_window.get(), ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")),
                              ZBLocalizer::localizedStringForKey(QStringLiteral("alertLibraryCannotOpenMessage"))
                                  + QStringLiteral("\n\n") + opened.error);
        QCoreApplication::exit(1);
        return;
    }
    if (opened.recoveredFromDamage)
    {
        QMessageBox::warning(m_window.get(), ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")),
                             ZBLocalizer::localizedStringForKey(QStringLiteral("alertLibraryDamagedMessage"))
                                 .arg(opened.quarantinedPath, opened.error));
    }
    m_libraryReady = true;
    ZBFirstPaint::mark("library read");
    m_pane->setLibraryOpen(true);
    m_pane->whenShown([]() { ZBFirstPaint::mark("tracks shown"); });
    m_validator->validateAll();
    for (const std::function<void()> &call : std::exchange(m_whenLibraryReady, {}))
        call();
}

void MainWndController::whenLibraryReady(std::function<void()> call)
{
    if (m_libraryReady)
        call();
    else if (!m_libraryFailed)
        m_whenLibraryReady.append(std::move(call));
}

void MainWndController::startDeferred()
{
    if (m_deferredStarted)
        return;
    m_deferredStarted = true;
    startLibraryLoad();
    startMpris();
    m_web->openHistory();
    // The media libraries are mapped on a thread of their own; the engines
    // are made once they are in memory, so the window keeps answering. Not
    // before the tracks show: reading a large library takes both cores, and
    // mapping the libraries beside it held the table up by some 150 ms at
    // 100,000 tracks. A play or a browse before then maps them at once.
    whenLibraryReady([this]() { m_pane->whenShown([this]() { preloadMediaModule(); }); });
}

void MainWndController::preloadMediaModule()
{
    ZBMediaModuleLoader::preload([guard = QPointer<MainWndController>(this)]() {
        QMetaObject::invokeMethod(
            qApp,
            [guard]() {
                if (guard)
                    guard->mediaModuleMapped();
            },
            Qt::QueuedConnection);
    });
}

void MainWndController::mediaModuleMapped()
{
    ZBFirstPaint::mark("media module mapped");
    // Each engine starts its own libmpv core and GL view, some 20 ms each:
    // one per event-loop turn keeps the window answering between them.
    ensureVideoEngine(ZBPlaybackEngine::VideoMovie);
    QTimer::singleShot(0, this, [this]() {
        ensureVideoEngine(ZBPlaybackEngine::RealMedia);
        ZBFirstPaint::mark("video engines made");
    });
    // The Flash engine is made and compiled in the background a moment
    // later, so neither the window nor the first movie waits for it. Not
    // before the tracks show: its web engine's processes would take the
    // cores that reading a large library needs.
    whenLibraryReady([this]() {
        m_pane->whenShown([this]() {
            QTimer::singleShot(FlashEngineDelayMs, this, [this]() {
                ensureFlashEngine();
                if (m_flashView)
                    m_flashView->warmUp();
                ZBFirstPaint::mark("flash engine made");
            });
        });
    });
}

void MainWndController::startMpris()
{
    // The desktop's player controls and media keys, when there is a session
    // bus to offer them on.
    if (QDBusConnection::sessionBus().isConnected())
    {
        m_mpris = std::make_unique<ZBMprisService>(this);
        if (!m_mpris->registerOn(QDBusConnection::sessionBus()))
            m_mpris.reset();
    }
    if (m_mpris)
    {
        const auto changed = [this]() { m_mpris->targetChanged(); };
        connect(m_playback.get(), &ZBPlaybackController::playingStateChanged, this, changed);
        connect(m_playback.get(), &ZBPlaybackController::playingItemChanged, this, changed);
        connect(m_playback.get(), &ZBPlaybackController::volumeChanged, this, changed);
        connect(m_playback.get(), &ZBPlaybackController::trackChanged, this, changed);
    }
}

void MainWndController::saveUserDefaults()
{
    m_settings->setWindowFrame(ZBSettings::mainWindowFrameName(), m_window->saveGeometry());
    m_windowModes->saveDetachedFrame();
    const std::unique_ptr<QSettings> store = ZBSettings::openStore();
    m_settings->saveUserDefaults(*store);
}

void MainWndController::sendFunctionsToTutorial()
{
    ZBLogoView *logo = m_playerPanel->logoView();
    logo->setPrimaryText(ZBSettings::applicationName());
    logo->setUpHitnText(ZBLocalizer::localizedStringForKey(QStringLiteral("tutorialTopHint")));
    logo->setBottomHitnText(ZBLocalizer::localizedStringForKey(QStringLiteral("tutorialBottomHint")));
    logo->setButtonsText(ZBLocalizer::localizedStringForKey(QStringLiteral("tutorialButtonTextHide")),
                         ZBLocalizer::localizedStringForKey(QStringLiteral("tutorialButtonTextShow")));
    logo->setPlayerMode(m_settings->showTutorial);
    logo->updateView();
}

void MainWndController::showHideTutorial()
{
    // Anything but "hide" counts as shown, as on the start screen itself.
    m_settings->showTutorial = m_settings->showTutorial == u"hide" ? QStringLiteral("show") : QStringLiteral("hide");
    // Written now rather than at quit, so that a crash does not bring back a
    // tutorial the user has dismissed.
    saveUserDefaults();
    m_playerPanel->logoView()->setPlayerMode(m_settings->showTutorial);
    m_playerPanel->logoView()->updateView();
}

void MainWndController::buildPlayerWindow()
{
    m_dialogs = std::make_unique<ZBPlaybackDialogs>(m_window.get());
    m_playback = std::make_unique<ZBPlaybackController>(m_library.get(), m_settings.get(), m_dialogs.get());
    m_playback->setEngineProvider([this]() { ensureEngines(); });
    m_silverlightEngine = std::make_unique<ZBUnsupportedEngine>(
        ZBPlaybackEngine::Silverlight, ZBLocalizer::localizedStringForKey(QStringLiteral("silverlightUnsupported")));
    m_playback->setEngine(ZBPlaybackEngine::Silverlight, m_silverlightEngine.get());

    m_playerPanel = new ZBPlayerPanel(m_playback.get());
    connect(m_playerPanel->logoView(), &ZBLogoView::tutorialToggled, this, &MainWndController::showHideTutorial);
    sendFunctionsToTutorial();

    m_libraryDialogs = std::make_unique<ZBLibraryDialogs>(m_window.get());
    m_pane = std::make_unique<ZBLibraryPane>(*m_library, *m_settings, *m_playback, *m_libraryDialogs);
    m_trackModel = m_pane->trackModel();
    m_trackTable = m_pane->trackTable();
    connect(m_pane.get(), &ZBLibraryPane::playRequested, this, &MainWndController::playRow);
    connect(m_pane.get(), &ZBLibraryPane::importRequested, this,
            [this](const QStringList &paths, const QString &playlistUUID) { importFiles(paths, playlistUUID, false); });
    connect(m_playback.get(), &ZBPlaybackController::trackChanged, m_trackModel, &ZBTrackListModel::trackChanged);
    connect(m_playback.get(), &ZBPlaybackController::playingItemChanged, m_trackModel,
            &ZBTrackListModel::setPlayingItem);
    connect(m_playback.get(), &ZBPlaybackController::playingItemChanged, this, [this](ZBItem *item) {
        windowTitleChanged();
        if (const int row = m_trackModel->rowOf(item); row >= 0)
            m_trackTable->scrollTo(m_trackModel->index(row, 0));
    });
    connect(m_playback.get(), &ZBPlaybackController::trackRemoved, this, [this]() { reloadTrackList(); });

    m_window->setAcceptDrops(true);
    m_window->installEventFilter(this);

    m_layout = new ZBMainWindowLayout(m_window.get(), m_playerPanel, m_pane->sourceList(), m_pane->searchField(),
                                      m_pane->trackTable(), this);
    connect(m_pane.get(), &ZBLibraryPane::selectedListChanged, this, &MainWndController::selectedListChanged);
    buildWindowModes();
    addShortcuts();
}

bool MainWndController::eventFilter(QObject *watched, QEvent *event)
{
    // Escape is seen once, at the window it arrives at, before any widget
    // takes it, and still goes on to the widget.
    if (event->type() == QEvent::KeyPress && watched->isWindowType()
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape && !QApplication::activeModalWidget())
    {
        escapeKeyPressed();
        return false;
    }
    if (watched == m_playerPanel->screen() && event->type() == QEvent::MouseButtonDblClick)
    {
        m_windowModes->switchToFullscreenMode();
        return true;
    }
    if (watched != m_window.get())
        return QObject::eventFilter(watched, event);
    const auto localFiles = &ZBLibraryTreeModel::localFiles;
    if (event->type() == QEvent::Close && m_windowModes->displayMode() == ZBViewModes::Detached)
    {
        // The picture plays on in its own window; the main window comes back
        // with the detached window's close button or another start.
        m_window->hide();
        event->ignore();
        return true;
    }
    if (event->type() == QEvent::Close && !applicationShouldTerminate())
    {
        // Closing the window quits, and is held back the same way.
        event->ignore();
        return true;
    }
    if (event->type() == QEvent::DragEnter)
    {
        auto *drag = static_cast<QDragEnterEvent *>(event);
        if (!localFiles(drag->mimeData()).isEmpty())
        {
            drag->acceptProposedAction();
            return true;
        }
    }
    else if (event->type() == QEvent::Drop)
    {
        auto *drop = static_cast<QDropEvent *>(event);
        const QStringList paths = localFiles(drop->mimeData());
        if (!paths.isEmpty())
        {
            drop->acceptProposedAction();
            openFiles(paths);
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

void MainWndController::addShortcuts()
{
    const auto bind = [this](const QKeySequence &keys, auto slot) {
        auto *shortcut = new QShortcut(keys, m_window.get());
        shortcut->setContext(Qt::WindowShortcut);
        connect(shortcut, &QShortcut::activated, m_playback.get(), slot);
    };
    bind(QKeySequence(Qt::Key_Space), [this]() { m_playback->play_video(ZBPlaybackController::Sender::PlayButton); });
    bind(QKeySequence(Qt::CTRL | Qt::Key_Right), [this]() { m_playback->buttonNextClick(); });
    bind(QKeySequence(Qt::CTRL | Qt::Key_Left), [this]() { m_playback->buttonPrevClick(); });
    bind(QKeySequence(Qt::CTRL | Qt::Key_Up), [this]() { m_playback->volumeUp(); });
    bind(QKeySequence(Qt::CTRL | Qt::Key_Down), [this]() { m_playback->volumeDown(); });
    bind(QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_Down), [this]() { m_playback->mute(); });
    bind(QKeySequence(Qt::CTRL | Qt::Key_Period), [this]() { m_playback->stopPlayback(); });
}

void MainWndController::reloadTrackList()
{
    m_pane->reloadNode();
}

void MainWndController::ensureFlashEngine()
{
    if (m_flashEngine)
        return;
    ZBMediaModule *module = ZBMediaModuleLoader::module();
    if (!module)
    {
        setUnavailableEngines({ZBPlaybackEngine::FlashMovie, ZBPlaybackEngine::FlashVideo});
        return;
    }
    m_flashView = module->createFlashView();
    m_flashView->setFlashBackgroundColor(Qt::black);
    m_flashEngine.reset(module->createFlashEngine(ZBPlaybackEngine::FlashMovie, m_flashView));
    m_flvEngine.reset(module->createFlashEngine(ZBPlaybackEngine::FlashVideo, m_flashView));
    m_playback->setEngine(ZBPlaybackEngine::FlashMovie, m_flashEngine.get());
    m_playback->setEngine(ZBPlaybackEngine::FlashVideo, m_flvEngine.get());
    m_playerPanel->addEngineView(ZBPlaybackEngine::FlashMovie, m_flashView->widget());
    m_playerPanel->addEngineView(ZBPlaybackEngine::FlashVideo, m_flashView->widget());
}

void MainWndController::ensureVideoEngines()
{
    ensureVideoEngine(ZBPlaybackEngine::VideoMovie);
    ensureVideoEngine(ZBPlaybackEngine::RealMedia);
}

void MainWndController::ensureVideoEngine(int code)
{
    std::unique_ptr<ZBPlaybackEngine> &engine = code == ZBPlaybackEngine::RealMedia ? m_realEngine : m_videoEngine;
    if (engine)
        return;
    ZBMediaModule *module = ZBMediaModuleLoader::module();
    if (!module)
    {
        setUnavailableEngines({code});
        return;
    }
    engine.reset(module->createVideoEngine(code));
    m_playback->setEngine(code, engine.get());
    m_playerPanel->addEngineView(code, engine->view());
}

void MainWndController::setUnavailableEngines(const QList<int> &codes)
{
    // The library stays usable; every attempt to play says why it cannot.
    const QString reason =
        ZBLocalizer::localizedStringForKey(QStringLiteral("mediaModuleMissing")).arg(ZBMediaModuleLoader::loadError());
    for (const int code : codes)
    {
        auto engine = std::make_unique<ZBUnsupportedEngine>(code, reason);
        m_playback->setEngine(code, engine.get());
        if (code == ZBPlaybackEngine::VideoMovie)
            m_videoEngine = std::move(engine);
        else if (code == ZBPlaybackEngine::RealMedia)
            m_realEngine = std::move(engine);
        else if (code == ZBPlaybackEngine::FlashMovie)
            m_flashEngine = std::move(engine);
        else
            m_flvEngine = std::move(engine);
    }
}

void MainWndController::ensureEngines()
{
    ensureVideoEngines();
    ensureFlashEngine();
}

void MainWndController::playRow(int row)
{
    // Whatever the row holds, its engine must exist before it plays.
    ensureEngines();
    if (row < 0)
        return;
    m_trackTable->selectRow(row);
    m_playback->setSelectedRow(row);
    m_playback->play_video(ZBPlaybackController::Sender::TrackTable);
}

void MainWndController::openFiles(const QStringList &paths)
{
    // Playlist files become playlists; they play nothing.
    QStringList media;
    for (const QString &path : paths)
    {
        if (QFileInfo(path).suffix().compare(ZBPlaylistFile::Extension, Qt::CaseInsensitive) == 0)
            importPlaylistFile(path);
        else
            media << path;
    }
    importFiles(media, QString(), true);
}

void MainWndController::importPlaylistFile(const QString &path)
{
    if (!m_libraryReady)
        return whenLibraryReady([this, path]() { importPlaylistFile(path); });
    const ZBPlaylistFile::ImportResult result = ZBPlaylistFile::importPlaylistFile(*m_library, path);
    if (!result.error.isEmpty())
        qWarning().noquote() << "Cannot import the playlist" << path << ":" << result.error;
    // An unreadable file is reported twice, as the player always has.
    for (int i = 0; i < result.errorAlertCount(); ++i)
    {
        QMessageBox box(QMessageBox::Warning,
                        ZBLocalizer::localizedStringForKey(ZBPlaylistFile::ImportErrorTitleKey),
                        ZBLocalizer::localizedStringForKey(ZBPlaylistFile::ImportErrorTitleKey), QMessageBox::NoButton,
                        m_window.get());
        box.setInformativeText(ZBLocalizer::localizedStringForKey(ZBPlaylistFile::ImportErrorInfoKey));
        box.addButton(ZBLocalizer::localizedStringForKey(ZBPlaylistFile::ImportErrorButtonKey), QMessageBox::AcceptRole);
        box.exec();
    }
    if (!result.succeeded())
        return;
    m_pane->reloadTree();
    m_pane->selectList(result.playlistUUID);
}

void MainWndController::importPlaylist()
{
    const QString path = QFileDialog::getOpenFileName(
        m_window.get(), ZBLocalizer::localizedStringForKey(ZBPlaylistFile::OpenPanelTitleKey), QString(),
        QStringLiteral("*.%1").arg(ZBPlaylistFile::Extension));
    if (!path.isEmpty())
        importPlaylistFile(path);
}

void MainWndController::exportPlaylist()
{
    const ZBPlaylist *playlist = m_library->getPlaylistsFromLibraryByUUID(m_pane->selectedListUUID());
    if (!playlist)
        return;
    const QString path = QFileDialog::getSaveFileName(
        m_window.get(), ZBLocalizer::localizedStringForKey(ZBPlaylistFile::SavePanelTitleKey),
        QDir::home().filePath(ZBPlaylistFile::proposedFileName(playlist)),
        QStringLiteral("*.%1").arg(ZBPlaylistFile::Extension));
    if (path.isEmpty())
        return;
    QString error;
    if (!ZBPlaylistFile::exportPlaylist(*m_library, playlist, path, &error))
        qWarning().noquote() << "Cannot export the playlist to" << path << ":" << error;
}

bool MainWndController::applicationShouldTerminate()
{
    const int running = m_web ? m_web->downloads().runningCount() : 0;
    if (running < 1 || m_settings->option_DontAskMeAgainWarningBeforeExit)
        return true;
    QMessageBox box(QMessageBox::Information, ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")),
                    ZBLocalizer::localizedStringForKey(QStringLiteral("closePlayerWhenActionIsNotCompletedMessage")),
                    QMessageBox::NoButton, m_window.get());
    box.setInformativeText(ZBLocalizer::localizedStringForKey(QStringLiteral("closePlayerWhenActionIsNotCompletedInfo")));
    QPushButton *ok = box.addButton(ZBLocalizer::localizedStringForKey(QStringLiteral("Button_OK_Title")),
                                    QMessageBox::AcceptRole);
    QPushButton *cancel = box.addButton(ZBLocalizer::cancelButtonTitle(), QMessageBox::RejectRole);
    box.setDefaultButton(ok);
    box.setEscapeButton(cancel);
    auto *never = new QCheckBox(ZBLocalizer::localizedStringForKey(QStringLiteral("NeverAskAgainTitle")));
    box.setCheckBox(never);
    box.exec();
    // Kept whichever button was pressed.
    m_settings->option_DontAskMeAgainWarningBeforeExit = never->isChecked();
    return box.clickedButton() != cancel;
}

void MainWndController::quit()
{
    if (applicationShouldTerminate())
        QCoreApplication::quit();
}

void MainWndController::openArguments(const QStringList &arguments)
{
    QStringList files;
    for (const QString &argument : arguments)
    {
        if (argument.startsWith(QLatin1String("norvikplayer:"), Qt::CaseInsensitive))
            openURL(argument);
        else
            files << argument;
    }
    openFiles(files);
}

void MainWndController::openURL(const QString &url)
{
    // The scheme is taken to stand in front; what follows is the address.
    static const QRegularExpression Scheme(QStringLiteral("^norvikplayer://"),
                                           QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = Scheme.match(url);
    m_lastURL = QUrl::fromPercentEncoding(url.mid(match.hasMatch() ? match.capturedLength() : 0).toUtf8());
    raiseWindow();
    // Pages add what they capture to the library.
    whenLibraryReady([this, url]() { m_web->handleGetURLEvent(url); });
}

void MainWndController::raiseWindow()
{
    const bool wasVisible = m_window->isVisible();
    m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
    if (!wasVisible && !m_playback->isPlaying())
        m_playerPanel->showLogo();
}

void MainWndController::stopRequested()
{
    m_playback->stopPlayback();
}

void MainWndController::volumeRequested(int percent)
{
    m_playback->volumeAction(std::clamp(percent, 0, 100));
}

ZBMediaKeyTarget::PlaybackState MainWndController::playbackState() const
{
    if (m_playback->isPlaying())
        return PlaybackState::Playing;
    return m_playback->playingItem() ? PlaybackState::Paused : PlaybackState::Stopped;
}

std::optional<ZBMediaKeyTarget::Track> MainWndController::currentTrack() const
{
    const ZBItem *item = m_playback->playingItem();
    if (!item)
        return std::nullopt;
    Track track;
    track.identifier = item->ItemUUID();
    track.title = item->Name();
    track.location = item->Path();
    // Flash movies count frames, which have no length in time.
    const QString type = item->Type().toLower();
    if (type != u"swf" && type != u"exe")
        track.length = item->Length().value_or(0);
    return track;
}

double MainWndController::position() const
{
    const ZBItem *item = m_playback->playingItem();
    if (!item || m_playback->currentTime() < 0)
        return 0;
    const QString type = item->Type().toLower();
    return type == u"swf" || type == u"exe" ? 0 : m_playback->currentTime();
}

int MainWndController::volume() const
{
    return m_playback->isMuted() ? 0 : m_playback->volume();
}

void MainWndController::mediaKeyPressed(int keyCode)
{
    // A web page on show (content modes 0 and 3) keeps the keys for itself.
    const int mode = this->mode();
    if (mode == 0 || mode == 3)
        return;
    switch (keyCode)
    {
    case ZBMediaKeyTarget::PlayPauseKey:
        m_playback->play_video(ZBPlaybackController::Sender::PlayButton);
        break;
    case ZBMediaKeyTarget::FastForwardKey:
        m_playback->play_next_or_previous(+1);
        break;
    case ZBMediaKeyTarget::RewindKey:
        m_playback->play_next_or_previous(-1);
        break;
    default:
        break;
    }
}

void MainWndController::importFiles(const QStringList &paths, const QString &playlistUUID, bool autoplay)
{
    if (!m_libraryReady)
        return whenLibraryReady([=, this]() { importFiles(paths, playlistUUID, autoplay); });
    if (paths.isEmpty())
        return;
    if (!m_importer)
        m_importer = std::make_unique<ZBLibraryImporter>(*m_library);
    // Files handed over while an import runs wait their turn: cancelling
    // the first import would lose what the user gave it.
    if (m_importer->isRunning())
    {
        m_pendingImports.append({paths, playlistUUID, autoplay});
        return;
    }

    auto *progress = new QProgressDialog(ZBLocalizer::localizedStringForKey(QStringLiteral("importWindowTitle")),
                                         ZBLocalizer::cancelButtonTitle(), 0, 0, m_window.get());
    progress->setWindowModality(Qt::WindowModal);
    progress->setMinimumDuration(400);
    progress->setAutoClose(false);
    connect(progress, &QProgressDialog::canceled, m_importer.get(), &ZBLibraryImporter::cancel);
    connect(m_importer.get(), &ZBLibraryImporter::progress, progress, [progress](int done, int total, const QString &) {
        progress->setMaximum(total);
        progress->setValue(done);
    });
    // Only a file handed over by itself starts playing; the contents of a
    // folder never do.
    QStringList playable;
    for (const QString &path : paths)
    {
        if (QFileInfo(path).isFile())
            playable << QFileInfo(path).absoluteFilePath();
    }
    auto stored = std::make_shared<QStringList>();
    connect(m_importer.get(), &ZBLibraryImporter::trackStored, progress,
            [stored](const QString &uuid, const QString &, bool) { *stored << uuid; });
    connect(m_importer.get(), &ZBLibraryImporter::finished, progress,
            [this, progress, stored, playlistUUID, autoplay, playable](const ZBLibraryImporter::Counts &,
                                                                        bool canceled) {
                progress->deleteLater();
                if (!m_pendingImports.isEmpty())
                {
                    const PendingImport next = m_pendingImports.takeFirst();
                    QTimer::singleShot(0, this, [this, next]() {
                        importFiles(next.paths, next.playlistUUID, next.autoplay);
                    });
                }
                // What was stored stays stored, cancelled or not; it joins
                // the playlist it was dropped on as well.
                if (!playlistUUID.isEmpty())
                    m_pane->addTracksToPlaylist(*stored, playlistUUID);
                reloadTrackList();
                if (!autoplay || canceled || !m_settings->option_autoplayAddedFiles)
                    return;
                ZBItem *first = nullptr;
                for (const QString &uuid : std::as_const(*stored))
                {
                    ZBItem *item = m_library->itemByUUID(uuid);
                    // The library holds a path once whatever its case, so the
                    // track found may be spelt otherwise than the file given.
                    if (item && playable.contains(QFileInfo(item->Path()).absoluteFilePath(), Qt::CaseInsensitive))
                    {
                        first = item;
                        break;
                    }
                }
                if (!first)
                    return;
                // A list or a search that does not hold the file gives way to
                // "All Tracks", which does.
                m_pane->playTrack(first);
            });
    m_importer->start(paths);
}

void MainWndController::buildMainMenu()
{
    const ZBMainMenuBuilder::Commands commands = {
        {QStringLiteral("NorvikPlayer/Quit Norvik Player"), [this]() { quit(); }},
        {QStringLiteral("File/Quit"), [this]() { quit(); }},
        {QStringLiteral("File/Open…"), [this]() { addToLibrary(); }},
        {QStringLiteral("File/New Playlist"), [this]() { m_pane->addPlaylistWithItems({}); }},
        {QStringLiteral("File/New Smart Playlist…"), [this]() { m_pane->addSmartList(); }},
        {QStringLiteral("File/New Playlist from Selection"), [this]() { m_pane->createPlaylistFromSelection(); }},
        {QStringLiteral("File/Edit Playlist"), [this]() { m_pane->editSelectedList(); }},
        {QStringLiteral("Track/Show Playing Track"), [this]() { m_pane->showPlayingTrack(); }},
        {QStringLiteral("File/Delete Playlist"), [this]() { m_pane->removeSelectedList(); }},
        {QStringLiteral("File/Import Playlist…"), [this]() { importPlaylist(); }},
        {QStringLiteral("File/Export Playlist…"), [this]() { exportPlaylist(); }},
        {QStringLiteral("Edit/Delete"), [this]() { m_pane->removeSelectedTracks(); }},
        {QStringLiteral("Edit/Select All"), [this]() { m_trackTable->selectAll(); }},
        {QStringLiteral("Edit/Find"), [this]() { m_pane->focusSearch(); }},
        {QStringLiteral("Track/Get Info"), [this]() { m_pane->getInfo(); }},
        {QStringLiteral("Track/Show in File Manager"), [this]() { m_pane->showInFileManager(); }},
        {QStringLiteral("Track/Rating/One Star"), [this]() { m_pane->setRating(1); }},
        {QStringLiteral("Track/Rating/Two Stars"), [this]() { m_pane->setRating(2); }},
        {QStringLiteral("Track/Rating/Three Stars"), [this]() { m_pane->setRating(3); }},
        {QStringLiteral("Track/Rating/Four Stars"), [this]() { m_pane->setRating(4); }},
        {QStringLiteral("Track/Rating/Five Stars"), [this]() { m_pane->setRating(5); }},
        {QStringLiteral("File/Add to Library…"), [this]() { addToLibrary(); }},
        {QStringLiteral("File/Save Movie As…"), [this]() { saveAs(); }},
        {QStringLiteral("Playback/Play"),
         [this]() { m_playback->play_video(ZBPlaybackController::Sender::PlayButton); }},
        {QStringLiteral("Playback/Stop"), [this]() { m_playback->stopPlayback(); }},
        {QStringLiteral("Playback/Next"), [this]() { m_playback->buttonNextClick(); }},
        {QStringLiteral("Playback/Previous"), [this]() { m_playback->buttonPrevClick(); }},
        {QStringLiteral("Playback/Repeat/None"), [this]() { m_playback->setRepeat(ZBPlaySequencer::RepeatNone); }},
        {QStringLiteral("Playback/Repeat/All"), [this]() { m_playback->setRepeat(ZBPlaySequencer::RepeatAll); }},
        {QStringLiteral("Playback/Repeat/One"), [this]() { m_playback->setRepeat(ZBPlaySequencer::RepeatOne); }},
        {QStringLiteral("Playback/Shuffle"), [this]() { m_playback->setShuffle(!m_playback->shuffle()); }},
        {QStringLiteral("Playback/Volume Up"), [this]() { m_playback->volumeUp(); }},
        {QStringLiteral("Playback/Volume Down"), [this]() { m_playback->volumeDown(); }},
        {QStringLiteral("Playback/Mute"), [this]() { m_playback->mute(); }},
        {QStringLiteral("NorvikPlayer/About Norvik Player"), [this]() { showAbout(); }},
        {QStringLiteral("NorvikPlayer/Preferences…"), [this]() { showPreferencesWindow(); }},
        {QStringLiteral("View/Show Browser"), [this]() { switchMode(); }},
        {QStringLiteral("View/Normal Mode"), [this]() { m_windowModes->switchToNormalMode(); }},
        {QStringLiteral("View/Detach Player"), [this]() { m_windowModes->modes().showOrHidedetachedWindow(); }},
        {QStringLiteral("View/Enter Full Screen"), [this]() { m_windowModes->switchToFullscreenMode(); }},
        {QStringLiteral("View/Show Fullscreen Controls"),
         [this]() {
             if (ZBFullscreenControlsWindow *controls = m_windowModes->fullscreenControls())
                 controls->setControlsShown(!controls->controlsShown());
         }},
        {QStringLiteral("View/Always on Top"),
         [this]() {
             m_windowModes->modes().alwaysOnTopButtonClick();
             displayModeChanged();
         }},
        {QStringLiteral("View/Show Additional Controls"), [this]() { showOrHideHUD(); }},
        {QStringLiteral("History/Back"), [this]() { m_web->buttonBackClick(); }},
        {QStringLiteral("History/Home"), [this]() { m_web->goHome(); }},
        {QStringLiteral("History/Download Selected"), [this]() { m_web->downloadSelected(); }},
        {QStringLiteral("History/Download All"), [this]() { m_web->downloadAll(); }},
        {QStringLiteral("History/Preview"), [this]() { m_web->previewSelected(); }},
        {QStringLiteral("History/Clear Downloads List"), [this]() { m_web->clearDownloadList(); }},
        {QStringLiteral("History/Recent Pages/Clear History"), [this]() { m_web->clearHistory(); }},
        {QStringLiteral("Playback/Screenshot"), [this]() { m_screenshots->makeScreenShot(); }},
        {QStringLiteral("Playback/Screenshot Series"), [this]() { m_screenshots->seriesButtonClick(); }},
        {QStringLiteral("Playback/Fit"), [this]() { m_sizer->fitButtonClick(); }},
        {QStringLiteral("Playback/Stretch"), [this]() { m_sizer->strechButtonClick(); }},
        {QStringLiteral("Playback/Original Size"), [this]() { m_sizer->oneToOneButtonClick(); }},
        {QStringLiteral("View/Show Page Resources"), [this]() { m_layout->toggle(ZBMainWindowLayout::UrlPane); }},
        {QStringLiteral("View/Show Source List"), [this]() { m_layout->toggle(ZBMainWindowLayout::TreePane); }},
        {QStringLiteral("View/Show Track List"), [this]() { m_layout->toggle(ZBMainWindowLayout::ListPane); }},
        {QStringLiteral("Window/Main Window"), [this]() { raiseWindow(); }},
        {QStringLiteral("Window/Minimize"), [this]() { m_window->showMinimized(); }},
        {QStringLiteral("File/Close Window"),
         [this]() {
             if (QWidget *window = QApplication::activeWindow())
                 window->close();
         }},
    };
    QMenuBar *bar = m_window->menuBar();
    const QHash<QString, QAction *> actions = ZBMainMenuBuilder::build(bar, ZBMainMenuDefinition::mainMenu(), commands);

    const auto shortcut = [&actions](const char *path, const QKeySequence &keys) {
        if (QAction *action = actions.value(QString::fromUtf8(path)))
            action->setShortcut(keys);
    };
    shortcut("File/Open…", QKeySequence::Open);
    shortcut("File/Save Movie As…", QKeySequence::SaveAs);
    shortcut("File/Quit", QKeySequence::Quit);
    shortcut("File/New Playlist", QKeySequence::New);
    shortcut("File/New Smart Playlist…", QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_N));
    shortcut("File/New Playlist from Selection", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
    shortcut("Edit/Find", QKeySequence::Find);
    shortcut("Edit/Select All", QKeySequence::SelectAll);
    shortcut("Track/Get Info", QKeySequence(Qt::CTRL | Qt::Key_I));
    shortcut("Track/Show in File Manager", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R));
    shortcut("View/Enter Full Screen", QKeySequence(Qt::Key_F11));
    shortcut("View/Detach Player", QKeySequence(Qt::CTRL | Qt::Key_D));
    shortcut("View/Show Browser", QKeySequence(Qt::CTRL | Qt::Key_B));
    shortcut("View/Always on Top", QKeySequence(Qt::CTRL | Qt::Key_T));
    shortcut("NorvikPlayer/Preferences…", QKeySequence(Qt::CTRL | Qt::Key_Comma));
    shortcut("Playback/Screenshot", QKeySequence(Qt::SHIFT | Qt::Key_S));
    shortcut("Window/Minimize", QKeySequence(Qt::CTRL | Qt::Key_M));
    shortcut("History/Back", QKeySequence(Qt::ALT | Qt::Key_Left));
    shortcut("History/Home", QKeySequence(Qt::ALT | Qt::Key_Home));
    shortcut("History/Download All", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D));
    if (QAction *clear = actions.value(QStringLiteral("History/Recent Pages/Clear History")))
        m_web->setHistoryMenu(qobject_cast<QMenu *>(clear->parent()));
    // The window's keys must work in the detached and fullscreen windows too.
    for (QAction *action : actions)
    {
        if (!action->shortcut().isEmpty())
            action->setShortcutContext(Qt::ApplicationShortcut);
    }

    // The optional columns of the track table, shown or hidden from here as
    // well as from the header's own menu.
    const QList<std::pair<const char *, const char *>> columns = {
        {"Type", "Type"},           {"Path", "Path"},        {"Time", "Length"},          {"Rating", "Rating"},
        {"Plays", "PlayCount"},     {"Date Added", "Added"}, {"Last Played", "LastPlayed"},
    };
    for (const auto &[title, key] : columns)
    {
        QAction *action = actions.value(QStringLiteral("View/Columns/") + QLatin1String(title));
        const int column = ZBTrackListModel::columnOf(QLatin1String(key));
        if (!action || column < 0)
            continue;
        action->setEnabled(true);
        action->setCheckable(true);
        action->setChecked(!m_trackTable->isColumnHidden(column));
        connect(action, &QAction::toggled, this, [this, column](bool shown) { m_trackTable->setColumnHidden(column, !shown); });
    }

    // Repeat is one of three; shuffle is on or off. Both show the settings.
    auto *repeatGroup = new QActionGroup(m_window.get());
    const char *const repeatPaths[] = {"Playback/Repeat/None", "Playback/Repeat/All", "Playback/Repeat/One"};
    for (int mode = 0; mode < 3; ++mode)
    {
        if (QAction *action = actions.value(QLatin1String(repeatPaths[mode])))
        {
            action->setCheckable(true);
            action->setChecked(m_playback->repeat() == mode);
            repeatGroup->addAction(action);
        }
    }
    if (QAction *action = actions.value(QStringLiteral("Playback/Shuffle")))
    {
        action->setCheckable(true);
        action->setChecked(m_playback->shuffle());
    }

    // Retitle once: the keys are built from the English titles just added.
    ZBMenuLocalizer::localizeMainMenuBar(bar);

    m_validator = std::make_unique<ZBMenuValidator>(bar, [this]() { return commandState(); });
    for (auto it = actions.cbegin(); it != actions.cend(); ++it)
    {
        if (commands.contains(it.key()))
            m_validator->addAction(it.value());
    }
    const auto revalidate = [this]() { m_validator->scheduleValidation(); };
    connect(m_playback.get(), &ZBPlaybackController::playingStateChanged, this, revalidate);
    connect(m_playback.get(), &ZBPlaybackController::playingItemChanged, this, revalidate);
    connect(m_playback.get(), &ZBPlaybackController::volumeChanged, this, revalidate);
    connect(m_trackTable->selectionModel(), &QItemSelectionModel::selectionChanged, this, revalidate);
}

void MainWndController::addToLibrary()
{
    QStringList patterns;
    for (const QString &type : ZBMediaTypes::getSupportedFileTypes())
    {
        if (!type.startsWith(QLatin1Char('\'')))
            patterns << QStringLiteral("*.") + type << QStringLiteral("*.") + type.toUpper();
    }
    const QStringList files = QFileDialog::getOpenFileNames(
        m_window.get(), ZBLocalizer::localizedStringForKey(QStringLiteral("importWindowTitle")), QString(),
        QStringLiteral("%1 (%2)").arg(ZBLocalizer::localizedStringForKey(QStringLiteral("prefShowMediaOnly")),
                                      patterns.join(QLatin1Char(' '))));
    // Chosen files also join the plain playlist on show.
    importFiles(files, m_pane->selectedListUUID(), false);
}

void MainWndController::saveAs()
{
    ZBItem *item = m_playback->playingItem();
    if (!item)
        return;
    // A projector is saved as the plain movie inside it.
    const bool convert = item->Type().compare(QLatin1String("exe"), Qt::CaseInsensitive) == 0
                         || ZBProjector::isApplicationFile(item->Path());
    const QFileInfo source(item->Path());
    const QString suffix = convert ? QStringLiteral("swf") : item->Type();
    const QString proposed = source.dir().filePath(convert ? source.completeBaseName() + QStringLiteral(".swf")
                                                           : source.fileName());
    const QString target = QFileDialog::getSaveFileName(m_window.get(), QString(), proposed,
                                                        QStringLiteral("*.%1").arg(suffix));
    if (target.isEmpty())
        return;
    bool ok = false;
    if (convert)
        ok = ZBProjector::convertEXE(item->Path(), target);
    else
    {
        QFile::remove(target);
        ok = QFile::copy(item->Path(), target);
    }
    if (!ok)
        qWarning("Some errors");
}

void MainWndController::buildWindowModes()
{
    m_windowModes = std::make_unique<ZBWindowModes>(m_window.get(), m_playerPanel, m_layout->playerPane(),
                                                    m_layout->columnSplitter(), m_playback.get(), m_settings.get());
    connect(m_windowModes.get(), &ZBWindowModes::displayModeChanged, this, &MainWndController::displayModeChanged);
    connect(m_windowModes.get(), &ZBWindowModes::listPaneButtonEnabled, m_layout->paneButton(ZBMainWindowLayout::ListPane),
            &QWidget::setEnabled);
    connect(m_layout->detachButton(), &QToolButton::clicked, this,
            [this]() { m_windowModes->modes().showOrHidedetachedWindow(); });
    connect(m_layout->fullscreenButton(), &QToolButton::clicked, this,
            [this]() { m_windowModes->switchToFullscreenMode(); });
    connect(m_layout->onTopButton(), &QToolButton::clicked, this, [this]() {
        m_windowModes->modes().alwaysOnTopButtonClick();
        displayModeChanged();
    });
    connect(m_layout->switchModeButton(), &QToolButton::clicked, this, &MainWndController::switchMode);
    connect(m_layout, &ZBMainWindowLayout::paneToggled, this, [this]() {
        if (m_validator)
            m_validator->scheduleValidation();
    });
    buildHUD();
    buildStatusPanel();
    buildScreenshots();
    buildBrowser();
    // A double-click on the picture toggles fullscreen wherever it is.
    m_playerPanel->screen()->installEventFilter(this);
    connect(m_playback.get(), &ZBPlaybackController::playingItemChanged, this,
            [this]() { m_windowModes->setDetachedWindowMinimalSize(); });
    // The player never stays fullscreen behind another program's window. The
    // check waits a moment: focus passes through "no window" while the
    // fullscreen window itself comes up.
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive || m_windowModes->displayMode() != ZBViewModes::Fullscreen)
            return;
        QTimer::singleShot(400, this, [this]() {
            if (QGuiApplication::applicationState() != Qt::ApplicationActive)
                m_windowModes->fsExitButtonClick();
        });
    });
    qApp->installEventFilter(this);
}

int MainWndController::mode() const
{
    return m_browsingMode >= 0 ? m_browsingMode : m_pane->mode();
}

void MainWndController::selectedListChanged(const QString &playlistUUID)
{
    if (!m_libraryReady)
        return;
    const ZBPlaylist *playlist = m_library->getPlaylistsFromLibraryByUUID(playlistUUID);
    const bool browsing = playlist && playlist->Name() == u"NowBrowsing";
    const int before = mode();
    m_browsingMode = browsing ? (m_browsingMode == 3 ? 3 : 0) : -1;
    if (mode() != before)
        setMode();
    if (m_validator)
        m_validator->scheduleValidation();
}

void MainWndController::setMode()
{
    const int content = mode();
    const ZBContentLayout layout = ZBContentLayout::forMode(content, m_settings->option_mustShowUrlPaneInPlaylistMode,
                                                            m_playback->playingItem() != nullptr);
    if (layout.closeDetachedAndHUD)
    {
        // The page takes the player's place: the picture comes home first.
        if (m_windowModes->displayMode() == ZBViewModes::Detached)
            m_windowModes->switchToNormalMode();
        if (m_hud && m_hud->isVisible())
            showOrHideHUD();
    }
    if (layout.stopPlayback && m_playback->playingItem())
        m_playback->stopPlayback();
    m_layout->applyContentLayout(layout);
    if (layout.showsBrowser)
        m_web->ensureStarted();
    m_led->setContentMode(content);
    m_led->setBackFromPreviewVisible(content == ZBContentLayout::Preview);
    windowTitleChanged();
    if (m_validator)
        m_validator->scheduleValidation();
}

void MainWndController::switchMode()
{
    if (ZBContentLayout::isLibraryContent(mode()))
    {
        const QModelIndex downloads = m_pane->treeModel()->rootIndex(ZBLibraryTree::DownloadsRoot);
        const QModelIndex first = m_pane->treeModel()->index(0, 0, downloads);
        if (first.isValid())
        {
            m_pane->sourceList()->expand(downloads);
            m_pane->sourceList()->setCurrentIndex(first);
        }
        if (m_browsingMode < 0)
        {
            m_browsingMode = 0;
            setMode();
        }
        return;
    }
    m_browsingMode = -1;
    m_pane->selectList(m_library->allTracksUUID());
    setMode();
}

void MainWndController::windowTitleChanged()
{
    const ZBItem *item = m_playback->playingItem();
    const ZBContentLayout layout =
        ZBContentLayout::forMode(mode(), m_settings->option_mustShowUrlPaneInPlaylistMode, item != nullptr);
    QString title = ZBLocalizer::localizedStringForKey(layout.titleKey);
    if (item && layout.titleKey == u"mainWindowTitlePlaying")
        title = title.arg(item->Name());
    m_window->setWindowTitle(title);
    if (m_windowModes->detachedWindow())
        m_windowModes->detachedWindow()->setWindowTitle(item ? item->Name() : title);
}

void MainWndController::displayModeChanged()
{
    const int display = m_windowModes->displayMode();
    windowTitleChanged();
    m_layout->detachButton()->setChecked(display == ZBViewModes::Detached);
    m_layout->onTopButton()->setChecked(m_windowModes->modes().onTopMode() != ZBViewModes::OnTopOff);
    setEnabledHUDButtons();
    applyHUDLevel();
    updateScreenSaver();
    if (m_mpris)
        m_mpris->targetChanged();
    if (m_validator)
        m_validator->scheduleValidation();
}

bool MainWndController::isFullscreen() const
{
    return m_windowModes && m_windowModes->displayMode() == ZBViewModes::Fullscreen;
}

void MainWndController::fullscreenRequested(bool fullscreen)
{
    if (fullscreen == isFullscreen())
        return;
    if (fullscreen)
        m_windowModes->switchToFullscreenMode();
    else
        m_windowModes->fsExitButtonClick();
}

ZBCommandState MainWndController::commandState() const
{
    ZBCommandState state;
    state.mode = mode();
    state.displayMode = m_windowModes->displayMode();
    state.modalWindowOpen = QApplication::activeModalWidget() != nullptr;
    state.urlPaneCollapsed = m_layout->isCollapsed(ZBMainWindowLayout::UrlPane);
    state.treePaneCollapsed = m_layout->isCollapsed(ZBMainWindowLayout::TreePane);
    state.listPaneCollapsed = m_layout->isCollapsed(ZBMainWindowLayout::ListPane);
    // Until the store is read every command waits, as behind a dialog.
    if (!m_libraryReady)
    {
        state.modalWindowOpen = true;
        return state;
    }
    if (const ZBPlaylist *source = m_library->getPlaylistsFromLibraryByUUID(m_pane->selectedListUUID()))
    {
        state.sourceSelected = true;
        state.sourceName = source->Name();
        state.sourceGroup = source->Group();
        state.sourceIsSmart = source->isSmart();
    }
    const QModelIndexList rows =
        m_trackTable->selectionModel() ? m_trackTable->selectionModel()->selectedRows() : QModelIndexList();
    state.selectedTrackRow = rows.isEmpty() ? -1 : rows.first().row();
    state.isPlaying = m_playback->isPlaying();
    state.hasPlayingItem = m_playback->playingItem() != nullptr;
    state.playbackStopped = m_playback->playingItem() == nullptr;
    state.currentUsedView = state.hasPlayingItem ? m_playback->currentUsedView() : -1;
    state.repeat = m_playback->repeat();
    state.shuffle = m_playback->shuffle();
    state.muted = m_playback->isMuted();
    state.volume = m_playback->volume();
    state.volumeBeforeMute = m_playback->volumeBeforeMute();
    state.showTutorial = m_settings->showTutorial;
    m_web->fillCommandState(state);
    state.hudVisible = m_hud && m_hud->isVisible();
    state.screenshotSeriesInProgress = m_screenshots && m_screenshots->isSeriesInProgress();
    return state;
}

void MainWndController::escapeKeyPressed()
{
    // The information window closes itself on Escape, as dialogs do.
    if (m_windowModes->displayMode() == ZBViewModes::Fullscreen)
        m_windowModes->fsExitButtonClick();
    else if (m_aboutWindow && m_aboutWindow->isVisible())
        m_aboutWindow->close();
}

void MainWndController::showAbout()
{
    if (!m_aboutWindow)
    {
        auto *box = new QMessageBox(QMessageBox::NoIcon, ZBSettings::applicationName(), ZBSettings::applicationName(),
                                    QMessageBox::Close, m_window.get());
        box->setIconPixmap(QIcon::fromTheme(QStringLiteral("norvikplayer"), m_window->windowIcon()).pixmap(96, 96));
        box->setInformativeText(QStringLiteral("%1 %2\n\n%3")
                                    .arg(ZBLocalizer::localizedStringForKey(QStringLiteral("aboutVersion")),
                                         QCoreApplication::applicationVersion(),
                                         QStringLiteral("© Quillon Software")));
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setModal(false);
        m_aboutWindow = box;
    }
    m_aboutWindow->show();
    m_aboutWindow->raise();
    m_aboutWindow->activateWindow();
}

void MainWndController::showPreferencesWindow()
{
    if (!m_preferencesWindow)
    {
        m_preferencesWindow = new ZBPreferencesWindow(m_window.get());
        connect(m_preferencesWindow, &ZBPreferencesWindow::preferencesWindowClose, this,
                &MainWndController::closePreferencesWindow);
    }
    m_preferencesWindow->initWithOptions(*m_settings);
    m_preferencesWindow->showPreferencesWindow();
}

void MainWndController::closePreferencesWindow()
{
    m_preferencesWindow->applyTo(*m_settings);
    if (m_preferencesWindow->mustResetWarnings())
        m_settings->resetDialogWarnings();
    if (m_flashView)
    {
        m_flashView->setFlashQuality(m_settings->option_flashDefaultQuality);
        m_flashView->setEnabledSecurity(m_settings->option_enableFlashLocalSecurity);
    }
    if (m_screenshots->isSeriesInProgress())
        m_screenshots->restartTimer();
    m_validator->scheduleValidation();
}

void MainWndController::buildHUD()
{
    m_hud = std::make_unique<ZBHUDWindow>();
    m_sizer = new ZBVideoSizer(m_playback.get(), this);
    m_sizer->setHost(m_window.get(), m_playerPanel);
    m_windowModes->setHUDWindow(m_hud.get());
    connect(m_windowModes.get(), &ZBWindowModes::pictureWindowChanged, m_sizer, [this](QWidget *window) {
        m_sizer->setHost(window, window == m_window.get() ? static_cast<QWidget *>(m_playerPanel)
                                                          : m_windowModes->picture());
    });
    connect(m_hud.get(), &ZBHUDWindow::fitClicked, m_sizer, &ZBVideoSizer::fitButtonClick);
    connect(m_hud.get(), &ZBHUDWindow::stretchClicked, m_sizer, &ZBVideoSizer::strechButtonClick);
    connect(m_hud.get(), &ZBHUDWindow::oneToOneClicked, m_sizer, &ZBVideoSizer::oneToOneButtonClick);
    connect(m_hud.get(), &ZBHUDWindow::dragClicked, m_sizer, &ZBVideoSizer::dragButtonClick);
    connect(m_hud.get(), &ZBHUDWindow::zoomSliderMoved, m_sizer, &ZBVideoSizer::zoomSliderMoved);
    connect(m_sizer, &ZBVideoSizer::zoomValueChanged, m_hud.get(), &ZBHUDWindow::setZoomValue);
    connect(m_sizer, &ZBVideoSizer::draggingChanged, m_hud.get(), &ZBHUDWindow::setDragging);
    connect(m_hud.get(), &ZBHUDWindow::closed, this, [this]() {
        m_layout->hudButton()->setChecked(false);
        m_validator->scheduleValidation();
    });
    connect(m_layout->hudButton(), &QToolButton::clicked, this, &MainWndController::showOrHideHUD);
    connect(m_playback.get(), &ZBPlaybackController::playingItemChanged, this, &MainWndController::setEnabledHUDButtons);
    connect(m_playback.get(), &ZBPlaybackController::playingStateChanged, this,
            &MainWndController::setEnabledHUDButtons);
    setEnabledHUDButtons();
}

void MainWndController::setEnabledHUDButtons()
{
    m_hud->setEnabledHUDButtons(ZBVideoSizing::hudButtons(
        m_playback->playingItem() == nullptr, m_playback->currentUsedView(), m_windowModes->displayMode()));
}

void MainWndController::showOrHideHUD()
{
    const bool show = !m_hud->isVisible();
    if (show)
    {
        applyHUDLevel();
        // Beside the window it serves, at its top right, the first time.
        if (!m_hud->property("placed").toBool())
        {
            const QWidget *served = m_windowModes->pictureWindow();
            const QRect screen = served->screen()->availableGeometry();
            const QSize size = m_hud->sizeHint();
            const QPoint beside = served->frameGeometry().topRight() + QPoint(8, 0);
            // Inside the screen, over the window's edge if need be.
            m_hud->move(std::clamp(beside.x(), screen.left(), std::max(screen.left(), screen.right() - size.width())),
                        std::clamp(beside.y(), screen.top(), std::max(screen.top(), screen.bottom() - size.height())));
            m_hud->setProperty("placed", true);
        }
    }
    m_hud->setVisible(show);
    m_layout->hudButton()->setChecked(show);
    m_validator->scheduleValidation();
}

void MainWndController::applyHUDLevel()
{
    const int onTop = m_windowModes->modes().onTopMode();
    QWidget *served = onTop == ZBViewModes::DetachedOnTop && m_windowModes->detachedWindow()
                          ? static_cast<QWidget *>(m_windowModes->detachedWindow())
                          : m_window.get();
    m_hud->setLevelAbove(served, onTop != ZBViewModes::OnTopOff);
}

void MainWndController::buildScreenshots()
{
    m_screenshots = new ZBScreenshotController(m_playback.get(), m_settings.get(), this);
    connect(m_hud.get(), &ZBHUDWindow::screenshotClicked, m_screenshots, &ZBScreenshotController::makeScreenShot);
    connect(m_hud.get(), &ZBHUDWindow::seriesClicked, m_screenshots, &ZBScreenshotController::seriesButtonClick);
    connect(m_screenshots, &ZBScreenshotController::seriesStateChanged, this, [this](bool running) {
        m_hud->setSeriesRunning(running);
        m_led->setSeriesRunning(running);
        m_led->setScreenshotCaption(m_screenshots->ledCaption());
        m_validator->scheduleValidation();
    });
    connect(m_led, &ZBLed::cancelSeriesRequested, m_screenshots, &ZBScreenshotController::stopSeries);
    connect(m_screenshots, &ZBScreenshotController::shotSaved, this,
            [this](const QString &path, const QString &trackFolder, int countInSeries) {
                m_led->setLastShotFolder(trackFolder);
                if (countInSeries > 0)
                {
                    m_led->setScreenshotInfo(m_screenshots->ledCaption());
                    return;
                }
                m_led->setScreenshotCaption(m_screenshots->ledCaption());
                m_led->switchToScreenshotLedMode();
                m_notifications->post(QLatin1String(ZBNotificationCenter::TaskCompleted),
                                      m_screenshots->notificationDescription(), path);
            });
    connect(m_screenshots, &ZBScreenshotController::seriesFinished, this, [this](const QString &trackFolder) {
        m_led->setScreenshotCaption(m_screenshots->ledCaption());
        if (!trackFolder.isEmpty())
            m_notifications->post(QLatin1String(ZBNotificationCenter::TaskCompleted),
                                  m_screenshots->notificationDescription(), trackFolder);
    });
    // A shot that cannot be written is told, and playback goes on.
    connect(m_screenshots, &ZBScreenshotController::shotFailed, this, [this](const QString &message) {
        auto *box = new QMessageBox(QMessageBox::Warning, ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")),
                                    message, QMessageBox::Ok, m_window.get());
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setModal(false);
        box->show();
    });
}

void MainWndController::buildStatusPanel()
{
    m_led = new ZBLed;
    // Between the transport and the search field.
    m_layout->topBar()->insertWidget(1, m_led, 2);
    // The panel shows the time; the transport's own label would repeat it.
    m_playerPanel->timeLabel()->hide();
    connect(m_playback.get(), &ZBPlaybackController::playingItemChanged, m_led,
            [this](ZBItem *item) { m_led->setTrackName(item ? item->Name() : QString()); });
    connect(m_playback.get(), &ZBPlaybackController::timeChanged, m_led,
            [this](const QString &text) { m_led->setTime(text); });
    m_notifications = new ZBNotificationCenter(QDBusConnection::sessionBus(), this);
    // A click on a notification shows the file; the fullscreen picture must
    // not hide the file manager.
    connect(m_notifications, &ZBNotificationCenter::messageClicked, this,
            [this]() { m_windowModes->fsExitButtonClick(); });
    m_screenSaver = new ZBScreenSaverInhibitor(QDBusConnection::sessionBus(), this);
    connect(m_playback.get(), &ZBPlaybackController::playingStateChanged, this, &MainWndController::updateScreenSaver);
}

void MainWndController::updateScreenSaver()
{
    m_screenSaver->setInhibited(m_windowModes->displayMode() == ZBViewModes::Fullscreen && m_playback->isPlaying()
                                    && m_settings->option_dontAllowScreensaver,
                                ZBLocalizer::localizedStringForKey(QStringLiteral("screenSaverInhibitReason")));
}

void MainWndController::buildBrowser()
{
    ZBWebController::WindowHooks hooks;
    hooks.contentMode = [this]() { return mode(); };
    hooks.setContentMode = [this](int content) { showBrowsing(content); };
    hooks.showBrowsing = [this]() { showBrowsing(0); };
    m_web = std::make_unique<ZBWebController>(m_library.get(), m_settings.get(), m_layout, m_led, m_notifications,
                                              std::move(hooks));
    connect(m_web.get(), &ZBWebController::playRequested, this, &MainWndController::playDownloadedItem);
    // The download lists' badges are counted with the list.
    connect(m_web.get(), &ZBWebController::libraryChanged, this, [this]() { reloadTrackList(); });
    connect(m_web.get(), &ZBWebController::stateChanged, this, [this]() {
        if (m_validator)
            m_validator->scheduleValidation();
    });
}

void MainWndController::showBrowsing(int browsingMode)
{
    if (browsingMode != 0 && browsingMode != 3)
    {
        m_browsingMode = -1;
        setMode();
        return;
    }
    const QModelIndex downloads = m_pane->treeModel()->rootIndex(ZBLibraryTree::DownloadsRoot);
    const QModelIndex nowBrowsing = m_pane->treeModel()->index(0, 0, downloads);
    m_browsingMode = browsingMode;
    if (nowBrowsing.isValid() && m_pane->sourceList()->currentIndex() != nowBrowsing)
    {
        m_pane->sourceList()->expand(downloads);
        m_pane->sourceList()->setCurrentIndex(nowBrowsing);
    }
    setMode();
}

void MainWndController::playDownloadedItem(const QString &itemUUID)
{
    ZBItem *item = m_library->itemByUUID(itemUUID);
    if (!item)
        return;
    m_pane->selectList(m_library->allTracksUUID());
    m_pane->playTrack(item);
}
