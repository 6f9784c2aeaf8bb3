#include "engines/zbsnapshotwriter.h"

#include <QBuffer>
#include <QImageWriter>
#include <QSaveFile>

#include <array>

namespace
{
// What the settings' numbers mean to Qt's image writers; GIF is our own.
constexpr std::array<const char *, ZBSnapshotWriter::FormatCount> WriterFormats = {"tiff", "bmp", "gif",
                                                                                   "jpeg", "png", "jp2"};
constexpr std::array<const char *, ZBSnapshotWriter::FormatCount> FormatNames = {"TIFF", "BMP",       "GIF",
                                                                                 "JPEG", "PNG", "JPEG 2000"};
// Compression factor 0.8 of the original player.
constexpr int JpegQuality = 80;
// Qt's TIFF writer: 1 is LZW.
constexpr int TiffLzw = 1;
// Sides of a GIF or JPEG picture are 16-bit numbers.
constexpr int MaximumGifOrJpegSide = 65535;

void appendLittleEndian16(QByteArray &bytes, int value)
{
    bytes.append(char(value & 0xff));
    bytes.append(char((value >> 8) & 0xff));
}

// GIF's variable-length LZW over 8-bit pixel indices, codes packed from the
// low bit up. The dictionary is an open-addressed table keyed by (prefix
// code, next index); it is emptied with a clear code when all 4096 codes are
// taken, so clearing must be cheap.
class GifLzwEncoder
{
public:
    QByteArray encode(const QImage &indexed)
    {
        const int width = indexed.width();
        int prefix = -1;
        put(ClearCode);
        for (int y = 0; y < indexed.height(); ++y)
        {
            const uchar *line = indexed.constScanLine(y);
            for (int x = 0; x < width; ++x)
            {
                const int index = line[x];
                if (prefix < 0)
                {
                    prefix = index;
                    continue;
                }
                const quint32 key = (quint32(prefix) << 8) | quint32(index);
                if (const int code = find(key); code >= 0)
                {
                    prefix = code;
                    continue;
                }
                put(prefix);
                insert(key, ++m_lastCode);
                // The decoder, a step behind, widens its codes at the same point.
                if (m_lastCode >= (1 << m_codeSize))
                    ++m_codeSize;
                if (m_lastCode == MaximumCode)
                {
                    put(ClearCode);
                    reset();
                }
                prefix = index;
            }
        }
        put(prefix);
        put(EndCode);
        if (m_bitCount > 0)
            m_data.append(char(m_bits & 0xff));
        return m_data;
    }

private:
    static constexpr int ClearCode = 256;
    static constexpr int EndCode = 257;
    static constexpr int MaximumCode = 4095;
    static constexpr int TableSize = 8192;
    static constexpr quint32 Empty = 0xffffffffu;

    void put(int code)
    {
        m_bits |= quint32(code) << m_bitCount;
        m_bitCount += m_codeSize;
        while (m_bitCount >= 8)
        {
            m_data.append(char(m_bits & 0xff));
            m_bits >>= 8;
            m_bitCount -= 8;
        }
    }
    static int slot(quint32 key) { return int((key * 2654435761u) >> 19) & (TableSize - 1); }
    int find(quint32 key) const
    {
        for (int i = slot(key);; i = (i + 1) & (TableSize - 1))
        {
            if (m_keys[i] == key)
                return m_codes[i];
            if (m_keys[i] == Empty)
                return -1;
        }
    }
    void insert(quint32 key, int code)
    {
        int i = slot(key);
        while (m_keys[i] != Empty)
            i = (i + 1) & (TableSize - 1);
        m_keys[i] = key;
        m_codes[i] = quint16(code);
    }
    void reset()
    {
        m_keys.fill(Empty);
        m_codeSize = 9;
        m_lastCode = EndCode;
    }

    std::array<quint32, TableSize> m_keys = [] {
        std::array<quint32, TableSize> keys{};
        keys.fill(Empty);
        return keys;
    }();
    std::array<quint16, TableSize> m_codes{};
    int m_codeSize = 9;
    int m_lastCode = EndCode;
    quint32 m_bits = 0;
    int m_bitCount = 0;
    QByteArray m_data;
};
} // namespace

QString ZBSnapshotWriter::errorName()
{
    return QStringLiteral("SaveSnapshotError");
}

QString ZBSnapshotWriter::noRepresentationReason()
{
    return QStringLiteral("cant get representation");
}

QString ZBSnapshotWriter::badRepresentationReason()
{
    return QStringLiteral("bad representation");
}

QString ZBSnapshotWriter::emptyDataReason()
{
    return QStringLiteral("Empty data");
}

QString ZBSnapshotWriter::cantWriteFileReason()
{
    return QStringLiteral("cant write file");
}

QString ZBSnapshotWriter::Result::description() const
{
    if (ok())
        return QString();
    return detail.isEmpty() ? QStringLiteral("%1: %2").arg(error, reason)
                            : QStringLiteral("%1: %2 (%3)").arg(error, reason, detail);
}

bool ZBSnapshotWriter::canWriteFormat(int format)
{
    if (format < 0 || format >= FormatCount)
        return false;
    return format == Gif || QImageWriter::supportedImageFormats().contains(WriterFormats[format]);
}

int ZBSnapshotWriter::effectiveFormat(int format)
{
    if (format < 0 || format >= FormatCount)
        format = Tiff;
    return canWriteFormat(format) ? format : Png;
}

QString ZBSnapshotWriter::formatName(int format)
{
    return format >= 0 && format < FormatCount ? QString::fromLatin1(FormatNames[format]) : QString();
}

int ZBSnapshotWriter::formatForSuffix(const QString &suffix)
{
    const QString lower = suffix.toLower();
    if (lower == u"tif" || lower == u"tiff")
        return Tiff;
    if (lower == u"bmp")
        return Bmp;
    if (lower == u"gif")
        return Gif;
    if (lower == u"jpg" || lower == u"jpeg")
        return Jpeg;
    if (lower == u"png")
        return Png;
    if (lower == u"jp2")
        return Jpeg2000;
    return -1;
}

QByteArray ZBSnapshotWriter::gifData(const QImage &image)
{
    // Qt picks the colours itself: the picture's own when there are at most
    // 256, else a fixed colour cube with error diffusion.
    QImage indexed = image.convertToFormat(QImage::Format_RGB32).convertToFormat(QImage::Format_Indexed8);
    if (indexed.isNull() || indexed.colorCount() == 0)
        return QByteArray();

    QByteArray gif("GIF89a");
    appendLittleEndian16(gif, indexed.width());
    appendLittleEndian16(gif, indexed.height());
    // A global table of 256 colours, 8 bits per primary.
    gif.append(char(0xf7));
    gif.append('\0'); // background colour index
    gif.append('\0'); // square pixels
    const QList<QRgb> colours = indexed.colorTable();
    for (int i = 0; i < 256; ++i)
    {
        const QRgb colour = i < colours.size() ? colours.at(i) : qRgb(0, 0, 0);
        gif.append(char(qRed(colour)));
        gif.append(char(qGreen(colour)));
        gif.append(char(qBlue(colour)));
    }
    gif.append(char(0x2c)); // image descriptor
    appendLittleEndian16(gif, 0);
    appendLittleEndian16(gif, 0);
    appendLittleEndian16(gif, indexed.width());
    appendLittleEndian16(gif, indexed.height());
    gif.append('\0'); // no local table, not interlaced
    gif.append(char(8)); // minimum code size
    const QByteArray codes = GifLzwEncoder().encode(indexed);
    for (qsizetype at = 0; at < codes.size(); at += 255)
    {
        const qsizetype length = std::min<qsizetype>(255, codes.size() - at);
        gif.append(char(length));
        gif.append(codes.constData() + at, length);
    }
    gif.append('\0'); // end of the image's data
    gif.append(char(0x3b)); // trailer
    return gif;
}

QByteArray ZBSnapshotWriter::encode(const QImage &image, int format, QString *reason)
{
    const auto failed = [reason](const QString &why) {
        if (reason)
            *reason = why;
        return QByteArray();
    };
    if (image.isNull())
        return failed(noRepresentationReason());
    format = effectiveFormat(format);
    if ((format == Gif || format == Jpeg)
        && (image.width() > MaximumGifOrJpegSide || image.height() > MaximumGifOrJpegSide))
        return failed(badRepresentationReason());

    // Formats without transparency get an opaque picture; a pixel layout no
    // writer knows is brought to 32 bits first.
    QImage picture = image;
    if (format == Bmp || format == Jpeg || format == Gif)
        picture = image.convertToFormat(QImage::Format_RGB32);
    else if (image.depth() != 32 && image.depth() != 8 && image.depth() != 1)
        picture = image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (picture.isNull())
        return failed(badRepresentationReason());

    QByteArray data;
    if (format == Gif)
    {
        data = gifData(picture);
    }
    else
    {
        QBuffer buffer(&data);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter writer(&buffer, WriterFormats[format]);
        if (format == Jpeg || format == Jpeg2000)
            writer.setQuality(JpegQuality);
        if (format == Tiff)
            writer.setCompression(TiffLzw);
        if (!writer.write(picture))
            data.clear();
    }
    if (data.isEmpty())
        return failed(emptyDataReason());
    return data;
}

ZBSnapshotWriter::Result ZBSnapshotWriter::saveSnapshot(const QImage &image, const QString &path, int format)
{
    Result result;
    result.path = path;
    result.format = effectiveFormat(format);
    const auto failed = [&result](const QString &reason, const QString &detail = QString()) {
        result.error = errorName();
        result.reason = reason;
        result.detail = detail;
        return result;
    };
    QString reason;
    const QByteArray data = encode(image, format, &reason);
    if (data.isEmpty())
        return failed(reason);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return failed(cantWriteFileReason(), file.errorString());
    if (file.write(data) != data.size() || !file.commit())
        return failed(cantWriteFileReason(), file.errorString());
    return result;
}
