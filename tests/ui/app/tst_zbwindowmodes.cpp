#include <QMainWindow>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include "engines/flash/zbflashview.h"
#include "support/flashmovies.h"
#include "support/flashtestmain.h"
#include "support/mediafactory.h"
#include "ui/app/mainwndcontroller.h"
#include "ui/app/zbwindowmodes.h"
#include "ui/playback/zbplaybackcontroller.h"

// The picture moves between the main window, the detached window and
// fullscreen while a track plays: it must keep playing, never load again,
// and be shown in the window the mode says.
class TestZBWindowModes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("Quillon Software"));
        QCoreApplication::setApplicationName(QStringLiteral("Norvik Player Tests"));
        QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)).removeRecursively();
    }

    void playbackGoesOnInEveryMode_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("video") << "mp4";
        QTest::newRow("flash") << "swf";
    }

    void playbackGoesOnInEveryMode()
    {
        QFETCH(QString, kind);
        QString path;
        if (kind == u"swf")
        {
            nvktest::CounterMovieOptions options;
            options.frameCount = 300;
            options.frameRate = 24;
            path = m_folder.filePath(QStringLiteral("counter.swf"));
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(nvktest::makeCounterMovie(options));
        }
        else
        {
            if (!nvktest::MediaFactory::isAvailable())
                QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
            path = nvktest::MediaFactory::clip({QStringLiteral("mp4"), 30.0});
        }
        QVERIFY(!path.isEmpty());

        MainWndController controller;
        QVERIFY(controller.start());
        QVERIFY(controller.waitForLibrary());
        controller.openFiles({path});
        ZBPlaybackController *playback = controller.playback();
        QTRY_VERIFY_WITH_TIMEOUT(playback->isPlaying(), 20000);
        int loads = 0;
        connect(playback, &ZBPlaybackController::playingItemChanged, this, [&loads]() { ++loads; });
        if (auto *view = playback->flashView() ? qobject_cast<ZBFlashView *>(playback->flashView()->widget()) : nullptr)
            connect(view, &ZBFlashView::movieLoaded, this, [&loads]() { ++loads; });

        ZBWindowModes *modes = controller.windowModes();
        // Each step: what is asked, the mode it ends in, where the picture is.
        const struct
        {
            const char *step;
            std::function<void()> action;
            int displayMode;
        } steps[] = {
            {"detach", [modes]() { modes->modes().showOrHidedetachedWindow(); }, 1},
            {"fullscreen from detached", [modes]() { modes->switchToFullscreenMode(); }, 2},
            {"escape", [&controller]() { controller.escapeKeyPressed(); }, 0},
            {"fullscreen from normal", [&controller]() { controller.fullscreenRequested(true); }, 2},
            {"detached from fullscreen", [modes]() { modes->switchToDetachedMode(); }, 1},
            {"normal", [modes]() { modes->switchToNormalMode(); }, 0},
        };
        for (const auto &step : steps)
        {
            const double before = playback->currentTime();
            step.action();
            QCOMPARE(modes->displayMode(), step.displayMode);
            QCOMPARE(modes->picture()->window(), modes->pictureWindow());
            QVERIFY2(modes->pictureWindow()->isVisible(), step.step);
            QTRY_VERIFY2_WITH_TIMEOUT(playback->currentTime() > before, step.step, 5000);
            QVERIFY2(playback->isPlaying(), step.step);
            QCOMPARE(loads, 0);
        }
        QVERIFY(controller.window()->isVisible());
        QVERIFY(!modes->isDetachedWindowVisible());
    }

private:
    QTemporaryDir m_folder;
};

NVK_FLASH_TEST_MAIN(TestZBWindowModes)
#include "tst_zbwindowmodes.moc"
