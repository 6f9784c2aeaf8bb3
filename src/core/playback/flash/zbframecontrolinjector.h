#pragma once

#include <optional>

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// Gives an ActionScript 1/2 movie of version 8 or later the frame-control
// callbacks of ZBFrameControlScript by inserting one DoAction tag before the
// first ShowFrame of its main timeline, so the code runs as frame 1 is shown.
// Everything else stays as it was, byte for byte and in order; the header's
// file length is corrected and the movie keeps its compression (deflated
// again for "CWS", LZMA-compressed again for "ZWS").
//
// Refused, with the reason in `error`:
// - ActionScript 3 movies (a DoAction tag is ignored there: the FileAttributes
//   flag, or any DoABC tag, says so) and movies before
//   version 8 (ExternalInterface does not exist there: ZBFrameControlWrapper
//   serves them);
// - tag streams that run past the movie or end without an End tag;
// - movies whose main timeline has no ShowFrame: they have no frame to steer,
//   and code placed before End would never be shown a frame to run in;
// - a prefix that is not made of identifier characters.
class ZBFrameControlInjector
{
public:
    static constexpr int MinimumVersion = 8;

    static std::optional<QByteArray> inject(QByteArrayView movie, QByteArrayView prefix, QString *error = nullptr);
};
