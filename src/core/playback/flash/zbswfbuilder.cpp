#include "playback/flash/zbswfbuilder.h"

namespace ZBSwfBuilder
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

void appendTag(QByteArray &out, int code, QByteArrayView body)
{
    if (body.size() < 0x3f)
    {
        appendLE16(out, quint16(code << 6 | int(body.size())));
    }
    else
    {
        appendLE16(out, quint16(code << 6 | 0x3f));
        appendLE32(out, quint32(body.size()));
    }
    out.append(body.data(), body.size());
}

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
} // namespace ZBSwfBuilder
