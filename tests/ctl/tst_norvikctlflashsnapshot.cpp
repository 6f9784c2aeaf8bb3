#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include "support/flashmovies.h"
#include "support/swfwriter.h"
#include "support/testsupport.h"

using nvktest::CounterMovieOptions;
using Compression = nvktest::SwfWriter::Compression;

// `norvikctl snapshot --frame N` renders a frame of a Flash movie or
// projector through the player's Flash engine, with no display.
class TestNorvikCtlFlashSnapshot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void writesTheFrame_data();
    void writesTheFrame();
    void refusesWithAMessage_data();
    void refusesWithAMessage();

private:
    QString write(const QString &name, const QByteArray &bytes);

    nvktest::DataDir m_data;
    QTemporaryDir m_dir;
};

QString TestNorvikCtlFlashSnapshot::write(const QString &name, const QByteArray &bytes)
{
    const QString path = m_dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return QString();
    return path;
}

void TestNorvikCtlFlashSnapshot::writesTheFrame_data()
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

void TestNorvikCtlFlashSnapshot::writesTheFrame()
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
    QCOMPARE(nvktest::counterMovieFrameForColour(image.pixelColor(120, 90)), frame);
    // The whole stage is the frame's, edge to edge.
    QCOMPARE(nvktest::counterMovieFrameForColour(image.pixelColor(2, 177)), frame);
}

void TestNorvikCtlFlashSnapshot::refusesWithAMessage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    CounterMovieOptions options;
    options.frameCount = 10;
    const QByteArray whole = nvktest::makeCounterMovie(options);
    const QString movie = write("ten.swf", whole);
    const QString out = m_dir.filePath("never.png");
    QTest::newRow("past the end") << QStringList{"snapshot", movie, "--frame", "10", "-o", out} << "past the end";
    QTest::newRow("negative frame") << QStringList{"snapshot", movie, "--frame", "-1", "-o", out} << "frame number";
    QTest::newRow("frame not a number") << QStringList{"snapshot", movie, "--frame", "x", "-o", out} << "frame number";
    QTest::newRow("time on a movie") << QStringList{"snapshot", movie, "--time", "1", "-o", out} << "--frame";
    QTest::newRow("truncated") << QStringList{"snapshot", write("cut.swf", whole.left(whole.size() - 30)), "-o", out}
                               << "damaged";
}

void TestNorvikCtlFlashSnapshot::refusesWithAMessage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const nvktest::CtlResult result = nvktest::runCtl(m_data.path(), arguments);
    QCOMPARE(result.code, 1);
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    QVERIFY(result.out.isEmpty());
    QVERIFY(!QFile::exists(m_dir.filePath("never.png")));
}

QTEST_GUILESS_MAIN(TestNorvikCtlFlashSnapshot)
#include "tst_norvikctlflashsnapshot.moc"
