#include "ui/app/mainwndcontroller.h"

#include <QActionGroup>
#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressDialog>
#include <QShortcut>
#include <QSplitter>
#include <QTableView>

#include "engines/flash/zbflashengine.h"
#include "engines/flash/zbflashview.h"
#include "engines/mpv/zbmpvengine.h"
#include "engines/unsupported/zbunsupportedengine.h"
#include "library/zblibrarycontroller.h"
#include "library/zblibraryimporter.h"
#include "localization/zblocalizer.h"
#include "localization/zbmainmenudefinition.h"
#include "playback/zbmediatypes.h"
#include "playback/zbprojector.h"
#include "settings/zbsettings.h"
#include "ui/app/zbmainmenubuilder.h"
#include "ui/library/zbtracklistmodel.h"
#include "ui/localization/zbmenulocalizer.h"
#include "ui/playback/zblogoview.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/playback/zbplaybackdialogs.h"
#include "ui/playback/zbplayerpanel.h"


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
    // The controller stops the engines it drives; it must go before them.
    m_playback.reset();
}

bool MainWndController::start()
{
    {
        const std::unique_ptr<QSettings> store = ZBSettings::openStore();
        m_settings->loadUserDefaults(*store);
    }
    if (!openLibrary())
        return false;
    m_library->initLibrary();

    buildPlayerWindow();
    buildMainMenu();
    m_window->setWindowTitle(ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")));
    const QByteArray frame = m_settings->windowFrame(ZBSettings::mainWindowFrameName());
    if (!frame.isEmpty())
        m_window->restoreGeometry(frame);
    connect(qApp, &QCoreApplication::aboutToQuit, this, &MainWndController::saveUserDefaults);
    m_window->show();
    // The Flash engine compiles in the background once the window is up, so
    // neither start-up nor the first movie waits for it.
    QTimer::singleShot(300, m_flashView, &ZBFlashView::warmUp);
    return true;
}

void MainWndController::saveUserDefaults()
{
    m_settings->setWindowFrame(ZBSettings::mainWindowFrameName(), m_window->saveGeometry());
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
    m_videoEngine = std::make_unique<ZBMpvEngine>(ZBPlaybackEngine::VideoMovie);
    m_realEngine = std::make_unique<ZBMpvEngine>(ZBPlaybackEngine::RealMedia);
    m_playback->setEngine(ZBPlaybackEngine::VideoMovie, m_videoEngine.get());
    m_playback->setEngine(ZBPlaybackEngine::RealMedia, m_realEngine.get());
    m_silverlightEngine = std::make_unique<ZBUnsupportedEngine>(
        ZBPlaybackEngine::Silverlight, ZBLocalizer::localizedStringForKey(QStringLiteral("silverlightUnsupported")));
    m_playback->setEngine(ZBPlaybackEngine::Silverlight, m_silverlightEngine.get());
    m_flashView = new ZBFlashView;
    m_flashView->setFlashBackgroundColor(Qt::black);
    m_flashEngine = std::make_unique<ZBFlashEngine>(ZBPlaybackEngine::FlashMovie, m_flashView);
    m_flvEngine = std::make_unique<ZBFlashEngine>(ZBPlaybackEngine::FlashVideo, m_flashView);
    m_playback->setEngine(ZBPlaybackEngine::FlashMovie, m_flashEngine.get());
    m_playback->setEngine(ZBPlaybackEngine::FlashVideo, m_flvEngine.get());

    m_playerPanel = new ZBPlayerPanel(m_playback.get());
    m_playerPanel->addEngineView(ZBPlaybackEngine::FlashMovie, m_flashView);
    m_playerPanel->addEngineView(ZBPlaybackEngine::FlashVideo, m_flashView);
    m_playerPanel->addEngineView(ZBPlaybackEngine::VideoMovie, m_videoEngine->view());
    m_playerPanel->addEngineView(ZBPlaybackEngine::RealMedia, m_realEngine->view());
    connect(m_playerPanel->logoView(), &ZBLogoView::tutorialToggled, this, &MainWndController::showHideTutorial);
    sendFunctionsToTutorial();

    m_trackModel = new ZBTrackListModel(this);
    m_trackTable = new QTableView;
    m_trackTable->setModel(m_trackModel);
    m_trackTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_trackTable->setSelectionMode(QAbstractItemView::SingleSelection);
    m_trackTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_trackTable->setAlternatingRowColors(true);
    m_trackTable->verticalHeader()->hide();
    m_trackTable->horizontalHeader()->setStretchLastSection(true);
    m_trackTable->setColumnWidth(0, 320);
    connect(m_trackTable, &QTableView::activated, this, [this](const QModelIndex &index) { playRow(index.row()); });
    connect(m_trackTable->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &current) { m_playback->setSelectedRow(current.row()); });
    connect(m_playback.get(), &ZBPlaybackController::trackChanged, m_trackModel, &ZBTrackListModel::trackChanged);
    connect(m_playback.get(), &ZBPlaybackController::playingItemChanged, m_trackModel,
            &ZBTrackListModel::setPlayingItem);
    connect(m_playback.get(), &ZBPlaybackController::playingItemChanged, this, [this](ZBItem *item) {
        m_window->setWindowTitle(
            item ? ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitlePlaying")).arg(item->Name())
                 : ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")));
        if (const int row = m_trackModel->rowOf(item); row >= 0)
            m_trackTable->scrollTo(m_trackModel->index(row, 0));
    });
    connect(m_playback.get(), &ZBPlaybackController::trackRemoved, this, [this]() { reloadTrackList(); });

    m_window->setAcceptDrops(true);
    m_window->installEventFilter(this);

    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(m_playerPanel);
    splitter->addWidget(m_trackTable);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    m_window->setCentralWidget(splitter);
    addShortcuts();
    reloadTrackList();
}

bool MainWndController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window.get())
        return QObject::eventFilter(watched, event);
    const auto localFiles = [](const QMimeData *data) {
        QStringList paths;
        if (!data || !data->hasUrls())
            return paths;
        for (const QUrl &url : data->urls())
        {
            if (url.isLocalFile())
                paths << url.toLocalFile();
        }
        return paths;
    };
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
    ZBPlaylist *allTracks = m_library->playlistByUUID(m_library->allTracksUUID());
    const ZBItemList tracks =
        ZBLibraryController::sortList(m_library->getItemsFromPlaylist(allTracks), QStringLiteral("Name"), true);
    m_trackModel->setTracks(tracks);
    m_playback->setCurrentList(tracks, m_library->allTracksUUID());
    if (m_playback->playingItem())
        m_trackModel->setPlayingItem(m_playback->playingItem());
}

void MainWndController::playRow(int row)
{
    if (row < 0)
        return;
    m_trackTable->selectRow(row);
    m_playback->setSelectedRow(row);
    m_playback->play_video(ZBPlaybackController::Sender::TrackTable);
}

void MainWndController::openFiles(const QStringList &paths)
{
    if (paths.isEmpty())
        return;
    if (!m_importer)
        m_importer = std::make_unique<ZBLibraryImporter>(*m_library);
    if (m_importer->isRunning())
        m_importer->cancel();

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
    auto firstAdded = std::make_shared<QString>();
    connect(m_importer.get(), &ZBLibraryImporter::trackStored, progress,
            [firstAdded](const QString &uuid, const QString &, bool) {
                if (firstAdded->isEmpty())
                    *firstAdded = uuid;
            });
    connect(m_importer.get(), &ZBLibraryImporter::finished, progress,
            [this, progress, firstAdded](const ZBLibraryImporter::Counts &, bool canceled) {
                progress->deleteLater();
                reloadTrackList();
                if (canceled || firstAdded->isEmpty() || !m_settings->option_autoplayAddedFiles)
                    return;
                if (ZBItem *item = m_library->itemByUUID(*firstAdded))
                    playRow(m_trackModel->rowOf(item));
            });
    m_importer->start(paths);
}

void MainWndController::buildMainMenu()
{
    const ZBMainMenuBuilder::Commands commands = {
        {QStringLiteral("NorvikPlayer/Quit Norvik Player"), []() { QApplication::quit(); }},
        {QStringLiteral("File/Quit"), []() { QApplication::quit(); }},
        {QStringLiteral("File/Open…"), [this]() { addToLibrary(); }},
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
    };
    QMenuBar *bar = m_window->menuBar();
    const QHash<QString, QAction *> actions = ZBMainMenuBuilder::build(bar, ZBMainMenuDefinition::mainMenu(), commands);

    const auto shortcut = [&actions](const char *path, const QKeySequence &keys) {
        if (QAction *action = actions.value(QLatin1String(path)))
            action->setShortcut(keys);
    };
    shortcut("File/Open…", QKeySequence::Open);
    shortcut("File/Save Movie As…", QKeySequence::SaveAs);
    shortcut("File/Quit", QKeySequence::Quit);

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
    openFiles(files);
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

bool MainWndController::openLibrary()
{
    if (ZBLibraryController::applicationSupportFolder().isEmpty())
    {
        QMessageBox box(QMessageBox::Critical, QStringLiteral("Alert"),
                        QStringLiteral("Can't find application support folder"));
        box.addButton(QStringLiteral("Quit"), QMessageBox::AcceptRole);
        box.exec();
        return false;
    }
    const ZBObjectContext::OpenResult opened = m_library->openStore();
    if (!opened.ok)
    {
        QMessageBox::critical(nullptr, ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")),
                              ZBLocalizer::localizedStringForKey(QStringLiteral("alertLibraryCannotOpenMessage"))
                                  + QStringLiteral("\n\n") + opened.error);
        return false;
    }
    if (opened.recoveredFromDamage)
    {
        QMessageBox::warning(nullptr, ZBLocalizer::localizedStringForKey(QStringLiteral("mainWindowTitle")),
                             ZBLocalizer::localizedStringForKey(QStringLiteral("alertLibraryDamagedMessage"))
                                 .arg(opened.quarantinedPath, opened.error));
    }
    return true;
}
