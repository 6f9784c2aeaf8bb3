#include "playback/flash/zbframecontrolwrapper.h"

#include <cmath>

#include <QCoreApplication>

#include "playback/flash/zbframecontrolscript.h"
#include "playback/flash/zbswfbuilder.h"
#include "playback/flash/zbswfcompressor.h"
#include "playback/flash/zbswftagreader.h"
#include "playback/zbswfheader.h"

namespace
{
std::optional<QByteArray> fail(QString *error, const QString &reason)
{
    if (error)
        *error = reason;
    return std::nullopt;
}

QString tr(const char *text)
{
    return QCoreApplication::translate("ZBFrameControlWrapper", text);
}

} // namespace

using ZBSwfBuilder::appendLE16;
using ZBSwfBuilder::appendTag;
using ZBSwfBuilder::rect;

std::optional<QByteArray> ZBFrameControlWrapper::wrap(QByteArrayView movie, QByteArrayView contentUrl,
                                                      QByteArrayView prefix, QString *error)
{
    if (!ZBFrameControlScript::isValidPrefix(prefix))
        return fail(error, tr("The callback prefix may hold only letters, digits, '_' and '$'."));
    if (contentUrl.isEmpty() || contentUrl.contains('\0'))
        return fail(error, tr("The movie's address is empty or holds a zero byte."));

    const std::optional<ZBSwfHeader::Info> header = ZBSwfHeader::readHeader(movie);
    if (!header)
        return fail(error, tr("Not a Flash movie, or its header is damaged."));
    if (header->isAS3)
        return fail(error, tr("ActionScript 3 movies cannot be loaded by an ActionScript 2 host."));
    if (header->version < MinimumVersion || header->version > MaximumVersion)
        return fail(error, tr("Only movies before version 8 are wrapped."));

    const QByteArray plain = ZBSwfHeader::uncompressedMovie(movie);
    QString reason;
    const std::optional<ZBSwfTagReader::Movie> tags = ZBSwfTagReader::read(plain, &reason);
    if (!tags)
        return fail(error, reason);

    // White, what the Flash Player shows when a movie names no colour.
    QByteArray background("\xff\xff\xff", 3);
    for (const ZBSwfTagReader::Tag &tag : tags->tags)
    {
        if (tag.code == ZBSwfTagReader::SetBackgroundColorTag && tag.bodyLength >= 3)
        {
            background = plain.mid(tag.bodyOffset, 3);
            break;
        }
    }

    const QByteArray code = ZBFrameControlScript::forLoader(prefix, contentUrl);
    if (code.isEmpty())
        return fail(error, tr("The frame-control code could not be built."));

    QByteArray body = rect(header->xMin, header->xMax, header->yMin, header->yMax);
    // The content's rate as it is stored, 8.8 fixed point.
    appendLE16(body, quint16(std::lround(header->frameRate * 256.0)));
    appendLE16(body, 1);
    // UseNetwork: the content comes from the host's URL, not the file system.
    appendTag(body, ZBSwfTagReader::FileAttributesTag, QByteArray("\x01\x00\x00\x00", 4));
    appendTag(body, ZBSwfTagReader::SetBackgroundColorTag, background);
    appendTag(body, ZBSwfTagReader::DoActionTag, code);
    appendTag(body, ZBSwfTagReader::ShowFrameTag, {});
    appendTag(body, ZBSwfTagReader::EndTag, {});

    std::optional<QByteArray> out = ZBSwfCompressor::assemble(ZBSwfHeader::Compression::None, WrapperVersion, body);
    if (!out)
        return fail(error, tr("The host movie could not be built."));
    return out;
}
