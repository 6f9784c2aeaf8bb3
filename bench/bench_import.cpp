// Importing a folder of 2,000 movies: probe and store, in files per second,
// against the obvious alternative of asking the ffprobe program about each
// file. The in-process probe must be at least 20 times faster.
//
// Needs the ffmpeg and ffprobe programs (scripts/dev installs them).
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <cmath>
#include <cstdio>

#include "library/zbitem.h"
#include "library/zblibrarycontroller.h"
#include "library/zblibraryimporter.h"
#include "playback/zbmediaprobe.h"

namespace
{
constexpr int FileCount = 2000;
// ffprobe costs about a tenth of a second a file: a sample is enough.
constexpr int FfprobeSample = 200;
constexpr double Goal = 20.0;

struct Seed
{
    const char *extension;
    QStringList codecs;
};

bool run(const QString &program, const QStringList &arguments, QByteArray *output = nullptr)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
    {
        fprintf(stderr, "%s failed: %s\n", qPrintable(program), process.readAllStandardError().constData());
        return false;
    }
    if (output)
        *output = process.readAllStandardOutput();
    return true;
}

QStringList makeSeeds(const QString &folder)
{
    // Low bit rates keep 2,000 copies small; the containers are what matter.
    const QList<Seed> seeds{
        {"mp4", {"-c:v", "mpeg4", "-b:v", "64k", "-c:a", "aac", "-b:a", "32k"}},
        {"mkv", {"-c:v", "mpeg4", "-b:v", "64k", "-c:a", "aac", "-b:a", "32k"}},
        {"avi", {"-c:v", "mpeg4", "-b:v", "64k", "-c:a", "mp2", "-b:a", "32k"}},
        {"flv", {"-c:v", "flv", "-b:v", "64k", "-c:a", "aac", "-b:a", "32k"}},
        {"wmv", {"-c:v", "wmv2", "-b:v", "64k", "-c:a", "wmav2", "-b:a", "32k"}},
        {"mpg", {"-c:v", "mpeg1video", "-b:v", "64k", "-c:a", "mp2", "-b:a", "32k"}},
        {"mov", {"-c:v", "mpeg4", "-b:v", "64k", "-c:a", "aac", "-b:a", "32k"}},
        {"3gp", {"-c:v", "mpeg4", "-b:v", "64k", "-c:a", "aac", "-b:a", "32k"}},
    };
    QStringList paths;
    int seconds = 2;
    for (const Seed &seed : seeds)
    {
        const QString path = QDir(folder).filePath(QStringLiteral("seed.") + seed.extension);
        const QString duration = QString::number(seconds);
        seconds = seconds == 2 ? 3 : 2;
        QStringList arguments{"-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i",
                              "testsrc=size=160x120:rate=25:duration=" + duration, "-f", "lavfi", "-i",
                              "sine=frequency=440:sample_rate=44100:duration=" + duration};
        arguments << seed.codecs << "-ac" << "1" << "-shortest" << path;
        if (!run(QStringLiteral("ffmpeg"), arguments))
            return {};
        paths.append(path);
    }
    return paths;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTemporaryDir work;
    if (!work.isValid())
    {
        fprintf(stderr, "no temporary folder\n");
        return 1;
    }
    const QStringList seeds = makeSeeds(work.path());
    if (seeds.isEmpty())
        return 1;

    // 20 folders of 100 files, each a renamed copy of a seed.
    const QString tree = work.filePath(QStringLiteral("movies"));
    QStringList files;
    for (int i = 0; i < FileCount; ++i)
    {
        const QString seed = seeds.at(i % seeds.size());
        const QString folder = QDir(tree).filePath(QStringLiteral("folder %1").arg(i / 100, 2, 10, QChar(u'0')));
        QDir().mkpath(folder);
        const QString path = QDir(folder).filePath(
            QStringLiteral("movie %1.%2").arg(i, 4, 10, QChar(u'0')).arg(QFileInfo(seed).suffix()));
        if (!QFile::copy(seed, path))
        {
            fprintf(stderr, "cannot copy to %s\n", qPrintable(path));
            return 1;
        }
        files.append(path);
    }

    // The probe alone, one thread: what a single file costs.
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 400; ++i)
        ZBMediaProbe::getMovieDurationAtPath(files.at(i));
    const double probeRate = 400.0 / (double(timer.nsecsElapsed()) / 1e9);

    // The import as the program does it: probes on workers, stores here,
    // one saved transaction per track.
    ZBLibraryController library;
    if (!library.openStore(work.filePath(QStringLiteral("library"))).ok)
    {
        fprintf(stderr, "cannot open a library\n");
        return 1;
    }
    library.initLibrary();
    ZBLibraryImporter importer(library);
    timer.start();
    const ZBLibraryImporter::Counts counts = importer.run({tree});
    const double importSeconds = double(timer.nsecsElapsed()) / 1e9;
    const double importRate = counts.added / importSeconds;
    if (counts.added != FileCount)
    {
        fprintf(stderr, "imported %d of %d files (%d refused)\n", counts.added, FileCount, counts.refused);
        return 1;
    }

    // ffprobe over an even sample of the same files.
    QHash<QString, qint32> stored;
    for (const ZBItem *item : library.managedObjectContext()->items())
        stored.insert(item->Path(), item->Length().value_or(-1));
    int agree = 0;
    timer.start();
    for (int i = 0; i < FfprobeSample; ++i)
    {
        const QString &path = files.at(i * (FileCount / FfprobeSample));
        QByteArray output;
        if (!run(QStringLiteral("ffprobe"),
                 {"-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0", path}, &output))
            return 1;
        if (qint32(std::floor(output.trimmed().toDouble())) == stored.value(path))
            ++agree;
    }
    const double ffprobeRate = FfprobeSample / (double(timer.nsecsElapsed()) / 1e9);
    const double ratio = importRate / ffprobeRate;

    printf("%-44s %12s\n", "operation", "files/s");
    printf("%-44s %12.0f\n", "probe only, 1 thread (400 files)", probeRate);
    printf("%-44s %12.0f   (%d files in %.2f s, %d worker threads)\n", "import: probe + store", importRate,
           FileCount, importSeconds, std::max(2, QThread::idealThreadCount()));
    printf("%-44s %12.1f   (%d files)\n", "ffprobe program, one run per file", ffprobeRate, FfprobeSample);
    printf("%-44s %11.0fx   goal >= %.0fx: %s\n", "import / ffprobe", ratio, Goal, ratio >= Goal ? "met" : "MISSED");
    printf("%-44s %9d/%d\n", "stored lengths equal to ffprobe's (floor)", agree, FfprobeSample);
    return ratio >= Goal ? 0 : 2;
}
