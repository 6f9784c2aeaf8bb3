// Checks the video engine's GL picture on a real display, which the offscreen
// test platform cannot show. Run it under a display or a virtual one:
//
//   xvfb-run -a -s "-screen 0 1280x1024x24" build/tests/mpvviewcheck [MOVIE]
//
// Without MOVIE it makes a clip with ffmpeg. It loads the movie before the
// view is shown (the load must wait for the GL context), plays it, grabs the
// window from the screen, then moves the view to a second window (Qt replaces
// its GL context) and grabs again. Exit code 0 when both grabs show the movie.

#include <QApplication>
#include <QImage>
#include <QOpenGLWidget>
#include <QScreen>
#include <QSet>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include <cstdio>

#include "engines/mpv/zbmpvengine.h"
#include "support/mediafactory.h"

namespace
{
// Most of a grab lit, in many colours: the movie, not a black or blank view.
bool showsMovie(const char *what, const QImage &image)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    int lit = 0;
    QSet<QRgb> colours;
    for (int y = 0; y < rgb.height(); y += 2)
    {
        for (int x = 0; x < rgb.width(); x += 2)
        {
            const QRgb pixel = rgb.pixel(x, y);
            lit += qRed(pixel) + qGreen(pixel) + qBlue(pixel) > 30 ? 1 : 0;
            colours.insert(pixel);
        }
    }
    const int percentLit = rgb.isNull() ? 0 : 400 * lit / (rgb.width() * rgb.height());
    const bool movie = percentLit > 50 && colours.size() > 50;
    std::printf("%-24s %dx%d, %d%% lit, %d colours: %s\n", what, image.width(), image.height(), percentLit,
                int(colours.size()), movie ? "movie" : "NO PICTURE");
    return movie;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QString movie = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (movie.isEmpty())
    {
        QString error;
        nvktest::MediaFactory::Clip clip;
        clip.extension = QStringLiteral("mp4");
        clip.seconds = 6;
        clip.size = QSize(320, 240);
        movie = nvktest::MediaFactory::clip(clip, &error);
        if (movie.isEmpty())
        {
            std::fprintf(stderr, "mpvviewcheck: %s\n", qPrintable(error));
            return 2;
        }
    }

    ZBMpvEngine engine(ZBPlaybackEngine::VideoMovie);
    std::printf("platform %s, %s\n", qPrintable(QGuiApplication::platformName()),
                engine.view() ? "with a view" : "headless");
    if (!engine.view())
    {
        std::fprintf(stderr,
                     "mpvviewcheck: the engine runs headless here (platform \"%s\", NVK_HEADLESS_MEDIA=%s); "
                     "run it on a display or under xvfb-run\n",
                     qPrintable(QGuiApplication::platformName()),
                     qPrintable(qEnvironmentVariable("NVK_HEADLESS_MEDIA")));
        return 2;
    }

    QWidget first;
    first.resize(640, 480);
    auto *firstLayout = new QVBoxLayout(&first);
    firstLayout->setContentsMargins(0, 0, 0, 0);
    QWidget second;
    second.resize(500, 400);
    auto *secondLayout = new QVBoxLayout(&second);
    secondLayout->setContentsMargins(0, 0, 0, 0);

    int failures = 0;
    QObject::connect(&engine, &ZBPlaybackEngine::loaded, &app, [&]() {
        std::printf("loaded: %s, %.2f s, %dx%d\n", qPrintable(engine.formatSummary()), engine.totalTime(),
                    engine.naturalSize().width(), engine.naturalSize().height());
        engine.play();
        QTimer::singleShot(1500, &app, [&]() {
            failures += showsMovie("first window:", first.screen()->grabWindow(first.winId()).toImage()) ? 0 : 1;
            failures += engine.snapshot().size() == engine.naturalSize() ? 0 : 1;

            secondLayout->addWidget(engine.view());
            second.show();
            QTimer::singleShot(1500, &app, [&]() {
                failures += showsMovie("second window:", second.screen()->grabWindow(second.winId()).toImage()) ? 0 : 1;
                std::printf("position %.2f s, %s\n", engine.currentTime(), engine.isPlaying() ? "playing" : "stopped");
                app.quit();
            });
        });
    });
    QObject::connect(&engine, &ZBPlaybackEngine::loadFailed, &app, [&](const QString &reason) {
        std::fprintf(stderr, "mpvviewcheck: %s\n", qPrintable(reason));
        app.exit(1);
    });
    QTimer::singleShot(30000, &app, [&]() {
        std::fprintf(stderr, "mpvviewcheck: no answer within 30 s\n");
        app.exit(1);
    });

    // Loaded before the view exists on screen: the engine holds the file
    // until the GL context does.
    engine.load(movie);
    firstLayout->addWidget(engine.view());
    QTimer::singleShot(300, &first, &QWidget::show);

    const int code = app.exec();
    if (code != 0)
        return code;
    std::printf("%s\n", failures == 0 ? "OK" : "FAILED");
    return failures == 0 ? 0 : 1;
}
