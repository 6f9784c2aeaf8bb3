#pragma once

#include <QString>

class ZBItem;

// The questions playback has to put to the user. The window answers them
// with dialogs; tests answer them from a script.
class ZBPlaybackUi
{
public:
    enum class MissingTrackChoice
    {
        Find,
        Delete,
        DoNothing
    };

    virtual ~ZBPlaybackUi() = default;

    virtual MissingTrackChoice askAboutMissingTrack(ZBItem *item) = 0;
    // A new location for a track whose file is gone; empty when cancelled.
    virtual QString locateTrack(ZBItem *item) = 0;
    virtual void showCannotPlay(ZBItem *item, const QString &reason) = 0;
    // RealMedia that the system's decoders cannot play. Returns whether the
    // user asked never to be told again.
    virtual bool showRealMediaUnsupported(ZBItem *item, const QString &missing) = 0;
};
