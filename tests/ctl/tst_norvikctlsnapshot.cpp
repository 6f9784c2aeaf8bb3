#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include "support/flashmovies.h"
#include "support/mediafactory.h"
#include "support/swfwriter.h"
#include "support/testsupport.h"

using nvktest::CounterMovieOptions;
using nvktest::MediaFactory;
using Compression = nvktest::SwfWriter::Compression;

// `norvikctl snapshot` as a script uses it: a video's picture at a time
// through the video engine, a Flash movie's or projector's frame through the
// Flash engine, with no display; clear errors otherwise.
class TestNorvikCtlSnapshot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void videoAtATime_data();
    void videoAtATime();
    void flashFrame_data();
    void flashFrame();
    void refusals_data();
    void refusals();

private:
    QString write(const QString &name, const QByteArray &bytes);
    QString never() const { return m_dir.filePath(QStringLiteral("never.png")); }

    nvktest::DataDir m_data;
    QTemporaryDir m_dir;
};

QString TestNorvikCtlSnapshot::write(const QString &name, const QByteArray &bytes)
{
    const QString path = m_dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return QString();
    return path;
}

void TestNorvikCtlSnapshot::videoAtATime_data()
{
    QTest::addColumn<QString>("extension");
    QTest::newRow("mp4") << "mp4";
    QTest::newRow("rmvb") << "rmvb";
    QTest::newRow("flv") << "flv";
}

void TestNorvikCtlSnapshot::videoAtATime()
{
    QFETCH(QString, extension);
    if (!MediaFactory::isAvailable())
        QSKIP(qPrintable(MediaFactory::unavailableReason()));
    QString error;
    const QString movie = MediaFactory::clip(extension, &error);
    QVERIFY2(!movie.isEmpty(), qPrintable(error));

    const QString early = m_dir.filePath(extension + "-early.png");
    const QString late = m_dir.filePath(extension + "-late.png");
    const nvktest::CtlResult first = nvktest::runCtl(m_data.path(), {"snapshot", movie, "--time", "0.2", "-o", early});
    QVERIFY2(first.code == 0, qPrintable(first.err));
    QVERIFY(first.out.contains(early));
    const nvktest::CtlResult second =
        nvktest::runCtl(m_data.path(), {"snapshot", movie, "--time", "1.6", "--output", late});
    QVERIFY2(second.code == 0, qPrintable(second.err));

    const QImage earlyImage(early);
    const QImage lateImage(late);
    QCOMPARE(earlyImage.size(), QSize(160, 120));
    QCOMPARE(lateImage.size(), QSize(160, 120));
    // The test picture moves: two times give two pictures, and the colour
    // bars tell the movie's picture from a blank.
    QVERIFY(earlyImage.convertToFormat(QImage::Format_RGB32) != lateImage.convertToFormat(QImage::Format_RGB32));
    QVERIFY(earlyImage.pixel(10, 10) != earlyImage.pixel(150, 10));
}

void TestNorvikCtlSnapshot::flashFrame_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("frame");

    CounterMovieOptions options;
    options.frameCount = 90;
    options.width = 240;
    options.height = 180;
    QTest::newRow("AVM1 v10") << "v10.swf" << nvktest::makeCounterMovie(options) << 57;
    options.compression = Compression::Lzma;
    QTest::newRow("AVM1 v10, LZMA") << "v10z.swf" << nvktest::makeCounterMovie(options) << 0;
    options.compression = Compression::Zlib;
    options.version = 6;
    const QByteArray v6 = nvktest::makeCounterMovie(options);
    QTest::newRow("AVM1 v6, deflated") << "v6.swf" << v6 << 89;
    QTest::newRow("projector") << "cartoon.exe" << nvktest::windowsProjector(QByteArray(4096, 'P'), v6) << 12;
    options.version = 10;
    options.actionScript3 = true;
    options.compression = Compression::None;
    QTest::newRow("AS3") << "as3.swf" << nvktest::makeCounterMovie(options) << 33;
}

void TestNorvikCtlSnapshot::flashFrame()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(int, frame);
    const QString movie = write(name, bytes);
    const QString output = m_dir.filePath(name + QStringLiteral(".png"));
    const nvktest::CtlResult result =
        nvktest::runCtl(m_data.path(), {"snapshot", movie, "--frame", QString::number(frame), "-o", output});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    QVERIFY(result.out.startsWith(output));
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
    const QString out = never();
    QTest::newRow("frame past the end") << QStringList{"snapshot", swf, "--frame", "10", "-o", out} << "past the end";
    QTest::newRow("negative frame") << QStringList{"snapshot", swf, "--frame", "-1", "-o", out} << "frame number";
    QTest::newRow("frame not a number") << QStringList{"snapshot", swf, "--frame", "x", "-o", out} << "frame number";
    QTest::newRow("time on a movie") << QStringList{"snapshot", swf, "--time", "1", "-o", out} << "--frame";
    QTest::newRow("damaged movie") << QStringList{"snapshot", write("cut.swf", whole.left(whole.size() - 30)), "-o", out}
                                   << "damaged";
    if (!MediaFactory::isAvailable())
        return;
    const QString video = MediaFactory::clip(QStringLiteral("mkv"));
    QTest::newRow("missing file") << QStringList{"snapshot", MediaFactory::folder() + "/absent.mp4", "-o", out}
                                  << "does not exist";
    QTest::newRow("time past the end") << QStringList{"snapshot", video, "--time", "7.5", "-o", out} << "past the end";
    QTest::newRow("garbage") << QStringList{"snapshot", MediaFactory::garbage("avi"), "-o", out} << "cannot be decoded";
    QTest::newRow("bad time") << QStringList{"snapshot", video, "--time", "soon", "-o", out} << "seconds";
    QTest::newRow("negative time") << QStringList{"snapshot", video, "--time", "-1", "-o", out} << "seconds";
    QTest::newRow("no output") << QStringList{"snapshot", video} << "-o OUT";
    QTest::newRow("unknown image type") << QStringList{"snapshot", video, "-o", out + ".xyz"} << "cannot write images";
    QTest::newRow("unwritable output") << QStringList{"snapshot", video, "-o", "/nonexistent-folder/x.png"}
                                       << "cannot write";
}

void TestNorvikCtlSnapshot::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const nvktest::CtlResult result = nvktest::runCtl(m_data.path(), arguments);
    QCOMPARE(result.code, 1);
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    QVERIFY(result.out.isEmpty());
    QVERIFY(!QFile::exists(never()));
}

QTEST_GUILESS_MAIN(TestNorvikCtlSnapshot)
#include "tst_norvikctlsnapshot.moc"
