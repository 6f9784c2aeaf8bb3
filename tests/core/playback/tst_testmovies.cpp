#include <algorithm>
#include <stdexcept>
#include <string>

#include <QMap>
#include <QTest>

#include "playback/flash/zbswftagreader.h"
#include "playback/zbswfheader.h"
#include "support/flashmovies.h"
#include "support/swfwriter.h"

using nvktest::CounterMovieOptions;
using nvktest::SwfWriter;
using Compression = SwfWriter::Compression;
using Ending = CounterMovieOptions::Ending;

Q_DECLARE_METATYPE(SwfWriter::Compression)
Q_DECLARE_METATYPE(nvktest::CounterMovieOptions)

// The Flash engine's tests judge a player by the movies these helpers write,
// so the movies are read back here the way a player would: bit fields, shape
// outlines, placements and actions decoded independently of the writer.
namespace
{
[[noreturn]] void malformed(const std::string &what)
{
    throw std::runtime_error("malformed movie: " + what);
}

quint16 le16(QByteArrayView bytes, qsizetype at)
{
    if (at < 0 || at + 2 > bytes.size())
        malformed("UI16 past the end");
    return quint16(quint8(bytes[at]) | quint8(bytes[at + 1]) << 8);
}

// Fields read most significant bit first, as the format packs them.
class BitReader
{
public:
    BitReader(QByteArrayView bytes, qsizetype byteOffset)
        : m_bytes(bytes)
        , m_bit(byteOffset * 8)
    {
    }

    quint32 take(int count)
    {
        quint32 value = 0;
        for (int i = 0; i < count; ++i)
        {
            if (m_bit >= m_bytes.size() * 8)
                malformed("bit field past the end");
            const int bit = (quint8(m_bytes[m_bit / 8]) >> (7 - m_bit % 8)) & 1;
            value = value << 1 | quint32(bit);
            ++m_bit;
        }
        return value;
    }
    qint32 takeSigned(int count)
    {
        if (count == 0)
            return 0;
        const qint64 raw = take(count);
        const qint64 sign = qint64(1) << (count - 1);
        return qint32((raw ^ sign) - sign);
    }
    // The byte just after the last bit read.
    qsizetype byteEnd() const { return (m_bit + 7) / 8; }

private:
    QByteArrayView m_bytes;
    qsizetype m_bit;
};

struct Bounds
{
    qint32 xMin = 0;
    qint32 xMax = 0;
    qint32 yMin = 0;
    qint32 yMax = 0;
    bool operator==(const Bounds &) const = default;
};

struct Shape
{
    quint16 id = 0;
    Bounds bounds;
    QList<QColor> fills;
    int lineStyles = 0;
    int fill0 = 0;
    int fill1 = 0;
    // The outline's vertices, the move-to point first.
    QList<QPoint> outline;
    int moves = 0;
};

Shape decodeShape(QByteArrayView body)
{
    Shape shape;
    shape.id = le16(body, 0);
    BitReader rect(body, 2);
    const int nbits = int(rect.take(5));
    shape.bounds = {rect.takeSigned(nbits), rect.takeSigned(nbits), rect.takeSigned(nbits), rect.takeSigned(nbits)};
    qsizetype at = rect.byteEnd();
    const auto byte = [&]()
    {
        if (at >= body.size())
            malformed("style array past the end");
        return quint8(body[at++]);
    };
    for (int fills = byte(); fills > 0; --fills)
    {
        if (byte() != 0x00)
            malformed("a fill other than solid");
        const int red = byte();
        const int green = byte();
        shape.fills.append(QColor(red, green, byte()));
    }
    shape.lineStyles = byte();
    at += 5 * qsizetype(shape.lineStyles);

    BitReader records(body, at);
    const int fillBits = int(records.take(4));
    const int lineBits = int(records.take(4));
    QPoint pen;
    for (;;)
    {
        if (records.take(1) == 0)
        {
            const quint32 flags = records.take(5);
            if (flags == 0)
                break;
            if (flags & 0x10)
                malformed("new styles inside a shape");
            if (flags & 0x01)
            {
                const int moveBits = int(records.take(5));
                const qint32 x = records.takeSigned(moveBits);
                pen = QPoint(x, records.takeSigned(moveBits));
                shape.outline.append(pen);
                ++shape.moves;
            }
            if (flags & 0x02)
                shape.fill0 = int(records.take(fillBits));
            if (flags & 0x04)
                shape.fill1 = int(records.take(fillBits));
            if (flags & 0x08)
                records.take(lineBits);
            continue;
        }
        if (records.take(1) == 0)
            malformed("a curved edge");
        const int deltaBits = int(records.take(4)) + 2;
        QPoint delta;
        if (records.take(1) == 1)
        {
            const qint32 dx = records.takeSigned(deltaBits);
            delta = QPoint(dx, records.takeSigned(deltaBits));
        }
        else if (records.take(1) == 1)
            delta.setY(records.takeSigned(deltaBits));
        else
            delta.setX(records.takeSigned(deltaBits));
        pen += delta;
        shape.outline.append(pen);
    }
    if (records.byteEnd() != body.size())
        malformed("bytes after the end of the shape");
    return shape;
}

struct Placement
{
    bool move = false;
    quint16 depth = 0;
    std::optional<quint16> characterId;
    std::optional<QPoint> translate;
    bool scaledOrRotated = false;
};

Placement decodePlacement(QByteArrayView body)
{
    if (body.isEmpty())
        malformed("empty PlaceObject2");
    const quint8 flags = quint8(body[0]);
    // Colour transforms, ratios, names, clipping and clip actions: nothing
    // these movies need, so anything set there is a fault.
    if (flags & 0xf8)
        malformed("unexpected PlaceObject2 flags");
    Placement placement;
    placement.move = flags & 0x01;
    placement.depth = le16(body, 1);
    qsizetype at = 3;
    if (flags & 0x02)
    {
        placement.characterId = le16(body, at);
        at += 2;
    }
    if (flags & 0x04)
    {
        BitReader matrix(body, at);
        for (int field = 0; field < 2; ++field)
        {
            if (matrix.take(1) == 1)
            {
                placement.scaledOrRotated = true;
                const int nbits = int(matrix.take(5));
                matrix.take(2 * nbits);
            }
        }
        const int nbits = int(matrix.take(5));
        const qint32 x = matrix.takeSigned(nbits);
        placement.translate = QPoint(x, matrix.takeSigned(nbits));
        at = matrix.byteEnd();
    }
    if (at != body.size())
        malformed("bytes after the placement");
    return placement;
}

struct Action
{
    quint8 code = 0;
    QByteArray payload;
    bool operator==(const Action &) const = default;
};

// The actions before End, which must close the body.
QList<Action> decodeActions(QByteArrayView body)
{
    QList<Action> actions;
    qsizetype at = 0;
    while (at < body.size())
    {
        const quint8 code = quint8(body[at++]);
        if (code == 0x00)
        {
            if (at != body.size())
                malformed("bytes after End");
            return actions;
        }
        Action action{code, {}};
        if (code >= 0x80)
        {
            const quint16 length = le16(body, at);
            at += 2;
            if (at + length > body.size())
                malformed("action payload past the end");
            action.payload = body.sliced(at, length).toByteArray();
            at += length;
        }
        actions.append(action);
    }
    malformed("actions without End");
}

QList<QByteArray> cStrings(const QByteArray &payload)
{
    if (!payload.endsWith('\0'))
        malformed("unterminated string");
    return payload.chopped(1).split('\0');
}

Action getUrl(const QByteArray &url, const QByteArray &target)
{
    QByteArray payload = url;
    payload.append('\0').append(target).append('\0');
    return {0x83, payload};
}

struct Instance
{
    quint16 characterId = 0;
    QPoint translate;
};

struct Frame
{
    QMap<quint16, Instance> depths;
    QList<QList<Action>> actions;
};

struct Timeline
{
    QMap<quint16, Shape> dictionary;
    QList<Frame> frames;
    int shapeTags = 0;
};

// Plays the main timeline forward as a player builds its display list, and
// rejects what a player could not make sense of: a character used before it
// is defined or defined twice, a placement on a taken depth, a move of an
// empty one, any tag these movies have no business carrying.
Timeline playTimeline(const QByteArray &movie)
{
    const QByteArray plain = ZBSwfHeader::uncompressedMovie(movie);
    QString error;
    const std::optional<ZBSwfTagReader::Movie> walked = ZBSwfTagReader::read(plain, &error);
    if (!walked)
        malformed(error.toStdString());
    if (walked->end != plain.size())
        malformed("bytes after the End tag");

    Timeline timeline;
    Frame current;
    for (const ZBSwfTagReader::Tag &tag : walked->tags)
    {
        const QByteArrayView body = QByteArrayView(plain).sliced(tag.bodyOffset, tag.bodyLength);
        switch (tag.code)
        {
            case SwfWriter::DefineShapeTag:
            {
                const Shape shape = decodeShape(body);
                if (timeline.dictionary.contains(shape.id))
                    malformed("character " + std::to_string(shape.id) + " defined twice");
                timeline.dictionary.insert(shape.id, shape);
                ++timeline.shapeTags;
                break;
            }
            case SwfWriter::PlaceObject2Tag:
            {
                const Placement placement = decodePlacement(body);
                if (placement.scaledOrRotated)
                    malformed("scaled or rotated placement");
                if (placement.characterId && !timeline.dictionary.contains(*placement.characterId))
                    malformed("character " + std::to_string(*placement.characterId) + " placed before defined");
                if (placement.move != current.depths.contains(placement.depth))
                    malformed("placement at depth " + std::to_string(placement.depth) + " does not fit the list");
                if (!placement.move && !placement.characterId)
                    malformed("new placement without a character");
                Instance &instance = current.depths[placement.depth];
                if (placement.characterId)
                    instance.characterId = *placement.characterId;
                if (placement.translate)
                    instance.translate = *placement.translate;
                break;
            }
            case SwfWriter::RemoveObject2Tag:
                if (tag.bodyLength != 2 || current.depths.remove(le16(body, 0)) != 1)
                    malformed("removal of an empty depth");
                break;
            case SwfWriter::DoActionTag:
                current.actions.append(decodeActions(body));
                break;
            case SwfWriter::ShowFrameTag:
                timeline.frames.append(current);
                current.actions.clear();
                break;
            case SwfWriter::FileAttributesTag:
            case SwfWriter::SetBackgroundColorTag:
            case ZBSwfTagReader::EndTag:
                break;
            default:
                malformed("unexpected tag " + std::to_string(tag.code));
        }
    }
    if (!current.actions.isEmpty())
        malformed("actions after the last frame");
    return timeline;
}

// The rectangle's area and bounds, reached by a closed outline that never
// leaves its border, is the rectangle.
void verifyRectangleOutline(const QList<QPoint> &outline, const Bounds &expected)
{
    QVERIFY(outline.size() >= 5);
    QCOMPARE(outline.last(), outline.first());
    qint64 twiceArea = 0;
    Bounds reached{outline[0].x(), outline[0].x(), outline[0].y(), outline[0].y()};
    for (qsizetype i = 0; i + 1 < outline.size(); ++i)
    {
        const QPoint &a = outline[i];
        const QPoint &b = outline[i + 1];
        QVERIFY2(a.x() == b.x() || a.y() == b.y(), "a rectangle's edges run along the axes");
        QVERIFY(a.x() == expected.xMin || a.x() == expected.xMax || a.y() == expected.yMin || a.y() == expected.yMax);
        twiceArea += qint64(a.x()) * b.y() - qint64(b.x()) * a.y();
        reached = {std::min(reached.xMin, b.x()), std::max(reached.xMax, b.x()), std::min(reached.yMin, b.y()),
                   std::max(reached.yMax, b.y())};
    }
    QCOMPARE(reached, expected);
    const qint64 area = (qint64(expected.xMax) - expected.xMin) * (qint64(expected.yMax) - expected.yMin);
    QCOMPARE(std::abs(twiceArea), 2 * area);
}

QColor shifted(const QColor &colour, int red, int green, int blue)
{
    return QColor(colour.red() + red, colour.green() + green, colour.blue() + blue);
}

int channelDistance(const QColor &a, const QColor &b)
{
    return std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
}

int luma(const QColor &colour)
{
    return (299 * colour.red() + 587 * colour.green() + 114 * colour.blue()) / 1000;
}

CounterMovieOptions movieOptions(int frames, int version, Compression compression, bool as3,
                                 Ending ending = Ending::Loop)
{
    CounterMovieOptions options;
    options.frameCount = frames;
    options.version = version;
    options.compression = compression;
    options.actionScript3 = as3;
    options.ending = ending;
    return options;
}
} // namespace

Q_DECLARE_METATYPE(Bounds)

class TestTestMovies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The tag helpers, bit by bit.
    void rectangleShape_data();
    void rectangleShape();
    void emptyRectangleIsRefused();
    void placements_data();
    void placements();
    void actions();
    void actionStringsWithAZeroAreRefused();

    // The counter movie.
    void counterMovieHeader_data();
    void counterMovieHeader();
    void counterMovieFrames_data();
    void counterMovieFrames();
    void impossibleOptionsAreRefused();

    // Telling its frames apart by colour.
    void everyFrameColourIsRecognised();
    void strayColoursAreNoFrame();
    void squareStandsOutFromEveryFrame();
};

void TestTestMovies::rectangleShape_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<Bounds>("bounds");
    QTest::addColumn<QColor>("colour");

    QTest::newRow("stage 200x150") << 3 << Bounds{0, 4000, 0, 3000} << QColor(20, 55, 90);
    QTest::newRow("square at the origin") << 1 << Bounds{0, 400, 0, 400} << QColor(255, 255, 255);
    QTest::newRow("one twip") << 65535 << Bounds{1, 2, 1, 2} << QColor(0, 0, 0);
    QTest::newRow("across the origin") << 7 << Bounds{-200, 300, -50, 70} << QColor(1, 128, 254);
    QTest::newRow("far from the origin") << 300 << Bounds{-1000000, -999000, 500000, 500020} << QColor(230, 20, 195);
    QTest::newRow("sides longer than one edge") << 9 << Bounds{-70000, 131071, 5, 200000} << QColor(125, 160, 55);
    // Field widths from 1 to 18 bits, so the records end at many different
    // bits of their last byte and a record one bit short cannot always hide
    // in the padding.
    for (int bits = 1; bits <= 18; ++bits)
    {
        const qint32 side = (1 << bits) - 1;
        QTest::newRow(QByteArray("sides of " + QByteArray::number(bits) + " bits").constData())
            << bits << Bounds{bits, bits + side, -bits, 1 + side / 3} << QColor(bits, 255 - bits, 128);
    }
}

void TestTestMovies::rectangleShape()
{
    QFETCH(int, id);
    QFETCH(Bounds, bounds);
    QFETCH(QColor, colour);

    const QByteArray body =
        SwfWriter::rectangleShape(quint16(id), bounds.xMin, bounds.xMax, bounds.yMin, bounds.yMax, quint8(colour.red()),
                                  quint8(colour.green()), quint8(colour.blue()));
    Shape shape;
    QVERIFY_THROWS_NO_EXCEPTION(shape = decodeShape(body));
    QCOMPARE(shape.id, quint16(id));
    QCOMPARE(shape.bounds, bounds);
    QCOMPARE(shape.fills, QList<QColor>{colour});
    QCOMPARE(shape.lineStyles, 0);
    QCOMPARE(shape.fill1, 1);
    QCOMPARE(shape.fill0, 0);
    QCOMPARE(shape.moves, 1);
    QCOMPARE(shape.outline.first(), QPoint(bounds.xMin, bounds.yMin));
    verifyRectangleOutline(shape.outline, bounds);
}

void TestTestMovies::emptyRectangleIsRefused()
{
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument, SwfWriter::rectangleShape(1, 10, 10, 0, 20, 0, 0, 0));
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument, SwfWriter::rectangleShape(1, 0, 20, 30, 5, 0, 0, 0));
}

void TestTestMovies::placements_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("move");
    QTest::addColumn<int>("depth");
    QTest::addColumn<int>("characterId"); // -1: none
    QTest::addColumn<QPoint>("translate");
    QTest::addColumn<bool>("hasMatrix");

    QTest::newRow("place at the origin") << SwfWriter::placeObject2(1, 3) << false << 1 << 3 << QPoint() << true;
    QTest::newRow("place shifted") << SwfWriter::placeObject2(2, 1, 200, 3400) << false << 2 << 1 << QPoint(200, 3400)
                                   << true;
    QTest::newRow("place one twip back") << SwfWriter::placeObject2(0xffff, 0xfffe, -1, -1) << false << 0xffff << 0xfffe
                                         << QPoint(-1, -1) << true;
    QTest::newRow("move far") << SwfWriter::moveObject2(2, -70000, 1234567) << true << 2 << -1
                              << QPoint(-70000, 1234567) << true;
    QTest::newRow("move on one axis") << SwfWriter::moveObject2(5, 0, 80) << true << 5 << -1 << QPoint(0, 80) << true;
    QTest::newRow("replace in place") << SwfWriter::replaceObject2(1, 40) << true << 1 << 40 << QPoint() << false;
    QTest::newRow("replace and move") << SwfWriter::replaceObject2(2, 2, QPoint(3320, 200)) << true << 2 << 2
                                      << QPoint(3320, 200) << true;
}

void TestTestMovies::placements()
{
    QFETCH(QByteArray, body);
    QFETCH(bool, move);
    QFETCH(int, depth);
    QFETCH(int, characterId);
    QFETCH(QPoint, translate);
    QFETCH(bool, hasMatrix);

    Placement placement;
    QVERIFY_THROWS_NO_EXCEPTION(placement = decodePlacement(body));
    QCOMPARE(placement.move, move);
    QCOMPARE(int(placement.depth), depth);
    QCOMPARE(placement.characterId ? int(*placement.characterId) : -1, characterId);
    QCOMPARE(bool(placement.translate), hasMatrix);
    if (hasMatrix)
        QCOMPARE(*placement.translate, translate);
    QVERIFY(!placement.scaledOrRotated);
}

void TestTestMovies::actions()
{
    QList<Action> decoded;
    QVERIFY_THROWS_NO_EXCEPTION(decoded = decodeActions(SwfWriter::doAction(SwfWriter::actionStop())));
    QCOMPARE(decoded, (QList<Action>{{0x07, {}}}));

    const QByteArray fsCommand = SwfWriter::actionFsCommand("completePlay", "now, please");
    QVERIFY_THROWS_NO_EXCEPTION(decoded = decodeActions(SwfWriter::doAction(fsCommand + SwfWriter::actionStop())));
    QCOMPARE(decoded.size(), 2);
    QCOMPARE(decoded[0].code, quint8(0x83));
    QCOMPARE(cStrings(decoded[0].payload), (QList<QByteArray>{"FSCommand:completePlay", "now, please"}));
    QCOMPARE(decoded[1].code, quint8(0x07));

    // fscommand() without arguments still has its (empty) target string.
    QVERIFY_THROWS_NO_EXCEPTION(decoded = decodeActions(SwfWriter::doAction(SwfWriter::actionFsCommand("quit"))));
    QCOMPARE(decoded, (QList<Action>{getUrl("FSCommand:quit", "")}));

    const QByteArray goTo = SwfWriter::actionGotoFrame(0x1234) + SwfWriter::actionPlay();
    QVERIFY_THROWS_NO_EXCEPTION(decoded = decodeActions(SwfWriter::doAction(goTo)));
    QCOMPARE(decoded.size(), 2);
    QCOMPARE(decoded[0].code, quint8(0x81));
    QCOMPARE(le16(decoded[0].payload, 0), quint16(0x1234));
    QCOMPARE(decoded[0].payload.size(), 2);
    QCOMPARE(decoded[1], (Action{0x06, {}}));

    // A body with no actions is just End.
    QVERIFY_THROWS_NO_EXCEPTION(decoded = decodeActions(SwfWriter::doAction({})));
    QVERIFY(decoded.isEmpty());
}

void TestTestMovies::actionStringsWithAZeroAreRefused()
{
    const QByteArray withZero("go\0on", 5);
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument, SwfWriter::actionFsCommand(withZero));
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument, SwfWriter::actionFsCommand("go", withZero));
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument, SwfWriter::actionGetUrl(QByteArray(70000, 'a'), ""));
}

void TestTestMovies::counterMovieHeader_data()
{
    QTest::addColumn<CounterMovieOptions>("options");

    const struct
    {
        const char *name;
        Compression compression;
    } kinds[] = {{"FWS", Compression::None}, {"CWS", Compression::Zlib}, {"ZWS", Compression::Lzma}};
    for (const auto &kind : kinds)
    {
        const QByteArray name(kind.name);
        QTest::newRow(QByteArray(name + " defaults").constData()) << movieOptions(24, 10, kind.compression, false);
        QTest::newRow(QByteArray(name + " v6 one frame").constData())
            << movieOptions(1, 6, kind.compression, false, Ending::Stop);
        QTest::newRow(QByteArray(name + " v8 fscommand").constData())
            << movieOptions(30, 8, kind.compression, false, Ending::FsCommand);
        QTest::newRow(QByteArray(name + " v10 AS3").constData())
            << movieOptions(48, 10, kind.compression, true, Ending::Stop);
        CounterMovieOptions odd = movieOptions(7, 9, kind.compression, true);
        odd.width = 61;
        odd.height = 333;
        odd.frameRate = 12.5;
        QTest::newRow(QByteArray(name + " v9 AS3 odd stage").constData()) << odd;
    }
    CounterMovieOptions fast = movieOptions(3, 7, Compression::Zlib, false);
    fast.frameRate = 120;
    QTest::newRow("CWS v7 120fps") << fast;
}

void TestTestMovies::counterMovieHeader()
{
    QFETCH(CounterMovieOptions, options);

    const QByteArray movie = nvktest::makeCounterMovie(options);
    const std::optional<ZBSwfHeader::Info> info = ZBSwfHeader::readHeader(movie);
    QVERIFY(info);
    const ZBSwfHeader::Compression compression =
        options.compression == Compression::None   ? ZBSwfHeader::Compression::None
        : options.compression == Compression::Zlib ? ZBSwfHeader::Compression::Zlib
                                                   : ZBSwfHeader::Compression::Lzma;
    QCOMPARE(info->compression, compression);
    QCOMPARE(info->version, options.version);
    QCOMPARE(info->xMin, 0);
    QCOMPARE(info->yMin, 0);
    QCOMPARE(info->width(), double(options.width));
    QCOMPARE(info->height(), double(options.height));
    QCOMPARE(info->frameRate, options.frameRate);
    QCOMPARE(int(info->frameCount), options.frameCount);
    QCOMPARE(info->hasFileAttributes, options.version >= 8 || options.actionScript3);
    QCOMPARE(info->isAS3, options.actionScript3);

    // Compression changes the packing, never the movie.
    CounterMovieOptions plain = options;
    plain.compression = Compression::None;
    QCOMPARE(ZBSwfHeader::uncompressedMovie(movie), nvktest::makeCounterMovie(plain));
}

void TestTestMovies::counterMovieFrames_data()
{
    QTest::addColumn<CounterMovieOptions>("options");

    QTest::newRow("defaults") << CounterMovieOptions();
    QTest::newRow("one frame") << movieOptions(1, 10, Compression::None, false);
    QTest::newRow("v6 stop") << movieOptions(24, 6, Compression::None, false, Ending::Stop);
    QTest::newRow("v6 fscommand") << movieOptions(12, 6, Compression::Zlib, false, Ending::FsCommand);
    QTest::newRow("v10 fscommand then stop")
        << movieOptions(5, 10, Compression::Lzma, false, Ending::FsCommandThenStop);
    QTest::newRow("AS3 ignores the ending") << movieOptions(24, 10, Compression::None, true, Ending::FsCommandThenStop);
    // Past the palette the colours, and their characters, come round again.
    QTest::newRow("more frames than colours")
        << movieOptions(nvktest::CounterMoviePaletteSize + 60, 8, Compression::Zlib, false, Ending::Stop);

    CounterMovieOptions narrow = movieOptions(50, 8, Compression::None, false, Ending::FsCommand);
    narrow.width = 60;
    narrow.height = 80;
    narrow.fsCommand = "done";
    narrow.fsCommandArguments = "42";
    QTest::newRow("smallest stage, own command") << narrow;

    CounterMovieOptions wide = movieOptions(20, 10, Compression::None, false);
    wide.width = 4000;
    wide.height = 3500;
    QTest::newRow("largest stage") << wide;
}

void TestTestMovies::counterMovieFrames()
{
    QFETCH(CounterMovieOptions, options);

    Timeline timeline;
    QVERIFY_THROWS_NO_EXCEPTION(timeline = playTimeline(nvktest::makeCounterMovie(options)));
    QCOMPARE(timeline.frames.size(), options.frameCount);
    // One rectangle per colour and the two squares: no frame redefines what
    // an earlier one has.
    QCOMPARE(timeline.shapeTags, 2 + std::min(options.frameCount, nvktest::CounterMoviePaletteSize));

    const Bounds stage{0, options.width * 20, 0, options.height * 20};
    const QPoint centre(options.width / 2, options.height / 2);
    for (int k = 0; k < options.frameCount; ++k)
    {
        const Frame &frame = timeline.frames[k];
        QCOMPARE(frame.depths.keys(), (QList<quint16>{1, 2}));

        // The bottom one covers the stage in the frame's colour.
        const Instance background = frame.depths.value(1);
        const Shape &rectangle = timeline.dictionary[background.characterId];
        QCOMPARE(background.translate, QPoint());
        QCOMPARE(rectangle.bounds, stage);
        QCOMPARE(rectangle.fills, QList<QColor>{nvktest::counterMovieColour(k)});

        // The square lands where the helper says, in its colour, clear of
        // the centre.
        const QRect expected = nvktest::counterMovieSquare(k, options);
        const Instance square = frame.depths.value(2);
        const Shape &squareShape = timeline.dictionary[square.characterId];
        const QRect drawn(square.translate / 20 + QPoint(squareShape.bounds.xMin, squareShape.bounds.yMin) / 20,
                          QSize(squareShape.bounds.xMax - squareShape.bounds.xMin,
                                squareShape.bounds.yMax - squareShape.bounds.yMin) /
                              20);
        QCOMPARE(square.translate, expected.topLeft() * 20);
        QCOMPARE(drawn, expected);
        QCOMPARE(squareShape.fills, QList<QColor>{nvktest::counterMovieSquareColour(k)});
        QVERIFY(QRect(0, 0, options.width, options.height).contains(drawn));
        QVERIFY(!drawn.adjusted(-5, -5, 5, 5).contains(centre));
        // A few pixels right of where it was, or back at the start.
        if (k > 0)
        {
            const QRect before = nvktest::counterMovieSquare(k - 1, options);
            const int step = expected.x() - before.x();
            QCOMPARE(expected.y(), before.y());
            QVERIFY2((step > 0 && step <= 10) || expected == nvktest::counterMovieSquare(0, options),
                     QByteArray::number(k).constData());
        }

        if (k < options.frameCount - 1)
            QVERIFY(frame.actions.isEmpty());
    }

    // Only the last frame of an ActionScript 1/2 movie carries actions.
    QList<Action> ending;
    if (!options.actionScript3)
    {
        if (options.ending == Ending::FsCommand || options.ending == Ending::FsCommandThenStop)
            ending.append(getUrl("FSCommand:" + options.fsCommand, options.fsCommandArguments));
        if (options.ending == Ending::Stop || options.ending == Ending::FsCommandThenStop)
            ending.append(Action{0x07, {}});
    }
    const QList<QList<Action>> lastActions = timeline.frames.last().actions;
    QCOMPARE(lastActions, ending.isEmpty() ? QList<QList<Action>>() : QList<QList<Action>>{ending});
}

void TestTestMovies::impossibleOptionsAreRefused()
{
    const auto refused = [](auto change)
    {
        CounterMovieOptions options;
        change(options);
        try
        {
            nvktest::makeCounterMovie(options);
        }
        catch (const std::invalid_argument &)
        {
            return true;
        }
        return false;
    };
    QVERIFY(refused([](CounterMovieOptions &o) { o.frameCount = 0; }));
    QVERIFY(refused([](CounterMovieOptions &o) { o.frameCount = 0x10000; }));
    QVERIFY(refused([](CounterMovieOptions &o) { o.width = 59; }));
    QVERIFY(refused([](CounterMovieOptions &o) { o.height = 79; }));
    QVERIFY(refused([](CounterMovieOptions &o) { o.frameRate = 0; }));
    QVERIFY(refused([](CounterMovieOptions &o) { o.version = 2; }));
    QVERIFY(!refused([](CounterMovieOptions &o) { o.version = 3; }));
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument, nvktest::counterMovieColour(-1));
}

void TestTestMovies::everyFrameColourIsRecognised()
{
    const int tolerance = nvktest::CounterMovieColourTolerance;
    const int size = nvktest::CounterMoviePaletteSize;
    QVERIFY(size >= 256);
    for (int k = 0; k < size; ++k)
    {
        const QColor colour = nvktest::counterMovieColour(k);
        QCOMPARE(nvktest::counterMovieFrameForColour(colour), k);
        QCOMPARE(nvktest::counterMovieFrameForColour(colour, 0), k);
        // A renderer's rounding or colour handling may nudge every channel.
        QCOMPARE(nvktest::counterMovieFrameForColour(shifted(colour, tolerance, -tolerance, tolerance)), k);
        QCOMPARE(nvktest::counterMovieFrameForColour(shifted(colour, -tolerance, tolerance, -tolerance)), k);
        QCOMPARE(nvktest::counterMovieColour(k + size), colour);

        // Neighbouring frames differ in every channel, wrap-around included.
        const QColor next = nvktest::counterMovieColour(k + 1);
        QVERIFY(colour.red() != next.red() && colour.green() != next.green() && colour.blue() != next.blue());
    }

    // No two frames are close enough for one colour to pass for both.
    int closest = 256;
    for (int a = 0; a < size; ++a)
    {
        for (int b = a + 1; b < size; ++b)
            closest =
                std::min(closest, channelDistance(nvktest::counterMovieColour(a), nvktest::counterMovieColour(b)));
    }
    QVERIFY2(closest > 2 * tolerance, QByteArray::number(closest).constData());
}

void TestTestMovies::strayColoursAreNoFrame()
{
    const int tolerance = nvktest::CounterMovieColourTolerance;
    for (const int k : {0, 1, 6, 48, 170, 342})
    {
        const QColor colour = nvktest::counterMovieColour(k);
        const int away = tolerance + 1;
        QCOMPARE(nvktest::counterMovieFrameForColour(shifted(colour, away, 0, 0)), -1);
        QCOMPARE(nvktest::counterMovieFrameForColour(shifted(colour, 0, -away, 0)), -1);
        QCOMPARE(nvktest::counterMovieFrameForColour(shifted(colour, 0, 0, away)), -1);
        QCOMPARE(nvktest::counterMovieFrameForColour(shifted(colour, 1, 0, 0), 0), -1);

        // Halfway to the next frame's colour, as a blend of the two would be.
        const QColor next = nvktest::counterMovieColour(k + 1);
        const QColor blend((colour.red() + next.red()) / 2, (colour.green() + next.green()) / 2,
                           (colour.blue() + next.blue()) / 2);
        QCOMPARE(nvktest::counterMovieFrameForColour(blend), -1);
    }
    QCOMPARE(nvktest::counterMovieFrameForColour(QColor(0, 0, 0)), -1);
    QCOMPARE(nvktest::counterMovieFrameForColour(QColor(255, 255, 255)), -1);
    QCOMPARE(nvktest::counterMovieFrameForColour(nvktest::counterMovieBackground()), -1);
}

void TestTestMovies::squareStandsOutFromEveryFrame()
{
    for (int k = 0; k < nvktest::CounterMoviePaletteSize; ++k)
    {
        const QColor square = nvktest::counterMovieSquareColour(k);
        QCOMPARE(nvktest::counterMovieFrameForColour(square), -1);
        QVERIFY2(std::abs(luma(square) - luma(nvktest::counterMovieColour(k))) >= 100,
                 QByteArray::number(k).constData());
    }
}

QTEST_GUILESS_MAIN(TestTestMovies)
#include "tst_testmovies.moc"
