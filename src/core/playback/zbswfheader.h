#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// Reads the fixed header of a Flash movie: uncompressed ("FWS"), deflated
// ("CWS", zlib) or LZMA-compressed ("ZWS"). The header states the movie's
// stage size, frame rate and frame count; the FileAttributes tag right after
// it says whether the movie runs ActionScript 3, which decides how the Flash
// engine can steer its frames.
//
// Everything here takes the bytes as untrusted: a truncated or forged header
// gives "nothing", never a read past the buffer, and no stated length makes
// it allocate more than MaxMovieSize.
class ZBSwfHeader
{
public:
    enum class Compression
    {
        None,
        Zlib,
        Lzma
    };

    struct Info
    {
        QByteArray signature;
        Compression compression = Compression::None;
        int version = 0;
        // The whole movie once uncompressed, header included, as stated.
        quint32 fileLength = 0;
        // The stage rectangle in twips (1/20 pixel).
        qint32 xMin = 0;
        qint32 xMax = 0;
        qint32 yMin = 0;
        qint32 yMax = 0;
        double frameRate = 0.0;
        quint16 frameCount = 0;
        // FileAttributes is required first in movies of version 8 and later;
        // older ones lack it and are always ActionScript 1/2.
        bool hasFileAttributes = false;
        bool isAS3 = false;

        double width() const { return (double(xMax) - double(xMin)) / 20.0; }
        double height() const { return (double(yMax) - double(yMin)) / 20.0; }
    };

    // Larger movies are cut there when uncompressed.
    // How much of a file to read to be sure of its header: a deflated
    // movie's first block can open with a few hundred bytes of code tables
    // before the first byte of the header comes out.
    static constexpr qsizetype HeaderProbeSize = 4096;
    static constexpr qsizetype MaxMovieSize = qsizetype(256) * 1024 * 1024;

    // The header of a movie with the signature FWS, CWS or ZWS; nothing for
    // any other signature or when the header is cut short or does not
    // uncompress.
    static std::optional<Info> readHeader(QByteArrayView bytes);

    // The frame count the way the library has always read it for a movie's
    // length: "FWS" is read as it stands, "ZWS" as LZMA and any other
    // signature as zlib. 0 when the bytes do not reach the count.
    static quint16 frameCount(QByteArrayView bytes);
    // frameCount() of a file's contents; 0 when it cannot be read.
    static quint16 getSWFLength(const QString &path);

    // The movie in uncompressed form: signature "FWS", the same version, the
    // file length of what could be recovered, then the body. A compressed
    // body that is cut short or damaged gives what precedes the damage;
    // nothing comes back for an unknown signature or a body that yields no
    // byte at all. At most MaxMovieSize bytes.
    static QByteArray uncompressedMovie(QByteArrayView bytes, qsizetype maxSize = MaxMovieSize);

    static QString compressionName(Compression compression);

private:
    static std::optional<Compression> compressionOf(QByteArrayView signature, bool lenient);
    // Up to `limit` bytes of the body that follows the 8-byte header.
    static QByteArray body(QByteArrayView bytes, Compression compression, qsizetype limit);
    static QByteArray inflateZlib(QByteArrayView source, qsizetype limit);
    static QByteArray decodeLzma(QByteArrayView source, qsizetype limit);
};
