// Time of a window-mode switch while a track plays: from the command to the
// first frame the engine shows in the picture's new window, for the video
// engine and for Flash, median of 15 switches cycling through detached,
// normal and fullscreen. Beside it, how much playback position the switch
// cost against the wall clock, and how often the engine loaded again (it
// must never).
//
// Needs a display with GL (the video picture is an OpenGL widget): run it
// under `xvfb-run -a -s "-screen 0 1280x1024x24"`; `scripts/dev bench` does.
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QOpenGLWidget>
#include <QQuickWidget>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <clocale>
#include <cstdio>

#include "engines/flash/zbflashview.h"
#include "engines/zbplaybackengine.h"
#include "support/flashmovies.h"
#include "support/mediafactory.h"
#include "ui/app/mainwndcontroller.h"
#include "ui/app/zbwindowmodes.h"
#include "ui/playback/zbplaybackcontroller.h"

namespace
{
constexpr int Switches = 15;
constexpr double GoalMs = 150;

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values.at(values.size() / 2);
}

template<typename Done>
bool waitUntil(Done done, int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
    return done();
}

struct Result
{
    QList<double> switchMs;
    QList<double> lostSeconds;
    int loads = 0;
    int missed = 0;
};

// Runs the switches on what plays now. `drawn` is bumped by the engine's
// widget each time it shows a frame; `position` reads the engine's seconds.
Result measure(MainWndController &controller, std::atomic<qint64> &drawnAt, const QElapsedTimer &clock,
               const std::function<double()> &position)
{
    Result result;
    ZBWindowModes *modes = controller.windowModes();
    const std::function<void()> cycle[] = {
        [modes]() { modes->switchToDetachedMode(); }, [modes]() { modes->switchToNormalMode(); },
        [modes]() { modes->switchToFullscreenMode(); }, [modes]() { modes->switchToNormalMode(); },
    };
    for (int i = 0; i < Switches; ++i)
    {
        // Let the picture settle where it is.
        waitUntil([] { return false; }, 400);
        const double before = position();
        const qint64 started = clock.nsecsElapsed();
        drawnAt = -1;
        cycle[i % 4]();
        if (!waitUntil([&drawnAt] { return drawnAt.load() >= 0; }, 3000))
        {
            ++result.missed;
            continue;
        }
        result.switchMs << (drawnAt.load() - started) / 1e6;
        waitUntil([] { return false; }, 500);
        const double wall = (clock.nsecsElapsed() - started) / 1e9;
        result.lostSeconds << std::max(0.0, wall - (position() - before));
    }
    modes->switchToNormalMode();
    return result;
}

void report(const char *engine, const Result &result)
{
    const double worstLost = result.lostSeconds.isEmpty()
                                 ? 0
                                 : *std::max_element(result.lostSeconds.cbegin(), result.lostSeconds.cend());
    std::printf("%-6s switch median %6.1f ms  max %6.1f ms  (goal < %.0f ms: %s)  position lost median %.3f s  "
                "max %.3f s  reloads %d  switches without a new frame %d\n",
                engine, median(result.switchMs),
                result.switchMs.isEmpty() ? 0 : *std::max_element(result.switchMs.cbegin(), result.switchMs.cend()),
                GoalMs, median(result.switchMs) < GoalMs ? "met" : "MISSED", median(result.lostSeconds), worstLost,
                result.loads, result.missed);
}
} // namespace

int main(int argc, char *argv[])
{
    ZBFlashView::prepareApplication();
    QApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("Quillon Software"));
    QCoreApplication::setApplicationName(QStringLiteral("Norvik Player Bench"));
    QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)).removeRecursively();
    if (QGuiApplication::platformName() == u"offscreen" || QGuiApplication::platformName() == u"minimal")
    {
        std::printf("bench_modeswitch: needs a display with GL (run under xvfb-run); skipped\n");
        return 0;
    }
    if (!nvktest::MediaFactory::isAvailable())
    {
        std::printf("bench_modeswitch: %s; skipped\n", qPrintable(nvktest::MediaFactory::unavailableReason()));
        return 0;
    }
    const QString video = nvktest::MediaFactory::clip({QStringLiteral("mp4"), 120.0, QSize(640, 360)});
    QTemporaryDir folder;
    const QString movie = folder.filePath(QStringLiteral("counter.swf"));
    {
        nvktest::CounterMovieOptions options;
        options.frameCount = 3000;
        options.width = 640;
        options.height = 360;
        QFile file(movie);
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        file.write(nvktest::makeCounterMovie(options));
    }

    QElapsedTimer clock;
    clock.start();
    std::atomic<qint64> drawnAt{-1};
    MainWndController controller;
    if (!controller.start() || !controller.waitForLibrary())
        return 1;
    ZBPlaybackController *playback = controller.playback();
    int loads = 0;
    QObject::connect(playback, &ZBPlaybackController::playingItemChanged, [&loads]() { ++loads; });

    controller.openFiles({video});
    if (!waitUntil([playback] { return playback->isPlaying(); }, 30000))
        return 1;
    QOpenGLWidget *glView = nullptr;
    for (QOpenGLWidget *view : controller.windowModes()->picture()->findChildren<QOpenGLWidget *>())
    {
        if (view->isVisible())
            glView = view;
    }
    if (!glView)
        return 1;
    QObject::connect(glView, &QOpenGLWidget::frameSwapped, [&] {
        if (drawnAt.load() < 0)
            drawnAt = clock.nsecsElapsed();
    });
    ZBPlaybackEngine *engine = playback->currentEngine();
    loads = 0;
    Result videoResult = measure(controller, drawnAt, clock, [engine] { return engine->currentTime(); });
    videoResult.loads = loads;
    report("video", videoResult);

    controller.openFiles({movie});
    if (!waitUntil([playback] { return playback->isPlaying() && playback->currentUsedView() == 0; }, 30000))
        return 1;
    auto *flash = qobject_cast<ZBFlashView *>(playback->flashView()->widget());
    // The web view draws through a Qt Quick scene inside it; its frames are
    // the picture's.
    auto *scene = flash->findChild<QQuickWidget *>();
    if (!scene)
        return 1;
    QObject::connect(scene->quickWindow(), &QQuickWindow::afterRendering, scene, [&] {
        if (drawnAt.load() < 0)
            drawnAt = clock.nsecsElapsed();
    }, Qt::DirectConnection);
    const double rate = flash->frameRate() > 0 ? flash->frameRate() : 24.0;
    waitUntil([] { return false; }, 1000);
    loads = 0;
    Result flashResult = measure(controller, drawnAt, clock, [flash, rate] { return flash->currentFrame() / rate; });
    flashResult.loads = loads;
    report("flash", flashResult);
    return 0;
}
