#include "support/mediafactory.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace nvktest
{
namespace
{
// How one container is written, with encoders Debian's ffmpeg has.
struct Recipe
{
    const char *extension;
    const char *muxer;
    const char *video;
    const char *audio;
    const char *extraArguments;
};

const Recipe Recipes[] = {
    {"mp4", "mp4", "libx264", "aac", ""},
    // Apple's .m4v is an MP4 file; ffmpeg's own "m4v" is a raw stream.
    {"m4v", "mp4", "libx264", "aac", ""},
    {"mov", "mov", "libx264", "aac", ""},
    {"mkv", "matroska", "libx264", "libvorbis", ""},
    {"avi", "avi", "mpeg4", "libmp3lame", ""},
    // FLV takes only a few sample rates.
    {"flv", "flv", "flv", "libmp3lame", "-ar 44100"},
    {"f4v", "f4v", "libx264", "aac", ""},
    {"3gp", "3gp", "mpeg4", "aac", "-ac 1"},
    {"wmv", "asf", "wmv2", "wmav2", ""},
    {"mpg", "mpeg", "mpeg1video", "mp2", ""},
    {"webm", "webm", "libvpx", "libvorbis", ""},
    // RealVideo 1.0 needs sizes in multiples of 16; 2.0 takes 160x120.
    {"rm", "rm", "rv20", "real_144", "-ar 8000 -ac 1"},
    {"rmvb", "rm", "rv20", "real_144", "-ar 8000 -ac 1"},
};

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts);
}

QString ffmpegProgram()
{
    static const QString program = QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
    return program;
}

QTemporaryDir &cacheDir()
{
    static QTemporaryDir dir(QDir::temp().filePath(QStringLiteral("nvk-media-XXXXXX")));
    return dir;
}

// A new file name in the cache folder.
QString freshPath(const QString &stem, const QString &extension)
{
    static int serial = 0;
    return QDir(cacheDir().path()).filePath(QStringLiteral("%1-%2.%3").arg(stem).arg(++serial).arg(extension));
}

// Runs ffmpeg to make `path`; empty on success, else why not. Making one
// clip takes well under a second; a stuck ffmpeg must not hang the run.
QString runFfmpeg(const QStringList &arguments, const QString &path)
{
    QProcess process;
    process.start(ffmpegProgram(), words("-nostdin -hide_banner -loglevel error -y") + arguments + QStringList{path});
    if (!process.waitForFinished(60000))
    {
        process.kill();
        process.waitForFinished();
        return QStringLiteral("ffmpeg did not finish making %1").arg(path);
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0 || QFileInfo(path).size() == 0)
        return QStringLiteral("ffmpeg could not make %1: %2")
            .arg(path, QString::fromUtf8(process.readAllStandardError()).trimmed());
    return QString();
}

QString failed(QString *error, const QString &why)
{
    if (error)
        *error = why;
    return QString();
}
} // namespace

bool MediaFactory::isAvailable()
{
    return !ffmpegProgram().isEmpty() && cacheDir().isValid();
}

QString MediaFactory::unavailableReason()
{
    if (ffmpegProgram().isEmpty())
        return QStringLiteral(
            "the ffmpeg program is not installed (apt-get install ffmpeg): no test movies can be made");
    return cacheDir().isValid() ? QString() : QStringLiteral("no temporary folder for test movies");
}

QStringList MediaFactory::formats()
{
    QStringList result;
    for (const Recipe &recipe : Recipes)
        result.append(QLatin1String(recipe.extension));
    return result;
}

QString MediaFactory::folder()
{
    return cacheDir().path();
}

QString MediaFactory::clip(const QString &extension, QString *error)
{
    return clip(Clip{extension}, error);
}

QString MediaFactory::clip(const Clip &wanted, QString *error)
{
    if (!isAvailable())
        return failed(error, unavailableReason());
    const auto recipe =
        std::find_if(std::begin(Recipes), std::end(Recipes),
                     [&wanted](const Recipe &r)
                     { return wanted.extension.compare(QLatin1String(r.extension), Qt::CaseInsensitive) == 0; });
    if (recipe == std::end(Recipes) || wanted.seconds <= 0 || wanted.size.isEmpty())
        return failed(error, QStringLiteral("no recipe for a .%1 clip of that length and size").arg(wanted.extension));

    static QHash<QString, QString> made;
    const QString key = QStringLiteral("%1-%2s-%3x%4-%5")
                            .arg(QLatin1String(recipe->extension))
                            .arg(wanted.seconds)
                            .arg(wanted.size.width())
                            .arg(wanted.size.height())
                            .arg(wanted.audio ? QStringLiteral("av") : QStringLiteral("v"));
    if (made.contains(key))
        return made.value(key);

    const QString path = QDir(folder()).filePath(QStringLiteral("clip-%1.%2").arg(key, wanted.extension.toLower()));
    QStringList arguments = words("-f lavfi -i");
    arguments << QStringLiteral("testsrc=size=%1x%2:rate=%3:duration=%4")
                     .arg(wanted.size.width())
                     .arg(wanted.size.height())
                     .arg(FramesPerSecond)
                     .arg(wanted.seconds);
    if (wanted.audio)
        arguments << words("-f lavfi -i")
                  << QStringLiteral("sine=frequency=440:sample_rate=44100:duration=%1").arg(wanted.seconds);
    arguments << QStringLiteral("-c:v") << QLatin1String(recipe->video) << words("-pix_fmt yuv420p");
    if (wanted.audio)
        arguments << QStringLiteral("-c:a") << QLatin1String(recipe->audio) << words(recipe->extraArguments)
                  << "-shortest";
    else
        arguments << QStringLiteral("-an");
    arguments << QStringLiteral("-f") << QLatin1String(recipe->muxer);
    const QString why = runFfmpeg(arguments, path);
    if (!why.isEmpty())
        return failed(error, why);
    made.insert(key, path);
    return path;
}

QString MediaFactory::referenceFrame(const QString &path, int frameNumber, QString *error)
{
    if (!isAvailable() || frameNumber < 0)
        return failed(error, frameNumber < 0 ? QStringLiteral("frame numbers start at 0") : unavailableReason());
    const QString out = freshPath(QStringLiteral("frame"), QStringLiteral("png"));
    const QString why = runFfmpeg(QStringList{QStringLiteral("-i"), path, QStringLiteral("-vf"),
                                              QStringLiteral("select=eq(n\\,%1)").arg(frameNumber)} +
                                      words("-frames:v 1"),
                                  out);
    return why.isEmpty() ? out : failed(error, why);
}

QString MediaFactory::garbage(const QString &extension, qint64 bytes)
{
    // The same bytes every run: about one random file in a hundred happens to
    // look enough like a raw H.263 stream to the demuxer's probe, and a test
    // must not fail by chance.
    QRandomGenerator generator(0x4e564b);
    QByteArray data(bytes, Qt::Uninitialized);
    for (char &byte : data)
        byte = char(generator.bounded(256));
    QFile file(freshPath(QStringLiteral("garbage"), extension));
    return cacheDir().isValid() && file.open(QIODevice::WriteOnly) && file.write(data) == bytes ? file.fileName()
                                                                                                : QString();
}

QString MediaFactory::truncatedCopy(const QString &source, qint64 bytes)
{
    QFile in(source);
    QFile out(
        freshPath(QStringLiteral("truncated-") + QFileInfo(source).completeBaseName(), QFileInfo(source).suffix()));
    return in.open(QIODevice::ReadOnly) && out.open(QIODevice::WriteOnly) && out.write(in.read(bytes)) >= 0
               ? out.fileName()
               : QString();
}
} // namespace nvktest
