#pragma once

#include <QList>
#include <QString>

#include "app/zbmediamodule.h"

// The versions of the libraries this build plays and recognises media with,
// read from the libraries themselves at run time (what the user's system
// really loaded, not what the program was compiled against). Shown in the
// Plug-ins pane of the preferences.
//
// Each call reads afresh except mpvVersion(), which starts a short-lived
// player once per process (about 20 ms) and remembers the answer.
class ZBComponentVersions
{
public:
    ZBComponentVersions() = delete;

    using Component = ZBMediaComponent;

    // "2.0": the client API of the loaded libmpv.
    static QString mpvClientApiVersion();
    // "0.35.1": the "mpv-version" property of a player made just to ask; empty
    // when no player can be made.
    static QString mpvVersion();
    // "59.27.100"
    static QString libavformatVersion();
    // av_version_info(): the FFmpeg release, as the distribution built it.
    static QString ffmpegVersion();
    // The "version" field of Ruffle's package.json in the Flash engine's asset
    // folder (ZBFlashSchemeHandler::assetDirectory() when none is given);
    // empty when the package is missing or unreadable.
    static QString ruffleVersion(const QString &assetDirectory = QString());
    static QString qtVersion();
    static QString webEngineVersion();
    static QString chromiumVersion();

    // Everything above as name/version pairs, in the order the pane lists them.
    static QList<Component> components();
};
