#include "playback/flash/zbswftagreader.h"

#include <QCoreApplication>

namespace
{
quint32 readLE(QByteArrayView bytes, qsizetype offset, int count)
{
    quint32 value = 0;
    for (int i = count - 1; i >= 0; --i)
        value = value << 8 | quint8(bytes[offset + i]);
    return value;
}

std::optional<ZBSwfTagReader::Movie> fail(QString *error, const QString &reason)
{
    if (error)
        *error = reason;
    return std::nullopt;
}
} // namespace

std::optional<ZBSwfTagReader::Movie> ZBSwfTagReader::read(QByteArrayView bytes, QString *error)
{
    if (bytes.size() < 9 || bytes.first(3) != "FWS")
        return fail(error, QCoreApplication::translate("ZBSwfTagReader", "Not an uncompressed Flash movie."));

    // The stage RECT: 5 bits of field width, then four fields of that width.
    const int nbits = quint8(bytes[8]) >> 3;
    const qsizetype rectSize = (5 + 4 * nbits + 7) / 8;
    Movie movie;
    movie.tagsOffset = 8 + rectSize + 4;

    qsizetype position = movie.tagsOffset;
    for (;;)
    {
        if (position + 2 > bytes.size())
            return fail(error, QCoreApplication::translate("ZBSwfTagReader", "The movie ends before its End tag."));
        Tag tag;
        tag.offset = position;
        const quint32 codeAndLength = readLE(bytes, position, 2);
        tag.code = int(codeAndLength >> 6);
        qsizetype length = codeAndLength & 0x3f;
        position += 2;
        if (length == 0x3f)
        {
            if (position + 4 > bytes.size())
                return fail(error, QCoreApplication::translate("ZBSwfTagReader", "A tag header is cut short."));
            length = qsizetype(readLE(bytes, position, 4));
            position += 4;
        }
        // Compared by subtraction so a forged 4 GiB length cannot overflow.
        if (length > bytes.size() - position)
            return fail(error, QCoreApplication::translate("ZBSwfTagReader",
                                                           "Tag %1 at byte %2 runs past the end of the movie.")
                                   .arg(tag.code)
                                   .arg(tag.offset));
        tag.bodyOffset = position;
        tag.bodyLength = length;
        position += length;
        tag.size = position - tag.offset;
        movie.tags.append(tag);
        if (tag.code == EndTag)
            break;
    }
    movie.end = position;
    return movie;
}
