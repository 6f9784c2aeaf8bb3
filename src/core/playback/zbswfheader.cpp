#include "playback/zbswfheader.h"

#include <QFile>

#include <lzma.h>
#include <zlib.h>

#include <algorithm>
#include <limits>

namespace
{
// The stage RECT takes at most 17 bytes (5 + 4 x 31 bits), the rate and count
// 4, a long tag header 6 and the FileAttributes flags 1: everything the
// header readers look at lies within the first bytes of the body.
constexpr qsizetype HeaderBodyPrefix = 64;
// Decoding that prefix never needs more than the first bytes of a compressed
// body, so the file readers stop there instead of reading whole movies.
constexpr qint64 FilePrefix = 64 * 1024;
constexpr int FileAttributesTag = 69;
constexpr quint8 ActionScript3Flag = 0x08;

quint32 readLE32(QByteArrayView bytes, qsizetype offset)
{
    const auto *p = reinterpret_cast<const quint8 *>(bytes.data()) + offset;
    return quint32(p[0]) | quint32(p[1]) << 8 | quint32(p[2]) << 16 | quint32(p[3]) << 24;
}

quint16 readLE16(QByteArrayView bytes, qsizetype offset)
{
    const auto *p = reinterpret_cast<const quint8 *>(bytes.data()) + offset;
    return quint16(p[0] | p[1] << 8);
}

// Most significant bit first, as SWF packs its bit fields.
class BitReader
{
public:
    explicit BitReader(QByteArrayView bytes)
        : m_bytes(bytes)
    {
    }

    std::optional<quint32> readUnsigned(int count)
    {
        if (count < 0 || count > 32 || m_position + count > qint64(m_bytes.size()) * 8)
            return std::nullopt;
        quint64 value = 0;
        for (int i = 0; i < count; ++i, ++m_position)
        {
            const quint8 byte = quint8(m_bytes[qsizetype(m_position / 8)]);
            value = value << 1 | ((byte >> (7 - m_position % 8)) & 1);
        }
        return quint32(value);
    }

    std::optional<qint32> readSigned(int count)
    {
        const std::optional<quint32> raw = readUnsigned(count);
        if (!raw || count == 0)
            return raw ? std::optional<qint32>(0) : std::nullopt;
        // Sign-extend in 64 bits: a 32-bit field shifted by 32 would be
        // undefined.
        const qint64 sign = qint64(1) << (count - 1);
        return qint32((qint64(*raw) ^ sign) - sign);
    }

private:
    QByteArrayView m_bytes;
    qint64 m_position = 0;
};

// Bytes taken by a RECT whose fields are `nbits` wide, rounded up to whole
// bytes.
qsizetype rectBytes(int nbits)
{
    return (5 + 4 * nbits + 7) / 8;
}

class LzmaFilterOptions
{
public:
    ~LzmaFilterOptions() { free(m_filters[0].options); }
    lzma_filter *filters() { return m_filters; }

private:
    lzma_filter m_filters[2] = {{LZMA_FILTER_LZMA1, nullptr}, {LZMA_VLI_UNKNOWN, nullptr}};
};
} // namespace

std::optional<ZBSwfHeader::Compression> ZBSwfHeader::compressionOf(QByteArrayView signature, bool lenient)
{
    if (signature == "FWS")
        return Compression::None;
    if (signature == "ZWS")
        return Compression::Lzma;
    if (signature == "CWS" || lenient)
        return Compression::Zlib;
    return std::nullopt;
}

QString ZBSwfHeader::compressionName(Compression compression)
{
    switch (compression)
    {
        case Compression::None:
            return QStringLiteral("none");
        case Compression::Zlib:
            return QStringLiteral("zlib");
        case Compression::Lzma:
            return QStringLiteral("LZMA");
    }
    return QString();
}

QByteArray ZBSwfHeader::inflateZlib(QByteArrayView source, qsizetype limit)
{
    if (limit <= 0 || source.isEmpty())
        return QByteArray();
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return QByteArray();

    // Grow the output as it fills rather than trusting a stated length.
    QByteArray out;
    out.resize(std::min<qsizetype>(limit, std::max<qsizetype>(4096, source.size() * 4)));
    qsizetype produced = 0;
    qsizetype consumed = 0;
    int result = Z_OK;
    while (result == Z_OK && produced < limit)
    {
        if (produced == out.size())
            out.resize(std::min<qsizetype>(limit, out.size() * 2));
        const qsizetype inChunk = std::min<qsizetype>(source.size() - consumed, std::numeric_limits<uInt>::max());
        const qsizetype outChunk = std::min<qsizetype>(out.size() - produced, std::numeric_limits<uInt>::max());
        stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(source.data() + consumed));
        stream.avail_in = uInt(inChunk);
        stream.next_out = reinterpret_cast<Bytef *>(out.data() + produced);
        stream.avail_out = uInt(outChunk);
        result = inflate(&stream, Z_NO_FLUSH);
        consumed += inChunk - stream.avail_in;
        const qsizetype made = outChunk - stream.avail_out;
        produced += made;
        // Out of input with no progress: the body was cut short.
        if (result == Z_BUF_ERROR || (result == Z_OK && made == 0 && consumed == source.size()))
            break;
    }
    inflateEnd(&stream);
    out.truncate(produced);
    return out;
}

QByteArray ZBSwfHeader::decodeLzma(QByteArrayView source, qsizetype limit)
{
    // 5 bytes of LZMA properties, then the raw stream (which may or may not
    // end with an end marker; the header's length says where it stops).
    if (limit <= 0 || source.size() <= 5)
        return QByteArray();
    LzmaFilterOptions options;
    if (lzma_properties_decode(options.filters(), nullptr, reinterpret_cast<const uint8_t *>(source.data()), 5)
        != LZMA_OK)
        return QByteArray();
    // The stated dictionary can be up to 4 GiB, and liblzma allocates it in
    // full. Distances never reach beyond what has been decoded, so a
    // dictionary as large as the output we accept is always enough.
    auto *lzmaOptions = static_cast<lzma_options_lzma *>(options.filters()[0].options);
    lzmaOptions->dict_size = quint32(std::clamp<qsizetype>(limit, LZMA_DICT_SIZE_MIN, lzmaOptions->dict_size));

    lzma_stream stream = LZMA_STREAM_INIT;
    if (lzma_raw_decoder(&stream, options.filters()) != LZMA_OK)
        return QByteArray();

    const QByteArrayView data = source.sliced(5);
    QByteArray out;
    out.resize(std::min<qsizetype>(limit, std::max<qsizetype>(4096, data.size() * 4)));
    stream.next_in = reinterpret_cast<const uint8_t *>(data.data());
    stream.avail_in = size_t(data.size());
    qsizetype produced = 0;
    lzma_ret result = LZMA_OK;
    while (result == LZMA_OK && produced < limit)
    {
        if (produced == out.size())
            out.resize(std::min<qsizetype>(limit, out.size() * 2));
        stream.next_out = reinterpret_cast<uint8_t *>(out.data() + produced);
        stream.avail_out = size_t(out.size() - produced);
        const size_t before = stream.avail_out;
        result = lzma_code(&stream, LZMA_FINISH);
        produced += qsizetype(before - stream.avail_out);
    }
    lzma_end(&stream);
    out.truncate(produced);
    return out;
}

QByteArray ZBSwfHeader::body(QByteArrayView bytes, Compression compression, qsizetype limit)
{
    if (bytes.size() <= 8)
        return QByteArray();
    switch (compression)
    {
        case Compression::None:
            return bytes.sliced(8, std::min(limit, bytes.size() - 8)).toByteArray();
        case Compression::Zlib:
            return inflateZlib(bytes.sliced(8), limit);
        case Compression::Lzma:
            // 4 bytes of compressed length sit before the properties; the
            // length is not needed since every byte present is offered.
            return bytes.size() > 12 ? decodeLzma(bytes.sliced(12), limit) : QByteArray();
    }
    return QByteArray();
}

std::optional<ZBSwfHeader::Info> ZBSwfHeader::readHeader(QByteArrayView bytes)
{
    if (bytes.size() < 8)
        return std::nullopt;
    const std::optional<Compression> compression = compressionOf(bytes.first(3), false);
    if (!compression)
        return std::nullopt;

    Info info;
    info.signature = bytes.first(3).toByteArray();
    info.compression = *compression;
    info.version = quint8(bytes[3]);
    info.fileLength = readLE32(bytes, 4);

    const QByteArray decoded = body(bytes, *compression, HeaderBodyPrefix);
    QByteArrayView rest(decoded);
    if (rest.isEmpty())
        return std::nullopt;

    BitReader bits(rest);
    const std::optional<quint32> nbits = bits.readUnsigned(5);
    if (!nbits)
        return std::nullopt;
    const int width = int(*nbits);
    const auto xMin = bits.readSigned(width);
    const auto xMax = bits.readSigned(width);
    const auto yMin = bits.readSigned(width);
    const auto yMax = bits.readSigned(width);
    if (!xMin || !xMax || !yMin || !yMax)
        return std::nullopt;
    info.xMin = *xMin;
    info.xMax = *xMax;
    info.yMin = *yMin;
    info.yMax = *yMax;

    qsizetype position = rectBytes(width);
    if (position + 4 > rest.size())
        return std::nullopt;
    // 8.8 fixed point, stored low byte (the fraction) first.
    info.frameRate = readLE16(rest, position) / 256.0;
    info.frameCount = readLE16(rest, position + 2);
    position += 4;

    // The first tag, when enough of it is present, may be FileAttributes.
    // A compressed stream may go on past the length the header states, and
    // what follows is not movie: it cannot hold the tag. The same rule as
    // uncompressedMovie(), so both readings of a movie agree.
    if (info.compression != Compression::None && info.fileLength > 8)
        rest = rest.first(std::min(rest.size(), qsizetype(info.fileLength) - 8));
    if (position + 2 <= rest.size())
    {
        const quint16 codeAndLength = readLE16(rest, position);
        qsizetype length = codeAndLength & 0x3f;
        position += 2;
        bool lengthKnown = true;
        if (length == 0x3f)
        {
            lengthKnown = position + 4 <= rest.size();
            length = lengthKnown ? qsizetype(readLE32(rest, position)) : 0;
            position += 4;
        }
        if (lengthKnown && (codeAndLength >> 6) == FileAttributesTag && length >= 1 && position < rest.size())
        {
            info.hasFileAttributes = true;
            info.isAS3 = (quint8(rest[position]) & ActionScript3Flag) != 0;
        }
    }
    return info;
}

quint16 ZBSwfHeader::frameCount(QByteArrayView bytes)
{
    if (bytes.size() < 8)
        return 0;
    const Compression compression = *compressionOf(bytes.first(3), true);
    const QByteArray decoded = body(bytes, compression, HeaderBodyPrefix);
    if (decoded.isEmpty())
        return 0;
    // Only the RECT's width matters here; its fields are skipped unread.
    const qsizetype position = rectBytes(quint8(decoded[0]) >> 3) + 2;
    if (position + 2 > decoded.size())
        return 0;
    return readLE16(decoded, position);
}

quint16 ZBSwfHeader::getSWFLength(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return frameCount(file.read(FilePrefix));
}

QByteArray ZBSwfHeader::uncompressedMovie(QByteArrayView bytes, qsizetype maxSize)
{
    if (bytes.size() <= 8 || maxSize <= 8)
        return QByteArray();
    const std::optional<Compression> compression = compressionOf(bytes.first(3), false);
    if (!compression)
        return QByteArray();

    // The stated length bounds the body (an LZMA stream may carry no end
    // marker, and what follows it is not movie), unless it is implausibly
    // small; MaxMovieSize bounds everything.
    const quint32 stated = readLE32(bytes, 4);
    qsizetype limit = std::min(maxSize, MaxMovieSize) - 8;
    if (*compression != Compression::None && stated > 8)
        limit = std::min<qsizetype>(limit, qsizetype(stated) - 8);
    const QByteArray decoded = body(bytes, *compression, limit);
    if (decoded.isEmpty())
        return QByteArray();

    QByteArray movie;
    movie.reserve(8 + decoded.size());
    const quint32 length = quint32(8 + decoded.size());
    movie.append("FWS", 3);
    movie.append(bytes[3]);
    for (int shift = 0; shift < 32; shift += 8)
        movie.append(char((length >> shift) & 0xff));
    movie.append(decoded);
    return movie;
}
