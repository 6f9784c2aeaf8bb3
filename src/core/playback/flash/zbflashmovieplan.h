#pragma once

#include <optional>

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QVariantMap>

#include "playback/zbswfheader.h"

// How the Flash engine plays one movie so that the host can read and move its
// frames, decided from the movie's header before anything is loaded:
//
// - Injected: an ActionScript 1/2 movie of version 8 or later carries the
//   frame-control code itself (ZBFrameControlInjector); the engine loads the
//   rewritten movie in place of the original, at the original's address.
// - Wrapped: an ActionScript 1/2 movie of an earlier version is loaded by a
//   one-frame wrapper movie (ZBFrameControlWrapper), which is served at the
//   original's address with `hostQuery` added while the original stays where
//   it is.
// - Hosted: an ActionScript 3 movie is loaded by our ActionScript 3 host movie
//   (built with the program), given the content's stage, rate and background
//   here and its address and the prefix as flash variables.
//
// Anything that is not a complete, readable Flash movie is refused with the
// reason: the engine would otherwise show a blank stage that never ends.
class ZBFlashMoviePlan
{
public:
    enum class Kind
    {
        Injected,
        Wrapped,
        Hosted
    };

    // The frame rate the ActionScript 3 host starts at, frames per second.
    static constexpr double HostStartRate = 120.0;

    // Added to the movie's own address to serve a wrapper or host in its place.
    static constexpr const char *HostQuery = "nvk-host";

    Kind kind = Kind::Injected;
    // What the engine loads first.
    QByteArray rootMovie;
    // Flash variables for the root movie.
    QVariantMap flashvars;
    ZBSwfHeader::Info header;

    bool servesContentSeparately() const { return kind != Kind::Injected; }

    // `contentUrl`: the movie's address as the root movie must ask for it
    // (relative to the movie's folder); `as3Host`: the host movie for
    // ActionScript 3 content, or empty when none was built.
    static std::optional<ZBFlashMoviePlan> make(QByteArrayView movie, QByteArrayView prefix,
                                                QByteArrayView contentUrl, QByteArrayView as3Host,
                                                QString *error = nullptr);

    // `hostMovie` with the stage size and frame rate of `stage` and the
    // background colour `background` (three bytes, RGB): Flash players size
    // the stage from the root movie, so a host must take on its content's.
    static std::optional<QByteArray> restage(QByteArrayView hostMovie, const ZBSwfHeader::Info &stage,
                                             QByteArrayView background, QString *error = nullptr);

    // The colour a movie names in its SetBackgroundColor tag, or white (what
    // Flash players show when it names none); empty when the tags cannot be
    // read.
    static QByteArray backgroundColor(QByteArrayView movie);
};
