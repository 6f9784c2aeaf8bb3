#pragma once

#include <QString>

#include <optional>

// What FFmpeg's demuxers can tell about a movie file without playing it: its
// length, whether the video engine will be able to decode it, and a one-line
// description of its streams. Everything runs in this process (spawning
// ffprobe costs a hundred times more per file) and reads a bounded amount of
// each file, so probing a folder of thousands of movies stays quick.
//
// Every function is thread-safe: the importer probes on worker threads while
// the playback engines ask from the GUI thread. Nothing here ever throws or
// crashes on a damaged file; the answers are "unknown", false or empty.
class ZBMediaProbe
{
public:
    // The duration in seconds, or nothing when the container does not open or
    // states no length, even after a bounded look at its packets.
    static std::optional<double> durationSeconds(const QString &path);

    // The container opens, its streams can be identified and a decoder exists
    // for the best video stream (cover art does not count as video), or for
    // the best audio stream when there is no video. This is the video
    // engine's canInitWithFile().
    static bool canDecode(const QString &path);

    // A one-line description of the container and its main streams, e.g.
    // "mp4: h264 160 x 120, 25 fps; aac 44100 Hz, 1 channel"; empty when the
    // file does not open.
    static QString formatSummary(const QString &path);

    // The demuxer and the codecs of the main streams, by FFmpeg's short
    // names ("flv"; "flv1", "vp6f", "h264"; "mp3", "aac"); a missing stream
    // gives an empty name. Nothing when the file does not open.
    struct Streams
    {
        QString container;
        QString videoCodec;
        QString audioCodec;
    };
    static std::optional<Streams> streamCodecs(const QString &path);

    // The length a file gets when it enters the library, chosen by its
    // extension as written (case-sensitive): "xap", "rv", "rm", "rmvb" give 0;
    // "swf" gives the movie's frame count; anything else is opened as a movie
    // and gives whole seconds, or 0 when it does not open. An upper-case
    // ".SWF" therefore takes the movie path and yields 0, as do projectors.
    static qint32 getMovieDurationAtPath(const QString &path);
};
