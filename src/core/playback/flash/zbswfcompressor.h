#pragma once

#include <optional>

#include <QByteArray>
#include <QByteArrayView>

#include "playback/zbswfheader.h"

// Puts a Flash movie back together from its uncompressed body (everything
// after the 8-byte header): the signature that names the compression, the
// version, the uncompressed file length, then the body stored as that
// compression asks: as it is ("FWS"), zlib-deflated ("CWS"), or as LZMA the
// way Flash stores it ("ZWS": the compressed length, the 5 LZMA property bytes
// and a raw LZMA stream without end marker, its end known from the file
// length).
class ZBSwfCompressor
{
public:
    // Nothing when the compressor fails or the body is too large for the
    // format's 32-bit lengths.
    static std::optional<QByteArray> assemble(ZBSwfHeader::Compression compression, int version, QByteArrayView body);

private:
    static std::optional<QByteArray> deflated(QByteArrayView body);
    // The 5 property bytes, then the raw stream.
    static std::optional<QByteArray> lzma(QByteArrayView body);
};
