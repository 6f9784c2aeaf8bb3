// Time from play_video to the first frame of a Flash movie on screen (seen in
// the view's own pixels): with a
// cold engine (a fresh page that must compile the engine first), with the warm
// engine the player keeps, and, for the same movie, in a bare page holding
// only the engine (no frame control injected, no web channel). The player's
// page may cost at most 10 % over the bare page once warm.
//
// Runs headless: QT_QPA_PLATFORM defaults to offscreen.
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineSettings>
#include <QWebEngineView>

#include <algorithm>
#include <cstdio>

#include "engines/flash/zbflashengine.h"
#include "engines/flash/zbflashscheme.h"
#include "engines/flash/zbflashview.h"
#include "library/zblibrarycontroller.h"
#include "settings/zbsettings.h"
#include "support/flashmovies.h"
#include "ui/playback/zbplaybackcontroller.h"

namespace
{
constexpr int ColdRuns = 3;
constexpr int WarmRuns = 15;
constexpr double Goal = 1.1;

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values.at(values.size() / 2);
}

// Spins the event loop until `done` or the time is up.
template<typename Done>
bool waitUntil(Done done, int milliseconds = 30000)
{
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return done();
}

// Whether the view shows a frame of the counter movie at its centre: the only
// account of "on screen" that holds the same for both pages.
bool showsAFrame(QWidget *view)
{
    const QImage image = view->grab().toImage();
    return !image.isNull()
           && nvktest::counterMovieFrameForColour(image.pixelColor(image.width() / 2, image.height() / 2)) >= 0;
}

struct Player
{
    explicit Player(const QString &dataDir)
    {
        library.openStore(dataDir);
        library.initLibrary();
        view = new ZBFlashView;
        view->resize(550, 400);
        view->show();
        engine = std::make_unique<ZBFlashEngine>(ZBPlaybackEngine::FlashMovie, view);
        controller = std::make_unique<ZBPlaybackController>(&library, &settings, nullptr);
        controller->setEngine(ZBPlaybackEngine::FlashMovie, engine.get());
        settings.option_gotoIfLastFrameIsMet = false;
        settings.option_gotoIfFrameNumberWasDecreased = false;
        settings.option_gotoIfStayOnTheSameFrameMore = false;
    }
    ~Player()
    {
        controller.reset();
        engine.reset();
        delete view;
    }

    // Milliseconds from play_video to the page's word that the first frame
    // is on screen; -1 when it never came.
    double play(const QString &path)
    {
        ZBItem *item = library.itemByUUID(library.addItemToLibrarybyName(
            QStringLiteral("bench"), path, QString(), QStringLiteral("swf"), 0, 0, 0, QDateTime::currentDateTimeUtc(),
            QDateTime(), QString()));
        controller->setCurrentList({item}, library.allTracksUUID());
        controller->setSelectedRow(0);
        // Start from an empty stage, so nothing of the last run is mistaken
        // for this one.
        controller->stopPlaying();
        if (!waitUntil([this]() { return !showsAFrame(view); }))
            return -1;
        QElapsedTimer clock;
        clock.start();
        controller->play_video(ZBPlaybackController::Sender::TrackTable);
        if (!waitUntil([this]() { return showsAFrame(view); }))
            return -1;
        const double elapsed = clock.nsecsElapsed() / 1e6;
        library.removeItemFromLibraryByUUID(item->ItemUUID());
        return elapsed;
    }

    ZBLibraryController library;
    ZBSettings settings;
    ZBFlashView *view = nullptr;
    std::unique_ptr<ZBFlashEngine> engine;
    std::unique_ptr<ZBPlaybackController> controller;
};

// The engine's own page, served from the same scheme so both read the movie
// the same way.
struct BarePage
{
    BarePage()
        : profile(new QWebEngineProfile(&view))
        , scheme(new ZBFlashSchemeHandler(&view))
    {
        profile->installUrlSchemeHandler(ZBFlashSchemeHandler::SchemeName, scheme);
        page = new QWebEnginePage(profile, &view);
        // As the player's page has it: movies start with sound at once.
        page->settings()->setAttribute(QWebEngineSettings::PlaybackRequiresUserGesture, false);
        view.setPage(page);
        view.resize(550, 400);
        view.show();
    }
    ~BarePage() { delete page; }

    bool open()
    {
        QSignalSpy loaded(page, &QWebEnginePage::loadFinished);
        page->setUrl(ZBFlashSchemeHandler::appUrl(QStringLiteral("bare.html")));
        return waitUntil([&loaded]() { return !loaded.isEmpty(); });
    }

    double play(const QString &path)
    {
        page->runJavaScript(QStringLiteral("if (player) { player.remove(); player = null; }"));
        if (!waitUntil([this]() { return !showsAFrame(&view); }))
            return -1;
        QElapsedTimer clock;
        clock.start();
        page->runJavaScript(QStringLiteral("bareLoad(\"%1\");")
                                .arg(QString::fromLatin1(ZBFlashSchemeHandler::fileUrl(path).toEncoded())));
        if (!waitUntil([this]() { return showsAFrame(&view); }))
            return -1;
        return clock.nsecsElapsed() / 1e6;
    }

    QWebEngineView view;
    QWebEngineProfile *profile;
    ZBFlashSchemeHandler *scheme;
    QWebEnginePage *page = nullptr;
};

QString writeMovie(const QTemporaryDir &dir, const QString &name, const nvktest::CounterMovieOptions &options)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    file.write(nvktest::makeCounterMovie(options));
    return path;
}
} // namespace

int main(int argc, char *argv[])
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    ZBFlashView::prepareApplication();
    QApplication app(argc, argv);
    QTemporaryDir dir;

    nvktest::CounterMovieOptions options;
    options.width = 550;
    options.height = 400;
    options.frameCount = 240;
    options.compression = nvktest::SwfWriter::Compression::Zlib;
    struct Kind
    {
        const char *name;
        int version;
        bool as3;
    };
    const Kind kinds[] = {{"AVM1 v10 (injected)", 10, false}, {"AVM1 v6 (wrapped)", 6, false},
                          {"AS3 (hosted)", 10, true}};

    std::printf("Flash movie start, play_video to first frame on screen (550 x 400, 240 frames, deflated)\n\n");
    std::printf("%-22s %10s %10s %10s %8s\n", "movie", "cold ms", "warm ms", "bare ms", "ratio");
    bool met = true;
    for (const Kind &kind : kinds)
    {
        options.version = kind.version;
        options.actionScript3 = kind.as3;
        // Two files, so that no run is served a movie the page has just shown.
        const QString a = writeMovie(dir, QStringLiteral("%1-a.swf").arg(kind.name), options);
        const QString b = writeMovie(dir, QStringLiteral("%1-b.swf").arg(kind.name), options);

        QList<double> cold;
        for (int i = 0; i < ColdRuns; ++i)
        {
            QTemporaryDir data;
            Player player(data.path());
            cold << player.play(a);
        }

        QTemporaryDir data;
        Player player(data.path());
        player.play(a);
        QList<double> warm;
        for (int i = 0; i < WarmRuns; ++i)
            warm << player.play(i % 2 ? a : b);

        BarePage bare;
        if (!bare.open())
        {
            std::fprintf(stderr, "the bare page did not load\n");
            return 1;
        }
        bare.play(a);
        QList<double> barer;
        for (int i = 0; i < WarmRuns; ++i)
            barer << bare.play(i % 2 ? a : b);

        if (cold.contains(-1) || warm.contains(-1) || barer.contains(-1))
        {
            std::fprintf(stderr, "%s: a movie never showed its first frame\n", kind.name);
            return 1;
        }
        const double ratio = median(warm) / median(barer);
        met = met && ratio <= Goal;
        std::printf("%-22s %10.0f %10.0f %10.0f %7.2fx\n", kind.name, median(cold), median(warm), median(barer),
                    ratio);
    }
    std::printf("\nmedians of %d cold and %d warm starts; goal: warm at most %.1fx bare: %s\n", ColdRuns, WarmRuns,
                Goal, met ? "met" : "NOT met");
    return 0;
}
