#include "playback/flash/zbframecontrolwrapper.h"

#include <cmath>

#include <QCoreApplication>

#include "playback/flash/zbframecontrolscript.h"
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

void appendLE16(QByteArray &out, quint16 value)
{
    out.append(char(value & 0xff));
    out.append(char(value >> 8));
}

void appendTag(QByteArray &out, int code, QByteArrayView body)
{
    if (body.size() < 0x3f)
    {
        appendLE16(out, quint16(code << 6 | int(body.size())));
    }
    else
    {
        appendLE16(out, quint16(code << 6 | 0x3f));
        const quint32 length = quint32(body.size());
        for (int shift = 0; shift < 32; shift += 8)
            out.append(char((length >> shift) & 0xff));
    }
    out.append(body.data(), body.size());
}

// The stage RECT, its fields as wide as the widest value needs.
QByteArray rect(qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax)
{
    int nbits = 1;
    for (const qint64 value : {qint64(xMin), qint64(xMax), qint64(yMin), qint64(yMax)})
    {
        while (nbits < 32 && (value < -(qint64(1) << (nbits - 1)) || value >= (qint64(1) << (nbits - 1))))
            ++nbits;
    }
    QByteArray out;
    int used = 0;
    const auto write = [&out, &used](quint32 value, int count)
    {
        for (int i = count - 1; i >= 0; --i)
        {
            if (used == 0)
                out.append('\0');
            if ((value >> i) & 1)
                out.back() = char(quint8(out.back()) | (0x80 >> used));
            used = (used + 1) % 8;
        }
    };
    write(quint32(nbits), 5);
    for (const qint32 value : {xMin, xMax, yMin, yMax})
        write(quint32(value), nbits);
    return out;
}
} // namespace

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
        return fail(error, tr("Only movies of versions 5 to 7 are wrapped."));

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
