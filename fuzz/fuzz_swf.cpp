// Feeds arbitrary bytes to the Flash movie readers and the projector trailer
// parser, and checks what must hold for every input: nothing reads past the
// buffer or allocates without bound, the two header readers agree, a movie
// uncompressed and read again tells the same, and an extracted movie is the
// bytes the trailer points at.

#include <QByteArray>
#include <QByteArrayView>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "playback/zbprojector.h"
#include "playback/zbswfheader.h"

namespace
{
// Far below the readers' own cap: a zlib bomb should cost milliseconds here.
constexpr qsizetype MovieCap = 1024 * 1024;

void check(bool condition, const char *what)
{
    if (!condition)
    {
        fprintf(stderr, "fuzz_swf: property violated: %s\n", what);
        abort();
    }
}

bool sameHeader(const ZBSwfHeader::Info &a, const ZBSwfHeader::Info &b)
{
    return a.xMin == b.xMin && a.xMax == b.xMax && a.yMin == b.yMin && a.yMax == b.yMax
           && a.frameRate == b.frameRate && a.frameCount == b.frameCount && a.hasFileAttributes == b.hasFileAttributes
           && a.isAS3 == b.isAS3;
}

quint32 storedLength(const QByteArray &movie)
{
    const auto *p = reinterpret_cast<const quint8 *>(movie.constData());
    return quint32(p[4]) | quint32(p[5]) << 8 | quint32(p[6]) << 16 | quint32(p[7]) << 24;
}

void fuzzHeader(QByteArrayView bytes)
{
    const std::optional<ZBSwfHeader::Info> header = ZBSwfHeader::readHeader(bytes);
    const quint16 frames = ZBSwfHeader::frameCount(bytes);
    if (header)
    {
        check(header->signature == bytes.first(3), "the signature is the file's");
        check(frames == header->frameCount, "both readers find the same frame count");
        check(header->frameRate >= 0.0 && header->frameRate < 256.0, "the rate is 8.8 fixed point");
        check(!header->isAS3 || header->hasFileAttributes, "only FileAttributes says AS3");
    }

    const QByteArray movie = ZBSwfHeader::uncompressedMovie(bytes, MovieCap);
    if (movie.isEmpty())
        return;
    check(movie.size() > 8 && movie.size() <= MovieCap, "an uncompressed movie is bounded");
    check(movie.startsWith("FWS"), "an uncompressed movie says so");
    check(storedLength(movie) == quint32(movie.size()), "an uncompressed movie states its own length");
    check(movie[3] == bytes[3], "the version is kept");
    const std::optional<ZBSwfHeader::Info> again = ZBSwfHeader::readHeader(movie);
    // Once the readers' whole window is there, the movie must read the same.
    if (movie.size() >= 8 + 64)
        check(bool(again) == bool(header), "an uncompressed movie reads like the original");
    if (again && header)
        check(sameHeader(*again, *header), "an uncompressed movie tells the same");
}

void fuzzTrailer(QByteArrayView bytes)
{
    for (const ZBProjector::Trailer kind : {ZBProjector::Trailer::Windows, ZBProjector::Trailer::Mac})
    {
        const QByteArray movie = ZBProjector::extractMovie(bytes, kind);
        if (bytes.size() < ZBProjector::TrailerSize)
        {
            check(movie.isEmpty(), "no trailer, no movie");
            continue;
        }
        const auto range = ZBProjector::locateMovie(bytes.last(ZBProjector::TrailerSize), bytes.size(), kind);
        check(bool(range) == !movie.isEmpty(), "a located movie is extracted");
        if (!range)
            continue;
        check(range->offset > 0 && range->length > 0
                  && range->offset + range->length == bytes.size() - ZBProjector::TrailerSize,
              "the movie ends at the trailer, after something");
        check(movie == bytes.sliced(range->offset, range->length), "the movie is the bytes before the trailer");
        fuzzHeader(movie);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // libFuzzer's own buffer is exactly `size` bytes, so ASan sees any read
    // past the end (a QByteArray copy would add a terminating zero).
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    fuzzHeader(bytes);
    fuzzTrailer(bytes);
    return 0;
}
