#include "support/swfwriter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <lzma.h>
#include <stdexcept>
#include <string>
#include <zlib.h>

namespace nvktest
{
namespace
{
void appendLE16(QByteArray &out, quint16 value)
{
    out.append(char(value & 0xff));
    out.append(char(value >> 8));
}

void appendLE32(QByteArray &out, quint32 value)
{
    for (int shift = 0; shift < 32; shift += 8)
        out.append(char((value >> shift) & 0xff));
}

void appendBE32(QByteArray &out, quint32 value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        out.append(char((value >> shift) & 0xff));
}

class BitWriter
{
public:
    void write(quint32 value, int count)
    {
        for (int i = count - 1; i >= 0; --i)
        {
            if (m_used == 0)
                m_bytes.append('\0');
            if ((value >> i) & 1)
                m_bytes.back() = char(quint8(m_bytes.back()) | (0x80 >> m_used));
            m_used = (m_used + 1) % 8;
        }
    }
    QByteArray bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
    int m_used = 0;
};

[[noreturn]] void unwritable(const std::string &what)
{
    throw std::invalid_argument("SwfWriter: " + what);
}

// An edge record's length field is 4 bits and counts from 2, so a delta gets
// at most 17 bits.
constexpr qint32 MaxEdgeDelta = (1 << 16) - 1;

void straightEdge(BitWriter &bits, qint32 dx, qint32 dy)
{
    const int nbits = std::max(2, SwfWriter::bitsFor(dx, dy, 0, 0));
    bits.write(1, 1); // an edge
    bits.write(1, 1); // a straight one
    bits.write(quint32(nbits - 2), 4);
    if (dx != 0 && dy != 0)
    {
        bits.write(1, 1);
        bits.write(quint32(dx), nbits);
        bits.write(quint32(dy), nbits);
        return;
    }
    // Lines along an axis store the one delta that is not zero.
    bits.write(0, 1);
    bits.write(dx == 0 ? 1 : 0, 1);
    bits.write(quint32(dx == 0 ? dy : dx), nbits);
}

// One side of a rectangle, in as many edges as its length needs.
void straightSide(BitWriter &bits, qint32 dx, qint32 dy)
{
    while (dx != 0 || dy != 0)
    {
        const qint32 stepX = std::clamp(dx, -MaxEdgeDelta, MaxEdgeDelta);
        const qint32 stepY = std::clamp(dy, -MaxEdgeDelta, MaxEdgeDelta);
        straightEdge(bits, stepX, stepY);
        dx -= stepX;
        dy -= stepY;
    }
}

// A MATRIX with a translation only.
QByteArray translateMatrix(qint32 translateX, qint32 translateY)
{
    const int nbits = SwfWriter::bitsFor(translateX, translateY, 0, 0);
    if (nbits > 31)
        unwritable("translation out of range");
    BitWriter bits;
    bits.write(0, 1); // no scale
    bits.write(0, 1); // no rotation
    bits.write(quint32(nbits), 5);
    bits.write(quint32(translateX), nbits);
    bits.write(quint32(translateY), nbits);
    return bits.bytes();
}

QByteArray placeObject(quint16 depth, std::optional<quint16> characterId, std::optional<QPoint> translate, bool move)
{
    QByteArray out;
    out.append(char((move ? 0x01 : 0) | (characterId ? 0x02 : 0) | (translate ? 0x04 : 0)));
    appendLE16(out, depth);
    if (characterId)
        appendLE16(out, *characterId);
    if (translate)
        out += translateMatrix(translate->x(), translate->y());
    return out;
}

QByteArray deflateBody(const QByteArray &body)
{
    uLongf size = compressBound(uLong(body.size()));
    QByteArray out(qsizetype(size), Qt::Uninitialized);
    if (compress2(reinterpret_cast<Bytef *>(out.data()), &size, reinterpret_cast<const Bytef *>(body.constData()),
                  uLong(body.size()), Z_BEST_COMPRESSION) != Z_OK)
        throw std::runtime_error("deflate failed");
    out.truncate(qsizetype(size));
    return out;
}

// Raw LZMA1 with its 5 property bytes in front.
QByteArray lzmaBody(const QByteArray &body, bool endMarker)
{
    lzma_options_lzma options;
    if (lzma_lzma_preset(&options, 6))
        throw std::runtime_error("no LZMA preset");
    options.ext_flags = endMarker ? LZMA_LZMA1EXT_ALLOW_EOPM : 0;
    lzma_set_ext_size(options, quint64(body.size()));
    const lzma_filter filters[2] = {{LZMA_FILTER_LZMA1EXT, &options}, {LZMA_VLI_UNKNOWN, nullptr}};

    lzma_filter propertyFilter = {LZMA_FILTER_LZMA1, &options};
    uint8_t properties[5];
    if (lzma_properties_encode(&propertyFilter, properties) != LZMA_OK)
        throw std::runtime_error("LZMA properties");

    lzma_stream stream = LZMA_STREAM_INIT;
    if (lzma_raw_encoder(&stream, filters) != LZMA_OK)
        throw std::runtime_error("LZMA encoder");
    QByteArray out(body.size() + body.size() / 2 + 1024, Qt::Uninitialized);
    stream.next_in = reinterpret_cast<const uint8_t *>(body.constData());
    stream.avail_in = size_t(body.size());
    stream.next_out = reinterpret_cast<uint8_t *>(out.data());
    stream.avail_out = size_t(out.size());
    const lzma_ret result = lzma_code(&stream, LZMA_FINISH);
    const qsizetype written = out.size() - qsizetype(stream.avail_out);
    lzma_end(&stream);
    if (result != LZMA_STREAM_END)
        throw std::runtime_error("LZMA encoding");
    out.truncate(written);
    return QByteArray(reinterpret_cast<const char *>(properties), 5) + out;
}
} // namespace

SwfWriter::SwfWriter() = default;

SwfWriter &SwfWriter::setVersion(int version)
{
    m_version = version;
    return *this;
}

SwfWriter &SwfWriter::setFrameRect(qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax)
{
    m_xMin = xMin;
    m_xMax = xMax;
    m_yMin = yMin;
    m_yMax = yMax;
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
    m_background[0] = red;
    m_background[1] = green;
    m_background[2] = blue;
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
    m_tags.append(tag(code, body));
    return *this;
}

SwfWriter &SwfWriter::showFrame()
{
    m_tags.append(tag(ShowFrameTag, {}));
    ++m_frames;
    return *this;
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
    QByteArray out;
    if (body.size() < 0x3f && !forceLong)
    {
        appendLE16(out, quint16(code << 6 | int(body.size())));
    }
    else
    {
        appendLE16(out, quint16(code << 6 | 0x3f));
        appendLE32(out, quint32(body.size()));
    }
    out.append(body.data(), body.size());
    return out;
}

int SwfWriter::bitsFor(qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax)
{
    int bits = 0;
    for (const qint64 value : {qint64(xMin), qint64(xMax), qint64(yMin), qint64(yMax)})
    {
        int needed = 1;
        while (needed < 32 && (value < -(qint64(1) << (needed - 1)) || value >= (qint64(1) << (needed - 1))))
            ++needed;
        if (value != 0)
            bits = std::max(bits, needed);
    }
    return bits;
}

QByteArray SwfWriter::rect(qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax, int nbits)
{
    BitWriter bits;
    bits.write(quint32(nbits), 5);
    for (const qint32 value : {xMin, xMax, yMin, yMax})
        bits.write(quint32(value) & (nbits == 32 ? 0xffffffffu : ((1u << nbits) - 1)), nbits);
    return bits.bytes();
}

QByteArray SwfWriter::body() const
{
    const int nbits = std::max(m_rectBits, bitsFor(m_xMin, m_xMax, m_yMin, m_yMax));
    QByteArray out = rect(m_xMin, m_xMax, m_yMin, m_yMax, nbits);
    appendLE16(out, m_rate);
    appendLE16(out, m_frameCount.value_or(quint16(m_frames)));
    if (m_fileAttributes.value_or(m_version >= 8))
    {
        // UseNetwork (bit 0) is what authoring tools set by default.
        QByteArray flags(4, '\0');
        flags[0] = char((m_actionScript3 ? 0x08 : 0) | 0x01);
        out += tag(FileAttributesTag, flags);
    }
    if (m_backgroundTag)
        out += tag(SetBackgroundColorTag, QByteArrayView(reinterpret_cast<const char *>(m_background), 3));
    for (const QByteArray &t : m_tags)
        out += t;
    out += tag(0, {});
    return out;
}

QByteArray SwfWriter::build(Compression compression) const
{
    const QByteArray content = body();
    QByteArray out;
    out.append(compression == Compression::None ? "FWS" : compression == Compression::Zlib ? "CWS" : "ZWS", 3);
    out.append(char(m_version));
    appendLE32(out, quint32(8 + content.size()));
    switch (compression)
    {
        case Compression::None:
            out += content;
            break;
        case Compression::Zlib:
            out += deflateBody(content);
            break;
        case Compression::Lzma:
        {
            const QByteArray packed = lzmaBody(content, m_lzmaEndMarker);
            // The stored length counts the LZMA data after the properties.
            appendLE32(out, quint32(packed.size() - 5));
            out += packed;
            break;
        }
    }
    return out;
}

QByteArray SwfWriter::rectangleShape(quint16 id, qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax, quint8 red,
                                     quint8 green, quint8 blue)
{
    if (xMax <= xMin || yMax <= yMin)
        unwritable("a rectangle shape needs a width and a height");
    const qint64 width = qint64(xMax) - xMin;
    const qint64 height = qint64(yMax) - yMin;
    const int moveBits = bitsFor(xMin, yMin, 0, 0);
    const int boundsBits = bitsFor(xMin, xMax, yMin, yMax);
    // Both length fields are 5 bits wide.
    if (moveBits > 31 || boundsBits > 31 || width > std::numeric_limits<qint32>::max() ||
        height > std::numeric_limits<qint32>::max())
        unwritable("rectangle out of range");

    QByteArray out;
    appendLE16(out, id);
    out += rect(xMin, xMax, yMin, yMax, boundsBits);
    out.append(char(1));    // fill styles
    out.append(char(0x00)); // solid
    out.append(char(red));
    out.append(char(green));
    out.append(char(blue));
    out.append(char(0)); // line styles

    BitWriter bits;
    bits.write(1, 4); // fill style indices need one bit: 0 (none) or 1
    bits.write(0, 4); // no line style to index
    // Style change: move to the corner and pick fill style 1, which fills to
    // the right of the edges; going clockwise on screen that is the inside.
    bits.write(0, 1);
    bits.write(0b00101, 5); // new styles, line style, fill 1, fill 0, move to
    bits.write(quint32(moveBits), 5);
    bits.write(quint32(xMin), moveBits);
    bits.write(quint32(yMin), moveBits);
    bits.write(1, 1);
    straightSide(bits, qint32(width), 0);
    straightSide(bits, 0, qint32(height));
    straightSide(bits, qint32(-width), 0);
    straightSide(bits, 0, qint32(-height));
    bits.write(0, 6); // end of shape
    out += bits.bytes();
    return out;
}

QByteArray SwfWriter::placeObject2(quint16 depth, quint16 characterId, qint32 translateX, qint32 translateY)
{
    return placeObject(depth, characterId, QPoint(translateX, translateY), false);
}

QByteArray SwfWriter::moveObject2(quint16 depth, qint32 translateX, qint32 translateY)
{
    return placeObject(depth, std::nullopt, QPoint(translateX, translateY), true);
}

QByteArray SwfWriter::replaceObject2(quint16 depth, quint16 characterId, std::optional<QPoint> translate)
{
    return placeObject(depth, characterId, translate, true);
}

QByteArray SwfWriter::actionStop()
{
    return QByteArray(1, char(0x07));
}

QByteArray SwfWriter::actionFsCommand(QByteArrayView command, QByteArrayView arguments)
{
    const QByteArray url = "FSCommand:" + command.toByteArray();
    const QByteArrayView target = arguments;
    if (url.contains('\0') || target.contains('\0'))
        unwritable("a zero byte would end the string early");
    const qsizetype length = url.size() + 1 + target.size() + 1;
    if (length > 0xffff)
        unwritable("GetURL strings too long");
    QByteArray out(1, char(0x83));
    appendLE16(out, quint16(length));
    out.append(url.data(), url.size());
    out.append('\0');
    out.append(target.data(), target.size());
    out.append('\0');
    return out;
}

QByteArray SwfWriter::doAction(const QByteArray &actions)
{
    QByteArray out = actions;
    out.append('\0');
    return out;
}

QByteArray windowsProjector(QByteArrayView player, QByteArrayView movie)
{
    QByteArray out = player.toByteArray() + movie.toByteArray();
    appendLE32(out, 0xFA123456u);
    appendLE32(out, quint32(movie.size()));
    return out;
}

QByteArray macProjector(QByteArrayView player, QByteArrayView movie)
{
    QByteArray out = player.toByteArray() + movie.toByteArray();
    appendBE32(out, quint32(movie.size()));
    appendBE32(out, 0xFA123456u);
    return out;
}
} // namespace nvktest
