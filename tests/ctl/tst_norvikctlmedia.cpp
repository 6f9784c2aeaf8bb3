#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include "support/mediafactory.h"
#include "support/swfwriter.h"
#include "support/testsupport.h"

// norvikctl's media commands as scripts use them: import, probe and swf-info,
// their output, their errors and their exit codes.
class TestNorvikCtlMedia : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_data = std::make_unique<nvktest::DataDir>(); }
    void importFilesAndFolders();
    void importErrors();
    void probeReports();
    void probeErrors();
    void swfInfoOfMoviesAndProjectors();
    void swfInfoErrors();

private:
    using Result = nvktest::CtlResult;
    Result ctl(const QStringList &arguments) { return nvktest::runCtl(m_data->path(), arguments); }
    QString file(const QString &relative, const QByteArray &bytes)
    {
        const QString path = m_files.filePath(relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile out(path);
        if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }
    QString copy(const QString &from, const QString &relative)
    {
        QFile in(from);
        if (!in.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qPrintable(from));
        return file(relative, in.readAll());
    }

    QTemporaryDir m_files;
    std::unique_ptr<nvktest::DataDir> m_data;
    QString m_mp4;
    QString m_avi;
    QByteArray m_swf;
};

void TestNorvikCtlMedia::initTestCase()
{
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    nvktest::MediaFactory::Clip clip;
    clip.extension = "mp4";
    clip.seconds = 3;
    m_mp4 = nvktest::MediaFactory::clip(clip);
    m_avi = nvktest::MediaFactory::clip("avi");
    QVERIFY(!m_mp4.isEmpty() && !m_avi.isEmpty());
    m_swf = nvktest::SwfWriter()
                .setVersion(10)
                .setStageSize(550, 400)
                .setFrameRate(30)
                .setFileAttributes(true, true)
                .addFrames(75)
                .build(nvktest::SwfWriter::Compression::Zlib);
}

void TestNorvikCtlMedia::importFilesAndFolders()
{
    copy(m_mp4, "lib/Summer.mp4");
    copy(m_avi, "lib/deep/er/Winter.avi");
    file("lib/deep/cartoon.swf", m_swf);
    file("lib/deep/notes.txt", "notes");
    const QString single = copy(m_mp4, "single/Alone.mp4");

    Result result = ctl({"import", m_files.filePath("lib"), single});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QStringLiteral("added 4, already in library 0, refused 1\n"));
    // Progress is for terminals; a pipe gets nothing.
    QCOMPARE(result.err, QString());

    const QString listed = ctl({"list", "--json"}).out;
    for (const char *name : {"\"Summer\"", "\"Winter\"", "\"cartoon\"", "\"Alone\""})
        QVERIFY2(listed.contains(QLatin1String(name)), name);
    QVERIFY(listed.contains(QRegularExpression("\"Length\": *75")));
    QVERIFY(listed.contains(QRegularExpression("\"Length\": *3")));

    // Relative paths are taken from the working folder.
    QProcess process;
    process.setWorkingDirectory(m_files.filePath("lib"));
    process.start(nvktest::binaryPath("norvikctl"), {"--data-dir", m_data->path(), "import", "."});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()),
             QStringLiteral("added 0, already in library 3, refused 1\n"));
}

void TestNorvikCtlMedia::importErrors()
{
    Result result = ctl({"import"});
    QCOMPARE(result.code, 1);
    QVERIFY(result.err.contains("import needs"));

    const QString present = copy(m_mp4, "errors/there.mp4");
    const QString absent = m_files.filePath("errors/absent.mp4");
    result = ctl({"import", absent, present});
    // The rest is still imported, and the script learns of the missing one.
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QStringLiteral("added 1, already in library 0, refused 0\n"));
    QVERIFY2(result.err.contains("no such file or folder: " + absent), qPrintable(result.err));
}

void TestNorvikCtlMedia::probeReports()
{
    const QString mp4 = copy(m_mp4, "probe/clip.mp4");
    Result result = ctl({"probe", mp4});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.out.contains("type: mp4\nregistered: yes\nlibrary length: 3 seconds\n"), qPrintable(result.out));
    QVERIFY(result.out.contains(QRegularExpression("duration: 3\\.0\\d\\d s\n")));
    QVERIFY(result.out.contains("format: mp4: "));
    QVERIFY(result.out.contains("video engine can decode: yes\n"));

    result = ctl({"probe", file("probe/cartoon.swf", m_swf)});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.out.contains("type: swf\nregistered: yes\nlibrary length: 75 frames\n"), qPrintable(result.out));
    QVERIFY(result.out.contains("frames: 75\n"));
    QVERIFY(result.out.contains("ActionScript 3"));

    // A projector: typed exe whatever its name, frames from the movie inside.
    result = ctl({"probe", file("probe/Projector", nvktest::macProjector(QByteArray(4000, 'p'), m_swf))});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.out.contains("type: exe\nregistered: yes\nlibrary length: 0 seconds\n"), qPrintable(result.out));
    QVERIFY(result.out.contains("flash: Mac projector"));
    QVERIFY(result.out.contains("frames: 75\n"));

    result = ctl({"probe", file("probe/fake.mkv", QByteArray(3000, 'x'))});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.out.contains("duration: unknown\n"), qPrintable(result.out));
    QVERIFY(result.out.contains("video engine can decode: no\n"));
    QVERIFY(!result.out.contains("format:"));

    result = ctl({"probe", file("probe/notes.txt", "words")});
    QCOMPARE(result.code, 0);
    QVERIFY(result.out.contains("type: txt\nregistered: no\n"));
}

void TestNorvikCtlMedia::probeErrors()
{
    Result result = ctl({"probe", m_files.filePath("nothing.mp4")});
    QCOMPARE(result.code, 1);
    QVERIFY(result.err.contains("cannot read"));
    QVERIFY(result.out.isEmpty());
    result = ctl({"probe", m_files.path()});
    QCOMPARE(result.code, 1);
    QVERIFY(result.err.contains("a folder"));
    result = ctl({"probe"});
    QCOMPARE(result.code, 1);
    QVERIFY(result.err.contains("exactly one FILE"));
}

void TestNorvikCtlMedia::swfInfoOfMoviesAndProjectors()
{
    const QString expected = QStringLiteral("signature: CWS (compression: zlib)\n"
                                            "version: 10\n"
                                            "file length: %1\n"
                                            "frame size: 550 x 400 pixels\n"
                                            "frame rate: 30\n"
                                            "frame count: 75\n"
                                            "actionscript 3: yes\n")
                                 .arg(nvktest::SwfWriter()
                                          .setVersion(10)
                                          .setStageSize(550, 400)
                                          .setFrameRate(30)
                                          .setFileAttributes(true, true)
                                          .addFrames(75)
                                          .build()
                                          .size());
    Result result = ctl({"swf-info", file("info/movie.swf", m_swf)});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, "source: movie\n" + expected);

    result = ctl({"swf-info", file("info/Game.exe", nvktest::windowsProjector(QByteArray(1000, 'w'), m_swf))});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QStringLiteral("source: Windows projector, %1 bytes of movie\n").arg(m_swf.size()) + expected);

    const QByteArray old = nvktest::SwfWriter().setVersion(6).setStageSize(320, 240).setFrameRate(12.5).addFrames(3).build(
        nvktest::SwfWriter::Compression::Lzma);
    result = ctl({"swf-info", file("info/old.swf", old)});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.out.contains("signature: ZWS (compression: LZMA)\nversion: 6\n"), qPrintable(result.out));
    QVERIFY(result.out.contains("frame size: 320 x 240 pixels\nframe rate: 12.5\nframe count: 3\n"));
    QVERIFY(result.out.contains("actionscript 3: no\n"));
}

void TestNorvikCtlMedia::swfInfoErrors()
{
    const struct
    {
        const char *name;
        QByteArray bytes;
    } cases[] = {
        {"clip.swf", QByteArray("not a movie at all")},
        {"cut.swf", m_swf.left(12)},
        {"setup.exe", QByteArray(3000, 's')},
        {"empty.swf", QByteArray()},
    };
    for (const auto &c : cases)
    {
        const Result result = ctl({"swf-info", file(QStringLiteral("bad/") + c.name, c.bytes)});
        QCOMPARE(result.code, 1);
        QVERIFY2(result.err.contains("is no Flash movie"), qPrintable(result.err));
        QVERIFY(result.out.isEmpty());
    }
    const Result mp4 = ctl({"swf-info", m_mp4});
    QCOMPARE(mp4.code, 1);
    QVERIFY(mp4.err.contains("is no Flash movie"));
    const Result missing = ctl({"swf-info", m_files.filePath("missing.swf")});
    QCOMPARE(missing.code, 1);
    QVERIFY(missing.err.contains("cannot read"));
}

QTEST_GUILESS_MAIN(TestNorvikCtlMedia)
#include "tst_norvikctlmedia.moc"
