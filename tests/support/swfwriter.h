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
    static constexpr int SetBackgroundColorTag = 9;
    static constexpr int DoActionTag = 12;
    static constexpr int FileAttributesTag = 69;

    SwfWriter &setVersion(int version);
    // The stage in twips, its RECT fields as wide as the values need unless
    // setRectBits() asks for wider ones.
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

    // Tag bodies for addTag(), coordinates in twips. DefineShape (code 2):
    // character `id`, a rectangle filled with one solid colour, no outline;
    // its sides may be at most 65535 twips long.
    static QByteArray rectangleShape(quint16 id, qint32 width, qint32 height, quint8 red, quint8 green, quint8 blue);
    // PlaceObject2 (code 26): `characterId` at `depth`, or in place of what
    // is there when `move` is set; a character left out keeps the one there,
    // a translation left out keeps its position.
    static QByteArray placeObject2(quint16 depth, std::optional<quint16> characterId, std::optional<QPoint> translate,
                                   bool move);
    // A DoAction body: ActionScript 1/2 actions and the End action.
    // fscommand(command, arguments) compiles to a GetURL of
    // "FSCommand:<command>" whose target carries the arguments.
    static QByteArray doAction(QByteArrayView fsCommand, QByteArrayView fsCommandArguments, bool stop);

private:
    int m_version = 10;
    qint32 m_rect[4] = {0, 550 * 20, 0, 400 * 20};
    int m_rectBits = 0;
    quint16 m_rate = 24 * 256;
    QByteArray m_background = QByteArray(3, char(0xff));
    bool m_backgroundTag = true;
    std::optional<bool> m_fileAttributes;
    bool m_actionScript3 = false;
    QByteArray m_tags;
    int m_frames = 0;
    std::optional<quint16> m_frameCount;
    bool m_lzmaEndMarker = false;
};

// Appends a Flash projector trailer to `player` for `movie`.
QByteArray windowsProjector(QByteArrayView player, QByteArrayView movie);
QByteArray macProjector(QByteArrayView player, QByteArrayView movie);
} // namespace nvktest
