#include <QApplication>
#include <QDragEnterEvent>
#include <QFile>
#include <QIcon>
#include <QMainWindow>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include "library/zblibrarycontroller.h"
#include "library/zbplaylist.h"
#include "library/zbplaylistfile.h"
#include "settings/zbsettings.h"
#include "support/flashtestmain.h"
#include "support/mediafactory.h"
#include "ui/app/mainwndcontroller.h"
#include "ui/library/zblibrarypane.h"
#include "ui/library/zblibrarytreemodel.h"
#include "ui/library/zbtracklistmodel.h"
#include "ui/playback/zblogoview.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/widgets/zbstyle.h"

// The window as a user starts it: stores opened, menus built and connected,
// files handed over on the command line added and played.
class TestMainWndController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // Keeps the library and settings of whoever runs the tests out of reach.
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("Quillon Software"));
        QCoreApplication::setApplicationName(QStringLiteral("Norvik Player Tests"));
        QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)).removeRecursively();
    }

    void startsWithMenusAnEmptyListAndTheTutorial()
    {
        ZBSettings::openStore()->remove(QStringLiteral("showTutorial"));
        // As the player starts it: the window is built and painted without
        // the icon theme, whose first use loads every image plug-in (the
        // test platform has no theme of its own: one is named).
        QIcon::setThemeName(QStringLiteral("hicolor"));
        QApplication::setStyle(new ZBStyle);
        MainWndController controller;
        QVERIFY(controller.start());
        QVERIFY(QTest::qWaitForWindowExposed(controller.window()));
        QFile maps(QStringLiteral("/proc/self/maps"));
        QVERIFY(maps.open(QIODevice::ReadOnly));
        QVERIFY(!maps.readAll().contains("/imageformats/"));
        QVERIFY(controller.waitForLibrary());
        QVERIFY(controller.window()->isVisible());
        QCOMPARE(controller.trackModel()->rowCount(), 0);

        QStringList enabled;
        for (const QAction *action : controller.window()->menuBar()->findChildren<QAction *>())
            if (!action->menu() && !action->isSeparator() && action->isEnabled())
                enabled << action->text();
        // The menus show the state from the start: with nothing to play or
        // select, only what needs neither is offered; the volume is full.
        for (const char *title : {"Shuffle", "Volume Down", "Mute", "New Playlist", "Find", "Preferences…"})
            QVERIFY2(enabled.contains(QString::fromUtf8(title)), title);
        for (const char *title : {"Play", "Stop", "Next", "Volume Up", "Get Info", "Delete Playlist", "Screenshot Series",
                                  "Enter Full Screen"})
            QVERIFY2(!enabled.contains(QString::fromUtf8(title)), title);

        // The user's click on the start screen's tutorial button goes
        // through the controller.
        auto *logo = controller.window()->findChild<ZBLogoView *>();
        QCOMPARE(logo->playerMode(), QStringLiteral("show"));
        QTest::mouseClick(logo->findChild<QPushButton *>(QStringLiteral("tutorialButton")), Qt::LeftButton);
        QCOMPARE(controller.settings()->showTutorial, QStringLiteral("hide"));
        QVERIFY(!logo->hintsShown());
        // Stored at once, not only when the program quits.
        QCOMPARE(ZBSettings::openStore()->value(QStringLiteral("showTutorial")).toString(), QStringLiteral("hide"));
    }

    // The next launch starts with the tutorial hidden, and flips back.
    void tutorialSettingHoldsAtTheNextLaunch()
    {
        MainWndController controller;
        QVERIFY(controller.start());
        QVERIFY(controller.waitForLibrary());
        auto *logo = controller.window()->findChild<ZBLogoView *>();
        QCOMPARE(logo->playerMode(), QStringLiteral("hide"));
        controller.showHideTutorial();
        QVERIFY(logo->hintsShown());
        QCOMPARE(ZBSettings::openStore()->value(QStringLiteral("showTutorial")).toString(), QStringLiteral("show"));
    }

    void droppedAndOpenedFilesJoinTheLibraryAndTheFirstPlays()
    {
        if (!nvktest::MediaFactory::isAvailable())
            QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
        const QString dropped = nvktest::MediaFactory::clip(QStringLiteral("avi"));
        const QString clip = nvktest::MediaFactory::clip(QStringLiteral("mp4"));
        const QString other = nvktest::MediaFactory::clip(QStringLiteral("mkv"));
        QVERIFY(!dropped.isEmpty() && !clip.isEmpty() && !other.isEmpty());
        MainWndController controller;
        QVERIFY(controller.start());
        QVERIFY(controller.waitForLibrary());
        const int before = controller.trackModel()->rowCount();

        // A list on show that does not hold the file gives way to All Tracks.
        controller.libraryPane()->addPlaylistWithItems({});
        // Only local files are taken from a drop.
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(dropped), QUrl(QStringLiteral("https://example.org/remote.mp4"))});
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(controller.window(), &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(controller.window(), &drop);
        // Files handed over while the drop is still being added wait for it:
        // nothing given is lost.
        controller.openFiles({other, clip});
        QTRY_COMPARE_WITH_TIMEOUT(controller.trackModel()->rowCount(), before + 3, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(controller.playback()->isPlaying(), 10000);
        QCOMPARE(controller.playback()->playingItem()->Path(), other);
        QCOMPARE(controller.libraryPane()->selectedListUUID(), controller.library()->allTracksUUID());
        QVERIFY(controller.window()->windowTitle().contains(controller.playback()->playingItem()->Name()));
    }

    // The window shows while the store is read; what arrives meanwhile (a
    // second start's files, a command) waits for it and is not lost.
    void filesHandedOverWhileTheLibraryOpensWaitForIt()
    {
        if (!nvktest::MediaFactory::isAvailable())
            QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
        const QString clip = nvktest::MediaFactory::clip(QStringLiteral("mov"));
        QVERIFY(!clip.isEmpty());
        {
            ZBLibraryController before;
            QVERIFY(before.openStore().ok);
            before.initLibrary();
            before.addPlaylistToLibraryByName(QStringLiteral("Saved list"), QStringLiteral("Name"), true, 200);
            QVERIFY(before.save());
        }
        MainWndController controller;
        QVERIFY(controller.start());
        // The read ends through the event loop, which has not run yet; the
        // source list already shows the saved lists.
        QVERIFY(!controller.isLibraryReady());
        QVERIFY(controller.window()->isVisible());
        ZBLibraryTreeModel *tree = controller.libraryPane()->treeModel();
        QString saved;
        for (const auto &playlist : ZBLibraryController::peekPlaylists())
            if (playlist->Name() == u"Saved list")
                saved = playlist->PlaylistUUID();
        QVERIFY(tree->indexForPlaylist(saved).isValid());
        QVERIFY(!tree->indexForPlaylist(QStringLiteral("no such list")).isValid());
        const auto enabled = [&controller](const QString &title) {
            for (const QAction *action : controller.window()->menuBar()->findChildren<QAction *>())
                if (action->text() == title)
                    return action->isEnabled();
            return false;
        };
        QVERIFY(!enabled(QStringLiteral("New Playlist")));
        controller.openArguments({clip});
        QTRY_VERIFY_WITH_TIMEOUT(controller.isLibraryReady(), 10000);
        QVERIFY(enabled(QStringLiteral("New Playlist")));
        QTRY_VERIFY_WITH_TIMEOUT(controller.playback()->playingItem(), 10000);
        QCOMPARE(controller.playback()->playingItem()->Path(), clip);
        QVERIFY(controller.trackModel()->rowOf(controller.playback()->playingItem()) >= 0);
    }

    void mediaKeysAndPlaylistFiles()
    {
        if (!nvktest::MediaFactory::isAvailable())
            QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
        QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)).removeRecursively();
        const QString first = nvktest::MediaFactory::clip(QStringLiteral("mp4"));
        const QString second = nvktest::MediaFactory::clip(QStringLiteral("avi"));
        QVERIFY(!first.isEmpty() && !second.isEmpty());

        MainWndController controller;
        QVERIFY(controller.start());
        QVERIFY(controller.waitForLibrary());
        controller.openFiles({first, second});
        QTRY_VERIFY_WITH_TIMEOUT(controller.playback()->isPlaying(), 10000);
        ZBItem *playing = controller.playback()->playingItem();
        // Whichever row it plays in, the next one exists.
        controller.playback()->setRepeat(ZBPlaySequencer::RepeatAll);
        controller.mediaKeyPressed(MainWndController::FastForwardKey);
        QTRY_VERIFY_WITH_TIMEOUT(
            controller.playback()->playingItem() && controller.playback()->playingItem() != playing, 10000);
        QTRY_COMPARE_WITH_TIMEOUT(controller.playbackState(), ZBMediaKeyTarget::PlaybackState::Playing, 10000);
        QCOMPARE(controller.currentTrack()->location, controller.playback()->playingItem()->Path());
        controller.mediaKeyPressed(MainWndController::PlayPauseKey);
        QVERIFY(!controller.playback()->isPlaying());
        QCOMPARE(controller.playbackState(), ZBMediaKeyTarget::PlaybackState::Paused);
        controller.mediaKeyPressed(MainWndController::PlayPauseKey);
        QTRY_VERIFY(controller.playback()->isPlaying());
        // Any other code is not a media key.
        controller.mediaKeyPressed(0x150A00);
        QVERIFY(controller.playback()->isPlaying());
        controller.mediaKeyPressed(MainWndController::RewindKey);
        QTRY_COMPARE_WITH_TIMEOUT(controller.playback()->playingItem(), playing, 10000);
        controller.stopRequested();
        QCOMPARE(controller.playbackState(), ZBMediaKeyTarget::PlaybackState::Stopped);

        // An address handed over is the browser's, not a file to import.
        controller.libraryPane()->waitForResult();
        const int tracks = controller.trackModel()->rowCount();
        controller.openArguments({QStringLiteral("norvikplayer://http://example.com/a%20b.html")});
        QCOMPARE(controller.lastURL(), QStringLiteral("http://example.com/a b.html"));
        QCOMPARE(controller.mode(), 0);
        controller.switchMode();
        controller.libraryPane()->waitForResult();
        QCOMPARE(controller.trackModel()->rowCount(), tracks);

        // A playlist file opened with the program becomes a list, shown, and
        // plays nothing.
        const QString list = controller.libraryPane()->addPlaylistWithItems(controller.trackModel()->tracks());
        ZBPlaylist *shared = controller.library()->getPlaylistsFromLibraryByUUID(list);
        shared->setName(QStringLiteral("Shared"));
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("shared.nvp"));
        QVERIFY(ZBPlaylistFile::exportPlaylist(*controller.library(), shared, file));
        controller.openFiles({file});
        const QString imported = controller.libraryPane()->selectedListUUID();
        QVERIFY(imported != list);
        QCOMPARE(controller.library()->getPlaylistsFromLibraryByUUID(imported)->Name(), QStringLiteral("Shared"));
        controller.libraryPane()->waitForResult();
        QCOMPARE(controller.trackModel()->rowCount(), 2);
        QVERIFY(!controller.playback()->isPlaying());
    }
};

NVK_FLASH_TEST_MAIN(TestMainWndController)
#include "tst_mainwndcontroller.moc"
