#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "engines/flash/zbflashengine.h"
#include "engines/flash/zbflashview.h"
#include "support/flashmovies.h"
#include "support/flashtestmain.h"
#include "support/mediafactory.h"
#include "support/swfwriter.h"

using nvktest::CounterMovieOptions;
using nvktest::SwfWriter;
using Compression = nvktest::SwfWriter::Compression;

Q_DECLARE_METATYPE(CounterMovieOptions)
Q_DECLARE_METATYPE(Compression)

namespace
{
CounterMovieOptions movie(int version, Compression compression = Compression::None, bool as3 = false)
{
    CounterMovieOptions options;
    options.version = version;
    options.compression = compression;
    options.actionScript3 = as3;
    return options;
}

// Every way a movie can reach the engine: in place with our code injected
// (version 8 and later), through the wrapper (earlier versions), through the
// ActionScript 3 host.
void addMovieKinds()
{
    QTest::addColumn<CounterMovieOptions>("options");
    QTest::newRow("AVM1 v10, injected") << movie(10);
    QTest::newRow("AVM1 v8, deflated, injected") << movie(8, Compression::Zlib);
    QTest::newRow("AVM1 v10, LZMA, injected") << movie(10, Compression::Lzma);
    QTest::newRow("AVM1 v4, wrapped") << movie(4);
    QTest::newRow("AS3, hosted") << movie(10, Compression::None, true);
}
// Frames told apart only by where one shape stands: placed on the first frame,
// moved by every later one, no actions of its own. The rate is low on purpose:
// the engine draws only on a frame tick, so a goto on a paused movie that is
// not waited out shows the old picture here, whatever the machine's speed.
QByteArray movingShapeMovie(int version, Compression compression, bool as3)
{
    constexpr int DefineShapeTag = 2;
    constexpr int PlaceObject2Tag = 26;
    SwfWriter writer;
    writer.setVersion(version).setStageSize(200, 150).setFrameRate(4).setFileAttributes(version >= 8, as3);
    writer.addTag(DefineShapeTag, SwfWriter::rectangleShape(1, 200, 200, 255, 0, 0));
    for (int frame = 0; frame < 30; ++frame)
    {
        const QPoint at((5 + 6 * frame) * 20, 70 * 20);
        writer.addTag(PlaceObject2Tag,
                      frame == 0 ? SwfWriter::placeObject2(1, 1, at, false) : SwfWriter::placeObject2(1, {}, at, true));
        writer.showFrame();
    }
    return writer.build(compression);
}

// The frame whose place the shape's left edge stands at; -1 when not shown.
int shapeFrame(const QImage &image)
{
    const int y = image.height() / 2;
    for (int x = 0; x < image.width(); ++x)
    {
        const QColor c = image.pixelColor(x, y);
        if (c.red() > 200 && c.green() < 80 && c.blue() < 80)
            return qRound((x * 200.0 / image.width() - 5) / 6);
    }
    return -1;
}
} // namespace

class TestZBFlashView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();

    void framesAdvancePauseAndGo_data() { addMovieKinds(); }
    void framesAdvancePauseAndGo();
    void pausedGotosAreDrawn_data();
    void pausedGotosAreDrawn();
    void fsCommandsReachTheProgram_data();
    void fsCommandsReachTheProgram();
    void damagedMoviesAreRefused_data();
    void damagedMoviesAreRefused();
    void projectorsPlayTheirMovie();
    void zoomFitOriginalSizeAndDrag();
    void flvStreamsPlayByTime();
    void missingEngineFilesAreReported();
    void theMovieKeepsItsBackground_data();
    void theMovieKeepsItsBackground();

private:
    QString writeMovie(const QString &name, const QByteArray &bytes);
    bool loadAndWait(const QByteArray &bytes, const QString &name = QStringLiteral("movie.swf"));
    // The frame whose colour shows at the centre of the stage.
    int frameOnScreen();

    QTemporaryDir m_dir;
    ZBFlashView *m_view = nullptr;
};

void TestZBFlashView::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_view = new ZBFlashView;
    // Twice the stage of the test movies: fitted, they show at 200 %.
    m_view->resize(400, 300);
    m_view->show();
    QSignalSpy warmed(m_view, &ZBFlashView::warmed);
    m_view->warmUp();
    QVERIFY2(warmed.wait(30000), "the Flash engine did not start");
    QVERIFY(m_view->isWarm());
}

void TestZBFlashView::cleanupTestCase()
{
    delete m_view;
}

void TestZBFlashView::cleanup()
{
    m_view->unloadMovie();
    m_view->setFitSize();
}

QString TestZBFlashView::writeMovie(const QString &name, const QByteArray &bytes)
{
    QFile file(m_dir.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? file.fileName() : QString();
}

bool TestZBFlashView::loadAndWait(const QByteArray &bytes, const QString &name)
{
    const QString path = writeMovie(name, bytes);
    QSignalSpy loaded(m_view, &ZBFlashView::movieLoaded);
    QSignalSpy failed(m_view, &ZBFlashView::movieLoadFailed);
    QString error;
    const bool answered = m_view->loadMovie(bytes, QUrl::fromLocalFile(path), QUrl::fromLocalFile(path), &error) &&
                          QTest::qWaitFor([&]() { return !loaded.isEmpty() || !failed.isEmpty(); }, 20000);
    if (answered && !loaded.isEmpty())
        return true;
    qWarning() << "refused or failed:" << error << (failed.isEmpty() ? QVariant() : failed.first().first());
    return false;
}

int TestZBFlashView::frameOnScreen()
{
    const QImage image = m_view->snapshot();
    if (image.isNull())
        return -2;
    return nvktest::counterMovieFrameForColour(image.pixelColor(image.width() / 2, image.height() / 2));
}

void TestZBFlashView::framesAdvancePauseAndGo()
{
    QFETCH(CounterMovieOptions, options);
    options.frameCount = 600;
    options.frameRate = 24;
    QVERIFY(loadAndWait(nvktest::makeCounterMovie(options)));
    QCOMPARE(m_view->totalFrames(), 600);
    QCOMPARE(m_view->movieSize(), QSize(options.width, options.height));

    QTRY_VERIFY_WITH_TIMEOUT(m_view->currentFrame() >= 2, 5000);
    const int first = m_view->currentFrame();
    QElapsedTimer clock;
    clock.start();
    QTest::qWait(1500);
    const double rate = (m_view->currentFrame() - first) * 1000.0 / clock.elapsed();
    // A frame or two either way at the ends of the interval, and the frames
    // the engine runs to catch up after the machine stalled it; still never
    // the page's own 60 Hz, nor a stock 12 or 30 frames a second.
    QVERIFY2(rate > 18 && rate < 30, qPrintable(QStringLiteral("measured %1 frames/s").arg(rate)));
    QVERIFY(m_view->isPlaying());

    m_view->stop();
    QVERIFY(!m_view->isPlaying());
    for (const int target : {37, 5, 599, 0})
    {
        m_view->gotoFrame(target);
        QTRY_COMPARE_WITH_TIMEOUT(m_view->currentFrame(), target, 3000);
        QTRY_COMPARE_WITH_TIMEOUT(frameOnScreen(), target % nvktest::CounterMoviePaletteSize, 3000);
    }
    // Paused, a goto stays where it landed; play goes on from there.
    QTest::qWait(300);
    QCOMPARE(frameOnScreen(), 0);
    m_view->play();
    QTRY_VERIFY_WITH_TIMEOUT(m_view->currentFrame() > 3, 3000);
    QVERIFY(m_view->isPlaying());
}

void TestZBFlashView::fsCommandsReachTheProgram_data()
{
    QTest::addColumn<int>("version");
    QTest::newRow("injected") << 9;
    QTest::newRow("wrapped") << 6;
}

void TestZBFlashView::fsCommandsReachTheProgram()
{
    QFETCH(int, version);
    CounterMovieOptions options;
    options.version = version;
    options.frameCount = 3;
    options.ending = CounterMovieOptions::Ending::FsCommand;
    options.fsCommandArguments = "42.5";
    QSignalSpy commands(m_view, &ZBFlashView::invokeFSCommand);
    QVERIFY(loadAndWait(nvktest::makeCounterMovie(options)));
    QTRY_VERIFY_WITH_TIMEOUT(!commands.isEmpty(), 5000);
    QCOMPARE(commands.first(), (QList<QVariant>{QStringLiteral("completePlay"), QStringLiteral("42.5")}));
    // A later movie silences the earlier one, which would talk on every loop.
    options.ending = CounterMovieOptions::Ending::Loop;
    QVERIFY(loadAndWait(nvktest::makeCounterMovie(options), QStringLiteral("quiet.swf")));
    commands.clear();
    QTest::qWait(500);
    QVERIFY(commands.isEmpty());
}

void TestZBFlashView::damagedMoviesAreRefused_data()
{
    // Which damage is refused is the movie plan's business; here, how a
    // refusal reaches the view and the engine.
    QTest::addColumn<QByteArray>("bytes");
    CounterMovieOptions options;
    options.compression = Compression::Zlib;
    QTest::newRow("deflated, cut") << nvktest::makeCounterMovie(options).chopped(40);
    QTest::newRow("not a movie") << QByteArray("GIF89a this is a picture, not a movie");
}

void TestZBFlashView::damagedMoviesAreRefused()
{
    QFETCH(QByteArray, bytes);
    const QString path = writeMovie(QStringLiteral("damaged.swf"), bytes);
    QSignalSpy loaded(m_view, &ZBFlashView::movieLoaded);
    QString error;
    QVERIFY(!m_view->loadMovie(bytes, QUrl::fromLocalFile(path), QUrl::fromLocalFile(path), &error));
    QVERIFY(!error.isEmpty());

    // Through the engine the refusal arrives as loadFailed, never loaded.
    ZBFlashEngine engine(ZBPlaybackEngine::FlashMovie, m_view);
    QSignalSpy failed(&engine, &ZBPlaybackEngine::loadFailed);
    QSignalSpy engineLoaded(&engine, &ZBPlaybackEngine::loaded);
    engine.load(path);
    QVERIFY(failed.wait(3000));
    QVERIFY(!failed.first().first().toString().isEmpty());
    QVERIFY(engineLoaded.isEmpty() && loaded.isEmpty() && !engine.isLoaded());
}

void TestZBFlashView::projectorsPlayTheirMovie()
{
    CounterMovieOptions options;
    options.frameCount = 48;
    options.version = 7;
    const QByteArray swf = nvktest::makeCounterMovie(options);
    const QByteArray player(64 * 1024, 'P');
    ZBFlashEngine engine(ZBPlaybackEngine::FlashMovie, m_view);
    // A Mac projector is known by its trailer, whatever its name.
    const QString path = writeMovie(QStringLiteral("cartoon"), nvktest::macProjector(player, swf));
    QVERIFY(engine.canInitWithFile(path));
    QSignalSpy loaded(&engine, &ZBPlaybackEngine::loaded);
    engine.load(path);
    QVERIFY(loaded.wait(20000));
    QCOMPARE(engine.totalTime(), 48.0);
    QVERIFY(engine.usesFrames());
    engine.pause();
    engine.seek(20);
    QTRY_COMPARE_WITH_TIMEOUT(frameOnScreen(), 20, 3000);
    engine.stop();
    QVERIFY(!engine.isLoaded());
    // A file that is neither a movie nor carries one.
    const QString junk = writeMovie(QStringLiteral("junk.exe"), QByteArray(5000, 'x'));
    QVERIFY(!engine.canInitWithFile(junk));
}

void TestZBFlashView::zoomFitOriginalSizeAndDrag()
{
    CounterMovieOptions options;
    options.frameCount = 24;
    options.ending = CounterMovieOptions::Ending::Stop;
    QVERIFY(loadAndWait(nvktest::makeCounterMovie(options)));
    QCOMPARE(m_view->originalRect(), QRect(0, 0, 200, 150));
    m_view->stop();
    m_view->gotoFrame(0);

    // Fitted into a view twice its size.
    QTRY_COMPARE_WITH_TIMEOUT(m_view->zoomPercent(), 200, 3000);
    QTRY_COMPARE_WITH_TIMEOUT(nvktest::counterMovieFrameForColour(m_view->snapshot().pixelColor(5, 150)), 0, 3000);

    // At 100 % the stage is 200 x 150 in the middle; around it the view's
    // background shows.
    m_view->setOriginalSize();
    QCOMPARE(m_view->zoomPercent(), 100);
    QTRY_COMPARE_WITH_TIMEOUT(nvktest::counterMovieFrameForColour(m_view->snapshot().pixelColor(5, 150)), -1, 3000);
    QVERIFY(nvktest::counterMovieFrameForColour(m_view->snapshot().pixelColor(105, 150)) >= 0);

    // At 300 % the 600 x 450 stage is centred: its top-left corner, where
    // the square of frame 0 is, lies outside the view.
    m_view->setZoomPercent(300);
    QCOMPARE(m_view->zoomPercent(), 300);
    const QPoint probe(60, 60);
    QTRY_COMPARE_WITH_TIMEOUT(nvktest::counterMovieFrameForColour(m_view->snapshot().pixelColor(probe)), 0, 3000);
    QWidget *surface = m_view->focusProxy();
    QVERIFY(surface);
    const auto drag = [surface](QPoint from, QPoint to)
    {
        QTest::mousePress(surface, Qt::LeftButton, {}, from);
        for (int step = 1; step <= 10; ++step)
            QTest::mouseMove(surface, from + (to - from) * step / 10, 10);
        QTest::mouseRelease(surface, Qt::LeftButton, {}, to);
    };
    // Without drag mode the movie gets the mouse and stays put.
    drag(QPoint(150, 150), QPoint(300, 260));
    QTest::qWait(200);
    QCOMPARE(nvktest::counterMovieFrameForColour(m_view->snapshot().pixelColor(probe)), 0);
    // Dragged down and right as far as it goes: the corner comes into view.
    m_view->setCanDrag(true);
    QTest::qWait(100);
    drag(QPoint(150, 150), QPoint(300, 260));
    QTRY_COMPARE_WITH_TIMEOUT(m_view->snapshot().pixelColor(probe), nvktest::counterMovieSquareColour(0), 3000);
    m_view->setCanDrag(false);
}

void TestZBFlashView::flvStreamsPlayByTime()
{
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    const QString path = nvktest::MediaFactory::clip({QStringLiteral("flv"), 3.0});

    ZBFlashEngine engine(ZBPlaybackEngine::FlashVideo, m_view);
    QVERIFY(engine.canInitWithFile(path));
    QVERIFY(!engine.usesFrames());
    QSignalSpy loaded(&engine, &ZBPlaybackEngine::loaded);
    QSignalSpy commands(&engine, &ZBPlaybackEngine::fsCommand);
    engine.load(path);
    QVERIFY(loaded.wait(20000));
    engine.play();
    QTRY_VERIFY_WITH_TIMEOUT(engine.totalTime() > 2.5 && engine.totalTime() < 3.5, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(engine.currentTime() > 0.5, 10000);
    QCOMPARE(engine.naturalSize(), QSize(160, 120));
    // The stream reports its length, then its end.
    QTRY_VERIFY_WITH_TIMEOUT(std::any_of(commands.cbegin(), commands.cend(),
                                         [](const QList<QVariant> &c)
                                         { return c.first().toString() == u"completePlay"; }),
                             10000);
    const auto total = std::find_if(commands.cbegin(), commands.cend(),
                                    [](const QList<QVariant> &c) { return c.first().toString() == u"setTotalTime"; });
    QVERIFY(total != commands.cend());
    QVERIFY(std::abs(total->at(1).toString().toDouble() - 3.0) < 0.2);

    // H.264 in an MP4-based F4V is the video engine's: the Flash engine does
    // not claim it.
    QVERIFY(!engine.canInitWithFile(nvktest::MediaFactory::clip(QStringLiteral("f4v"))));
}

void TestZBFlashView::missingEngineFilesAreReported()
{
    // A build or install that lost the engine's files: every movie is refused
    // at once, saying what is missing, instead of waiting for a page that
    // never comes.
    QTemporaryDir empty;
    qputenv("NVK_FLASH_DIR", QFile::encodeName(empty.path()));
    ZBFlashView view;
    qunsetenv("NVK_FLASH_DIR");
    const QByteArray movie = nvktest::makeCounterMovie();
    const QString path = writeMovie(QStringLiteral("fine.swf"), movie);
    QString error;
    QVERIFY(!view.loadMovie(movie, QUrl::fromLocalFile(path), QUrl::fromLocalFile(path), &error));
    QVERIFY2(error.contains(QStringLiteral("ruffle/ruffle.js")), qPrintable(error));
    QVERIFY(error.contains(empty.path()));

    ZBFlashEngine engine(ZBPlaybackEngine::FlashMovie, &view);
    QSignalSpy failed(&engine, &ZBPlaybackEngine::loadFailed);
    engine.load(path);
    QVERIFY(failed.wait(2000));
    QVERIFY(failed.first().first().toString().contains(QStringLiteral("not installed")));
}

void TestZBFlashView::theMovieKeepsItsBackground_data()
{
    QTest::addColumn<bool>("as3");
    QTest::newRow("AVM1") << false;
    QTest::newRow("AS3, through the host") << true;
}

void TestZBFlashView::theMovieKeepsItsBackground()
{
    QFETCH(bool, as3);
    // Nothing drawn: the stage shows the movie's own colour, while the view
    // around the stage shows the player's.
    SwfWriter writer;
    writer.setStageSize(200, 100).setBackgroundColor(10, 200, 30).addFrames(10);
    if (as3)
        writer.setFileAttributes(true, true);
    m_view->setFlashBackgroundColor(QColor(60, 0, 90));
    QVERIFY(loadAndWait(writer.build()));
    m_view->setFitSize();
    const auto near = [](const QColor &a, const QColor &b)
    {
        return std::abs(a.red() - b.red()) < 8 && std::abs(a.green() - b.green()) < 8 &&
               std::abs(a.blue() - b.blue()) < 8;
    };
    QTRY_VERIFY_WITH_TIMEOUT(near(m_view->snapshot().pixelColor(200, 150), QColor(10, 200, 30)), 3000);
    // Fitted to 400 x 200 in a 400 x 300 view: bands above and below.
    QVERIFY(near(m_view->snapshot().pixelColor(200, 10), QColor(60, 0, 90)));
    m_view->setFlashBackgroundColor(Qt::black);
}

NVK_FLASH_TEST_MAIN(TestZBFlashView)

void TestZBFlashView::pausedGotosAreDrawn_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<Compression>("compression");
    QTest::addColumn<bool>("as3");
    QTest::newRow("v6, wrapped") << 6 << Compression::None << false;
    QTest::newRow("v8, deflated, injected") << 8 << Compression::Zlib << false;
    QTest::newRow("v10, LZMA, injected") << 10 << Compression::Lzma << false;
    QTest::newRow("v10, hosted") << 10 << Compression::None << true;
}

void TestZBFlashView::pausedGotosAreDrawn()
{
    QFETCH(int, version);
    QFETCH(Compression, compression);
    QFETCH(bool, as3);
    QVERIFY(loadAndWait(movingShapeMovie(version, compression, as3)));
    m_view->stop();
    QSignalSpy shown(m_view, &ZBFlashView::frameShown);
    // A seek bar dragged over a paused movie: only the last goto need be drawn.
    m_view->gotoFrame(7);
    m_view->gotoFrame(9);
    for (const int target : {11, 3, 20, 29})
    {
        m_view->gotoFrame(target);
        QTRY_VERIFY_WITH_TIMEOUT(!m_view->isGotoPending(), 5000);
        QCOMPARE(shown.last(), (QList<QVariant>{target, true}));
        QCOMPARE(m_view->currentFrame(), target);
        QTRY_COMPARE_WITH_TIMEOUT(shapeFrame(m_view->snapshot()), target, 1000);
    }
}

#include "tst_zbflashview.moc"
