#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// Flash projectors: self-running players with a movie appended to the
// executable. The last 8 bytes of such a file hold the magic 0xFA123456 and
// the movie's length L; the movie is the L bytes right before them.
//
//   Windows .exe   magic, then L, both little-endian  (56 34 12 FA  L)
//   Mac 'APPL'     L, then magic, both big-endian     (L  FA 12 34 56)
//
// A Mac projector was told apart by its file type code 'APPL'. Linux file
// systems keep no type codes, so here a file whose last four bytes are the
// big-endian magic is taken to be a Mac projector, whatever its name.
class ZBProjector
{
public:
    enum class Trailer
    {
        Windows,
        Mac
    };

    struct Range
    {
        qint64 offset = 0;
        qint64 length = 0;
    };

    static constexpr quint32 Magic = 0xFA123456;
    static constexpr qint64 TrailerSize = 8;

    // Where the movie lies in a file of `fileSize` bytes whose last 8 bytes
    // are `trailer`; nothing when the magic is missing, L is 0 or L leaves no
    // room before the trailer.
    static std::optional<Range> locateMovie(QByteArrayView trailer, qint64 fileSize, Trailer kind);
    // The movie inside a projector's bytes; empty when there is none.
    static QByteArray extractMovie(QByteArrayView fileBytes, Trailer kind);

    // Whether the file ends with the Mac trailer's magic, which stands in for
    // the type code 'APPL' (see above). False for folders and unreadable files.
    static bool isApplicationFile(const QString &path);

    // The movie to play for a file: the whole file for .swf and .flv (the
    // Flash engine loads both), the embedded movie for a Mac projector (by
    // its type "'APPL'" or its trailer) or a Windows one (type "exe"). Empty
    // for anything else, for an unreadable file and for a projector without
    // a usable trailer.
    static QByteArray dataWithContentsOfSWF(const QString &path);

    // Writes the movie of a projector, or the file itself for .swf/.flv, to
    // `destination`, replacing it atomically. False when there is no movie to
    // write or it could not be written.
    static bool convertEXE(const QString &source, const QString &destination);
};
