#pragma once

#include <QByteArray>
#include <QByteArrayView>

// The few pieces of the Flash file format the host writes itself: tag
// records, the stage RECT and little-endian fields. Shared by every movie the
// host builds or rewrites, so the bit packing lives in one place.
namespace ZBSwfBuilder
{
void appendLE16(QByteArray &out, quint16 value);
void appendLE32(QByteArray &out, quint32 value);
// Short form when the body is under 63 bytes, long form otherwise.
void appendTag(QByteArray &out, int code, QByteArrayView body);
// The RECT, its fields as wide as the widest value needs.
QByteArray rect(qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax);
} // namespace ZBSwfBuilder
