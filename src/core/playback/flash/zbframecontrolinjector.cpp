#include "playback/flash/zbframecontrolinjector.h"

#include <QCoreApplication>

#include "playback/flash/zbframecontrolscript.h"
#include "playback/flash/zbswfcompressor.h"
#include "playback/flash/zbswftagreader.h"
#include "playback/zbswfheader.h"

namespace
{
constexpr quint8 ActionScript3Flag = 0x08;
// DoABC as Flash 9 wrote it, and the later form with flags and a name.
constexpr int DoAbcDefineTag = 72;
constexpr int DoAbcTag = 82;

std::optional<QByteArray> fail(QString *error, const QString &reason)
{
    if (error)
        *error = reason;
    return std::nullopt;
}

QString tr(const char *text)
{
    return QCoreApplication::translate("ZBFrameControlInjector", text);
}

QByteArray tagRecord(int code, QByteArrayView body)
{
    QByteArray out;
    // The long form whenever the length does not fit the short one's 6 bits.
    const bool longForm = body.size() >= 0x3f;
    const quint16 codeAndLength = quint16(code << 6 | (longForm ? 0x3f : int(body.size())));
    out.append(char(codeAndLength & 0xff));
    out.append(char(codeAndLength >> 8));
    if (longForm)
    {
        const quint32 length = quint32(body.size());
        for (int shift = 0; shift < 32; shift += 8)
            out.append(char((length >> shift) & 0xff));
    }
    out.append(body.data(), body.size());
    return out;
}
} // namespace

std::optional<QByteArray> ZBFrameControlInjector::inject(QByteArrayView movie, QByteArrayView prefix, QString *error)
{
    if (!ZBFrameControlScript::isValidPrefix(prefix))
        return fail(error, tr("The callback prefix may hold only letters, digits, '_' and '$'."));

    const std::optional<ZBSwfHeader::Info> header = ZBSwfHeader::readHeader(movie);
    if (!header)
        return fail(error, tr("Not a Flash movie, or its header is damaged."));
    if (header->isAS3)
        return fail(error, tr("ActionScript 3 movies ignore DoAction code."));
    if (header->version < MinimumVersion)
        return fail(error, tr("Movies before version 8 have no ExternalInterface."));

    const QByteArray plain = ZBSwfHeader::uncompressedMovie(movie);
    QString reason;
    const std::optional<ZBSwfTagReader::Movie> tags = ZBSwfTagReader::read(plain, &reason);
    if (!tags)
        return fail(error, reason);

    qsizetype insertAt = -1;
    for (const ZBSwfTagReader::Tag &tag : tags->tags)
    {
        // The header reader only looks at the first tag; ActionScript 3 code
        // or an AS3 FileAttributes anywhere else still means DoAction would
        // be ignored.
        const bool as3Attributes = tag.code == ZBSwfTagReader::FileAttributesTag && tag.bodyLength >= 1 &&
                                   (quint8(plain[tag.bodyOffset]) & ActionScript3Flag) != 0;
        if (as3Attributes || tag.code == DoAbcTag || tag.code == DoAbcDefineTag)
            return fail(error, tr("ActionScript 3 movies ignore DoAction code."));
        if (tag.code == ZBSwfTagReader::ShowFrameTag && insertAt < 0)
            insertAt = tag.offset;
    }
    if (insertAt < 0)
        return fail(error, tr("The movie's main timeline has no frame."));

    const QByteArray code = ZBFrameControlScript::forRoot(prefix);
    if (code.isEmpty())
        return fail(error, tr("The frame-control code could not be built."));

    // Bytes after End are not part of the movie (a download may carry more)
    // and are left out.
    QByteArray body;
    body.reserve(tags->end - 8 + code.size() + 6);
    body.append(plain.constData() + 8, insertAt - 8);
    body.append(tagRecord(ZBSwfTagReader::DoActionTag, code));
    body.append(plain.constData() + insertAt, tags->end - insertAt);
    if (8 + body.size() > ZBSwfHeader::MaxMovieSize)
        return fail(error, tr("The movie would grow past the largest size read."));

    std::optional<QByteArray> out = ZBSwfCompressor::assemble(header->compression, header->version, body);
    if (!out)
        return fail(error, tr("The movie could not be compressed again."));
    return out;
}
