#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

// Writes the still pictures the engines give (ZBPlaybackEngine::snapshot())
// to files, for the player's screenshots and for `norvikctl snapshot` alike.
// Formats are numbered the way the "FormatOfScreenshot" setting stores them.
//
// Nothing is thrown: a failure comes back as a Result carrying the error's
// name, "SaveSnapshotError", and why. A file is either written whole or left
// as it was.
class ZBSnapshotWriter
{
public:
    ZBSnapshotWriter() = delete;

    enum Format
    {
        Tiff = 0,
        Bmp = 1,
        Gif = 2,
        Jpeg = 3,
        Png = 4,
        Jpeg2000 = 5
    };
    static constexpr int FormatCount = 6;

    // Why a write failed: "cant get representation" (no picture), "bad
    // representation" (a picture the format cannot hold), "Empty data" (the
    // encoder gave nothing), "cant write file" (with the system's reason).
    static QString errorName(); // "SaveSnapshotError"
    static QString noRepresentationReason();
    static QString badRepresentationReason();
    static QString emptyDataReason();
    static QString cantWriteFileReason();

    struct Result
    {
        QString path;
        // The format the bytes are in: see effectiveFormat().
        int format = Tiff;
        // Empty on success, else errorName().
        QString error;
        QString reason;
        // The system's own words for "cant write file".
        QString detail;

        bool ok() const { return error.isEmpty(); }
        // "SaveSnapshotError: cant write file (Not a directory)", for logs and
        // scripts; the player words it for the user from reason and detail.
        QString description() const;
    };

    // Whether this system writes the format itself rather than a substitute.
    static bool canWriteFormat(int format);
    // The format really written for a setting: unknown numbers mean TIFF, the
    // default; a format whose image plug-in is missing (JPEG 2000 on Debian,
    // TIFF without qt6-image-formats-plugins) is written as PNG, which keeps
    // every pixel.
    static int effectiveFormat(int format);
    // "TIFF", "BMP", "GIF", "JPEG", "PNG", "JPEG 2000".
    static QString formatName(int format);
    // The format a file name's extension asks for ("tif", "jpeg", ...; any
    // case), or -1.
    static int formatForSuffix(const QString &suffix);

    // The file's bytes in effectiveFormat(format): JPEG at quality 80, TIFF
    // LZW-compressed, PNG not interlaced. Empty on failure, with the reason.
    static QByteArray encode(const QImage &image, int format, QString *reason = nullptr);
    static Result saveSnapshot(const QImage &image, const QString &path, int format = Tiff);

    // A GIF89a file of the picture in 256 colours; Qt reads GIF but has no
    // writer.
    static QByteArray gifData(const QImage &image);
};
