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
    void whereActionScript3IsStated();
    void lenientSignatureForFrameCount();
    void framesCountedFromFile_data() { addCompressionRows(); }
    void framesCountedFromFile();
    void uncompressedMovieRoundTrips_data();
    void uncompressedMovieRoundTrips();
    void headerReadsFromTheProbePrefix_data() { addCompressionRows(); }
    void headerReadsFromTheProbePrefix();
    void truncatedAtEveryLength_data() { addCompressionRows(); }
    void truncatedAtEveryLength();
    void forgedLengthsAndGarbage();
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
    const std::pair<const char *, Compression> kinds[] = {
        {"FWS", Compression::None}, {"CWS", Compression::Zlib}, {"ZWS", Compression::Lzma}};
    for (const auto &[kind, compression] : kinds)
    {
        const auto row =
            [&](const char *name, int version, QList<int> rect, int bits, double rate, int frames, bool as3)
        {
            QTest::addRow("%s %s", kind, name) << compression << version << rect << bits << rate << frames << as3;
        };
        row("v6 550x400 12fps", 6, {0, 11000, 0, 8000}, 0, 12.0, 3, false);
        row("v10 AS3", 10, {0, 20, 0, 20}, 0, 60.0, 1, true);
        // Negative corners: signed fields.
        row("nbits 15, origin off zero", 9, {-200, 12000, -40, 9000}, 15, 0.5, 7, true);
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
    // Tens of thousands of ShowFrame tags are pointless; the count is stated.
    writer.setFrameRate(rate).setFileAttributes(version >= 8, as3).addFrames(std::min(frames, 3));
    const QByteArray movie = writer.overrideFrameCount(quint16(frames)).build(compression);

    const std::optional<ZBSwfHeader::Info> info = ZBSwfHeader::readHeader(movie);
    QVERIFY(info);
    QCOMPARE(info->signature, movie.left(3));
    QCOMPARE(info->version, version);
    QCOMPARE(info->fileLength, storedLength(movie));
    QCOMPARE((QList<int>{info->xMin, info->xMax, info->yMin, info->yMax}), rect);
    QCOMPARE(info->width(), (double(rect[1]) - rect[0]) / 20.0);
    QCOMPARE(info->height(), (double(rect[3]) - rect[2]) / 20.0);
    QCOMPARE(info->frameRate, rate);
    QCOMPARE(int(info->frameCount), frames);
    QCOMPARE(info->hasFileAttributes, version >= 8);
    QCOMPARE(info->isAS3, as3);
    QCOMPARE(int(ZBSwfHeader::frameCount(movie)), frames);
}

void TestZBSwfHeader::whereActionScript3IsStated()
{
    // Some tools write every tag with the 32-bit length form.
    const QByteArray body = SwfWriter::rect(0, 2000, 0, 2000, 12) + QByteArray::fromHex("00180100") +
                            SwfWriter::tag(SwfWriter::FileAttributesTag, QByteArray::fromHex("09000000"), true) +
                            SwfWriter::tag(SwfWriter::ShowFrameTag, {}) + SwfWriter::tag(0, {});
    const auto info =
        ZBSwfHeader::readHeader(QByteArray(QByteArray("FWS\x0a", 4) + char(8 + body.size()) + QByteArray(3, 0) + body));
    QVERIFY(info && info->hasFileAttributes && info->isAS3);
    QCOMPARE(info->frameRate, 24.0);
    QCOMPARE(info->width(), 100.0);

    // Only FileAttributes says so: a version 6 movie whose first tag happens
    // to carry the flag in its first byte is no AS3 movie.
    const auto v6 = ZBSwfHeader::readHeader(
        SwfWriter().setVersion(6).addTag(SwfWriter::DoActionTag, "\x08\x00").showFrame().build());
    QVERIFY(v6 && !v6->hasFileAttributes && !v6->isAS3);
}

void TestZBSwfHeader::lenientSignatureForFrameCount()
{
    // The library's length reader has always taken any signature but FWS
    // for a deflated movie; the header reader insists on a real one.
    QByteArray odd = SwfWriter().setVersion(7).addFrames(5).build(Compression::Zlib);
    odd.replace(0, 3, "XYZ");
    QCOMPARE(ZBSwfHeader::frameCount(odd), quint16(5));
    QVERIFY(!ZBSwfHeader::readHeader(odd));
    QVERIFY(ZBSwfHeader::uncompressedMovie(odd).isEmpty());
    // An uncompressed body under another signature is not zlib data.
    QCOMPARE(ZBSwfHeader::frameCount(SwfWriter().addFrames(5).build().replace(0, 3, "fws")), quint16(0));
}

void TestZBSwfHeader::framesCountedFromFile()
{
    QFETCH(Compression, compression);
    QTemporaryDir dir;
    // Enough frames for the file to exceed what the reader looks at.
    SwfWriter writer;
    for (int i = 0; i < 300; ++i)
        writer.addTag(SwfWriter::DoActionTag, QByteArray(300, char('a' + i % 26))).showFrame();
    QFile file(dir.filePath("movie.swf"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(writer.build(compression)) > 0);
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
    writer.setStageSize(320, 240).setBackgroundColor(1, 2, 3).setLzmaEndMarker(endMarker);
    for (int i = 0; i < 50; ++i)
        writer.addTag(SwfWriter::DoActionTag, QByteArray(i * 7, char(i))).showFrame();
    const QByteArray plain = writer.build();
    const QByteArray packed = writer.build(compression);
    QCOMPARE(ZBSwfHeader::uncompressedMovie(packed), plain);
    // A limit cuts the body and states the length it kept.
    const QByteArray cut = ZBSwfHeader::uncompressedMovie(packed, 1000);
    QCOMPARE(storedLength(cut), 1000u);
    QCOMPARE(cut.mid(8), plain.mid(8, cut.size() - 8));
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
}

void TestZBSwfHeader::truncatedAtEveryLength()
{
    QFETCH(Compression, compression);
    SwfWriter writer;
    writer.setVersion(9).setRectBits(20).setFileAttributes(true, true).addFrames(4);
    const QByteArray movie = writer.build(compression);
    const auto full = ZBSwfHeader::readHeader(movie);
    QVERIFY(full);
    int readable = 0;
    for (qsizetype length = 0; length < movie.size(); ++length)
    {
        // A copy of exactly `length` bytes, so a read past it is a read past
        // an allocation.
        const QByteArray cut = movie.left(length);
        const auto info = ZBSwfHeader::readHeader(cut);
        // A RECT of 5 + 80 bits is 11 bytes; the rate and count follow.
        if (compression == Compression::None)
            QCOMPARE(bool(info), length >= 8 + 11 + 4);
        QCOMPARE(ZBSwfHeader::frameCount(cut), quint16(info ? full->frameCount : 0));
        if (!info)
            continue;
        ++readable;
        // What a cut movie tells must agree with the whole one.
        QCOMPARE(info->xMax, full->xMax);
        QCOMPARE(info->frameRate, full->frameRate);
        QVERIFY(!info->isAS3 || info->hasFileAttributes);
        QVERIFY(writer.build().mid(8).startsWith(ZBSwfHeader::uncompressedMovie(cut).mid(8)));
    }
    QVERIFY(readable > 0);
}

void TestZBSwfHeader::forgedLengthsAndGarbage()
{
    SwfWriter writer;
    writer.addFrames(3);
    for (const Compression compression : {Compression::Zlib, Compression::Lzma})
    {
        // The real body, not four gigabytes; a length shorter than the
        // header cannot bound anything either.
        for (const char fill : {'\xff', '\0'})
        {
            const QByteArray movie = writer.build(compression).replace(4, 4, QByteArray(4, fill));
            QCOMPARE(ZBSwfHeader::readHeader(movie).value().frameCount, quint16(3));
            QCOMPARE(ZBSwfHeader::uncompressedMovie(movie).mid(8), writer.build().mid(8));
        }
    }
    // A 4 GiB dictionary stated for a movie of a few dozen bytes must not
    // make the reader ask for 4 GiB.
    const QByteArray dictionary = writer.build(Compression::Lzma).replace(13, 4, QByteArray(4, char(0xff)));
    QCOMPARE(ZBSwfHeader::uncompressedMovie(dictionary), writer.build());
    // LZMA properties out of range (lc/lp/pb byte above 224).
    QVERIFY(!ZBSwfHeader::readHeader(writer.build(Compression::Lzma).replace(12, 1, "\xff")));

    QByteArray noise;
    for (quint32 i = 0, state = 12345; i < 4096; ++i)
        noise.append(char((state = state * 1103515245u + 12345u) >> 24));
    for (const char *signature : {"CWS", "ZWS"})
    {
        const QByteArray movie = QByteArray(signature) + QByteArray::fromHex("0a00100000") + noise;
        QVERIFY2(!ZBSwfHeader::readHeader(movie), signature);
        QCOMPARE(ZBSwfHeader::frameCount(movie), quint16(0));
        QVERIFY(ZBSwfHeader::uncompressedMovie(movie).isEmpty());
    }
    // A deflated body damaged in its second half still gives the header and
    // what came before the damage.
    SwfWriter big;
    for (int i = 0; i < 40; ++i)
        big.addTag(SwfWriter::DoActionTag, noise.mid(i * 100, 100)).showFrame();
    QByteArray deflated = big.build(Compression::Zlib);
    std::fill(deflated.begin() + deflated.size() / 2, deflated.end(), char(0x5a));
    QCOMPARE(ZBSwfHeader::frameCount(deflated), quint16(40));
    const QByteArray salvaged = ZBSwfHeader::uncompressedMovie(deflated);
    QVERIFY(salvaged.size() > 1000 && salvaged.size() <= big.build().size());
    QCOMPARE(salvaged.mid(8, 1000), big.build().mid(8, 1000));

    // Found by fuzzing: a compressed movie stating 22 bytes whose stream goes
    // on into an AS3 FileAttributes tag. What lies past the stated length is
    // not the movie; reading it must agree with the uncompressed copy.
    const QByteArray fuzzed =
        QByteArray::fromBase64("Q1dTCRYAAAB42qtgYI1nYOBfwMAkwcLgIsjBwMDgzH7//39GJAYHBjSEfv7/U5f5qA==");
    QVERIFY(ZBSwfHeader::readHeader(fuzzed) && !ZBSwfHeader::readHeader(fuzzed)->hasFileAttributes);
    QCOMPARE(ZBSwfHeader::uncompressedMovie(fuzzed).size(), 22);
    QVERIFY(!ZBSwfHeader::readHeader(ZBSwfHeader::uncompressedMovie(fuzzed)).value().hasFileAttributes);
}

QTEST_GUILESS_MAIN(TestZBSwfHeader)
#include "tst_zbswfheader.moc"
