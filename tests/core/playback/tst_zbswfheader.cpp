#include <QTemporaryDir>
#include <QTest>

#include "playback/zbswfheader.h"
#include "support/flashmovies.h"
#include "support/swfwriter.h"

using nvktest::SwfWriter;
using Compression = SwfWriter::Compression;

Q_DECLARE_METATYPE(SwfWriter::Compression)

namespace
{
quint32 storedLength(const QByteArray &movie)
{
    const auto *p = reinterpret_cast<const quint8 *>(movie.constData());
    return quint32(p[4]) | quint32(p[5]) << 8 | quint32(p[6]) << 16 | quint32(p[7]) << 24;
}

QByteArray withSignature(QByteArray movie, const char *signature)
{
    movie.replace(0, 3, signature);
    return movie;
}

void addCompressionRows()
{
    QTest::addColumn<Compression>("compression");
    QTest::newRow("FWS") << Compression::None;
    QTest::newRow("CWS") << Compression::Zlib;
    QTest::newRow("ZWS") << Compression::Lzma;
}
} // namespace

// The Flash movie header: frame count for the library, stage size, rate and
// ActionScript generation for the Flash engine, and what damaged or forged
// movies do to the readers.
class TestZBSwfHeader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void headerFields_data();
    void headerFields();
    void rectWidthDecidesWhereTheCountIs();
    void longFormFileAttributesTag();
    void attributesOtherThanFileAttributesFirst();
    void lenientSignatureForFrameCount();
    void framesCountedFromFile_data();
    void framesCountedFromFile();
    void uncompressedMovieRoundTrips_data();
    void uncompressedMovieRoundTrips();
    void headerReadsFromTheProbePrefix_data();
    void headerReadsFromTheProbePrefix();

    void truncatedAtEveryLength_data();
    void truncatedAtEveryLength();
    void rectBitsPastTheEnd();
    void forgedFileLength();
    void garbageCompressedBodies();
    void forgedLzmaDictionary();
    void attributesPastTheStatedLengthDoNotCount();
};

void TestZBSwfHeader::headerFields_data()
{
    QTest::addColumn<Compression>("compression");
    QTest::addColumn<int>("version");
    QTest::addColumn<QList<int>>("rect");
    QTest::addColumn<int>("rectBits");
    QTest::addColumn<double>("rate");
    QTest::addColumn<int>("frames");
    QTest::addColumn<bool>("as3");

    const struct
    {
        const char *name;
        Compression compression;
    } kinds[] = {{"FWS", Compression::None}, {"CWS", Compression::Zlib}, {"ZWS", Compression::Lzma}};
    for (const auto &kind : kinds)
    {
        const auto row =
            [&](const char *name, int version, QList<int> rect, int bits, double rate, int frames, bool as3)
        {
            QTest::addRow("%s %s", kind.name, name)
                << kind.compression << version << rect << bits << rate << frames << as3;
        };
        row("v6 550x400 12fps", 6, {0, 11000, 0, 8000}, 0, 12.0, 3, false);
        row("v8 AS2 29.97", 8, {0, 6400, 0, 4800}, 0, 29.96875, 10, false);
        row("v10 AS3", 10, {0, 20, 0, 20}, 0, 60.0, 1, true);
        row("nbits 15, origin off zero", 9, {-200, 12000, 40, 9000}, 15, 0.5, 7, true);
        row("nbits 31, extreme rect", 9, {-1073741824, 1073741823, -5, 5}, 31, 255.99609375, 65535, false);
        row("empty stage, no frames", 7, {0, 0, 0, 0}, 0, 0.0, 0, false);
    }
}

void TestZBSwfHeader::headerFields()
{
    QFETCH(Compression, compression);
    QFETCH(int, version);
    QFETCH(QList<int>, rect);
    QFETCH(int, rectBits);
    QFETCH(double, rate);
    QFETCH(int, frames);
    QFETCH(bool, as3);

    SwfWriter writer;
    writer.setVersion(version).setFrameRect(rect[0], rect[1], rect[2], rect[3]).setRectBits(rectBits);
    writer.setFrameRate(rate).setFileAttributes(version >= 8, as3);
    // Tens of thousands of ShowFrame tags are pointless; the count is stated.
    if (frames > 100)
        writer.addFrames(2).overrideFrameCount(quint16(frames));
    else
        writer.addFrames(frames);
    const QByteArray movie = writer.build(compression);

    const std::optional<ZBSwfHeader::Info> info = ZBSwfHeader::readHeader(movie);
    QVERIFY(info);
    QCOMPARE(info->signature, movie.left(3));
    if (compression == Compression::None)
        QCOMPARE(qsizetype(storedLength(movie)), movie.size());
    QCOMPARE(info->version, version);
    QCOMPARE(info->fileLength, storedLength(movie));
    QCOMPARE(info->xMin, rect[0]);
    QCOMPARE(info->xMax, rect[1]);
    QCOMPARE(info->yMin, rect[2]);
    QCOMPARE(info->yMax, rect[3]);
    QCOMPARE(info->width(), (double(rect[1]) - rect[0]) / 20.0);
    QCOMPARE(info->height(), (double(rect[3]) - rect[2]) / 20.0);
    QCOMPARE(info->frameRate, rate);
    QCOMPARE(int(info->frameCount), frames);
    QCOMPARE(info->hasFileAttributes, version >= 8);
    QCOMPARE(info->isAS3, as3);
    QCOMPARE(int(ZBSwfHeader::frameCount(movie)), frames);
}

void TestZBSwfHeader::rectWidthDecidesWhereTheCountIs()
{
    // Nbits 15: 5 + 60 = 65 bits, so 9 bytes of RECT; the count sits at
    // 8 + 9 + 2 = 19, low byte first.
    const QByteArray movie = SwfWriter().setVersion(6).setRectBits(15).addFrames(2).overrideFrameCount(0x1234).build();
    QCOMPARE(quint8(movie[8]) >> 3, 15);
    QCOMPARE(quint8(movie[19]), quint8(0x34));
    QCOMPARE(quint8(movie[20]), quint8(0x12));
    QCOMPARE(ZBSwfHeader::frameCount(movie), quint16(0x1234));

    // Nbits 0: the RECT is one byte and the count follows at 8 + 1 + 2.
    const QByteArray empty = SwfWriter().setFrameRect(0, 0, 0, 0).overrideFrameCount(0x0102).build();
    QCOMPARE(quint8(empty[8]), quint8(0));
    QCOMPARE(quint8(empty[11]), quint8(0x02));
    QCOMPARE(ZBSwfHeader::frameCount(empty), quint16(0x0102));
}

void TestZBSwfHeader::longFormFileAttributesTag()
{
    // Some tools write every tag with the 32-bit length form.
    QByteArray body = SwfWriter::rect(0, 2000, 0, 2000, 12);
    body += QByteArray::fromHex("0018"); // 24 fps
    body += QByteArray::fromHex("0100");
    body += SwfWriter::tag(SwfWriter::FileAttributesTag, QByteArray::fromHex("09000000"), true);
    body += SwfWriter::tag(SwfWriter::ShowFrameTag, {}) + SwfWriter::tag(0, {});
    QByteArray movie = QByteArray("FWS") + char(10);
    const quint32 length = quint32(8 + body.size());
    for (int shift = 0; shift < 32; shift += 8)
        movie.append(char(length >> shift));
    movie += body;

    const auto info = ZBSwfHeader::readHeader(movie);
    QVERIFY(info);
    QVERIFY(info->hasFileAttributes);
    QVERIFY(info->isAS3);
    QCOMPARE(info->frameRate, 24.0);
    QCOMPARE(info->width(), 100.0);
}

void TestZBSwfHeader::attributesOtherThanFileAttributesFirst()
{
    // A version 6 movie whose first tag happens to carry the AS3 bit in its
    // first body byte is still no AS3 movie: only FileAttributes says so.
    const QByteArray movie = SwfWriter().setVersion(6).addTag(SwfWriter::DoActionTag, "\x08\x00").showFrame().build();
    const auto info = ZBSwfHeader::readHeader(movie);
    QVERIFY(info);
    QVERIFY(!info->hasFileAttributes);
    QVERIFY(!info->isAS3);
}

void TestZBSwfHeader::lenientSignatureForFrameCount()
{
    // The library's length reader has always taken any signature but FWS
    // for a deflated movie; the header reader insists on a real one.
    const QByteArray deflated = SwfWriter().setVersion(7).addFrames(5).build(Compression::Zlib);
    const QByteArray odd = withSignature(deflated, "XYZ");
    QCOMPARE(ZBSwfHeader::frameCount(odd), quint16(5));
    QVERIFY(!ZBSwfHeader::readHeader(odd));
    QVERIFY(ZBSwfHeader::uncompressedMovie(odd).isEmpty());

    // An uncompressed body under another signature is not zlib data.
    const QByteArray plain = withSignature(SwfWriter().addFrames(5).build(), "fws");
    QCOMPARE(ZBSwfHeader::frameCount(plain), quint16(0));
}

void TestZBSwfHeader::framesCountedFromFile_data()
{
    addCompressionRows();
}

void TestZBSwfHeader::framesCountedFromFile()
{
    QFETCH(Compression, compression);
    QTemporaryDir dir;
    // Enough frames for the file to exceed what the reader looks at.
    SwfWriter writer;
    writer.setVersion(9);
    for (int i = 0; i < 300; ++i)
        writer.addTag(SwfWriter::DoActionTag, QByteArray(300, char('a' + i % 26))).showFrame();
    const QByteArray movie = writer.build(compression);
    QVERIFY(movie.size() > 0);
    QFile file(dir.filePath("movie.swf"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(movie);
    file.close();
    QCOMPARE(ZBSwfHeader::getSWFLength(file.fileName()), quint16(300));
    QCOMPARE(ZBSwfHeader::getSWFLength(dir.filePath("missing.swf")), quint16(0));
    QCOMPARE(ZBSwfHeader::getSWFLength(dir.path()), quint16(0));
}

void TestZBSwfHeader::uncompressedMovieRoundTrips_data()
{
    QTest::addColumn<Compression>("compression");
    QTest::addColumn<bool>("endMarker");
    QTest::newRow("FWS") << Compression::None << false;
    QTest::newRow("CWS") << Compression::Zlib << false;
    QTest::newRow("ZWS without end marker") << Compression::Lzma << false;
    QTest::newRow("ZWS with end marker") << Compression::Lzma << true;
}

void TestZBSwfHeader::uncompressedMovieRoundTrips()
{
    QFETCH(Compression, compression);
    QFETCH(bool, endMarker);
    SwfWriter writer;
    writer.setVersion(10).setStageSize(320, 240).setBackgroundColor(1, 2, 3).setLzmaEndMarker(endMarker);
    for (int i = 0; i < 50; ++i)
        writer.addTag(SwfWriter::DoActionTag, QByteArray(i * 7, char(i))).showFrame();
    const QByteArray plain = writer.build(Compression::None);
    const QByteArray packed = writer.build(compression);
    if (compression != Compression::None)
        QVERIFY(packed.size() < plain.size());
    QCOMPARE(ZBSwfHeader::uncompressedMovie(packed), plain);

    if (compression == Compression::None)
        return;
    const QByteArray cut = ZBSwfHeader::uncompressedMovie(packed, 1000);
    QCOMPARE(cut.size(), 1000);
    QCOMPARE(storedLength(cut), 1000u);
    QCOMPARE(cut.mid(8), plain.mid(8, 992));
}

void TestZBSwfHeader::truncatedAtEveryLength_data()
{
    addCompressionRows();
}

void TestZBSwfHeader::truncatedAtEveryLength()
{
    QFETCH(Compression, compression);
    const QByteArray movie =
        SwfWriter().setVersion(9).setRectBits(20).setFileAttributes(true, true).addFrames(4).build(compression);
    const QByteArray plainBody =
        SwfWriter().setVersion(9).setRectBits(20).setFileAttributes(true, true).addFrames(4).build().mid(8);
    const auto full = ZBSwfHeader::readHeader(movie);
    QVERIFY(full);
    // RECT of 5 + 80 bits = 11 bytes, then rate and count.
    const qsizetype plainHeaderEnd = 8 + 11 + 4;
    int readable = 0;
    for (qsizetype length = 0; length < movie.size(); ++length)
    {
        // A copy of exactly `length` bytes, so a read past it is a read past
        // an allocation.
        const QByteArray cut = movie.left(length);
        const auto info = ZBSwfHeader::readHeader(cut);
        const quint16 frames = ZBSwfHeader::frameCount(cut);
        const QByteArray uncompressed = ZBSwfHeader::uncompressedMovie(cut);
        if (compression == Compression::None)
            QCOMPARE(bool(info), length >= plainHeaderEnd);
        if (!info)
        {
            QCOMPARE(frames, quint16(0));
            continue;
        }
        ++readable;
        // What a cut movie tells must agree with the whole one.
        QCOMPARE(info->frameCount, full->frameCount);
        QCOMPARE(info->xMax, full->xMax);
        QCOMPARE(info->frameRate, full->frameRate);
        QVERIFY(!info->isAS3 || info->hasFileAttributes);
        QCOMPARE(frames, full->frameCount);
        QVERIFY(uncompressed.size() <= qsizetype(full->fileLength));
        QVERIFY(plainBody.startsWith(uncompressed.mid(8)));
    }
    QVERIFY(readable > 0);
}

void TestZBSwfHeader::rectBitsPastTheEnd()
{
    // Nbits 31 needs 17 RECT bytes; only 3 follow the header.
    QByteArray movie = QByteArray::fromHex("465753 0a 14000000 f8ffff");
    QVERIFY(!ZBSwfHeader::readHeader(movie));
    QCOMPARE(ZBSwfHeader::frameCount(movie), quint16(0));

    // RECT complete, rate and count missing.
    movie = QByteArray("FWS\x0a\x14\x00\x00\x00", 8) + SwfWriter::rect(0, 100, 0, 100, 31) + "\x00";
    QVERIFY(!ZBSwfHeader::readHeader(movie));
    QCOMPARE(ZBSwfHeader::frameCount(movie), quint16(0));
}

void TestZBSwfHeader::forgedFileLength()
{
    SwfWriter writer;
    writer.addFrames(3);
    for (const Compression compression : {Compression::Zlib, Compression::Lzma})
    {
        QByteArray movie = writer.build(compression);
        movie.replace(4, 4, QByteArray(4, char(0xff)));
        const auto info = ZBSwfHeader::readHeader(movie);
        QVERIFY(info);
        QCOMPARE(info->fileLength, 0xFFFFFFFFu);
        QCOMPARE(info->frameCount, quint16(3));
        // The real body, not four gigabytes.
        QCOMPARE(ZBSwfHeader::uncompressedMovie(movie).mid(8), writer.build().mid(8));

        // A length shorter than the header cannot bound anything.
        movie.replace(4, 4, QByteArray(4, '\0'));
        QCOMPARE(ZBSwfHeader::uncompressedMovie(movie).mid(8), writer.build().mid(8));
    }
}

void TestZBSwfHeader::garbageCompressedBodies()
{
    QByteArray noise;
    quint32 state = 12345;
    for (int i = 0; i < 4096; ++i)
    {
        state = state * 1103515245u + 12345u;
        noise.append(char(state >> 24));
    }
    for (const char *signature : {"CWS", "ZWS"})
    {
        const QByteArray movie = QByteArray(signature) + QByteArray::fromHex("0a00100000") + noise;
        QVERIFY2(!ZBSwfHeader::readHeader(movie), signature);
        QCOMPARE(ZBSwfHeader::frameCount(movie), quint16(0));
        QVERIFY(ZBSwfHeader::uncompressedMovie(movie).isEmpty());
    }
    // LZMA properties out of range (lc/lp/pb byte above 224).
    QByteArray lzma = SwfWriter().addFrames(2).build(Compression::Lzma);
    lzma[12] = char(0xff);
    QVERIFY(!ZBSwfHeader::readHeader(lzma));
    QCOMPARE(ZBSwfHeader::frameCount(lzma), quint16(0));
    // A deflated body damaged in its second half still gives the header and
    // what came before the damage.
    SwfWriter big;
    for (int i = 0; i < 40; ++i)
        big.addTag(SwfWriter::DoActionTag, noise.mid(i * 100, 100)).showFrame();
    QByteArray deflated = big.build(Compression::Zlib);
    for (qsizetype i = deflated.size() / 2; i < deflated.size(); ++i)
        deflated[i] = char(0x5a);
    QCOMPARE(ZBSwfHeader::frameCount(deflated), quint16(40));
    const QByteArray salvaged = ZBSwfHeader::uncompressedMovie(deflated);
    QVERIFY(salvaged.size() > 1000);
    QCOMPARE(salvaged.mid(8, 1000), big.build().mid(8, 1000));
    QVERIFY(salvaged.size() <= big.build().size());
}

void TestZBSwfHeader::forgedLzmaDictionary()
{
    // A 4 GiB dictionary stated for a movie of a few dozen bytes must not
    // make the reader ask for 4 GiB.
    QByteArray movie = SwfWriter().addFrames(6).build(Compression::Lzma);
    movie.replace(13, 4, QByteArray(4, char(0xff)));
    const auto info = ZBSwfHeader::readHeader(movie);
    QVERIFY(info);
    QCOMPARE(info->frameCount, quint16(6));
    QCOMPARE(ZBSwfHeader::uncompressedMovie(movie), SwfWriter().addFrames(6).build());
}

void TestZBSwfHeader::attributesPastTheStatedLengthDoNotCount()
{
    // Found by fuzzing: a compressed movie stating 22 bytes whose stream goes
    // on into an AS3 FileAttributes tag. What lies past the stated length is
    // not the movie; reading it must agree with the uncompressed copy, which
    // stops there.
    const QByteArray movie =
        QByteArray::fromBase64("Q1dTCRYAAAB42qtgYI1nYOBfwMAkwcLgIsjBwMDgzH7//39GJAYHBjSEfv7/U5f5qA==");
    const std::optional<ZBSwfHeader::Info> header = ZBSwfHeader::readHeader(movie);
    QVERIFY(header);
    QCOMPARE(header->fileLength, quint32(22));
    QVERIFY(!header->hasFileAttributes);
    const QByteArray plain = ZBSwfHeader::uncompressedMovie(movie);
    QCOMPARE(plain.size(), 22);
    const std::optional<ZBSwfHeader::Info> again = ZBSwfHeader::readHeader(plain);
    QVERIFY(again);
    QCOMPARE(again->hasFileAttributes, header->hasFileAttributes);
    QCOMPARE(again->frameCount, header->frameCount);
}

void TestZBSwfHeader::headerReadsFromTheProbePrefix_data()
{
    addCompressionRows();
}

// Callers decide whether a file is a movie from its first bytes only. A
// movie with many shapes compresses into a first block whose code tables
// alone outgrow a small prefix.
void TestZBSwfHeader::headerReadsFromTheProbePrefix()
{
    QFETCH(Compression, compression);
    nvktest::CounterMovieOptions options;
    options.frameCount = 300;
    options.version = 6;
    options.compression = compression;
    const QByteArray movie = nvktest::makeCounterMovie(options);
    const auto header =
        ZBSwfHeader::readHeader(QByteArrayView(movie).first(std::min(movie.size(), ZBSwfHeader::HeaderProbeSize)));
    QVERIFY(header);
    QCOMPARE(header->frameCount, 300);
    QCOMPARE(header->version, 6);
}

QTEST_GUILESS_MAIN(TestZBSwfHeader)
#include "tst_zbswfheader.moc"
