// Feeds arbitrary bytes to the Flash frame-control rewriters and checks what
// must hold for every input: nothing reads past the buffer or crashes, and a
// movie that comes back reads as the same movie with one DoAction more, just
// before its first top-level ShowFrame, in the same compression. The bytes
// are tried both as a whole file and as the tag stream of a fixed version 8
// header, so the fuzzer reaches the tag walk without forging a header first.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <QByteArray>
#include <QByteArrayView>

#include "playback/flash/zbframecontrolinjector.h"
#include "playback/flash/zbframecontrolwrapper.h"
#include "playback/flash/zbswftagreader.h"
#include "playback/zbswfheader.h"

namespace
{
// Far below the readers' own cap: a zlib bomb should cost milliseconds here.
constexpr qsizetype MovieCap = 256 * 1024;
constexpr QByteArrayView Prefix = "__nvk_";

void check(bool condition, const char *what)
{
    if (!condition)
    {
        fprintf(stderr, "fuzz_framecontrol: property violated: %s\n", what);
        abort();
    }
}

quint32 storedLength(QByteArrayView movie)
{
    const auto *p = reinterpret_cast<const quint8 *>(movie.data());
    return quint32(p[4]) | quint32(p[5]) << 8 | quint32(p[6]) << 16 | quint32(p[7]) << 24;
}

qsizetype firstShowFrame(const ZBSwfTagReader::Movie &movie)
{
    for (qsizetype i = 0; i < movie.tags.size(); ++i)
    {
        if (movie.tags[i].code == ZBSwfTagReader::ShowFrameTag)
            return i;
    }
    return -1;
}

void fuzzInjector(QByteArrayView bytes)
{
    // Inputs that uncompress past the cap are only worth the walk, not the
    // recompression.
    const QByteArray plain = ZBSwfHeader::uncompressedMovie(bytes, MovieCap + 1);
    if (plain.size() > MovieCap)
        return;

    QString error;
    const std::optional<QByteArray> out = ZBFrameControlInjector::inject(bytes, Prefix, &error);
    if (!out)
    {
        check(!error.isEmpty(), "a refusal says why");
        return;
    }
    const std::optional<ZBSwfHeader::Info> before = ZBSwfHeader::readHeader(bytes);
    const std::optional<ZBSwfHeader::Info> after = ZBSwfHeader::readHeader(*out);
    check(before && after, "an injected movie has a header");
    check(after->signature == before->signature, "the compression is kept");
    check(after->version == before->version && after->version >= 8, "the version is kept");
    check(after->xMin == before->xMin && after->xMax == before->xMax && after->yMin == before->yMin &&
              after->yMax == before->yMax,
          "the stage is kept");
    check(after->frameRate == before->frameRate && after->frameCount == before->frameCount, "rate and count kept");
    check(!after->isAS3, "only ActionScript 1/2 movies are injected");

    const QByteArray again = ZBSwfHeader::uncompressedMovie(*out);
    check(storedLength(again) == after->fileLength, "the stated length is the real one");

    const auto original = ZBSwfTagReader::read(plain);
    const auto injected = ZBSwfTagReader::read(again);
    check(original && injected, "both movies walk");
    check(injected->tags.size() == original->tags.size() + 1, "exactly one tag is added");
    const qsizetype at = firstShowFrame(*original);
    check(at >= 0, "an injected movie has a frame");
    check(injected->tags[at].code == ZBSwfTagReader::DoActionTag, "the DoAction comes before the first frame");
    check(firstShowFrame(*injected) == at + 1, "and right before it");
    for (qsizetype i = 0; i < original->tags.size(); ++i)
    {
        const ZBSwfTagReader::Tag &a = original->tags[i];
        const ZBSwfTagReader::Tag &b = injected->tags[i < at ? i : i + 1];
        check(QByteArrayView(plain).sliced(a.offset, a.size) == QByteArrayView(again).sliced(b.offset, b.size),
              "every original tag is kept byte for byte");
    }
    check(again.size() == injected->end, "nothing follows End");
}

void fuzzWrapper(QByteArrayView bytes)
{
    const QByteArray plain = ZBSwfHeader::uncompressedMovie(bytes, MovieCap + 1);
    if (plain.size() > MovieCap)
        return;
    QString error;
    const std::optional<QByteArray> out = ZBFrameControlWrapper::wrap(bytes, "nvk://movie", Prefix, &error);
    if (!out)
    {
        check(!error.isEmpty(), "a refusal says why");
        return;
    }
    const std::optional<ZBSwfHeader::Info> before = ZBSwfHeader::readHeader(bytes);
    const std::optional<ZBSwfHeader::Info> after = ZBSwfHeader::readHeader(*out);
    check(before && after, "a wrapper has a header");
    // Every ActionScript 1/2 version before the injector's takes the wrapper:
    // the engine plays versions 1 to 4 through it as well as 5 to 7.
    check(before->version >= ZBFrameControlWrapper::MinimumVersion &&
              before->version <= ZBFrameControlWrapper::MaximumVersion &&
              before->version < ZBFrameControlInjector::MinimumVersion,
          "only versions before the injector's are wrapped");
    check(after->version == 8 && after->frameCount == 1 && after->signature == "FWS", "a one-frame version 8 host");
    check(after->xMin == before->xMin && after->xMax == before->xMax && after->yMin == before->yMin &&
              after->yMax == before->yMax,
          "the stage is the content's");
    check(after->frameRate == before->frameRate, "the rate is the content's");
    check(storedLength(*out) == quint32(out->size()), "the stated length is the real one");
    const auto tags = ZBSwfTagReader::read(*out);
    check(tags && tags->tags.size() == 5 && tags->end == out->size(), "the host's tags walk");
}

// A version 8 header with a 550 x 400 stage, 24 fps and one frame, followed
// by the bytes as its tags.
QByteArray asTagStream(QByteArrayView tags)
{
    QByteArray movie("FWS\x08\0\0\0\0", 8);
    movie += QByteArray::fromHex("7800055f00000fa000"
                                 "0018"
                                 "0100");
    movie.append(tags.data(), tags.size());
    const quint32 length = quint32(movie.size());
    for (int i = 0; i < 4; ++i)
        movie[4 + i] = char((length >> (8 * i)) & 0xff);
    return movie;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // libFuzzer's own buffer is exactly `size` bytes, so ASan sees any read
    // past the end (a QByteArray copy would add a terminating zero).
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    fuzzInjector(bytes);
    fuzzWrapper(bytes);
    if (size < size_t(MovieCap))
        fuzzInjector(asTagStream(bytes));
    return 0;
}
