#include "support/swfwriter.h"

#include <cmath>
#include <lzma.h>
#include <stdexcept>
#include <zlib.h>

#include <QtEndian>

namespace nvktest
{
namespace
{
QByteArray le16(quint16 value)
{
    return QByteArray(1, char(value)) + char(value >> 8);
}

QByteArray le32(quint32 value)
{
    return le16(quint16(value)) + le16(quint16(value >> 16));
}

class BitWriter
{
public:
    void write(quint32 value, int count)
    {
        for (int i = count - 1; i >= 0; --i, m_used = (m_used + 1) % 8)
        {
            if (m_used == 0)
                bytes.append('\0');
            if ((value >> i) & 1)
                bytes.back() = char(quint8(bytes.back()) | (0x80 >> m_used));
        }
    }
    QByteArray bytes;

private:
    int m_used = 0;
};

// The fewest bits that hold every value as a signed field.
int bitsFor(std::initializer_list<qint32> values)
{
    int bits = 0;
    for (const qint64 value : values)
    {
        int needed = 1;
        while (needed < 32 && (value < -(qint64(1) << (needed - 1)) || value >= (qint64(1) << (needed - 1))))
            ++needed;
        if (value != 0)
            bits = std::max(bits, needed);
    }
    return bits;
}

// Raw LZMA1 with its 5 property bytes in front.
QByteArray lzmaBody(const QByteArray &body, bool endMarker)
{
    lzma_options_lzma options;
    lzma_lzma_preset(&options, 6);
    options.ext_flags = endMarker ? LZMA_LZMA1EXT_ALLOW_EOPM : 0;
    lzma_set_ext_size(options, quint64(body.size()));
    const lzma_filter filters[2] = {{LZMA_FILTER_LZMA1EXT, &options}, {LZMA_VLI_UNKNOWN, nullptr}};
    lzma_filter propertyFilter = {LZMA_FILTER_LZMA1, &options};
    QByteArray out(body.size() + body.size() / 2 + 1024, Qt::Uninitialized);
    lzma_properties_encode(&propertyFilter, reinterpret_cast<uint8_t *>(out.data()));
    lzma_stream stream = LZMA_STREAM_INIT;
    if (lzma_raw_encoder(&stream, filters) != LZMA_OK)
        throw std::runtime_error("no LZMA encoder");
    stream.next_in = reinterpret_cast<const uint8_t *>(body.constData());
    stream.avail_in = size_t(body.size());
    stream.next_out = reinterpret_cast<uint8_t *>(out.data()) + 5;
    stream.avail_out = size_t(out.size() - 5);
    if (lzma_code(&stream, LZMA_FINISH) != LZMA_STREAM_END)
        throw std::runtime_error("LZMA encoding failed");
    out.truncate(out.size() - qsizetype(stream.avail_out));
    lzma_end(&stream);
    return out;
}
} // namespace

SwfWriter &SwfWriter::setVersion(int version)
{
    m_version = version;
    return *this;
}

SwfWriter &SwfWriter::setFrameRect(qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax)
{
    m_rect[0] = xMin;
    m_rect[1] = xMax;
    m_rect[2] = yMin;
    m_rect[3] = yMax;
    return *this;
}

SwfWriter &SwfWriter::setStageSize(int widthPixels, int heightPixels)
{
    return setFrameRect(0, widthPixels * 20, 0, heightPixels * 20);
}

SwfWriter &SwfWriter::setRectBits(int nbits)
{
    m_rectBits = nbits;
    return *this;
}

SwfWriter &SwfWriter::setFrameRate(double rate)
{
    m_rate = quint16(std::lround(rate * 256.0));
    return *this;
}

SwfWriter &SwfWriter::setBackgroundColor(quint8 red, quint8 green, quint8 blue)
{
    m_background = QByteArray(1, char(red)) + char(green) + char(blue);
    return *this;
}

SwfWriter &SwfWriter::setBackgroundColorTag(bool present)
{
    m_backgroundTag = present;
    return *this;
}

SwfWriter &SwfWriter::setFileAttributes(bool present, bool actionScript3)
{
    m_fileAttributes = present;
    m_actionScript3 = actionScript3;
    return *this;
}

SwfWriter &SwfWriter::addTag(int code, QByteArrayView body)
{
    m_tags += tag(code, body);
    return *this;
}

SwfWriter &SwfWriter::showFrame()
{
    ++m_frames;
    return addTag(ShowFrameTag, {});
}

SwfWriter &SwfWriter::addFrames(int count)
{
    for (int i = 0; i < count; ++i)
        showFrame();
    return *this;
}

SwfWriter &SwfWriter::overrideFrameCount(quint16 count)
{
    m_frameCount = count;
    return *this;
}

SwfWriter &SwfWriter::setLzmaEndMarker(bool present)
{
    m_lzmaEndMarker = present;
    return *this;
}

QByteArray SwfWriter::tag(int code, QByteArrayView body, bool forceLong)
{
    const bool longForm = body.size() >= 0x3f || forceLong;
    const QByteArray header = le16(quint16(code << 6 | (longForm ? 0x3f : int(body.size()))));
    return header + (longForm ? le32(quint32(body.size())) : QByteArray()) + body.toByteArray();
}

QByteArray SwfWriter::rect(qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax, int nbits)
{
    BitWriter bits;
    bits.write(quint32(nbits), 5);
    for (const qint32 value : {xMin, xMax, yMin, yMax})
        bits.write(quint32(value), nbits);
    return bits.bytes;
}

QByteArray SwfWriter::build(Compression compression) const
{
    const int nbits = std::max(m_rectBits, bitsFor({m_rect[0], m_rect[1], m_rect[2], m_rect[3]}));
    QByteArray body = rect(m_rect[0], m_rect[1], m_rect[2], m_rect[3], nbits) + le16(m_rate) +
                      le16(m_frameCount.value_or(quint16(m_frames)));
    // UseNetwork (bit 0) is what authoring tools set by default.
    if (m_fileAttributes.value_or(m_version >= 8))
        body += tag(FileAttributesTag, le32(m_actionScript3 ? 0x09 : 0x01));
    if (m_backgroundTag)
        body += tag(SetBackgroundColorTag, m_background);
    body += m_tags + tag(0, {});

    const char *signature = compression == Compression::None ? "FWS" : compression == Compression::Zlib ? "CWS" : "ZWS";
    const QByteArray header = QByteArray(signature) + char(m_version) + le32(quint32(8 + body.size()));
    if (compression == Compression::None)
        return header + body;
    if (compression == Compression::Zlib)
    {
        uLongf size = compressBound(uLong(body.size()));
        QByteArray out(qsizetype(size), Qt::Uninitialized);
        compress2(reinterpret_cast<Bytef *>(out.data()), &size, reinterpret_cast<const Bytef *>(body.constData()),
                  uLong(body.size()), Z_BEST_COMPRESSION);
        return header + out.first(qsizetype(size));
    }
    // The stored length counts the LZMA data after the properties.
    const QByteArray packed = lzmaBody(body, m_lzmaEndMarker);
    return header + le32(quint32(packed.size() - 5)) + packed;
}

QByteArray SwfWriter::rectangleShape(quint16 id, qint32 width, qint32 height, quint8 red, quint8 green, quint8 blue)
{
    BitWriter bits;
    bits.write(1, 4); // fill style indices need one bit: 0 (none) or 1
    bits.write(0, 4); // no line style to index
    // Select fill style 1, which fills to the right of the edges: clockwise
    // on screen, that is the inside.
    bits.write(0b000100, 6);
    bits.write(1, 1);
    // Edges along an axis: straight, with the one delta that is not zero.
    for (const auto &[dx, dy] : {std::pair{width, 0}, {0, height}, {-width, 0}, {0, -height}})
    {
        const int nbits = std::max(2, bitsFor({dx, dy}));
        bits.write(0b11, 2);
        bits.write(quint32(nbits - 2), 4);
        bits.write(dx == 0 ? 0b01 : 0b00, 2);
        bits.write(quint32(dx == 0 ? dy : dx), nbits);
    }
    bits.write(0, 6); // end of shape
    // Character id, bounds, one solid fill style, no line styles.
    return le16(id) + rect(0, width, 0, height, bitsFor({width, height})) + '\1' + '\0' + char(red) + char(green) +
           char(blue) + '\0' + bits.bytes;
}

QByteArray SwfWriter::placeObject2(quint16 depth, std::optional<quint16> characterId, std::optional<QPoint> translate,
                                   bool move)
{
    QByteArray out(1, char((move ? 0x01 : 0) | (characterId ? 0x02 : 0) | (translate ? 0x04 : 0)));
    out += le16(depth) + (characterId ? le16(*characterId) : QByteArray());
    if (!translate)
        return out;
    // A MATRIX without scale or rotation.
    const int nbits = bitsFor({translate->x(), translate->y()});
    BitWriter bits;
    bits.write(quint32(nbits), 7);
    bits.write(quint32(translate->x()), nbits);
    bits.write(quint32(translate->y()), nbits);
    return out + bits.bytes;
}

QByteArray SwfWriter::doAction(QByteArrayView fsCommand, QByteArrayView fsCommandArguments, bool stop)
{
    QByteArray out;
    if (!fsCommand.isEmpty())
    {
        const QByteArray strings =
            "FSCommand:" + fsCommand.toByteArray() + '\0' + fsCommandArguments.toByteArray() + '\0';
        out += '\x83' + le16(quint16(strings.size())) + strings;
    }
    return out + (stop ? "\x07" : "") + '\0';
}

QByteArray windowsProjector(QByteArrayView player, QByteArrayView movie)
{
    return player.toByteArray() + movie.toByteArray() + le32(0xFA123456u) + le32(quint32(movie.size()));
}

QByteArray macProjector(QByteArrayView player, QByteArrayView movie)
{
    return player.toByteArray() + movie.toByteArray() + le32(qbswap(quint32(movie.size()))) + le32(qbswap(0xFA123456u));
}
} // namespace nvktest
