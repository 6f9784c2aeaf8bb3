#include <atomic>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include "playback/zbmediaprobe.h"
#include "support/mediafactory.h"
#include "support/swfwriter.h"

namespace
{
// Lengths alternate so that a probe answering a constant cannot pass.
double secondsFor(const QString &extension)
{
    return nvktest::MediaFactory::formats().indexOf(extension) % 2 ? 3.0 : 2.0;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}
} // namespace

// FFmpeg's demuxers as the library and the video engine use them: lengths,
// whether a file will decode, and the summary line, on real files of every
// container the player takes and on files that only pretend to be movies.
class TestZBMediaProbe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void realMedia_data();
    void realMedia();
    void lengthRulesByExtension();
    void otherFiles_data();
    void otherFiles();
    void awkwardNames();
    void concurrentProbes();

private:
    QTemporaryDir m_dir;
    QHash<QString, QString> m_clips;
};

void TestZBMediaProbe::initTestCase()
{
    QVERIFY(m_dir.isValid());
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    for (const QString &extension : nvktest::MediaFactory::formats())
    {
        m_clips.insert(extension, nvktest::MediaFactory::clip({extension, secondsFor(extension)}));
        QVERIFY2(!m_clips.value(extension).isEmpty(), qPrintable(extension));
    }
}

void TestZBMediaProbe::realMedia_data()
{
    QTest::addColumn<QString>("extension");
    for (const QString &extension : nvktest::MediaFactory::formats())
        QTest::newRow(qPrintable(extension)) << extension;
}

void TestZBMediaProbe::realMedia()
{
    QFETCH(QString, extension);
    const QString path = m_clips.value(extension);
    const double seconds = secondsFor(extension);
    const double duration = ZBMediaProbe::durationSeconds(path).value_or(-1);
    QVERIFY2(qAbs(duration - seconds) < 0.5, qPrintable(QString::number(duration)));
    // RealMedia lengths are left to the engine, as they always were.
    const qint32 stored = ZBMediaProbe::getMovieDurationAtPath(path);
    QVERIFY2(extension.startsWith(u"rm") ? stored == 0 : qAbs(stored - seconds) <= 1,
             qPrintable(QString::number(stored)));
    QVERIFY(ZBMediaProbe::canDecode(path));
    const QString summary = ZBMediaProbe::formatSummary(path);
    QVERIFY2(summary.contains(QStringLiteral("160 x 120, 25 fps")) && summary.contains(QStringLiteral(" Hz, ")),
             qPrintable(summary));
}

void TestZBMediaProbe::lengthRulesByExtension()
{
    const QByteArray mp4 = readFile(m_clips.value("mp4"));
    const QByteArray swf = nvktest::SwfWriter().addFrames(321).build(nvktest::SwfWriter::Compression::Zlib);
    QVERIFY(!mp4.isEmpty());
    const std::tuple<const char *, QByteArray, qint32> cases[] = {
        {"movie.swf", swf, 321},
        // The extension test is case-sensitive: SWF goes to the movie probe,
        // which cannot open a Flash movie.
        {"movie.SWF", swf, 0},
        {"clip.without-a-known-extension", mp4, qint32(secondsFor("mp4"))},
        // Types whose engines measure themselves get 0, whatever they hold.
        {"clip.rmvb", mp4, 0},
        {"package.xap", mp4, 0},
        {"Game.exe", nvktest::windowsProjector(QByteArray(100, 'p'), swf), 0},
        {"missing.swf", {}, 0},
    };
    for (const auto &[name, bytes, length] : cases)
    {
        const QString path = m_dir.filePath(QStringLiteral("rules/") + name);
        QVERIFY(QDir().mkpath(m_dir.filePath("rules")) && (bytes.isEmpty() || writeFile(path, bytes)));
        QVERIFY2(ZBMediaProbe::getMovieDurationAtPath(path) == length, name);
    }
}

void TestZBMediaProbe::otherFiles_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("decodes");
    QTest::addColumn<double>("seconds");
    // Where the summary must, or must not, say something.
    QTest::addColumn<QString>("summary");
    // The same AVI with its video FourCC changed to one no decoder knows: the
    // container opens and states its length, but the video engine would
    // fail on it.
    QByteArray avi = readFile(m_clips.value("avi"));
    for (qsizetype at = avi.indexOf("FMP4"); at >= 0 && at < avi.indexOf("movi"); at = avi.indexOf("FMP4", at))
        avi.replace(at, 4, "QQZ9");
    const QString unknownCodec = m_dir.filePath("unknown-codec.avi");
    QVERIFY(avi.contains("QQZ9") && writeFile(unknownCodec, avi));
    // Audio only: a 2-second tone, mono at 8 kHz.
    const QString tone = m_dir.filePath("tone.wav");
    QCOMPARE(QProcess::execute("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "sine=sample_rate=8000:d=2", tone}), 0);
    const QString fifo = m_dir.filePath("pipe.mp4");
    QCOMPARE(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    QVERIFY(writeFile(m_dir.filePath("empty.avi"), {}) && writeFile(m_dir.filePath("notes.mkv"), "just words\n"));

    QTest::newRow("unknown video codec") << unknownCodec << false << secondsFor("avi") << QString();
    QTest::newRow("audio only") << tone << true << 2.0 << "8000 Hz, 1 channel";
    QTest::newRow("garbage") << nvktest::MediaFactory::garbage("mp4", 64 * 1024) << false << -1.0 << QString();
    // ffmpeg writes the index at the end: without it nothing can be found.
    const QString mp4 = m_clips.value("mp4");
    QTest::newRow("truncated") << nvktest::MediaFactory::truncatedCopy(mp4, readFile(mp4).size() / 2) << false << -1.0
                               << QString();
    for (const char *name : {"empty.avi", "notes.mkv", "pipe.mp4", "missing.mp4", ""})
        QTest::newRow(*name ? name : "folder") << m_dir.filePath(name) << false << -1.0 << QString();
}

void TestZBMediaProbe::otherFiles()
{
    QFETCH(QString, path);
    QFETCH(bool, decodes);
    QFETCH(double, seconds);
    QFETCH(QString, summary);
    QCOMPARE(ZBMediaProbe::canDecode(path), decodes);
    QVERIFY(qAbs(ZBMediaProbe::durationSeconds(path).value_or(-1) - seconds) < 0.5);
    const QString line = ZBMediaProbe::formatSummary(path);
    // What cannot be opened has no summary at all.
    QVERIFY2(seconds < 0 ? line.isEmpty() : line.contains(summary), qPrintable(line));
}

void TestZBMediaProbe::awkwardNames()
{
    // Names FFmpeg could take for a protocol or an option must stay names.
    const QByteArray mov = readFile(m_clips.value("mov"));
    QVERIFY(QDir().mkpath(m_dir.filePath("concat:a|b")));
    for (const QString &name : {QStringLiteral("http:clip.mov"), QStringLiteral("concat:a|b/Ünïcödé clip 1.mov"),
                                QStringLiteral("-i clip.mov"), QStringLiteral("clip.mov?query=1#frag")})
    {
        QVERIFY(writeFile(m_dir.filePath(name), mov));
        QVERIFY2(ZBMediaProbe::canDecode(m_dir.filePath(name)), qPrintable(name));
        QCOMPARE(ZBMediaProbe::getMovieDurationAtPath(m_dir.filePath(name)), qint32(secondsFor("mov")));
    }
    // A relative path is a file name too.
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_dir.path()));
    const bool decodes = ZBMediaProbe::canDecode(QStringLiteral("http:clip.mov"));
    QDir::setCurrent(previous);
    QVERIFY(decodes);
}

void TestZBMediaProbe::concurrentProbes()
{
    const QStringList paths = m_clips.values();
    QList<qint32> expected;
    for (const QString &path : paths)
        expected << ZBMediaProbe::getMovieDurationAtPath(path);
    QThreadPool pool;
    pool.setMaxThreadCount(8);
    std::atomic_int mismatches = 0;
    for (qsizetype job = 0; job < 8 * paths.size(); ++job)
    {
        const qsizetype i = job % paths.size();
        pool.start(
            [&, i] {
                mismatches +=
                    !ZBMediaProbe::canDecode(paths[i]) || ZBMediaProbe::getMovieDurationAtPath(paths[i]) != expected[i];
            });
    }
    pool.waitForDone();
    QCOMPARE(mismatches.load(), 0);
}

QTEST_GUILESS_MAIN(TestZBMediaProbe)
#include "tst_zbmediaprobe.moc"
