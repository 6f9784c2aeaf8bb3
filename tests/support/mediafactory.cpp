#include "support/mediafactory.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QMutex>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace nvktest
{
namespace
{
// Making one clip takes well under a second; a stuck ffmpeg must not hang the
// test run.
constexpr int FfmpegTimeoutMs = 60000;

// How one container is written. Encoder lists are in order of preference,
// separated by spaces; the first one this ffmpeg has wins.
struct Recipe
{
    const char *extension;
    const char *muxer;
    const char *videoEncoders;
    const char *audioEncoders;
    const char *extraArguments;
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

QSet<QString> encoders()
{
    static const QSet<QString> names = []() {
        QSet<QString> found;
        if (ffmpegProgram().isEmpty())
            return found;
        QProcess process;
        process.start(ffmpegProgram(), {QStringLiteral("-hide_banner"), QStringLiteral("-encoders")});
        if (!process.waitForFinished(FfmpegTimeoutMs))
        {
            process.kill();
            process.waitForFinished();
            return found;
        }
        // Lines look like " V....D libx264    libx264 H.264 / AVC ...".
        const QStringList lines = QString::fromUtf8(process.readAllStandardOutput()).split(u'\n');
        for (const QString &line : lines)
        {
            const QStringList fields = line.simplified().split(u' ');
            const bool codecLine = fields.size() >= 2 && fields.at(0).size() == 6
                                   && (fields.at(0).startsWith(u'V') || fields.at(0).startsWith(u'A'));
            if (codecLine)
                found.insert(fields.at(1));
        }
        return found;
    }();
    return names;
}

const Recipe Recipes[] = {
    {"mp4", "mp4", "libx264 mpeg4", "aac", ""},
    // Apple's .m4v is an MP4 file; ffmpeg's own "m4v" is a raw stream.
    {"m4v", "mp4", "libx264 mpeg4", "aac", ""},
    {"mov", "mov", "libx264 mpeg4", "aac", ""},
    {"mkv", "matroska", "libx264 mpeg4", "libvorbis aac", ""},
    {"avi", "avi", "mpeg4", "libmp3lame mp2", ""},
    // FLV takes only a few sample rates.
    {"flv", "flv", "flv", "libmp3lame", "-ar 44100"},
    {"f4v", "f4v", "libx264", "aac", ""},
    {"3gp", "3gp", "mpeg4", "aac", "-ac 1"},
    {"wmv", "asf", "wmv2 wmv1", "wmav2", ""},
    {"mpg", "mpeg", "mpeg1video", "mp2", ""},
    {"webm", "webm", "libvpx libvpx-vp9", "libvorbis libopus", ""},
    // RealVideo 1.0 needs sizes in multiples of 16; 2.0 takes 160x120.
    {"rm", "rm", "rv20", "real_144", "-ar 8000 -ac 1"},
    {"rmvb", "rm", "rv20", "real_144", "-ar 8000 -ac 1"},
};

const Recipe *recipeFor(const QString &extension)
{
    for (const Recipe &recipe : Recipes)
    {
        if (extension.compare(QLatin1String(recipe.extension), Qt::CaseInsensitive) == 0)
            return &recipe;
    }
    return nullptr;
}

QString firstAvailable(const char *candidates)
{
    const QSet<QString> known = encoders();
    for (const QString &candidate : words(candidates))
    {
        if (known.contains(candidate))
            return candidate;
    }
    return QString();
}

QTemporaryDir &cacheDir()
{
    static QTemporaryDir dir(QDir::temp().filePath(QStringLiteral("nvk-media-XXXXXX")));
    return dir;
}

QMutex &cacheMutex()
{
    static QMutex mutex;
    return mutex;
}

QHash<QString, QString> &cache()
{
    static QHash<QString, QString> made;
    return made;
}

int serialNumber()
{
    static int next = 0;
    return ++next;
}
} // namespace

bool MediaFactory::isAvailable()
{
    return !ffmpegProgram().isEmpty() && !encoders().isEmpty() && cacheDir().isValid();
}

QString MediaFactory::unavailableReason()
{
    if (ffmpegProgram().isEmpty())
        return QStringLiteral("the ffmpeg program is not installed (apt-get install ffmpeg): "
                              "no test movies can be made");
    if (encoders().isEmpty())
        return QStringLiteral("ffmpeg at %1 lists no encoders").arg(ffmpegProgram());
    if (!cacheDir().isValid())
        return QStringLiteral("no temporary folder for test movies: %1").arg(cacheDir().errorString());
    return QString();
}

QStringList MediaFactory::formats()
{
    QStringList result;
    for (const Recipe &recipe : Recipes)
    {
        if (!firstAvailable(recipe.videoEncoders).isEmpty() && !firstAvailable(recipe.audioEncoders).isEmpty())
            result.append(QLatin1String(recipe.extension));
    }
    return result;
}

QString MediaFactory::folder()
{
    return cacheDir().path();
}

QString MediaFactory::clip(const QString &extension, QString *error)
{
    Clip wanted;
    wanted.extension = extension;
    return clip(wanted, error);
}

QString MediaFactory::clip(const Clip &wanted, QString *error)
{
    const auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return QString();
    };
    if (!isAvailable())
        return fail(unavailableReason());
    const Recipe *recipe = recipeFor(wanted.extension);
    if (!recipe)
        return fail(QStringLiteral("no recipe for .%1 clips").arg(wanted.extension));
    if (wanted.seconds <= 0 || wanted.size.isEmpty())
        return fail(QStringLiteral("a clip needs a length and a size"));
    const QString video = firstAvailable(recipe->videoEncoders);
    const QString audio = firstAvailable(recipe->audioEncoders);
    if (video.isEmpty() || (wanted.audio && audio.isEmpty()))
        return fail(QStringLiteral("this ffmpeg has none of the encoders for .%1 (%2; %3)")
                        .arg(QLatin1String(recipe->extension), QLatin1String(recipe->videoEncoders),
                             QLatin1String(recipe->audioEncoders)));

    const QString key = QStringLiteral("%1-%2s-%3x%4-%5")
                            .arg(QLatin1String(recipe->extension))
                            .arg(wanted.seconds)
                            .arg(wanted.size.width())
                            .arg(wanted.size.height())
                            .arg(wanted.audio ? QStringLiteral("av") : QStringLiteral("v"));
    QMutexLocker locker(&cacheMutex());
    if (const auto found = cache().constFind(key); found != cache().constEnd())
        return found.value();

    const QString path = QDir(folder()).filePath(QStringLiteral("clip-%1.%2").arg(key, wanted.extension.toLower()));
    const QString seconds = QString::number(wanted.seconds);
    QStringList arguments = words("-nostdin -hide_banner -loglevel error -y -f lavfi -i");
    arguments << QStringLiteral("testsrc=size=%1x%2:rate=%3:duration=%4")
                     .arg(wanted.size.width())
                     .arg(wanted.size.height())
                     .arg(FramesPerSecond)
                     .arg(seconds);
    if (wanted.audio)
    {
        arguments << words("-f lavfi -i")
                  << QStringLiteral("sine=frequency=440:sample_rate=44100:duration=%1").arg(seconds);
    }
    arguments << QStringLiteral("-c:v") << video << words("-pix_fmt yuv420p");
    if (wanted.audio)
        arguments << QStringLiteral("-c:a") << audio << words(recipe->extraArguments) << QStringLiteral("-shortest");
    else
        arguments << QStringLiteral("-an");
    arguments << QStringLiteral("-f") << QLatin1String(recipe->muxer) << path;

    QProcess process;
    process.start(ffmpegProgram(), arguments);
    if (!process.waitForFinished(FfmpegTimeoutMs))
    {
        process.kill();
        process.waitForFinished();
        return fail(QStringLiteral("ffmpeg did not finish making %1").arg(path));
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0 || !QFileInfo(path).isFile()
        || QFileInfo(path).size() == 0)
        return fail(QStringLiteral("ffmpeg could not make %1: %2")
                        .arg(path, QString::fromUtf8(process.readAllStandardError()).trimmed()));
    cache().insert(key, path);
    return path;
}

QString MediaFactory::referenceFrame(const QString &path, int frameNumber, QString *error)
{
    const auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return QString();
    };
    if (!isAvailable())
        return fail(unavailableReason());
    if (frameNumber < 0)
        return fail(QStringLiteral("frame numbers start at 0"));
    QString out;
    {
        QMutexLocker locker(&cacheMutex());
        out = QDir(folder()).filePath(QStringLiteral("frame-%1.png").arg(serialNumber()));
    }
    const QStringList arguments = words("-nostdin -hide_banner -loglevel error -y -i")
                                  << path << QStringLiteral("-vf")
                                  << QStringLiteral("select=eq(n\\,%1)").arg(frameNumber) << words("-frames:v 1")
                                  << out;
    QProcess process;
    process.start(ffmpegProgram(), arguments);
    if (!process.waitForFinished(FfmpegTimeoutMs))
    {
        process.kill();
        process.waitForFinished();
        return fail(QStringLiteral("ffmpeg did not finish extracting a frame of %1").arg(path));
    }
    if (process.exitCode() != 0 || !QFileInfo(out).isFile())
        return fail(QStringLiteral("ffmpeg could not extract frame %1 of %2: %3")
                        .arg(frameNumber)
                        .arg(path, QString::fromUtf8(process.readAllStandardError()).trimmed()));
    return out;
}

QString MediaFactory::garbage(const QString &extension, qint64 bytes)
{
    if (!cacheDir().isValid())
        return QString();
    QMutexLocker locker(&cacheMutex());
    const QString path = QDir(folder()).filePath(QStringLiteral("garbage-%1.%2").arg(serialNumber()).arg(extension));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    QByteArray data(bytes, Qt::Uninitialized);
    for (qint64 i = 0; i < bytes; ++i)
        data[i] = char(QRandomGenerator::global()->bounded(256));
    file.write(data);
    return path;
}

QString MediaFactory::truncatedCopy(const QString &source, qint64 bytes)
{
    QFile in(source);
    if (!cacheDir().isValid() || !in.open(QIODevice::ReadOnly))
        return QString();
    QMutexLocker locker(&cacheMutex());
    const QFileInfo info(source);
    const QString path = QDir(folder()).filePath(
        QStringLiteral("truncated-%1-%2.%3").arg(serialNumber()).arg(info.completeBaseName(), info.suffix()));
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly))
        return QString();
    out.write(in.read(bytes));
    return path;
}
} // namespace nvktest
