#include <cmath>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

#include "engines/mpv/zbmpvengine.h"
#include "support/mediafactory.h"

using nvktest::MediaFactory;

namespace
{
// Loading a 2-second clip takes a fraction of a second; these are ceilings
// for a loaded machine, not expectations.
constexpr int LoadTimeoutMs = 20000;
constexpr int PlayTimeoutMs = 15000;
constexpr double ClipSeconds = 2.0;

// Mean difference per colour channel (0..255) of two pictures of one size;
// a picture that failed to load is as far as can be.
double pictureDistance(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return 255;
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
    {
        for (int x = 0; x < a.width(); ++x)
        {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    }
    return sum / (3.0 * a.width() * a.height());
}
} // namespace

// The video engine on real files that ffmpeg makes for the test: what the
// playback controller relies on (loaded/loadFailed/endReached, cached times,
// exact seeks, volume, snapshots), headless.
class TestZBMpvEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void loadsEveryFormat_data();
    void loadsEveryFormat();
    void refusesWhatCannotPlay_data();
    void refusesWhatCannotPlay();
    void newestLoadWins();

    void playEndsOnceAndAgainAfterASeekBack();
    void seekLandsExactly_data();
    void seekLandsExactly();
    void volumePauseAndStop();
    void headlessHasNoView();

private:
    // Loads and waits for the answer; false with a message on failure.
    bool loadInto(ZBMpvEngine &engine, const QString &path)
    {
        QSignalSpy loaded(&engine, &ZBPlaybackEngine::loaded);
        QSignalSpy failed(&engine, &ZBPlaybackEngine::loadFailed);
        engine.load(path);
        (void)QTest::qWaitFor([&]() { return !loaded.isEmpty() || !failed.isEmpty(); }, LoadTimeoutMs);
        if (!failed.isEmpty())
            qWarning() << "load failed:" << failed.first().first().toString();
        return loaded.size() == 1 && failed.isEmpty();
    }
    bool seekAndWait(ZBMpvEngine &engine, double position)
    {
        QSignalSpy finished(&engine, &ZBMpvEngine::seekFinished);
        engine.seek(position);
        return QTest::qWaitFor([&]() { return !finished.isEmpty() && !engine.isSeeking(); }, LoadTimeoutMs);
    }
};

void TestZBMpvEngine::initTestCase()
{
    if (!MediaFactory::isAvailable())
        QSKIP(qPrintable(MediaFactory::unavailableReason()));
    ZBMpvEngine probe(ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless);
    QVERIFY2(probe.startError().isEmpty(), qPrintable(probe.startError()));
}

void TestZBMpvEngine::loadsEveryFormat_data()
{
    QTest::addColumn<QString>("extension");
    for (const QString &extension : MediaFactory::formats())
        QTest::newRow(qPrintable(extension)) << extension;
}

void TestZBMpvEngine::loadsEveryFormat()
{
    QFETCH(QString, extension);
    const QString path = MediaFactory::clip(extension);
    const int code = extension.startsWith(u"rm") ? ZBPlaybackEngine::RealMedia : ZBPlaybackEngine::VideoMovie;
    ZBMpvEngine engine(code, ZBMpvEngine::Output::Headless);
    QVERIFY(engine.canInitWithFile(path));
    QString reason;
    QVERIFY2(ZBMpvEngine::checkFile(path, &reason), qPrintable(reason));
    QVERIFY(loadInto(engine, path));
    QVERIFY(engine.isLoaded());
    // Loading leaves the file paused at its start.
    QVERIFY(!engine.isPlaying());
    QVERIFY2(engine.currentTime() >= 0.0 && engine.currentTime() < 0.1,
             qPrintable(QString::number(engine.currentTime())));
    // Containers round the length to their own clock (AVI, ASF, FLV add a
    // frame or two).
    QVERIFY2(std::abs(engine.totalTime() - ClipSeconds) < 0.15, qPrintable(QString::number(engine.totalTime())));
    QCOMPARE(engine.naturalSize(), QSize(160, 120));
    QVERIFY2(engine.formatSummary().contains(QStringLiteral("160 x 120")), qPrintable(engine.formatSummary()));

    // Colour bars, a gradient and a counter: not a flat picture.
    const QImage picture = engine.snapshot();
    QCOMPARE(picture.size(), QSize(160, 120));
    QVERIFY(picture.pixel(10, 10) != picture.pixel(150, 10));
}

void TestZBMpvEngine::refusesWhatCannotPlay_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("reason");
    // Also loaded: the failure must arrive as loadFailed and leave the
    // engine able to play the next file.
    QTest::addColumn<bool>("load");
    if (!MediaFactory::isAvailable())
        return;
    const QString mp4 = MediaFactory::clip(QStringLiteral("mp4"));
    QTest::newRow("missing") << QDir(MediaFactory::folder()).filePath(QStringLiteral("absent.mp4")) << "does not exist"
                             << true;
    QTest::newRow("empty") << MediaFactory::truncatedCopy(mp4, 0) << "cannot be decoded" << false;
    QTest::newRow("garbage mp4") << MediaFactory::garbage(QStringLiteral("mp4"), 20000) << "cannot be decoded" << true;
    // The index of an MP4 written in one pass comes last: cut it off.
    QTest::newRow("truncated mp4") << MediaFactory::truncatedCopy(mp4, 2048) << "cannot be decoded" << true;
}

void TestZBMpvEngine::refusesWhatCannotPlay()
{
    QFETCH(QString, path);
    QFETCH(QString, reason);
    QFETCH(bool, load);
    ZBMpvEngine engine(ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless);
    QVERIFY(!engine.canInitWithFile(path));
    QString why;
    QVERIFY(!ZBMpvEngine::checkFile(path, &why));
    QVERIFY2(why.contains(reason), qPrintable(why));
    if (!load)
        return;

    QSignalSpy loaded(&engine, &ZBPlaybackEngine::loaded);
    QSignalSpy failed(&engine, &ZBPlaybackEngine::loadFailed);
    engine.load(path);
    QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, LoadTimeoutMs);
    const QString message = failed.first().first().toString();
    QVERIFY2(message.contains(QFileInfo(path).fileName()), qPrintable(message));
    QVERIFY(loaded.isEmpty() && !engine.isLoaded());
    QCOMPARE(engine.currentTime(), -1.0);
    QVERIFY(loadInto(engine, MediaFactory::clip(QStringLiteral("mp4"))));
    QCOMPARE(engine.naturalSize(), QSize(160, 120));
    QCOMPARE(failed.size(), 1);
}

void TestZBMpvEngine::newestLoadWins()
{
    const QString first = MediaFactory::clip(QStringLiteral("mkv"));
    const QString second = MediaFactory::clip(QStringLiteral("avi"));
    const QString broken = MediaFactory::garbage(QStringLiteral("wmv"), 10000);
    ZBMpvEngine engine(ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless);
    QSignalSpy loaded(&engine, &ZBPlaybackEngine::loaded);
    QSignalSpy failed(&engine, &ZBPlaybackEngine::loadFailed);

    // A failing file replaced before its failure is reported says nothing.
    engine.load(broken);
    engine.load(first);
    engine.load(second);
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, LoadTimeoutMs);
    // Give stale answers for the earlier files time to arrive.
    QTest::qWait(500);
    QCOMPARE(loaded.size(), 1);
    QCOMPARE(failed.size(), 0);
    QCOMPARE(engine.loadedPath(), QFileInfo(second).absoluteFilePath());
    QVERIFY2(engine.formatSummary().startsWith(QStringLiteral("avi:")), qPrintable(engine.formatSummary()));
}

void TestZBMpvEngine::playEndsOnceAndAgainAfterASeekBack()
{
    ZBMpvEngine engine(ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless);
    QVERIFY(loadInto(engine, MediaFactory::clip(QStringLiteral("mp4"))));
    QSignalSpy ended(&engine, &ZBPlaybackEngine::endReached);
    QVERIFY(seekAndWait(engine, 1.0));
    engine.play();
    QVERIFY(engine.isPlaying());
    QTRY_VERIFY_WITH_TIMEOUT(engine.currentTime() > 1.2, PlayTimeoutMs);
    QVERIFY(ended.isEmpty());

    QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, PlayTimeoutMs);
    QVERIFY(!engine.isPlaying() && engine.isLoaded());
    QVERIFY2(engine.currentTime() > ClipSeconds - 0.2, qPrintable(QString::number(engine.currentTime())));
    // Pressing play at the end does not end it again; the last frame stays.
    engine.play();
    QTest::qWait(700);
    QCOMPARE(ended.size(), 1);
    QCOMPARE(engine.snapshot().size(), QSize(160, 120));

    // Replaying from a point before the end reaches it anew.
    QVERIFY(seekAndWait(engine, 1.4));
    QVERIFY(engine.currentTime() < 1.6);
    engine.play();
    QVERIFY(engine.isPlaying());
    QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 2, PlayTimeoutMs);
}

void TestZBMpvEngine::seekLandsExactly_data()
{
    QTest::addColumn<QString>("extension");
    // H.264 with one key frame, MPEG-4 with a key frame every 12 frames,
    // an MPEG program stream, RealVideo: a seek to the key frame before the
    // target would land up to 1.3 s early.
    QTest::newRow("mp4") << "mp4";
    QTest::newRow("mpg") << "mpg";
    QTest::newRow("rm") << "rm";
}

void TestZBMpvEngine::seekLandsExactly()
{
    QFETCH(QString, extension);
    const QString path = MediaFactory::clip(extension);
    ZBMpvEngine engine(ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless);
    QVERIFY(loadInto(engine, path));
    const double target = 1.3;
    QVERIFY(seekAndWait(engine, target));
    QVERIFY2(std::abs(engine.currentTime() - target) <= 0.1, qPrintable(QString::number(engine.currentTime())));

    // The picture shown is the one ffmpeg decodes at that time, not the key
    // frame before it.
    const QImage shown = engine.snapshot();
    QCOMPARE(shown.size(), QSize(160, 120));
    // Frames 32 to 34 are shown around 1.3 s; the others are key frames a
    // seek could fall back to, or neighbours farther off.
    QMap<double, int> byDistance;
    for (const int frame : {0, 12, 24, 29, 32, 33, 34, 37, 45})
        byDistance.insert(pictureDistance(shown, QImage(MediaFactory::referenceFrame(path, frame))), frame);
    QVERIFY2(byDistance.first() >= 32 && byDistance.first() <= 34,
             qPrintable(QStringLiteral("the picture is closest to frame %1").arg(byDistance.first())));

    // Playing goes on from there, not from an earlier key frame.
    engine.play();
    QTRY_VERIFY_WITH_TIMEOUT(engine.currentTime() > target + 0.1, PlayTimeoutMs);
    QVERIFY(engine.currentTime() < ClipSeconds + 0.1);
}

void TestZBMpvEngine::volumePauseAndStop()
{
    ZBMpvEngine engine(ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless);
    engine.setVolume(-5);
    QCOMPARE(engine.volume(), 0);
    engine.setVolume(42);
    // The core's own report of the volume agrees once a file is loaded.
    QVERIFY(loadInto(engine, MediaFactory::clip(QStringLiteral("flv"))));
    QTest::qWait(200);
    QCOMPARE(engine.volume(), 42);
    engine.setVolume(1000);
    QTest::qWait(200);
    QCOMPARE(engine.volume(), 100);

    engine.play();
    QTRY_VERIFY_WITH_TIMEOUT(engine.currentTime() > 0.4, PlayTimeoutMs);
    engine.pause();
    QVERIFY(!engine.isPlaying());
    // Let the last position reports of the running clock arrive.
    QTest::qWait(300);
    const double held = engine.currentTime();
    QTest::qWait(600);
    QCOMPARE(engine.currentTime(), held);
    engine.play();
    QTRY_VERIFY_WITH_TIMEOUT(engine.currentTime() > held + 0.2, PlayTimeoutMs);

    QSignalSpy ended(&engine, &ZBPlaybackEngine::endReached);
    engine.stop();
    QCOMPARE(engine.currentTime(), -1.0);
    QCOMPARE(engine.totalTime(), 0.0);
    QVERIFY(!engine.isLoaded() && !engine.isPlaying());
    QVERIFY(engine.snapshot().isNull() && engine.formatSummary().isEmpty());
    // Late reports of the stopped file, which would have reached its end by
    // now, change nothing.
    QTest::qWait(2000);
    QCOMPARE(engine.currentTime(), -1.0);
    QVERIFY(!engine.isLoaded() && ended.isEmpty());
    // Playing with nothing loaded is ignored.
    engine.play();
    QVERIFY(!engine.isPlaying());
}

void TestZBMpvEngine::headlessHasNoView()
{
    if (QGuiApplication::platformName() != u"offscreen")
        QSKIP("the automatic choice is only headless on the offscreen platform");
    // Tests run on the offscreen platform, where a GL widget would crash:
    // the automatic choice must be headless too.
    ZBMpvEngine automatic(ZBPlaybackEngine::VideoMovie);
    QVERIFY(automatic.isHeadless());
    QCOMPARE(automatic.view(), nullptr);
    QVERIFY(loadInto(automatic, MediaFactory::clip(QStringLiteral("m4v"))));
    QCOMPARE(automatic.naturalSize(), QSize(160, 120));
}

QTEST_MAIN(TestZBMpvEngine)
#include "tst_zbmpvengine.moc"
