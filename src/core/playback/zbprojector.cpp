#include "playback/zbprojector.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include "playback/zbmediatypes.h"

namespace
{
quint32 readWord(QByteArrayView bytes, qsizetype offset, bool bigEndian)
{
    const auto *p = reinterpret_cast<const quint8 *>(bytes.data()) + offset;
    if (bigEndian)
        return quint32(p[0]) << 24 | quint32(p[1]) << 16 | quint32(p[2]) << 8 | quint32(p[3]);
    return quint32(p[0]) | quint32(p[1]) << 8 | quint32(p[2]) << 16 | quint32(p[3]) << 24;
}

// The last 8 bytes of an open file, or nothing when it is shorter.
std::optional<QByteArray> readTrailer(QFile &file)
{
    const qint64 size = file.size();
    if (size < ZBProjector::TrailerSize || !file.seek(size - ZBProjector::TrailerSize))
        return std::nullopt;
    const QByteArray trailer = file.read(ZBProjector::TrailerSize);
    if (trailer.size() != ZBProjector::TrailerSize)
        return std::nullopt;
    return trailer;
}

bool hasMacMagic(QByteArrayView trailer)
{
    return trailer.size() == ZBProjector::TrailerSize && readWord(trailer, 4, true) == ZBProjector::Magic;
}
} // namespace

std::optional<ZBProjector::Range> ZBProjector::locateMovie(QByteArrayView trailer, qint64 fileSize, Trailer kind)
{
    if (trailer.size() != TrailerSize || fileSize < TrailerSize)
        return std::nullopt;
    const bool mac = kind == Trailer::Mac;
    const quint32 magic = readWord(trailer, mac ? 4 : 0, mac);
    if (magic != Magic)
        return std::nullopt;
    const qint64 length = readWord(trailer, mac ? 0 : 4, mac);
    if (length == 0 || length >= fileSize - TrailerSize)
        return std::nullopt;
    return Range{fileSize - TrailerSize - length, length};
}

QByteArray ZBProjector::extractMovie(QByteArrayView fileBytes, Trailer kind)
{
    if (fileBytes.size() < TrailerSize)
        return QByteArray();
    const std::optional<Range> range = locateMovie(fileBytes.last(TrailerSize), fileBytes.size(), kind);
    if (!range)
        return QByteArray();
    return fileBytes.sliced(range->offset, range->length).toByteArray();
}

bool ZBProjector::isApplicationFile(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const std::optional<QByteArray> trailer = readTrailer(file);
    return trailer && hasMacMagic(*trailer);
}

QByteArray ZBProjector::dataWithContentsOfSWF(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return QByteArray();

    const QString type = ZBMediaTypes::getFileType(path);
    if (type.compare(QLatin1String("swf"), Qt::CaseInsensitive) == 0
        || type.compare(QLatin1String("flv"), Qt::CaseInsensitive) == 0)
        return file.readAll();

    // Only the trailer and the movie are read: projectors carry a whole
    // player in front of the movie.
    const std::optional<QByteArray> trailer = readTrailer(file);
    if (!trailer)
        return QByteArray();
    Trailer kind = Trailer::Mac;
    if (type.compare(QLatin1String("'APPL'"), Qt::CaseInsensitive) != 0 && !hasMacMagic(*trailer))
    {
        if (type.compare(QLatin1String("exe"), Qt::CaseInsensitive) != 0)
            return QByteArray();
        kind = Trailer::Windows;
    }
    const std::optional<Range> range = locateMovie(*trailer, file.size(), kind);
    if (!range || !file.seek(range->offset))
        return QByteArray();
    const QByteArray movie = file.read(range->length);
    return movie.size() == range->length ? movie : QByteArray();
}

bool ZBProjector::convertEXE(const QString &source, const QString &destination)
{
    const QByteArray movie = dataWithContentsOfSWF(source);
    if (movie.isEmpty())
        return false;
    QSaveFile out(destination);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    if (out.write(movie) != movie.size())
    {
        out.cancelWriting();
        return false;
    }
    return out.commit();
}
