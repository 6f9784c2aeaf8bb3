#include <QDir>
#include <QFile>
#include <QHash>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include <sys/stat.h>

#include <atomic>

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

QString clipOf(const QString &extension)
{
    nvktest::MediaFactory::Clip clip;
    clip.extension = extension;
    clip.seconds = secondsFor(extension);
    return nvktest::MediaFactory::clip(clip);
}

// 16-bit mono PCM in a WAV file: audio only, nothing to encode.
QByteArray wave(int seconds)
{
    const quint32 rate = 8000;
    const quint32 dataSize = rate * 2 * quint32(seconds);
    QByteArray out;
    const auto put32 = [&out](quint32 v) {
        for (int i = 0; i < 4; ++i)
            out.append(char(v >> (8 * i)));
    };
    const auto put16 = [&out](quint16 v) {
        out.append(char(v));
        out.append(char(v >> 8));
    };
    out.append("RIFF");
    put32(36 + dataSize);
    out.append("WAVEfmt ");
    put32(16);
    put16(1);
    put16(1);
    put32(rate);
    put32(rate * 2);
    put16(2);
    put16(16);
    out.append("data");
    put32(dataSize);
    out.append(QByteArray(qsizetype(dataSize), '\0'));
    return out;
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
    void refusesWhatWillNotPlay();
    void unknownVideoCodecIsRefused();
    void audioOnlyIsDecodable();
    void awkwardNames();
    void concurrentProbes();

private:
    QString sample(const QString &extension) const { return m_clips.value(extension); }

    QTemporaryDir m_dir;
    QHash<QString, QString> m_clips;
};

void TestZBMediaProbe::initTestCase()
{
    QVERIFY(m_dir.isValid());
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    const QStringList wanted{"mp4", "mkv", "avi", "mov", "flv", "wmv", "mpg", "webm", "3gp", "rm"};
    for (const QString &extension : nvktest::MediaFactory::formats())
    {
        const QString path = clipOf(extension);
        QVERIFY2(!path.isEmpty(), qPrintable(extension));
        m_clips.insert(extension, path);
    }
    for (const QString &extension : wanted)
        QVERIFY2(m_clips.contains(extension), qPrintable("this ffmpeg cannot write ." + extension));
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
    const QString path = sample(extension);
    const double seconds = secondsFor(extension);

    const std::optional<double> duration = ZBMediaProbe::durationSeconds(path);
    QVERIFY(duration);
    QVERIFY2(qAbs(*duration - seconds) < 0.5, qPrintable(QString::number(*duration)));

    // RealMedia lengths are left to the engine, as they always were.
    const qint32 stored = ZBMediaProbe::getMovieDurationAtPath(path);
    if (extension == u"rm" || extension == u"rmvb")
        QCOMPARE(stored, 0);
    else
        QVERIFY2(qAbs(stored - seconds) <= 1, qPrintable(QString::number(stored)));

    QVERIFY(ZBMediaProbe::canDecode(path));

    const QString summary = ZBMediaProbe::formatSummary(path);
    QVERIFY2(summary.contains(QStringLiteral("160 x 120, 25 fps")), qPrintable(summary));
    QVERIFY2(summary.contains(QStringLiteral(" Hz, ")), qPrintable(summary));
}

void TestZBMediaProbe::lengthRulesByExtension()
{
    const QByteArray mp4 = readFile(sample("mp4"));
    const QByteArray swf = nvktest::SwfWriter().addFrames(321).build(nvktest::SwfWriter::Compression::Zlib);
    QVERIFY(!mp4.isEmpty());
    const struct
    {
        const char *name;
        QByteArray bytes;
        qint32 length;
    } cases[] = {
        {"movie.swf", swf, 321},
        // The extension test is case-sensitive: SWF goes to the movie probe,
        // which cannot open a Flash movie.
        {"movie.SWF", swf, 0},
        {"clip.MP4", mp4, qint32(secondsFor("mp4"))},
        {"clip.without-a-known-extension", mp4, qint32(secondsFor("mp4"))},
        // Types whose engines measure themselves get 0, whatever they hold.
        {"clip.rm", mp4, 0},
        {"clip.rv", mp4, 0},
        {"clip.rmvb", mp4, 0},
        {"package.xap", mp4, 0},
        {"Game.exe", nvktest::windowsProjector(QByteArray(100, 'p'), swf), 0},
    };
    for (const auto &c : cases)
    {
        const QString path = m_dir.filePath(QStringLiteral("rules/") + c.name);
        QVERIFY(QDir().mkpath(m_dir.filePath("rules")));
        QVERIFY(writeFile(path, c.bytes));
        QVERIFY2(ZBMediaProbe::getMovieDurationAtPath(path) == c.length, c.name);
    }
    QCOMPARE(ZBMediaProbe::getMovieDurationAtPath(m_dir.filePath("rules/missing.mp4")), 0);
    QCOMPARE(ZBMediaProbe::getMovieDurationAtPath(m_dir.filePath("rules/missing.swf")), 0);
}

void TestZBMediaProbe::refusesWhatWillNotPlay()
{
    const QByteArray mp4 = readFile(sample("mp4"));
    const QString garbage = nvktest::MediaFactory::garbage("mp4", 64 * 1024);
    // ffmpeg writes the index at the end: without it nothing can be found.
    const QString truncated = nvktest::MediaFactory::truncatedCopy(sample("mp4"), mp4.size() / 2);
    const QString empty = m_dir.filePath("empty.avi");
    const QString text = m_dir.filePath("notes.mkv");
    QVERIFY(writeFile(empty, QByteArray()));
    QVERIFY(writeFile(text, "just some words, no movie here\n"));
    const QString fifo = m_dir.filePath("pipe.mp4");
    QCOMPARE(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);

    for (const QString &path : {garbage, truncated, empty, text, fifo, m_dir.filePath("missing.mp4"), m_dir.path()})
    {
        QVERIFY2(!ZBMediaProbe::canDecode(path), qPrintable(path));
        QVERIFY2(!ZBMediaProbe::durationSeconds(path), qPrintable(path));
        QCOMPARE(ZBMediaProbe::getMovieDurationAtPath(path), 0);
        QVERIFY2(ZBMediaProbe::formatSummary(path).isEmpty(), qPrintable(path));
    }
}

void TestZBMediaProbe::unknownVideoCodecIsRefused()
{
    // The same AVI with its video FourCC changed to one no decoder knows: the
    // container still opens and states its length, but the video engine
    // would fail on it.
    QByteArray avi = readFile(sample("avi"));
    const qsizetype headerEnd = avi.indexOf("movi");
    QVERIFY(headerEnd > 0);
    int replaced = 0;
    for (qsizetype at = avi.indexOf("FMP4"); at >= 0 && at < headerEnd; at = avi.indexOf("FMP4", at + 4), ++replaced)
        avi.replace(at, 4, "QQZ9");
    QVERIFY(replaced > 0);
    const QString path = m_dir.filePath("unknown-codec.avi");
    QVERIFY(writeFile(path, avi));
    QVERIFY(ZBMediaProbe::durationSeconds(path));
    QVERIFY(!ZBMediaProbe::canDecode(path));
}

void TestZBMediaProbe::audioOnlyIsDecodable()
{
    const QString path = m_dir.filePath("tone.wav");
    QVERIFY(writeFile(path, wave(2)));
    QVERIFY(ZBMediaProbe::canDecode(path));
    QVERIFY(qAbs(*ZBMediaProbe::durationSeconds(path) - 2.0) < 0.1);
    QVERIFY(!ZBMediaProbe::formatSummary(path).contains(QStringLiteral(" x ")));
    QVERIFY(ZBMediaProbe::formatSummary(path).contains(QStringLiteral("8000 Hz, 1 channel")));
}

void TestZBMediaProbe::awkwardNames()
{
    // Names FFmpeg could take for a protocol or an option must stay names.
    const QByteArray mov = readFile(sample("mov"));
    QVERIFY(QDir().mkpath(m_dir.filePath("concat:a|b")));
    for (const QString &name : {QStringLiteral("http:clip.mov"), QStringLiteral("concat:a|b/Ünïcödé clip 1.mov"),
                                QStringLiteral("-i clip.mov"), QStringLiteral("clip.mov?query=1#frag")})
    {
        const QString path = m_dir.filePath(name);
        QVERIFY(writeFile(path, mov));
        QVERIFY2(ZBMediaProbe::canDecode(path), qPrintable(name));
        QCOMPARE(ZBMediaProbe::getMovieDurationAtPath(path), qint32(secondsFor("mov")));
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
    QStringList paths;
    QList<qint32> expected;
    for (const QString &path : std::as_const(m_clips))
    {
        paths.append(path);
        expected.append(ZBMediaProbe::getMovieDurationAtPath(path));
    }
    QThreadPool pool;
    pool.setMaxThreadCount(8);
    std::atomic_int mismatches = 0;
    for (int round = 0; round < 8; ++round)
    {
        for (qsizetype i = 0; i < paths.size(); ++i)
        {
            pool.start([&, i] {
                if (ZBMediaProbe::getMovieDurationAtPath(paths.at(i)) != expected.at(i)
                    || !ZBMediaProbe::canDecode(paths.at(i)))
                    ++mismatches;
            });
        }
    }
    pool.waitForDone();
    QCOMPARE(mismatches.load(), 0);
}

QTEST_GUILESS_MAIN(TestZBMediaProbe)
#include "tst_zbmediaprobe.moc"
