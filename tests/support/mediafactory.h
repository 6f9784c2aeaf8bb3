#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

namespace nvktest
{
// Tiny real movies made at test time by the ffmpeg program: a testsrc picture
// (colour bars, a moving gradient and a counter) with a sine tone, in the
// containers the video engine plays. Each clip is made once per test process
// and kept in a temporary folder that goes away with the process.
//
// Tests that need clips call isAvailable() first and QSKIP with
// unavailableReason() when it is false.
class MediaFactory
{
public:
    struct Clip
    {
        // The container, named by the file extension it gets: mp4, m4v, mov,
        // mkv, avi, flv, f4v, 3gp, wmv, mpg, webm, rm, rmvb.
        QString extension;
        double seconds = 2.0;
        QSize size{160, 120};
        bool audio = true;
    };

    static bool isAvailable();
    static QString unavailableReason();

    // The extensions this machine's ffmpeg can write, in a stable order.
    static QStringList formats();

    // The path of the clip, made on first use. Empty when ffmpeg failed or
    // the extension is unknown; `error` then says why.
    static QString clip(const Clip &clip, QString *error = nullptr);
    static QString clip(const QString &extension, QString *error = nullptr);

    // A file of `bytes` random bytes named with `extension`: no container
    // opens it.
    static QString garbage(const QString &extension, qint64 bytes = 4096);
    // The first `bytes` bytes of `source`, under a new name.
    static QString truncatedCopy(const QString &source, qint64 bytes);

    // Clips run at this rate: frame n is shown from n / FramesPerSecond on.
    static constexpr int FramesPerSecond = 25;

    // ffmpeg's own decoding of frame `frameNumber` (0-based, counted from the
    // first decoded frame) of `path`, as a PNG file: the reference a player's
    // picture is compared with. Counted rather than sought, because ffmpeg's
    // input seeking is not exact in every container (MPEG program streams).
    // Empty on failure; `error` then says why.
    static QString referenceFrame(const QString &path, int frameNumber, QString *error = nullptr);

    static QString folder();
};
} // namespace nvktest
