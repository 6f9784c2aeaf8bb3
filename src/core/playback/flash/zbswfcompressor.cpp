#include "playback/flash/zbswfcompressor.h"

#include <algorithm>
#include <limits>
#include <lzma.h>
#include <zlib.h>

namespace
{
void appendLE32(QByteArray &out, quint32 value)
{
    for (int shift = 0; shift < 32; shift += 8)
        out.append(char((value >> shift) & 0xff));
}
} // namespace

std::optional<QByteArray> ZBSwfCompressor::deflated(QByteArrayView body)
{
    if (quint64(body.size()) > std::numeric_limits<uLong>::max())
        return std::nullopt;
    uLongf size = compressBound(uLong(body.size()));
    QByteArray out(qsizetype(size), Qt::Uninitialized);
    if (compress2(reinterpret_cast<Bytef *>(out.data()), &size, reinterpret_cast<const Bytef *>(body.data()),
                  uLong(body.size()), Z_BEST_COMPRESSION) != Z_OK)
        return std::nullopt;
    out.truncate(qsizetype(size));
    return out;
}

std::optional<QByteArray> ZBSwfCompressor::lzma(QByteArrayView body)
{
    lzma_options_lzma options;
    if (lzma_lzma_preset(&options, 6))
        return std::nullopt;
    // Flash readers stop at the stated length and may not expect an end
    // marker, so the encoder is told the size and writes none.
    options.ext_flags = 0;
    // A dictionary larger than the body buys nothing and the encoder's
    // memory grows with it (about 90 MiB at the preset's 8 MiB).
    options.dict_size = quint32(std::clamp<qsizetype>(body.size(), LZMA_DICT_SIZE_MIN, options.dict_size));
    lzma_set_ext_size(options, quint64(body.size()));
    const lzma_filter filters[2] = {{LZMA_FILTER_LZMA1EXT, &options}, {LZMA_VLI_UNKNOWN, nullptr}};

    lzma_filter propertyFilter = {LZMA_FILTER_LZMA1, &options};
    uint8_t properties[5];
    if (lzma_properties_encode(&propertyFilter, properties) != LZMA_OK)
        return std::nullopt;

    lzma_stream stream = LZMA_STREAM_INIT;
    if (lzma_raw_encoder(&stream, filters) != LZMA_OK)
        return std::nullopt;
    QByteArray out(5, Qt::Uninitialized);
    std::copy(properties, properties + 5, out.begin());
    out.resize(5 + body.size() + body.size() / 2 + 1024);
    stream.next_in = reinterpret_cast<const uint8_t *>(body.data());
    stream.avail_in = size_t(body.size());
    lzma_ret result = LZMA_OK;
    qsizetype produced = 5;
    while (result == LZMA_OK)
    {
        if (produced == out.size())
            out.resize(out.size() * 2);
        stream.next_out = reinterpret_cast<uint8_t *>(out.data() + produced);
        stream.avail_out = size_t(out.size() - produced);
        const size_t before = stream.avail_out;
        result = lzma_code(&stream, LZMA_FINISH);
        produced += qsizetype(before - stream.avail_out);
    }
    lzma_end(&stream);
    if (result != LZMA_STREAM_END)
        return std::nullopt;
    out.truncate(produced);
    return out;
}

std::optional<QByteArray> ZBSwfCompressor::assemble(ZBSwfHeader::Compression compression, int version,
                                                    QByteArrayView body)
{
    if (version < 0 || version > 255 || quint64(body.size()) + 8 > std::numeric_limits<quint32>::max())
        return std::nullopt;
    QByteArray out;
    switch (compression)
    {
        case ZBSwfHeader::Compression::None:
            out = "FWS";
            break;
        case ZBSwfHeader::Compression::Zlib:
            out = "CWS";
            break;
        case ZBSwfHeader::Compression::Lzma:
            out = "ZWS";
            break;
    }
    out.append(char(version));
    appendLE32(out, quint32(8 + body.size()));

    switch (compression)
    {
        case ZBSwfHeader::Compression::None:
            out.append(body.data(), body.size());
            return out;
        case ZBSwfHeader::Compression::Zlib:
        {
            const std::optional<QByteArray> packed = deflated(body);
            if (!packed)
                return std::nullopt;
            return out + *packed;
        }
        case ZBSwfHeader::Compression::Lzma:
        {
            const std::optional<QByteArray> packed = lzma(body);
            if (!packed)
                return std::nullopt;
            // The stored length counts the stream after the property bytes.
            appendLE32(out, quint32(packed->size() - 5));
            return out + *packed;
        }
    }
    return std::nullopt;
}
