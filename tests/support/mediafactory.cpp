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

struct Recipe
{
    QString extension;
    QString muxer;
    // Encoders in order of preference; the first one this ffmpeg has wins.
    QStringList videoEncoders;
    QStringList audioEncoders;
    QStringList extraArguments;
};

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
            if (fields.size() >= 2 && fields.at(0).size() == 6 && (fields.at(0).startsWith(u'V') || fields.at(0).startsWith(u'A')))
                found.insert(fields.at(1));
        }
        return found;
    }();
    return names;
}

const QList<Recipe> &recipes()
{
    static const QList<Recipe> list = {
        {QStringLiteral("mp4"), QStringLiteral("mp4"), {QStringLiteral("libx264"), QStringLiteral("mpeg4")}, {QStringLiteral("aac")}, {}},
        // Apple's .m4v is an MP4 file; ffmpeg's own "m4v" is a raw stream.
        {QStringLiteral("m4v"), QStringLiteral("mp4"), {QStringLiteral("libx264"), QStringLiteral("mpeg4")}, {QStringLiteral("aac")}, {}},
        {QStringLiteral("mov"), QStringLiteral("mov"), {QStringLiteral("libx264"), QStringLiteral("mpeg4")}, {QStringLiteral("aac")}, {}},
        {QStringLiteral("mkv"), QStringLiteral("matroska"), {QStringLiteral("libx264"), QStringLiteral("mpeg4")},
         {QStringLiteral("libvorbis"), QStringLiteral("aac")}, {}},
        {QStringLiteral("avi"), QStringLiteral("avi"), {QStringLiteral("mpeg4")}, {QStringLiteral("libmp3lame"), QStringLiteral("mp2")}, {}},
        // FLV takes only a few sample rates.
        {QStringLiteral("flv"), QStringLiteral("flv"), {QStringLiteral("flv")}, {QStringLiteral("libmp3lame")},
         {QStringLiteral("-ar"), QStringLiteral("44100")}},
        {QStringLiteral("f4v"), QStringLiteral("f4v"), {QStringLiteral("libx264")}, {QStringLiteral("aac")}, {}},
        {QStringLiteral("3gp"), QStringLiteral("3gp"), {QStringLiteral("mpeg4")}, {QStringLiteral("aac")},
         {QStringLiteral("-ac"), QStringLiteral("1")}},
        {QStringLiteral("wmv"), QStringLiteral("asf"), {QStringLiteral("wmv2"), QStringLiteral("wmv1")}, {QStringLiteral("wmav2")}, {}},
        {QStringLiteral("mpg"), QStringLiteral("mpeg"), {QStringLiteral("mpeg1video")}, {QStringLiteral("mp2")}, {}},
        {QStringLiteral("webm"), QStringLiteral("webm"), {QStringLiteral("libvpx"), QStringLiteral("libvpx-vp9")},
         {QStringLiteral("libvorbis"), QStringLiteral("libopus")}, {}},
        // RealVideo 1.0 needs sizes in multiples of 16; 2.0 takes 160x120.
        {QStringLiteral("rm"), QStringLiteral("rm"), {QStringLiteral("rv20")}, {QStringLiteral("real_144")},
         {QStringLiteral("-ar"), QStringLiteral("8000"), QStringLiteral("-ac"), QStringLiteral("1")}},
        {QStringLiteral("rmvb"), QStringLiteral("rm"), {QStringLiteral("rv20")}, {QStringLiteral("real_144")},
         {QStringLiteral("-ar"), QStringLiteral("8000"), QStringLiteral("-ac"), QStringLiteral("1")}},
    };
    return list;
}

const Recipe *recipeFor(const QString &extension)
{
    for (const Recipe &recipe : recipes())
    {
        if (recipe.extension.compare(extension, Qt::CaseInsensitive) == 0)
            return &recipe;
    }
    return nullptr;
}

QString firstAvailable(const QStringList &candidates)
{
    const QSet<QString> known = encoders();
    for (const QString &candidate : candidates)
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
        return QStringLiteral("the ffmpeg program is not installed (apt-get install ffmpeg); no test movies can be made");
    if (encoders().isEmpty())
        return QStringLiteral("ffmpeg at %1 lists no encoders").arg(ffmpegProgram());
    if (!cacheDir().isValid())
        return QStringLiteral("no temporary folder for test movies: %1").arg(cacheDir().errorString());
    return QString();
}

QStringList MediaFactory::formats()
{
    QStringList result;
    for (const Recipe &recipe : recipes())
    {
        if (!firstAvailable(recipe.videoEncoders).isEmpty() && !firstAvailable(recipe.audioEncoders).isEmpty())
            result.append(recipe.extension);
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
                        .arg(recipe->extension, recipe->videoEncoders.join(u'/'), recipe->audioEncoders.join(u'/')));

    const QString key = QStringLiteral("%1-%2s-%3x%4-%5")
                            .arg(recipe->extension)
                            .arg(wanted.seconds)
                            .arg(wanted.size.width())
                            .arg(wanted.size.height())
                            .arg(wanted.audio ? QStringLiteral("av") : QStringLiteral("v"));
    QMutexLocker locker(&cacheMutex());
    if (const auto found = cache().constFind(key); found != cache().constEnd())
        return found.value();

    const QString path = QDir(folder()).filePath(QStringLiteral("clip-%1.%2").arg(key, wanted.extension.toLower()));
    const QString seconds = QString::number(wanted.seconds);
    QStringList arguments = {
        QStringLiteral("-nostdin"), QStringLiteral("-hide_banner"), QStringLiteral("-loglevel"), QStringLiteral("error"),
        QStringLiteral("-y"), QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
        QStringLiteral("testsrc=size=%1x%2:rate=%3:duration=%4")
            .arg(wanted.size.width())
            .arg(wanted.size.height())
            .arg(FramesPerSecond)
            .arg(seconds)};
    if (wanted.audio)
        arguments << QStringLiteral("-f") << QStringLiteral("lavfi") << QStringLiteral("-i")
                  << QStringLiteral("sine=frequency=440:sample_rate=44100:duration=%1").arg(seconds);
    arguments << QStringLiteral("-c:v") << video << QStringLiteral("-pix_fmt") << QStringLiteral("yuv420p");
    if (wanted.audio)
        arguments << QStringLiteral("-c:a") << audio << recipe->extraArguments << QStringLiteral("-shortest");
    else
        arguments << QStringLiteral("-an");
    arguments << QStringLiteral("-f") << recipe->muxer << path;

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
    const QStringList arguments = {QStringLiteral("-nostdin"),
                                   QStringLiteral("-hide_banner"),
                                   QStringLiteral("-loglevel"),
                                   QStringLiteral("error"),
                                   QStringLiteral("-y"),
                                   QStringLiteral("-i"),
                                   path,
                                   QStringLiteral("-vf"),
                                   QStringLiteral("select=eq(n\\,%1)").arg(frameNumber),
                                   QStringLiteral("-frames:v"),
                                   QStringLiteral("1"),
                                   out};
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
