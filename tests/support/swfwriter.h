#pragma once

#include <optional>

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QPoint>

namespace nvktest
{
// Writes small but complete Flash movies for tests: the header, an optional
// FileAttributes tag, SetBackgroundColor, the frames (ShowFrame tags, with
// any tags a test adds between them) and the End tag, uncompressed, deflated
// or LZMA-compressed as a Flash authoring tool would write them.
class SwfWriter
{
public:
    enum class Compression
    {
        None,
        Zlib,
        Lzma
    };

    static constexpr int ShowFrameTag = 1;
    static constexpr int DefineShapeTag = 2;
    static constexpr int SetBackgroundColorTag = 9;
    static constexpr int DoActionTag = 12;
    static constexpr int PlaceObject2Tag = 26;
    static constexpr int FileAttributesTag = 69;

    SwfWriter();

    SwfWriter &setVersion(int version);
    // The stage in twips; widths of the RECT fields follow from the values
    // unless setRectBits() asks for wider ones.
    SwfWriter &setFrameRect(qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax);
    SwfWriter &setStageSize(int widthPixels, int heightPixels);
    SwfWriter &setRectBits(int nbits);
    // Stored as 8.8 fixed point, so 29.97 is written as 29 + 248/256.
    SwfWriter &setFrameRate(double rate);
    SwfWriter &setBackgroundColor(quint8 red, quint8 green, quint8 blue);
    // Movies may leave the SetBackgroundColor tag out; players then use white.
    SwfWriter &setBackgroundColorTag(bool present);
    // Version 8 and later movies get a FileAttributes tag unless told not to.
    SwfWriter &setFileAttributes(bool present, bool actionScript3 = false);
    // Any tag, placed in the current frame.
    SwfWriter &addTag(int code, QByteArrayView body);
    // Ends the current frame.
    SwfWriter &showFrame();
    SwfWriter &addFrames(int count);
    // The header normally counts the ShowFrame tags; a test may state another
    // number.
    SwfWriter &overrideFrameCount(quint16 count);
    // Whether an LZMA body ends with an end-of-stream marker (some encoders
    // write one, Flash tools do not).
    SwfWriter &setLzmaEndMarker(bool present);

    QByteArray build(Compression compression = Compression::None) const;

    // A tag in short form when its body is under 63 bytes, else long form.
    static QByteArray tag(int code, QByteArrayView body, bool forceLong = false);
    static QByteArray rect(qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax, int nbits);
    // The fewest bits that hold every value as a signed field.
    static int bitsFor(qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax);

    // Tag bodies for addTag(). Coordinates are in twips. A value the format
    // cannot hold throws std::invalid_argument rather than write a movie that
    // means something else.

    // DefineShape: character `id`, a rectangle filled with one solid colour and
    // no outline. Sides longer than one edge record can span are split.
    static QByteArray rectangleShape(quint16 id, qint32 xMin, qint32 xMax, qint32 yMin, qint32 yMax, quint8 red,
                                     quint8 green, quint8 blue);
    // PlaceObject2 of a character at an empty depth, shifted by the translation.
    static QByteArray placeObject2(quint16 depth, quint16 characterId, qint32 translateX = 0, qint32 translateY = 0);
    // PlaceObject2 that moves the object already at `depth`; it keeps its
    // character.
    static QByteArray moveObject2(quint16 depth, qint32 translateX, qint32 translateY);
    // PlaceObject2 that shows another character in place of the one at `depth`,
    // keeping the old position unless a translation is given.
    static QByteArray replaceObject2(quint16 depth, quint16 characterId, std::optional<QPoint> translate = {});

    // ActionScript 1/2 actions, to be joined and closed by doAction(). The
    // strings must not hold a zero byte, which would end them early.
    static QByteArray actionStop();
    // How authoring tools compile fscommand(command, arguments): a GetURL of
    // "FSCommand:<command>" whose target carries the arguments.
    static QByteArray actionFsCommand(QByteArrayView command, QByteArrayView arguments = {});
    // A DoAction body: the actions and the End action that closes them.
    static QByteArray doAction(const QByteArray &actions);

private:
    QByteArray body() const;

    int m_version = 10;
    qint32 m_xMin = 0;
    qint32 m_xMax = 550 * 20;
    qint32 m_yMin = 0;
    qint32 m_yMax = 400 * 20;
    int m_rectBits = 0;
    quint16 m_rate = 24 * 256;
    quint8 m_background[3] = {0xff, 0xff, 0xff};
    bool m_backgroundTag = true;
    std::optional<bool> m_fileAttributes;
    bool m_actionScript3 = false;
    QList<QByteArray> m_tags;
    int m_frames = 0;
    std::optional<quint16> m_frameCount;
    bool m_lzmaEndMarker = false;
};

// Appends a Flash projector trailer to `player` for `movie`.
QByteArray windowsProjector(QByteArrayView player, QByteArrayView movie);
QByteArray macProjector(QByteArrayView player, QByteArrayView movie);
} // namespace nvktest
