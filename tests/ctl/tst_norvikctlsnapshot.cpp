#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

#include "support/flashmovies.h"
#include "support/mediafactory.h"
#include "support/swfwriter.h"
#include "support/testsupport.h"

using nvktest::CounterMovieOptions;
using nvktest::MediaFactory;

// `norvikctl snapshot` as a script uses it: a video's picture at a time
// through the video engine, a Flash movie's or projector's frame through the
// Flash engine, with no display; clear errors otherwise.
class TestNorvikCtlSnapshot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void videoAtATime_data();
    void videoAtATime();
    void flashFrame_data();
    void flashFrame();
    void refusals_data();
    void refusals();

private:
    QString write(const QString &name, const QByteArray &bytes);

    nvktest::DataDir m_data;
    QTemporaryDir m_dir;
};

QString TestNorvikCtlSnapshot::write(const QString &name, const QByteArray &bytes)
{
    QFile file(m_dir.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? file.fileName() : QString();
}

void TestNorvikCtlSnapshot::videoAtATime_data()
{
    QTest::addColumn<QString>("extension");
    for (const char *extension : {"mp4", "rmvb"})
        QTest::newRow(extension) << extension;
}

void TestNorvikCtlSnapshot::videoAtATime()
{
    QFETCH(QString, extension);
    if (!MediaFactory::isAvailable())
        QSKIP(qPrintable(MediaFactory::unavailableReason()));
    const QString movie = MediaFactory::clip(extension);
    // The format follows the suffix, or --format N over it (1 is BMP).
    const QString early = m_dir.filePath(extension + "-early.TIF");
    const QString late = m_dir.filePath(extension + "-late.png");
    QVERIFY(nvktest::ctlOutput(m_data.path(), {"snapshot", movie, "--time", "0.2", "-o", early}).contains(early));
    QVERIFY(!nvktest::ctlOutput(m_data.path(), {"snapshot", movie, "--time", "1.6", "--format", "1", "--output", late})
                 .isEmpty());
    QCOMPARE(QImageReader(early).format(), QByteArray("tiff"));
    QCOMPARE(QImageReader(late).format(), QByteArray("bmp"));
    const QImage earlyImage(early);
    const QImage lateImage(late);
    QCOMPARE(earlyImage.size(), QSize(160, 120));
    // The test picture moves: two times give two pictures, and the colour
    // bars tell the movie's picture from a blank.
    QVERIFY(earlyImage.convertToFormat(QImage::Format_RGB32) != lateImage.convertToFormat(QImage::Format_RGB32));
    QVERIFY(earlyImage.pixel(10, 10) != earlyImage.pixel(150, 10));
}

void TestNorvikCtlSnapshot::flashFrame_data()
{
    QTest::addColumn<QString>("movie");
    QTest::addColumn<int>("frame");
    CounterMovieOptions options;
    options.frameCount = 90;
    options.width = 240;
    options.height = 180;
    QTest::newRow("AVM1 v10") << write("v10.swf", nvktest::makeCounterMovie(options)) << 57;
    options.compression = nvktest::SwfWriter::Compression::Zlib;
    options.version = 6;
    const QByteArray v6 = nvktest::makeCounterMovie(options);
    QTest::newRow("projector of a deflated v6") << write("v6.exe", nvktest::windowsProjector("player", v6)) << 89;
    options.version = 10;
    options.actionScript3 = true;
    QTest::newRow("AS3") << write("as3.swf", nvktest::makeCounterMovie(options)) << 33;
}

void TestNorvikCtlSnapshot::flashFrame()
{
    QFETCH(QString, movie);
    QFETCH(int, frame);
    const QString output = movie + QStringLiteral(".png");
    QVERIFY(nvktest::ctlOutput(m_data.path(), {"snapshot", movie, "--frame", QString::number(frame), "-o", output})
                .startsWith(output));
    const QImage image(output);
    QCOMPARE(image.size(), QSize(240, 180));
    // The whole stage is the frame's, edge to edge.
    QCOMPARE(nvktest::counterMovieFrameForColour(image.pixelColor(120, 90)), frame);
    QCOMPARE(nvktest::counterMovieFrameForColour(image.pixelColor(2, 177)), frame);
}

void TestNorvikCtlSnapshot::refusals_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");

    CounterMovieOptions options;
    options.frameCount = 10;
    const QByteArray whole = nvktest::makeCounterMovie(options);
    const QString swf = write("ten.swf", whole);
    const QString out = m_dir.filePath("never.png");
    const QString cut = write("cut.swf", whole.left(whole.size() - 30));
    QTest::newRow("frame past the end") << QStringList{"snapshot", swf, "--frame", "10", "-o", out} << "past the end";
    QTest::newRow("time on a movie") << QStringList{"snapshot", swf, "--time", "1", "-o", out} << "--frame";
    QTest::newRow("damaged movie") << QStringList{"snapshot", cut, "-o", out} << "damaged";
    if (!MediaFactory::isAvailable())
        return;
    const QString video = MediaFactory::clip(QStringLiteral("mkv"));
    QTest::newRow("time past the end") << QStringList{"snapshot", video, "--time", "7.5", "-o", out} << "past the end";
    QTest::newRow("garbage") << QStringList{"snapshot", MediaFactory::garbage("avi"), "-o", out} << "cannot be decoded";
    QTest::newRow("no output") << QStringList{"snapshot", video} << "-o OUT";
    QTest::newRow("format out of range") << QStringList{"snapshot", video, "--format", "6", "-o", out} << "--format takes";
    QTest::newRow("unknown image type") << QStringList{"snapshot", video, "-o", out + ".xyz"} << "cannot write images";
}

void TestNorvikCtlSnapshot::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const nvktest::CtlResult result = nvktest::runCtl(m_data.path(), arguments);
    QCOMPARE(result.code, 1);
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    QVERIFY(result.out.isEmpty());
    QVERIFY(!QFile::exists(m_dir.filePath("never.png")));
}

QTEST_GUILESS_MAIN(TestNorvikCtlSnapshot)
#include "tst_norvikctlsnapshot.moc"
