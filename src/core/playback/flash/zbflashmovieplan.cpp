#include "playback/flash/zbflashmovieplan.h"

#include <cmath>

#include <QCoreApplication>

#include "playback/flash/zbframecontrolinjector.h"
#include "playback/flash/zbframecontrolscript.h"
#include "playback/flash/zbframecontrolwrapper.h"
#include "playback/flash/zbswfbuilder.h"
#include "playback/flash/zbswfcompressor.h"
#include "playback/flash/zbswftagreader.h"

namespace
{
QString tr(const char *text)
{
    return QCoreApplication::translate("ZBFlashMoviePlan", text);
}

template<typename T>
std::optional<T> fail(QString *error, const QString &reason)
{
    if (error)
        *error = reason;
    return std::nullopt;
}

QByteArray backgroundOf(const QByteArray &plain, const ZBSwfTagReader::Movie &tags)
{
    for (const ZBSwfTagReader::Tag &tag : tags.tags)
    {
        if (tag.code == ZBSwfTagReader::SetBackgroundColorTag && tag.bodyLength >= 3)
            return plain.mid(tag.bodyOffset, 3);
    }
    return QByteArray("\xff\xff\xff", 3);
}
} // namespace

std::optional<ZBFlashMoviePlan> ZBFlashMoviePlan::make(QByteArrayView movie, QByteArrayView prefix,
                                                       QByteArrayView contentUrl, QByteArrayView as3Host,
                                                       QString *error)
{
    const std::optional<ZBSwfHeader::Info> header = ZBSwfHeader::readHeader(movie);
    if (!header)
        return fail<ZBFlashMoviePlan>(error, tr("This is not a Flash movie, or its header is damaged."));
    if (header->frameCount == 0)
        return fail<ZBFlashMoviePlan>(error, tr("The movie has no frames."));
    // The tag walk notices a movie cut short or damaged inside.
    const QByteArray plain = ZBSwfHeader::uncompressedMovie(movie);
    QString reason;
    const std::optional<ZBSwfTagReader::Movie> tags = ZBSwfTagReader::read(plain, &reason);
    if (!tags)
        return fail<ZBFlashMoviePlan>(error, tr("The movie is damaged: %1").arg(reason));

    ZBFlashMoviePlan plan;
    plan.header = *header;
    std::optional<QByteArray> root;
    if (header->isAS3)
    {
        if (as3Host.isEmpty())
            return fail<ZBFlashMoviePlan>(error, tr("The host movie for ActionScript 3 movies is missing."));
        plan.kind = Kind::Hosted;
        // The host shows its content at its own next frame; it runs fast
        // until then, and takes on the content's rate once it has loaded it.
        ZBSwfHeader::Info stage = *header;
        stage.frameRate = std::max(stage.frameRate, HostStartRate);
        root = restage(as3Host, stage, backgroundOf(plain, *tags), &reason);
        plan.flashvars.insert(QStringLiteral("nvkPrefix"), QString::fromLatin1(prefix));
        plan.flashvars.insert(QStringLiteral("nvkContent"), QString::fromUtf8(contentUrl));
    }
    else if (header->version >= ZBFrameControlInjector::MinimumVersion)
    {
        plan.kind = Kind::Injected;
        root = ZBFrameControlInjector::inject(movie, prefix, &reason);
    }
    else
    {
        plan.kind = Kind::Wrapped;
        root = ZBFrameControlWrapper::wrap(movie, contentUrl, prefix, &reason);
    }
    if (!root)
        return fail<ZBFlashMoviePlan>(error, reason);
    plan.rootMovie = *root;
    return plan;
}

std::optional<QByteArray> ZBFlashMoviePlan::restage(QByteArrayView hostMovie, const ZBSwfHeader::Info &stage,
                                                    QByteArrayView background, QString *error)
{
    const std::optional<ZBSwfHeader::Info> host = ZBSwfHeader::readHeader(hostMovie);
    if (!host)
        return fail<QByteArray>(error, tr("The host movie is damaged."));
    const QByteArray plain = ZBSwfHeader::uncompressedMovie(hostMovie);
    QString reason;
    const std::optional<ZBSwfTagReader::Movie> tags = ZBSwfTagReader::read(plain, &reason);
    if (!tags)
        return fail<QByteArray>(error, tr("The host movie is damaged: %1").arg(reason));
    if (background.size() != 3)
        return fail<QByteArray>(error, tr("A background colour takes three bytes."));

    QByteArray body = ZBSwfBuilder::rect(stage.xMin, stage.xMax, stage.yMin, stage.yMax);
    ZBSwfBuilder::appendLE16(body, quint16(std::lround(std::clamp(stage.frameRate, 0.0, 255.0) * 256.0)));
    ZBSwfBuilder::appendLE16(body, host->frameCount);
    bool backgroundWritten = false;
    for (const ZBSwfTagReader::Tag &tag : tags->tags)
    {
        if (tag.code == ZBSwfTagReader::SetBackgroundColorTag)
        {
            if (!backgroundWritten)
                ZBSwfBuilder::appendTag(body, tag.code, background);
            backgroundWritten = true;
            continue;
        }
        // FileAttributes must stay the first tag; the colour goes right after.
        if (!backgroundWritten && tag.code != ZBSwfTagReader::FileAttributesTag)
        {
            ZBSwfBuilder::appendTag(body, ZBSwfTagReader::SetBackgroundColorTag, background);
            backgroundWritten = true;
        }
        body.append(plain.constData() + tag.offset, tag.size);
    }
    std::optional<QByteArray> out = ZBSwfCompressor::assemble(ZBSwfHeader::Compression::None, host->version, body);
    if (!out)
        return fail<QByteArray>(error, tr("The host movie could not be rebuilt."));
    return out;
}

QByteArray ZBFlashMoviePlan::backgroundColor(QByteArrayView movie)
{
    const QByteArray plain = ZBSwfHeader::uncompressedMovie(movie);
    const std::optional<ZBSwfTagReader::Movie> tags = ZBSwfTagReader::read(plain);
    return tags ? backgroundOf(plain, *tags) : QByteArray();
}
